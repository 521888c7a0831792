// The frame codec on its own: frames byte for byte, argument parsing, and the
// receive state machine fed by hand or by the simulated display's framing.

#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/VirtualClock.h"
#include "sim/clsSimDisplay.h"

#include <QSignalSpy>
#include <QTest>
#include <random>

namespace {
QByteArray Hex(const char* vsHex)
{
    return QByteArray::fromHex(QByteArray(vsHex).replace(' ', ""));
}

QByteArray Arguments(const clsHalvexMsg& vcMessage)
{
    QByteArray lcArguments;
    for (int i = 0; i < vcMessage.ReceiveNofArguments(); ++i)
        lcArguments.append(char(vcMessage.ReceiveArguments(i)));
    return lcArguments;
}
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
    void frames_data()
    {
        QTest::addColumn<int>("func");
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QByteArray>("frame");
        QTest::newRow("no arguments") << 0xCE << "" << Hex("00 00 66 01 07 CE AE");
        QTest::newRow("read request, zero escaped") << 0x34 << "0x05,0x02,0x00,0x40"
                                                    << Hex("00 00 66 01 0C 34 05 02 00 01 40 19");
        QTest::newRow("0x, &H and decimal items") << 0x0F << "0x0A,&H0B,12" << Hex("00 00 66 01 0A 0F 0A 0B 0C 6F");
        QTest::newRow("one-character tail dropped") << 0x10 << "1,2,3" << Hex("00 00 66 01 09 10 01 02 7D");
        QTest::newRow("long &H item repeats the previous") << 0x10 << "0x01,&H123"
                                                            << Hex("00 00 66 01 09 10 01 01 7E");
        QTest::newRow("lower-case digits, &H of one digit") << 0x10 << "&H5,0xff,255"
                                                             << Hex("00 00 66 01 0A 10 05 FF FF 78");
        QTest::newRow("decimal reading takes &h") << 0x10 << "&h41,65" << Hex("00 00 66 01 09 10 41 41 7E");
        QTest::newRow("zero checksum goes out plain") << 0x60 << "" << Hex("00 00 66 01 07 60 00");
        QTest::newRow("two zero arguments") << 0x0B << "0x00,0x00" << Hex("00 00 66 01 0B 0B 00 01 00 01 67");
    }
    void frames()
    {
        QFETCH(int, func);
        QFETCH(QString, arguments);
        QFETCH(QByteArray, frame);
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
        QString lsMany;
        for (int i = 0; i < 256; ++i)
            lsMany += QStringLiteral("0x01,");
        QTest::newRow("256th argument") << lsMany << int(VbError::SubscriptOutOfRange);
        QTest::newRow("255 arguments fit") << lsMany.mid(5) << 0;
    }
    void runtimeErrors()
    {
        QFETCH(QString, arguments);
        QFETCH(int, number);
        auto lcMessage = NewMessage();
        long llRaised = 0;
        try {
            lcMessage->AddArguments(arguments);
        } catch (const clsRuntimeError& e) {
            llRaised = e.Number();
        }
        QCOMPARE(int(llRaised), number);
    }

