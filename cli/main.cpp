// corvane: the program's user actions on the command line. The application is
// started as the window program starts it (Init, Start, DeInit); Start runs
// the one command instead of showing the main window.

#include "app/clsApplication.h"
#include "app/clsLogger.h"
#include "app/clsSettings.h"
#include "cli/clsCliCommands.h"
#include "cli/clsCliOptions.h"
#include "cli/clsCliPort.h"
#include "cli/clsCountingPort.h"
#include "cli/clsPortAccess.h"
#include "cli/clsPortList.h"
#include "cli/clsDecodeHome.h"
#include "cli/clsTerminalDialogs.h"
#include "cli/clsTerminalWindow.h"
#include "platform/Err.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <functional>
#include <cstdio>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <io.h>
#define isatty _isatty
#else
#include <unistd.h>
#endif

namespace {
void WriteErr(const QString& vsText)
{
    std::fputs(vsText.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
}

int BadUsage(const QString& vsWhy)
{
    WriteErr(QStringLiteral("corvane: ") + vsWhy + QStringLiteral("\nTry \"corvane --help\".\n"));
    return clsCliCommands::kExitUsage;
}

// The home holds the log and the settings, so it must take new files.
bool HomeIsWritable(const QString& vsHome)
{
    return QDir().mkpath(vsHome) && QFileInfo(vsHome).isWritable();
}

// --port: a number is the port number of the ini file's "Com", anything else
// a device path, kept under "Port" beside it.
void ApplyPortOption(clsApplication& rcApplication, const QString& vsPort)
{
    if (vsPort.isEmpty())
        return;
    bool lbNumber = false;
    const qint32 llNumber = vsPort.toInt(&lbNumber);
    if (lbNumber) {
        rcApplication.Settings().SetcomPort(llNumber);
        rcApplication.Settings().SetPortPath(QString());
    } else {
        rcApplication.Settings().SetPortPath(vsPort);
    }
    rcApplication.ApplyPortSettings();
}

// Help, version and bad usage end the program before anything starts; -1 means go on.
int AnswerWithoutRunning(clsCliOptions& rcOptions)
{
    switch (rcOptions.Parse(QCoreApplication::arguments().mid(1))) {
    case clsCliOptions::Outcome::Help:
        std::fputs(rcOptions.HelpText().toLocal8Bit().constData(), stdout);
        return clsCliCommands::kExitOk;
    case clsCliOptions::Outcome::Version:
        std::fputs(QStringLiteral("corvane (%1) %2\n")
                       .arg(clsApplication::ApplicationName(), clsApplication::VersionString())
                       .toLocal8Bit()
                       .constData(),
                   stdout);
        return clsCliCommands::kExitOk;
    case clsCliOptions::Outcome::BadUsage:
        return BadUsage(rcOptions.UsageError());
    case clsCliOptions::Outcome::Run:
        break;
    }
    return -1;
}

// The entry procedure's shape: create the application, Init, Start (which
// runs the command where the window program shows its window, then DeInit).
int RunApplication(const clsCliOptions& vcOptions, clsPlatform vcPlatform, clsDecodeHome& rcDecodeHome)
{
    QtEventLoop lcEventLoop;
    clsTerminalWindow lcWindow(stderr, isatty(2));
    lcWindow.SetUserNames([&rcDecodeHome](const QString& vsText) { return rcDecodeHome.UserNames(vsText); });
    clsTerminalDialogs lcDialogs(lcWindow, vcOptions.mAnswer, vcOptions.mbInteractive);
    lcWindow.SetQuiet(vcOptions.mbQuiet);
    lcDialogs.SetReconnects(vcOptions.mlReconnects);
    clsCliPort lcPort(vcOptions.mbSimulate, lcEventLoop);
    if (!lcPort.Error().isEmpty()) {
        WriteErr(QStringLiteral("corvane: ") + lcPort.Error() + QLatin1Char('\n'));
        return clsCliCommands::kExitError;
    }
    clsCountingPort lcCountingPort(lcPort.Port());
    lcWindow.SetByteCounter([&]() { return lcCountingPort.Bytes(); });
    vcPlatform.EventLoop = &lcEventLoop;
    vcPlatform.Dialogs = &lcDialogs;
    vcPlatform.MainWindow = &lcWindow;
    vcPlatform.Port = vcOptions.mCommand == clsCliOptions::Command::Decode ? nullptr : &lcCountingPort;

    clsApplication lcApplication(vcPlatform);
    lcWindow.Attach(lcApplication);
    // A question nobody can answer ends the run there, shut down in order.
    lcDialogs.SetOnUnanswered([&](const QString& vsWhy) {
        lcWindow.Finish();
        WriteErr(QStringLiteral("corvane: ") + vsWhy + QLatin1Char('\n'));
        lcApplication.Quite();
        rcDecodeHome.Remove();
        std::exit(clsCliCommands::kExitUsage);
    });
    // The port's own reason, once, before the question about a silent display.
    QObject::connect(&lcApplication, &clsApplication::PortTrouble, [&lcWindow](const QString& vsText) {
        lcWindow.PrintLine(QStringLiteral("corvane: ") + vsText);
    });
    lcDialogs.SetOnGiveUp([&lcApplication]() { lcApplication.SetCommunicationStopped(true); });
    lcApplication.Init();
    if (vcOptions.mbVerbose)
        lcApplication.Logger().SetEcho([&](const QString& vsLine) {
            if (!vsLine.isEmpty())
                lcWindow.PrintLine(vsLine);
        });
    ApplyPortOption(lcApplication, vcOptions.msPort);
    lcApplication.SetRecordsTaken(vcOptions.mcPagesTaken);
    // A port refused for want of permission says so now, not as six time-outs later.
    if (vcPlatform.Port && !vcOptions.mbSimulate) {
        const QString lsProblem = clsPortAccess::Problem(QtSerialPort::DeviceName(vcPlatform.Port->CommPort()));
        if (!lsProblem.isEmpty()) {
            lcWindow.Finish();
            WriteErr(QStringLiteral("corvane: ") + lsProblem + QLatin1Char('\n'));
            lcApplication.Quite();
            return clsCliCommands::kExitError;
        }
    }

    int llExit = clsCliCommands::kExitOk;
    lcApplication.Start([&]() { llExit = clsCliCommands(lcApplication, vcOptions, lcWindow, lcDialogs).Run(); });
    lcWindow.Finish();
    return llExit;
}

// The PDF export draws text, which needs Qt's fonts and so a QGuiApplication;
// its off-screen platform needs no display. Every other run stays without.
std::unique_ptr<QCoreApplication> MakeQtApplication(int& rlArgc, char** vcArgv)
{
    bool lbPdf = false;
    for (int i = 1; i < rlArgc; ++i) {
        const QString lsArgument = QString::fromLocal8Bit(vcArgv[i]).toLower();
        lbPdf = lbPdf || lsArgument.endsWith(QLatin1String(".pdf")) || lsArgument == QLatin1String("pdf")
             || lsArgument == QLatin1String("--format=pdf");
    }
    if (!lbPdf)
        return std::make_unique<QCoreApplication>(rlArgc, vcArgv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(rlArgc, vcArgv);
}

// When the newest page file of a decode was written: the download's date for an export's header.
QDateTime PagesWritten(const QString& vsDirectory)
{
    QDateTime lcNewest;
    for (const QFileInfo& lcFile : QDir(vsDirectory).entryInfoList({QStringLiteral("page*.dsw")}, QDir::Files))
        if (!lcNewest.isValid() || lcFile.lastModified() > lcNewest)
            lcNewest = lcFile.lastModified();
    return lcNewest;
}

int ListPorts()
{
    std::fputs(clsPortList::Listing(clsPortList::Available()).toLocal8Bit().constData(), stdout);
    return clsCliCommands::kExitOk;
}
}

int main(int argc, char* argv[])
{
    const std::unique_ptr<QCoreApplication> lcQtApplication = MakeQtApplication(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane"));

    clsCliOptions lcOptions;
    const int llAnswered = AnswerWithoutRunning(lcOptions);
    if (llAnswered >= 0)
        return llAnswered;
    if (lcOptions.mCommand == clsCliOptions::Command::Ports)
        return ListPorts();
    lcOptions.mbInteractive = isatty(0) && isatty(2);
    if (!lcOptions.msOutput.isEmpty())
        lcOptions.msOutput = QFileInfo(lcOptions.msOutput).absoluteFilePath();

    clsPlatform lcPlatform;
    lcPlatform.HomeDir = lcOptions.msHome;
    lcPlatform.PlacesFile = lcOptions.msPlaces;
    clsDecodeHome lcDecodeHome;
    if (lcOptions.mCommand == clsCliOptions::Command::Decode) {
        QString lsError;
        if (!lcDecodeHome.Prepare(lcOptions.msDecodeDirectory, lsError)) {
            WriteErr(QStringLiteral("corvane: ") + lsError + QLatin1Char('\n'));
            return clsCliCommands::kExitError;
        }
        lcPlatform.HomeDir = lcDecodeHome.Path();
        lcOptions.mcPagesTaken = PagesWritten(lcOptions.msDecodeDirectory);
    }
    if (!lcPlatform.HomeDir.isEmpty() && !HomeIsWritable(lcPlatform.HomeDir)) {
        WriteErr(QStringLiteral("corvane: cannot write in the home directory ")
                 + QDir::toNativeSeparators(lcPlatform.HomeDir) + QLatin1Char('\n'));
        return clsCliCommands::kExitError;
    }
    // A run-time error outside an operation has no error value to go to: it
    // ends the run here. (The log and the settings file never get this far:
    // without a log the run goes on, and settings writes are best effort.)
    try {
        return RunApplication(lcOptions, lcPlatform, lcDecodeHome);
    } catch (const clsRuntimeError& e) {
        const QString lsSource = e.Source().isEmpty() ? QString() : QStringLiteral(" (") + e.Source() + QLatin1Char(')');
        WriteErr(lcDecodeHome.UserNames(QStringLiteral("corvane: ") + e.Description() + lsSource + QLatin1Char('\n')));
        return clsCliCommands::kExitError;
    }
}
