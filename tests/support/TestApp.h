#pragma once

#include "FakeMainWindow.h"
#include "FakeRegistry.h"
#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "platform/VirtualClock.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QTemporaryDir>
#include <memory>

// An application with scripted dialogs, a recording window and its own
// temporary home directory, on the virtual clock unless given another loop.
struct TestApp {
    // vcWindow: the real main window instead of the recording one.
    explicit TestApp(ISerialPort* vcPort = nullptr, bool vbInit = true, IMainWindow* vcWindow = nullptr,
                     IEventLoop* vcLoop = nullptr)
    {
        clsPlatform lcPlatform;
        lcPlatform.EventLoop = vcLoop ? vcLoop : &clock;
        lcPlatform.Dialogs = &dialogs;
        lcPlatform.MainWindow = vcWindow ? vcWindow : &window;
        lcPlatform.Port = vcPort;
        lcPlatform.Registry = &registry;
        lcPlatform.HomeDir = home.path();
        app = std::make_unique<clsApplication>(lcPlatform);
        if (vbInit)
            app->Init();
    }

    QString Home() const { return home.path() + QLatin1Char('/'); }

    // The log's lines with the time stamp and " - " taken off.
    QStringList LogLines() const
    {
        static const QRegularExpression scStamp(QStringLiteral("^\\d{4}/\\d\\d/\\d\\d-\\d\\d:\\d\\d:\\d\\d - "));
        QFile lcFile(Home() + QStringLiteral("kvtDsw.log"));
        QStringList lcLines;
        if (lcFile.open(QIODevice::ReadOnly))
            for (const QByteArray& lcLine : lcFile.readAll().split('\n'))
                lcLines << QString::fromLatin1(lcLine).chopped(lcLine.endsWith('\r') ? 1 : 0).remove(scStamp);
        if (!lcLines.isEmpty() && lcLines.last().isEmpty())
            lcLines.removeLast();
        return lcLines;
    }

    // Declared last, the application goes first, before what it uses.
    QTemporaryDir home;
    VirtualClock clock;
    FakeUserDialogs dialogs;
    FakeMainWindow window;
    FakeRegistry registry;
    std::unique_ptr<clsApplication> app;
};
