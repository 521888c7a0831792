#include "data/clsGpsPlaces.h"
#include "data/clsHalvexRecord.h"

#include <QTemporaryDir>
#include <QtTest>
#include <functional>

namespace {
using Bytes = clsHalvexRecord::Bytes;

constexpr qint32 kLat5221 = 54000000 + 52 * 600000 + 21 * 10000 + 4567; // N,52,21.4567
constexpr qint32 kLon0453 = 108000000 + 4 * 600000 + 53 * 10000 + 1234; // E,004,53.1234

quint16 Time(int h, int m, int s) { return quint16((h << 11) | (m << 5) | (s / 2)); }
quint16 Date(int y, int m, int d) { return quint16(((y - 2000) << 9) | (m << 5) | d); }

void Put16(Bytes& b, int at, quint32 v)
{
    b[size_t(at)] = quint8(v);
    b[size_t(at + 1)] = quint8(v >> 8);
}

void Put32(Bytes& b, int at, quint32 v)
{
    Put16(b, at, v);
    Put16(b, at + 2, v >> 16);
}

// A record of the given kind with a fix at a Dutch position on 5-3-2007.
Bytes Fix(int vlType)
{
    Bytes b{};
    b[17] = quint8(vlType);
    Put16(b, 0, Time(7, 5, 40));
    Put16(b, 2, Time(8, 30, 0));
    Put16(b, 4, Date(2007, 3, 5));
    Put32(b, 6, kLat5221);
    Put32(b, 10, kLon0453);
    b[14] = 2;
    b[15] = 200;
    b[16] = 87;
    Put32(b, 18, 123456);
    Put16(b, 22, 4711);
    return b;
}

Bytes NoFix(Bytes b)
{
    for (int i = 4; i <= 13; ++i)
        b[size_t(i)] = 0;
    return b;
}

clsHalvexRecord Decode(const Bytes& b)
{
    clsHalvexRecord r;
    r.DeCodeData(b);
    return r;
}

using Column = std::function<QString(clsHalvexRecord&)>;
}
Q_DECLARE_METATYPE(Bytes)
Q_DECLARE_METATYPE(Column)

class tst_clsHalvexRecord : public QObject
{
    Q_OBJECT

private slots:
    void validity_data();
    void validity();
    void columns_data();
    void columns();
    void coordinateTexts_data();
    void coordinateTexts();
    void bit31IsClearedInPlaceOnRead();
    void fullLineAndHeader();
    void placeColumnsCacheTheLookup();
    void tankStopBorrowsPositionOfATripWithFix();
};

void tst_clsHalvexRecord::validity_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<bool>("validGps");
    QTest::addColumn<bool>("validKm");
    const Bytes lcTrip = Fix(2);
    const QByteArray lcTripBytes(reinterpret_cast<const char*>(lcTrip.data()), 24);
    QTest::newRow("24 bytes") << lcTripBytes << true << true << true;
    QTest::newRow("23 bytes") << lcTripBytes.left(23) << false << false << false;
    QTest::newRow("25 bytes") << lcTripBytes + char(0) << false << false << false;
    QByteArray lcEmpty = lcTripBytes;
    lcEmpty[17] = char(255);
    QTest::newRow("empty slot") << lcEmpty << false << false << false;
    QByteArray lcNoKm = lcTripBytes;
    lcNoKm.replace(20, 4, QByteArray(4, char(255)));
    QTest::newRow("bytes 20-23 erased") << lcNoKm << true << true << false;
    QByteArray lcRadar = lcTripBytes;
    lcRadar[17] = 3;
    QTest::newRow("radar has no km") << lcRadar << true << true << false;
    QByteArray lcNoFix = lcTripBytes;
    lcNoFix.replace(6, 8, QByteArray(8, 0));
    QTest::newRow("bytes 6-13 zero") << lcNoFix << true << false << true;
}

void tst_clsHalvexRecord::validity()
{
    QFETCH(QByteArray, data);
    QFETCH(bool, valid);
    QFETCH(bool, validGps);
    QFETCH(bool, validKm);
    clsHalvexRecord r;
    r.DeCodeData(reinterpret_cast<const quint8*>(data.constData()), int(data.size()));
    QCOMPARE(r.IsValid(), valid);
    QCOMPARE(r.ValidGps(), validGps);
    QCOMPARE(r.IsValidKmStand(), validKm);
}

