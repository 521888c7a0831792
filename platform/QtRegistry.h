#pragma once

#include "platform/IRegistry.h"

// The system's own answers: the Windows registry through QSettings where
// there is one, and the serial devices through QSerialPortInfo.
class QtRegistry : public IRegistry
{
public:
    Family PlatformFamily() const override;
    bool ReadRegistryValue(Root vRoot, const QString& vsSubKey, const QString& vsValueName,
                           QString& rsValue) const override;
    QStringList EnumSubKeys(Root vRoot, const QString& vsSubKey) const override;
    QList<SerialDevice> SerialDevices() const override;
};
