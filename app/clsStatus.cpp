#include "app/clsStatus.h"

clsStatus::clsStatus(QObject* vParent)
    : QObject(vParent)
{
}

void clsStatus::SetStatusString(const QString& vsText)
{
    if (vsText == msStatusString)
        return;
    msStatusString = vsText;
    emit StatusChanged();
}

void clsStatus::SetSmallStatusString(const QString& vsText)
{
    if (vsText == msSmallStatusString)
        return;
    msSmallStatusString = vsText;
    emit StatusChanged();
}

clsProgressBarInfo& clsStatus::BigProgressBarInfo()
{
    if (!mcBigProgressBar) {
        mcBigProgressBar = new clsProgressBarInfo(this);
        connect(mcBigProgressBar, &clsProgressBarInfo::DataChanged, this, &clsStatus::mcBigProgressBar_DataChanged);
    }
    return *mcBigProgressBar;
}

clsProgressBarInfo& clsStatus::SmallProgressBarInfo()
{
    if (!mcSmallProgressBar) {
        mcSmallProgressBar = new clsProgressBarInfo(this);
        connect(mcSmallProgressBar, &clsProgressBarInfo::DataChanged, this, &clsStatus::mcSmallProgressBar_DataChanged);
    }
    return *mcSmallProgressBar;
}
