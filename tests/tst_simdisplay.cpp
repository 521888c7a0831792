// The simulated display's side of the protocol: what it answers, how its
// faults behave and how its serial line paces the bytes.

#include "link/clsHalvexMsg.h"
#include "platform/QtEventLoop.h"
#include "platform/VirtualClock.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimSerialPort.h"

#include <QCoreApplication>
#include <QTest>

namespace {
QByteArray Hex(const char* vsHex)
{
    return QByteArray::fromHex(QByteArray(vsHex).replace(' ', ""));
}

// A host frame as the program builds it.
QByteArray Request(quint8 vbyFunc, const QByteArray& vcArguments)
{
    QByteArray lcFrame;
    VirtualClock lcClock;
    clsHalvexMsg lcMessage(&lcClock, [&lcFrame](const QByteArray& vcBytes) {
        lcFrame = vcBytes;
        return true;
    });
    lcMessage.SetDeviceAddress(0x66);
    lcMessage.SetHostAddress(0x01);
    QString lsText;
    for (const char lcByte : vcArguments)
        lsText += clsHalvexMsg::ByteToHexArgument(quint8(lcByte)) + QLatin1Char(',');
    lcMessage.Send(vbyFunc, lsText);
    return lcFrame;
}

QByteArray Answer(clsSimDisplay& rcDisplay, quint8 vbyFunc, const QByteArray& vcArguments)
{
    const QList<clsSimDisplay::Reply> lcReplies = rcDisplay.Receive(Request(vbyFunc, vcArguments));
    return lcReplies.isEmpty() ? QByteArray("none") : lcReplies[0].bytes;
}
}

