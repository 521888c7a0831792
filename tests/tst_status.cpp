// The status model: the percentage rule, when change events are raised, and
// how the application copies the model to the window.

#include "TestApp.h"
#include "app/clsEvent.h"
#include "app/clsStatus.h"

#include <QSignalSpy>
#include <QTest>

class tst_status : public QObject
{
    Q_OBJECT
private slots:
    void percentageUsesRawPosition_data();
    void percentageUsesRawPosition();
    void boundsResetTheBar();
    void stepSizeIsAtLeastOne_data();
    void stepSizeIsAtLeastOne();
    void incrementStopsAtMax();
    void eventsOnlyForVisibleChanges();
    void sameTextRaisesOnce();
    void eventHolderReadsEmpty();
    void windowLinePadsToNinety_data();
    void windowLinePadsToNinety();
    void windowGetsOnlyChangedBarProperties();
};

void tst_status::percentageUsesRawPosition_data()
{
    QTest::addColumn<int>("min");
    QTest::addColumn<int>("max");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("percent");
    // The save's bar runs from 1: it shows 100 one step before its end.
    QTest::newRow("min 1, position 1") << 1 << 5 << 1 << 25;
    QTest::newRow("min 1, position 2") << 1 << 5 << 2 << 50;
    QTest::newRow("min 1, position 3") << 1 << 5 << 3 << 75;
    QTest::newRow("min 1, position 4") << 1 << 5 << 4 << 100;
    QTest::newRow("min 1, position 5") << 1 << 5 << 5 << 125;
    QTest::newRow("equal bounds") << 3 << 3 << 3 << 0;
    QTest::newRow("ties to even down") << 0 << 8 << 1 << 12;  // 12.5
    QTest::newRow("ties to even up") << 0 << 8 << 3 << 38;    // 37.5
    QTest::newRow("negative span") << 10 << 0 << 5 << -50;
}

void tst_status::percentageUsesRawPosition()
{
    QFETCH(int, min);
    QFETCH(int, max);
    QFETCH(int, position);
    QFETCH(int, percent);
    clsProgressBarInfo lcBar;
    lcBar.SetMin(min);
    lcBar.SetMax(max);
    lcBar.SetPosition(position);
    QCOMPARE(lcBar.Percentage(), percent);
}

void tst_status::boundsResetTheBar()
{
    clsProgressBarInfo lcBar;
    QCOMPARE(lcBar.Max(), 10);
    lcBar.SetStepSize(4);
    lcBar.SetPosition(7);
    lcBar.SetMin(2);
    QCOMPARE(lcBar.Position(), 2);
    QCOMPARE(lcBar.StepSize(), 1);
    lcBar.SetPosition(7);
    lcBar.SetMax(20);
    QCOMPARE(lcBar.Position(), 2);
}

void tst_status::stepSizeIsAtLeastOne_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("stored");
    QTest::newRow("zero") << 0 << 1;
    QTest::newRow("negative") << -5 << 1;
    QTest::newRow("positive") << 60 << 60;
}

void tst_status::stepSizeIsAtLeastOne()
{
    QFETCH(int, step);
    QFETCH(int, stored);
    clsProgressBarInfo lcBar;
    lcBar.SetStepSize(step);
    QCOMPARE(lcBar.StepSize(), stored);
}

void tst_status::incrementStopsAtMax()
{
    clsProgressBarInfo lcBar;
    lcBar.SetMax(5);
    lcBar.SetStepSize(3);
    lcBar.Increment();
    lcBar.Increment();
    lcBar.Increment();
    QCOMPARE(lcBar.Position(), 5);
    QCOMPARE(lcBar.Percentage(), 100);
}

void tst_status::eventsOnlyForVisibleChanges()
{
    clsProgressBarInfo lcBar;
    lcBar.SetMax(1000);
    QSignalSpy lcSpy(&lcBar, &clsProgressBarInfo::DataChanged);
    lcBar.SetPosition(500);
    QCOMPARE(lcSpy.count(), 0); // hidden
    lcBar.SetVisible(true);
    QCOMPARE(lcSpy.count(), 1);
    lcBar.SetPosition(501); // 50.1 rounds to the same 50
    QCOMPARE(lcSpy.count(), 1);
    lcBar.SetPosition(600);
    QCOMPARE(lcSpy.count(), 2);
    for (int i = 0; i < 1000; ++i)
        lcBar.Increment();
    QCOMPARE(lcSpy.count(), 2 + 40); // 60 .. 100 per cent
}

void tst_status::sameTextRaisesOnce()
{
    clsStatus lcStatus;
    QSignalSpy lcSpy(&lcStatus, &clsStatus::StatusChanged);
    lcStatus.SetStatusString(QStringLiteral("Decoding"));
    lcStatus.SetStatusString(QStringLiteral("Decoding"));
    lcStatus.SetSmallStatusString(QStringLiteral("Page12"));
    lcStatus.SetSmallStatusString(QStringLiteral("Page12"));
    QCOMPARE(lcSpy.count(), 2);
    lcStatus.BigProgressBarInfo().SetVisible(true);
    QCOMPARE(lcSpy.count(), 3);
}

void tst_status::eventHolderReadsEmpty()
{
    clsEvent lcEvent;
    QSignalSpy lcSpy(&lcEvent, &clsEvent::StatusChanged);
    lcEvent.SetStatusString(QStringLiteral("x"));
    lcEvent.SetStatusString(QStringLiteral("x"));
    QCOMPARE(lcSpy.count(), 1);
    QCOMPARE(lcEvent.StatusString(), QString());
}

void tst_status::windowLinePadsToNinety_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("lineLength");
    QTest::newRow("short text is padded") << 10 << 90 + 6;
    QTest::newRow("exactly 90") << 90 << 90 + 6;
    QTest::newRow("95 characters stay unpadded") << 95 << 95 + 6;
}

void tst_status::windowLinePadsToNinety()
{
    QFETCH(int, length);
    QFETCH(int, lineLength);
    TestApp lcTest(nullptr, false);
    const QString lsText(length, QLatin1Char('s'));
    lcTest.app->Status().SetSmallStatusString(QStringLiteral("Page12"));
    lcTest.app->Status().SetStatusString(lsText);
    const QString lsLine = lcTest.window.statusLines.last();
    QCOMPARE(lsLine.size(), lineLength);
    QVERIFY(lsLine.startsWith(lsText));
    QVERIFY(lsLine.endsWith(QStringLiteral("Page12")));
}

void tst_status::windowGetsOnlyChangedBarProperties()
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

QTEST_GUILESS_MAIN(tst_status)
#include "tst_status.moc"
