#pragma once

#include <QObject>

// The model of one progress bar. It raises DataChanged only when the shown
// percentage changes while the bar is visible, so a run of thousands of
// increments costs about a hundred screen updates.
class clsProgressBarInfo : public QObject
{
    Q_OBJECT
public:
    explicit clsProgressBarInfo(QObject* vParent = nullptr);

    void Reset();
    qint32 Min() const { return mlMin; }
    void SetMin(qint32 vlMin);
    qint32 Max() const { return mlMax; }
    void SetMax(qint32 vlMax);
    qint32 Position() const { return mlPosition; }
    void SetPosition(qint32 vlPosition);
    void Increment();
    qint32 StepSize() const { return mlStepSize; }
    void SetStepSize(qint32 vlStepSize) { mlStepSize = vlStepSize < 1 ? 1 : vlStepSize; }
    bool Visible() const { return mbVisible; }
    void SetVisible(bool vbVisible);
    qint32 Percentage() const { return mlPercentage; }

signals:
    void DataChanged();

private:
    void Recompute();
    void NoteSamePercentage(qint32 vlPercentage, double vdSpan);

    qint32 mlMin = 0;
    qint32 mlMax = 10;
    qint32 mlPosition = 0;
    qint32 mlStepSize = 1;
    bool mbVisible = false;
    qint32 mlPercentage = 0;
    // Positions in [From, Below) show the percentage of the last recompute.
    qint64 mlSamePercentageFrom = 0;
    qint64 mlSamePercentageBelow = 0;
};
