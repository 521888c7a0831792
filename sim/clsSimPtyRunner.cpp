#include "sim/clsSimPtyRunner.h"

#include "sim/clsSimDisplay.h"

#include <QTimer>

clsSimPtyRunner::clsSimPtyRunner(clsSimDisplay& rcDisplay, QObject* vcParent)
    : QObject(vcParent)
    , mrDisplay(rcDisplay)
{
    mcClock.start();
    connect(&mcPty, &clsPtyTransport::Received, this, &clsSimPtyRunner::mcPty_Received);
    connect(&mcPty, &clsPtyTransport::Drained, this, [this]() {
        if (mbUnplugging && mlRepliesPending == 0)
            Unplug();
    });
    mrDisplay.SetBootloaderHook([this](const QByteArray& vcBytes) {
        BootloaderReply lcReply;
        lcReply.reply = mcBootloader.Receive(vcBytes);
        lcReply.restarted = mcBootloader.Restarted();
        if (lcReply.restarted)
            mcBootloader.Reset();
        return lcReply;
    });
}

clsSimPtyRunner::~clsSimPtyRunner()
{
    mrDisplay.SetBootloaderHook({});
}

bool clsSimPtyRunner::SetLogFile(const QString& vsPath, QString& rsError)
{
    auto lcFile = std::make_unique<QFile>(vsPath);
    if (!lcFile->open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) {
        rsError = QStringLiteral("%1: %2").arg(vsPath, lcFile->errorString());
        return false;
    }
    mcLog = std::move(lcFile);
    return true;
}

void clsSimPtyRunner::mcPty_Received(const QByteArray& vcData)
{
    if (mbUnplugging)
        return;
    const bool lbBootloader = mrDisplay.InBootloader();
    if (lbBootloader)
        Log("in ", vcData);
    else
        LogIncoming(vcData);
    // A display busy with a late answer does not hear what comes meanwhile.
    if (mcClock.elapsed() < mlDeafUntilMs)
        return;
    const int llRequestsBefore = mrDisplay.Stats().requests;
    const QList<clsSimDisplay::Reply> lcReplies = mrDisplay.Receive(vcData);
    for (const clsSimDisplay::Reply& lcReply : lcReplies) {
        if (lcReply.late)
            mlDeafUntilMs = qMax(mlDeafUntilMs, mcClock.elapsed() + qint64(lcReply.delayMs));
        if (lcReply.delayMs == 0) {
            SendReply(lcReply.bytes);
            continue;
        }
        ++mlRepliesPending;
        QTimer::singleShot(int(lcReply.delayMs), this, [this, lcBytes = lcReply.bytes]() {
            --mlRepliesPending;
            SendReply(lcBytes);
        });
    }
    if (mlUnplugAfter > 0 && llRequestsBefore < mlUnplugAfter && mrDisplay.Stats().requests >= mlUnplugAfter) {
        mbUnplugging = true;
        if (mlRepliesPending == 0 && !mcPty.Busy())
            Unplug();
    }
}

void clsSimPtyRunner::SendReply(const QByteArray& vcBytes)
{
    if (!mcPty.IsOpen())
        return;
    Log("out", vcBytes);
    mcPty.Write(vcBytes);
}

// Host frames start with 00 00 and carry their wire length in byte 4, so the
// log can cut the stream into frames; bytes outside a frame get a line of their own.
void clsSimPtyRunner::LogIncoming(const QByteArray& vcData)
{
    if (!mcLog)
        return;
    mcLogPending.append(vcData);
    for (;;) {
        const qsizetype llStart = mcLogPending.indexOf(QByteArray(2, '\0'));
        if (llStart != 0) {
            if (llStart < 0)
                return;
            Log("in ", mcLogPending.left(llStart));
            mcLogPending.remove(0, llStart);
        }
        if (mcLogPending.size() < 5)
            return;
        const int llLength = qMax(5, int(quint8(mcLogPending[4])));
        if (mcLogPending.size() < llLength)
            return;
        Log("in ", mcLogPending.left(llLength));
        mcLogPending.remove(0, llLength);
    }
}

void clsSimPtyRunner::Log(const char* vsDirection, const QByteArray& vcBytes)
{
    if (!mcLog || vcBytes.isEmpty())
        return;
    const QString lsLine = QStringLiteral("%1 %2 %3\n")
                               .arg(double(mcClock.elapsed()) / 1000.0, 10, 'f', 3)
                               .arg(QLatin1String(vsDirection), QString::fromLatin1(vcBytes.toHex(' ')));
    mcLog->write(lsLine.toLatin1());
    mcLog->flush();
}

// The last answer must reach the program before the line goes dead: a closing
// pty throws away what its other side has not read, and the kernel hands
// written bytes to the other side a moment later, so the count of unread
// bytes is only looked at after a first pause.
void clsSimPtyRunner::Unplug()
{
    if (!mcPty.IsOpen())
        return;
    if ((mlUnplugWaits == 0 || mcPty.Unread() > 0) && mlUnplugWaits < 200) {
        ++mlUnplugWaits;
        QTimer::singleShot(mlUnplugWaits == 1 ? 50 : 5, this, &clsSimPtyRunner::Unplug);
        return;
    }
    if (mcLog)
        mcLog->write("cable pulled\n");
    mcPty.Close();
    emit Unplugged();
}
