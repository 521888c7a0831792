#include "app/clsProgressBarInfo.h"

#include <cmath>

clsProgressBarInfo::clsProgressBarInfo(QObject* vParent)
    : QObject(vParent)
{
    Reset();
}

void clsProgressBarInfo::Reset()
{
    mlPosition = mlMin;
    mlStepSize = 1;
    Recompute();
}

void clsProgressBarInfo::SetMin(qint32 vlMin)
{
    mlMin = vlMin;
    Reset();
}

void clsProgressBarInfo::SetMax(qint32 vlMax)
{
    mlMax = vlMax;
    Reset();
}

void clsProgressBarInfo::SetPosition(qint32 vlPosition)
{
    if (vlPosition == mlPosition)
        return;
    mlPosition = vlPosition;
    Recompute();
}

// A step of the record pipeline's bars is one record of some 700,000: the
// percentage is worked out again only when the step may have changed it.
void clsProgressBarInfo::Increment()
{
    mlPosition += mlStepSize;
    if (mlPosition > mlMax)
        mlPosition = mlMax;
    if (mlPosition >= mlSamePercentageFrom && mlPosition < mlSamePercentageBelow)
        return;
    Recompute();
}

void clsProgressBarInfo::SetVisible(bool vbVisible)
{
    if (vbVisible == mbVisible)
        return;
    mbVisible = vbVisible;
    emit DataChanged();
}

// The raw position, not Position - Min, is divided by the span: with Min = 1
// the bar shows 100 per cent one step before Max. The save's progress relies on it.
void clsProgressBarInfo::Recompute()
{
    qint32 llPercentage = 0;
    const double ldSpan = double(mlMax) - double(mlMin);
    if (mlMax != mlMin)
        llPercentage = qint32(std::nearbyint(double(mlPosition) * 100.0 / ldSpan));
    NoteSamePercentage(llPercentage, ldSpan);
    if (llPercentage == mlPercentage)
        return;
    mlPercentage = llPercentage;
    if (mbVisible)
        emit DataChanged();
}

// From this position on, up to a hundredth of a per cent short of the next
// half per cent, every position rounds to the same percentage (the
// hundredth covers the rounding of this bound itself).
void clsProgressBarInfo::NoteSamePercentage(qint32 vlPercentage, double vdSpan)
{
    mlSamePercentageFrom = mlPosition;
    mlSamePercentageBelow = mlPosition;
    if (vdSpan > 0)
        mlSamePercentageBelow = qint64(std::floor((vlPercentage + 0.49) * vdSpan / 100.0));
}
