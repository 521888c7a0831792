// The small classes of app/ the rest is built on: the error value (its number
// space, table texts, the SetError formatter, the capture of a pending run-time
// error), the status model as the window sees it (the percentage rule, when a
// change reaches the window, what of a bar is copied to the window's control),
// and window-less timers on the virtual clock (when a platform timer runs, the
// shared timer table and its growth, the platform running out of timers).

#include "TestApp.h"
#include "TestFiles.h"
#include "app/clsDTimer.h"
#include "app/clsEvent.h"
#include "app/clsStatus.h"
#include "platform/Err.h"

#include <QTest>
#include <memory>
#include <vector>

class tst_AppValues : public QObject
{
    Q_OBJECT
private slots:
    void errorValue_data() { AddTableRows(QStringLiteral("error-values.txt")); }
    void errorValue()
    {
        QFETCH(QStringList, row);
        Err::Clear();
        clsError lcError;
        RunSteps(row[1], {{"error", [&](const QString& a) { lcError.SetError(qint32(a.toUInt(nullptr, 16))); }},
                          {"warn", [&](const QString& a) { lcError.SetWarning(qint32(a.toUInt(nullptr, 16))); }},
                          {"describe", [&](const QString& a) { lcError.SetDescription(a); }},
                          {"clear", [&](const QString&) { lcError.Clear(); }},
                          {"pend", [](const QString&) { Err::SetPending(clsRuntimeError(VbError::Overflow)); }},
                          {"raise", [](const QString&) {
                               Err::Trap([]() { Err::Raise(VbError::DivisionByZero, QStringLiteral("clsTest")); });
                           }}});
        const bool lbError = lcError.IsError(); // first: it captures a pending run-time error
        const QStringList lcReads = {QString::number(quint32(lcError.Error()), 16).toUpper(),
                                     QString::number(quint32(lcError.Warning()), 16).toUpper(),
                                     lcError.Description(),
                                     lbError ? QStringLiteral("error") : QString(),
                                     lcError.ISVBError() ? QStringLiteral("vb") : QString(),
                                     lcError.Level() ? QString::number(lcError.Level()) : QString(),
                                     lcError.Location(),
                                     lcError.DateTime().isEmpty() ? QString() : QStringLiteral("dated"),
                                     QString::number(Err::Number())};
        QCOMPARE(lcReads.join(QLatin1Char(';')), row[2]);
    }

    void errorFormatter_data() { AddTableRows(QStringLiteral("error-formatter.txt")); }
    void errorFormatter()
    {
        QFETCH(QStringList, row);
        QVector<QVariant> lcArguments;
        for (const QString& lsArgument : row[3].split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            bool lbNumber = false;
            const int llValue = lsArgument.toInt(&lbNumber);
            lcArguments << (lbNumber ? QVariant(llValue) : QVariant(lsArgument));
        }
        clsError lcError;
        lcError.SetError(qint32(row[1].toUInt(nullptr, 16)), row[2], lcArguments, 2, QStringLiteral("here"));
        QCOMPARE(lcError.Description(), row[4]);
        QCOMPARE(lcError.Level(), 2);
        QCOMPARE(lcError.Location(), QStringLiteral("here"));
    }

    void statusScript_data() { AddTableRows(QStringLiteral("status-scripts.txt")); }
    void statusScript()
    {
        QFETCH(QStringList, row);
        TestApp lcTest(nullptr, false);
        clsStatus& rcStatus = lcTest.app->Status();
        clsProgressBarInfo& rcBar = rcStatus.BigProgressBarInfo();
        clsEvent lcEvent;
        int llEvents = 0;
        connect(&lcEvent, &clsEvent::StatusChanged, this, [&]() { ++llEvents; });
        RunSteps(row[1], {{"min", [&](const QString& a) { rcBar.SetMin(a.toInt()); }},
                          {"max", [&](const QString& a) { rcBar.SetMax(a.toInt()); }},
                          {"step", [&](const QString& a) { rcBar.SetStepSize(a.toInt()); }},
                          {"pos", [&](const QString& a) { rcBar.SetPosition(a.toInt()); }},
                          {"inc", [&](const QString& a) {
                               for (int i = 0; i < a.toInt(); ++i)
                                   rcBar.Increment();
                           }},
                          {"show", [&](const QString&) { rcBar.SetVisible(true); }},
                          {"text", [&](const QString& a) { rcStatus.SetStatusString(a); }},
                          {"note", [&](const QString& a) { rcStatus.SetSmallStatusString(a); }},
                          {"event", [&](const QString& a) { lcEvent.SetStatusString(a); }}});
        QCOMPARE(QStringLiteral("%1,%2,%3").arg(rcBar.Position()).arg(rcBar.StepSize()).arg(rcBar.Percentage()), row[2]);
        QCOMPARE(lcTest.window.statusLines.size(), row[3].toInt());
        QCOMPARE(llEvents, row[4].toInt());
        QCOMPARE(lcEvent.StatusString(), QString());
    }

