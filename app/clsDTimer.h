#pragma once

#include <QObject>

class IEventLoop;

// A timer without a window: raises Tick every Interval while Enabled. The
// platform calls back with a bare timer id, so a table shared by all timers
// maps ids to their objects.
class clsDTimer : public QObject
{
    Q_OBJECT
public:
    explicit clsDTimer(QObject* vParent = nullptr);
    ~clsDTimer() override;

    bool Enabled() const { return mbEnabled; }
    void SetEnabled(bool vbEnabled);
    qint32 Interval() const { return mlInterval; }
    void SetInterval(qint32 vlInterval);
    qint32 TimerId() const { return mlTimerId; }

    void RaiseTick() { emit Tick(); }

    // The event loop whose platform timers all clsDTimer objects use.
    static void UseEventLoop(IEventLoop* vcLoop);
    // Module side: start a platform timer for an object; throws "No timers available".
    static qint32 StartTimer(clsDTimer* vcTimer, qint32 vlInterval);
    static void StopTimer(clsDTimer* vcTimer);
    // The number of entries of the timer table (grows by 5).
    static int TimerTableSize();

signals:
    void Tick();

private:
    static void TimerProc(int vlTimerId);

    bool mbEnabled = false;
    qint32 mlInterval = 0;
    qint32 mlTimerId = 0;
};
