// The real program against corvane-display-sim on a pseudo-terminal, through
// the production serial port and Qt's event loop: a conversation that reads
// flash the test wrote, and a cable pulled in the middle of one.

#include "FakeMainWindow.h"
#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "app/clsSettings.h"
#include "data/clsFlashMemInfo.h"
#include "link/clsHalvexMsg.h"
#include "link/clsRawPortSession.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"
#include "sim/clsSimSamples.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

namespace {

// Qt's event loop, except that a wait while the port is closed jumps to its
// deadline: no byte can arrive then, and the retry rounds after a pulled
// cable would otherwise cost six real seconds.
class clsWarpEventLoop : public QtEventLoop
{
public:
    void Watch(const ISerialPort& rcPort) { mcPort = &rcPort; }
    quint32 timeGetTime() override { return QtEventLoop::timeGetTime() + mlSkipped; }
    void WaitForEvents(quint32 vlDeadline) override
    {
        if (!mcPort || mcPort->PortOpen()) {
            QtEventLoop::WaitForEvents(vlDeadline);
            return;
        }
        const qint32 llLeft = qint32(vlDeadline - timeGetTime());
        if (llLeft > 0)
            mlSkipped += quint32(llLeft);
        DoEvents();
    }

private:
    const ISerialPort* mcPort = nullptr;
    quint32 mlSkipped = 0;
};

// The application as the program builds it, on the real port, with scripted boxes.
struct clsPtyApp {
    clsPtyApp()
        : port(loop)
    {
        loop.Watch(port);
        clsPlatform lcPlatform;
        lcPlatform.EventLoop = &loop;
        lcPlatform.Dialogs = &dialogs;
        lcPlatform.MainWindow = &window;
        lcPlatform.Port = &port;
        lcPlatform.HomeDir = home.path();
        app = std::make_unique<clsApplication>(lcPlatform);
        app->Init();
    }
    QStringList LogLines() const
    {
        QFile lcFile(home.filePath(QStringLiteral("kvtDsw.log")));
        lcFile.open(QIODevice::ReadOnly);
        return QString::fromLatin1(lcFile.readAll()).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
    }

    QTemporaryDir home;
    clsWarpEventLoop loop;
    QtSerialPort port;
    FakeUserDialogs dialogs;
    FakeMainWindow window;
    std::unique_ptr<clsApplication> app;
};

// Starts the simulator; returns the pty path it printed, empty on failure.
QString StartSimulator(QProcess& rcSim, const QStringList& vcArguments)
{
    rcSim.setProgram(QStringLiteral(CORVANE_BINARY_DIR "/sim/corvane-display-sim"));
    rcSim.setArguments(vcArguments);
    rcSim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    rcSim.start();
    if (!rcSim.waitForStarted(3000))
        return {};
    while (!rcSim.canReadLine())
        if (!rcSim.waitForReadyRead(3000))
            return {};
    return QString::fromLocal8Bit(rcSim.readLine()).trimmed();
}

QByteArray ReplyBytes(clsHalvexMsg& rcMsg, int vlFirst, int vlCount)
{
    QByteArray lcBytes;
    for (int i = vlFirst; i < vlFirst + vlCount; ++i)
        lcBytes.append(char(rcMsg.ReceiveArguments(i)));
    return lcBytes;
}

} // namespace

class tst_SimE2E : public QObject
{
    Q_OBJECT
private slots:
    void ReadsIdMemoryInfoAndAPageOfTheImage();
    void PulledCableEndsInTheRetryDialogue();
    void FirmwareLinesReachTheBootloaderAndTheDisplayComesBack();
};

