#include "export/clsMileageRegister.h"

#include "data/clsHalvexRecord.h"
#include "export/clsTypedCell.h"

#include <QLocale>

namespace {
const QString kUnknownDate = QStringLiteral("unknown");
}

clsMileageRegister::clsMileageRegister(const std::vector<clsHalvexRecord*>& vcTrips)
{
    for (clsHalvexRecord* lcTrip : vcTrips)
        AddTrip(*lcTrip);
    CloseDay();
    CloseMonth();
    AddTotal(Kind::GrandTotal, QStringLiteral("All trips"), mlTotalKm);
}

QStringList clsMileageRegister::Titles()
{
    return {"Date", "Start", "Stop", "From", "To", "Start km", "Stop km", "Distance"};
}

// A trip without a date ("unknown") counts in the day and month before it,
// as the display's trip numbering does.
void clsMileageRegister::AddTrip(clsHalvexRecord& rcTrip)
{
    const QString lsDate = rcTrip.DateOfTrip();
    const clsTypedCell lcDate = clsTypedCell::Parse(QStringLiteral("Date"), lsDate);
    const bool lbKnown = lcDate.CellKind() == clsTypedCell::Kind::Date;
    if (lbKnown && lsDate != msDay) {
        CloseDay();
        const int llMonth = lcDate.Date().year() * 100 + lcDate.Date().month();
        if (llMonth != mlMonth)
            CloseMonth();
        mlMonth = llMonth;
        msDay = lsDate;
    }
    if (mlMonth < 0)
        mlMonth = 0;
    mbDayOpen = true;
    const qint64 llKm = rcTrip.DriveKm().toLongLong();
    mlDayKm += llKm;
    mlMonthKm += llKm;
    mlTotalKm += llKm;
    mcLines.push_back({Kind::Trip,
                       {lsDate, rcTrip.StartTime(), rcTrip.StopTime(), rcTrip.Origin(true).trimmed(),
                        rcTrip.Destination(true).trimmed(), rcTrip.sStartKm(), rcTrip.sEndKm(), rcTrip.DriveKm()}});
}

void clsMileageRegister::CloseDay()
{
    if (!mbDayOpen)
        return;
    AddTotal(Kind::DayTotal, QStringLiteral("Total ") + (msDay.isEmpty() ? kUnknownDate : msDay), mlDayKm);
    mbDayOpen = false;
    mlDayKm = 0;
}

void clsMileageRegister::CloseMonth()
{
    if (mlMonth < 0)
        return;
    const QString lsMonth = mlMonth == 0 ? kUnknownDate
                                          : QLocale::c().toString(QDate(mlMonth / 100, mlMonth % 100, 1),
                                                                  QStringLiteral("MMMM yyyy"));
    AddTotal(Kind::MonthTotal, QStringLiteral("Total ") + lsMonth, mlMonthKm);
    mlMonth = -1;
    mlMonthKm = 0;
}

void clsMileageRegister::AddTotal(Kind vKind, const QString& vsLabel, qint64 vlKm)
{
    Line lcLine{vKind, QStringList()};
    for (int i = 0; i < Titles().size(); ++i)
        lcLine.Cells << QString();
    lcLine.Cells.first() = vsLabel;
    lcLine.Cells.last() = QString::number(vlKm);
    mcLines.push_back(lcLine);
}
