#include "export/clsGpxExport.h"

#include "app/clsApplication.h"
#include "export/clsTripTracks.h"

#include <QXmlStreamWriter>

namespace {
void WriteTextElement(QXmlStreamWriter& rcXml, const QString& vsName, const QString& vsText)
{
    if (!vsText.isEmpty())
        rcXml.writeTextElement(vsName, vsText);
}

// Opens a wpt or trkpt with its lat, lon and time; the caller adds the rest and closes it.
void StartPoint(QXmlStreamWriter& rcXml, const QString& vsElement, const clsTripTracks::Point& vcPoint)
{
    rcXml.writeStartElement(vsElement);
    rcXml.writeAttribute(QStringLiteral("lat"), QString::number(vcPoint.Latitude, 'f', 7));
    rcXml.writeAttribute(QStringLiteral("lon"), QString::number(vcPoint.Longitude, 'f', 7));
    if (vcPoint.Time.isValid())
        rcXml.writeTextElement(QStringLiteral("time"), clsTripTracks::IsoTime(vcPoint.Time));
}
}

QByteArray clsGpxExport::Render(clsRecordCollection& rcRecords)
{
    const clsTripTracks lcTracks(ValidRecords(rcRecords), Context().Selection);
    SetNote(lcTracks.LeftOutNote());
    QByteArray lcData;
    QXmlStreamWriter lcXml(&lcData);
    lcXml.setAutoFormatting(true);
    lcXml.writeStartDocument();
    lcXml.writeDefaultNamespace(QStringLiteral("http://www.topografix.com/GPX/1/1"));
    lcXml.writeStartElement(QStringLiteral("gpx"));
    lcXml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.1"));
    lcXml.writeAttribute(QStringLiteral("creator"),
                         clsApplication::ApplicationName() + QLatin1Char(' ') + clsApplication::VersionString());
    // The schema's order: metadata, waypoints, routes, tracks.
    WriteMetadata(lcXml);
    WriteWaypoints(lcXml, lcTracks);
    WriteTracks(lcXml, lcTracks);
    lcXml.writeEndElement();
    lcXml.writeEndDocument();
    return lcData;
}

void clsGpxExport::WriteMetadata(QXmlStreamWriter& rcXml) const
{
    rcXml.writeStartElement(QStringLiteral("metadata"));
    rcXml.writeTextElement(QStringLiteral("name"), QStringLiteral("Trips of the KVT Memory Display"));
    if (!Context().DisplayId.isEmpty())
        rcXml.writeTextElement(QStringLiteral("desc"), QStringLiteral("Display ") + Context().DisplayId);
    if (Context().Downloaded.isValid())
        rcXml.writeTextElement(QStringLiteral("time"), clsTripTracks::IsoTime(Context().Downloaded));
    rcXml.writeEndElement();
}

void clsGpxExport::WriteWaypoints(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks)
{
    for (const clsTripTracks::Waypoint& lcWaypoint : vcTracks.Waypoints()) {
        StartPoint(rcXml, QStringLiteral("wpt"), lcWaypoint.Position);
        WriteTextElement(rcXml, QStringLiteral("name"), lcWaypoint.Name);
        WriteTextElement(rcXml, QStringLiteral("cmt"), lcWaypoint.Comment);
        WriteTextElement(rcXml, QStringLiteral("desc"), lcWaypoint.Description);
        WriteTextElement(rcXml, QStringLiteral("type"), lcWaypoint.Name);
        rcXml.writeEndElement();
    }
}

void clsGpxExport::WriteTracks(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks)
{
    for (const clsTripTracks::Track& lcTrack : vcTracks.Tracks()) {
        rcXml.writeStartElement(QStringLiteral("trk"));
        WriteTextElement(rcXml, QStringLiteral("name"), lcTrack.Name);
        WriteTextElement(rcXml, QStringLiteral("desc"), lcTrack.Description);
        rcXml.writeStartElement(QStringLiteral("trkseg"));
        for (const clsTripTracks::Point& lcPoint : lcTrack.Points) {
            StartPoint(rcXml, QStringLiteral("trkpt"), lcPoint);
            rcXml.writeEndElement();
        }
        rcXml.writeEndElement();
        rcXml.writeEndElement();
    }
}
