#pragma once

#include "app/clsProgressBarInfo.h"

#include <QObject>
#include <QString>

// What a long operation reports: a status text, a secondary text and two bars.
// Operations only set values here; the application copies them to the window.
class clsStatus : public QObject
{
    Q_OBJECT
public:
    explicit clsStatus(QObject* vParent = nullptr);

    QString StatusString() const { return msStatusString; }
    void SetStatusString(const QString& vsText);
    QString SmallStatusString() const { return msSmallStatusString; }
    void SetSmallStatusString(const QString& vsText);

    clsProgressBarInfo& BigProgressBarInfo();
    clsProgressBarInfo& SmallProgressBarInfo();

signals:
    void StatusChanged();

private:
    void mcBigProgressBar_DataChanged() { emit StatusChanged(); }
    void mcSmallProgressBar_DataChanged() { emit StatusChanged(); }

    QString msStatusString;
    QString msSmallStatusString;
    clsProgressBarInfo* mcBigProgressBar = nullptr;
    clsProgressBarInfo* mcSmallProgressBar = nullptr;
};
