// The 24-byte record both ways: which records count and what the program reads
// from each field (the column texts, with their odd kept cases, in
// tests/data/record-columns.txt) and what the simulator's logbook writes, byte for byte.

#include "GoldenData.h"
#include "data/clsGpsPlaces.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordColumns.h"
#include "sim/clsSimDataGenerator.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {
using Bytes = clsHalvexRecord::Bytes;

constexpr qint32 kLat5221 = 54000000 + 52 * 600000 + 21 * 10000 + 4567; // N,52,21.4567
constexpr qint32 kLon0453 = 108000000 + 4 * 600000 + 53 * 10000 + 1234; // E,004,53.1234

// A record of the given kind with a fix at a Dutch position on 5-3-2007, 07:05:40 to 08:30:00.
Bytes Fix(int vlType)
{
    Bytes b{};
    const QByteArray lcHex = QByteArray::fromHex("b438c043650ea752170522ad9c0602c8570240e2010067" "12");
    std::copy(lcHex.begin(), lcHex.end(), b.begin());
    b[17] = quint8(vlType);
    return b;
}

Bytes NoFix(Bytes b)
{
    std::fill(b.begin() + 4, b.begin() + 14, 0);
    return b;
}

clsHalvexRecord Decode(const Bytes& b)
{
    clsHalvexRecord r;
    r.DeCodeData(b);
    return r;
}

QString Text(clsHalvexRecord& r, const QString& vsColumn)
{
    // a start km as the pipeline gives it, for the start and driven km
    r.SetlStartKmTeller(123000);
    const QMap<QString, QString> lcOthers{
        {"IsValid ValidGps IsValidKmStand",
         QStringLiteral("%1 %2 %3").arg(int(r.IsValid())).arg(int(r.ValidGps())).arg(int(r.IsValidKmStand()))},
        {"Description", r.Description()}, {"PreviousKM", r.PreviousKM()},
        {"correctionKM", r.correctionKM()}, {"GPSLocation", r.GPSLocation()}};
    for (const clsRecordColumn& lcColumn : RecordColumns())
        if (lcColumn.Title == vsColumn)
            return lcColumn.Text(r);
    return lcOthers.value(vsColumn, QStringLiteral("no column ") + vsColumn);
}

qint64 Field31(const QByteArray& vcRecord, int vlOffset)
{
    return qint64(quint8(vcRecord[vlOffset]) | (quint8(vcRecord[vlOffset + 1]) << 8) |
                  (quint8(vcRecord[vlOffset + 2]) << 16) | (quint8(vcRecord[vlOffset + 3] & 0x7F) << 24));
}

using Setter = std::function<void(clsSimRecordFields&, const QString&)>;
// Each field of the simulator's record by name, from its text in tests/data/sim-records.txt.
#define FIELD(name, value) {#name, [](clsSimRecordFields& f, const QString& v) { f.name = decltype(f.name)(value); }}
const QMap<QString, Setter> kFieldSetters = {
    FIELD(RecordType, v.toInt()), FIELD(HasFix, v.toInt()), FIELD(TripType, v.toInt()), FIELD(Direction, v.toInt()),
    FIELD(Speed, v.toInt()), FIELD(KmCounter, v.toInt()), FIELD(TankReceipt, v.toInt()), FIELD(Amplitude, v.toInt()),
    FIELD(FrequencyBand, v.toInt()), FIELD(FrequencyOffset, v.toInt()), FIELD(PreviousKm, v.toInt()),
    FIELD(DriveTimeMarker, v.toInt()), FIELD(Latitude, v.toDouble()), FIELD(Longitude, v.toDouble()),
    FIELD(Date, QDate::fromString(v, Qt::ISODate)), FIELD(StartTime, QTime::fromString(v)),
    FIELD(StopTime, QTime::fromString(v)), FIELD(DriveTime, QTime::fromString(v)),
};
#undef FIELD
}
Q_DECLARE_METATYPE(Bytes)

