// Start-up and shut-down of the application object: the goodbye to the
// display said once, the port found at start-up, errors shown, and a log or
// settings file that cannot be written.

#include "RecordingSerialPort.h"
#include "TestApp.h"
#include "TestFiles.h"
#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/PrivateProfile.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

namespace {
const QByteArray kGoodbye = QByteArray::fromHex("00006601071070"); // 0x10 with no arguments
struct LogTrouble { int when, number; QString status; };
struct FoundCase { QString found; int error; QString port, status; };
}

class tst_application : public QObject
{
    Q_OBJECT
private slots:
    void directoryFromPath_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("directory");
        QTest::newRow("no separator") << "trips.txt" << "";
        QTest::newRow("windows path") << "C:\\Corvane\\trips.txt" << "C:\\Corvane\\";
        QTest::newRow("ends in separator") << "C:\\Corvane\\" << "C:\\Corvane\\";
        QTest::newRow("unix path") << "/home/driver/trips.txt" << "/home/driver/";
    }
    void directoryFromPath()
    {
        QFETCH(QString, path);
        QFETCH(QString, directory);
        QCOMPARE(clsApplication::GetDirectoryFromPath(path), directory);
    }

    void shutDownOnce_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::newRow("Quite twice") << "quite, quite";
        QTest::newRow("closed from inside Start") << "start";
        QTest::newRow("DelayedQuite after 200 ms") << "delayed, advance 199, running, advance 1";
    }
    // However the program ends, the display hears goodbye once, the log
    // stops once and the settings are saved.
    void shutDownOnce()
    {
        QFETCH(QString, steps);
        RecordingSerialPort lcPort;
        TestApp t(&lcPort);
        RunSteps(steps, {{"quite", [&](const QString&) { t.app->Quite(); }},
                         {"start", [&](const QString&) {
                              t.app->Start([&]() { t.app->Quite(); });
                              QVERIFY(!t.app->MainWindowShown());
                          }},
                         {"delayed", [&](const QString&) { t.app->DelayedQuite(); }},
                         {"advance", [&](const QString& a) { t.clock.Advance(a.toUInt()); }},
                         {"running", [&](const QString&) { QVERIFY(t.app->IsInitialised()); }}});
        QVERIFY(!t.app->IsInitialised());
        QCOMPARE(lcPort.written, QList<QByteArray>({kGoodbye}));
        QCOMPARE(t.LogLines(), QStringList({"K.V.T. Download Software 1.0.0", "Logging started", "Logging stopped", ""}));
        QVERIFY(QFile::exists(t.Home() + QStringLiteral("kvtDsw.ini")));
        QCOMPARE(t.window.calls.count(QStringLiteral("GiveUpWork")), 1);
    }

    // Warnings are not shown; an error is, with the event loop's time of day, and is consumed.
    void handleErrorShowsOnlyErrors()
    {
        TestApp t;
        clsError lcWarning;
        lcWarning.SetWarning(0x60000006);
        t.app->HandleError(lcWarning);
        QVERIFY(t.window.statusLines.isEmpty());
        t.clock.SetDateTime(QDateTime(QDate(2026, 11, 2), QTime(9, 5, 7)));
        t.clock.Advance(3000);
        clsError lcError;
        lcError.SetError(ErrorCode::CancelledByUser);
        QCOMPARE(lcError.DateTime(), QStringLiteral("02 November 2026 09:05:10"));
        t.app->HandleError(lcError);
        QCOMPARE(t.window.LastStatus(), QStringLiteral("Action cancelled by user."));
        QCOMPARE(lcError.Error(), 0);
        QCOMPARE(t.LogLines().mid(2), QStringList{"ERROR Action cancelled by user."});
    }

    void logTrouble_data()
    {
        QTest::addColumn<LogTrouble>("c");
        // the log is a directory: it cannot even be opened
        QTest::newRow("no log at start-up")
            << LogTrouble{0, 0, "Unable to write the log file (Path/File access error: %1kvtDsw.log), going on without a log"};
        QTest::newRow("disk full in an operation") << LogTrouble{1, int(VbError::DeviceIOError), "Device I/O error: %1kvtDsw.log"};
        QTest::newRow("disk full at shut-down") << LogTrouble{2, 0, ""};
    }
    // The log never costs the user the settings, and never stops the program; a
    // line that cannot be written mid-run is the running operation's error.
    void logTrouble()
    {
        QFETCH(LogTrouble, c);
        const auto& [when, number, status] = c;
        if (!QFileInfo::exists(QStringLiteral("/dev/full")))
            QSKIP("needs /dev/full");
        RecordingSerialPort lcPort;
        lcPort.canOpen = false;
        lcPort.openError = QStringLiteral("Unable to open serial port");
        TestApp t(&lcPort, false);
        t.app->SetPortDiscovery([](clsError& rcError) {
            rcError.SetError(ErrorCode::NoUsbInterface);
            return clsFoundPort{};
        });
        const QString lsLog = t.Home() + QStringLiteral("kvtDsw.log");
        const auto lcBreakLog = [&]() { QVERIFY(QFile::remove(lsLog) && QFile::link(QStringLiteral("/dev/full"), lsLog)); };
        if (when == 0)
            QVERIFY(QDir().mkpath(lsLog));
        t.app->Init();
        QVERIFY(t.app->IsInitialised());
        if (when == 0)
            QCOMPARE(t.window.statusLines.first(), status.arg(t.Home()));
        if (when == 1)
            lcBreakLog();
        // The port's failure to open is logged from inside the codec's send: never thrown from there.
        QVERIFY(!t.app->SendString(kGoodbye));
        const clsOutcome lcOutcome = t.app->RunOperation([&](clsError&) { t.app->MessageBrooker().Send(0x10, QString()); });
        QCOMPARE(lcOutcome.Number, number);
        if (when == 1)
            QCOMPARE(t.window.LastStatus(), status.arg(t.Home()));
        QVERIFY(!t.app->CommunicationIsRunning());
        if (when == 2)
            lcBreakLog();
        t.app->Settings().SetcomPort(4);
        t.app->Quite();
        QVERIFY(!t.app->IsInitialised());
        QCOMPARE(PrivateProfile::GetInt(QStringLiteral("Common"), QStringLiteral("Com"), 1, t.Home() + QStringLiteral("kvtDsw.ini")), 4L);
    }

    void portDiscoveryAtStartUp_data()
    {
        QTest::addColumn<FoundCase>("c");
        QTest::newRow("no USB interface")
            << FoundCase{"", ErrorCode::NoUsbInterface, "1", clsError::TableText(ErrorCode::NoUsbInterface).left(90).trimmed()};
        QTest::newRow("found COM7") << FoundCase{"7", 0, "7", ""};
        QTest::newRow("found by path") << FoundCase{"/dev/ttyUSB0", 0, "/dev/ttyUSB0", ""};
    }
    // A search that fails is shown once and start-up goes on with the port of the settings.
    void portDiscoveryAtStartUp()
    {
        QFETCH(FoundCase, c);
        const auto& [found, error, port, status] = c;
        RecordingSerialPort lcPort;
        TestApp t(&lcPort, false);
        t.app->SetPortDiscovery([&](clsError& rcError) {
            if (c.error)
                rcError.SetError(c.error);
            return clsFoundPort{c.found, !c.found.isEmpty()};
        });
        t.app->Init();
        QVERIFY(t.app->IsInitialised());
        QCOMPARE(t.window.statusLines.filter(status).size(), status.isEmpty() ? t.window.statusLines.size() : 1);
        QCOMPARE(t.window.LastStatus(), status);
        QCOMPARE(lcPort.CommPort(), port);
        QCOMPARE(t.app->UsbComport().Found, !found.isEmpty());
        QCOMPARE(t.app->Settings().comPort(), 1);
    }

    void unsavableSettingsAreToldOnce_data()
    {
        QTest::addColumn<QString>("what"); // what kvtDsw.ini is at shut-down
        QTest::addColumn<QString>("problem");
        QTest::newRow("a file") << "file" << "";
        QTest::newRow("missing") << "missing" << "";
        QTest::newRow("a directory") << "directory" << " is a directory";
    }
    void unsavableSettingsAreToldOnce()
    {
        QFETCH(QString, what);
        QFETCH(QString, problem);
        TestApp t;
        const QString lsIni = t.Home() + QStringLiteral("kvtDsw.ini");
        if (what == QLatin1String("file"))
            QVERIFY(QFile(lsIni).open(QIODevice::WriteOnly));
        if (what == QLatin1String("directory"))
            QVERIFY(QDir().mkdir(lsIni));
        t.app->Quite();
        const QString lsText = QStringLiteral("The settings cannot be saved: ") + QDir::toNativeSeparators(lsIni) + problem;
        const QStringList lcLog = t.LogLines();
        QCOMPARE(QFileInfo(lsIni).isDir(), !problem.isEmpty());
        if (problem.isEmpty()) {
            QVERIFY(t.dialogs.boxes.isEmpty());
            QVERIFY(!lcLog.join(QLatin1Char('\n')).contains(QStringLiteral("ERROR")));
            return;
        }
        QCOMPARE(t.dialogs.boxes.size(), 1);
        QCOMPARE(t.dialogs.boxes[0].text, lsText);
        QCOMPARE(t.dialogs.boxes[0].title, QStringLiteral("Corvane Desktop"));
        QCOMPARE(lcLog.mid(lcLog.size() - 3), QStringList({QStringLiteral("ERROR ") + lsText, "Logging stopped", ""}));
    }
};

QTEST_GUILESS_MAIN(tst_application)
#include "tst_application.moc"
