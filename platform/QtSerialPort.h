#pragma once

#include "platform/ISerialPort.h"

#include <QObject>
#include <QSerialPort>
#include <functional>

class IEventLoop;

// The display's serial line on a real port: 57600 bit/s, 8 data bits, no
// parity, 1 stop bit. The port is given by number (1 is the first port) or by
// device path and is opened on demand. A port that goes away under us (the
// USB interface unplugged) is closed and reported once; the next open tries
// again, so the user can plug the cable back in and carry on.
class QtSerialPort : public QObject, public ISerialPort
{
public:
    static constexpr qint32 kBaudRate = 57600;

    // Waits for input through rcLoop, so the window stays alive meanwhile.
    explicit QtSerialPort(IEventLoop& rcLoop, QObject* vcParent = nullptr);
    ~QtSerialPort() override;

    void SetCommPort(const QString& vsPort) override;
    QString CommPort() const override { return msPort; }
    bool PortOpen() const override;
    bool SetPortOpen(bool vbOpen) override;
    bool Output(const QByteArray& vcData) override;
    QByteArray Input() override;
    bool WaitForInput(quint32 vlDeadline) override;
    void Flush() override;
    void Purge() override;

    // The device a port setting stands for: a number n is COMn on Windows and
    // /dev/ttyS<n-1> elsewhere; anything else is taken as a device name or path.
    static QString DeviceName(const QString& vsPort);

private:
    void mcPort_ErrorOccurred(QSerialPort::SerialPortError veError);
    void ReportError(const QString& vsText);

    IEventLoop& mrLoop;
    QSerialPort mcPort;
    QString msPort;
    // One report per failure: set after a report, cleared by a successful open.
    bool mbFailureReported = false;
};
