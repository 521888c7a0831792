#pragma once

#include "platform/IEventLoop.h"

#include <map>
#include <utility>

// Event loop for tests: time only moves when the program waits. WaitForEvents
// jumps straight to the next scheduled event (a simulated reply, a timer) or to
// the deadline, so retries and time-outs run in microseconds of real time.
class VirtualClock : public IEventLoop
{
public:
    quint32 timeGetTime() override { return mlNow; }
    void Sleep(quint32 vlMilliseconds) override;
    void DoEvents() override;
    void WaitForEvents(quint32 vlDeadline) override;
    int SetTimer(quint32 vlMilliseconds, TimerCallback vCallback) override;
    bool KillTimer(int vlTimerId) override;
    // Moves with the virtual milliseconds from the date set last (1 January 2024, midnight, at first).
    QDateTime CurrentDateTime() override { return mcDate.addMSecs(qint64(quint32(mlNow - mlDateSetAt))); }
    void SetDateTime(const QDateTime& vcDate)
    {
        mcDate = vcDate;
        mlDateSetAt = mlNow;
    }

    // Runs vAction once when the clock reaches vlAt (or at once on the next wait if already past).
    void ScheduleAt(quint32 vlAt, std::function<void()> vAction);
    void ScheduleIn(quint32 vlDelay, std::function<void()> vAction) { ScheduleAt(mlNow + vlDelay, std::move(vAction)); }
    // Advances the clock by vlMilliseconds, delivering everything due on the way.
    void Advance(quint32 vlMilliseconds);
    // Makes SetTimer fail after vlCount more timers, as a platform out of timers does.
    void LimitTimers(int vlCount) { mlTimersLeft = vlCount; }
    int ActiveTimerCount() const { return int(mcTimers.size()); }
    qint64 PendingEventCount() const { return qint64(mcEvents.size()); }

private:
    struct Timer { quint32 interval; quint32 due; TimerCallback callback; };

    bool DeliverNextDue(quint32 vlLimit);
    bool NextDue(quint32& rlDue) const;

    quint32 mlNow = 0;
    QDateTime mcDate{QDate(2024, 1, 1), QTime(0, 0)};
    quint32 mlDateSetAt = 0;
    quint64 mlSequence = 0;
    int mlNextTimerId = 1;
    int mlTimersLeft = -1;
    std::multimap<std::pair<quint32, quint64>, std::function<void()>> mcEvents;
    std::map<int, Timer> mcTimers;
};
