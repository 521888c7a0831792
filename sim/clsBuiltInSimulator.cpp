#include "sim/clsBuiltInSimulator.h"

#include "sim/clsSimDataGenerator.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimSerialPort.h"

// The line runs on the program's own clock and Qt's timers, so a wait for the
// simulated display sleeps just as a wait for a real one does.
clsBuiltInSimulator::clsBuiltInSimulator(IEventLoop& rcLoop)
    : mcDisplay(std::make_unique<clsSimDisplay>())
    , mcPort(std::make_unique<clsSimSerialPort>(*mcDisplay, rcLoop, clsSimSerialPort::QtTimerScheduler(&mcTimers)))
{
    FillDisplay();
    // Plugged in as the program starts: the first probe greets it.
    mcDisplay->SetJustConnected(true);
}

clsBuiltInSimulator::~clsBuiltInSimulator() = default;

ISerialPort& clsBuiltInSimulator::Port()
{
    return *mcPort;
}

void clsBuiltInSimulator::FillDisplay()
{
    QByteArray lcFlash = mcDisplay->Flash();
    if (clsSimDataGenerator::FillLog(lcFlash, mcDisplay->FirstPage(), mcDisplay->LastPage(), mcDisplay->SizeOnePage(),
                                     kSimulationSeed, kSimulationDays, msError)
        < 0)
        return;
    mcDisplay->SetFlash(lcFlash);
}
