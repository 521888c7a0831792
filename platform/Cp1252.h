#pragma once

#include <QByteArray>
#include <QString>

// Windows-1252, the code page of page files, postcode.gps and the export.
namespace Cp1252 {
QString Decode(const QByteArray& vcBytes);
// Characters outside the code page become '?'.
QByteArray Encode(const QString& vsText);
QChar DecodeByte(unsigned char vbyValue);
}
