// One 24-byte record of the logbook with every text property. The input is
// the record's 24 bytes, then (little-endian, each optional) the start km,
// start latitude, start longitude, record number and trip number the
// pipeline would set, then the route text.
// Checks: every column of the delimited line equals its property, reading
// the properties first or the line first gives the same line, the line has
// its 21 columns, and a km counter written reads back.

#include "FuzzCheck.h"
#include "data/clsGpsPlaces.h"
#include "data/clsHalvexRecord.h"
#include "platform/Err.h"

#include <QStringList>
#include <cstdint>
#include <cstring>

namespace {
const clsGpsPlaces& Places()
{
    static const clsGpsPlaces scPlaces(QStringLiteral(CORVANE_TEST_DATA "/pipeline-handbuilt/postcode.gps"), nullptr);
    return scPlaces;
}

qint32 Take32(const uint8_t*& rcData, size_t& rlSize)
{
    quint32 llValue = 0;
    const size_t llBytes = rlSize < 4 ? rlSize : 4;
    for (size_t i = 0; i < llBytes; ++i)
        llValue |= quint32(rcData[i]) << (8 * i);
    rcData += llBytes;
    rlSize -= llBytes;
    return qint32(llValue);
}

void Fill(clsHalvexRecord& rcRecord, const uint8_t* vcData, size_t vlSize)
{
    rcRecord.DeCodeData(vcData, clsHalvexRecord::kSize);
    vcData += clsHalvexRecord::kSize;
    vlSize -= clsHalvexRecord::kSize;
    rcRecord.SetlStartKmTeller(Take32(vcData, vlSize));
    rcRecord.mlStartLatitude = Take32(vcData, vlSize);
    rcRecord.mlStartLongitude = Take32(vcData, vlSize);
    rcRecord.SetRecordNumber(Take32(vcData, vlSize));
    rcRecord.SetRitnummer(Take32(vcData, vlSize));
    QString lsRoute = QString::fromLatin1(reinterpret_cast<const char*>(vcData), qsizetype(vlSize));
    rcRecord.SetRoute(lsRoute.replace(QLatin1Char('\t'), QLatin1Char(' ')));
}

QStringList Properties(clsHalvexRecord& r)
{
    return {QString::number(r.RecordNumber()), r.RitNumber(), r.DateOfTrip(), r.StartTime(), r.StopTime(),
            r.DriveTime(), r.sStartKm(), r.sEndKm(), r.DriveKm(), r.Origin(true), r.Destination(true),
            r.Origin(false), r.Destination(false), r.TypeOfTrip(), r.Direction(), r.Speed(), r.TypeOfAlarm(),
            r.Amplitude(), r.FrequencyBand(), r.TankBonNummer(), r.Route()};
}

// The properties outside the line, for the sanitizers.
void OtherProperties(clsHalvexRecord& r, qint32 vlValue)
{
    r.Description();
    r.PreviousKM();
    r.correctionKM();
    r.GPSLocation();
    for (qint16 llMode = 0; llMode <= 5; ++llMode) {
        clsHalvexRecord::Latitude_to_String(llMode, vlValue);
        clsHalvexRecord::Longitude_to_String(llMode, vlValue);
    }
}

void CheckRecord(const uint8_t* vcData, size_t vlSize)
{
    clsHalvexRecord lcLineFirst, lcPropertiesFirst;
    Fill(lcLineFirst, vcData, vlSize);
    Fill(lcPropertiesFirst, vcData, vlSize);
    if (!lcLineFirst.IsValid()) {
        FuzzCheck(vcData[17] == 255 && !lcLineFirst.IsValidKmStand(), "only an empty slot is not valid");
        return;
    }
    const QString lsLine = lcLineFirst.GetFullStringWithDelimiter(QStringLiteral("\t"), true);
    const QStringList lcColumns = lsLine.split(QLatin1Char('\t'));
    FuzzCheck(lcColumns.size() == 21, "a line of 21 columns", lsLine);
    const QStringList lcProperties = Properties(lcLineFirst);
    for (int i = 0; i < lcColumns.size(); ++i)
        FuzzCheck(lcColumns[i] == lcProperties[i], "column equals its property",
                  QString::number(i) + QStringLiteral(": ") + lcColumns[i] + QStringLiteral(" / ") + lcProperties[i]);
    FuzzCheck(Properties(lcPropertiesFirst) == lcProperties, "properties do not depend on what was read before");
    FuzzCheck(lcPropertiesFirst.GetFullStringWithDelimiter(QStringLiteral("\t"), true) == lsLine,
              "the line does not depend on what was read before");
    OtherProperties(lcLineFirst, qint32(vcData[6] | vcData[7] << 8 | vcData[8] << 16 | quint32(vcData[9]) << 24));

    if (lcLineFirst.IsValidKmStand()) {
        const qint32 llKm = qint32(quint32(vcData[18] | vcData[19] << 8 | vcData[20] << 16) | quint32(vcData[1]) << 24)
            & 0x7FFFFFFF;
        lcLineFirst.SetlEndKmTeller(llKm);
        FuzzCheck(lcLineFirst.lEndKmTeller() == llKm, "a km counter written reads back");
    }
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize)
{
    clsHalvexRecord::UsePlaces(&Places());
    if (vlSize < size_t(clsHalvexRecord::kSize)) {
        clsHalvexRecord lcShort;
        lcShort.DeCodeData(vcData, int(vlSize));
        FuzzCheck(!lcShort.IsValid(), "fewer than 24 bytes are not a record");
        return 0;
    }
    try {
        CheckRecord(vcData, vlSize);
    } catch (const clsRuntimeError& e) {
        // A start position so far from every place that the search's 32-bit differences overflow.
        FuzzCheck(e.Number() == VbError::Overflow, "only an overflow may stop a record", e.Description());
    }
    return 0;
}
