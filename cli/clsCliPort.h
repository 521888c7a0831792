#pragma once

#include <QString>
#include <memory>

class IEventLoop;
class ISerialPort;
class QtSerialPort;
class clsBuiltInSimulator;

// The serial line the command line talks over: the real port, or with
// --simulate the built-in simulated display.
class clsCliPort
{
public:
    clsCliPort(bool vbSimulate, IEventLoop& rcLoop);
    ~clsCliPort();

    ISerialPort& Port();
    // Why the simulated display could not be filled; empty when all is well.
    QString Error() const;

private:
    std::unique_ptr<QtSerialPort> mcSerial;
    std::unique_ptr<clsBuiltInSimulator> mcSimulator;
};
