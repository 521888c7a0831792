#pragma once

#include "platform/ISerialPort.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <memory>

class IEventLoop;
class QObject;
class VirtualClock;
class clsSimDisplay;

// The serial line to a simulated display, in process. What the host writes
// reaches the display after its time on the wire; the display's answer
// reaches the host after its own time on the wire, each byte taking 10 bits
// at the baud rate, one byte after another in each direction. Time and waits
// come from the program's event loop, the display's answers from a
// scheduler: the virtual clock for tests, Qt's timers for a simulated
// display in real time.
class clsSimSerialPort : public ISerialPort
{
public:
    // The program's event loop, looked up when needed (a test rig makes its clock after the port).
    using Loop = std::function<IEventLoop&()>;
    // Runs the action after the delay.
    using Scheduler = std::function<void(quint32 vlDelayMs, std::function<void()> vAction)>;

    clsSimSerialPort(clsSimDisplay& rcDisplay, Loop vLoop, Scheduler vScheduler, qint32 vlBaudRate = 57600);
    clsSimSerialPort(clsSimDisplay& rcDisplay, IEventLoop& rcLoop, Scheduler vScheduler, qint32 vlBaudRate = 57600);
    // On the virtual clock.
    clsSimSerialPort(clsSimDisplay& rcDisplay, VirtualClock& rcClock, qint32 vlBaudRate = 57600);

    static Scheduler VirtualClockScheduler(VirtualClock& rcClock);
    // Single-shot QTimers in vcContext's thread; the actions die with vcContext.
    static Scheduler QtTimerScheduler(QObject* vcContext);

    void SetCommPort(const QString& vsPort) override { msPort = vsPort; }
    QString CommPort() const override { return msPort; }
    bool PortOpen() const override { return mbOpen; }
    bool SetPortOpen(bool vbOpen) override;
    bool Output(const QByteArray& vcData) override;
    QByteArray Input() override;
    bool WaitForInput(quint32 vlDeadline) override;
    // Returns when the last byte written has reached the display.
    void Flush() override;
    void Purge() override { mcInput.clear(); }

    // A pulled cable: nothing reaches the display or comes back; opening fails while it is out.
    void SetCableConnected(bool vbConnected) { mbConnected = vbConnected; }
    bool CableConnected() const { return mbConnected; }
    // Every chunk the host wrote, in order.
    const QList<QByteArray>& Written() const { return mcWritten; }
    void ClearWritten() { mcWritten.clear(); }
    qint64 BytesToDisplay() const { return mlBytesToDisplay; }
    qint64 BytesFromDisplay() const { return mlBytesFromDisplay; }
    // Lost because the display was busy with a late answer.
    qint64 BytesLost() const { return mlBytesLost; }
    // The time the line needs for vlBytes bytes, in microseconds.
    quint64 WireTimeUs(qint64 vlBytes) const;

private:
    quint64 NowUs() const;
    void Deliver(const QByteArray& vcBytes);

    clsSimDisplay& mrDisplay;
    // Answers still on the line when the port goes are dropped, not delivered to it.
    std::shared_ptr<bool> mcAlive = std::make_shared<bool>(true);
    Loop mLoop;
    Scheduler mSchedule;
    qint32 mlBaudRate;
    QString msPort;
    bool mbOpen = false;
    bool mbConnected = true;
    QByteArray mcInput;
    QList<QByteArray> mcWritten;
    // When each direction of the line is free again, and until when the
    // display is deaf, in microseconds of the clock.
    quint64 mlToDisplayFreeUs = 0;
    quint64 mlToHostFreeUs = 0;
    quint64 mlDeafUntilUs = 0;
    qint64 mlBytesToDisplay = 0;
    qint64 mlBytesFromDisplay = 0;
    qint64 mlBytesLost = 0;
};
