// corvane-desktop: the main window program. The entry procedure creates the
// application object, runs Init, and Start shows the window until the user
// quits; DeInit follows.

#include "app/clsApplication.h"
#include "platform/Err.h"
#include "ui/clsDesktopProgram.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QMessageBox>

namespace {
clsDesktopProgram::Options ParseOptions(const QApplication& vcApplication)
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
    return clsDesktopProgram::Options{lcParser.value(lcPort), lcParser.value(lcHome), lcParser.isSet(lcSimulate)};
}

int Run(QApplication& rcQt, const clsDesktopProgram::Options& vcOptions)
{
    clsDesktopProgram lcProgram(vcOptions);
    if (!lcProgram.Error().isEmpty()) {
        QMessageBox::critical(nullptr, clsApplication::ApplicationName(), lcProgram.Error());
        return 1;
    }
    lcProgram.Init();
    lcProgram.Application().Start([&]() {
        lcProgram.Window().show();
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
    // The desktop entry's picture on every window, and the entry itself for the task bar.
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/corvane-desktop.png")));
    QGuiApplication::setDesktopFileName(QStringLiteral("corvane-desktop"));
    const clsDesktopProgram::Options lcOptions = ParseOptions(lcQt);
    // A run-time error outside an operation (the settings cannot be written)
    // has no error value to go to: the user is told and the program ends.
    try {
        return Run(lcQt, lcOptions);
    } catch (const clsRuntimeError& e) {
        QMessageBox::critical(nullptr, clsApplication::ApplicationName(), e.Description());
        return 1;
    }
}
