// The page download against the simulated display: what is asked, in which
// order, what lands in the page files, the log and the status line.

#include "PageFile.h"
#include "support/SimRig.h"
#include "sim/clsSimDataGenerator.h"

#include "platform/Err.h"

#include <QDir>
#include <QFile>
#include <QTest>

namespace {
// A page with data that has every byte value in it, zeros too.
QByteArray Pattern(int vlPage, int vlSize)
{
    QByteArray lcData(vlSize, 0);
    for (int i = 0; i < vlSize; ++i)
        lcData[i] = char((i * 7 + vlPage) & 0xFF);
    return lcData;
}
}

class tst_Download : public QObject
{
    Q_OBJECT

private slots:
    void partsRemainderAndFile()
    {
        SimRig r;
        r.display.SetGeometry(0, 2, 8, 60);
        r.display.SetPage(0, Pattern(0, 256));
        r.display.SetPage(1, Pattern(1, 256));
        QStringList lcStatus;
        connect(&r.app().Status(), &clsStatus::StatusChanged, [&]() {
            if (lcStatus.value(lcStatus.size() - 1) != r.app().Status().StatusString())
                lcStatus << r.app().Status().StatusString();
        });
        clsError lcError;
        r.app().DownloadPages(lcError);
        QVERIFY(!lcError.IsError());
        QCOMPARE(r.Trace(), QStringLiteral("CE 36 38:01 34:0100003C 34:01003C3C 34:0100783C 34:0100B43C 34:0100F010 38:02"));
        QFile lcFile(r.t.Home() + QStringLiteral("Page1.DSW"));
        QVERIFY(lcFile.open(QIODevice::ReadOnly));
        const QByteArray lcText = lcFile.readAll();
        QCOMPARE(lcText.count("\r\n"), 256);
        QVERIFY(lcText.startsWith("1\r\n8\r\n15\r\n"));
        QCOMPARE(PageFileBytes(lcFile.fileName()), Pattern(1, 256));
        QVERIFY(!QFile::exists(r.t.Home() + QStringLiteral("Page0.DSW")));
        QVERIFY(!QFile::exists(r.t.Home() + QStringLiteral("Page2.DSW")));
        QCOMPARE(r.t.LogLines().mid(2), (QStringList{"ID found 12.0.34.5.6.7.8.9.", "First page found on 0",
                                                      "Last page found on 2", "Size of one page is 8",
                                                      "Starting to download page 1", "Finished downloading page 1"}));
        QCOMPARE(lcStatus.mid(2, 6), (QStringList{"Copying data from the KVT Memory Display",
                                                  "0% of page 1 and 1% of total of pages",
                                                  "23% of page 1 and 1% of total of pages",
                                                  "46% of page 1 and 1% of total of pages",
                                                  "70% of page 1 and 1% of total of pages", "Copied 50% of total"}));
        QCOMPARE(lcStatus.last(), QStringLiteral("Copied 100% of total"));
        QCOMPARE(r.app().Status().BigProgressBarInfo().Max(), 3);
        QCOMPARE(r.app().Status().SmallProgressBarInfo().Max(), 257);
        QCOMPARE(r.app().Status().SmallProgressBarInfo().StepSize(), 60);
        QVERIFY(!r.app().Status().BigProgressBarInfo().Visible());
        QVERIFY(!r.app().CommunicationIsRunning());
        QCOMPARE(r.app().DisplayId(), QStringLiteral("12.0.34.5.6.7.8.9."));
    }

