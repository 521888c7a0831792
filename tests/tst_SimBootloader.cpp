// The simulated Memory Display bootloader: where it decides a record ends,
// what it answers, and the faults the firmware upload must survive.

#include "sim/clsSimBootloader.h"
#include "sim/clsSimSamples.h"

#include <QtTest>

class tst_SimBootloader : public QObject
{
    Q_OBJECT
private slots:
    void Receive_data();
    void Receive();
    void SampleFirmwareFileIsAcceptedLineByLine();
};

void tst_SimBootloader::Receive_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks"); // hex, each handed over on its own
    QTest::addColumn<int>("nakLines"); // below 0: -1 one silent line, -2 REB at the second record
    QTest::addColumn<bool>("silentOnStart");
    QTest::addColumn<QByteArray>("answers");
    QTest::addColumn<bool>("restarted");

    // 3A 02 0010 00 AA BB cs: 02+00+10+00+AA+BB = 0x177, cs = 0x89.
    const QByteArray lcRecord("3a02001000aabb89");
    QTest::newRow("data record") << QList<QByteArray>{lcRecord} << 0 << false << QByteArray("OK\r\n") << false;
    QTest::newRow("record split over three reads")
        << QList<QByteArray>{"3a", "0200", "1000aabb89"} << 0 << false << QByteArray("OK\r\n") << false;
    QTest::newRow("two records in one read")
        << QList<QByteArray>{lcRecord + lcRecord} << 0 << false << QByteArray("OK\r\nOK\r\n") << false;
    QTest::newRow("bad checksum") << QList<QByteArray>{"3a02001000aabb88"} << 0 << false << QByteArray("NAK\r\n") << false;
    QTest::newRow("unknown record type") << QList<QByteArray>{"3a02001007aabb82"} << 0 << false << QByteArray("NAK\r\n") << false;
    QTest::newRow("end record") << QList<QByteArray>{"3a00000001ff"} << 0 << false << QByteArray("ACK\r\n") << false;
    QTest::newRow("resync fill between records")
        << QList<QByteArray>{QByteArray(512, '5').replace("55", "59"), lcRecord} << 0 << false << QByteArray("OK\r\n") << false;
    QTest::newRow("start command") << QList<QByteArray>{"4853"} << 0 << false << QByteArray("REB\r\n") << true;
    QTest::newRow("H without S is noise")
        << QList<QByteArray>{"48", "59" + lcRecord} << 0 << false << QByteArray("OK\r\n") << false;
    QTest::newRow("nak-lines=2: the third try passes")
        << QList<QByteArray>{lcRecord, lcRecord, lcRecord} << 2 << false << QByteArray("NAK\r\nNAK\r\nOK\r\n") << false;
    QTest::newRow("silent on the start command") << QList<QByteArray>{"4853"} << 0 << true << QByteArray() << true;
    QTest::newRow("silent-lines=1: the second try is answered")
        << QList<QByteArray>{lcRecord, lcRecord} << -1 << false << QByteArray("OK\r\n") << false;
    QTest::newRow("reb-at=2: restarts before the end")
        << QList<QByteArray>{lcRecord, lcRecord, lcRecord} << -2 << false << QByteArray("OK\r\nREB\r\n") << true;
}

void tst_SimBootloader::Receive()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(int, nakLines);
    QFETCH(bool, silentOnStart);
    QFETCH(QByteArray, answers);
    QFETCH(bool, restarted);

    clsSimBootloader lcBoot;
    lcBoot.SetNakLines(qMax(nakLines, 0));
    lcBoot.SetSilentLines(nakLines == -1 ? 1 : 0);
    lcBoot.SetRebootAtRecord(nakLines == -2 ? 2 : 0);
    lcBoot.SetSilentOnStart(silentOnStart);
    QByteArray lcAnswers;
    for (const QByteArray& lcChunk : chunks)
        lcAnswers += lcBoot.Receive(QByteArray::fromHex(lcChunk));
    QCOMPARE(lcAnswers, answers);
    QCOMPARE(lcBoot.Restarted(), restarted);
}

void tst_SimBootloader::SampleFirmwareFileIsAcceptedLineByLine()
{
    const QList<QByteArray> lcLines = clsSimSamples::FirmwareFile(100).split('\n');
    QVERIFY(lcLines.first().startsWith("MD "));
    clsSimBootloader lcBoot;
    QByteArray lcProgram;
    QStringList lcAnswers;
    for (int i = 1; i < lcLines.size(); ++i) {
        const QByteArray lcLine = lcLines[i].trimmed();
        if (lcLine.isEmpty())
            continue;
        const QByteArray lcBytes = QByteArray::fromHex(lcLine);
        if (lcBytes.startsWith(':') && lcBytes.size() > 5 && lcBytes[4] == 0)
            lcProgram += lcBytes.mid(5, quint8(lcBytes[1]));
        lcAnswers << QString::fromLatin1(lcBoot.Receive(lcBytes)).trimmed();
    }
    // 100 bytes in lines of 32: four data records, the end record, the start command.
    QCOMPARE(lcAnswers, QStringList({"OK", "OK", "OK", "OK", "ACK", "REB"}));
    QCOMPARE(lcLines[lcLines.size() - 2].trimmed(), QByteArray("4853"));
    QCOMPARE(lcBoot.Program(), lcProgram);
    QCOMPARE(lcProgram.size(), 100);
}

QTEST_GUILESS_MAIN(tst_SimBootloader)
#include "tst_SimBootloader.moc"
