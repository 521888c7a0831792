#pragma once

#include <QDate>
#include <QTime>
#include <QtGlobal>
#include <array>

// One event of the display's logbook in plain values, before it is packed into
// the 24 bytes the display writes to flash.
struct clsSimRecordFields {
    quint8 RecordType = 2;       // 2 trip, 3 radar, 4 spot, 5 traject control, 6 route point, 7 tank stop, 8 km correction
    bool HasFix = true;          // without a fix the display writes no date and zero coordinates
    QDate Date;
    QTime StartTime;             // trips only
    QTime StopTime;              // the time of the event for every other kind
    double Latitude = 0.0;       // degrees, north positive
    double Longitude = 0.0;      // degrees, east positive
    quint8 TripType = 1;         // 1 private, 2 business, 3 commute, 4 gas stop
    int Direction = 0;           // heading in degrees
    quint8 Speed = 0;            // radar, spot and traject-control alarms
    qint32 KmCounter = 0;        // trips, route points, tank stops and km corrections
    quint16 TankReceipt = 0;     // trips, route points, tank stops and km corrections
    quint8 FrequencyBand = 0;    // radar: 0 is the 24000 MHz band, 1 the 34160 MHz band
    quint16 FrequencyOffset = 0; // radar: MHz above the band's base
    quint8 Amplitude = 0;        // radar
    qint32 PreviousKm = 0;       // km correction: the counter before the user corrected it
    // A trip logged without a fix: the display stores its drive time in bytes 0-1 and marks bytes 2-3 with 00 F8.
    bool DriveTimeMarker = false;
    QTime DriveTime;
};

// Packs logbook events into the display's 24-byte flash records: multi-byte
// numbers little-endian, times and dates in 16 packed bits, coordinates as
// (degrees + 90) x 600000 and (degrees + 180) x 600000 in 31 bits.
class clsSimRecordEncoder
{
public:
    static constexpr int kRecordSize = 24;
    using Bytes = std::array<quint8, kRecordSize>;

    static Bytes Encode(const clsSimRecordFields& vcFields);

    // Hours in bits 15-11, minutes in 10-5, seconds / 2 in 4-0.
    static quint16 PackTime(const QTime& vcTime);
    // Year - 2000 in bits 15-9, month in 8-5, day in 4-0.
    static quint16 PackDate(const QDate& vcDate);
    static quint32 EncodeLatitude(double vdDegrees);
    static quint32 EncodeLongitude(double vdDegrees);
};