void tst_clsHalvexRecord::columns_data()
{
    QTest::addColumn<Bytes>("data");
    QTest::addColumn<Column>("column");
    QTest::addColumn<QString>("expected");
    const Column lcDate = [](clsHalvexRecord& r) { return r.DateOfTrip(); };
    const Column lcStart = [](clsHalvexRecord& r) { return r.StartTime(); };
    const Column lcStop = [](clsHalvexRecord& r) { return r.StopTime(); };
    const Column lcDrive = [](clsHalvexRecord& r) { return r.DriveTime(); };
    const Column lcStartKm = [](clsHalvexRecord& r) { r.SetlStartKmTeller(123000); return r.sStartKm(); };
    const Column lcEndKm = [](clsHalvexRecord& r) { return r.sEndKm(); };
    const Column lcDriveKm = [](clsHalvexRecord& r) { r.SetlStartKmTeller(123000); return r.DriveKm(); };
    const Column lcTrip = [](clsHalvexRecord& r) { return r.TypeOfTrip(); };
    const Column lcSpeed = [](clsHalvexRecord& r) { return r.Speed(); };
    const Column lcAlarm = [](clsHalvexRecord& r) { return r.TypeOfAlarm(); };
    const Column lcDescription = [](clsHalvexRecord& r) { return r.Description(); };
    const Column lcAmplitude = [](clsHalvexRecord& r) { return r.Amplitude(); };
    const Column lcBand = [](clsHalvexRecord& r) { return r.FrequencyBand(); };
    const Column lcReceipt = [](clsHalvexRecord& r) { return r.TankBonNummer(); };
    const Column lcPrevious = [](clsHalvexRecord& r) { return r.PreviousKM(); };
    const Column lcCorrection = [](clsHalvexRecord& r) { return r.correctionKM(); };
    const Column lcDirection = [](clsHalvexRecord& r) { return r.Direction(); };
    const Column lcLocation = [](clsHalvexRecord& r) { return r.GPSLocation(); };
    const Column lcOriginXY = [](clsHalvexRecord& r) { return r.Origin(false); };
    const Column lcOriginZip = [](clsHalvexRecord& r) { return r.Origin(true); };

    const auto lcTimes = [](int vlType, quint16 vlStart, quint16 vlStop) {
        Bytes b = Fix(vlType);
        Put16(b, 0, vlStart);
        Put16(b, 2, vlStop);
        return b;
    };
    const auto lcWith = [](Bytes b, int vlAt, quint8 vbyValue) {
        b[size_t(vlAt)] = vbyValue;
        return b;
    };
    const auto lcRadar = [](int vlOffset, int vlBand) {
        Bytes b = Fix(3);
        Put16(b, 18, quint32(vlOffset));
        b[20] = quint8(vlBand);
        b[21] = 99;
        return b;
    };
    Bytes lcKmCorrection = Fix(8);
    lcKmCorrection[0] = 0x04;
    lcKmCorrection[1] = 0x03;
    lcKmCorrection[15] = 0x02;
    lcKmCorrection[16] = 0x81;
    Bytes lcEndErased = Fix(2);
    Put32(lcEndErased, 18, 0xFFFFFFFF);
    Bytes lcKmErased = lcEndErased;
    Put16(lcKmErased, 22, 0xFFFF);
    Bytes lcMarker = NoFix(lcTimes(2, Time(1, 25, 6), 0xF800));

    QTest::newRow("date") << Fix(2) << lcDate << "5-3-2007";
    QTest::newRow("date without fix") << NoFix(Fix(2)) << lcDate << "unknown";
    QTest::newRow("start time of a trip") << Fix(2) << lcStart << "07:05:40";
    QTest::newRow("start time of a radar alarm") << Fix(3) << lcStart << "";
    QTest::newRow("start time without fix") << NoFix(Fix(2)) << lcStart << "unknown";
    QTest::newRow("stop time erased") << lcTimes(3, 0, 0xFFFF) << lcStop << "";
    QTest::newRow("stop time of any kind") << Fix(4) << lcStop << "08:30:00";
    QTest::newRow("drive time") << Fix(2) << lcDrive << "01:24:20";
    QTest::newRow("drive time past midnight") << lcTimes(2, Time(23, 50, 0), Time(0, 10, 0)) << lcDrive << "00:20:00";
    QTest::newRow("drive time borrows seconds") << lcTimes(2, Time(10, 0, 30), Time(10, 1, 10)) << lcDrive << "00:00:40";
    QTest::newRow("drive time stop earlier same hour")
        << lcTimes(2, Time(10, 30, 0), Time(10, 20, 0)) << lcDrive << "-01:50:00";
    QTest::newRow("drive time of a radar alarm") << Fix(3) << lcDrive << "";
    QTest::newRow("drive time stored without fix") << lcMarker << lcDrive << "01:25:06";
    QTest::newRow("drive time marker needs no fix") << lcTimes(2, Time(7, 5, 40), 0xF800) << lcDrive << "23:54:20";
    QTest::newRow("drive time without fix, no marker") << NoFix(Fix(2)) << lcDrive << "";
    QTest::newRow("drive time to a half-erased stop") << lcTimes(2, Time(7, 0, 0), 0xFF00) << lcDrive << "24:56:00";
    QTest::newRow("start km of a trip") << Fix(2) << lcStartKm << "123000";
    QTest::newRow("start km of a route point") << Fix(6) << lcStartKm << "";
    QTest::newRow("start km without km stand") << Fix(3) << lcStartKm << "123000";
    QTest::newRow("start km of a trip with 20-23 erased") << lcKmErased << lcStartKm << "123000";
    QTest::newRow("end km") << Fix(7) << lcEndKm << "123456";
    QTest::newRow("end km erased") << lcEndErased << lcEndKm << "";
    QTest::newRow("end km set in all four bytes")
        << Fix(2) << Column([](clsHalvexRecord& r) { r.SetlEndKmTeller(0x01020304); return r.sEndKm(); }) << "16909060";
    QTest::newRow("end km with 20-23 erased") << lcKmErased << lcEndKm << "";
    QTest::newRow("driven km") << Fix(2) << lcDriveKm << "456";
    QTest::newRow("driven km end erased") << lcEndErased << lcDriveKm << "";
    QTest::newRow("driven km of a tank stop") << Fix(7) << lcDriveKm << "";
    QTest::newRow("trip type 2") << Fix(2) << lcTrip << "Business";
    QTest::newRow("trip type 4") << lcWith(Fix(2), 14, 4) << lcTrip << "Gasstop";
    QTest::newRow("trip type 0") << lcWith(Fix(2), 14, 0) << lcTrip << "Unknown trip";
    QTest::newRow("speed of an alarm") << Fix(5) << lcSpeed << "87";
    QTest::newRow("speed of a trip") << Fix(2) << lcSpeed << "";
    QTest::newRow("speed without fix") << NoFix(Fix(3)) << lcSpeed << "unknown";
    QTest::newRow("event 5") << Fix(5) << lcAlarm << "Traject Contol";
    QTest::newRow("event 8") << Fix(8) << lcAlarm << "km correctie";
    QTest::newRow("event 9") << Fix(9) << lcAlarm << "Unknown alarm code 9";
    QTest::newRow("description of a tank stop") << Fix(7) << lcDescription << "No=4711";
    QTest::newRow("description of a km correction") << Fix(8) << lcDescription << "";
    QTest::newRow("amplitude") << lcRadar(125, 0) << lcAmplitude << "99";
    QTest::newRow("amplitude of a spot alarm") << Fix(4) << lcAmplitude << "";
    QTest::newRow("band 0") << lcRadar(125, 0) << lcBand << "24125 MHz";
    QTest::newRow("band 1") << lcRadar(300, 1) << lcBand << "34460 MHz";
    QTest::newRow("band 2") << lcRadar(125, 2) << lcBand << "Unknown Frequency Band Selection 2";
    QTest::newRow("band of a trip") << Fix(2) << lcBand << "";
    QTest::newRow("tank receipt") << Fix(8) << lcReceipt << "4711";
    QTest::newRow("tank receipt of an alarm") << Fix(4) << lcReceipt << "";
    QTest::newRow("previous km, bit 7 of byte 16 dropped") << lcKmCorrection << lcPrevious << "16909060";
    QTest::newRow("previous km of a trip") << Fix(2) << lcPrevious << "";
    QTest::newRow("correction km") << lcKmCorrection << lcCorrection << "16785604";
    QTest::newRow("correction km of a trip") << Fix(2) << lcCorrection << "";
    QTest::newRow("direction") << Fix(2) << lcDirection << "40";
    QTest::newRow("direction without fix") << NoFix(Fix(2)) << lcDirection << "unknown";
    QTest::newRow("position") << Fix(6) << lcLocation << "N,52,21.4567 E,004,53.1234";
    QTest::newRow("origin before the pipeline") << Fix(2) << lcOriginXY << "S,90,00.0000 W,180,00.0000";
    QTest::newRow("origin without fix") << NoFix(Fix(2)) << lcOriginZip << "unknown";
}

