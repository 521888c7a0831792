// Window-less timers on the virtual clock: when a platform timer runs, the
// shared timer table and its growth, and the platform running out of timers.

#include "app/clsDTimer.h"
#include "platform/Err.h"
#include "platform/VirtualClock.h"

#include <QSignalSpy>
#include <QTest>
#include <memory>
#include <vector>

class tst_timer : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void intervalWhileDisabledStartsNothing();
    void zeroIntervalStopsTheTimer();
    void sameValueDoesNothing();
    void tableGrowsByFive();
    void freedEntriesAreReused();
    void noTimersAvailable();
    void tickCanChangeItsOwnInterval();

private:
    std::unique_ptr<VirtualClock> mcClock;
};

void tst_timer::init()
{
    mcClock = std::make_unique<VirtualClock>();
    clsDTimer::UseEventLoop(mcClock.get());
}

void tst_timer::intervalWhileDisabledStartsNothing()
{
    clsDTimer lcTimer;
    QSignalSpy lcTicks(&lcTimer, &clsDTimer::Tick);
    lcTimer.SetInterval(1000);
    QCOMPARE(mcClock->ActiveTimerCount(), 0);
    mcClock->Advance(5000);
    QCOMPARE(lcTicks.count(), 0);

    lcTimer.SetEnabled(true);
    QVERIFY(lcTimer.TimerId() != 0);
    mcClock->Advance(3500);
    QCOMPARE(lcTicks.count(), 3);
}

void tst_timer::zeroIntervalStopsTheTimer()
{
    clsDTimer lcTimer;
    QSignalSpy lcTicks(&lcTimer, &clsDTimer::Tick);
    lcTimer.SetEnabled(true); // interval 0: nothing runs yet
    QCOMPARE(mcClock->ActiveTimerCount(), 0);
    lcTimer.SetInterval(200);
    QCOMPARE(mcClock->ActiveTimerCount(), 1);
    mcClock->Advance(200);
    QCOMPARE(lcTicks.count(), 1);
    lcTimer.SetInterval(0);
    QCOMPARE(mcClock->ActiveTimerCount(), 0);
    QCOMPARE(lcTimer.TimerId(), 0);
    mcClock->Advance(1000);
    QCOMPARE(lcTicks.count(), 1);
}

void tst_timer::sameValueDoesNothing()
{
    clsDTimer lcTimer;
    lcTimer.SetInterval(100);
    lcTimer.SetEnabled(true);
    const qint32 llId = lcTimer.TimerId();
    lcTimer.SetInterval(100);
    lcTimer.SetEnabled(true);
    QCOMPARE(lcTimer.TimerId(), llId);
    QCOMPARE(mcClock->ActiveTimerCount(), 1);
}

void tst_timer::tableGrowsByFive()
{
    const int llBefore = clsDTimer::TimerTableSize();
    std::vector<std::unique_ptr<clsDTimer>> lcTimers;
    // Start as many timers as the table holds, then one more.
    for (int i = 0; i < llBefore + 1; ++i) {
        lcTimers.push_back(std::make_unique<clsDTimer>());
        lcTimers.back()->SetInterval(10);
        lcTimers.back()->SetEnabled(true);
    }
    QCOMPARE(clsDTimer::TimerTableSize(), llBefore + 5);
    QCOMPARE(clsDTimer::TimerTableSize() % 5, 0);
}

void tst_timer::freedEntriesAreReused()
{
    std::vector<std::unique_ptr<clsDTimer>> lcTimers;
    for (int i = 0; i < 6; ++i) {
        lcTimers.push_back(std::make_unique<clsDTimer>());
        lcTimers.back()->SetInterval(10);
        lcTimers.back()->SetEnabled(true);
    }
    const int llSize = clsDTimer::TimerTableSize();
    for (int round = 0; round < 20; ++round) {
        lcTimers[2]->SetEnabled(false);
        lcTimers[2]->SetEnabled(true);
    }
    QCOMPARE(clsDTimer::TimerTableSize(), llSize);
    lcTimers.clear(); // destruction kills the platform timers
    QCOMPARE(mcClock->ActiveTimerCount(), 0);
}

void tst_timer::noTimersAvailable()
{
    mcClock->LimitTimers(0);
    clsDTimer lcTimer;
    lcTimer.SetInterval(1000);
    try {
        lcTimer.SetEnabled(true);
        QFAIL("expected a run-time error");
    } catch (const clsRuntimeError& e) {
        QCOMPARE(e.Number(), long(qint32(0x80047925)));
        QCOMPARE(e.Description(), QStringLiteral("No timers available"));
    }
}

// The auto-detection tick lengthens its own interval while it works.
void tst_timer::tickCanChangeItsOwnInterval()
{
    clsDTimer lcTimer;
    int llTicks = 0;
    connect(&lcTimer, &clsDTimer::Tick, this, [&]() {
        ++llTicks;
        lcTimer.SetInterval(100000);
        lcTimer.SetInterval(1000);
    });
    lcTimer.SetInterval(1000);
    lcTimer.SetEnabled(true);
    mcClock->Advance(3000);
    QCOMPARE(llTicks, 3);
}

QTEST_GUILESS_MAIN(tst_timer)
#include "tst_timer.moc"
