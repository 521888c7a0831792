#pragma once

#include <QString>

// Whether this user may open a serial device, checked before a command talks
// to the display: a port refused for want of permission would otherwise only
// show up as time-outs.
class clsPortAccess
{
public:
    // Empty when the device can be opened (or does not exist: that is the
    // link's own business); else what to tell the user.
    static QString Problem(const QString& vsDevice);
    // The text for a device this user has no permission to open.
    static QString PermissionAdvice(const QString& vsDevice);
};
