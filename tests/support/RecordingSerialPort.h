#pragma once

#include "platform/IEventLoop.h"
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
        open = vbOpen && canOpen;
        if (vbOpen && !open && !openError.isEmpty())
            RaiseOnError(openError);
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
    // Nothing ever comes in: the wait lasts until the deadline on the loop, if there is one.
    bool WaitForInput(quint32 vlDeadline) override
    {
        while (loop && qint32(loop->timeGetTime() - vlDeadline) < 0)
            loop->WaitForEvents(vlDeadline);
        return false;
    }
    void Flush() override {}
    void Purge() override {}

    QString port;
    bool open = false;
    bool canOpen = true;
    // Reported on a failed open, as a real port reports one.
    QString openError;
    IEventLoop* loop = nullptr;
    QList<QByteArray> written;
};
