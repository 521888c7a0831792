// The frame codec on its own: frames byte for byte, argument parsing, and the
// receive state machine fed by hand or by the simulated display's framing.

#include "TestFiles.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/VirtualClock.h"
#include "sim/clsSimDisplay.h"

#include <QSignalSpy>
#include <QTest>

namespace {
QByteArray Arguments(const clsHalvexMsg& vcMessage)
{
    QByteArray lcArguments;
    for (int i = 0; i < vcMessage.ReceiveNofArguments(); ++i)
        lcArguments.append(char(vcMessage.ReceiveArguments(i)));
    return lcArguments;
}

// taken: false when a byte was dropped for want of room in the receive buffer
struct Received { QByteArray input; int frames; QByteArray arguments; bool csok, taken = true; };
}

class tst_HalvexMsg : public QObject
{
    Q_OBJECT

    VirtualClock mcClock;
    QList<QByteArray> mcSent;

    std::unique_ptr<clsHalvexMsg> NewMessage()
    {
        mcSent.clear();
        auto lcMessage = std::make_unique<clsHalvexMsg>(&mcClock, [this](const QByteArray& vcFrame) {
            mcSent.append(vcFrame);
            return true;
        });
        lcMessage->SetDeviceAddress(0x66);
        lcMessage->SetHostAddress(0x01);
        return lcMessage;
    }

private slots:
    void frames_data() { AddTableRows(QStringLiteral("frames.txt")); }
    void frames()
    {
        QFETCH(QStringList, row);
        const int func = row[1].toInt(nullptr, 16);
        const QString arguments = row[2];
        const QByteArray frame = QByteArray::fromHex(row[3].toLatin1());
        auto lcMessage = NewMessage();
        QSignalSpy lcSpy(lcMessage.get(), &clsHalvexMsg::MessageSend);
        lcMessage->Send(quint8(func), arguments);
        QCOMPARE(mcSent.value(0).toHex(' '), frame.toHex(' '));
        QCOMPARE(lcMessage->SendNofBytes(), quint8(frame.size()));
        QCOMPARE(lcMessage->SendCS(), quint8(frame.back()));
        QCOMPARE(lcSpy.count(), 1);
    }

    void stoppedSendingBuildsButSendsNothing()
    {
        auto lcMessage = NewMessage();
        lcMessage->StopComSending();
        lcMessage->Send(0xCE, QString());
        lcMessage->SendFrame();
        QCOMPARE(mcSent.size(), 0);
        QCOMPARE(lcMessage->SendBuffer(5), quint8(0));
        lcMessage->StartComSending();
        lcMessage->Send(0xCE, QString());
        QCOMPARE(mcSent.size(), 1);
    }

