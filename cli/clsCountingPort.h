#pragma once

#include "platform/ISerialPort.h"

// A serial port that counts the bytes going over it both ways, for the
// progress line's bytes a second; everything else goes to the port inside.
class clsCountingPort : public ISerialPort
{
public:
    explicit clsCountingPort(ISerialPort& rcPort);

    quint64 Bytes() const { return mlBytes; }

    void SetCommPort(const QString& vsPort) override { mrPort.SetCommPort(vsPort); }
    QString CommPort() const override { return mrPort.CommPort(); }
    bool PortOpen() const override { return mrPort.PortOpen(); }
    bool SetPortOpen(bool vbOpen) override { return mrPort.SetPortOpen(vbOpen); }
    bool Output(const QByteArray& vcData) override;
    QByteArray Input() override;
    bool WaitForInput(quint32 vlDeadline) override { return mrPort.WaitForInput(vlDeadline); }
    void Flush() override { mrPort.Flush(); }
    void Purge() override { mrPort.Purge(); }

private:
    ISerialPort& mrPort;
    quint64 mlBytes = 0;
};
