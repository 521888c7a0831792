#pragma once

#include "platform/IEventLoop.h"

#include <QElapsedTimer>
#include <QObject>
#include <map>

class QTimer;

// The program's event loop: Qt's. A wait sleeps in the event dispatcher until
// an event arrives or a wake-up timer fires at the deadline, so waiting for
// the display does not spin a core.
class QtEventLoop : public QObject, public IEventLoop
{
    Q_OBJECT
public:
    QtEventLoop();
    ~QtEventLoop() override;

    quint32 timeGetTime() override;
    void Sleep(quint32 vlMilliseconds) override;
    void DoEvents() override;
    void WaitForEvents(quint32 vlDeadline) override;
    int SetTimer(quint32 vlMilliseconds, TimerCallback vCallback) override;
    bool KillTimer(int vlTimerId) override;
    QDateTime CurrentDateTime() override { return QDateTime::currentDateTime(); }

private:
    QElapsedTimer mcClock;
    QTimer* mcWakeUp;
    int mlNextTimerId = 1;
    std::map<int, QTimer*> mcTimers;
};
