#pragma once

#include <QList>
#include <QString>

// What "corvane ports" shows: every serial port with its device path,
// vendor:product, description and serial number, the KVT USB interface marked.
class clsPortList
{
public:
    static constexpr quint16 kKvtVendor = 0x0403;
    static constexpr quint16 kKvtProduct = 0xE990;

    struct Port {
        QString Path;
        bool HasIds = false;
        quint16 Vendor = 0;
        quint16 Product = 0;
        QString Description;
        QString Serial;
        bool IsKvt() const { return HasIds && Vendor == kKvtVendor && Product == kKvtProduct; }
    };

    // The ports of this machine, in path order.
    static QList<Port> Available();
    // One line a port, columns aligned; a line of its own when there is none.
    static QString Listing(const QList<Port>& vcPorts);
};
