#pragma once

#include <QString>

// What the search for the KVT USB interface found: the port to open (a number
// as "5", or a device path) and whether it was found at all.
struct clsFoundPort {
    QString Port;
    bool Found = false;
};
