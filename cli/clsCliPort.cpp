#include "cli/clsCliPort.h"

#include "platform/QtSerialPort.h"
#include "sim/clsBuiltInSimulator.h"

clsCliPort::clsCliPort(bool vbSimulate, IEventLoop& rcLoop)
{
    if (vbSimulate)
        mcSimulator = std::make_unique<clsBuiltInSimulator>(rcLoop);
    else
        mcSerial = std::make_unique<QtSerialPort>(rcLoop);
}

clsCliPort::~clsCliPort() = default;

ISerialPort& clsCliPort::Port()
{
    if (mcSimulator)
        return mcSimulator->Port();
    return *mcSerial;
}

QString clsCliPort::Error() const
{
    return mcSimulator ? mcSimulator->Error() : QString();
}
