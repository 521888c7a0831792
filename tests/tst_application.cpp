// Start-up and shut-down of the application object and its small services.

#include "RecordingSerialPort.h"
#include "TestApp.h"
#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/PrivateProfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace {
const QByteArray kGoodbye = QByteArray::fromHex("00006601071070"); // 0x10 with no arguments
}

class tst_application : public QObject
{
    Q_OBJECT
private slots:
    void directoryFromPath_data();
    void directoryFromPath();
    void versionAndName();
    void stdDirectoryFollowsHome();
    void initOpensLogAndReadsSettings();
    void quitTwiceShutsDownOnce();
    void closingAfterQuitDoesNothingMore();
    void delayedQuitWaits200ms();
    void handleErrorShowsOnlyErrors();
    void logTrouble_data();
    void logTrouble();
    void portDiscoveryAtStartUp_data();
    void portDiscoveryAtStartUp();
    void unsavableSettingsAreToldOnce_data();
    void unsavableSettingsAreToldOnce();
};

void tst_application::directoryFromPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("directory");
    QTest::newRow("no separator") << "trips.txt" << "";
    QTest::newRow("windows path") << "C:\\Corvane\\trips.txt" << "C:\\Corvane\\";
    QTest::newRow("ends in separator") << "C:\\Corvane\\" << "C:\\Corvane\\";
    QTest::newRow("unix path") << "/home/driver/trips.txt" << "/home/driver/";
    QTest::newRow("empty") << "" << "";
}

void tst_application::directoryFromPath()
{
    QFETCH(QString, path);
    QFETCH(QString, directory);
    QCOMPARE(clsApplication::GetDirectoryFromPath(path), directory);
}

void tst_application::versionAndName()
{
    QCOMPARE(clsApplication::VersionString(), QStringLiteral("1.0.0"));
    QCOMPARE(clsApplication::ApplicationName(), QStringLiteral("Corvane Desktop"));
}

void tst_application::stdDirectoryFollowsHome()
{
    TestApp lcTest(nullptr, false);
    QCOMPARE(lcTest.app->StdDirectory(), QDir::toNativeSeparators(lcTest.home.path()) + QDir::separator());
}

void tst_application::initOpensLogAndReadsSettings()
{
    TestApp lcTest(nullptr, false);
    QFile lcIni(lcTest.Home() + QStringLiteral("kvtDsw.ini"));
    QVERIFY(lcIni.open(QIODevice::WriteOnly));
    lcIni.write("[Common]\r\nCom=7\r\n");
    lcIni.close();
    lcTest.app->Init();
    QCOMPARE(lcTest.app->Settings().comPort(), 7);
    QCOMPARE(lcTest.LogLines(), QStringList({"K.V.T. Download Software 1.0.0", "Logging started"}));
    QVERIFY(lcTest.app->IsInitialised());
}

void tst_application::quitTwiceShutsDownOnce()
{
    RecordingSerialPort lcPort;
    TestApp lcTest(&lcPort);
    lcTest.app->Quite();
    lcTest.app->Quite();
    QCOMPARE(lcPort.written, QList<QByteArray>({kGoodbye}));
    QCOMPARE(lcTest.LogLines().count(QStringLiteral("Logging stopped")), 1);
    QVERIFY(QFile::exists(lcTest.Home() + QStringLiteral("kvtDsw.ini")));
    QCOMPARE(lcTest.window.calls.count(QStringLiteral("GiveUpWork")), 1);
}

void tst_application::closingAfterQuitDoesNothingMore()
{
    RecordingSerialPort lcPort;
    TestApp lcTest(&lcPort);
    lcTest.app->Start([&]() { lcTest.app->Quite(); });
    QCOMPARE(lcPort.written.size(), 1);
    QVERIFY(!lcTest.app->MainWindowShown());
    QCOMPARE(lcTest.LogLines().count(QStringLiteral("Logging stopped")), 1);
}