void tst_clsHalvexRecord::columns()
{
    QFETCH(Bytes, data);
    QFETCH(Column, column);
    QFETCH(QString, expected);
    clsHalvexRecord r = Decode(data);
    QCOMPARE(column(r), expected);
}

void tst_clsHalvexRecord::coordinateTexts_data()
{
    QTest::addColumn<bool>("latitude");
    QTest::addColumn<int>("mode");
    QTest::addColumn<qint32>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("equator is south") << true << 0 << 54000000 << "S,90,00.0000";
    QTest::newRow("just north") << true << 0 << 54000001 << "N,00,00.0001";
    QTest::newRow("just south") << true << 0 << 53999999 << "S,00,00.0001";
    QTest::newRow("no position") << true << 0 << 0 << "S,90,00.0000";
    QTest::newRow("north pole wraps") << true << 0 << 108000000 << "N,00,00.0000";
    QTest::newRow("lat mode 0") << true << 0 << kLat5221 << "N,52,21.4567";
    QTest::newRow("lat mode 1") << true << 1 << kLat5221 << "N";
    QTest::newRow("lat mode 2") << true << 2 << kLat5221 << ",52";
    QTest::newRow("lat mode 3") << true << 3 << kLat5221 << ",21";
    QTest::newRow("lat mode 4") << true << 4 << kLat5221 << "4567";
    QTest::newRow("lat mode 5") << true << 5 << kLat5221 << ",52,21.4567";
    QTest::newRow("lat mode 6") << true << 6 << kLat5221 << "";
    QTest::newRow("greenwich is east") << false << 0 << 108000000 << "E,000,00.0000";
    QTest::newRow("just west") << false << 0 << 107999999 << "W,000,00.0001";
    QTest::newRow("date line east") << false << 0 << 215999999 << "E,179,59.9999";
    QTest::newRow("date line") << false << 0 << 216000000 << "W,180,00.0000";
    QTest::newRow("lon zero") << false << 0 << 0 << "W,180,00.0000";
    QTest::newRow("lon mode 0") << false << 0 << kLon0453 << "E,004,53.1234";
    QTest::newRow("lon mode 2") << false << 2 << kLon0453 << ",004";
    QTest::newRow("lon mode 5") << false << 5 << kLon0453 << ",004,53.1234";
    QTest::newRow("west mode 0") << false << 0 << 108000000 - 74 * 600000 - 5000 << "W,074,00.5000";
}

