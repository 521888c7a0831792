#include "app/clsDTimer.h"

#include "platform/Err.h"
#include "platform/IEventLoop.h"

#include <vector>

namespace {
constexpr long kNoTimersAvailable = long(qint32(0x80047925));

struct TimerEntry {
    clsDTimer* timer = nullptr;
    qint32 id = 0;
    qint16 flag = 0;
};

IEventLoop* gcLoop = nullptr;
std::vector<TimerEntry> gcTable;
}

clsDTimer::clsDTimer(QObject* vParent)
    : QObject(vParent)
{
}

clsDTimer::~clsDTimer()
{
    if (mlTimerId == 0)
        return;
    try {
        StopTimer(this);
    } catch (...) {
    }
}

void clsDTimer::SetEnabled(bool vbEnabled)
{
    if (vbEnabled == mbEnabled)
        return;
    mbEnabled = vbEnabled;
    if (mlInterval == 0)
        return;
    if (mbEnabled)
        mlTimerId = StartTimer(this, mlInterval);
    else
        StopTimer(this);
}

void clsDTimer::SetInterval(qint32 vlInterval)
{
    if (vlInterval == mlInterval)
        return;
    mlInterval = vlInterval;
    StopTimer(this);
    if (mlInterval != 0 && mbEnabled)
        mlTimerId = StartTimer(this, mlInterval);
}

void clsDTimer::UseEventLoop(IEventLoop* vcLoop)
{
    gcLoop = vcLoop;
}

qint32 clsDTimer::StartTimer(clsDTimer* vcTimer, qint32 vlInterval)
{
    const qint32 llId = gcLoop ? gcLoop->SetTimer(quint32(vlInterval), &clsDTimer::TimerProc) : 0;
    if (llId == 0)
        Err::Raise(kNoTimersAvailable, QStringLiteral("clsDTimer"), QStringLiteral("No timers available"));
    size_t llFree = 0;
    while (llFree < gcTable.size() && gcTable[llFree].id != 0)
        ++llFree;
    if (llFree == gcTable.size())
        gcTable.resize(gcTable.size() + 5);
    gcTable[llFree] = TimerEntry{vcTimer, llId, 0};
    return llId;
}

void clsDTimer::StopTimer(clsDTimer* vcTimer)
{
    const qint32 llId = vcTimer->mlTimerId;
    if (llId == 0)
        return;
    for (TimerEntry& lcEntry : gcTable) {
        if (lcEntry.id != llId)
            continue;
        if (gcLoop)
            gcLoop->KillTimer(llId);
        lcEntry = TimerEntry{};
        break;
    }
    vcTimer->mlTimerId = 0;
}

int clsDTimer::TimerTableSize()
{
    return int(gcTable.size());
}

void clsDTimer::TimerProc(int vlTimerId)
{
    for (const TimerEntry& lcEntry : gcTable) {
        if (lcEntry.id == vlTimerId && lcEntry.timer) {
            lcEntry.timer->RaiseTick();
            return;
        }
    }
}