    void frameLongerThanTheBufferIsASubscriptError()
    {
        auto lcMessage = NewMessage();
        QString lsZeros;
        for (int i = 0; i < 125; ++i)
            lsZeros += QStringLiteral("0x00,");
        lcMessage->AddArguments(lsZeros);
        long llRaised = 0;
        try {
            lcMessage->SendFrame();
        } catch (const clsRuntimeError& e) {
            llRaised = e.Number();
        }
        QCOMPARE(llRaised, VbError::SubscriptOutOfRange);
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

    void removeArgument()
    {
        auto lcMessage = NewMessage();
        lcMessage->AddArguments(QStringLiteral("1,2,3,4,5"));
        lcMessage->RemoveArgument(1);
        QCOMPARE(lcMessage->SendNofArguments(), quint8(3));
        QCOMPARE(lcMessage->SendArguments(1), quint8(3));
        QCOMPARE(lcMessage->SendArguments(2), quint8(4));
    }

    void argumentTexts()
    {
        QCOMPARE(clsHalvexMsg::ByteToHexArgument(10), QStringLiteral("0x0A"));
        QCOMPARE(clsHalvexMsg::ByteToHexArgument(255), QStringLiteral("0xFF"));
        QCOMPARE(clsHalvexMsg::ByteToHexArgument(0), QStringLiteral("0x00"));
        QCOMPARE(clsHalvexMsg::StringToArgumentList(QStringLiteral("AB")), QStringLiteral("0x41,0x42,"));
    }

    void receive_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("frames");
        QTest::addColumn<QByteArray>("arguments");
        QTest::addColumn<bool>("csok");
        const QByteArray lcReply = clsSimDisplay::Frame(0x01, 0x66, 0x34, Hex("01 00 FF 00"));
        QTest::newRow("zero arguments come back one each") << lcReply << 1 << Hex("01 00 FF 00") << true;
        QTest::newRow("00 00 inside a frame restarts it") << Hex("00 00 01 66 20 34 05 06") + lcReply << 1
                                                           << Hex("01 00 FF 00") << true;
        // A sender that checksums the wire bytes of its escapes fails the receiver's check.
        QTest::newRow("escape's 01 in the checksum") << Hex("00 00 01 66 09 34 00 01 5B") << 1 << Hex("00") << false;
        QTest::newRow("wrong checksum still delivered") << Hex("00 00 01 66 08 38 02 54") << 1 << Hex("02") << false;
        QByteArray lcLong = Hex("00 00 01 66 FF 34") + QByteArray(300, char(0xFF));
        QTest::newRow("no frame in 254 bytes") << lcLong + lcReply << 1 << Hex("01 00 FF 00") << true;
        const QByteArray lcZero = clsSimDisplay::Frame(0x01, 0x66, 0xCE, Hex("A7 01 01 01 01 01 01 01"));
        QTest::newRow("zero checksum and its 01, then a frame") << lcZero + lcReply << 2 << Hex("01 00 FF 00")
                                                                << true;
        const QByteArray lcPlain = clsSimDisplay::Frame(0x01, 0x66, 0xCE, Hex("A7 01 01 01 01 01 01 01"), true);
        // the pending zero turns the next preamble into a frame start one byte early
        QTest::newRow("plain zero checksum garbles the next frame") << lcPlain + lcReply << 1 << QByteArray()
                                                                     << false;
        QTest::newRow("after the garbled frame all is well") << lcPlain + lcReply + lcReply << 2
                                                              << Hex("01 00 FF 00") << true;
    }
    void receive()
    {
        QFETCH(QByteArray, input);
        QFETCH(int, frames);
        QFETCH(QByteArray, arguments);
        QFETCH(bool, csok);
        auto lcMessage = NewMessage();
        QSignalSpy lcSpy(lcMessage.get(), &clsHalvexMsg::MessageReceived);
        lcMessage->ProcesReceivedString(input);
        QCOMPARE(lcSpy.count(), frames);
        QCOMPARE(Arguments(*lcMessage).toHex(' '), arguments.toHex(' '));
        QCOMPARE(lcMessage->ReceiveCSOK(), csok);
    }

    void overlongInputReportsTheDroppedByte()
    {
        auto lcMessage = NewMessage();
        QVERIFY(!lcMessage->ProcesReceivedString(Hex("00 00 01 66 FF 34") + QByteArray(260, char(0x11))));
    }

    // Any argument list that fits the receiver, echoed by the display, comes
    // back the same whatever the chunks the serial port delivers it in.
    void roundTripThroughTheDisplay()
    {
        clsSimDisplay lcDisplay;
        lcDisplay.SetEchoFunction(0x7E);
        std::mt19937 lcRandom(2024);
        for (int llCase = 0; llCase < 150; ++llCase) {
            QByteArray lcArguments;
            const int llZeroShare = int(lcRandom() % 4);
            for (int llWire = 7;;) {
                const quint8 lbyValue = lcRandom() % 4 < quint32(llZeroShare) ? 0 : quint8(lcRandom());
                llWire += lbyValue == 0 ? 2 : 1;
                if (llWire > 254 || lcRandom() % 120 == 0)
                    break;
                lcArguments.append(char(lbyValue));
            }
            QString lsText;
            for (const char lcByte : lcArguments)
                lsText += clsHalvexMsg::ByteToHexArgument(quint8(lcByte)) + QLatin1Char(',');
            auto lcHost = NewMessage();
            lcHost->Send(0x7E, lsText);
            const QList<clsSimDisplay::Reply> lcReplies = lcDisplay.Receive(mcSent.value(0));
            QCOMPARE(lcReplies.size(), 1);
            const QByteArray lcReply = lcReplies[0].bytes;
            for (int llChunk = 1; llChunk <= lcReply.size(); ++llChunk) {
                auto lcReceiver = NewMessage();
                for (int i = 0; i < lcReply.size(); i += llChunk)
                    lcReceiver->ProcesReceivedString(lcReply.mid(i, llChunk));
                if (Arguments(*lcReceiver) != lcArguments || !lcReceiver->ReceiveCSOK() ||
                    lcReceiver->ReceiveFunc() != 0x7E)
                    QFAIL(qPrintable(QStringLiteral("case %1, chunks of %2: %3").arg(llCase).arg(llChunk).arg(
                        QString::fromLatin1(lcArguments.toHex(' ')))));
            }
        }
    }
};

QTEST_GUILESS_MAIN(tst_HalvexMsg)
#include "tst_halvexmsg.moc"
