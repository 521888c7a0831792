// Seeded database uploads to a display that drops, garbles and delays its
// answers, with the read-back on: every run must either end in success with
// the display's flash equal to the file (its deliberately lost last byte
// excepted), or stop with an error. A success whose flash differs is a silent
// corruption and fails the test. CORVANE_RELIABILITY_RUNS sets the number of
// runs (300 by default); the figures go to docs/reliability.md.

#include "support/SimRig.h"
#include "support/TestFiles.h"

#include "app/clsSettings.h"

#include <QElapsedTimer>
#include <QTest>
#include <random>

class tst_UploadReliability : public QObject
{
    Q_OBJECT

private slots:
    void seededUploadsUnderFaults_data()
    {
        QTest::addColumn<QString>("faults");
        QTest::newRow("drop, corrupt, late at 1/100") << "drop=0.01,corrupt=0.01,late=0.01";
        QTest::newRow("writes only: drop, corrupt, late at 2/100")
            << "only-func=0x33,drop=0.02,corrupt=0.02,late=0.02";
    }
    void seededUploadsUnderFaults()
    {
        QFETCH(QString, faults);
        const int llRuns = qEnvironmentVariableIsSet("CORVANE_RELIABILITY_RUNS")
                               ? qEnvironmentVariableIntValue("CORVANE_RELIABILITY_RUNS")
                               : 300;
        int llComplete = 0, llWriteFailed = 0, llOtherStop = 0, llSilent = 0;
        quint32 llLongestMs = 0;
        clsSimDisplay::Statistics lcInjected;
        QElapsedTimer lcReal;
        lcReal.start();
        for (int llRun = 1; llRun <= llRuns; ++llRun) {
            SimRig r;
            // 12 database pages of 256 bytes, written in parts of 60 bytes
            r.display.SetGeometry(0, 12, 8, 60);
            std::mt19937 lcRandom{quint32(llRun)};
            QByteArray lcFile;
            const int llSize = 200 + int(lcRandom() % 1800);
            for (int i = 0; i < llSize; ++i)
                lcFile.append(char(lcRandom() % 4 == 0 ? 0 : lcRandom() & 0xFF));
            const QString lsPath = r.t.Home() + QStringLiteral("db.ssl");
            WriteAll(lsPath, lcFile);
            r.app().Settings().SetLastFilenames(1, lsPath);
            r.app().UploadSelection().SetTicked(UploadType::SSL, true);
            r.app().SetVerifyUploads(true);
            QString lsError;
            clsSimFaults lcFaults;
            QVERIFY(lcFaults.Parse(faults, lsError));
            lcFaults.Seed = quint32(llRun);
            r.display.SetFaults(lcFaults);
            for (int i = 0; i < 8; ++i)
                r.t.dialogs.answers << MsgResult::Cancel;
            const quint32 llStart = r.clock->timeGetTime();
            clsError lcError;
            r.app().HandleUploadDatabases(lcError);
            llLongestMs = qMax(llLongestMs, r.clock->timeGetTime() - llStart);
            const clsSimDisplay::Statistics& s = r.display.Stats();
            lcInjected.dropped += s.dropped;
            lcInjected.corrupted += s.corrupted;
            lcInjected.late += s.late;
            lcInjected.wrongFunc += s.wrongFunc;
            lcInjected.requests += s.requests;
            if (lcError.IsError()) {
                const bool lbWrite = !r.t.dialogs.boxes.isEmpty() &&
                                     r.t.dialogs.boxes.last().text ==
                                         QStringLiteral("Unable to write to diplay, aborting upload");
                (lbWrite ? llWriteFailed : llOtherStop)++;
                QVERIFY2(!lcError.Description().startsWith(QLatin1String("Verify failed")),
                         qPrintable(lcError.Description()));
                continue;
            }
            ++llComplete;
            // all but the last byte as in the file, the last one written or
            // left erased, and nothing after it
            const QByteArray lcFlash = r.display.Flash().mid(256);
            const char lcLast = lcFlash.at(llSize - 1);
            if (lcFlash.left(llSize - 1) != lcFile.left(llSize - 1) ||
                (lcLast != lcFile.at(llSize - 1) && lcLast != char(0xFF)) ||
                lcFlash.mid(llSize).count(char(0xFF)) != lcFlash.size() - llSize)
                ++llSilent;
            QCOMPARE(llSilent, 0);
        }
        qInfo("%s: %d runs, %d complete, %d stopped at a failed write, %d stopped otherwise, %d silent "
              "corruptions; %d requests, %d dropped, %d corrupted, %d late, longest run %u ms virtual, %lld ms real",
              qPrintable(faults), llRuns, llComplete, llWriteFailed, llOtherStop, llSilent, lcInjected.requests,
              lcInjected.dropped, lcInjected.corrupted, lcInjected.late, llLongestMs, lcReal.elapsed());
        QCOMPARE(llComplete + llWriteFailed + llOtherStop, llRuns);
        QVERIFY(llComplete > 0);
        QVERIFY(llWriteFailed > 0);
    }
};

QTEST_GUILESS_MAIN(tst_UploadReliability)
#include "tst_uploadreliability.moc"
