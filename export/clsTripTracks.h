#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>
#include <vector>

class clsHalvexRecord;
struct clsRecordSelection;

// The records as a map sees them: each trip a track from where it started,
// through the route points logged on the way, to where it stopped; each
// alarm and tank stop a waypoint. Times are the display's local clock,
// turned into UTC with this machine's time zone.
class clsTripTracks
{
public:
    struct Point {
        double Latitude = 0.0;  // degrees, north positive
        double Longitude = 0.0; // degrees, east positive
        QDateTime Time;         // UTC; invalid when the record has none
    };
    struct Track {
        QString Name;
        QString Description;
        QVector<Point> Points;
    };
    struct Waypoint {
        Point Position;
        QString Name;
        QString Comment;
        QString Description;
    };

    // vcRecords: every valid record in record order (route points included,
    // whatever the selection); the selection chooses trips and waypoints.
    clsTripTracks(const std::vector<clsHalvexRecord*>& vcRecords, const clsRecordSelection& vcSelection);

    const std::vector<Track>& Tracks() const { return mcTracks; }
    const std::vector<Waypoint>& Waypoints() const { return mcWaypoints; }
    // Chosen records that had no position and are not on the map.
    int LeftOut() const { return mlLeftOut; }
    QString LeftOutNote() const;

    // A moment of the display's clock ("5-3-2007", "07:05:40") in UTC; invalid when either is not one.
    static QDateTime ToUtc(const QString& vsDate, const QString& vsTime);
    // Degrees of the display's coordinates (1/600000 degree, offset by 90 and 180).
    static double Degrees(qint32 vlValue, int vlOffset) { return vlValue / 600000.0 - vlOffset; }
    static QString IsoTime(const QDateTime& vcTime);

private:
    void AddTrip(clsHalvexRecord& rcTrip);
    void AddWaypoint(clsHalvexRecord& rcRecord);
    static QString ColumnText(const clsHalvexRecord& vcRecord, const QString& vsTitle);
    static QString Place(const QString& vsText);

    std::vector<Track> mcTracks;
    std::vector<Waypoint> mcWaypoints;
    QVector<Point> mcRoute;
    int mlLeftOut = 0;
};
