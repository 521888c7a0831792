// The simulator's logbook: the 24-byte records it writes, byte for byte, and
// where in the flash they go.

#include "sim/clsSimDataGenerator.h"

#include <QtTest>

namespace {

QByteArray Hex(const clsSimRecordEncoder::Bytes& vcBytes)
{
    return QByteArray(reinterpret_cast<const char*>(vcBytes.data()), int(vcBytes.size())).toHex(' ');
}

qint64 Field31(const QByteArray& vcRecord, int vlOffset)
{
    return qint64(quint8(vcRecord[vlOffset]) | (quint8(vcRecord[vlOffset + 1]) << 8) |
                  (quint8(vcRecord[vlOffset + 2]) << 16) | (quint8(vcRecord[vlOffset + 3] & 0x7F) << 24));
}

} // namespace

class tst_SimRecordEncoder : public QObject
{
    Q_OBJECT
private slots:
    void Encode_data();
    void Encode();
    void WriteLogFillsPagesAfterTheFirst();
};

void tst_SimRecordEncoder::Encode_data()
{
    QTest::addColumn<clsSimRecordFields>("fields");
    QTest::addColumn<QByteArray>("expected");

    clsSimRecordFields lcTrip;
    lcTrip.RecordType = 2;
    lcTrip.Date = QDate(2007, 3, 5);
    lcTrip.StartTime = QTime(7, 5, 40);
    lcTrip.StopTime = QTime(8, 10, 2);
    lcTrip.Latitude = 52.0;
    lcTrip.Longitude = 4.5;
    lcTrip.TripType = 2;
    lcTrip.Direction = 90;
    lcTrip.KmCounter = 123456;
    QTest::newRow("trip") << lcTrip
                          << QByteArray("b4 38 41 41 65 0e 80 0c 14 05 e0 25 99 06 02 2d ff 02 40 e2 01 00 00 00");

    clsSimRecordFields lcRadar;
    lcRadar.RecordType = 3;
    lcRadar.Date = QDate(2024, 2, 29);
    lcRadar.StopTime = QTime(12, 0, 0);
    lcRadar.Latitude = -33.5;
    lcRadar.Longitude = -70.25;
    lcRadar.Direction = 270;
    lcRadar.Speed = 98;
    lcRadar.FrequencyBand = 1;
    lcRadar.FrequencyOffset = 140;
    lcRadar.Amplitude = 200;
    QTest::newRow("radar, south and west")
        << lcRadar << QByteArray("ff ff 00 60 5d 30 e0 45 05 02 90 ca ec 03 01 87 62 03 8c 00 01 c8 ff ff");

    clsSimRecordFields lcCorrection = lcRadar;
    lcCorrection.RecordType = 8;
    lcCorrection.Latitude = 52.0;
    lcCorrection.Longitude = 4.5;
    lcCorrection.PreviousKm = 0x01234567;
    lcCorrection.KmCounter = 100000;
    QTest::newRow("km correction keeps the old counter in 16, 15, 1, 0")
        << lcCorrection << QByteArray("67 45 00 60 5d 30 80 0c 14 05 e0 25 99 06 01 23 01 08 a0 86 01 00 00 00");

    clsSimRecordFields lcBlind = lcTrip;
    lcBlind.HasFix = false;
    lcBlind.TripType = 3;
    lcBlind.DriveTimeMarker = true;
    lcBlind.DriveTime = QTime(1, 25, 8);
    QTest::newRow("trip without fix carries its drive time")
        << lcBlind << QByteArray("24 0b 00 f8 00 00 00 00 00 00 00 00 00 00 03 00 ff 02 40 e2 01 00 00 00");

    clsSimRecordFields lcTank;
    lcTank.RecordType = 7;
    lcTank.HasFix = false;
    lcTank.TripType = 4;
    lcTank.KmCounter = 100000;
    lcTank.TankReceipt = 0xBEEF;
    QTest::newRow("tank stop without fix")
        << lcTank << QByteArray("ff ff ff ff 00 00 00 00 00 00 00 00 00 00 04 00 ff 07 a0 86 01 00 ef be");
}

void tst_SimRecordEncoder::Encode()
{
    QFETCH(clsSimRecordFields, fields);
    QFETCH(QByteArray, expected);
    QCOMPARE(Hex(clsSimRecordEncoder::Encode(fields)), expected);
}

void tst_SimRecordEncoder::WriteLogFillsPagesAfterTheFirst()
{
    // 256-byte pages hold ten records and 16 erased bytes; with FirstPage 1 the log starts on page 2.
    QVector<clsSimRecordFields> lcRecords(15);
    for (int i = 0; i < lcRecords.size(); ++i)
        lcRecords[i].KmCounter = 1000 + i;
    QByteArray lcFlash;
    QCOMPARE(clsSimDataGenerator::WriteLog(lcFlash, lcRecords, 1, 3, 8), 15);
    QCOMPARE(lcFlash.size(), 4 * 256);
    QCOMPARE(lcFlash.left(2 * 256), QByteArray(2 * 256, char(0xFF)));
    QCOMPARE(Field31(lcFlash, 2 * 256 + 9 * 24 + 18), qint64(1009));
    QCOMPARE(lcFlash.mid(2 * 256 + 240, 16), QByteArray(16, char(0xFF)));
    QCOMPARE(Field31(lcFlash, 3 * 256 + 18), qint64(1010));
    QCOMPARE(lcFlash.mid(3 * 256 + 5 * 24), QByteArray(256 - 5 * 24, char(0xFF)));

    // One page more than fits: the rest is left out.
    QCOMPARE(clsSimDataGenerator::WriteLog(lcFlash, QVector<clsSimRecordFields>(25), 1, 3, 8), 20);
}

QTEST_GUILESS_MAIN(tst_SimRecordEncoder)
#include "tst_SimRecordEncoder.moc"
