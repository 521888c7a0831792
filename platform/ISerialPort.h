#pragma once

#include <QByteArray>
#include <QString>
#include <functional>

// The serial line to the display, shaped like the serial-port control the
// program was designed around: open on demand, write a frame, read all that
// has arrived, and a receive event whenever characters came in.
class ISerialPort
{
public:
    virtual ~ISerialPort() = default;

    // A port number ("1" is the first port) or a device path.
    virtual void SetCommPort(const QString& vsPort) = 0;
    virtual QString CommPort() const = 0;
    virtual bool PortOpen() const = 0;
    // Opens or closes; false when the port could not be opened.
    virtual bool SetPortOpen(bool vbOpen) = 0;
    // Writes all bytes; false when the port is closed or the write failed.
    virtual bool Output(const QByteArray& vcData) = 0;
    // Everything received and not read yet.
    virtual QByteArray Input() = 0;
    // Waits, through the event loop, until unread input is there or
    // timeGetTime() reaches vlDeadline; true when input is there.
    virtual bool WaitForInput(quint32 vlDeadline) = 0;
    // Blocks until everything written has left the port.
    virtual void Flush() = 0;
    // Drops input that was received and not read.
    virtual void Purge() = 0;

    // The receive event: called whenever characters have arrived.
    void SetOnComm(std::function<void()> vHandler) { mOnComm = std::move(vHandler); }
    // Where a port reports trouble the user should find in the log (a port that vanished).
    void SetOnError(std::function<void(const QString&)> vHandler) { mOnError = std::move(vHandler); }

protected:
    void RaiseOnComm()
    {
        if (mOnComm)
            mOnComm();
    }
    void RaiseOnError(const QString& vsText)
    {
        if (mOnError)
            mOnError(vsText);
    }

private:
    std::function<void()> mOnComm;
    std::function<void(const QString&)> mOnError;
};
