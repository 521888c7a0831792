#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

// A page file as the download writes it: each byte in decimal on a line of
// its own, every line ended by CR LF.
inline QByteArray PageFileText(const QByteArray& vcPage)
{
    QByteArray lcText;
    lcText.reserve(vcPage.size() * 5);
    for (char lcByte : vcPage)
        lcText += QByteArray::number(quint8(lcByte)) + "\r\n";
    return lcText;
}

inline bool WritePageFile(const QString& vsPath, const QByteArray& vcPage)
{
    QFile lcFile(vsPath);
    const QByteArray lcText = PageFileText(vcPage);
    return lcFile.open(QIODevice::WriteOnly) && lcFile.write(lcText) == lcText.size();
}

// The bytes of a page file. A file in any other shape reads as a text saying
// so, which no page equals.
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
