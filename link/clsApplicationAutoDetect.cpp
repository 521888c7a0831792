// Port discovery and display auto-detection, members of clsApplication: the
// search for the KVT USB interface's port, the port the user picks by hand,
// and the one-second probe that greets a display as it is plugged in.

#include "app/clsApplication.h"

#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "link/clsUsbPortSearch.h"
#include "platform/IMainWindow.h"
#include "platform/IUserDialogs.h"

#include <QTime>

namespace {
constexpr qint32 kDetectInterval = 1000;
// Long enough that the timer cannot fire again while a tick waits on the display.
constexpr qint32 kBusyInterval = 100000;
constexpr qint32 kReplyTimeout = 1000;
// The display's screen is 130 pixels wide and its font 6 pixels a character:
// the firmware warning's 18 characters at 11 are centred the same way.
constexpr int kScreenWidth = 130;
constexpr int kCharWidth = 6;

bool Exchange(clsHalvexMsg& rcMessage, quint8 vbyFunc, const QString& vsArguments)
{
    qint32 llTimeout = kReplyTimeout;
    return rcMessage.SendAndWait(vbyFunc, vsArguments, llTimeout);
}
}

clsFoundPort clsApplication::FindUsbComport(clsError& rcError)
{
    if (!mcPlatform.Registry)
        return {};
    return clsUsbPortSearch(*mcPlatform.Registry).Find(rcError);
}

// A number is the ini file's "Com"; a device path is kept under "Port" beside it.
void clsApplication::GetCorrectComPortFromUser()
{
    QString lsPort = Settings().PortPath().isEmpty() ? QString::number(Settings().comPort()) : Settings().PortPath();
    if (!Dialogs().SelectComPort(lsPort))
        return;
    bool lbNumber = false;
    const qint32 llNumber = lsPort.toInt(&lbNumber);
    if (lbNumber) {
        Settings().SetcomPort(llNumber);
        Settings().SetPortPath(QString());
    } else {
        Settings().SetPortPath(lsPort);
    }
    ApplyPortSettings();
}

void clsApplication::mcTimer_Tick()
{
    mcTimer->SetInterval(kBusyInterval);
    if (mbAutoDetectionEnabled)
        PerformAutoDetect();
    // The round may have ended the program (the window closed inside a wait).
    if (mcTimer)
        mcTimer->SetInterval(kDetectInterval);
}

void clsApplication::PerformAutoDetect()
{
    if (CommunicationIsRunning())
        return;
    if (mbAutoDetectionEnabled && mbMainWindowShown) {
        mbDetectionRound = true;
        GreetNewDisplay();
        mbDetectionRound = false;
        return;
    }
    if (mcUsbPort.Found || !mbInitialised)
        return;
    clsError lcError;
    const clsFoundPort lcFound = FindUsbComport(lcError);
    if (!lcFound.Found)
        return;
    UseFoundPort(lcFound);
    mcStatus.SetStatusString(QStringLiteral("KVT USB interface found on ") + lcFound.Port);
    if (mcPlatform.MainWindow)
        mcPlatform.MainWindow->EnableMenu(true);
}

// The display answers 0xD0 with bit 0 set once after it was plugged in; it is
// then put into its low-current state and greeted on its own screen.
void clsApplication::GreetNewDisplay()
{
    clsHalvexMsg& lcMessage = MessageBrooker();
    if (!Exchange(lcMessage, 0xD0, QString()) || (lcMessage.ReceiveArguments(0) & 1) == 0)
        return;
    mcStatus.SetStatusString(QStringLiteral("Display Detected (") + QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))
                             + QLatin1Char(')'));
    clsError lcError;
    MakeSureLowCurrentDisplay(lcError);
    HandleError(lcError);
    Exchange(lcMessage, 0x10, QString());
    WriteScreenLine(QStringLiteral("Connected to"), 24);
    WriteScreenLine(ApplicationName(), 32);
    Exchange(lcMessage, 0xD1, QString());
}

// Screen text: horizontal and vertical position, two fixed items, then the characters.
void clsApplication::WriteScreenLine(const QString& vsText, quint8 vbyTop)
{
    const int llLeft = qMax(0, (kScreenWidth - kCharWidth * int(vsText.size())) / 2);
    const QString lsPlace = clsHalvexMsg::ByteToHexArgument(quint8(llLeft)) + QLatin1Char(',')
                            + clsHalvexMsg::ByteToHexArgument(vbyTop) + QLatin1Char(',')
                            + clsHalvexMsg::ByteToHexArgument(0) + QLatin1Char(',')
                            + clsHalvexMsg::ByteToHexArgument(1) + QLatin1Char(',');
    Exchange(MessageBrooker(), 0x0F, lsPlace + clsHalvexMsg::StringToArgumentList(vsText));
}
