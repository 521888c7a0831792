#include "platform/QtSerialPort.h"

#include "platform/IEventLoop.h"

#if defined(Q_OS_WIN)
#include <windows.h>
#elif defined(Q_OS_UNIX)
#include <termios.h>
#endif

namespace {
// How long one chunk may take to reach the driver before a flush gives up: a
// stuck line must not hang the program.
constexpr int kWriteWaitMs = 2000;
}

QtSerialPort::QtSerialPort(IEventLoop& rcLoop, QObject* vcParent)
    : QObject(vcParent)
    , mrLoop(rcLoop)
{
    connect(&mcPort, &QSerialPort::readyRead, this, [this]() { RaiseOnComm(); });
    connect(&mcPort, &QSerialPort::errorOccurred, this, &QtSerialPort::mcPort_ErrorOccurred);
}

QtSerialPort::~QtSerialPort() = default;

QString QtSerialPort::DeviceName(const QString& vsPort)
{
    bool lbNumber = false;
    const int llNumber = vsPort.trimmed().toInt(&lbNumber);
    if (!lbNumber || llNumber < 1)
        return vsPort;
#ifdef Q_OS_WIN
    return QStringLiteral("COM%1").arg(llNumber);
#else
    return QStringLiteral("/dev/ttyS%1").arg(llNumber - 1);
#endif
}

void QtSerialPort::SetCommPort(const QString& vsPort)
{
    if (mcPort.isOpen())
        mcPort.close();
    msPort = vsPort;
    mbFailureReported = false;
}

bool QtSerialPort::PortOpen() const
{
    return mcPort.isOpen();
}

bool QtSerialPort::SetPortOpen(bool vbOpen)
{
    if (!vbOpen) {
        if (mcPort.isOpen())
            mcPort.close();
        return true;
    }
    if (mcPort.isOpen())
        return true;
    mcPort.setPortName(DeviceName(msPort));
    mcPort.setBaudRate(kBaudRate);
    mcPort.setDataBits(QSerialPort::Data8);
    mcPort.setParity(QSerialPort::NoParity);
    mcPort.setStopBits(QSerialPort::OneStop);
    mcPort.setFlowControl(QSerialPort::NoFlowControl);
    if (!mcPort.open(QIODevice::ReadWrite)) {
        ReportError(QStringLiteral("Unable to open serial port %1: %2").arg(DeviceName(msPort), mcPort.errorString()));
        return false;
    }
    mbFailureReported = false;
    return true;
}

bool QtSerialPort::Output(const QByteArray& vcData)
{
    if (!mcPort.isOpen())
        return false;
    return mcPort.write(vcData) == vcData.size();
}

QByteArray QtSerialPort::Input()
{
    if (!mcPort.isOpen())
        return {};
    return mcPort.readAll();
}

bool QtSerialPort::WaitForInput(quint32 vlDeadline)
{
    while (!(mcPort.isOpen() && mcPort.bytesAvailable() > 0) && qint32(mrLoop.timeGetTime() - vlDeadline) < 0)
        mrLoop.WaitForEvents(vlDeadline);
    return mcPort.isOpen() && mcPort.bytesAvailable() > 0;
}

// Qt's buffer goes to the driver first; then the driver is drained, so the
// last byte is on the wire when this returns (the bootloader times its
// answer from the end of a line).
void QtSerialPort::Flush()
{
    if (!mcPort.isOpen())
        return;
    while (mcPort.bytesToWrite() > 0 && mcPort.waitForBytesWritten(kWriteWaitMs)) {
    }
#if defined(Q_OS_WIN)
    FlushFileBuffers(mcPort.handle());
#elif defined(Q_OS_UNIX)
    tcdrain(mcPort.handle());
#endif
}

void QtSerialPort::Purge()
{
    if (mcPort.isOpen())
        mcPort.clear(QSerialPort::Input);
}

// Only a vanished device closes the port; time-outs and framing trouble are the
// protocol's business and show up as retries. An unplugged USB interface shows
// as a resource error; a pseudo-terminal whose other side closed first fails
// its reads, and would go on failing them for as long as the port stays open.
void QtSerialPort::mcPort_ErrorOccurred(QSerialPort::SerialPortError veError)
{
    if (veError != QSerialPort::ResourceError && veError != QSerialPort::ReadError)
        return;
    const QString lsText = mcPort.errorString();
    // Closing from inside the port's own signal is safe for QSerialPort, and it
    // stops the stream of further errors a dead descriptor would raise.
    if (mcPort.isOpen())
        mcPort.close();
    ReportError(QStringLiteral("Serial port %1 lost: %2").arg(DeviceName(msPort), lsText));
}

void QtSerialPort::ReportError(const QString& vsText)
{
    if (mbFailureReported)
        return;
    mbFailureReported = true;
    RaiseOnError(vsText);
}
