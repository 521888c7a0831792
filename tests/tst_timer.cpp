// Window-less timers on the virtual clock: when a platform timer runs, the
// shared timer table and its growth, and the platform running out of timers.

#include "TestFiles.h"
#include "app/clsDTimer.h"
#include "platform/Err.h"
#include "platform/VirtualClock.h"

#include <QTest>
#include <memory>
#include <vector>

class tst_timer : public QObject
{
    Q_OBJECT
private slots:
    void script_data() { AddTableRows(QStringLiteral("timer-scripts.txt")); }
    void script()
    {
        QFETCH(QStringList, row);
        const QString steps = row[1], error = row[5];
        const int ticks = row[2].toInt(), active = row[3].toInt(), tableGrowth = row[4].toInt();
        VirtualClock lcClock;
        clsDTimer::UseEventLoop(&lcClock);
        { // the table's first entries, so that only a row's own growth counts
            clsDTimer lcFirst;
            lcFirst.SetInterval(1);
            lcFirst.SetEnabled(true);
        }
        const int llTableBefore = clsDTimer::TimerTableSize();
        std::vector<std::unique_ptr<clsDTimer>> lcOthers;
        clsDTimer lcTimer;
        int llTicks = 0;
        connect(&lcTimer, &clsDTimer::Tick, this, [&]() { ++llTicks; });
        QString lsError;
        try {
            for (const QString& lsStep : steps.split(QStringLiteral(", "))) {
                const QString lsVerb = lsStep.section(QLatin1Char(' '), 0, 0);
                const int llValue = lsStep.section(QLatin1Char(' '), 1).toInt();
                if (lsVerb == QLatin1String("interval"))
                    lcTimer.SetInterval(llValue);
                else if (lsVerb == QLatin1String("on") || lsVerb == QLatin1String("off"))
                    lcTimer.SetEnabled(lsVerb == QLatin1String("on"));
                else if (lsVerb == QLatin1String("advance"))
                    lcClock.Advance(quint32(llValue));
                else if (lsVerb == QLatin1String("limit"))
                    lcClock.LimitTimers(llValue);
                else if (lsVerb == QLatin1String("noloop"))
                    clsDTimer::UseEventLoop(nullptr);
                else if (lsVerb == QLatin1String("retime"))
                    connect(&lcTimer, &clsDTimer::Tick, this, [&]() {
                        lcTimer.SetInterval(100000);
                        lcTimer.SetInterval(1000);
                    });
                else if (lsVerb == QLatin1String("fill"))
                    while (int(lcOthers.size()) <= llTableBefore) {
                        lcOthers.push_back(std::make_unique<clsDTimer>());
                        lcOthers.back()->SetInterval(10);
                        lcOthers.back()->SetEnabled(true);
                    }
                else if (lsVerb == QLatin1String("cycle"))
                    for (int i = 0; i < llValue; ++i) {
                        lcOthers.back()->SetEnabled(false);
                        lcOthers.back()->SetEnabled(true);
                    }
                else
                    QFAIL(qPrintable(lsStep));
            }
        } catch (const clsRuntimeError& e) {
            lsError = QStringLiteral("%1 %2").arg(quint32(e.Number()), 0, 16).arg(e.Description());
        }
        QCOMPARE(lsError, error);
        QCOMPARE(llTicks, ticks);
        QCOMPARE(clsDTimer::TimerTableSize() - llTableBefore, tableGrowth);
        lcOthers.clear();
        QCOMPARE(lcClock.ActiveTimerCount(), active);
        QCOMPARE(lcTimer.TimerId() != 0, active != 0);
    }
};

QTEST_GUILESS_MAIN(tst_timer)
#include "tst_timer.moc"
