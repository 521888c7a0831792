#pragma once

#include <QByteArray>
#include <QFile>
#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <QTest>
#include <functional>

// Bytes written as spaced hex, "00 00 66 01".
inline QByteArray Hex(const char* vsHex)
{
    return QByteArray::fromHex(QByteArray(vsHex).replace(' ', ""));
}

// Whole numbers written "4,5,10,200" or "1 64".
inline QList<int> Numbers(const QString& vsList)
{
    static const QRegularExpression scSeparator(QStringLiteral("[, ]"));
    QList<int> lcNumbers;
    for (const QString& lsNumber : vsList.split(scSeparator, Qt::SkipEmptyParts))
        lcNumbers << lsNumber.toInt();
    return lcNumbers;
}

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

// The rows of a table in tests/data/tables (UTF-8): one row a line, the row's
// name and then its fields, separated by '|' and trimmed; "\r" and "\n" stand
// for CR and LF. Empty lines and lines starting with '#' are comments.
inline QList<QStringList> TableRows(const QString& vsTable)
{
    QList<QStringList> lcRows;
    const QString lsText = QString::fromUtf8(ReadAll(QStringLiteral(CORVANE_TEST_DATA "/tables/") + vsTable));
    for (const QString& lsLine : lsText.split(QLatin1Char('\n'))) {
        if (lsLine.trimmed().isEmpty() || lsLine.startsWith(QLatin1Char('#')))
            continue;
        QStringList lcFields;
        for (const QString& lsField : lsLine.split(QLatin1Char('|')))
            lcFields << lsField.trimmed().replace(QStringLiteral("\\r"), QStringLiteral("\r")).replace(QStringLiteral("\\n"), QStringLiteral("\n"));
        lcRows << lcFields;
    }
    if (lcRows.isEmpty())
        qFatal("no rows in %s", qPrintable(vsTable));
    return lcRows;
}

// A _data() function over a table: one column "row", the fields as read (row[0] is the name).
inline void AddTableRows(const QString& vsTable)
{
    QTest::addColumn<QStringList>("row");
    for (const QStringList& lcRow : TableRows(vsTable))
        QTest::newRow(qPrintable(lcRow[0])) << lcRow;
}

// A test's script of steps, "verb argument, verb argument": each step runs its
// verb's action with the rest of the step. A verb without an action fails the test.
using StepActions = QMap<QString, std::function<void(const QString&)>>;
inline void RunSteps(const QString& vsScript, const StepActions& vcActions)
{
    for (const QString& lsStep : vsScript.split(QStringLiteral(", "), Qt::SkipEmptyParts)) {
        const auto lcAction = vcActions.constFind(lsStep.section(QLatin1Char(' '), 0, 0));
        QVERIFY2(lcAction != vcActions.cend(), qPrintable(lsStep));
        (*lcAction)(lsStep.section(QLatin1Char(' '), 1));
    }
}
