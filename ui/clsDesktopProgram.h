#pragma once

#include "platform/QtEventLoop.h"
#include "platform/QtRegistry.h"
#include "platform/QtSerialPort.h"
#include "ui/QtUserDialogs.h"
#include "ui/frmMain.h"

#include <QString>
#include <memory>

class clsApplication;
class clsBuiltInSimulator;

// Everything the window program is made of, put together in the order the
// application object needs it: the platform, the window, the serial line
// (the real port or the built-in simulated display), the application.
class clsDesktopProgram
{
public:
    struct Options {
        QString Port;      // a number (COMn) or a device path; empty: the settings' port or the one found
        QString Home;
        bool Simulate = false;
    };

    explicit clsDesktopProgram(const Options& vcOptions);
    ~clsDesktopProgram();

    // Why the program cannot start; empty when it can.
    QString Error() const { return msError; }
    // Init, then the port given on the command line.
    void Init();
    clsApplication& Application() { return *mcApplication; }
    frmMain& Window() { return mcWindow; }

private:
    void ApplyPortOption();
    void OfferSampleFiles();

    Options mcOptions;
    QtEventLoop mcEventLoop;
    QtRegistry mcRegistry;
    QtUserDialogs mcDialogs{&mcRegistry};
    frmMain mcWindow;
    QtSerialPort mcSerialPort{mcEventLoop};
    std::unique_ptr<clsBuiltInSimulator> mcSimulator;
    std::unique_ptr<clsApplication> mcApplication;
    QString msError;
};
