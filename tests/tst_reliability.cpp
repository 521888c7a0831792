// Seeded downloads from a display that drops, garbles and delays its answers:
// every run must end with page files equal to the flash, or with an error and
// no file for the page that failed. A page file with a wrong byte is a silent
// corruption and fails the test. CORVANE_RELIABILITY_RUNS sets the number of
// runs (200 by default); the figures go to docs/reliability.md.

#include "PageFile.h"
#include "support/SimRig.h"
#include "sim/clsSimDataGenerator.h"

#include <QElapsedTimer>
#include <QTest>

class tst_Reliability : public QObject
{
    Q_OBJECT

private slots:
    void seededDownloadsUnderFaults_data()
    {
        QTest::addColumn<QString>("faults");
        QTest::newRow("drop, corrupt, late at 1/100") << "drop=0.01,corrupt=0.01,late=0.01";
        QTest::newRow("corrupt at 5/100") << "corrupt=0.05";
        QTest::newRow("late at 1/100, display still hears the retry") << "late=0.01,late-listening";
    }
    void seededDownloadsUnderFaults()
    {
        QFETCH(QString, faults);
        const int llRuns = qEnvironmentVariableIsSet("CORVANE_RELIABILITY_RUNS") ? qEnvironmentVariableIntValue("CORVANE_RELIABILITY_RUNS") : 200;
        QString lsError;
        clsSimDataGenerator lcGenerator(clsSimDataGenerator::LoadPlaces(clsSimDataGenerator::DefaultPlacesFile(), lsError));
        QVERIFY2(lsError.isEmpty(), qPrintable(lsError));
        int llStopped = 0, llSilent = 0, llRetries = 0, llWarnings = 0, llIncomplete = 0, llRequests = 0;
        clsSimDisplay::Statistics lcInjected;
        QElapsedTimer lcReal;
        lcReal.start();
        for (int llRun = 1; llRun <= llRuns; ++llRun) {
            SimRig r;
            // 9 pages of 256 bytes read in parts of 60: four parts and a remainder a page
            r.display.SetGeometry(0, 8, 8, 60);
            QByteArray lcFlash = r.display.Flash();
            clsSimDataGenerator::WriteLog(lcFlash, lcGenerator.Generate(quint32(llRun), 2), 0, 8, 8);
            r.display.SetFlash(lcFlash);
            clsSimFaults lcFaults;
            QVERIFY(lcFaults.Parse(faults + QStringLiteral(",seed=%1").arg(llRun), lsError));
            r.display.SetFaults(lcFaults);
            r.t.dialogs.answers << MsgResult::Cancel;
            connect(&r.app().Status(), &clsStatus::StatusChanged, [&, lsLast = QString()]() mutable {
                const QString lsNow = r.app().Status().SmallStatusString();
                llRetries += lsNow != lsLast && lsNow.startsWith(QLatin1String("Retry "));
                lsLast = lsNow;
            });
            clsError lcError;
            r.app().DownloadPages(lcError);
            llStopped += lcError.IsError();
            for (int llPage = 1; llPage <= 8; ++llPage) {
                const QString lsFile = r.app().PageFileName(llPage);
                // a page with data may only lack its file when the run stopped
                if (QFile::exists(lsFile) ? PageFileBytes(lsFile) != r.display.Page(llPage) : !r.display.PageIsEmpty(llPage) && !lcError.IsError())
                    ++llSilent;
            }
            const QStringList lcWarnings = r.t.LogLines().filter(QStringLiteral("WARNING"));
            llWarnings += int(lcWarnings.size());
            llIncomplete += int(lcWarnings.filter(QStringLiteral("is incomplete")).size());
            llRequests += r.display.Stats().requests;
            lcInjected.dropped += r.display.Stats().dropped;
            lcInjected.corrupted += r.display.Stats().corrupted;
            lcInjected.late += r.display.Stats().late;
        }
        qInfo("%s: %d runs, %d complete, %d stopped with an error, %d silent corruptions; "
              "%d requests, injected %d dropped / %d corrupted / %d late, %d retries, "
              "%d warnings (%d of them incomplete answers); %lld ms",
              qPrintable(faults), llRuns, llRuns - llStopped, llStopped, llSilent, llRequests, lcInjected.dropped,
              lcInjected.corrupted, lcInjected.late, llRetries, llWarnings, llIncomplete, qint64(lcReal.elapsed()));
        QCOMPARE(llSilent, 0);
        QVERIFY(lcInjected.dropped + lcInjected.corrupted + lcInjected.late > 0);
    }
};

QTEST_GUILESS_MAIN(tst_Reliability)
#include "tst_reliability.moc"
