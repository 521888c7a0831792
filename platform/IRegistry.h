#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Where the system keeps what it knows of its devices: on Windows the
// registry (read only) and the platform family of GetVersionExA; everywhere
// the list of serial devices with their USB identity. The port search reads
// the KVT USB interface's port from here; tests put a fake registry behind it
// so the Windows searches run on every system.
class IRegistry
{
public:
    enum class Family { Windows9x, WindowsNT, Other };
    enum class Root { LocalMachine, DynData };

    struct SerialDevice {
        QString Port;              // what the serial port is opened with: "COM5", "/dev/ttyUSB0"
        QString Description;
        bool HasUsbIdentity = false;
        quint16 Vendor = 0;
        quint16 Product = 0;
    };

    virtual ~IRegistry() = default;

    virtual Family PlatformFamily() const = 0;
    // One value under a key as text; false when the key or the value cannot be read.
    virtual bool ReadRegistryValue(Root vRoot, const QString& vsSubKey, const QString& vsValueName,
                                   QString& rsValue) const = 0;
    // The names of the sub-keys of a key, in the registry's order; empty when it cannot be opened.
    virtual QStringList EnumSubKeys(Root vRoot, const QString& vsSubKey) const = 0;
    virtual QList<SerialDevice> SerialDevices() const = 0;
};
