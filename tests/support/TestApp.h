#pragma once

#include "FakeMainWindow.h"
#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "platform/VirtualClock.h"

#include <QStringList>
#include <QTemporaryDir>
#include <memory>

// An application with scripted dialogs, a recording window and its own
// temporary home directory, on the virtual clock unless given another loop.
struct TestApp {
    explicit TestApp(ISerialPort* vcPort = nullptr, bool vbInit = true, IEventLoop* vcLoop = nullptr);
    ~TestApp();

    QString Home() const { return home.path() + QLatin1Char('/'); }
    // The log's lines with the time stamp and " - " taken off.
    QStringList LogLines() const;

    QTemporaryDir home;
    VirtualClock clock;
    FakeUserDialogs dialogs;
    FakeMainWindow window;
    std::unique_ptr<clsApplication> app;
};