void tst_clsHalvexRecord::coordinateTexts()
{
    QFETCH(bool, latitude);
    QFETCH(int, mode);
    QFETCH(qint32, value);
    QFETCH(QString, expected);
    const QString lsText = latitude ? clsHalvexRecord::Latitude_to_String(qint16(mode), value)
                                    : clsHalvexRecord::Longitude_to_String(qint16(mode), value);
    QCOMPARE(lsText, expected);
}

// The display flags fields with bit 31; reading takes the flag off for good.
void tst_clsHalvexRecord::bit31IsClearedInPlaceOnRead()
{
    Bytes b = Fix(2);
    b[9] |= 0x80;
    b[13] |= 0x80;
    b[21] = 0x80;
    clsHalvexRecord r = Decode(b);
    QCOMPARE(r.getItemOfArray(9), quint8(b[9]));
    QCOMPARE(r.lEndLatitude(), kLat5221);
    QCOMPARE(r.getItemOfArray(9), quint8(b[9] & 0x7F));
    QCOMPARE(r.getItemOfArray(13), quint8(b[13]));
    QCOMPARE(r.GPSLocation(), QStringLiteral("N,52,21.4567 E,004,53.1234"));
    QCOMPARE(r.getItemOfArray(13), quint8(b[13] & 0x7F));
    QCOMPARE(r.sEndKm(), QStringLiteral("123456"));
    QCOMPARE(r.getItemOfArray(21), quint8(0));
    r.SetlEndKmTeller(-2);
    QCOMPARE(r.getItemOfArray(18), quint8(0xFE));
    QCOMPARE(r.getItemOfArray(21), quint8(0));
}

