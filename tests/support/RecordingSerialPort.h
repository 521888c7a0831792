#pragma once

#include "platform/ISerialPort.h"

#include <QList>

// A serial port that keeps what is written to it and answers nothing.
class RecordingSerialPort : public ISerialPort
{
public:
    void SetCommPort(const QString& vsPort) override { port = vsPort; }
    QString CommPort() const override { return port; }
    bool PortOpen() const override { return open; }
    bool SetPortOpen(bool vbOpen) override
    {
        ++openCalls;
        open = vbOpen && canOpen;
        return open == vbOpen;
    }
    bool Output(const QByteArray& vcData) override
    {
        if (!open)
            return false;
        written << vcData;
        return true;
    }
    QByteArray Input() override { return QByteArray(); }

    QString port;
    bool open = false;
    bool canOpen = true;
    int openCalls = 0;
    QList<QByteArray> written;
};
