#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

// The bytes of a page file: one decimal value a line, every line ended by CR
// LF. A file in any other shape reads as a text saying so, which no page equals.
inline QByteArray PageFileBytes(const QString& vsPath)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly))
        return QByteArray();
    const QByteArray lcText = lcFile.readAll();
    if (!lcText.isEmpty() && !lcText.endsWith("\r\n"))
        return "not CR LF ended";
    QByteArray lcBytes;
    for (const QByteArray& lcLine : lcText.split('\n')) {
        if (lcLine.isEmpty())
            continue;
        bool lbOk = false;
        const int llValue = lcLine.trimmed().toInt(&lbOk);
        if (!lbOk || llValue < 0 || llValue > 255 || !lcLine.endsWith('\r'))
            return "bad line: " + lcLine;
        lcBytes.append(char(llValue));
    }
    return lcBytes;
}
