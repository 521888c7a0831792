#include "sim/clsSimSerialPort.h"

#include "platform/IEventLoop.h"
#include "platform/VirtualClock.h"
#include "sim/clsSimDisplay.h"

#include <QPointer>
#include <QTimer>

clsSimSerialPort::clsSimSerialPort(clsSimDisplay& rcDisplay, Loop vLoop, Scheduler vScheduler, qint32 vlBaudRate)
    : mrDisplay(rcDisplay)
    , mLoop(std::move(vLoop))
    , mSchedule(std::move(vScheduler))
    , mlBaudRate(vlBaudRate)
{
}

clsSimSerialPort::clsSimSerialPort(clsSimDisplay& rcDisplay, IEventLoop& rcLoop, Scheduler vScheduler,
                                   qint32 vlBaudRate)
    : clsSimSerialPort(rcDisplay, [&rcLoop]() -> IEventLoop& { return rcLoop; }, std::move(vScheduler), vlBaudRate)
{
}

clsSimSerialPort::clsSimSerialPort(clsSimDisplay& rcDisplay, VirtualClock& rcClock, qint32 vlBaudRate)
    : clsSimSerialPort(rcDisplay, rcClock, VirtualClockScheduler(rcClock), vlBaudRate)
{
}

quint64 clsSimSerialPort::NowUs() const
{
    return quint64(mLoop().timeGetTime()) * 1000;
}

clsSimSerialPort::Scheduler clsSimSerialPort::VirtualClockScheduler(VirtualClock& rcClock)
{
    return [&rcClock](quint32 vlDelayMs, std::function<void()> vAction) {
        rcClock.ScheduleIn(vlDelayMs, std::move(vAction));
    };
}

clsSimSerialPort::Scheduler clsSimSerialPort::QtTimerScheduler(QObject* vcContext)
{
    return [vcContext](quint32 vlDelayMs, std::function<void()> vAction) {
        QTimer::singleShot(int(vlDelayMs), vcContext, std::move(vAction));
    };
}

bool clsSimSerialPort::SetPortOpen(bool vbOpen)
{
    if (vbOpen && !mbConnected)
        return false;
    mbOpen = vbOpen;
    if (!vbOpen)
        mcInput.clear();
    return true;
}

quint64 clsSimSerialPort::WireTimeUs(qint64 vlBytes) const
{
    return quint64(vlBytes) * 10 * 1000000 / quint64(mlBaudRate);
}

// The display takes the request in when its last byte has arrived and
// answers at once, unless a fault delays the answer; a display busy with a
// late answer does not hear what arrives meanwhile.
bool clsSimSerialPort::Output(const QByteArray& vcData)
{
    if (!mbOpen)
        return false;
    mcWritten.append(vcData);
    if (!mbConnected)
        return true;
    mlBytesToDisplay += vcData.size();
    const quint64 llNow = NowUs();
    const quint64 llArrived = qMax(llNow, mlToDisplayFreeUs) + WireTimeUs(vcData.size());
    mlToDisplayFreeUs = llArrived;
    if (llArrived < mlDeafUntilUs) {
        mlBytesLost += vcData.size();
        return true;
    }
    for (const clsSimDisplay::Reply& lcReply : mrDisplay.Receive(vcData)) {
        const quint64 llStart = qMax(llArrived + quint64(lcReply.delayMs) * 1000, mlToHostFreeUs);
        const quint64 llDone = llStart + WireTimeUs(lcReply.bytes.size());
        mlToHostFreeUs = llDone;
        if (lcReply.late)
            mlDeafUntilUs = llStart;
        // rounded up: a reply never arrives before its last byte could have
        const quint32 llDelayMs = quint32((llDone - llNow + 999) / 1000);
        const QByteArray lcBytes = lcReply.bytes;
        mSchedule(llDelayMs, [this, lcAlive = std::weak_ptr<bool>(mcAlive), lcBytes]() {
            if (!lcAlive.expired())
                Deliver(lcBytes);
        });
    }
    return true;
}

void clsSimSerialPort::Deliver(const QByteArray& vcBytes)
{
    if (!mbOpen || !mbConnected)
        return;
    mlBytesFromDisplay += vcBytes.size();
    mcInput.append(vcBytes);
    RaiseOnComm();
}

QByteArray clsSimSerialPort::Input()
{
    QByteArray lcInput;
    lcInput.swap(mcInput);
    return lcInput;
}

bool clsSimSerialPort::WaitForInput(quint32 vlDeadline)
{
    IEventLoop& lcLoop = mLoop();
    while (mcInput.isEmpty() && qint32(lcLoop.timeGetTime() - vlDeadline) < 0)
        lcLoop.WaitForEvents(vlDeadline);
    return !mcInput.isEmpty();
}

void clsSimSerialPort::Flush()
{
    IEventLoop& lcLoop = mLoop();
    const quint32 llDone = quint32((mlToDisplayFreeUs + 999) / 1000);
    while (mbOpen && qint32(lcLoop.timeGetTime() - llDone) < 0)
        lcLoop.WaitForEvents(llDone);
}
