// The page download against the simulated display: what is asked, in which
// order, what lands in the page files, the log and the status line.

#include "PageFile.h"
#include "support/SimRig.h"
#include "data/clsFlashMemInfo.h"
#include "link/clsHalvexMsg.h"
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


QList<QByteArray> Args(const SimRig& r, quint8 vbyFunc)
{
    QList<QByteArray> lcArgs;
    for (const clsSimDisplay::Request& lcRequest : r.display.Requests())
        if (lcRequest.func == vbyFunc)
            lcArgs << lcRequest.arguments;
    return lcArgs;
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
        QCOMPARE(r.Funcs(), (QList<int>{0xCE, 0x36, 0x38, 0x34, 0x34, 0x34, 0x34, 0x34, 0x38}));
        QCOMPARE(Args(r, 0x34), (QList<QByteArray>{QByteArray::fromHex("0100003C"), QByteArray::fromHex("01003C3C"),
                                                   QByteArray::fromHex("0100783C"), QByteArray::fromHex("0100B43C"),
                                                   QByteArray::fromHex("0100F010")}));
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

    void offsetGoesOutBigEndian()
    {
        SimRig r;
        r.display.SetGeometry(4, 5, 10, 64);
        r.display.SetPage(5, Pattern(5, 1024));
        clsError lcError;
        r.app().DownloadPages(lcError);
        const QList<QByteArray> lcReads = Args(r, 0x34);
        QCOMPARE(lcReads.size(), 16);
        QCOMPARE(lcReads[8], QByteArray::fromHex("05020040"));
        QCOMPARE(PageFileBytes(r.app().PageFileName(5)), Pattern(5, 1024));
    }

    void pageStates_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("file");
        QTest::addColumn<bool>("logged");
        QTest::newRow("1: empty, not a word") << 1 << false << false;
        QTest::newRow("0: logged as empty") << 0 << false << true;
        QTest::newRow("3: logged as empty") << 3 << false << true;
        QTest::newRow("2: downloaded") << 2 << true << false;
    }
    void pageStates()
    {
        QFETCH(int, state);
        QFETCH(bool, file);
        QFETCH(bool, logged);
        SimRig r;
        r.display.SetGeometry(0, 1, 6, 64);
        r.display.SetPage(1, Pattern(1, 64));
        r.display.Faults().PageState[1] = state;
        clsError lcError;
        r.app().DownloadPages(lcError);
        QVERIFY(!lcError.IsError());
        QCOMPARE(QFile::exists(r.app().PageFileName(1)), file);
        QCOMPARE(r.t.LogLines().contains(QStringLiteral("Page 1 is empty")), logged);
        QCOMPARE(Args(r, 0x38), QList<QByteArray>{QByteArray::fromHex("01")});
    }

    void noPagesWhenFirstIsLast()
    {
        SimRig r;
        r.display.SetGeometry(3, 3, 8, 64);
        clsError lcError;
        r.app().DownloadPages(lcError);
        QVERIFY(!lcError.IsError());
        QCOMPARE(r.Funcs(), (QList<int>{0xCE, 0x36}));
    }

    // A part the display has no data for is left out of the file; the download goes on.
    void readStatusNotOneSkipsThePart()
    {
        SimRig r;
        r.display.SetGeometry(0, 1, 8, 64);
        r.display.SetPage(1, Pattern(1, 256));
        r.display.Faults().ReadStatusOfPart[1 * 65536 + 64] = 0;
        clsError lcError;
        r.app().DownloadPages(lcError);
        QVERIFY(!lcError.IsError());
        QCOMPARE(PageFileBytes(r.app().PageFileName(1)), Pattern(1, 256).remove(64, 64));
    }

    void errorInAPageRemovesItsFile()
    {
        SimRig r;
        r.display.SetGeometry(0, 3, 8, 64);
        for (int llPage = 1; llPage <= 3; ++llPage)
            r.display.SetPage(llPage, Pattern(llPage, 256));
        // CE, 36, 38 + 4 reads of page 1, 38 + one read of page 2, then a pulled cable
        r.display.Faults().SilentFromRequest = 10;
        r.t.dialogs.answers << MsgResult::Cancel;
        clsError lcError;
        r.app().DownloadPages(lcError);
        QCOMPARE(lcError.Error(), ErrorCode::CancelledByUser);
        QCOMPARE(PageFileBytes(r.app().PageFileName(1)), Pattern(1, 256));
        QVERIFY(!QFile::exists(r.app().PageFileName(2)));
        QVERIFY(!QFile::exists(r.app().PageFileName(3)));
        QCOMPARE(r.t.LogLines().last(), QStringLiteral("Finished downloading page 2"));
        QVERIFY(!r.app().CommunicationIsRunning());
        QCOMPARE(r.display.Stats().requests, 9 + 6);
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

    // The ID is compared with "0.0.0.0.0.0.0.0" as written; the ID read from
    // a display always ends in a point, so an all-zero display is read all the same.
    void invalidId_data()
    {
        QTest::addColumn<QByteArray>("id");
        QTest::addColumn<bool>("silent");
        QTest::addColumn<QList<int>>("funcs");
        QTest::newRow("no answer") << QByteArray() << true << QList<int>(6, 0xCE);
        QTest::newRow("all zeros is read") << QByteArray(8, 0) << false << QList<int>{0xCE, 0x36, 0x38};
    }
    void invalidId()
    {
        QFETCH(QByteArray, id);
        QFETCH(bool, silent);
        QFETCH(QList<int>, funcs);
        SimRig r;
        r.display.SetGeometry(0, 1, 8, 64);
        r.display.SetId(id);
        r.display.Faults().SilentFromRequest = silent ? 1 : 0;
        r.t.dialogs.answers << MsgResult::Cancel;
        clsError lcError;
        r.app().DownloadPages(lcError);
        QCOMPARE(r.Funcs(), funcs);
        QCOMPARE(lcError.Error(), silent ? 1 : 0);
        if (silent)
            QCOMPARE(lcError.Description(), QStringLiteral("Invalid ID found"));
        QCOMPARE(r.app().DisplayId(), silent ? QString() : QStringLiteral("0.0.0.0.0.0.0.0."));
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
