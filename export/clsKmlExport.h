#pragma once

#include "export/clsRecordExport.h"

class QXmlStreamWriter;
class clsTripTracks;

// The same map as the GPX export, as KML for map programs that read KML:
// a folder of trips (lines with their time span) and a folder of alarms and
// tank stops (points with their moment).
class clsKmlExport : public clsRecordExport
{
public:
    using clsRecordExport::clsRecordExport;

    QString FileFilter() override { return QStringLiteral("Map file (KML)(*.kml)|*.kml"); }
    QString EditorName() override { return QStringLiteral("Map file"); }
    qint32 GetIndex() override { return 13; }
    QString GetIdString() override { return QStringLiteral("KML"); }

protected:
    QByteArray Render(clsRecordCollection& rcRecords) override;

private:
    static void WriteTrips(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks);
    static void WriteEvents(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks);
};