    void runtimeErrors_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<int>("number");
        QTest::newRow("decimal above 255") << "256" << int(VbError::Overflow);
        QTest::newRow("hex above 255") << "0x100" << int(VbError::Overflow);
        QTest::newRow("negative") << "-1" << int(VbError::Overflow);
        QTest::newRow("&hFFFF reads as -1") << "0xFFFF" << int(VbError::Overflow);
        QTest::newRow("&H of five characters repeats") << "&HFFF" << 0;
        QTest::newRow("256th argument") << QStringLiteral("0x01,").repeated(256) << int(VbError::SubscriptOutOfRange);
        QTest::newRow("255 arguments fit") << QStringLiteral("0x01,").repeated(255) << 0;
        // 125 zeros fit the arguments, but their escapes do not fit the frame buffer: nothing goes out
        QTest::newRow("frame longer than the buffer") << QStringLiteral("0x00,").repeated(125) + "send" << int(VbError::SubscriptOutOfRange);
    }
    void runtimeErrors()
    {
        QFETCH(QString, arguments);
        QFETCH(int, number);
        auto lcMessage = NewMessage();
        long llRaised = 0;
        try {
            lcMessage->AddArguments(arguments.section(QStringLiteral("send"), 0, 0));
            if (arguments.endsWith(QLatin1String("send")))
                lcMessage->SendFrame();
        } catch (const clsRuntimeError& e) {
            llRaised = e.Number();
        }
        QCOMPARE(int(llRaised), number);
        QCOMPARE(mcSent.size(), 0);
    }

    // Page, address bytes, count, then the data from the start index; no answer
    // within a second is a failed write.
    void flashData()
    {
        auto lcMessage = NewMessage();
        const QByteArray lcData = Hex("AA BB 00 05");
        const quint32 llStart = mcClock.timeGetTime();
        QVERIFY(!lcMessage->SendFlashData(2, 0x00, 0x10, 3, 1, lcData));
        QCOMPARE(mcClock.timeGetTime() - llStart, quint32(1000));
        QCOMPARE(mcSent.value(0).toHex(' '), Hex("00 00 66 01 10 33 02 00 01 10 03 BB 00 01 05 EB").toHex(' '));
        long llRaised = 0;
        try {
            lcMessage->SendFlashData(256, 0, 0, 1, 0, lcData);
        } catch (const clsRuntimeError& e) {
            llRaised = e.Number();
        }
        QCOMPARE(llRaised, VbError::Overflow);
    }

    void argumentHelpers()
    {
        auto lcMessage = NewMessage();
        lcMessage->AddArguments(QStringLiteral("1,2,3,4,5"));
        lcMessage->RemoveArgument(0);
        lcMessage->RemoveArgument(1);
        QCOMPARE(lcMessage->SendNofArguments(), quint8(2));
        QCOMPARE((QList<int>{lcMessage->SendArguments(0), lcMessage->SendArguments(1)}), (QList<int>{2, 4}));
        QCOMPARE(clsHalvexMsg::ByteToHexArgument(10) + clsHalvexMsg::ByteToHexArgument(255) + clsHalvexMsg::ByteToHexArgument(0),
                 QStringLiteral("0x0A0xFF0x00"));
        QCOMPARE(clsHalvexMsg::StringToArgumentList(QStringLiteral("AB")), QStringLiteral("0x41,0x42,"));
    }

    void receive_data()
    {
        QTest::addColumn<Received>("c");
        const QByteArray lcReply = clsSimDisplay::Frame(0x01, 0x66, 0x34, Hex("01 00 FF 00"));
        QTest::newRow("zero arguments come back one each") << Received{lcReply, 1, Hex("01 00 FF 00"), true};
        QTest::newRow("00 00 inside a frame restarts it")
            << Received{Hex("00 00 01 66 20 34 05 06") + lcReply, 1, Hex("01 00 FF 00"), true};
        // A sender that checksums the wire bytes of its escapes fails the receiver's check.
        QTest::newRow("escape's 01 in the checksum") << Received{Hex("00 00 01 66 09 34 00 01 5B"), 1, Hex("00"), false};
        QTest::newRow("wrong checksum still delivered") << Received{Hex("00 00 01 66 08 38 02 54"), 1, Hex("02"), false};
        QByteArray lcLong = Hex("00 00 01 66 FF 34") + QByteArray(300, char(0xFF));
        QTest::newRow("no frame in 254 bytes") << Received{lcLong + lcReply, 1, Hex("01 00 FF 00"), true, false};
        const QByteArray lcZero = clsSimDisplay::Frame(0x01, 0x66, 0xCE, Hex("A7 01 01 01 01 01 01 01"));
        QTest::newRow("zero checksum and its 01, then a frame") << Received{lcZero + lcReply, 2, Hex("01 00 FF 00"), true};
        const QByteArray lcPlain = clsSimDisplay::Frame(0x01, 0x66, 0xCE, Hex("A7 01 01 01 01 01 01 01"), true);
        // the pending zero turns the next preamble into a frame start one byte early
        QTest::newRow("plain zero checksum garbles the next frame") << Received{lcPlain + lcReply, 1, QByteArray(), false};
        QTest::newRow("after the garbled frame all is well") << Received{lcPlain + lcReply + lcReply, 2, Hex("01 00 FF 00"), true};
    }
    void receive()
    {
        QFETCH(Received, c);
        const auto& [input, frames, arguments, csok, taken] = c;
        auto lcMessage = NewMessage();
        QSignalSpy lcSpy(lcMessage.get(), &clsHalvexMsg::MessageReceived);
        QCOMPARE(lcMessage->ProcesReceivedString(input), taken);
        QCOMPARE(lcSpy.count(), frames);
        QCOMPARE(Arguments(*lcMessage).toHex(' '), arguments.toHex(' '));
        QCOMPARE(lcMessage->ReceiveCSOK(), csok);
        // The checksum as sent: the frame's last byte (none of these ends in an escaped zero).
        if (!arguments.isEmpty())
            QCOMPARE(lcMessage->ReceiveCS(), quint8(input.back()));
    }
};

QTEST_GUILESS_MAIN(tst_HalvexMsg)
#include "tst_halvexmsg.moc"
