#pragma once

#include "platform/ISerialPort.h"

#include <QObject>
#include <QString>
#include <memory>

class IEventLoop;
class QtSerialPort;
class clsSimDisplay;
class clsSimSerialPort;

// The serial line the command line talks over: the real port, or with
// --simulate a simulated display full of generated trips, in this process
// and in real time at the line's speed.
class clsCliPort
{
public:
    // The generated logbook: the same seed gives the same trips on every run.
    static constexpr quint32 kSimulationSeed = 2024;
    static constexpr int kSimulationDays = 14;

    clsCliPort(bool vbSimulate, IEventLoop& rcLoop);
    ~clsCliPort();

    ISerialPort& Port();
    // Why the simulated display could not be filled; empty when all is well.
    QString Error() const { return msError; }

private:
    void FillSimulatedDisplay();

    std::unique_ptr<QtSerialPort> mcSerial;
    std::unique_ptr<clsSimDisplay> mcDisplay;
    QObject mcSimulationTimers;
    std::unique_ptr<clsSimSerialPort> mcSimPort;
    QString msError;
};
