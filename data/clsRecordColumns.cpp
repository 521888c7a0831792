#include "data/clsRecordColumns.h"

#include "data/clsHalvexRecord.h"

// The two "Zip code" columns carry the place names, "Origin" and
// "Destination" the coordinates.
const std::vector<clsRecordColumn>& RecordColumns()
{
    using R = const clsHalvexRecord&;
    static const std::vector<clsRecordColumn> kColumns = {
        {QStringLiteral("#"), [](R r) { return QString::number(r.RecordNumber()); }},
        {QStringLiteral("Ritnumber"), [](R r) { return r.RitNumber(); }},
        {QStringLiteral("Date"), [](R r) { return r.DateOfTrip(); }},
        {QStringLiteral("Start Time"), [](R r) { return r.StartTime(); }},
        {QStringLiteral("Stop Time"), [](R r) { return r.StopTime(); }},
        {QStringLiteral("Drive Time"), [](R r) { return r.DriveTime(); }},
        {QStringLiteral("Start km"), [](R r) { return r.sStartKm(); }},
        {QStringLiteral("End km"), [](R r) { return r.sEndKm(); }},
        {QStringLiteral("Driven km"), [](R r) { return r.DriveKm(); }},
        {QStringLiteral("Zip code"), [](R r) { return r.Origin(true); }},
        {QStringLiteral("Zip code"), [](R r) { return r.Destination(true); }},
        {QStringLiteral("Origin"), [](R r) { return r.Origin(false); }},
        {QStringLiteral("Destination"), [](R r) { return r.Destination(false); }},
        {QStringLiteral("Type of trip"), [](R r) { return r.TypeOfTrip(); }},
        {QStringLiteral("Direction"), [](R r) { return r.Direction(); }},
        {QStringLiteral("Speed"), [](R r) { return r.Speed(); }},
        {QStringLiteral("Event"), [](R r) { return r.TypeOfAlarm(); }},
        {QStringLiteral("Amplitude"), [](R r) { return r.Amplitude(); }},
        {QStringLiteral("Frequency"), [](R r) { return r.FrequencyBand(); }},
        {QStringLiteral("Tank receipt number"), [](R r) { return r.TankBonNummer(); }},
        {QStringLiteral("Route"), [](R r) { return r.Route(); }},
    };
    return kColumns;
}
