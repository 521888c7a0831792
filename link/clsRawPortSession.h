#pragma once

#include <QByteArray>

class clsApplication;
class ISerialPort;

// The serial port without the frame codec, for a dialogue that is not framed
// (the display's bootloader reads hex lines and answers in plain text). While
// the session lives the codec does not see what the port receives; when it
// ends the codec is attached again, on every way out.
class clsRawPortSession
{
public:
    explicit clsRawPortSession(clsApplication& rcApp);
    ~clsRawPortSession();
    clsRawPortSession(const clsRawPortSession&) = delete;
    clsRawPortSession& operator=(const clsRawPortSession&) = delete;

    // Opens the port when it is closed; false when it cannot be written.
    bool Output(const QByteArray& vcData);
    QByteArray Input();
    bool WaitForInput(quint32 vlDeadline);
    void Flush();
    void Purge();

private:
    clsApplication& mrApp;
    ISerialPort* mcPort;
};
