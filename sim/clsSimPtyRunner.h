#pragma once

#include "sim/clsPtyTransport.h"
#include "sim/clsSimBootloader.h"

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <memory>

class clsSimDisplay;

// A simulated display on a pseudo-terminal: bytes from the program go to the
// device model, its answers go back at the line's pace after the delay the
// display adds, and after 0xD9 the bootloader takes the raw stream. Can log
// every frame and pull the cable after a number of requests.
class clsSimPtyRunner : public QObject
{
    Q_OBJECT
public:
    explicit clsSimPtyRunner(clsSimDisplay& rcDisplay, QObject* vcParent = nullptr);
    ~clsSimPtyRunner() override;

    clsPtyTransport& Transport() { return mcPty; }
    clsSimBootloader& Bootloader() { return mcBootloader; }
    // One line per frame in and out, hex, with the time since start.
    bool SetLogFile(const QString& vsPath, QString& rsError);
    // Pulls the cable once the answer to request vlRequests has left (0: never).
    void SetUnplugAfter(int vlRequests) { mlUnplugAfter = vlRequests; }

signals:
    // The cable was pulled: the pty is closed.
    void Unplugged();

private:
    void mcPty_Received(const QByteArray& vcData);
    void SendReply(const QByteArray& vcBytes);
    void LogIncoming(const QByteArray& vcData);
    void Log(const char* vsDirection, const QByteArray& vcBytes);
    void Unplug();

    clsSimDisplay& mrDisplay;
    clsPtyTransport mcPty;
    clsSimBootloader mcBootloader;
    QElapsedTimer mcClock;
    std::unique_ptr<QFile> mcLog;
    QByteArray mcLogPending; // incoming bytes not yet a whole frame for the log
    qint64 mlDeafUntilMs = 0;
    int mlUnplugAfter = 0;
    int mlRepliesPending = 0;
    int mlUnplugWaits = 0;
    bool mbUnplugging = false;
};
