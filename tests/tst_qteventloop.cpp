// The program's event loop: a wait delivers events as they come and returns at
// its deadline, and it sleeps meanwhile instead of spinning a core.

#include "platform/QtEventLoop.h"

#include <QTest>
#include <QTimer>
#include <ctime>

namespace {
double CpuSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}
}

class tst_qteventloop : public QObject
{
    Q_OBJECT
private slots:
    void waitDeliversEventBeforeDeadline();
    void waitReturnsAtDeadlineWithoutSpinning();
    void timersTickUntilKilled();
};

void tst_qteventloop::waitDeliversEventBeforeDeadline()
{
    QtEventLoop lcLoop;
    bool lbFired = false;
    QTimer::singleShot(5, this, [&]() { lbFired = true; });
    const quint32 llDeadline = lcLoop.timeGetTime() + 2000;
    while (!lbFired && qint32(llDeadline - lcLoop.timeGetTime()) > 0)
        lcLoop.WaitForEvents(llDeadline);
    QVERIFY(lbFired);
    QVERIFY(qint32(llDeadline - lcLoop.timeGetTime()) > 1000);
}

void tst_qteventloop::waitReturnsAtDeadlineWithoutSpinning()
{
    QtEventLoop lcLoop;
    const double llCpuBefore = CpuSeconds();
    const quint32 llStart = lcLoop.timeGetTime();
    const quint32 llDeadline = llStart + 150;
    while (qint32(llDeadline - lcLoop.timeGetTime()) > 0)
        lcLoop.WaitForEvents(llDeadline);
    QVERIFY(lcLoop.timeGetTime() - llStart >= 150);
    QVERIFY(lcLoop.timeGetTime() - llStart < 1000);
    QVERIFY2(CpuSeconds() - llCpuBefore < 0.1, "waiting must sleep, not spin");
}

void tst_qteventloop::timersTickUntilKilled()
{
    QtEventLoop lcLoop;
    int llTicks = 0;
    const int llId = lcLoop.SetTimer(5, [&](int vlId) {
        ++llTicks;
        if (llTicks == 3)
            lcLoop.KillTimer(vlId);
    });
    QVERIFY(llId != 0);
    const quint32 llDeadline = lcLoop.timeGetTime() + 200;
    while (qint32(llDeadline - lcLoop.timeGetTime()) > 0)
        lcLoop.WaitForEvents(llDeadline);
    QCOMPARE(llTicks, 3);
    QVERIFY(!lcLoop.KillTimer(llId));
}

QTEST_GUILESS_MAIN(tst_qteventloop)
#include "tst_qteventloop.moc"
