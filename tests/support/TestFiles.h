#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTest>

// Whole-file reads and writes for tests; a file that cannot be read is empty.
inline QByteArray ReadAll(const QString& vsPath)
{
    QFile lcFile(vsPath);
    return lcFile.open(QIODevice::ReadOnly) ? lcFile.readAll() : QByteArray();
}

inline void WriteAll(const QString& vsPath, const QByteArray& vcData)
{
    QFile lcFile(vsPath);
    QVERIFY2(lcFile.open(QIODevice::WriteOnly), qPrintable(vsPath));
    QCOMPARE(lcFile.write(vcData), qint64(vcData.size()));
}
