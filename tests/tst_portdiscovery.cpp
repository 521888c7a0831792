// The search for the KVT USB interface's port in a fake registry, the port
// the user picks by hand, and the greeting of a display plugged in, on the
// virtual clock against the simulated display.

#include "SimRig.h"
#include "app/clsSettings.h"
#include "link/clsUsbPortSearch.h"

#include <QtTest>

using Family = IRegistry::Family;
Q_DECLARE_METATYPE(IRegistry::Family)

namespace {
const QString kService = QStringLiteral("HKLM\\SYSTEM\\CurrentControlSet\\Services\\FTSER2K\\Enum\\");
const QString kEnum = QStringLiteral("HKLM\\SYSTEM\\CurrentControlSet\\Enum\\");
const QString kConfig = QStringLiteral("DYN\\Config Manager\\Enum");

// "path=value" entries; a path ending in ">" lists sub-keys ("key>=a,b").
void Fill(FakeRegistry& rcRegistry, const QStringList& vcEntries)
{
    for (const QString& lsEntry : vcEntries) {
        const int llEquals = lsEntry.indexOf(QLatin1Char('='));
        const QString lsPath = lsEntry.left(llEquals);
        const QString lsValue = lsEntry.mid(llEquals + 1);
        if (lsPath.endsWith(QLatin1Char('>')))
            rcRegistry.subKeys[lsPath.chopped(1)] = lsValue.split(QLatin1Char(','));
        else
            rcRegistry.values[lsPath] = lsValue;
    }
}

IRegistry::SerialDevice Device(const QString& vsPort, quint16 vlVendor, quint16 vlProduct)
{
    return IRegistry::SerialDevice{vsPort, QString(), vlVendor != 0, vlVendor, vlProduct};
}
}

class tst_portdiscovery : public QObject
{
    Q_OBJECT
private slots:
    void search_data();
    void search();
    void startUpWithoutInterface();
    void pickPortByHand_data();
    void pickPortByHand();
    void greeting_data();
    void greeting();
    void noGreetingDuringOperation();
};

void tst_portdiscovery::search_data()
{
    QTest::addColumn<Family>("family");
    QTest::addColumn<QStringList>("registry");
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("error");

    const QString lsSecond = QStringLiteral("FTDIBUS\\VID_0403+PID_E990+KVT01\\0000");
    QTest::newRow("two FTDI devices, the second ours")
        << Family::WindowsNT
        << QStringList{kService + "Count=2", kService + "0=FTDIBUS\\VID_0403+PID_6001+A1\\0000", kService + "1=" + lsSecond,
                       kEnum + "FTDIBUS\\VID_0403+PID_6001+A1\\0000\\Device Parameters\\PortName=COM4",
                       kEnum + lsSecond + "\\Device Parameters\\PortName=COM7"}
        << "7" << 0;
    QTest::newRow("COM12 gives 12") << Family::WindowsNT
                                    << QStringList{kService + "Count=1", kService + "0=" + lsSecond,
                                                   kEnum + lsSecond + "\\Device Parameters\\PortName=COM12"}
                                    << "12" << 0;
    QTest::newRow("identifier in lower case") << Family::WindowsNT
                                              << QStringList{kService + "Count=1", kService + "0=ftdibus\\vid_0403+pid_e990",
                                                             kEnum + "ftdibus\\vid_0403+pid_e990\\Device Parameters\\PortName=COM3"}
                                              << "3" << 0;
    QTest::newRow("no driver service") << Family::WindowsNT << QStringList{} << "" << ErrorCode::NoUsbInterface;
    QTest::newRow("service counts none") << Family::WindowsNT << QStringList{kService + "Count=0"} << ""
                                         << ErrorCode::NoUsbInterface;
    QTest::newRow("only other FTDI devices")
        << Family::WindowsNT << QStringList{kService + "Count=1", kService + "0=FTDIBUS\\VID_0403+PID_6001"} << "" << 0;
    QTest::newRow("port name missing") << Family::WindowsNT << QStringList{kService + "Count=1", kService + "0=" + lsSecond}
                                       << "" << 0;
    QTest::newRow("port name too short") << Family::WindowsNT
                                         << QStringList{kService + "Count=1", kService + "0=" + lsSecond,
                                                        kEnum + lsSecond + "\\Device Parameters\\PortName=CO"}
                                         << "" << 0;

    const QString lsHardware = QStringLiteral("FTDIBUS\\VID_0403+PID_E990\\0000");
    QTest::newRow("configuration manager, second device ours")
        << Family::Windows9x
        << QStringList{kConfig + ">=C29A0000,C29B0000", kConfig + "\\C29A0000\\HardWareKey=PCI\\VEN_8086",
                       kConfig + "\\C29B0000\\HardWareKey=" + lsHardware, "HKLM\\Enum\\" + lsHardware + "\\PortName=COM5"}
        << "5" << 0;
    QTest::newRow("configuration manager, not on the FTDI bus")
        << Family::Windows9x
        << QStringList{kConfig + ">=C29A0000", kConfig + "\\C29A0000\\HardWareKey=USB\\VID_0403+PID_E990",
                       "HKLM\\Enum\\USB\\VID_0403+PID_E990\\PortName=COM5"}
        << "" << 0;
    QTest::newRow("configuration manager, port 0 is none")
        << Family::Windows9x
        << QStringList{kConfig + ">=C29B0000", kConfig + "\\C29B0000\\HardWareKey=" + lsHardware,
                       "HKLM\\Enum\\" + lsHardware + "\\PortName=COM"}
        << "" << 0;
}

