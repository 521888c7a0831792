// Platform pieces the rest stands on: Windows-1252 text, the virtual clock
// and the program's own event loop.

#include "platform/Cp1252.h"
#include "platform/QtEventLoop.h"
#include "platform/VirtualClock.h"

#include <QtTest>
#include <ctime>

class tst_platform : public QObject
{
    Q_OBJECT
private slots:
    void cp1252_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        QTest::newRow("ascii") << QByteArray("Gent (BE)") << QStringLiteral("Gent (BE)");
        QTest::newRow("latin-1 range") << QByteArray("Li\xE8ge") << QStringLiteral("Li\u00E8ge");
        QTest::newRow("euro and quotes") << QByteArray("\x80\x93\x94") << QStringLiteral("\u20AC\u201C\u201D");
        QTest::newRow("unassigned byte") << QByteArray("\x81") << QStringLiteral("\u0081");
    }
    void cp1252()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(Cp1252::Decode(bytes), text);
        QCOMPARE(Cp1252::Encode(text), bytes);
        QByteArray lcAll;
        for (int i = 0; i < 256; ++i)
            lcAll.append(char(i));
        QCOMPARE(Cp1252::Encode(Cp1252::Decode(lcAll)), lcAll);
        QCOMPARE(Cp1252::Encode(QStringLiteral("\u4E2D")), QByteArray("?"));
    }

    // A wait jumps to the next event or stops at its deadline; events and
    // timers run in time order; a sleep lets nothing run.
    void virtualClock()
    {
        VirtualClock lcClock;
        QString lsOrder;
        lcClock.ScheduleIn(35, [&]() { lsOrder += QLatin1Char('1'); });
        lcClock.WaitForEvents(1000);
        QCOMPARE(lsOrder, QStringLiteral("1"));
        QCOMPARE(lcClock.timeGetTime(), 35u);
        lcClock.ScheduleIn(2000, [&]() { lsOrder += QLatin1Char('2'); });
        lcClock.WaitForEvents(1000);
        QCOMPARE(lsOrder, QStringLiteral("1"));
        QCOMPARE(lcClock.timeGetTime(), 1000u);
        lcClock.Advance(1035);
        lsOrder.clear();
        lcClock.ScheduleIn(30, [&]() { lsOrder += QLatin1Char('c'); });
        lcClock.ScheduleIn(10, [&]() { lsOrder += QLatin1Char('a'); });
        lcClock.ScheduleIn(10, [&]() { lsOrder += QLatin1Char('b'); });
        const int llTimer = lcClock.SetTimer(25, [&](int) { lsOrder += QLatin1Char('t'); });
        lcClock.Advance(60);
        QCOMPARE(lsOrder, QStringLiteral("abtct"));
        QVERIFY(lcClock.KillTimer(llTimer));
        QVERIFY(!lcClock.KillTimer(llTimer));
        lcClock.ScheduleIn(5, [&]() { lsOrder += QLatin1Char('s'); });
        lcClock.Sleep(100);
        QCOMPARE(lsOrder, QStringLiteral("abtct"));
        lcClock.DoEvents();
        QCOMPARE(lsOrder, QStringLiteral("abtcts"));
        QCOMPARE(lcClock.timeGetTime(), 2195u);
    }

    // The program's loop: a wait delivers events as they come, returns at its
    // deadline and sleeps meanwhile instead of spinning a core.
    void qtEventLoop()
    {
        QtEventLoop lcLoop;
        bool lbFired = false;
        QTimer::singleShot(5, this, [&]() { lbFired = true; });
        quint32 llDeadline = lcLoop.timeGetTime() + 2000;
        while (!lbFired && qint32(llDeadline - lcLoop.timeGetTime()) > 0)
            lcLoop.WaitForEvents(llDeadline);
        QVERIFY(lbFired);
        QVERIFY(qint32(llDeadline - lcLoop.timeGetTime()) > 1000);

        int llTicks = 0;
        const int llId = lcLoop.SetTimer(5, [&](int vlId) {
            if (++llTicks == 3)
                lcLoop.KillTimer(vlId);
        });
        QVERIFY(llId != 0);
        const std::clock_t llCpu = std::clock();
        const quint32 llStart = lcLoop.timeGetTime();
        llDeadline = llStart + 200;
        while (qint32(llDeadline - lcLoop.timeGetTime()) > 0)
            lcLoop.WaitForEvents(llDeadline);
        QCOMPARE(llTicks, 3);
        QVERIFY(!lcLoop.KillTimer(llId));
        QVERIFY(lcLoop.timeGetTime() - llStart < 1000);
        QVERIFY2(double(std::clock() - llCpu) / CLOCKS_PER_SEC < 0.1, "waiting must sleep, not spin");
    }
};

QTEST_GUILESS_MAIN(tst_platform)
#include "tst_platform.moc"
