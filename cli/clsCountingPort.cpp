#include "cli/clsCountingPort.h"

clsCountingPort::clsCountingPort(ISerialPort& rcPort)
    : mrPort(rcPort)
{
    mrPort.SetOnComm([this]() { RaiseOnComm(); });
    mrPort.SetOnError([this](const QString& vsText) { RaiseOnError(vsText); });
}

bool clsCountingPort::Output(const QByteArray& vcData)
{
    const bool lbWritten = mrPort.Output(vcData);
    if (lbWritten)
        mlBytes += quint64(vcData.size());
    return lbWritten;
}

QByteArray clsCountingPort::Input()
{
    const QByteArray lcData = mrPort.Input();
    mlBytes += quint64(lcData.size());
    return lcData;
}
