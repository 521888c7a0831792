#pragma once

#include <QString>
#include <QStringList>
#include <vector>

class clsHalvexRecord;

// The trips as a mileage register, the list a tax office asks for: one line
// a trip (date, start and stop time, from and to, start and stop km,
// distance), after each day the day's total, after each month the month's,
// and the total of all trips at the end.
class clsMileageRegister
{
public:
    enum class Kind { Trip, DayTotal, MonthTotal, GrandTotal };
    struct Line {
        Kind LineKind = Kind::Trip;
        QStringList Cells; // one per Titles() entry; a total has its label first and its km last
    };

    explicit clsMileageRegister(const std::vector<clsHalvexRecord*>& vcTrips);

    static QStringList Titles();
    const std::vector<Line>& Lines() const { return mcLines; }

private:
    void AddTrip(clsHalvexRecord& rcTrip);
    void CloseDay();
    void CloseMonth();
    void AddTotal(Kind vKind, const QString& vsLabel, qint64 vlKm);

    std::vector<Line> mcLines;
    QString msDay;
    int mlMonth = -1; // year * 100 + month; 0 for trips before the first known date
    qint64 mlDayKm = 0;
    qint64 mlMonthKm = 0;
    qint64 mlTotalKm = 0;
    bool mbDayOpen = false;
};