void tst_application::delayedQuitWaits200ms()
{
    RecordingSerialPort lcPort;
    TestApp lcTest(&lcPort);
    lcTest.app->DelayedQuite();
    lcTest.clock.Advance(199);
    QVERIFY(lcTest.app->IsInitialised());
    lcTest.clock.Advance(1);
    QVERIFY(!lcTest.app->IsInitialised());
    QCOMPARE(lcPort.written, QList<QByteArray>({kGoodbye}));
}

void tst_application::handleErrorShowsOnlyErrors()
{
    TestApp lcTest;
    clsError lcWarning;
    lcWarning.SetWarning(0x60000006);
    lcTest.app->HandleError(lcWarning);
    QVERIFY(lcTest.window.statusLines.isEmpty());

    // the error's date is the event loop's time of day
    lcTest.clock.SetDateTime(QDateTime(QDate(2026, 11, 2), QTime(9, 5, 7)));
    lcTest.clock.Advance(3000);
    clsError lcError;
    lcError.SetError(ErrorCode::CancelledByUser);
    QCOMPARE(lcError.DateTime(), QStringLiteral("02 November 2026 09:05:10"));
    lcTest.app->HandleError(lcError);
    QCOMPARE(lcTest.window.LastStatus(), QStringLiteral("Action cancelled by user."));
    QCOMPARE(lcError.Error(), 0);
    QCOMPARE(lcTest.LogLines().mid(2), QStringList{"ERROR Action cancelled by user."});
}

void tst_application::logTrouble_data()
{
    QTest::addColumn<int>("when");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("status");
    // the log is a directory: it cannot even be opened
    QTest::newRow("no log at start-up") << 0 << 0
                                        << "Unable to write the log file (Path/File access error: %1kvtDsw.log), "
                                           "going on without a log";
    QTest::newRow("disk full in an operation") << 1 << int(VbError::DeviceIOError)
                                               << "Device I/O error: %1kvtDsw.log";
    QTest::newRow("disk full at shut-down") << 2 << 0 << "";
}

// The log never costs the user the settings, and never stops the program; a
// line that cannot be written mid-run is the running operation's error.
void tst_application::logTrouble()
{
    QFETCH(int, when);
    QFETCH(int, number);
    QFETCH(QString, status);
    if (!QFileInfo::exists(QStringLiteral("/dev/full")))
        QSKIP("needs /dev/full");
    RecordingSerialPort lcPort;
    lcPort.canOpen = false;
    lcPort.openError = QStringLiteral("Unable to open serial port");
    TestApp lcTest(&lcPort, false);
    lcTest.app->SetPortDiscovery([](clsError& rcError) {
        rcError.SetError(ErrorCode::NoUsbInterface);
        return clsFoundPort{};
    });
    const QString lsLog = lcTest.Home() + QStringLiteral("kvtDsw.log");
    const auto lcBreakLog = [&]() { QVERIFY(QFile::remove(lsLog) && QFile::link(QStringLiteral("/dev/full"), lsLog)); };
    if (when == 0)
        QVERIFY(QDir().mkpath(lsLog));
    lcTest.app->Init();
    QVERIFY(lcTest.app->IsInitialised());
    if (when == 0)
        QCOMPARE(lcTest.window.statusLines.first(), status.arg(lcTest.Home()));
    if (when == 1)
        lcBreakLog();
    // The port's failure to open is logged from inside the codec's send: never thrown from there.
    QVERIFY(!lcTest.app->SendString(kGoodbye));
    const clsOutcome lcOutcome =
        lcTest.app->RunOperation([&](clsError&) { lcTest.app->MessageBrooker().Send(0x10, QString()); });
    QCOMPARE(lcOutcome.Number, number);
    if (when == 1)
        QCOMPARE(lcTest.window.LastStatus(), status.arg(lcTest.Home()));
    QVERIFY(!lcTest.app->CommunicationIsRunning());
    if (when == 2)
        lcBreakLog();
    lcTest.app->Settings().SetcomPort(4);
    lcTest.app->Quite();
    QVERIFY(!lcTest.app->IsInitialised());
    QCOMPARE(PrivateProfile::GetInt(QStringLiteral("Common"), QStringLiteral("Com"), 1,
                                                  lcTest.Home() + QStringLiteral("kvtDsw.ini")),
             4L);
}

