#include "TestApp.h"

#include <QFile>
#include <QRegularExpression>

TestApp::TestApp(ISerialPort* vcPort, bool vbInit, IMainWindow* vcWindow, IEventLoop* vcLoop)
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

TestApp::~TestApp()
{
    app.reset();
}

QStringList TestApp::LogLines() const
{
    QFile lcFile(Home() + QStringLiteral("kvtDsw.log"));
    if (!lcFile.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression scStamp(QStringLiteral("^\\d{4}/\\d\\d/\\d\\d-\\d\\d:\\d\\d:\\d\\d - "));
    QStringList lcLines;
    for (const QByteArray& lcLine : lcFile.readAll().split('\n')) {
        QString lsLine = QString::fromLatin1(lcLine).chopped(lcLine.endsWith('\r') ? 1 : 0);
        lcLines << lsLine.remove(scStamp);
    }
    if (!lcLines.isEmpty() && lcLines.last().isEmpty())
        lcLines.removeLast();
    return lcLines;
}
