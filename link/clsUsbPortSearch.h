#pragma once

#include "link/clsFoundPort.h"
#include "platform/IRegistry.h"

class clsError;

// Finds the port of the KVT USB interface (an FTDI chip, vendor 0403, product
// E990). Windows keeps it in the registry: the NT family under the FTDI
// driver service, the 95/98/Me family in the configuration manager's tree.
// Elsewhere the system's list of serial devices gives the USB identity directly.
class clsUsbPortSearch
{
public:
    static constexpr quint16 kVendor = 0x0403;
    static constexpr quint16 kProduct = 0xE990;

    explicit clsUsbPortSearch(const IRegistry& rcRegistry) : mcRegistry(rcRegistry) {}

    clsFoundPort Find(clsError& rcError) const;

    // Whether a serial device is the KVT USB interface.
    static bool IsKvtInterface(const IRegistry::SerialDevice& vcDevice);
    // The number after the first three characters of a port name ("COM12" gives 12); 0 when there is none.
    static qint32 PortNumberOf(const QString& vsPortName);

private:
    clsFoundPort SearchDriverService(clsError& rcError) const;
    clsFoundPort SearchConfigManager() const;
    clsFoundPort SearchSerialDevices(clsError& rcError) const;
    static bool IsKvtIdentifier(const QString& vsIdentifier);

    const IRegistry& mcRegistry;
};