class tst_SimDisplay : public QObject
{
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<int>("func");
        QTest::addColumn<QByteArray>("arguments");
        QTest::addColumn<QByteArray>("answer");
        const auto F = [](quint8 vbyFunc, const char* vsArguments) {
            return clsSimDisplay::Frame(0x01, 0x66, vbyFunc, Hex(vsArguments));
        };
        QTest::newRow("read") << 0x34 << Hex("01 00 02 03") << F(0x34, "01 12 00 FF");
        QTest::newRow("read past the page end") << 0x34 << Hex("01 00 0E 03") << F(0x34, "00");
        QTest::newRow("just connected") << 0xD0 << QByteArray() << F(0xD0, "01");
        QTest::newRow("firmware download start") << 0xD9 << QByteArray() << F(0xD9, "01");
        QTest::newRow("firmware stream start: no answer") << 0xCB << QByteArray() << QByteArray("none");
        QTest::newRow("unknown function: no answer") << 0x77 << QByteArray() << QByteArray("none");
        QTest::newRow("wrong address: no answer") << 0x00 << QByteArray() << QByteArray("none");
    }
    void answers()
    {
        QFETCH(int, func);
        QFETCH(QByteArray, arguments);
        QFETCH(QByteArray, answer);
        clsSimDisplay lcDisplay;
        lcDisplay.SetGeometry(0, 3, 4, 5);
        lcDisplay.SetPage(1, Hex("00 00 12 00 FF 01"));
        lcDisplay.SetJustConnected(true);
        QByteArray lcRequest = Request(quint8(func), arguments);
        if (func == 0)
            lcRequest = Hex("00 00 65 01 07 36 55");
        const QList<clsSimDisplay::Reply> lcReplies = lcDisplay.Receive(lcRequest);
        const QByteArray lcAnswer = lcReplies.isEmpty() ? QByteArray("none") : lcReplies[0].bytes;
        QCOMPARE(lcAnswer.toHex(' '), answer.toHex(' '));
    }

    // Writes, screen text and the plugged-in flag; erase, reads and low current
    // are met by the download and erase tests.
    void stateChanges()
    {
        clsSimDisplay lcDisplay;
        lcDisplay.SetGeometry(0, 3, 4, 16);
        Answer(lcDisplay, 0x33, Hex("02 00 04 03 AA 00 BB"));
        QCOMPARE(lcDisplay.Page(2).toHex(' '), QByteArray("ff ff ff ff aa 00 bb ff ff ff ff ff ff ff ff ff"));
        // Written again without an erase: only the bits that both writes cleared stay cleared.
        Answer(lcDisplay, 0x33, Hex("02 00 04 03 0F F0 CC"));
        QCOMPARE(lcDisplay.Page(2).toHex(' '), QByteArray("ff ff ff ff 0a 00 88 ff ff ff ff ff ff ff ff ff"));
        Answer(lcDisplay, 0x0F, Hex("0B 28 00 01") + "Hi");
        QCOMPARE(lcDisplay.ScreenText(), QStringList{QStringLiteral("Hi")});
        lcDisplay.SetJustConnected(true);
        Answer(lcDisplay, 0xD0, QByteArray());
        QCOMPARE(Answer(lcDisplay, 0xD0, QByteArray()), clsSimDisplay::Frame(1, 0x66, 0xD0, Hex("00")));
    }

    // The display knows where a frame ends from its length, so the host's plain zero checksum does not upset it.
    void hostZeroChecksumIsHarmless()
    {
        clsSimDisplay lcDisplay;
        const QByteArray lcZero = Request(0x60, QByteArray());
        QCOMPARE(quint8(lcZero.back()), quint8(0));
        lcDisplay.Receive(lcZero + Request(0x36, QByteArray()) + lcZero);
        QCOMPARE(lcDisplay.Stats().requests, 3);
        QCOMPARE(lcDisplay.Stats().badRequests, 0);
    }

    void bootloaderHook()
    {
        clsSimDisplay lcDisplay;
        QByteArray lcSeen;
        Answer(lcDisplay, 0xD9, QByteArray());
        QVERIFY(lcDisplay.InBootloader());
        QCOMPARE(lcDisplay.Receive(Request(0x36, QByteArray())).size(), 0);
        lcDisplay.SetBootloaderHook([&lcSeen](const QByteArray& vcBytes) {
            lcSeen += vcBytes;
            return BootloaderReply{QByteArray("OK\r\n"), vcBytes.endsWith("HS")};
        });
        QCOMPARE(lcDisplay.Receive(":abc").value(0).bytes, QByteArray("OK\r\n"));
        lcDisplay.Receive("HS");
        QCOMPARE(lcSeen, QByteArray(":abcHS"));
        QVERIFY(!lcDisplay.InBootloader());
        QCOMPARE(Answer(lcDisplay, 0x36, QByteArray()).at(5), char(0x36));
    }

    void downloadStartFaults_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("refused") << "refuse-d9" << clsSimDisplay::Frame(1, 0x66, 0xD9, Hex("00"));
        QTest::newRow("silent") << "silent-d9" << QByteArray("none");
    }
    void downloadStartFaults()
    {
        QFETCH(QString, fault);
        QFETCH(QByteArray, answer);
        clsSimDisplay lcDisplay;
        QString lsError;
        QVERIFY(lcDisplay.Faults().Parse(fault, lsError));
        QCOMPARE(Answer(lcDisplay, 0xD9, QByteArray()), answer);
        QVERIFY(!lcDisplay.InBootloader());
    }

    void parseFaults_data()
    {
        QTest::addColumn<QString>("faults");
        QTest::addColumn<QString>("error");
        QTest::newRow("rates and seed") << "drop=0.01,corrupt=0.02,late=0.005,seed=7" << "";
        QTest::newRow("pairs") << "page-state=5:3,read-status=6:0,new-id=1.2.3.4.5.6.7.8." << "";
        QTest::newRow("unknown") << "drop=0.01,explode" << "unknown fault \"explode\"";
        QTest::newRow("rate above 1") << "drop=2" << "bad value \"2\" for fault \"drop\"";
        QTest::newRow("short id") << "new-id=1.2.3" << "bad value \"1.2.3\" for fault \"new-id\"";
    }
    void parseFaults()
    {
        QFETCH(QString, faults);
        QFETCH(QString, error);
        clsSimFaults lcFaults;
        QString lsError;
        QCOMPARE(lcFaults.Parse(faults, lsError), error.isEmpty());
        QCOMPARE(lsError, error);
    }

    // A late display is busy: the retry sent meanwhile is lost, and the late answer comes once.
    void lateAnswerAndDeafDisplay()
    {
        VirtualClock lcClock;
        clsSimDisplay lcDisplay;
        clsSimSerialPort lcPort(lcDisplay, lcClock);
        int llAnswers = 0;
        lcPort.SetOnComm([&]() { llAnswers += lcPort.Input().size() > 0; });
        lcPort.SetPortOpen(true);
        lcDisplay.Faults().LateNext = 1;
        lcPort.Output(Request(0x36, QByteArray()));
        lcClock.Advance(1000);
        QCOMPARE(llAnswers, 0);
        lcPort.Output(Request(0x36, QByteArray()));
        lcClock.Advance(1000);
        QCOMPARE(llAnswers, 1);
        QCOMPARE(lcDisplay.Stats().requests, 1);
        QCOMPARE(lcPort.BytesLost(), qint64(7));
    }

    void pulledCable()
    {
        VirtualClock lcClock;
        clsSimDisplay lcDisplay;
        clsSimSerialPort lcPort(lcDisplay, lcClock);
        lcPort.SetCableConnected(false);
        QVERIFY(!lcPort.SetPortOpen(true));
        lcPort.SetCableConnected(true);
        QVERIFY(lcPort.SetPortOpen(true));
        lcPort.SetCableConnected(false);
        lcPort.Output(Request(0x36, QByteArray()));
        lcClock.Advance(100);
        QCOMPARE(lcDisplay.Stats().requests, 0);
        QVERIFY(lcPort.Input().isEmpty());
    }

    // The same line in real time, for the program's --simulate.
    void realTimeScheduler()
    {
        clsSimDisplay lcDisplay;
        QtEventLoop lcLoop;
        clsSimSerialPort lcPort(lcDisplay, lcLoop, clsSimSerialPort::QtTimerScheduler(this), 9600);
        lcPort.SetPortOpen(true);
        const quint32 llStart = lcLoop.timeGetTime();
        lcPort.Output(Request(0xCE, QByteArray()));
        // the 7-byte request takes 7 ms on the wire at 960 bytes a second
        lcPort.Flush();
        QVERIFY(lcLoop.timeGetTime() - llStart >= 7);
        QVERIFY(lcPort.WaitForInput(llStart + 2000));
        // 23 bytes at 960 bytes a second
        QVERIFY(lcLoop.timeGetTime() - llStart >= 23);
    }
};

QTEST_GUILESS_MAIN(tst_SimDisplay)
#include "tst_simdisplay.moc"
