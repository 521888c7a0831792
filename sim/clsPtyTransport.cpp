#include "sim/clsPtyTransport.h"

#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

clsPtyTransport::clsPtyTransport(QObject* vcParent)
    : QObject(vcParent)
    , mcPacer(new QTimer(this))
{
    mcClock.start();
    mcPacer->setInterval(1);
    connect(mcPacer, &QTimer::timeout, this, &clsPtyTransport::Pump);
}

clsPtyTransport::~clsPtyTransport()
{
    Close();
}

bool clsPtyTransport::Open(QString& rsError)
{
    char lsName[256] = {};
    if (openpty(&mlMaster, &mlSlave, lsName, nullptr, nullptr) != 0) {
        rsError = QStringLiteral("openpty: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
        mlMaster = mlSlave = -1;
        return false;
    }
    // Raw: no echo, no line editing, no CR/LF translation; the frames are binary.
    termios lcTerm{};
    tcgetattr(mlSlave, &lcTerm);
    cfmakeraw(&lcTerm);
    cfsetispeed(&lcTerm, B57600);
    cfsetospeed(&lcTerm, B57600);
    tcsetattr(mlSlave, TCSANOW, &lcTerm);
    fcntl(mlMaster, F_SETFL, fcntl(mlMaster, F_GETFL) | O_NONBLOCK);
    msSlavePath = QString::fromLocal8Bit(lsName);
    mcReadNotifier = new QSocketNotifier(qintptr(mlMaster), QSocketNotifier::Read, this);
    connect(mcReadNotifier, &QSocketNotifier::activated, this, &clsPtyTransport::ReadMaster);
    return true;
}

bool clsPtyTransport::SetLink(const QString& vsPath, QString& rsError)
{
    QFile::remove(vsPath);
    if (!QFile::link(msSlavePath, vsPath)) {
        rsError = QStringLiteral("%1: cannot make a link to %2").arg(vsPath, msSlavePath);
        return false;
    }
    msLinkPath = vsPath;
    return true;
}

int clsPtyTransport::Unread() const
{
    int llCount = 0;
    if (mlSlave < 0 || ioctl(mlSlave, FIONREAD, &llCount) != 0)
        return 0;
    return llCount;
}

void clsPtyTransport::Close()
{
    mcPacer->stop();
    mcQueue.clear();
    delete mcReadNotifier;
    mcReadNotifier = nullptr;
    if (!msLinkPath.isEmpty())
        QFile::remove(msLinkPath);
    msLinkPath.clear();
    if (mlSlave >= 0)
        ::close(mlSlave);
    if (mlMaster >= 0)
        ::close(mlMaster);
    mlSlave = mlMaster = -1;
}

void clsPtyTransport::ReadMaster()
{
    char lcBuffer[4096];
    QByteArray lcData;
    for (;;) {
        const ssize_t llRead = ::read(mlMaster, lcBuffer, sizeof lcBuffer);
        if (llRead <= 0)
            break;
        lcData.append(lcBuffer, int(llRead));
    }
    if (!lcData.isEmpty())
        emit Received(lcData);
}

void clsPtyTransport::Write(const QByteArray& vcData)
{
    if (mlMaster < 0 || vcData.isEmpty())
        return;
    if (mlBaud <= 0) {
        WriteNow(vcData);
        emit Drained();
        return;
    }
    if (mcQueue.isEmpty()) {
        mlBurstStartNs = qMax(mcClock.nsecsElapsed(), mlLineFreeNs);
        mlBurstSent = 0;
    }
    mcQueue.append(vcData);
    Pump();
    if (!mcQueue.isEmpty())
        mcPacer->start();
}

// Hands the line the bytes whose ten bit times have passed since the burst began.
void clsPtyTransport::Pump()
{
    const qint64 llElapsed = mcClock.nsecsElapsed() - mlBurstStartNs;
    const qint64 llDue = llElapsed < 0 ? 0 : llElapsed * mlBaud / 10 / 1000000000 + 1 - mlBurstSent;
    if (llDue > 0 && !mcQueue.isEmpty()) {
        const QByteArray lcSlice = mcQueue.left(int(qMin<qint64>(llDue, mcQueue.size())));
        mcQueue.remove(0, lcSlice.size());
        mlBurstSent += lcSlice.size();
        WriteNow(lcSlice);
    }
    mlLineFreeNs = mlBurstStartNs + mlBurstSent * 10 * 1000000000 / mlBaud;
    if (mcQueue.isEmpty()) {
        mcPacer->stop();
        emit Drained();
    }
}

void clsPtyTransport::WriteNow(const QByteArray& vcData)
{
    qsizetype llDone = 0;
    while (llDone < vcData.size() && mlMaster >= 0) {
        const ssize_t llWritten = ::write(mlMaster, vcData.constData() + llDone, size_t(vcData.size() - llDone));
        if (llWritten > 0) {
            llDone += llWritten;
            continue;
        }
        // The program is not reading and the pty's buffer is full: what a real line would lose.
        if (llWritten < 0 && errno != EINTR)
            return;
    }
}
