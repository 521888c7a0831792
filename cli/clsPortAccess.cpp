#include "cli/clsPortAccess.h"

#include <QFile>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#endif

QString clsPortAccess::Problem(const QString& vsDevice)
{
#ifdef Q_OS_UNIX
    const int llDevice = ::open(QFile::encodeName(vsDevice).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (llDevice >= 0) {
        ::close(llDevice);
        return QString();
    }
    if (errno == EACCES || errno == EPERM)
        return PermissionAdvice(vsDevice);
#else
    (void)vsDevice;
#endif
    return QString();
}

QString clsPortAccess::PermissionAdvice(const QString& vsDevice)
{
    return QStringLiteral(
               "no permission to open %1.\n"
               "  For the KVT USB interface, install the udev rule that gives you access\n"
               "  (the package installs it; from a build: sudo cp packaging/60-corvane-kvt.rules\n"
               "  /etc/udev/rules.d/ && sudo udevadm control --reload-rules), then plug the\n"
               "  display in again.\n"
               "  For any serial port, join the dialout group: sudo adduser $USER dialout,\n"
               "  then log out and in again.")
        .arg(vsDevice);
}