    void windowLinePadsToNinety_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("padding");
        QTest::newRow("short text is padded") << 10 << 80;
        QTest::newRow("exactly 90") << 90 << 0;
        QTest::newRow("95 characters stay unpadded") << 95 << 0;
    }
    void windowLinePadsToNinety()
    {
        QFETCH(int, length);
        QFETCH(int, padding);
        TestApp lcTest(nullptr, false);
        const QString lsText(length, QLatin1Char('s'));
        lcTest.app->Status().SetSmallStatusString(QStringLiteral("Page12"));
        lcTest.app->Status().SetStatusString(lsText);
        QCOMPARE(lcTest.window.statusLines.last(), lsText + QString(padding, QLatin1Char(' ')) + QStringLiteral("Page12"));
    }

    void windowGetsOnlyChangedBarProperties()
    {
        TestApp lcTest(nullptr, false);
        FakeProgressBar& rcBig = lcTest.window.bars[int(IMainWindow::Bar::Big)];
        rcBig.min = 0;
        rcBig.max = 10;
        rcBig.value = 0;
        clsProgressBarInfo& rcModel = lcTest.app->Status().BigProgressBarInfo();
        rcModel.SetVisible(true); // Min 0, Max 10, Position 0 already match: only Visible is written
        QCOMPARE(rcBig.writes, 1);
        QVERIFY(rcBig.visible);
        rcModel.SetPosition(5);
        QCOMPARE(rcBig.writes, 2);
        QCOMPARE(rcBig.value, 5);
        QCOMPARE(lcTest.window.bars[int(IMainWindow::Bar::Small)].writes, 1); // its Max of 10 differed once
    }

    void timerScript_data() { AddTableRows(QStringLiteral("timer-scripts.txt")); }
    void timerScript()
    {
        QFETCH(QStringList, row);
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
            RunSteps(row[1], {{"interval", [&](const QString& a) { lcTimer.SetInterval(a.toInt()); }},
                              {"on", [&](const QString&) { lcTimer.SetEnabled(true); }},
                              {"off", [&](const QString&) { lcTimer.SetEnabled(false); }},
                              {"advance", [&](const QString& a) { lcClock.Advance(a.toUInt()); }},
                              {"limit", [&](const QString& a) { lcClock.LimitTimers(a.toInt()); }},
                              {"noloop", [](const QString&) { clsDTimer::UseEventLoop(nullptr); }},
                              {"retime", [&](const QString&) {
                                   connect(&lcTimer, &clsDTimer::Tick, this, [&]() {
                                       lcTimer.SetInterval(100000);
                                       lcTimer.SetInterval(1000);
                                   });
                               }},
                              {"fill", [&](const QString&) {
                                   while (int(lcOthers.size()) <= llTableBefore) {
                                       lcOthers.push_back(std::make_unique<clsDTimer>());
                                       lcOthers.back()->SetInterval(10);
                                       lcOthers.back()->SetEnabled(true);
                                   }
                               }},
                              {"cycle", [&](const QString& a) {
                                   for (int i = 0; i < a.toInt(); ++i) {
                                       lcOthers.back()->SetEnabled(false);
                                       lcOthers.back()->SetEnabled(true);
                                   }
                               }}});
        } catch (const clsRuntimeError& e) {
            lsError = QStringLiteral("%1 %2").arg(quint32(e.Number()), 0, 16).arg(e.Description());
        }
        QCOMPARE(lsError, row[5]);
        QCOMPARE(llTicks, row[2].toInt());
        QCOMPARE(clsDTimer::TimerTableSize() - llTableBefore, row[4].toInt());
        lcOthers.clear();
        QCOMPARE(lcClock.ActiveTimerCount(), row[3].toInt());
        QCOMPARE(lcTimer.TimerId() != 0, row[3].toInt() != 0);
    }
};

QTEST_GUILESS_MAIN(tst_AppValues)
#include "tst_appvalues.moc"
