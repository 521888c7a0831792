#include "platform/QtRegistry.h"

#include <QSerialPortInfo>
#include <QSettings>

namespace {
#ifdef Q_OS_WIN
// Qt runs only on the NT family; the configuration-manager tree of the
// 95/98/Me family is never asked for there.
QString RootPath(IRegistry::Root vRoot, const QString& vsSubKey)
{
    if (vRoot != IRegistry::Root::LocalMachine)
        return QString();
    return QStringLiteral("HKEY_LOCAL_MACHINE\\") + vsSubKey;
}
#endif
}

IRegistry::Family QtRegistry::PlatformFamily() const
{
#ifdef Q_OS_WIN
    return Family::WindowsNT;
#else
    return Family::Other;
#endif
}

bool QtRegistry::ReadRegistryValue(Root vRoot, const QString& vsSubKey, const QString& vsValueName,
                                   QString& rsValue) const
{
#ifdef Q_OS_WIN
    const QString lsPath = RootPath(vRoot, vsSubKey);
    if (lsPath.isEmpty())
        return false;
    const QSettings lcKey(lsPath, QSettings::NativeFormat);
    const QVariant lcValue = lcKey.value(vsValueName);
    if (!lcValue.isValid())
        return false;
    rsValue = lcValue.toString();
    return true;
#else
    Q_UNUSED(vRoot)
    Q_UNUSED(vsSubKey)
    Q_UNUSED(vsValueName)
    Q_UNUSED(rsValue)
    return false;
#endif
}

QStringList QtRegistry::EnumSubKeys(Root vRoot, const QString& vsSubKey) const
{
#ifdef Q_OS_WIN
    const QString lsPath = RootPath(vRoot, vsSubKey);
    if (lsPath.isEmpty())
        return {};
    return QSettings(lsPath, QSettings::NativeFormat).childGroups();
#else
    Q_UNUSED(vRoot)
    Q_UNUSED(vsSubKey)
    return {};
#endif
}

QList<IRegistry::SerialDevice> QtRegistry::SerialDevices() const
{
    QList<SerialDevice> lcDevices;
    for (const QSerialPortInfo& lcInfo : QSerialPortInfo::availablePorts()) {
        SerialDevice lcDevice;
#ifdef Q_OS_WIN
        lcDevice.Port = lcInfo.portName();
#else
        lcDevice.Port = lcInfo.systemLocation();
#endif
        lcDevice.Description = lcInfo.description();
        lcDevice.HasUsbIdentity = lcInfo.hasVendorIdentifier() && lcInfo.hasProductIdentifier();
        lcDevice.Vendor = lcInfo.vendorIdentifier();
        lcDevice.Product = lcInfo.productIdentifier();
        lcDevices << lcDevice;
    }
    return lcDevices;
}