    // Every logging page holds Pattern data unless a step says otherwise;
    // "files" are the pages that end up in a page file, each its Pattern but
    // for the parts the display said it had no data for.
    void scenario_data()
    {
        QTest::addColumn<QList<int>>("geometry"); // first page, last page, log2 of the page size, data a read
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("trace");
        QTest::addColumn<QList<int>>("files");
        QTest::addColumn<QString>("lastLogLine");
        QTest::newRow("offset goes out big-endian")
            << QList<int>{4, 5, 10, 200} << "" << ""
            << "CE 36 38:05 34:050000C8 34:0500C8C8 34:050190C8 34:050258C8 34:050320C8 34:0503E818"
            << QList<int>{5} << "Finished downloading page 5";
        QTest::newRow("state 1: empty, not a word") << QList<int>{0, 1, 6, 64} << "state 1 1" << "" << "CE 36 38:01"
                                                    << QList<int>{} << "Size of one page is 6";
        QTest::newRow("state 0: logged as empty") << QList<int>{0, 1, 6, 64} << "state 1 0" << "" << "CE 36 38:01"
                                                  << QList<int>{} << "Page 1 is empty";
        QTest::newRow("state 3: logged as empty") << QList<int>{0, 1, 6, 64} << "state 1 3" << "" << "CE 36 38:01"
                                                  << QList<int>{} << "Page 1 is empty";
        QTest::newRow("state 2: downloaded") << QList<int>{0, 1, 6, 64} << "state 1 2" << ""
                                             << "CE 36 38:01 34:01000040" << QList<int>{1}
                                             << "Finished downloading page 1";
        QTest::newRow("first page is the last") << QList<int>{3, 3, 8, 64} << "" << "" << "CE 36" << QList<int>{}
                                                << "Size of one page is 8";
        QTest::newRow("part without data is left out")
            << QList<int>{0, 1, 8, 64} << "nodata 1 64" << ""
            << "CE 36 38:01 34:01000040 34:01004040 34:01008040 34:0100C040" << QList<int>{1}
            << "Finished downloading page 1";
        // Four reads of page 1, one of page 2, then a pulled cable: six tries and the retry question.
        QTest::newRow("pulled cable removes the page's file")
            << QList<int>{0, 3, 8, 64} << "silent 10, cancel" << "20000002 Action cancelled by user."
            << "CE 36 38:01 34:01000040 34:01004040 34:01008040 34:0100C040 38:02 34:02000040 34:02004040*6"
            << QList<int>{1} << "Finished downloading page 2";
        // The ID is compared with "0.0.0.0.0.0.0.0" as written; the ID read from
        // a display always ends in a point, so an all-zero display is read all the same.
        QTest::newRow("all-zero ID is read") << QList<int>{0, 1, 6, 64} << "id 0000000000000000" << ""
                                             << "CE 36 38:01 34:01000040" << QList<int>{1}
                                             << "Finished downloading page 1";
        QTest::newRow("no ID") << QList<int>{0, 1, 6, 64} << "silent 1, cancel" << "1 Invalid ID found" << "CE*6"
                               << QList<int>{} << "ERROR Unable to get ID from display";
    }
    void scenario()
    {
        QFETCH(QList<int>, geometry);
        QFETCH(QString, steps);
        QFETCH(QString, error);
        QFETCH(QString, trace);
        QFETCH(QList<int>, files);
        QFETCH(QString, lastLogLine);
        SimRig r;
        r.display.SetGeometry(geometry[0], geometry[1], geometry[2], geometry[3]);
        QMap<int, QByteArray> lcFiles;
        for (int llPage = geometry[0] + 1; llPage <= geometry[1]; ++llPage) {
            r.display.SetPage(llPage, Pattern(llPage, 1 << geometry[2]));
            if (files.contains(llPage))
                lcFiles[llPage] = Pattern(llPage, 1 << geometry[2]);
        }
        for (const QString& lsStep : steps.split(QStringLiteral(", "), Qt::SkipEmptyParts)) {
            const QStringList lcWords = lsStep.split(QLatin1Char(' '));
            if (lcWords[0] == QLatin1String("state"))
                r.display.Faults().PageState[lcWords[1].toInt()] = lcWords[2].toInt();
            else if (lcWords[0] == QLatin1String("nodata")) {
                r.display.Faults().ReadStatusOfPart[lcWords[1].toInt() * 65536 + lcWords[2].toInt()] = 0;
                lcFiles[lcWords[1].toInt()].remove(lcWords[2].toInt(), geometry[3]);
            } else if (lcWords[0] == QLatin1String("silent"))
                r.display.Faults().SilentFromRequest = lcWords[1].toInt();
            else if (lcWords[0] == QLatin1String("id"))
                r.display.SetId(QByteArray::fromHex(lcWords[1].toLatin1()));
            else if (lcWords[0] == QLatin1String("cancel"))
                r.t.dialogs.answers << MsgResult::Cancel;
            else
                QFAIL(qPrintable(lsStep));
        }
        clsError lcError;
        r.app().DownloadPages(lcError);
        QCOMPARE(lcError.IsError() ? QStringLiteral("%1 %2").arg(quint32(lcError.Error()), 0, 16).arg(lcError.Description())
                                   : QString(),
                 error);
        QCOMPARE(r.Trace(), trace);
        for (int llPage = geometry[0]; llPage <= geometry[1] + 1; ++llPage)
            QCOMPARE(PageFileBytes(r.app().PageFileName(llPage)), lcFiles.value(llPage));
        QCOMPARE(r.t.LogLines().value(r.t.LogLines().size() - 1), lastLogLine);
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // A page file that cannot be written is a run-time error for the caller; the link is given back.
    void unwritablePageFile()
    {
        SimRig r;
        r.display.SetGeometry(0, 1, 6, 64);
        r.display.SetPage(1, Pattern(1, 64));
        QVERIFY(QDir().mkpath(r.app().PageFileName(1)));
        long llRaised = 0;
        try {
            clsError lcError;
            r.app().DownloadPages(lcError);
        } catch (const clsRuntimeError& e) {
            llRaised = e.Number();
            QVERIFY2(e.Description().contains(QStringLiteral("Page1.DSW")), qPrintable(e.Description()));
        }
        QCOMPARE(llRaised, VbError::PathFileAccessError);
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // A page of 2^31 bytes or more does not fit the page size's 32-bit
    // integer: an overflow before any page file is made. 2^30 still fits.
    void pageSizeBeyond32Bits_data()
    {
        QTest::addColumn<int>("sizeOnePage");
        QTest::addColumn<bool>("overflow");
        QTest::newRow("2^30 fits") << 30 << false;
        QTest::newRow("2^31") << 31 << true;
        QTest::newRow("2^255") << 255 << true;
    }
    void pageSizeBeyond32Bits()
    {
        QFETCH(int, sizeOnePage);
        QFETCH(bool, overflow);
        SimRig r;
        r.display.SetGeometry(0, 2, 8, 64);
        r.display.SetPage(1, Pattern(1, 256));
        r.display.Faults().ReportedSizeOnePage = sizeOnePage;
        // with a fitting size the page loop runs; page 1 is then left out as "neither"
        r.display.Faults().PageState[1] = 0;
        long llRaised = 0;
        try {
            clsError lcError;
            r.app().DownloadPages(lcError);
        } catch (const clsRuntimeError& e) {
            llRaised = e.Number();
        }
        QCOMPARE(llRaised, overflow ? VbError::Overflow : 0);
        QCOMPARE(r.Funcs(), overflow ? (QList<int>{0xCE, 0x36}) : (QList<int>{0xCE, 0x36, 0x38, 0x38}));
        QVERIFY(QDir(r.t.Home()).entryList({QStringLiteral("Page*.DSW")}).isEmpty());
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    void percentage_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<int>("total");
        QTest::addColumn<int>("percent");
        QTest::newRow("truncates") << 2 << 3 << 66;
        QTest::newRow("equal") << 5 << 5 << 100;
        QTest::newRow("above") << 7 << 5 << 100;
        QTest::newRow("total 0") << 0 << 0 << 100;
    }
    void percentage()
    {
        QFETCH(int, value);
        QFETCH(int, total);
        QFETCH(int, percent);
        QCOMPARE(clsApplication::GetPercentage(value, total), percent);
    }

    // A full display of generated logbook data comes out byte for byte.
    void generatedDisplay()
    {
        SimRig r;
        QString lsError;
        clsSimDataGenerator lcGenerator(
            clsSimDataGenerator::LoadPlaces(clsSimDataGenerator::DefaultPlacesFile(), lsError));
        QVERIFY2(lsError.isEmpty(), qPrintable(lsError));
        QByteArray lcFlash = r.display.Flash();
        clsSimDataGenerator::WriteLog(lcFlash, lcGenerator.Generate(7, 30), 0, 63, 8);
        QVERIFY(r.display.SetFlash(lcFlash));
        clsError lcError;
        r.app().DownloadPages(lcError);
        QVERIFY(!lcError.IsError());
        int llFiles = 0;
        for (int llPage = 1; llPage <= 63; ++llPage) {
            const QString lsFile = r.app().PageFileName(llPage);
            if (!QFile::exists(lsFile)) {
                QVERIFY(r.display.PageIsEmpty(llPage));
                continue;
            }
            ++llFiles;
            QCOMPARE(PageFileBytes(lsFile), r.display.Page(llPage));
        }
        QVERIFY(llFiles > 10);
    }
};

QTEST_GUILESS_MAIN(tst_Download)
#include "tst_download.moc"