class tst_clsHalvexRecord : public QObject
{
    Q_OBJECT

private slots:
    void columns_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("expected");
        for (const QStringList& f : DataTable(QStringLiteral("record-columns.txt"), 4))
            QTest::newRow(qPrintable(f[0])) << QByteArray::fromHex(f[1].toLatin1()) << f[2] << f[3];
    }
    void columns()
    {
        QFETCH(QByteArray, data);
        QFETCH(QString, column);
        QFETCH(QString, expected);
        clsHalvexRecord r;
        r.DeCodeData(reinterpret_cast<const quint8*>(data.constData()), int(data.size()));
        QCOMPARE(Text(r, column), expected);
    }
    void coordinateTexts_data()
    {
        QTest::addColumn<bool>("latitude");
        QTest::addColumn<int>("mode");
        QTest::addColumn<qint32>("value");
        QTest::addColumn<QString>("expected");
        for (const QStringList& f : DataTable(QStringLiteral("coordinate-texts.txt"), 5))
            QTest::newRow(qPrintable(f[0])) << (f[1] == QLatin1String("latitude")) << f[2].toInt() << f[3].toInt() << f[4];
    }
    void coordinateTexts()
    {
        QFETCH(bool, latitude);
        QFETCH(int, mode);
        QFETCH(qint32, value);
        QFETCH(QString, expected);
        QCOMPARE(latitude ? clsHalvexRecord::Latitude_to_String(qint16(mode), value)
                          : clsHalvexRecord::Longitude_to_String(qint16(mode), value), expected);
    }
    // The display flags fields with bit 31; reading takes the flag off for good.
    void bit31IsClearedInPlaceOnRead()
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
        r.SetlEndKmTeller(0x01020304);
        QCOMPARE(r.sEndKm(), QStringLiteral("16909060"));
        r.SetlEndKmTeller(-2);
        QCOMPARE(r.getItemOfArray(18), quint8(0xFE));
        QCOMPARE(r.getItemOfArray(21), quint8(0));
    }
    // The first lookup is remembered, an unsuccessful one as a single space, so
    // a later table (or none) does not change what the record shows.
    void placeColumnsCacheTheLookup()
    {
        QTemporaryDir lcDir;
        const QString lsTable = lcDir.filePath(QStringLiteral("postcode.gps"));
        WriteAll(lsTable, QByteArray::number(kLon0453 + 100) + ';' + QByteArray::number(kLat5221) + ";3511 Utrecht\r\n");
        clsGpsPlaces lcPlaces(lsTable, nullptr);

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
    void tankStopBorrowsPositionOfATripWithFix()
    {
        Bytes lcTankBytes = NoFix(Fix(7));
        lcTankBytes[14] = 1;
        lcTankBytes[22] = 99; // tank receipt, bytes 22-23
        lcTankBytes[23] = 0;
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
        QCOMPARE((QList<qint32>{lcTank.mlStartLatitude, lcTank.mlStartLongitude, lcTank.lEndLatitude()}),
                 (QList<qint32>{kLat5221, kLon0453, kLat5221}));
        QCOMPARE((QStringList{lcTank.DateOfTrip(), lcTank.Direction(), lcTank.TypeOfTrip(), lcTank.TypeOfAlarm(),
                              lcTank.TankBonNummer()}),
                 (QStringList{"5-3-2007", "40", "Private", "tankstop", "99"}));
    }
    void encode_data()
    {
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QByteArray>("expected");
        for (const QStringList& f : DataTable(QStringLiteral("sim-records.txt"), 3))
            QTest::newRow(qPrintable(f[0])) << f[1] << f[2].toLatin1();
    }
    void encode()
    {
        QFETCH(QString, fields);
        QFETCH(QByteArray, expected);
        clsSimRecordFields lcFields;
        for (const QString& lsField : fields.split(QLatin1Char(' '))) {
            QVERIFY2(kFieldSetters.contains(lsField.section(QLatin1Char('='), 0, 0)), qPrintable(lsField));
            kFieldSetters[lsField.section(QLatin1Char('='), 0, 0)](lcFields, lsField.section(QLatin1Char('='), 1));
        }
        const clsSimRecordEncoder::Bytes lcBytes = clsSimRecordEncoder::Encode(lcFields);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(lcBytes.data()), int(lcBytes.size())).toHex(' '), expected);
    }
    void writeLogFillsPagesAfterTheFirst()
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
};

QTEST_GUILESS_MAIN(tst_clsHalvexRecord)
#include "tst_clsHalvexRecord.moc"