void tst_portdiscovery::search()
{
    QFETCH(Family, family);
    QFETCH(QStringList, registry);
    QFETCH(QString, port);
    QFETCH(int, error);

    FakeRegistry lcRegistry;
    lcRegistry.family = family;
    Fill(lcRegistry, registry);
    clsError lcError;
    const clsFoundPort lcFound = clsUsbPortSearch(lcRegistry).Find(lcError);
    QCOMPARE(lcFound.Port, port);
    QCOMPARE(lcFound.Found, !port.isEmpty());
    QCOMPARE(lcError.Error(), error);
}

// Without a registry the serial devices' own USB identity decides; with no
// interface start-up reports the error once and keeps the settings' port.
void tst_portdiscovery::startUpWithoutInterface()
{
    for (const bool lbPlugged : {false, true}) {
        TestApp lcTest(nullptr, false);
        lcTest.registry.family = Family::Other;
        lcTest.registry.devices = {Device(QStringLiteral("/dev/ttyS0"), 0, 0),
                                   Device(QStringLiteral("/dev/ttyUSB0"), 0x0403, 0x6001)};
        if (lbPlugged)
            lcTest.registry.devices << Device(QStringLiteral("/dev/ttyUSB1"), 0x0403, 0xE990);
        clsApplication& lcApp = *lcTest.app;
        lcApp.SetPortDiscovery([&](clsError& rcError) { return lcApp.FindUsbComport(rcError); });
        lcApp.Init();
        QCOMPARE(lcApp.UsbComport().Found, lbPlugged);
        QCOMPARE(lcApp.UsbComport().Port, lbPlugged ? QStringLiteral("/dev/ttyUSB1") : QString());
        const QString lsError = clsError::TableText(ErrorCode::NoUsbInterface);
        QCOMPARE(lcTest.window.statusLines.filter(lsError).size(), lbPlugged ? 0 : 1);
        QVERIFY(lcApp.IsInitialised());
    }
}

void tst_portdiscovery::pickPortByHand_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<int>("com");
    QTest::addColumn<QString>("path");

    QTest::newRow("cancelled keeps the port") << "" << 1 << "";
    QTest::newRow("Com3") << "3" << 3 << "";
    QTest::newRow("a device path") << "/dev/ttyUSB0" << 1 << "/dev/ttyUSB0";
}

void tst_portdiscovery::pickPortByHand()
{
    QFETCH(QString, choice);
    QFETCH(int, com);
    QFETCH(QString, path);

    TestApp lcTest;
    if (!choice.isEmpty())
        lcTest.dialogs.portChoices << choice;
    lcTest.app->GetCorrectComPortFromUser();
    QCOMPARE(lcTest.dialogs.portsShown, QStringList{QStringLiteral("1")});
    QCOMPARE(lcTest.app->Settings().comPort(), com);
    QCOMPARE(lcTest.app->Settings().PortPath(), path);
}

void tst_portdiscovery::greeting_data()
{
    QTest::addColumn<bool>("plugged");
    QTest::addColumn<QList<int>>("funcs");
    QTest::addColumn<QStringList>("screen");

    QTest::newRow("display just plugged in")
        << true << QList<int>{0xD0, 0x0B, 0x0B, 0x10, 0x0F, 0x0F, 0xD1}
        << QStringList{QStringLiteral("Connected to"), QStringLiteral("Corvane Desktop")};
    QTest::newRow("display was there before") << false << QList<int>{0xD0} << QStringList{};
}

// The first tick comes a second after start-up; the greeting is centred at 6
// pixels a character on the 130-pixel screen.
void tst_portdiscovery::greeting()
{
    QFETCH(bool, plugged);
    QFETCH(QList<int>, funcs);
    QFETCH(QStringList, screen);

    SimRig lcRig;
    lcRig.display.SetJustConnected(plugged);
    lcRig.app().Start([&]() { lcRig.clock->Advance(1500); });
    QList<int> lcFirst = lcRig.Funcs().mid(0, funcs.size());
    QCOMPARE(lcFirst, funcs);
    QCOMPARE(lcRig.display.ScreenText(), screen);
    if (!plugged)
        return;
    QCOMPARE(lcRig.display.ScreenPlaces(),
             (QList<QByteArray>{QByteArray::fromHex("1d180001"), QByteArray::fromHex("14200001")}));
    QVERIFY(lcRig.t.window.statusLines.filter(QRegularExpression(QStringLiteral("^Display Detected \\(\\d\\d:\\d\\d:\\d\\d\\)"))).size() == 1);
    QVERIFY(lcRig.display.LowCurrent());
}

// While an operation owns the line the tick stays off it; afterwards it probes again.
void tst_portdiscovery::noGreetingDuringOperation()
{
    SimRig lcRig;
    lcRig.display.SetJustConnected(true);
    lcRig.app().Start([&]() {
        lcRig.app().StopAutoDetection();
        lcRig.clock->Advance(5000);
        QCOMPARE(lcRig.Funcs(), QList<int>{});
        lcRig.app().StartAutoDetection();
        lcRig.clock->Advance(1500);
        QCOMPARE(lcRig.Funcs().value(0), 0xD0);
    });
}

QTEST_GUILESS_MAIN(tst_portdiscovery)
#include "tst_portdiscovery.moc"
