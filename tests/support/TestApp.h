#pragma once

#include "FakeMainWindow.h"
#include "FakeRegistry.h"
#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "platform/VirtualClock.h"

#include <QStringList>
#include <QTemporaryDir>
#include <memory>

// An application with scripted dialogs, a recording window and its own
// temporary home directory, on the virtual clock unless given another loop.
struct TestApp {
    // vcWindow: the real main window instead of the recording one.
    explicit TestApp(ISerialPort* vcPort = nullptr, bool vbInit = true, IMainWindow* vcWindow = nullptr,
                     IEventLoop* vcLoop = nullptr);
    ~TestApp();

    QString Home() const { return home.path() + QLatin1Char('/'); }
    // The log's lines with the time stamp and " - " taken off.
    QStringList LogLines() const;

    QTemporaryDir home;
    VirtualClock clock;
    FakeUserDialogs dialogs;
    FakeMainWindow window;
    FakeRegistry registry;
    std::unique_ptr<clsApplication> app;
};