void tst_clsHalvexRecord::fullLineAndHeader()
{
    clsHalvexRecord::UsePlaces(nullptr);
    QCOMPARE(clsHalvexRecord::GetHeaderStringWithDelimiter(QStringLiteral(";")),
             QStringLiteral("#;Ritnumber;Date;Start Time;Stop Time;Drive Time;Start km;End km;Driven km;Zip code;"
                            "Zip code;Origin;Destination;Type of trip;Direction;Speed;Event;Amplitude;Frequency;"
                            "Tank receipt number;Route"));
    clsHalvexRecord r = Decode(Fix(2));
    r.SetRecordNumber(3);
    r.SetRitnummer(2);
    r.SetlStartKmTeller(123000);
    r.SetRoute(QStringLiteral("A;B"));
    const QString lsLine = QStringLiteral("3\t2\t5-3-2007\t07:05:40\t08:30:00\t01:24:20\t123000\t123456\t456\t \t \t"
                                          "S,90,00.0000 W,180,00.0000\tN,52,21.4567 E,004,53.1234\tBusiness\t40\t\t"
                                          "Route Logging\t\t\t4711\t");
    QCOMPARE(r.GetFullStringWithDelimiter(QStringLiteral("\t"), false), lsLine);
    QCOMPARE(r.GetFullStringWithDelimiterToFile(QStringLiteral("\t")), lsLine + QStringLiteral("A;B"));
    QCOMPARE(r.GetFullStringWithDelimiter(QStringLiteral("\t"), true).count(QLatin1Char('\t')), 20);
}

// The first lookup is remembered, an unsuccessful one as a single space, so
// a later table (or none) does not change what the record shows.
void tst_clsHalvexRecord::placeColumnsCacheTheLookup()
{
    QTemporaryDir lcDir;
    QFile lcFile(lcDir.filePath(QStringLiteral("postcode.gps")));
    QVERIFY(lcFile.open(QIODevice::WriteOnly));
    lcFile.write(QByteArray::number(kLon0453 + 100) + ';' + QByteArray::number(kLat5221) + ";3511 Utrecht\r\n");
    lcFile.close();
    clsGpsPlaces lcPlaces(lcFile.fileName(), nullptr);

    clsHalvexRecord::UsePlaces(&lcPlaces);
    clsHalvexRecord r = Decode(Fix(2));
    QCOMPARE(r.Destination(true), QStringLiteral("3511 Utrecht"));
    QCOMPARE(r.Origin(true), QStringLiteral(" "));
    clsHalvexRecord lcFar = Decode(Fix(6));
    lcFar.mlStartLatitude = kLat5221 + 60000;
    lcFar.mlStartLongitude = kLon0453;
    QCOMPARE(lcFar.Origin(true), QStringLiteral(" "));

    clsHalvexRecord::UsePlaces(nullptr);
    QCOMPARE(r.Destination(true), QStringLiteral("3511 Utrecht"));
    lcFar.mlStartLatitude = kLat5221;
    clsHalvexRecord::UsePlaces(&lcPlaces);
    QCOMPARE(lcFar.Origin(true), QStringLiteral(" "));
    lcFar.DeCodeData(Fix(6));
    QCOMPARE(lcFar.Origin(true), QStringLiteral("3511 Utrecht"));
    clsHalvexRecord::UsePlaces(nullptr);
}

void tst_clsHalvexRecord::tankStopBorrowsPositionOfATripWithFix()
{
    Bytes lcTankBytes = NoFix(Fix(7));
    lcTankBytes[14] = 1;
    Put16(lcTankBytes, 22, 99);
    clsHalvexRecord lcTank = Decode(lcTankBytes);
    clsHalvexRecord lcWithoutFix = Decode(NoFix(Fix(2)));
    lcTank.copyToTankstopRecord(lcWithoutFix);
    QCOMPARE(lcTank.ValidGps(), false);
    QCOMPARE(lcTank.DateOfTrip(), QStringLiteral("unknown"));

    Bytes lcTripBytes = Fix(2);
    lcTripBytes[9] |= 0x80;
    clsHalvexRecord lcTrip = Decode(lcTripBytes);
    lcTank.copyToTankstopRecord(lcTrip);
    QCOMPARE(lcTank.ValidGps(), true);
    QCOMPARE(lcTank.DateOfTrip(), QStringLiteral("5-3-2007"));
    QCOMPARE(lcTank.Direction(), QStringLiteral("40"));
    QCOMPARE(lcTank.mlStartLatitude, kLat5221);
    QCOMPARE(lcTank.mlStartLongitude, kLon0453);
    QCOMPARE(lcTank.lEndLatitude(), kLat5221);
    QCOMPARE(lcTank.TypeOfTrip(), QStringLiteral("Private"));
    QCOMPARE(lcTank.TypeOfAlarm(), QStringLiteral("tankstop"));
    QCOMPARE(lcTank.TankBonNummer(), QStringLiteral("99"));
}

QTEST_GUILESS_MAIN(tst_clsHalvexRecord)
#include "tst_clsHalvexRecord.moc"
