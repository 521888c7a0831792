#pragma once

#include <QDate>
#include <QString>

struct clsRecordColumn;
class clsHalvexRecord;

// One cell of the record table as a value a spreadsheet can calculate with:
// the dates, times, drive times and numbers of the columns that hold them,
// read back from the column's text. A text that is no such value ("unknown",
// an empty field) stays text.
class clsTypedCell
{
public:
    enum class Kind { Empty, Text, Number, Date, TimeOfDay, Duration };

    static clsTypedCell Of(const clsRecordColumn& vcColumn, const clsHalvexRecord& vcRecord);
    // Reads a cell text as the given column title holds it.
    static clsTypedCell Parse(const QString& vsTitle, const QString& vsText);

    Kind CellKind() const { return mKind; }
    QString Text() const { return msText; }
    // Number: the value; TimeOfDay and Duration: seconds.
    double Number() const { return mdNumber; }
    QDate Date() const { return mcDate; }

private:
    // What a column holds when its text is a value, by the column's title.
    static Kind KindOfColumn(const QString& vsTitle);
    static bool ReadDate(const QString& vsText, QDate& rcDate);
    static bool ReadClock(const QString& vsText, bool vbDuration, double& rdSeconds);

    Kind mKind = Kind::Empty;
    QString msText;
    double mdNumber = 0.0;
    QDate mcDate;
};
