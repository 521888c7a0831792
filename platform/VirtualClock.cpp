#include "platform/VirtualClock.h"

void VirtualClock::Sleep(quint32 vlMilliseconds)
{
    mlNow += vlMilliseconds;
}

void VirtualClock::DoEvents()
{
    while (DeliverNextDue(mlNow)) {
    }
}

void VirtualClock::WaitForEvents(quint32 vlDeadline)
{
    if (DeliverNextDue(mlNow))
        return;
    quint32 llDue = 0;
    const qint32 llWait = qint32(vlDeadline - mlNow);
    if (NextDue(llDue) && qint32(llDue - mlNow) <= llWait) {
        mlNow = llDue;
        DeliverNextDue(mlNow);
        return;
    }
    if (llWait > 0)
        mlNow = vlDeadline;
}

int VirtualClock::SetTimer(quint32 vlMilliseconds, TimerCallback vCallback)
{
    if (mlTimersLeft == 0)
        return 0;
    if (mlTimersLeft > 0)
        --mlTimersLeft;
    const int llId = mlNextTimerId++;
    mcTimers[llId] = Timer{vlMilliseconds, mlNow + vlMilliseconds, std::move(vCallback)};
    return llId;
}

bool VirtualClock::KillTimer(int vlTimerId)
{
    return mcTimers.erase(vlTimerId) > 0;
}

void VirtualClock::ScheduleAt(quint32 vlAt, std::function<void()> vAction)
{
    mcEvents.emplace(std::make_pair(vlAt, mlSequence++), std::move(vAction));
}

void VirtualClock::Advance(quint32 vlMilliseconds)
{
    const quint32 llEnd = mlNow + vlMilliseconds;
    quint32 llDue = 0;
    while (NextDue(llDue) && qint32(llDue - llEnd) <= 0) {
        if (qint32(llDue - mlNow) > 0)
            mlNow = llDue;
        DeliverNextDue(mlNow);
    }
    mlNow = llEnd;
}

bool VirtualClock::NextDue(quint32& rlDue) const
{
    bool lbFound = false;
    if (!mcEvents.empty()) {
        rlDue = mcEvents.begin()->first.first;
        lbFound = true;
    }
    for (const auto& [id, timer] : mcTimers) {
        if (!lbFound || qint32(timer.due - rlDue) < 0) {
            rlDue = timer.due;
            lbFound = true;
        }
    }
    return lbFound;
}

// Delivers the earliest event or timer tick that is due at vlLimit; false when none is.
bool VirtualClock::DeliverNextDue(quint32 vlLimit)
{
    int llTimerId = 0;
    quint32 llTimerDue = 0;
    for (const auto& [id, timer] : mcTimers) {
        if (qint32(timer.due - vlLimit) <= 0 && (llTimerId == 0 || qint32(timer.due - llTimerDue) < 0)) {
            llTimerId = id;
            llTimerDue = timer.due;
        }
    }
    const bool lbEventDue = !mcEvents.empty() && qint32(mcEvents.begin()->first.first - vlLimit) <= 0;
    if (lbEventDue && (llTimerId == 0 || qint32(mcEvents.begin()->first.first - llTimerDue) <= 0)) {
        auto lcAction = std::move(mcEvents.begin()->second);
        mcEvents.erase(mcEvents.begin());
        lcAction();
        return true;
    }
    if (llTimerId == 0)
        return false;
    Timer& lcTimer = mcTimers[llTimerId];
    lcTimer.due += lcTimer.interval ? lcTimer.interval : 1;
    TimerCallback lcCallback = lcTimer.callback;
    lcCallback(llTimerId);
    return true;
}
