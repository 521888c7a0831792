// The page download against the simulated display: what is asked, in which
// order, what lands in the page files, the log and the status line. (A whole
// generated logbook comes out byte for byte under faults in tst_reliability.)

#include "PageFile.h"
#include "support/SimRig.h"
#include "TestFiles.h"

#include "platform/Err.h"

#include <QDir>
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
        QCOMPARE(QDir(r.t.Home()).entryList({QStringLiteral("Page*.DSW")}), QStringList{"Page1.DSW"});
        QCOMPARE(ReadAll(r.t.Home() + QStringLiteral("Page1.DSW")), PageFileText(Pattern(1, 256)));
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

    void scenario_data() { AddTableRows(QStringLiteral("download-scenarios.txt")); }
    void scenario()
    {
        QFETCH(QStringList, row);
        const QString steps = row[2], error = row[3], trace = row[4], lastLogLine = row[6];
        const QList<int> geometry = Numbers(row[1]), files = Numbers(row[5]);
        SimRig r;
        r.display.SetGeometry(geometry[0], geometry[1], geometry[2], geometry[3]);
        QMap<int, QByteArray> lcFiles;
        for (int llPage = geometry[0] + 1; llPage <= geometry[1]; ++llPage) {
            r.display.SetPage(llPage, Pattern(llPage, 1 << geometry[2]));
            if (files.contains(llPage))
                lcFiles[llPage] = Pattern(llPage, 1 << geometry[2]);
        }
        RunSteps(steps, {{"state", [&](const QString& a) { r.display.Faults().PageState[Numbers(a)[0]] = Numbers(a)[1]; }},
                         {"nodata", [&](const QString& a) {
                              const QList<int> lcPart = Numbers(a);
                              r.display.Faults().ReadStatusOfPart[lcPart[0] * 65536 + lcPart[1]] = 0;
                              lcFiles[lcPart[0]].remove(lcPart[1], geometry[3]);
                          }},
                         {"silent", [&](const QString& a) { r.display.Faults().SilentFromRequest = a.toInt(); }},
                         {"id", [&](const QString& a) { r.display.SetId(QByteArray::fromHex(a.toLatin1())); }},
                         {"size", [&](const QString& a) { r.display.Faults().ReportedSizeOnePage = a.toInt(); }},
                         {"mkdir", [&](const QString& a) { QVERIFY(QDir().mkpath(r.app().PageFileName(a.toInt()))); }},
                         {"cancel", [&](const QString&) { r.t.dialogs.answers << MsgResult::Cancel; }}});
        clsError lcError;
        QString lsError;
        try {
            r.app().DownloadPages(lcError);
            if (lcError.IsError())
                lsError = QStringLiteral("%1 %2").arg(quint32(lcError.Error()), 0, 16).arg(lcError.Description());
        } catch (const clsRuntimeError& e) {
            lsError = QStringLiteral("%1 %2").arg(quint32(e.Number()), 0, 16).arg(e.Description());
        }
        QCOMPARE(lsError.replace(QDir::toNativeSeparators(r.t.Home()), QStringLiteral("{home}")), error);
        QCOMPARE(r.Trace(), trace);
        for (int llPage = geometry[0]; llPage <= geometry[1] + 1; ++llPage)
            QCOMPARE(PageFileBytes(r.app().PageFileName(llPage)), lcFiles.value(llPage));
        QCOMPARE(r.t.LogLines().value(r.t.LogLines().size() - 1), lastLogLine);
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // Truncated, and never above 100, also for a total of 0.
    void percentage()
    {
        QCOMPARE(clsApplication::GetPercentage(2, 3), 66);
        QCOMPARE(clsApplication::GetPercentage(5, 5), 100);
        QCOMPARE(clsApplication::GetPercentage(7, 5), 100);
        QCOMPARE(clsApplication::GetPercentage(0, 0), 100);
    }
};

QTEST_GUILESS_MAIN(tst_Download)
#include "tst_download.moc"
