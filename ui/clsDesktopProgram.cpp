#include "ui/clsDesktopProgram.h"

#include "app/clsApplication.h"
#include "app/clsSettings.h"
#include "sim/clsBuiltInSimulator.h"
#include "sim/clsSimSamples.h"

#include <QFileInfo>

clsDesktopProgram::clsDesktopProgram(const Options& vcOptions)
    : mcOptions(vcOptions)
{
    mcDialogs.SetParent(&mcWindow);
    clsPlatform lcPlatform;
    lcPlatform.EventLoop = &mcEventLoop;
    lcPlatform.Dialogs = &mcDialogs;
    lcPlatform.MainWindow = &mcWindow;
    lcPlatform.Port = &mcSerialPort;
    lcPlatform.HomeDir = vcOptions.Home;
    if (vcOptions.Simulate) {
        mcSimulator = std::make_unique<clsBuiltInSimulator>(mcEventLoop);
        msError = mcSimulator->Error();
        lcPlatform.Port = &mcSimulator->Port();
    }
    // A port given by hand, or the simulated display, is not searched for.
    const bool lbSearch = !vcOptions.Simulate && vcOptions.Port.isEmpty();
    lcPlatform.Registry = lbSearch ? &mcRegistry : nullptr;
    mcApplication = std::make_unique<clsApplication>(lcPlatform);
    mcWindow.Attach(*mcApplication);
    if (lbSearch)
        mcApplication->SetPortDiscovery([this](clsError& rcError) { return mcApplication->FindUsbComport(rcError); });
}

// The window goes before the application object it refers to.
clsDesktopProgram::~clsDesktopProgram()
{
    mcWindow.hide();
    mcApplication.reset();
}

void clsDesktopProgram::Init()
{
    mcApplication->Init();
    ApplyPortOption();
    if (mcOptions.Simulate)
        OfferSampleFiles();
}

// With the simulated display every upload can be tried at once: sample files
// of each type are written beside the settings and fill the upload boxes that
// have no file of the user's.
void clsDesktopProgram::OfferSampleFiles()
{
    static const struct {
        const char* suffix;
        qint16 index;
    } kTypes[] = {{"kvt", 0},     {"ssl", 1},     {"sfl", 2},     {"usl", 3},
                  {"ufl", 4},     {"kvt_sa", 10}, {"kvt_md", 11}, {"kvt_snd", 12}};
    QString lsError;
    const QStringList lcFiles = clsSimSamples::Write(mcApplication->StdDirectory() + QStringLiteral("samples"), lsError);
    for (const QString& lsFile : lcFiles) {
        for (const auto& lcType : kTypes) {
            if (QFileInfo(lsFile).suffix() == QLatin1String(lcType.suffix)
                && mcApplication->Settings().LastFilenames(lcType.index).isEmpty())
                mcApplication->Settings().SetLastFilenames(lcType.index, lsFile);
        }
    }
}

// A number is the ini file's "Com", anything else a device path kept under "Port".
void clsDesktopProgram::ApplyPortOption()
{
    if (mcOptions.Port.isEmpty())
        return;
    bool lbNumber = false;
    const qint32 llNumber = mcOptions.Port.toInt(&lbNumber);
    if (lbNumber) {
        mcApplication->Settings().SetcomPort(llNumber);
        mcApplication->Settings().SetPortPath(QString());
    } else {
        mcApplication->Settings().SetPortPath(mcOptions.Port);
    }
    mcApplication->ApplyPortSettings();
}
