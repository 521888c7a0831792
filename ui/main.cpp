// corvane-desktop: the main window program. The entry procedure creates the
// application object, runs Init, and Start shows the window until the user
// quits; DeInit follows.

#include "app/clsApplication.h"
#include "app/clsSettings.h"
#include "platform/Err.h"
#include "platform/QtEventLoop.h"
#include "platform/QtRegistry.h"
#include "platform/QtSerialPort.h"
#include "sim/clsBuiltInSimulator.h"
#include "ui/QtUserDialogs.h"
#include "ui/frmMain.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <memory>

namespace {
struct clsDesktopOptions {
    QString Port;
    QString Home;
    bool Simulate = false;
};

clsDesktopOptions ParseOptions(const QApplication& vcApplication)
{
    QCommandLineParser lcParser;
    lcParser.setApplicationDescription(QStringLiteral(
        "The PC companion of the KVT Memory Display: copy its logged trips and PoliceCheck alarms, save them, "
        "erase them, and upload warning databases and new display software."));
    lcParser.addHelpOption();
    lcParser.addVersionOption();
    const QCommandLineOption lcPort(QStringLiteral("port"),
                                    QStringLiteral("Serial port of the display: a number (COMn) or a device path."),
                                    QStringLiteral("P"));
    const QCommandLineOption lcHome(QStringLiteral("home"),
                                    QStringLiteral("Directory of kvtDsw.ini, kvtDsw.log and the page files."),
                                    QStringLiteral("DIR"));
    const QCommandLineOption lcSimulate(QStringLiteral("simulate"),
                                        QStringLiteral("Work with a built-in simulated display full of generated trips."));
    lcParser.addOptions({lcPort, lcHome, lcSimulate});
    lcParser.process(vcApplication);
    return clsDesktopOptions{lcParser.value(lcPort), lcParser.value(lcHome), lcParser.isSet(lcSimulate)};
}

// A number is the ini file's "Com", anything else a device path kept under "Port".
void ApplyPortOption(clsApplication& rcApplication, const QString& vsPort)
{
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

int Run(QApplication& rcQt, const clsDesktopOptions& vcOptions)
{
    QtEventLoop lcEventLoop;
    QtRegistry lcRegistry;
    QtUserDialogs lcDialogs(&lcRegistry);
    frmMain lcWindow;
    lcDialogs.SetParent(&lcWindow);
    std::unique_ptr<clsBuiltInSimulator> lcSimulator;
    QtSerialPort lcSerialPort(lcEventLoop);
    clsPlatform lcPlatform;
    lcPlatform.EventLoop = &lcEventLoop;
    lcPlatform.Dialogs = &lcDialogs;
    lcPlatform.MainWindow = &lcWindow;
    lcPlatform.Port = &lcSerialPort;
    lcPlatform.HomeDir = vcOptions.Home;
    if (vcOptions.Simulate) {
        lcSimulator = std::make_unique<clsBuiltInSimulator>(lcEventLoop);
        if (!lcSimulator->Error().isEmpty()) {
            QMessageBox::critical(nullptr, clsApplication::ApplicationName(), lcSimulator->Error());
            return 1;
        }
        lcPlatform.Port = &lcSimulator->Port();
    }
    // A port given by hand, or the simulated display, is not searched for.
    const bool lbSearch = !vcOptions.Simulate && vcOptions.Port.isEmpty();
    lcPlatform.Registry = lbSearch ? &lcRegistry : nullptr;

    clsApplication lcApplication(lcPlatform);
    lcWindow.Attach(lcApplication);
    if (lbSearch)
        lcApplication.SetPortDiscovery([&](clsError& rcError) { return lcApplication.FindUsbComport(rcError); });
    lcApplication.Init();
    if (!vcOptions.Port.isEmpty())
        ApplyPortOption(lcApplication, vcOptions.Port);
    lcApplication.Start([&]() {
        lcWindow.show();
        rcQt.exec();
    });
    return 0;
}
}

int main(int argc, char* argv[])
{
    QApplication lcQt(argc, argv);
    QApplication::setApplicationName(QStringLiteral("corvane-desktop"));
    QApplication::setApplicationVersion(clsApplication::VersionString());
    const clsDesktopOptions lcOptions = ParseOptions(lcQt);
    // A run-time error outside an operation (the settings cannot be written)
    // has no error value to go to: the user is told and the program ends.
    try {
        return Run(lcQt, lcOptions);
    } catch (const clsRuntimeError& e) {
        QMessageBox::critical(nullptr, clsApplication::ApplicationName(), e.Description());
        return 1;
    }
}
