#include "export/clsTypedCell.h"

#include "data/clsRecordColumns.h"

#include <QRegularExpression>

clsTypedCell clsTypedCell::Of(const clsRecordColumn& vcColumn, const clsHalvexRecord& vcRecord)
{
    return Parse(vcColumn.Title, vcColumn.Text(vcRecord));
}

clsTypedCell clsTypedCell::Parse(const QString& vsTitle, const QString& vsText)
{
    clsTypedCell lcCell;
    lcCell.msText = vsText;
    // Place columns hold a single space where no place was found.
    if (vsText.trimmed().isEmpty())
        return lcCell;
    lcCell.mKind = Kind::Text;
    switch (KindOfColumn(vsTitle)) {
    case Kind::Number: {
        bool lbNumber = false;
        const qint64 llValue = vsText.toLongLong(&lbNumber);
        if (lbNumber) {
            lcCell.mKind = Kind::Number;
            lcCell.mdNumber = double(llValue);
        }
        break;
    }
    case Kind::Date:
        if (ReadDate(vsText, lcCell.mcDate))
            lcCell.mKind = Kind::Date;
        break;
    case Kind::TimeOfDay:
        if (ReadClock(vsText, false, lcCell.mdNumber))
            lcCell.mKind = Kind::TimeOfDay;
        break;
    case Kind::Duration:
        if (ReadClock(vsText, true, lcCell.mdNumber))
            lcCell.mKind = Kind::Duration;
        break;
    default:
        break;
    }
    return lcCell;
}

clsTypedCell::Kind clsTypedCell::KindOfColumn(const QString& vsTitle)
{
    static const QStringList scNumbers = {"#",        "Ritnumber", "Start km",  "End km",
                                          "Driven km", "Direction", "Speed", "Amplitude", "Tank receipt number"};
    if (scNumbers.contains(vsTitle))
        return Kind::Number;
    if (vsTitle == QLatin1String("Date"))
        return Kind::Date;
    if (vsTitle == QLatin1String("Start Time") || vsTitle == QLatin1String("Stop Time"))
        return Kind::TimeOfDay;
    if (vsTitle == QLatin1String("Drive Time"))
        return Kind::Duration;
    return Kind::Text;
}

// The record's date: day-month-year without leading zeros (5-3-2007).
bool clsTypedCell::ReadDate(const QString& vsText, QDate& rcDate)
{
    static const QRegularExpression scDate(QStringLiteral("^(\\d{1,2})-(\\d{1,2})-(\\d{4})$"));
    const QRegularExpressionMatch lcMatch = scDate.match(vsText);
    if (!lcMatch.hasMatch())
        return false;
    rcDate = QDate(lcMatch.captured(3).toInt(), lcMatch.captured(2).toInt(), lcMatch.captured(1).toInt());
    return rcDate.isValid();
}

// hh:mm:ss; a time of day stays below 24 hours, a drive time need not.
bool clsTypedCell::ReadClock(const QString& vsText, bool vbDuration, double& rdSeconds)
{
    static const QRegularExpression scClock(QStringLiteral("^(\\d{2,}):(\\d{2}):(\\d{2})$"));
    const QRegularExpressionMatch lcMatch = scClock.match(vsText);
    if (!lcMatch.hasMatch())
        return false;
    const int llHours = lcMatch.captured(1).toInt();
    const int llMinutes = lcMatch.captured(2).toInt();
    const int llSeconds = lcMatch.captured(3).toInt();
    if (llMinutes > 59 || llSeconds > 59 || (!vbDuration && llHours > 23))
        return false;
    rdSeconds = llHours * 3600.0 + llMinutes * 60.0 + llSeconds;
    return true;
}
