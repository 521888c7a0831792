#include "cli/clsCliPort.h"

#include "platform/IEventLoop.h"
#include "platform/QtSerialPort.h"
#include "sim/clsSimDataGenerator.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimSerialPort.h"

clsCliPort::clsCliPort(bool vbSimulate, IEventLoop& rcLoop)
{
    if (!vbSimulate) {
        mcSerial = std::make_unique<QtSerialPort>();
        return;
    }
    mcDisplay = std::make_unique<clsSimDisplay>();
    FillSimulatedDisplay();
    // The line runs on the program's own clock and Qt's timers, so a wait for
    // the simulated display sleeps just as a wait for a real one does.
    mcSimPort = std::make_unique<clsSimSerialPort>(
        *mcDisplay, [&rcLoop]() { return rcLoop.timeGetTime(); },
        clsSimSerialPort::QtTimerScheduler(&mcSimulationTimers));
}

clsCliPort::~clsCliPort() = default;

ISerialPort& clsCliPort::Port()
{
    if (mcSimPort)
        return *mcSimPort;
    return *mcSerial;
}

void clsCliPort::FillSimulatedDisplay()
{
    QByteArray lcFlash = mcDisplay->Flash();
    if (clsSimDataGenerator::FillLog(lcFlash, mcDisplay->FirstPage(), mcDisplay->LastPage(), mcDisplay->SizeOnePage(),
                                     kSimulationSeed, kSimulationDays, msError)
        < 0)
        return;
    mcDisplay->SetFlash(lcFlash);
}
