#include "app/clsApplication.h"

#include "app/clsLogger.h"
#include "app/clsSettings.h"
#include "data/clsGpsPlaces.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/IEventLoop.h"
#include "platform/IMainWindow.h"
#include "platform/IUserDialogs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {
clsApplication* gcApplication = nullptr;
constexpr int kStatusWidth = 90;
}

clsApplication::clsApplication(const clsPlatform& vcPlatform)
    : mcPlatform(vcPlatform)
    , mcRecords(std::make_unique<clsRecordCollection>())
{
    gcApplication = this;
    clsDTimer::UseEventLoop(mcPlatform.EventLoop);
    clsError::UseEventLoop(mcPlatform.EventLoop);
    connect(&mcStatus, &clsStatus::StatusChanged, this, &clsApplication::mcStatus_StatusChanged);
}

clsApplication::~clsApplication()
{
    mcTimer.reset();
    mcDelayedQuite.reset();
    clsHalvexRecord::UsePlaces(nullptr);
    if (gcApplication == this) {
        gcApplication = nullptr;
        clsError::UseEventLoop(nullptr);
    }
}

clsApplication* clsApplication::Instance()
{
    return gcApplication;
}

void clsApplication::Init()
{
    mcSettings = std::make_unique<clsSettings>(StdDirectory());
    mcSettings->Init();
    StartLogging();
    MessageBrooker().SetDeviceAddress(102);
    MessageBrooker().SetHostAddress(1);
    mcRecords->Clear();
    CreateGpsPlaces();
    ApplyPortSettings();
    AttachCodec();
    RunPortDiscovery();
    mcTimer = std::make_unique<clsDTimer>();
    connect(mcTimer.get(), &clsDTimer::Tick, this, &clsApplication::mcTimer_Tick);
    mcTimer->SetInterval(1000);
    mcTimer->SetEnabled(true);
    mbCommunicationStopped = false;
    mbAutoDetectionEnabled = true;
    mbInitialised = true;
}

// A log that cannot be written does not stop the program: it runs without
// one, and the status line says so.
void clsApplication::StartLogging()
{
    mcLogger = std::make_unique<clsLogger>(StdDirectory(), mcPlatform.Dialogs, *mcPlatform.EventLoop,
                                           ApplicationName(), VersionString());
    clsError lcError;
    if (Err::Trap([this]() { mcLogger->Init(); }) || !lcError.IsError())
        return;
    mcLogger->SwitchOff();
    // The description names the log file already.
    lcError.SetDescription(QStringLiteral("Unable to write the log file (") + lcError.Description() +
                           QStringLiteral("), going on without a log"));
    HandleError(lcError);
}

void clsApplication::Start(const std::function<void()>& vShowMainWindow)
{
    mbMainWindowShown = true;
    if (vShowMainWindow)
        vShowMainWindow();
    mbMainWindowShown = false;
    if (mbInitialised)
        DeInit();
}

void clsApplication::DeInit()
{
    if (!mbInitialised)
        return;
    mbInitialised = false;
    // Nothing in shut-down reports errors, and none may stop the settings from being saved.
    if (mcMessage)
        Err::Trap([this]() { mcMessage->Send(0x10, QString()); });
    if (mcPlatform.MainWindow)
        mcPlatform.MainWindow->GiveUpWork();
    Err::Trap([this]() { mcPlatform.EventLoop->DoEvents(); });
    if (mcTimer)
        mcTimer->SetEnabled(false);
    // Write failures of the settings are ignored, but the user hears once
    // that they will be lost, while the log still takes lines.
    const QString lsSaveProblem = mcSettings->SaveProblem();
    if (!lsSaveProblem.isEmpty()) {
        Err::Trap([&]() { mcLogger->AddErrorToLog(lsSaveProblem); });
        if (mcPlatform.Dialogs)
            mcPlatform.Dialogs->MsgBox(lsSaveProblem, MsgButtons::OK, MsgIcon::Exclamation, ApplicationName());
    }
    Err::Trap([this]() { mcLogger->DeInit(); });
    mcSettings->DeInit();
    Err::Clear();
    if (mcMessage)
        mcMessage->StopComSending();
    mcTimer.reset();
    mcGpsPlaces.reset();
    clsHalvexRecord::UsePlaces(nullptr);
}

void clsApplication::Quite()
{
    DeInit();
}

