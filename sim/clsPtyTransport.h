#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>

class QSocketNotifier;
class QTimer;

// The simulated display's end of a serial line: a pseudo-terminal whose slave
// side the program opens as its serial port. Output is paced at the line's
// baud rate (ten bit times a byte), so a conversation takes as long as on a
// real cable. Closing the transport is pulling the cable: the program's port
// sees the line go dead.
class clsPtyTransport : public QObject
{
    Q_OBJECT
public:
    explicit clsPtyTransport(QObject* vcParent = nullptr);
    ~clsPtyTransport() override;

    // Opens a pty in raw mode; false with rsError set when the system has none to give.
    bool Open(QString& rsError);
    // Keeps a symbolic link at vsPath to the slave (an existing link is replaced).
    bool SetLink(const QString& vsPath, QString& rsError);
    // 0 turns pacing off.
    void SetBaudRate(qint32 vlBaud) { mlBaud = vlBaud; }

    QString SlavePath() const { return msSlavePath; }
    bool IsOpen() const { return mlMaster >= 0; }
    // Queues bytes for the program; they leave at the line's speed.
    void Write(const QByteArray& vcData);
    // True while paced output is still on its way.
    bool Busy() const { return !mcQueue.isEmpty(); }
    // Bytes on their way to the program that it has not read yet.
    int Unread() const;
    // Closes both sides and removes the link; the program's port loses its device.
    // Closing drops what the program has not read yet.
    void Close();

signals:
    void Received(const QByteArray& vcData);
    // Everything queued has been handed to the line.
    void Drained();

private:
    void ReadMaster();
    void Pump();
    void WriteNow(const QByteArray& vcData);

    int mlMaster = -1;
    // Held open by us so the line keeps its settings and survives the program closing its port.
    int mlSlave = -1;
    QString msSlavePath;
    QString msLinkPath;
    qint32 mlBaud = 57600;
    QSocketNotifier* mcReadNotifier = nullptr;
    QTimer* mcPacer = nullptr;
    QElapsedTimer mcClock;
    QByteArray mcQueue;
    qint64 mlLineFreeNs = 0; // when the last queued byte has left
    qint64 mlBurstStartNs = 0;
    qint64 mlBurstSent = 0;
};
