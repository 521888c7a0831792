#pragma once

#include <QObject>
#include <QString>
#include <memory>

class IEventLoop;
class ISerialPort;
class clsSimDisplay;
class clsSimSerialPort;

// What --simulate uses in the command line and the window: a simulated
// display full of generated trips, in this process, in real time at the
// line's speed.
class clsBuiltInSimulator
{
public:
    // The generated logbook: the same seed gives the same trips on every run.
    static constexpr quint32 kSimulationSeed = 2024;
    static constexpr int kSimulationDays = 14;

    explicit clsBuiltInSimulator(IEventLoop& rcLoop);
    ~clsBuiltInSimulator();

    ISerialPort& Port();
    clsSimDisplay& Display() { return *mcDisplay; }
    // Why the simulated display could not be filled; empty when all is well.
    QString Error() const { return msError; }

private:
    void FillDisplay();

    std::unique_ptr<clsSimDisplay> mcDisplay;
    // The answers in flight die with it.
    QObject mcTimers;
    std::unique_ptr<clsSimSerialPort> mcPort;
    QString msError;
};
