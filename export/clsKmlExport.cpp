#include "export/clsKmlExport.h"

#include "export/clsTripTracks.h"

#include <QStringList>
#include <QXmlStreamWriter>

namespace {
// KML writes longitude first.
QString Coordinates(const clsTripTracks::Point& vcPoint)
{
    return QString::number(vcPoint.Longitude, 'f', 7) + QLatin1Char(',') + QString::number(vcPoint.Latitude, 'f', 7);
}

void StartPlacemark(QXmlStreamWriter& rcXml, const QString& vsName, const QString& vsDescription)
{
    rcXml.writeStartElement(QStringLiteral("Placemark"));
    rcXml.writeTextElement(QStringLiteral("name"), vsName);
    if (!vsDescription.isEmpty())
        rcXml.writeTextElement(QStringLiteral("description"), vsDescription);
}

void WriteStyle(QXmlStreamWriter& rcXml)
{
    rcXml.writeStartElement(QStringLiteral("Style"));
    rcXml.writeAttribute(QStringLiteral("id"), QStringLiteral("trip"));
    rcXml.writeStartElement(QStringLiteral("LineStyle"));
    rcXml.writeTextElement(QStringLiteral("color"), QStringLiteral("ff2f6fd6"));
    rcXml.writeTextElement(QStringLiteral("width"), QStringLiteral("4"));
    rcXml.writeEndElement();
    rcXml.writeEndElement();
}
}

QByteArray clsKmlExport::Render(clsRecordCollection& rcRecords)
{
    const clsTripTracks lcTracks(ValidRecords(rcRecords), Context().Selection);
    SetNote(lcTracks.LeftOutNote());
    QByteArray lcData;
    QXmlStreamWriter lcXml(&lcData);
    lcXml.setAutoFormatting(true);
    lcXml.writeStartDocument();
    lcXml.writeDefaultNamespace(QStringLiteral("http://www.opengis.net/kml/2.2"));
    lcXml.writeStartElement(QStringLiteral("kml"));
    lcXml.writeStartElement(QStringLiteral("Document"));
    lcXml.writeTextElement(QStringLiteral("name"), QStringLiteral("Trips of the KVT Memory Display"));
    if (!Context().DisplayId.isEmpty())
        lcXml.writeTextElement(QStringLiteral("description"), QStringLiteral("Display ") + Context().DisplayId);
    WriteStyle(lcXml);
    WriteTrips(lcXml, lcTracks);
    WriteEvents(lcXml, lcTracks);
    lcXml.writeEndElement();
    lcXml.writeEndElement();
    lcXml.writeEndDocument();
    return lcData;
}

void clsKmlExport::WriteTrips(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks)
{
    rcXml.writeStartElement(QStringLiteral("Folder"));
    rcXml.writeTextElement(QStringLiteral("name"), QStringLiteral("Trips"));
    for (const clsTripTracks::Track& lcTrack : vcTracks.Tracks()) {
        StartPlacemark(rcXml, lcTrack.Name, lcTrack.Description);
        const QDateTime lcBegin = lcTrack.Points.first().Time;
        const QDateTime lcEnd = lcTrack.Points.last().Time;
        if (lcBegin.isValid() || lcEnd.isValid()) {
            rcXml.writeStartElement(QStringLiteral("TimeSpan"));
            if (lcBegin.isValid())
                rcXml.writeTextElement(QStringLiteral("begin"), clsTripTracks::IsoTime(lcBegin));
            if (lcEnd.isValid())
                rcXml.writeTextElement(QStringLiteral("end"), clsTripTracks::IsoTime(lcEnd));
            rcXml.writeEndElement();
        }
        rcXml.writeTextElement(QStringLiteral("styleUrl"), QStringLiteral("#trip"));
        QStringList lcCoordinates;
        for (const clsTripTracks::Point& lcPoint : lcTrack.Points)
            lcCoordinates << Coordinates(lcPoint);
        // A line needs two points; a trip known only by where it stopped is a point.
        rcXml.writeStartElement(lcCoordinates.size() > 1 ? QStringLiteral("LineString") : QStringLiteral("Point"));
        if (lcCoordinates.size() > 1)
            rcXml.writeTextElement(QStringLiteral("tessellate"), QStringLiteral("1"));
        rcXml.writeTextElement(QStringLiteral("coordinates"), lcCoordinates.join(QLatin1Char(' ')));
        rcXml.writeEndElement();
        rcXml.writeEndElement();
    }
    rcXml.writeEndElement();
}

void clsKmlExport::WriteEvents(QXmlStreamWriter& rcXml, const clsTripTracks& vcTracks)
{
    rcXml.writeStartElement(QStringLiteral("Folder"));
    rcXml.writeTextElement(QStringLiteral("name"), QStringLiteral("Alarms and tank stops"));
    for (const clsTripTracks::Waypoint& lcWaypoint : vcTracks.Waypoints()) {
        QString lsDescription = lcWaypoint.Comment;
        if (!lcWaypoint.Description.isEmpty())
            lsDescription += QStringLiteral(": ") + lcWaypoint.Description;
        StartPlacemark(rcXml, lcWaypoint.Name, lsDescription);
        if (lcWaypoint.Position.Time.isValid()) {
            rcXml.writeStartElement(QStringLiteral("TimeStamp"));
            rcXml.writeTextElement(QStringLiteral("when"), clsTripTracks::IsoTime(lcWaypoint.Position.Time));
            rcXml.writeEndElement();
        }
        rcXml.writeStartElement(QStringLiteral("Point"));
        rcXml.writeTextElement(QStringLiteral("coordinates"), Coordinates(lcWaypoint.Position));
        rcXml.writeEndElement();
        rcXml.writeEndElement();
    }
    rcXml.writeEndElement();
}
