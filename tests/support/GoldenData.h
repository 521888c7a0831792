#pragma once

// The golden data of tests/data: its tables of expected values and its page-file sets.

#include "TestApp.h"
#include "TestFiles.h"
#include "data/clsFlashMemInfo.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTest>

// A tab-separated table of expected values in tests/data: one row a line,
// vlFields fields, untrimmed; empty lines and lines starting with "#" are
// comments; "\n" and "\r" in a field stand for the line-break characters. A
// table that cannot be read, or a row with another number of fields, stops
// the test, so that no row is skipped unseen.
inline QList<QStringList> DataTable(const QString& vsName, int vlFields)
{
    QFile lcFile(QStringLiteral(CORVANE_TEST_DATA "/") + vsName);
    if (!lcFile.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(lcFile.fileName()));
    QList<QStringList> lcRows;
    const QStringList lcLines = QString::fromUtf8(lcFile.readAll()).split(QLatin1Char('\n'));
    for (int i = 0; i < lcLines.size(); ++i) {
        if (lcLines[i].isEmpty() || lcLines[i].startsWith(QLatin1Char('#')))
            continue;
        if (lcLines[i].count(QLatin1Char('\t')) != vlFields - 1)
            qFatal("%s, line %d: not %d tab-separated fields", qPrintable(vsName), i + 1, vlFields);
        lcRows << lcLines[i].split(QLatin1Char('\t')).replaceInStrings("\\n", "\n").replaceInStrings("\\r", "\r");
    }
    return lcRows;
}

// A display's geometry: pages vlFirst to vlLast of 2^vlSizeLog2 bytes.
inline clsFlashMemInfo Geometry(int vlFirst, int vlLast, int vlSizeLog2)
{
    clsFlashMemInfo lcInfo;
    lcInfo.SetFirstPage(vlFirst);
    lcInfo.SetLastPage(vlLast);
    lcInfo.SetSizeOnePage(vlSizeLog2);
    return lcInfo;
}

// Decodes a golden set in the home of an application not started yet, its own
// place table (or vcTable) included; the table is loaded as the application starts.
inline void LoadSet(TestApp& rcApp, const QString& vsSet, const QByteArray& vcTable = QByteArray())
{
    const QDir lcSet(QStringLiteral(CORVANE_TEST_DATA "/") + vsSet);
    for (const QString& lsFile : lcSet.entryList({QStringLiteral("Page*.DSW"), QStringLiteral("postcode.gps")}))
        QVERIFY(QFile::copy(lcSet.filePath(lsFile), rcApp.Home() + lsFile));
    if (!vcTable.isEmpty())
        WriteAll(rcApp.Home() + QStringLiteral("postcode.gps"), vcTable);
    rcApp.app->Init();
    const QList<QByteArray> lcNumbers = ReadAll(lcSet.filePath(QStringLiteral("geometry.txt"))).simplified().split(' ');
    QCOMPARE(lcNumbers.size(), 3);
    clsError lcError;
    rcApp.app->DecodeAndProcess(lcError, Geometry(lcNumbers[0].toInt(), lcNumbers[1].toInt(), lcNumbers[2].toInt()));
    QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
}
