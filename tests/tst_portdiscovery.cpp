// The search for the KVT USB interface's port in a fake registry, the port
// the user picks by hand, and the greeting of a display plugged in, on the
// virtual clock against the simulated display.

#include "SimRig.h"
#include "TestFiles.h"
#include "app/clsSettings.h"
#include "link/clsUsbPortSearch.h"

#include <QtTest>

struct Pick { QString choice; int com; QString path; };
struct Greeting { bool plugged; QList<int> funcs; QStringList screen; };

class tst_portdiscovery : public QObject
{
    Q_OBJECT
private slots:
    void search_data() { AddTableRows(QStringLiteral("usb-port-search.txt")); }
    void search()
    {
        QFETCH(QStringList, row);
        const QString family = row[1], port = row[3];
        const QStringList registry = row[2].split(QLatin1Char(';'), Qt::SkipEmptyParts);
        const int error = int(row[4].toUInt(nullptr, 16));
        FakeRegistry lcRegistry;
        lcRegistry.family = family == QLatin1String("NT")   ? IRegistry::Family::WindowsNT
                            : family == QLatin1String("9x") ? IRegistry::Family::Windows9x
                                                            : IRegistry::Family::Other;
        for (QString lsEntry : registry) {
            lsEntry = lsEntry.trimmed();
            if (lsEntry.startsWith(QLatin1String("device="))) {
                const QStringList lcDevice = lsEntry.mid(7).split(QLatin1Char(','));
                const quint16 llVendor = quint16(lcDevice[1].toUInt(nullptr, 16));
                lcRegistry.devices << IRegistry::SerialDevice{lcDevice[0], QString(), llVendor != 0, llVendor,
                                                              quint16(lcDevice[2].toUInt(nullptr, 16))};
                continue;
            }
            if (lsEntry.startsWith(QLatin1String("S\\")))
                lsEntry.replace(0, 2, QStringLiteral("HKLM\\SYSTEM\\CurrentControlSet\\Services\\FTSER2K\\Enum\\"));
            else if (lsEntry.startsWith(QLatin1String("E\\")))
                lsEntry.replace(0, 2, QStringLiteral("HKLM\\SYSTEM\\CurrentControlSet\\Enum\\"));
            else if (lsEntry.startsWith(QLatin1String("C\\")) || lsEntry.startsWith(QLatin1String("C>")))
                lsEntry.replace(0, 1, QStringLiteral("DYN\\Config Manager\\Enum"));
            const QString lsPath = lsEntry.section(QLatin1Char('='), 0, 0);
            const QString lsValue = lsEntry.section(QLatin1Char('='), 1);
            if (lsPath.endsWith(QLatin1Char('>')))
                lcRegistry.subKeys[lsPath.chopped(1)] = lsValue.split(QLatin1Char(','));
            else
                lcRegistry.values[lsPath] = lsValue;
        }
        clsError lcError;
        const clsFoundPort lcFound = clsUsbPortSearch(lcRegistry).Find(lcError);
        QCOMPARE(lcFound.Port, port);
        QCOMPARE(lcFound.Found, !port.isEmpty());
        QCOMPARE(lcError.Error(), error);
    }

    void pickPortByHand_data()
    {
        QTest::addColumn<Pick>("c");
        QTest::newRow("cancelled keeps the port") << Pick{"", 1, ""};
        QTest::newRow("Com3") << Pick{"3", 3, ""};
        QTest::newRow("a device path") << Pick{"/dev/ttyUSB0", 1, "/dev/ttyUSB0"};
    }
    void pickPortByHand()
    {
        QFETCH(Pick, c);
        const auto& [choice, com, path] = c;
        TestApp t;
        if (!choice.isEmpty())
            t.dialogs.portChoices << choice;
        t.app->GetCorrectComPortFromUser();
        QCOMPARE(t.dialogs.portsShown, QStringList{QStringLiteral("1")});
        QCOMPARE(t.app->Settings().comPort(), com);
        QCOMPARE(t.app->Settings().PortPath(), path);
    }

    void greeting_data()
    {
        QTest::addColumn<Greeting>("c");
        QTest::newRow("display just plugged in")
            << Greeting{true, {0xD0, 0x0B, 0x0B, 0x10, 0x0F, 0x0F, 0xD1}, {"Connected to", "Corvane Desktop"}};
        QTest::newRow("display was there before") << Greeting{false, {0xD0}, {}};
    }
    // The first tick comes a second after start-up; the greeting is centred at 6
    // pixels a character on the 130-pixel screen. (The tick stays off the line
    // while an operation owns it: tst_operation.)
    void greeting()
    {
        QFETCH(Greeting, c);
        const auto& [plugged, funcs, screen] = c;
        SimRig r;
        r.display.SetJustConnected(plugged);
        r.app().Start([&]() { r.clock->Advance(1500); });
        QCOMPARE(r.Funcs().mid(0, funcs.size()), funcs);
        QCOMPARE(r.display.ScreenText(), screen);
        if (!plugged)
            return;
        QCOMPARE(r.display.ScreenPlaces(), (QList<QByteArray>{QByteArray::fromHex("1d180001"), QByteArray::fromHex("14200001")}));
        QCOMPARE(r.t.window.statusLines.filter(QRegularExpression(QStringLiteral("^Display Detected \\(\\d\\d:\\d\\d:\\d\\d\\)"))).size(), 1);
        QVERIFY(r.display.LowCurrent());
    }
};

QTEST_GUILESS_MAIN(tst_portdiscovery)
#include "tst_portdiscovery.moc"
