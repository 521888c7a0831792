// The whole page download of the real program, through the production serial
// port and Qt's event loop, from corvane-display-sim full of generated
// logbook data on a pseudo-terminal: every page file equals the flash the
// simulator writes back on exit.

#include "PageFile.h"
#include "FakeMainWindow.h"
#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "app/clsSettings.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

class tst_DownloadPty : public QObject
{
    Q_OBJECT

private slots:
    void generatedDisplayOverAPty()
    {
        QTemporaryDir lcDir;
        const QString lsLink = lcDir.filePath(QStringLiteral("kvt"));
        const QString lsSaved = lcDir.filePath(QStringLiteral("saved.img"));
        QProcess lcSim;
        lcSim.setProgram(QStringLiteral(CORVANE_BINARY_DIR "/sim/corvane-display-sim"));
        // unpaced: the line's pace is measured by the benchmark, not here
        lcSim.setArguments({"--generate", "--seed", "5", "--days", "60", "--first-page", "0", "--last-page", "63",
                            "--page-size-log2", "8", "--max-data", "60", "--no-pacing", "--link", lsLink,
                            "--save-flash", lsSaved});
        lcSim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        lcSim.start();
        QVERIFY(lcSim.waitForStarted(3000));
        while (!lcSim.canReadLine())
            QVERIFY2(lcSim.waitForReadyRead(3000), "the simulator printed no pty");

        QTemporaryDir lcHome;
        QtEventLoop lcLoop;
        QtSerialPort lcPort(lcLoop);
        FakeUserDialogs lcDialogs;
        FakeMainWindow lcWindow;
        clsPlatform lcPlatform;
        lcPlatform.EventLoop = &lcLoop;
        lcPlatform.Dialogs = &lcDialogs;
        lcPlatform.MainWindow = &lcWindow;
        lcPlatform.Port = &lcPort;
        lcPlatform.HomeDir = lcHome.path();
        clsApplication lcApp(lcPlatform);
        lcApp.Init();
        lcApp.Settings().SetPortPath(lsLink);
        lcApp.ApplyPortSettings();
        clsError lcError;
        lcApp.DownloadPages(lcError);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QVERIFY(lcDialogs.boxes.isEmpty());

        lcSim.terminate();
        QVERIFY(lcSim.waitForFinished(3000));
        QFile lcSaved(lsSaved);
        QVERIFY(lcSaved.open(QIODevice::ReadOnly));
        const QByteArray lcFlash = lcSaved.readAll();
        QCOMPARE(lcFlash.size(), 64 * 256);
        int llFiles = 0;
        for (int llPage = 1; llPage <= 63; ++llPage) {
            const QByteArray lcPage = lcFlash.mid(llPage * 256, 256);
            const bool lbEmpty = lcPage.count(char(0xFF)) == 256;
            QCOMPARE(QFile::exists(lcApp.PageFileName(llPage)), !lbEmpty);
            if (lbEmpty)
                continue;
            ++llFiles;
            QCOMPARE(PageFileBytes(lcApp.PageFileName(llPage)), lcPage);
        }
        QVERIFY(llFiles > 30);
    }
};

QTEST_GUILESS_MAIN(tst_DownloadPty)
#include "tst_downloadpty.moc"