void tst_SimE2E::ReadsIdMemoryInfoAndAPageOfTheImage()
{
    // Three pages of 1024 bytes, a quarter of them zero (each goes out as 00 01);
    // page 3 is left out of the image, so the display holds it erased.
    QTemporaryDir lcDir;
    QByteArray lcImage(3 * 1024, '\0');
    QRandomGenerator lcRandom(42);
    for (char& lcByte : lcImage)
        lcByte = lcRandom.bounded(4) == 0 ? char(0) : char(lcRandom.bounded(256));
    const QString lsImage = lcDir.filePath(QStringLiteral("flash.img"));
    const QString lsSaved = lcDir.filePath(QStringLiteral("saved.img"));
    QFile lcFile(lsImage);
    QVERIFY(lcFile.open(QIODevice::WriteOnly) && lcFile.write(lcImage) == lcImage.size());
    lcFile.close();

    QProcess lcSim;
    const QString lsLink = lcDir.filePath(QStringLiteral("kvt"));
    const QString lsPty = StartSimulator(lcSim, {"--flash", lsImage, "--save-flash", lsSaved, "--link", lsLink,
                                                 "--first-page", "0", "--last-page", "3", "--page-size-log2", "10",
                                                 "--max-data", "100", "--id", "12.0.34.5.6.7.8.9"});
    QVERIFY2(lsPty.startsWith(QStringLiteral("/dev/")), qPrintable(lsPty));
    QCOMPARE(QFileInfo(lsLink).symLinkTarget(), lsPty);

    clsPtyApp lcHost;
    lcHost.app->Settings().SetPortPath(lsLink);
    lcHost.app->ApplyPortSettings();
    lcHost.app->SetCommunicationIsRunning(true);
    clsError lcError;
    QCOMPARE(lcHost.app->GetDallesID(lcError), QStringLiteral("12.0.34.5.6.7.8.9."));
    QVERIFY(!lcError.IsError());

    clsFlashMemInfo lcInfo;
    lcHost.app->GetMemoryInfo(lcError, lcInfo);
    QVERIFY(!lcError.IsError());
    QCOMPARE(QList<qint32>({lcInfo.FirstPage(), lcInfo.LastPage(), lcInfo.SizeOnePage(), lcInfo.MaxDataOneMessage()}),
             QList<qint32>({0, 3, 10, 100}));
    bool lbEmpty = true;
    lcHost.app->IsPageEmpty(lcError, 1, lbEmpty);
    QVERIFY(!lbEmpty);
    lcHost.app->IsPageEmpty(lcError, 3, lbEmpty);
    QVERIFY(lbEmpty);

    clsHalvexMsg& lcMsg = lcHost.app->MessageBrooker();

    // Page 1 as the download reads it: ten parts of 100 bytes and the remainder of 24.
    QByteArray lcPage;
    for (int llOffset = 0; llOffset < 1024; llOffset += 100) {
        const int llCount = qMin(100, 1024 - llOffset);
        lcHost.app->SendAndRetry(lcError, 0x34, QStringLiteral("0x01,0x%1,0x%2,0x%3")
                                                     .arg(llOffset >> 8, 2, 16, QLatin1Char('0'))
                                                     .arg(llOffset & 0xFF, 2, 16, QLatin1Char('0'))
                                                     .arg(llCount, 2, 16, QLatin1Char('0')).toUpper().replace("0X", "0x"));
        QVERIFY(!lcError.IsError());
        QCOMPARE(lcMsg.ReceiveArguments(0), quint8(1));
        lcPage += ReplyBytes(lcMsg, 1, llCount);
    }
    QCOMPARE(lcPage, lcImage.mid(1024, 1024));
    QVERIFY(lcHost.dialogs.boxes.isEmpty());

    // A clean stop on SIGTERM writes the flash back, erased where the image ended.
    lcSim.terminate();
    QVERIFY(lcSim.waitForFinished(3000));
    QCOMPARE(lcSim.exitStatus(), QProcess::NormalExit);
    QCOMPARE(lcSim.exitCode(), 0);
    QFile lcSaved(lsSaved);
    QVERIFY(lcSaved.open(QIODevice::ReadOnly));
    QCOMPARE(lcSaved.readAll(), lcImage + QByteArray(1024, char(0xFF)));
    QVERIFY(!QFileInfo::exists(lsLink));
}

