// The simulated display's side of the protocol: what it answers, and the
// simulator's command line. (Its bootloader, its pace and its late and pulled
// line are met by the firmware, link and reliability tests.)

#include "TestFiles.h"
#include "link/clsHalvexMsg.h"
#include "platform/Cp1252.h"
#include "sim/clsSimBootloader.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimOptions.h"

#include <QTemporaryDir>
#include <QTest>

namespace {
// A host frame as the program builds it.
QByteArray Request(quint8 vbyFunc, const QByteArray& vcArguments = QByteArray())
{
    QByteArray lcFrame;
    clsHalvexMsg lcMessage(nullptr, [&lcFrame](const QByteArray& vcBytes) {
        lcFrame = vcBytes;
        return true;
    });
    lcMessage.SetDeviceAddress(0x66);
    lcMessage.SetHostAddress(0x01);
    lcMessage.Send(vbyFunc, clsHalvexMsg::StringToArgumentList(Cp1252::Decode(vcArguments)));
    return lcFrame;
}

QByteArray Answer(clsSimDisplay& rcDisplay, const QByteArray& vcRequest)
{
    const QList<clsSimDisplay::Reply> lcReplies = rcDisplay.Receive(vcRequest);
    return lcReplies.isEmpty() ? QByteArray("none") : lcReplies[0].bytes;
}

struct Answered { QString faults; QByteArray request, answer; };
}

class tst_SimDisplay : public QObject
{
    Q_OBJECT

private slots:
    void answers_data()
    {
        QTest::addColumn<Answered>("c");
        const auto F = [](quint8 vbyFunc, const char* vsArguments) { return clsSimDisplay::Frame(0x01, 0x66, vbyFunc, Hex(vsArguments)); };
        QTest::newRow("read") << Answered{"", Request(0x34, Hex("01 00 02 03")), F(0x34, "01 12 00 FF")};
        QTest::newRow("read up to the page end") << Answered{"", Request(0x34, Hex("01 00 0D 03")), F(0x34, "01 FF FF FF")};
        QTest::newRow("read past the page end") << Answered{"", Request(0x34, Hex("01 00 0E 03")), F(0x34, "00")};
        QTest::newRow("just connected") << Answered{"", Request(0xD0), F(0xD0, "01")};
        QTest::newRow("firmware download start") << Answered{"", Request(0xD9), F(0xD9, "01")};
        QTest::newRow("firmware download refused") << Answered{"refuse-d9", Request(0xD9), F(0xD9, "00")};
        QTest::newRow("firmware download start unanswered") << Answered{"silent-d9", Request(0xD9), QByteArray("none")};
        QTest::newRow("firmware stream start: no answer") << Answered{"", Request(0xCB), QByteArray("none")};
        QTest::newRow("unknown function: no answer") << Answered{"", Request(0x77), QByteArray("none")};
        QTest::newRow("wrong address: no answer") << Answered{"", Hex("00 00 65 01 07 36 55"), QByteArray("none")};
    }
    // Only a download start it says yes to takes it into its bootloader.
    void answers()
    {
        QFETCH(Answered, c);
        const auto& [faults, request, answer] = c;
        clsSimDisplay lcDisplay;
        lcDisplay.SetGeometry(0, 3, 4, 5);
        lcDisplay.SetPage(1, Hex("00 00 12 00 FF 01"));
        lcDisplay.SetJustConnected(true);
        QString lsError;
        QVERIFY(lcDisplay.Faults().Parse(faults, lsError));
        QCOMPARE(Answer(lcDisplay, request).toHex(' '), answer.toHex(' '));
        QCOMPARE(lcDisplay.InBootloader(), answer == clsSimDisplay::Frame(0x01, 0x66, 0xD9, Hex("01")));
    }

    // Writes and the plugged-in flag; erase, reads, low current and the screen
    // are met by the download, erase and greeting tests.
    void stateChanges()
    {
        clsSimDisplay lcDisplay;
        lcDisplay.SetGeometry(0, 3, 4, 16);
        Answer(lcDisplay, Request(0x33, Hex("02 00 04 03 AA 00 BB")));
        QCOMPARE(lcDisplay.Page(2).toHex(' '), QByteArray("ff ff ff ff aa 00 bb ff ff ff ff ff ff ff ff ff"));
        // Written again to the page end without an erase: only the bits that both writes cleared stay cleared.
        Answer(lcDisplay, Request(0x33, Hex("02 00 04 0C 0F F0 CC FF FF FF FF FF FF FF FF FF")));
        QCOMPARE(lcDisplay.Page(2).toHex(' '), QByteArray("ff ff ff ff 0a 00 88 ff ff ff ff ff ff ff ff ff"));
        lcDisplay.SetJustConnected(true);
        Answer(lcDisplay, Request(0xD0));
        QCOMPARE(Answer(lcDisplay, Request(0xD0)), clsSimDisplay::Frame(1, 0x66, 0xD0, Hex("00")));
        // The display knows where a frame ends from its length, so the host's plain zero checksum does not upset it.
        const QByteArray lcZero = Request(0x60);
        QCOMPARE(quint8(lcZero.back()), quint8(0));
        lcDisplay.Receive(lcZero + Request(0x36) + lcZero);
        QCOMPARE(lcDisplay.Stats().requests, 7);
        QCOMPARE(lcDisplay.Stats().badRequests, 0);
    }

    // The simulator's command line.
    void options_data() { AddTableRows(QStringLiteral("sim-options.txt")); }
    void options()
    {
        QFETCH(QStringList, row);
        const QString arguments = row[1], outcome = row[2];
        QTemporaryDir lcDir;
        const QString lsBig = lcDir.filePath(QStringLiteral("big.img"));
        WriteAll(lsBig, QByteArray(65, '\x01'));
        QStringList lcArguments = QStringList{QStringLiteral("corvane-display-sim")} + arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        lcArguments.replaceInStrings(QStringLiteral("@big"), lsBig);
        clsSimOptions lcOptions;
        clsSimDisplay lcDisplay;
        clsSimFaults lcFaults;
        clsSimBootloader lcBootloader;
        QString lsOutcome;
        if (lcOptions.Parse(lcArguments, lsOutcome) && lcOptions.PrepareDisplay(lcDisplay, lsOutcome)
            && lcOptions.ApplyFaults(lcFaults, lcBootloader, lsOutcome))
            lsOutcome = QStringLiteral("%1,%2,%3,%4 %5 baud %6 unplug %7 drop %8 seed %9 silent-from %10")
                            .arg(lcDisplay.FirstPage()).arg(lcDisplay.LastPage()).arg(lcDisplay.SizeOnePage())
                            .arg(lcDisplay.MaxDataOneMessage()).arg(QString::fromLatin1(lcDisplay.Id().toHex()))
                            .arg(lcOptions.Baud()).arg(lcOptions.UnplugAfter()).arg(lcFaults.DropRate)
                            .arg(lcFaults.Seed).arg(lcFaults.SilentFromRequest);
        QCOMPARE(lsOutcome.replace(lsBig, QStringLiteral("@big")), outcome);
    }
};

QTEST_GUILESS_MAIN(tst_SimDisplay)
#include "tst_simdisplay.moc"
