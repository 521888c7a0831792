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

void clsProgressBarInfo::Increment()
{
    mlPosition += mlStepSize;
    if (mlPosition > mlMax)
        mlPosition = mlMax;
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
    if (mlMax != mlMin)
        llPercentage = qint32(std::nearbyint(double(mlPosition) * 100.0 / (double(mlMax) - double(mlMin))));
    if (llPercentage == mlPercentage)
        return;
    mlPercentage = llPercentage;
    if (mbVisible)
        emit DataChanged();
}
