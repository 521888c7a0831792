#pragma once

#include <QDateTime>
#include <QtGlobal>
#include <functional>

// The program's only view of time and of the event loop. Every wait for the
// display is a loop on timeGetTime() with WaitForEvents() as its body, so the
// serial port's receive event runs inside the wait; tests put a virtual clock
// behind it so that a one-second time-out costs nothing.
class IEventLoop
{
public:
    using TimerCallback = std::function<void(int vlTimerId)>;

    virtual ~IEventLoop() = default;

    // Milliseconds since an arbitrary start; wraps like the 32-bit original.
    virtual quint32 timeGetTime() = 0;
    // Blocks without delivering events; what arrives meanwhile waits for the next DoEvents.
    virtual void Sleep(quint32 vlMilliseconds) = 0;
    // Delivers what is pending now and returns.
    virtual void DoEvents() = 0;
    // Blocks until at least one event was delivered or timeGetTime() reaches vlDeadline.
    virtual void WaitForEvents(quint32 vlDeadline) = 0;
    // Periodic timer; returns its id, 0 when no timer is available.
    virtual int SetTimer(quint32 vlMilliseconds, TimerCallback vCallback) = 0;
    virtual bool KillTimer(int vlTimerId) = 0;
    // The date and time of day, local time (log time stamps, error dates).
    virtual QDateTime CurrentDateTime() = 0;
};
