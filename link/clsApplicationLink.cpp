// The link members of clsApplication: the one message object, the serial
// port beneath it, and the reliable request with its retries.

#include "app/clsApplication.h"

#include "app/clsLogger.h"
#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/ISerialPort.h"
#include "platform/IEventLoop.h"
#include "platform/IUserDialogs.h"

clsHalvexMsg& clsApplication::MessageBrooker()
{
    if (!mcMessage) {
        mcMessage = std::make_unique<clsHalvexMsg>(
            mcPlatform.EventLoop, [this](const QByteArray& vcData) { return SendString(vcData); });
    }
    return *mcMessage;
}

void clsApplication::ApplyPortSettings()
{
    ISerialPort* lcPort = mcPlatform.Port;
    if (!lcPort || !mcSettings)
        return;
    const QString lsPort = mcSettings->PortPath().isEmpty() ? QString::number(mcSettings->comPort())
                                                            : mcSettings->PortPath();
    if (lcPort->CommPort() == lsPort)
        return;
    if (lcPort->PortOpen())
        lcPort->SetPortOpen(false);
    lcPort->SetCommPort(lsPort);
}

// The port's events come from Qt signals: nothing may be thrown back into
// them, so a failure (a log that cannot be written) stays pending for the
// operation that runs, which reports it.
void clsApplication::AttachCodec()
{
    ISerialPort* lcPort = mcPlatform.Port;
    if (!lcPort)
        return;
    lcPort->SetOnComm([this]() { Err::Trap([this]() { mcCom_OnComm(); }); });
    lcPort->SetOnError([this](const QString& vsText) {
        Err::Trap([&]() { Logger().AddErrorToLog(vsText); });
        emit PortTrouble(vsText);
    });
}

// Received bytes stay in the port for whoever reads it now; port trouble is still logged.
void clsApplication::DetachCodec()
{
    if (mcPlatform.Port)
        mcPlatform.Port->SetOnComm({});
}

// The port found replaces the one of the settings for this run; the settings keep theirs.
void clsApplication::RunPortDiscovery()
{
    if (!mPortDiscovery)
        return;
    clsError lcError;
    Err::Trap([&]() { UseFoundPort(mPortDiscovery(lcError)); });
    HandleError(lcError);
}

void clsApplication::UseFoundPort(const clsFoundPort& vcFound)
{
    mcUsbPort = vcFound;
    ISerialPort* lcPort = mcPlatform.Port;
    if (mcUsbPort.Found && !mcUsbPort.Port.isEmpty() && lcPort) {
        if (lcPort->PortOpen())
            lcPort->SetPortOpen(false);
        lcPort->SetCommPort(mcUsbPort.Port);
    }
}

void clsApplication::StartAutoDetection()
{
    if (mcTimer)
        mcTimer->SetEnabled(true);
}

void clsApplication::StopAutoDetection()
{
    if (mcTimer)
        mcTimer->SetEnabled(false);
}

bool clsApplication::AutoDetectionRunning() const
{
    return mcTimer && mcTimer->Enabled();
}

// Opens the port on first use; a port that cannot be opened or written shows
// up as time-outs, and so as the retry dialogue. The codec calls this from
// wherever a frame goes out, Qt's signals among them: it never throws, since
// the port's error handler keeps a failure to log its trouble pending for the
// running operation's error value (AttachCodec).
bool clsApplication::SendString(const QByteArray& vcData)
{
    ISerialPort* lcPort = mcPlatform.Port;
    if (!lcPort)
        return false;
    if (!lcPort->PortOpen())
        lcPort->SetPortOpen(true);
    if (mbCommunicationStopped)
        return false;
    return lcPort->Output(vcData);
}

void clsApplication::mcCom_OnComm()
{
    if (!mcPlatform.Port)
        return;
    const QByteArray lcInput = mcPlatform.Port->Input();
    if (!lcInput.isEmpty())
        MessageBrooker().ProcesReceivedString(lcInput);
}

void clsApplication::SendAndRetry(clsError& rcError, quint8 vbyFunc, const QString& vsArguments)
{
    SendAndRetry(rcError, vbyFunc, vsArguments, {});
}