void tst_application::portDiscoveryAtStartUp_data()
{
    QTest::addColumn<QString>("found");
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("status");
    QTest::newRow("no USB interface") << "" << ErrorCode::NoUsbInterface << "1"
                                      << clsError::TableText(ErrorCode::NoUsbInterface).left(90).trimmed();
    QTest::newRow("found COM7") << "7" << 0 << "7" << "";
    QTest::newRow("found by path") << "/dev/ttyUSB0" << 0 << "/dev/ttyUSB0" << "";
}

// A search that fails is shown and start-up goes on with the port of the settings.
void tst_application::portDiscoveryAtStartUp()
{
    QFETCH(QString, found);
    QFETCH(int, error);
    QFETCH(QString, port);
    QFETCH(QString, status);
    RecordingSerialPort lcPort;
    TestApp lcTest(&lcPort, false);
    lcTest.app->SetPortDiscovery([&](clsError& rcError) {
        if (error)
            rcError.SetError(error);
        return clsFoundPort{found, !found.isEmpty()};
    });
    lcTest.app->Init();
    QVERIFY(lcTest.app->IsInitialised());
    QCOMPARE(lcTest.window.LastStatus(), status.arg(lcTest.Home()));
    QCOMPARE(lcPort.CommPort(), port);
    QCOMPARE(lcTest.app->UsbComport().Found, !found.isEmpty());
    QCOMPARE(lcTest.app->Settings().comPort(), 1);
}

void tst_application::unsavableSettingsAreToldOnce_data()
{
    QTest::addColumn<QString>("what"); // what kvtDsw.ini is at shut-down
    QTest::addColumn<QString>("problem");
    QTest::newRow("a file") << "file" << "";
    QTest::newRow("missing") << "missing" << "";
    QTest::newRow("a directory") << "directory" << " is a directory";
}

void tst_application::unsavableSettingsAreToldOnce()
{
    QFETCH(QString, what);
    QFETCH(QString, problem);
    TestApp lcTest;
    const QString lsIni = lcTest.Home() + QStringLiteral("kvtDsw.ini");
    if (what == QLatin1String("file"))
        QVERIFY(QFile(lsIni).open(QIODevice::WriteOnly));
    if (what == QLatin1String("directory"))
        QVERIFY(QDir().mkdir(lsIni));
    lcTest.app->Quite();

    const QString lsText = QStringLiteral("The settings cannot be saved: ") + QDir::toNativeSeparators(lsIni) + problem;
    const QStringList lcLog = lcTest.LogLines();
    if (problem.isEmpty()) {
        QVERIFY(lcTest.dialogs.boxes.isEmpty());
        QVERIFY(!lcLog.join(QLatin1Char('\n')).contains(QStringLiteral("ERROR")));
        QVERIFY(QFileInfo(lsIni).isFile());
        return;
    }
    QCOMPARE(lcTest.dialogs.boxes.size(), 1);
    QCOMPARE(lcTest.dialogs.boxes[0].text, lsText);
    QCOMPARE(lcTest.dialogs.boxes[0].title, QStringLiteral("Corvane Desktop"));
    QCOMPARE(lcLog.mid(lcLog.size() - 3), QStringList({QStringLiteral("ERROR ") + lsText, "Logging stopped", ""}));
    QVERIFY(QFileInfo(lsIni).isDir());
}

QTEST_GUILESS_MAIN(tst_application)
#include "tst_application.moc"