void tst_SimE2E::PulledCableEndsInTheRetryDialogue()
{
    QTemporaryDir lcDir;
    const QString lsLink = lcDir.filePath(QStringLiteral("kvt"));
    const QString lsLog = lcDir.filePath(QStringLiteral("frames.log"));
    QProcess lcSim;
    // ID, memory map, state of page 1, two reads of page 1: then the cable comes out.
    const QString lsPty = StartSimulator(lcSim, {"--generate", "--days", "10", "--link", lsLink, "--unplug-after", "5",
                                                 "--log", lsLog});
    QVERIFY2(!lsPty.isEmpty(), "the simulator did not start");

    clsPtyApp lcHost;
    lcHost.app->Settings().SetPortPath(lsLink);
    lcHost.app->ApplyPortSettings();
    lcHost.dialogs.answers.enqueue(MsgResult::Cancel);
    clsError lcError;
    lcHost.app->DownloadPages(lcError);

    QVERIFY(lcError.IsError());
    QCOMPARE(lcError.Error(), ErrorCode::CancelledByUser);
    QCOMPARE(lcHost.dialogs.boxes.size(), 1);
    QCOMPARE(lcHost.dialogs.boxes.first().text,
             QStringLiteral("Unable to communicate with display\r\nplease check the cables\r\nPress ok to continue and cancel to stop"));
    QCOMPARE(lcHost.dialogs.boxes.first().buttons, MsgButtons::OKCancel);
    QVERIFY(!lcHost.port.PortOpen());
    const QStringList lcLost = lcHost.LogLines().filter(QStringLiteral("ERROR Serial port "));
    QCOMPARE(lcLost.size(), 1);
    QVERIFY2(lcLost.first().contains(QStringLiteral(" lost: ")), qPrintable(lcLost.first()));
    // The page cut short leaves no file behind.
    QVERIFY(!QFile::exists(lcHost.app->PageFileName(1)));
    QVERIFY(!lcHost.app->CommunicationIsRunning());

    // The simulator leaves by itself once the cable is out.
    QVERIFY(lcSim.state() == QProcess::NotRunning || lcSim.waitForFinished(3000));
    QCOMPARE(lcSim.exitCode(), 0);

    // The frame log: five requests, five answers, then the pulled cable.
    QFile lcLog(lsLog);
    QVERIFY(lcLog.open(QIODevice::ReadOnly));
    const QStringList lcLines = QString::fromLatin1(lcLog.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lcLines.size(), 11);
    QVERIFY2(lcLines[0].endsWith(QStringLiteral(" in  00 00 66 01 07 ce ae")), qPrintable(lcLines[0]));
    QVERIFY2(lcLines[5].contains(QStringLiteral(" out 00 00 01 66 08 38 02 ")), qPrintable(lcLines[5]));
    QVERIFY2(lcLines[8].contains(QStringLiteral(" in  00 00 66 01 0c 34 01 00 01 78 78 ")), qPrintable(lcLines[8]));
    QCOMPARE(lcLines[10], QStringLiteral("cable pulled"));
}

void tst_SimE2E::FirmwareLinesReachTheBootloaderAndTheDisplayComesBack()
{
    QTemporaryDir lcDir;
    const QString lsLink = lcDir.filePath(QStringLiteral("kvt"));
    QProcess lcSim;
    QVERIFY(!StartSimulator(lcSim, {"--link", lsLink, "--fault", "nak-lines=2"}).isEmpty());

    clsPtyApp lcHost;
    lcHost.app->Settings().SetPortPath(lsLink);
    lcHost.app->ApplyPortSettings();
    clsHalvexMsg& lcMsg = lcHost.app->MessageBrooker();
    qint32 llTimeout = 1000;
    QVERIFY(lcMsg.SendAndWait(0xD9, QString(), llTimeout));
    QCOMPARE(lcMsg.ReceiveArguments(0), quint8(1));

    // The raw stream: the host reads the port itself, line by line, as the firmware upload does.
    QStringList lcAnswers;
    {
        clsRawPortSession lcRaw(*lcHost.app);
        const QList<QByteArray> lcLines = clsSimSamples::FirmwareFile(100).split('\n');
        for (int i = 1; i < lcLines.size(); ++i) {
            const QByteArray lcLine = lcLines[i].trimmed();
            if (lcLine.isEmpty())
                continue;
            for (;;) {
                QVERIFY(lcRaw.Output(QByteArray::fromHex(lcLine)));
                lcRaw.Flush();
                QByteArray lcReply;
                const quint32 llDeadline = lcHost.loop.timeGetTime() + 2000;
                while (lcReply.size() <= 3 && lcRaw.WaitForInput(llDeadline))
                    lcReply += lcRaw.Input();
                lcAnswers << QString::fromLatin1(lcReply).trimmed();
                if (!lcReply.startsWith("NAK"))
                    break;
            }
        }
    }
    QCOMPARE(lcAnswers, QStringList({"NAK", "NAK", "OK", "OK", "OK", "OK", "ACK", "REB"}));

    // Restarted: frames again.
    clsError lcError;
    QVERIFY(!lcHost.app->GetDallesID(lcError).isEmpty());
    QVERIFY(!lcError.IsError());
    lcSim.terminate();
    QVERIFY(lcSim.waitForFinished(3000));
}

QTEST_GUILESS_MAIN(tst_SimE2E)
#include "tst_SimE2E.moc"
