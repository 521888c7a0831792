#include "link/clsUsbPortSearch.h"

#include "app/clsError.h"

namespace {
const QString kServiceKey = QStringLiteral("SYSTEM\\CurrentControlSet\\Services\\FTSER2K\\Enum");
const QString kConfigManagerKey = QStringLiteral("Config Manager\\Enum");

clsFoundPort FoundNumber(qint32 vlNumber)
{
    return clsFoundPort{QString::number(vlNumber), true};
}
}

clsFoundPort clsUsbPortSearch::Find(clsError& rcError) const
{
    switch (mcRegistry.PlatformFamily()) {
    case IRegistry::Family::WindowsNT:
        return SearchDriverService(rcError);
    case IRegistry::Family::Windows9x:
        return SearchConfigManager();
    case IRegistry::Family::Other:
        break;
    }
    return SearchSerialDevices(rcError);
}

bool clsUsbPortSearch::IsKvtInterface(const IRegistry::SerialDevice& vcDevice)
{
    return vcDevice.HasUsbIdentity && vcDevice.Vendor == kVendor && vcDevice.Product == kProduct;
}

// Like the Val of the port name's tail: leading blanks skipped, then the
// digits up to the first other character.
qint32 clsUsbPortSearch::PortNumberOf(const QString& vsPortName)
{
    const QString lsTail = vsPortName.mid(3).trimmed();
    qint64 llNumber = 0;
    for (const QChar lcChar : lsTail) {
        if (!lcChar.isDigit() || llNumber > 0x7FFFFFFF / 10)
            break;
        llNumber = llNumber * 10 + lcChar.digitValue();
    }
    return qint32(llNumber);
}

// The driver service counts the devices it serves and names each by its
// device identifier; the port name sits under that device's parameters.
// Only a missing service (or none counted) is an error: the USB interface is
// not installed. A device that is not ours, or a port name that cannot be
// read, ends the search quietly.
clsFoundPort clsUsbPortSearch::SearchDriverService(clsError& rcError) const
{
    QString lsCount;
    if (!mcRegistry.ReadRegistryValue(IRegistry::Root::LocalMachine, kServiceKey, QStringLiteral("Count"), lsCount)
        || lsCount.toLongLong() < 1) {
        rcError.SetError(ErrorCode::NoUsbInterface);
        return {};
    }
    const qint64 llCount = lsCount.toLongLong();
    QString lsDevice;
    for (qint64 i = 0; i < llCount && lsDevice.isEmpty(); ++i) {
        QString lsIdentifier;
        if (mcRegistry.ReadRegistryValue(IRegistry::Root::LocalMachine, kServiceKey, QString::number(i), lsIdentifier)
            && IsKvtIdentifier(lsIdentifier))
            lsDevice = lsIdentifier;
    }
    if (lsDevice.isEmpty())
        return {};
    QString lsPortName;
    const QString lsParameters =
        QStringLiteral("SYSTEM\\CurrentControlSet\\Enum\\") + lsDevice + QStringLiteral("\\Device Parameters");
    if (!mcRegistry.ReadRegistryValue(IRegistry::Root::LocalMachine, lsParameters, QStringLiteral("PortName"),
                                      lsPortName)
        || lsPortName.size() < 3)
        return {};
    return FoundNumber(PortNumberOf(lsPortName));
}

// The configuration manager lists every device present; ours is the first
// whose hardware key names the FTDI bus and our identity.
clsFoundPort clsUsbPortSearch::SearchConfigManager() const
{
    QString lsHardwareKey;
    for (const QString& lsSubKey : mcRegistry.EnumSubKeys(IRegistry::Root::DynData, kConfigManagerKey)) {
        const QString lsName = lsSubKey.left(lsSubKey.indexOf(QChar(0)));
        QString lsValue;
        if (!mcRegistry.ReadRegistryValue(IRegistry::Root::DynData, kConfigManagerKey + QLatin1Char('\\') + lsName,
                                          QStringLiteral("HardWareKey"), lsValue))
            continue;
        if (lsValue.contains(QLatin1String("FTDIBUS")) && IsKvtIdentifier(lsValue)) {
            lsHardwareKey = lsValue;
            break;
        }
    }
    if (lsHardwareKey.isEmpty())
        return {};
    QString lsPortName;
    if (!mcRegistry.ReadRegistryValue(IRegistry::Root::LocalMachine, QStringLiteral("Enum\\") + lsHardwareKey,
                                      QStringLiteral("PortName"), lsPortName))
        return {};
    const qint32 llNumber = PortNumberOf(lsPortName);
    return llNumber > 0 ? FoundNumber(llNumber) : clsFoundPort{};
}

// No registry: the device list carries the USB identity itself. No KVT
// interface among the serial devices is the same error as a missing driver
// service: the user is told once and can still pick a port by hand.
clsFoundPort clsUsbPortSearch::SearchSerialDevices(clsError& rcError) const
{
    for (const IRegistry::SerialDevice& lcDevice : mcRegistry.SerialDevices()) {
        if (IsKvtInterface(lcDevice))
            return clsFoundPort{lcDevice.Port, true};
    }
    rcError.SetError(ErrorCode::NoUsbInterface);
    return {};
}

bool clsUsbPortSearch::IsKvtIdentifier(const QString& vsIdentifier)
{
    const QString lsUpper = vsIdentifier.toUpper();
    return lsUpper.contains(QLatin1String("E990")) && lsUpper.contains(QLatin1String("0403"));
}
