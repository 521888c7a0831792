// Seeded downloads and uploads with a display that drops, garbles and delays
// its answers: every run must end with the copy equal to the original, or
// with an error. A wrong byte that no error reports is a silent corruption and
// fails the test. CORVANE_RELIABILITY_RUNS sets the number of runs; the
// summary lines are the figures of docs/reliability.md.

#include "PageFile.h"
#include "support/SimRig.h"
#include "support/TestFiles.h"
#include "app/clsSettings.h"
#include "sim/clsSimDataGenerator.h"

#include <QElapsedTimer>
#include <QTest>
#include <random>

namespace {
// vlRuns runs (or CORVANE_RELIABILITY_RUNS), each on a fresh rig with the
// faults seeded by the run's number; vRun does one run and counts what it saw.
// The summary: the faults, the runs, vCounts(), the requests and what the
// display injected.
void SeededRuns(const QString& vsFaults, int vlRuns, const std::function<void(SimRig&, int)>& vRun,
                const std::function<QString()>& vCounts)
{
    const int llRuns = qEnvironmentVariableIntValue("CORVANE_RELIABILITY_RUNS") > 0
                           ? qEnvironmentVariableIntValue("CORVANE_RELIABILITY_RUNS") : vlRuns;
    clsSimDisplay::Statistics lcInjected;
    QElapsedTimer lcReal;
    lcReal.start();
    for (int llRun = 1; llRun <= llRuns; ++llRun) {
        SimRig r;
        r.Fault(vsFaults + QStringLiteral(",seed=%1").arg(llRun));
        vRun(r, llRun);
        lcInjected.requests += r.display.Stats().requests;
        lcInjected.dropped += r.display.Stats().dropped;
        lcInjected.corrupted += r.display.Stats().corrupted;
        lcInjected.late += r.display.Stats().late;
    }
    qInfo("%s: %d runs, %s; %d requests, injected %d dropped / %d corrupted / %d late; %lld ms", qPrintable(vsFaults),
          llRuns, qPrintable(vCounts()), lcInjected.requests, lcInjected.dropped, lcInjected.corrupted, lcInjected.late,
          qint64(lcReal.elapsed()));
    QVERIFY(lcInjected.dropped + lcInjected.corrupted + lcInjected.late > 0);
}
}

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
    // A page file must equal the page; a page with data may lack its file only when the run stopped.
    void seededDownloadsUnderFaults()
    {
        QFETCH(QString, faults);
        QString lsError;
        clsSimDataGenerator lcGenerator(clsSimDataGenerator::LoadPlaces(clsSimDataGenerator::DefaultPlacesFile(), lsError));
        QVERIFY2(lsError.isEmpty(), qPrintable(lsError));
        int llComplete = 0, llStopped = 0, llSilent = 0, llRetries = 0, llWarnings = 0, llIncomplete = 0;
        SeededRuns(faults, 200, [&](SimRig& r, int vlRun) {
            // 9 pages of 256 bytes read in parts of 60: four parts and a remainder a page
            r.display.SetGeometry(0, 8, 8, 60);
            QByteArray lcFlash = r.display.Flash();
            clsSimDataGenerator::WriteLog(lcFlash, lcGenerator.Generate(quint32(vlRun), 2), 0, 8, 8);
            r.display.SetFlash(lcFlash);
            r.t.dialogs.answers << MsgResult::Cancel;
            connect(&r.app().Status(), &clsStatus::StatusChanged, [&, lsLast = QString()]() mutable {
                const QString lsNow = r.app().Status().SmallStatusString();
                llRetries += lsNow != lsLast && lsNow.startsWith(QLatin1String("Retry "));
                lsLast = lsNow;
            });
            clsError lcError;
            r.app().DownloadPages(lcError);
            (lcError.IsError() ? llStopped : llComplete)++;
            for (int llPage = 1; llPage <= 8; ++llPage) {
                const QString lsFile = r.app().PageFileName(llPage);
                if (QFile::exists(lsFile) ? PageFileBytes(lsFile) != r.display.Page(llPage)
                                          : !r.display.PageIsEmpty(llPage) && !lcError.IsError())
                    ++llSilent;
            }
            const QStringList lcWarnings = r.t.LogLines().filter(QStringLiteral("WARNING"));
            llWarnings += int(lcWarnings.size());
            llIncomplete += int(lcWarnings.filter(QStringLiteral("is incomplete")).size());
        }, [&]() {
            return QString::asprintf("%d complete, %d stopped with an error, %d silent corruptions, %d retries, "
                                     "%d warnings (%d of them incomplete answers)",
                                     llComplete, llStopped, llSilent, llRetries, llWarnings, llIncomplete);
        });
        QCOMPARE(llSilent, 0);
    }

    void seededUploadsUnderFaults_data()
    {
        QTest::addColumn<QString>("faults");
        QTest::newRow("drop, corrupt, late at 1/100") << "drop=0.01,corrupt=0.01,late=0.01";
        QTest::newRow("writes only: drop, corrupt, late at 2/100") << "only-func=0x33,drop=0.02,corrupt=0.02,late=0.02";
    }
    // A success must leave the flash equal to the file, its deliberately lost
    // last byte excepted, with the read-back on.
    void seededUploadsUnderFaults()
    {
        QFETCH(QString, faults);
        int llComplete = 0, llWriteFailed = 0, llOtherStop = 0, llSilent = 0;
        SeededRuns(faults, 300, [&](SimRig& r, int vlRun) {
            // 12 database pages of 256 bytes, written in parts of 60 bytes
            r.display.SetGeometry(0, 12, 8, 60);
            std::mt19937 lcRandom{quint32(vlRun)};
            QByteArray lcFile;
            const int llSize = 200 + int(lcRandom() % 1800);
            for (int i = 0; i < llSize; ++i)
                lcFile.append(char(lcRandom() % 4 == 0 ? 0 : lcRandom() & 0xFF));
            WriteAll(r.t.Home() + QStringLiteral("db.ssl"), lcFile);
            r.app().Settings().SetLastFilenames(1, r.t.Home() + QStringLiteral("db.ssl"));
            r.app().UploadSelection().SetTicked(UploadType::SSL, true);
            r.app().SetVerifyUploads(true);
            r.t.dialogs.answers.append(QList<MsgResult>(8, MsgResult::Cancel));
            clsError lcError;
            r.app().HandleUploadDatabases(lcError);
            if (lcError.IsError()) {
                const bool lbWriteFailed = r.t.dialogs.Shown().contains(
                    QStringLiteral("Corvane Desktop: Unable to write to diplay, aborting upload"));
                (lbWriteFailed ? llWriteFailed : llOtherStop)++;
                QVERIFY2(!lcError.Description().startsWith(QLatin1String("Verify failed")), qPrintable(lcError.Description()));
                return;
            }
            ++llComplete;
            // all but the last byte as in the file, the last one written or left erased, nothing after it
            const QByteArray lcFlash = r.display.Flash().mid(256);
            llSilent += lcFlash.left(llSize - 1) != lcFile.left(llSize - 1) ||
                        (lcFlash.at(llSize - 1) != lcFile.at(llSize - 1) && lcFlash.at(llSize - 1) != char(0xFF)) ||
                        lcFlash.mid(llSize).count(char(0xFF)) != lcFlash.size() - llSize;
        }, [&]() {
            return QString::asprintf("%d complete, %d stopped at a failed write, %d stopped otherwise, %d silent corruptions",
                                     llComplete, llWriteFailed, llOtherStop, llSilent);
        });
        QCOMPARE(llSilent, 0);
        QVERIFY(llComplete > 0);
        QVERIFY(llWriteFailed > 0);
    }
};

QTEST_GUILESS_MAIN(tst_Reliability)
#include "tst_reliability.moc"
