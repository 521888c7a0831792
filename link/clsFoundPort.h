#pragma once

#include <QString>

// What the search for the USB interface's port came to.
struct clsFoundPort {
    QString Port;        // a port number or device path; empty when none was found
    bool Found = false;
};
