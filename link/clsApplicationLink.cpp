// The link members of clsApplication: the one message object, the serial
// port beneath it, and the reliable request with its retries.

#include "app/clsApplication.h"

#include "app/clsLogger.h"
#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "platform/ISerialPort.h"

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
    lcPort->SetOnComm([this]() { mcCom_OnComm(); });
    lcPort->SetOnError([this](const QString& vsText) { Logger().AddErrorToLog(vsText); });
    if (lcPort->CommPort() == lsPort)
        return;
    if (lcPort->PortOpen())
        lcPort->SetPortOpen(false);
    lcPort->SetCommPort(lsPort);
}

// Opens the port on first use; a port that cannot be opened or written shows
// up as time-outs, and so as the retry dialogue.
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
