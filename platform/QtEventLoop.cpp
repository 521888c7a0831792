#include "platform/QtEventLoop.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

QtEventLoop::QtEventLoop()
    : mcWakeUp(new QTimer(this))
{
    mcClock.start();
    mcWakeUp->setSingleShot(true);
}

QtEventLoop::~QtEventLoop() = default;

quint32 QtEventLoop::timeGetTime()
{
    return quint32(mcClock.elapsed());
}

void QtEventLoop::Sleep(quint32 vlMilliseconds)
{
    QThread::msleep(vlMilliseconds);
}

void QtEventLoop::DoEvents()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

void QtEventLoop::WaitForEvents(quint32 vlDeadline)
{
    const qint32 llLeft = qint32(vlDeadline - timeGetTime());
    if (llLeft <= 0) {
        DoEvents();
        return;
    }
    // The wake-up timer is itself an event, so the blocking call returns at the deadline at the latest.
    mcWakeUp->start(llLeft);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    mcWakeUp->stop();
}

int QtEventLoop::SetTimer(quint32 vlMilliseconds, TimerCallback vCallback)
{
    const int llId = mlNextTimerId++;
    auto* lcTimer = new QTimer(this);
    lcTimer->setInterval(int(vlMilliseconds));
    connect(lcTimer, &QTimer::timeout, this, [llId, vCallback]() { vCallback(llId); });
    lcTimer->start();
    mcTimers[llId] = lcTimer;
    return llId;
}

bool QtEventLoop::KillTimer(int vlTimerId)
{
    auto lcIt = mcTimers.find(vlTimerId);
    if (lcIt == mcTimers.end())
        return false;
    lcIt->second->stop();
    lcIt->second->deleteLater();
    mcTimers.erase(lcIt);
    return true;
}