// Six attempts of a second each, then the user decides. An answer to the
// sixth attempt is not looked at: the box comes all the same. After a
// reconnection the display must still be the one we started with.
void clsApplication::SendAndRetry(clsError& rcError, quint8 vbyFunc, const QString& vsArguments,
                                  const std::function<bool(const clsHalvexMsg&)>& vAnswerIsWhole)
{
    constexpr int kMaxRetries = 5;
    bool lbAgain = true;
    while (lbAgain && !mbCommunicationStopped) {
        int llRetries = 0;
        for (;;) {
            const bool lbOk = AnswerAccepted(vbyFunc, vsArguments, vAnswerIsWhole);
            if (lbOk || llRetries == kMaxRetries)
                break;
            ++llRetries;
            mcStatus.SetSmallStatusString(QStringLiteral("Retry ") + QString::number(llRetries));
        }
        if (llRetries < kMaxRetries) {
            // A display that answered late may still answer the attempts after
            // the first: give those answers time to arrive before the next
            // request, so that none is taken for that request's answer.
            mbSettle = llRetries > 0;
            mlSettleUntil = EventLoop().timeGetTime() + kSettleMs;
            lbAgain = false;
            continue;
        }
        const MsgResult lcAnswer = Dialogs().MsgBox(
            QStringLiteral("Unable to communicate with display\r\nplease check the cables\r\n"
                           "Press ok to continue and cancel to stop"),
            MsgButtons::OKCancel, MsgIcon::None, ApplicationName());
        if (lcAnswer == MsgResult::Cancel) {
            lbAgain = false;
            rcError.SetError(ErrorCode::CancelledByUser);
            continue;
        }
        const QString lsId = GetDallesID(rcError);
        if (lsId == msDisplayId || lsId.isEmpty())
            continue;
        const QString lsText = QStringLiteral("Different display detected, aborting");
        mcStatus.SetStatusString(lsText);
        Dialogs().MsgBox(lsText, MsgButtons::OK, MsgIcon::None, ApplicationName());
        rcError.SetError(ErrorCode::DifferentDisplay);
        lbAgain = false;
    }
    mcStatus.SetSmallStatusString(QString());
}

// One attempt. An answer with a wrong checksum, or one that its request
// finds incomplete, is as good as none: a garbled reply must never reach a
// page file.
bool clsApplication::AnswerAccepted(quint8 vbyFunc, const QString& vsArguments,
                                    const std::function<bool(const clsHalvexMsg&)>& vAnswerIsWhole)
{
    clsHalvexMsg& lcMessage = MessageBrooker();
    while (mbSettle && qint32(EventLoop().timeGetTime() - mlSettleUntil) < 0)
        EventLoop().WaitForEvents(mlSettleUntil);
    mbSettle = false;
    qint32 llTimeout = 1000;
    if (!lcMessage.SendAndWait(vbyFunc, vsArguments, llTimeout))
        return false;
    QString lsFault;
    if (!lcMessage.ReceiveCSOK())
        lsFault = QStringLiteral(" has a wrong checksum");
    else if (vAnswerIsWhole && !vAnswerIsWhole(lcMessage))
        lsFault = QStringLiteral(" is incomplete");
    if (lsFault.isEmpty())
        return true;
    if (mcLogger)
        mcLogger->AddWarningToLog(QStringLiteral("Answer to function ") + clsHalvexMsg::ByteToHexArgument(vbyFunc) +
                                  lsFault);
    return false;
}

QString clsApplication::GetDallesID(clsError& rcError)
{
    mcStatus.SetStatusString(QStringLiteral("Getting ID from display"));
    if (mbCommunicationStopped) {
        rcError.SetError(ErrorCode::CommunicationError);
        return QString();
    }
    mbIDRequested = true;
    SendAndRetry(rcError, 0xCE, QString());
    if (rcError.IsError()) {
        const QString lsText = QStringLiteral("Unable to get ID from display");
        mcStatus.SetStatusString(lsText);
        if (mcLogger)
            mcLogger->AddErrorToLog(lsText);
        return QString();
    }
    // Eight numbers, each followed by a point, the last one too.
    QString lsId;
    for (int i = 0; i < 8; ++i)
        lsId += QString::number(MessageBrooker().ReceiveArguments(i)) + QLatin1Char('.');
    mcStatus.SetStatusString(QStringLiteral("Received ID from display"));
    return lsId;
}

// The display leaves its low-current state only through these two requests, in this order.
void clsApplication::MakeSureLowCurrentDisplay(clsError& rcError)
{
    const QString lsZero = clsHalvexMsg::ByteToHexArgument(0);
    SendAndRetry(rcError, 0x0B, lsZero + QLatin1Char(',') + lsZero);
    if (rcError.IsError())
        return;
    SendAndRetry(rcError, 0x0B, clsHalvexMsg::ByteToHexArgument(1) + QLatin1Char(',') + lsZero);
}
