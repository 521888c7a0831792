#include "export/clsTripTracks.h"

#include "data/clsHalvexRecord.h"
#include "data/clsRecordColumns.h"
#include "data/clsRecordSelection.h"
#include "export/clsTypedCell.h"

#include <QStringList>

namespace {
constexpr int kLatitudeOffset = 90;
constexpr int kLongitudeOffset = 180;
// The columns that tell what an alarm or tank stop was, in the order a map shows them.
const QStringList kWaypointColumns = {"Speed", "Direction", "Frequency", "Amplitude", "Tank receipt number"};
}

clsTripTracks::clsTripTracks(const std::vector<clsHalvexRecord*>& vcRecords, const clsRecordSelection& vcSelection)
{
    for (clsHalvexRecord* lcRecord : vcRecords) {
        if (lcRecord->isRouteType()) {
            if (lcRecord->ValidGps())
                mcRoute.append({Degrees(lcRecord->lEndLatitude(), kLatitudeOffset),
                                Degrees(lcRecord->lEndLongitude(), kLongitudeOffset),
                                ToUtc(lcRecord->DateOfTrip(), lcRecord->StopTime())});
        } else if (lcRecord->isRitRegType()) {
            // The route points logged since the last trip are this trip's way.
            if (vcSelection.cheRitRegistratie)
                AddTrip(*lcRecord);
            mcRoute.clear();
        } else if (vcSelection.Admits(*lcRecord) && !lcRecord->isKmCorrectieType()) {
            AddWaypoint(*lcRecord);
        }
    }
}

QString clsTripTracks::LeftOutNote() const
{
    if (mlLeftOut == 0)
        return QString();
    return QStringLiteral("%1 record(s) without a position left out").arg(mlLeftOut);
}

QDateTime clsTripTracks::ToUtc(const QString& vsDate, const QString& vsTime)
{
    const clsTypedCell lcDate = clsTypedCell::Parse(QStringLiteral("Date"), vsDate);
    const clsTypedCell lcTime = clsTypedCell::Parse(QStringLiteral("Stop Time"), vsTime);
    if (lcDate.CellKind() != clsTypedCell::Kind::Date || lcTime.CellKind() != clsTypedCell::Kind::TimeOfDay)
        return QDateTime();
    const QTime lcClock = QTime(0, 0).addSecs(int(lcTime.Number()));
    return QDateTime(lcDate.Date(), lcClock, Qt::LocalTime).toUTC();
}

QString clsTripTracks::IsoTime(const QDateTime& vcTime)
{
    return vcTime.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ"));
}

void clsTripTracks::AddTrip(clsHalvexRecord& rcTrip)
{
    if (!rcTrip.ValidGps()) {
        ++mlLeftOut;
        return;
    }
    Track lcTrack;
    const QString lsFrom = Place(rcTrip.Origin(true));
    const QString lsTo = Place(rcTrip.Destination(true));
    lcTrack.Name = QStringLiteral("Trip %1 of %2: %3 - %4").arg(rcTrip.RitNumber(), rcTrip.DateOfTrip(), lsFrom, lsTo);
    lcTrack.Description = QStringLiteral("%1, %2 to %3, %4 km to %5 km (%6 km)")
                              .arg(rcTrip.TypeOfTrip(), rcTrip.StartTime(), rcTrip.StopTime(), rcTrip.sStartKm(),
                                   rcTrip.sEndKm(), rcTrip.DriveKm());
    const QDateTime lcStart = ToUtc(rcTrip.DateOfTrip(), rcTrip.StartTime());
    QDateTime lcStop = ToUtc(rcTrip.DateOfTrip(), rcTrip.StopTime());
    // A trip past midnight stops on the next day.
    if (lcStart.isValid() && lcStop.isValid() && lcStop < lcStart)
        lcStop = lcStop.addDays(1);
    // The first trip after an empty log has no start position: it begins at its first route point.
    if (rcTrip.mlStartLatitude != 0 || rcTrip.mlStartLongitude != 0)
        lcTrack.Points.append({Degrees(rcTrip.mlStartLatitude, kLatitudeOffset),
                               Degrees(rcTrip.mlStartLongitude, kLongitudeOffset), lcStart});
    lcTrack.Points += mcRoute;
    lcTrack.Points.append({Degrees(rcTrip.lEndLatitude(), kLatitudeOffset),
                           Degrees(rcTrip.lEndLongitude(), kLongitudeOffset), lcStop});
    mcTracks.push_back(lcTrack);
}

void clsTripTracks::AddWaypoint(clsHalvexRecord& rcRecord)
{
    if (!rcRecord.ValidGps()) {
        ++mlLeftOut;
        return;
    }
    Waypoint lcWaypoint;
    lcWaypoint.Position = {Degrees(rcRecord.lEndLatitude(), kLatitudeOffset),
                           Degrees(rcRecord.lEndLongitude(), kLongitudeOffset),
                           ToUtc(rcRecord.DateOfTrip(), rcRecord.StopTime())};
    lcWaypoint.Name = rcRecord.TypeOfAlarm();
    lcWaypoint.Comment = Place(rcRecord.Destination(true));
    QStringList lcFacts;
    for (const QString& lsTitle : kWaypointColumns) {
        const QString lsText = ColumnText(rcRecord, lsTitle);
        if (!lsText.isEmpty())
            lcFacts << lsTitle + QStringLiteral(": ") + lsText;
    }
    lcWaypoint.Description = lcFacts.join(QStringLiteral(", "));
    mcWaypoints.push_back(lcWaypoint);
}

QString clsTripTracks::ColumnText(const clsHalvexRecord& vcRecord, const QString& vsTitle)
{
    for (const clsRecordColumn& lcColumn : RecordColumns())
        if (lcColumn.Title == vsTitle)
            return lcColumn.Text(vcRecord);
    return QString();
}

// A place not in the table is a single space in the record.
QString clsTripTracks::Place(const QString& vsText)
{
    const QString lsPlace = vsText.trimmed();
    return lsPlace.isEmpty() ? QStringLiteral("?") : lsPlace;
}
