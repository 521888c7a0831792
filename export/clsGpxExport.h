#pragma once

#include "export/clsRecordExport.h"

class QXmlStreamWriter;
class clsTripTracks;

// The trips as GPS tracks (GPX 1.1) for map and route programs: one track a
// trip, the alarms and tank stops as waypoints. Records without a position
// are left out; Note() says how many.
class clsGpxExport : public clsRecordExport
{
public:
    using clsRecordExport::clsRecordExport;

    QString FileFilter() override { return QStringLiteral("GPS tracks (GPX)(*.gpx)|*.gpx"); }
    QString EditorName() override { return QStringLiteral("GPS tracks"); }
    qint32 GetIndex() override { return 12; }
    QString GetIdString() override { return QStringLiteral("GPX"); }

protected:
    QByteArray Render(clsRecordCollection& rcRecords) override;

private:
    void WriteMetadata(QXmlStreamWriter& rcXml) const;
    static void WriteWaypoints(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks);
    static void WriteTracks(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks);
};
