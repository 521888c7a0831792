// Platform pieces the rest stands on: Windows-1252 text and the virtual clock.

#include "platform/Cp1252.h"
#include "platform/VirtualClock.h"

#include <QTest>

class tst_platform : public QObject
{
    Q_OBJECT
private slots:
    void cp1252_data();
    void cp1252();
    void cp1252RoundTripsEveryByte();
    void waitJumpsToNextEvent();
    void waitStopsAtDeadline();
    void eventsRunInTimeOrder();
    void sleepDefersEvents();
};

void tst_platform::cp1252_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("ascii") << QByteArray("Gent (BE)") << QStringLiteral("Gent (BE)");
    QTest::newRow("latin-1 range") << QByteArray("Li\xE8ge") << QStringLiteral("Li\u00E8ge");
    QTest::newRow("euro and quotes") << QByteArray("\x80\x93\x94") << QStringLiteral("\u20AC\u201C\u201D");
    QTest::newRow("unassigned byte") << QByteArray("\x81") << QStringLiteral("\u0081");
}

void tst_platform::cp1252()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, text);
    QCOMPARE(Cp1252::Decode(bytes), text);
    QCOMPARE(Cp1252::Encode(text), bytes);
}

void tst_platform::cp1252RoundTripsEveryByte()
{
    QByteArray lcAll;
    for (int i = 0; i < 256; ++i)
        lcAll.append(char(i));
    QCOMPARE(Cp1252::Encode(Cp1252::Decode(lcAll)), lcAll);
    QCOMPARE(Cp1252::Encode(QStringLiteral("\u4E2D")), QByteArray("?"));
}

void tst_platform::waitJumpsToNextEvent()
{
    VirtualClock lcClock;
    bool lbDelivered = false;
    lcClock.ScheduleIn(35, [&]() { lbDelivered = true; });
    lcClock.WaitForEvents(1000);
    QVERIFY(lbDelivered);
    QCOMPARE(lcClock.timeGetTime(), 35u);
}

void tst_platform::waitStopsAtDeadline()
{
    VirtualClock lcClock;
    bool lbDelivered = false;
    lcClock.ScheduleIn(2000, [&]() { lbDelivered = true; });
    lcClock.WaitForEvents(1000);
    QVERIFY(!lbDelivered);
    QCOMPARE(lcClock.timeGetTime(), 1000u);
}

void tst_platform::eventsRunInTimeOrder()
{
    VirtualClock lcClock;
    QString lsOrder;
    lcClock.ScheduleIn(30, [&]() { lsOrder += QLatin1Char('c'); });
    lcClock.ScheduleIn(10, [&]() { lsOrder += QLatin1Char('a'); });
    lcClock.ScheduleIn(10, [&]() { lsOrder += QLatin1Char('b'); });
    const int llTimer = lcClock.SetTimer(25, [&](int) { lsOrder += QLatin1Char('t'); });
    lcClock.Advance(60);
    QCOMPARE(lsOrder, QStringLiteral("abtct"));
    QVERIFY(lcClock.KillTimer(llTimer));
    QVERIFY(!lcClock.KillTimer(llTimer));
}

void tst_platform::sleepDefersEvents()
{
    VirtualClock lcClock;
    bool lbDelivered = false;
    lcClock.ScheduleIn(5, [&]() { lbDelivered = true; });
    lcClock.Sleep(100);
    QVERIFY(!lbDelivered);
    lcClock.DoEvents();
    QVERIFY(lbDelivered);
    QCOMPARE(lcClock.timeGetTime(), 100u);
}

QTEST_GUILESS_MAIN(tst_platform)
#include "tst_platform.moc"