void clsApplication::DelayedQuite()
{
    if (!mcDelayedQuite) {
        mcDelayedQuite = std::make_unique<clsDTimer>();
        connect(mcDelayedQuite.get(), &clsDTimer::Tick, this, &clsApplication::mcDelayedQuite_Tick);
    }
    mcDelayedQuite->SetInterval(200);
    mcDelayedQuite->SetEnabled(true);
}

void clsApplication::mcDelayedQuite_Tick()
{
    mcDelayedQuite->SetEnabled(false);
    Quite();
}

QString clsApplication::VersionString()
{
    return QStringLiteral("%1.%2.%3")
        .arg(CORVANE_VERSION_MAJOR)
        .arg(CORVANE_VERSION_MINOR)
        .arg(CORVANE_VERSION_REVISION);
}

// --home, then CORVANE_HOME, then the program's own directory when it is
// writable (a portable install), else the per-user data directory. Worked
// out and created once: every page file name asks for it.
QString clsApplication::StdDirectory() const
{
    if (!msStdDirectory.isEmpty())
        return msStdDirectory;
    QString lsDirectory = mcPlatform.HomeDir;
    if (lsDirectory.isEmpty())
        lsDirectory = qEnvironmentVariable("CORVANE_HOME");
    if (lsDirectory.isEmpty() && QCoreApplication::instance()) {
        const QString lsProgram = QCoreApplication::applicationDirPath();
        if (QFileInfo(lsProgram).isWritable())
            lsDirectory = lsProgram;
    }
    if (lsDirectory.isEmpty())
        lsDirectory = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    QDir().mkpath(lsDirectory);
    lsDirectory = QDir::toNativeSeparators(QDir::cleanPath(lsDirectory));
    if (!lsDirectory.endsWith(QDir::separator()))
        lsDirectory += QDir::separator();
    msStdDirectory = lsDirectory;
    return msStdDirectory;
}

// Up to and including the last separator; empty when there is none. Both
// separators count, so a path written on Windows works here too.
QString clsApplication::GetDirectoryFromPath(const QString& vsPath)
{
    const int llLast = qMax(vsPath.lastIndexOf(QLatin1Char('\\')), vsPath.lastIndexOf(QLatin1Char('/')));
    return llLast < 0 ? QString() : vsPath.left(llLast + 1);
}

// Shown and logged. A log that fails here cannot report itself: the error
// the user must see is already on the status line.
void clsApplication::HandleError(clsError& rcError)
{
    if (!rcError.IsError())
        return;
    const QString lsDescription = rcError.Description();
    mcStatus.SetStatusString(lsDescription);
    if (mcLogger)
        Err::Trap([&]() { mcLogger->AddErrorToLog(lsDescription); });
    rcError.Clear();
}

clsSettings& clsApplication::Settings()
{
    return *mcSettings;
}

clsLogger& clsApplication::Logger()
{
    return *mcLogger;
}

// Copies the status model to the window: the text padded to 90 characters,
// then the secondary text; of each bar only what differs from the control.
void clsApplication::mcStatus_StatusChanged()
{
    if (mbStatusBusy)
        return;
    mbStatusBusy = true;
    if (IMainWindow* lcWindow = mcPlatform.MainWindow) {
        QString lsText = mcStatus.StatusString();
        if (lsText.size() < kStatusWidth)
            lsText = lsText.leftJustified(kStatusWidth, QLatin1Char(' '));
        lcWindow->SetStatusLine(lsText + mcStatus.SmallStatusString());
        const auto lcCopyBar = [](const clsProgressBarInfo& vcModel, IProgressBar& rcControl) {
            if (rcControl.Visible() != vcModel.Visible())
                rcControl.SetVisible(vcModel.Visible());
            if (rcControl.Min() != vcModel.Min())
                rcControl.SetMin(vcModel.Min());
            if (rcControl.Value() != vcModel.Position())
                rcControl.SetValue(vcModel.Position());
            if (rcControl.Max() != vcModel.Max())
                rcControl.SetMax(vcModel.Max());
        };
        lcCopyBar(mcStatus.BigProgressBarInfo(), lcWindow->ProgressBar(IMainWindow::Bar::Big));
        lcCopyBar(mcStatus.SmallProgressBarInfo(), lcWindow->ProgressBar(IMainWindow::Bar::Small));
    }
    mbStatusBusy = false;
    emit StatusShown();
}
