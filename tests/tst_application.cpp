// Start-up and shut-down of the application object and its small services.

#include "RecordingSerialPort.h"
#include "TestApp.h"
#include "app/clsSettings.h"

#include <QDir>
#include <QFile>
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
    void portDiscoveryAtStartUp_data();
    void portDiscoveryAtStartUp();
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

    clsError lcError;
    lcError.SetError(ErrorCode::CancelledByUser);
    lcTest.app->HandleError(lcError);
    QCOMPARE(lcTest.window.LastStatus(), QStringLiteral("Action cancelled by user."));
    QCOMPARE(lcError.Error(), 0);
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
    QCOMPARE(lcTest.window.LastStatus(), status);
    QCOMPARE(lcPort.CommPort(), port);
    QCOMPARE(lcTest.app->UsbComport().Found, !found.isEmpty());
    QCOMPARE(lcTest.app->Settings().comPort(), 1);
}

QTEST_GUILESS_MAIN(tst_application)
#include "tst_application.moc"
