#pragma once

#include "platform/IRegistry.h"

#include <QMap>

// A registry held in maps: values by "key\name", sub-keys by key. The root
// is part of the key ("HKLM\..." and "DYN\...") so both trees can be filled.
class FakeRegistry : public IRegistry
{
public:
    Family PlatformFamily() const override { return family; }
    bool ReadRegistryValue(Root vRoot, const QString& vsSubKey, const QString& vsValueName,
                           QString& rsValue) const override
    {
        const QString lsPath = Path(vRoot, vsSubKey) + QLatin1Char('\\') + vsValueName;
        if (!values.contains(lsPath))
            return false;
        rsValue = values.value(lsPath);
        return true;
    }
    QStringList EnumSubKeys(Root vRoot, const QString& vsSubKey) const override
    {
        return subKeys.value(Path(vRoot, vsSubKey));
    }
    QList<SerialDevice> SerialDevices() const override { return devices; }

    static QString Path(Root vRoot, const QString& vsSubKey)
    {
        return (vRoot == Root::LocalMachine ? QStringLiteral("HKLM\\") : QStringLiteral("DYN\\")) + vsSubKey;
    }

    Family family = Family::WindowsNT;
    QMap<QString, QString> values;
    QMap<QString, QStringList> subKeys;
    QList<SerialDevice> devices;
};
