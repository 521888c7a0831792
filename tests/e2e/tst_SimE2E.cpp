// The real program against corvane-display-sim on a pseudo-terminal, through
// the production serial port and Qt's event loop: a cable pulled in the
// middle of a download, and the raw stream of a firmware upload.

#include "SimProcess.h"
#include "TestApp.h"
#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "link/clsRawPortSession.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"
#include "sim/clsSimSamples.h"

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

// The application as the program builds it, on the real port, connected to
// a simulator started with vcArguments.
struct clsPtyApp {
    explicit clsPtyApp(const QStringList& vcArguments)
    {
        loop.Watch(port);
        connected = sim.Start(vcArguments);
        t.app->Settings().SetPortPath(sim.Link());
        t.app->ApplyPortSettings();
    }

    SimProcess sim;
    bool connected = false;
    clsWarpEventLoop loop;
    QtSerialPort port{loop};
    TestApp t{&port, true, nullptr, &loop};
};

} // namespace

class tst_SimE2E : public QObject
{
    Q_OBJECT
private slots:
    void PulledCableEndsInTheRetryDialogue();
    void FirmwareLinesReachTheBootloaderAndTheDisplayComesBack();
};

void tst_SimE2E::PulledCableEndsInTheRetryDialogue()
{
    // ID, memory map, state of page 1, two reads of page 1: then the cable comes out.
    QTemporaryDir lcDir;
    const QString lsLog = lcDir.filePath(QStringLiteral("frames.log"));
    clsPtyApp lcHost({"--generate", "--days", "10", "--unplug-after", "5", "--log", lsLog});
    QVERIFY(lcHost.connected);
    lcHost.t.dialogs.answers.enqueue(MsgResult::Cancel);
    clsError lcError;
    lcHost.t.app->DownloadPages(lcError);

    QCOMPARE(lcError.Error(), ErrorCode::CancelledByUser);
    QCOMPARE(lcHost.t.dialogs.boxes.size(), 1);
    QCOMPARE(lcHost.t.dialogs.boxes.first().text,
             QStringLiteral("Unable to communicate with display\r\nplease check the cables\r\nPress ok to continue and cancel to stop"));
    QCOMPARE(lcHost.t.dialogs.boxes.first().buttons, MsgButtons::OKCancel);
    QVERIFY(!lcHost.port.PortOpen());
    const QStringList lcLost = lcHost.t.LogLines().filter(QStringLiteral("ERROR Serial port "));
    QCOMPARE(lcLost.size(), 1);
    QVERIFY2(lcLost.first().contains(QStringLiteral(" lost: ")), qPrintable(lcLost.first()));
    // The page cut short leaves no file behind.
    QVERIFY(!QFile::exists(lcHost.t.app->PageFileName(1)));
    QVERIFY(!lcHost.t.app->CommunicationIsRunning());
    QVERIFY(lcHost.sim.Exited());

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
    clsPtyApp lcHost({"--fault", "nak-lines=2"});
    QVERIFY(lcHost.connected);
    clsHalvexMsg& lcMsg = lcHost.t.app->MessageBrooker();
    qint32 llTimeout = 1000;
    QVERIFY(lcMsg.SendAndWait(0xD9, QString(), llTimeout));
    QCOMPARE(lcMsg.ReceiveArguments(0), quint8(1));

    // The raw stream: the host reads the port itself, line by line, as the firmware upload does.
    QStringList lcAnswers;
    {
        clsRawPortSession lcRaw(*lcHost.t.app);
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
    QVERIFY(!lcHost.t.app->GetDallesID(lcError).isEmpty());
    QVERIFY(!lcError.IsError());
    QVERIFY(lcHost.sim.Stop());
}

QTEST_GUILESS_MAIN(tst_SimE2E)
#include "tst_SimE2E.moc"
