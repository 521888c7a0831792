#pragma once

#include <QString>
#include <QStringList>

// Read-only access to the Windows registry, for finding the USB interface's port.
class IRegistry
{
public:
    enum class Root { LocalMachine, DynData };
    enum class Family { Windows9x, WindowsNT, Other };

    virtual ~IRegistry() = default;
    virtual Family PlatformFamily() const = 0;
    // A value as text; false when the key or value cannot be read.
    virtual bool ReadValue(Root vRoot, const QString& vsSubKey, const QString& vsValueName, QString& rsValue) const = 0;
    // Names of the sub-keys; false when the key cannot be opened.
    virtual bool EnumKeys(Root vRoot, const QString& vsSubKey, QStringList& rcKeys) const = 0;
};
