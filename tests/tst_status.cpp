// The status model as the window sees it: the percentage rule, when a change
// reaches the window, and what of a bar is copied to the window's control.

#include "TestApp.h"
#include "app/clsEvent.h"
#include "app/clsStatus.h"

#include <QTest>

class tst_status : public QObject
{
    Q_OBJECT
private slots:
    void bigBarAndTexts_data();
    void bigBarAndTexts();
    void windowLinePadsToNinety_data();
    void windowLinePadsToNinety();
    void windowGetsOnlyChangedBarProperties();
};

void tst_status::bigBarAndTexts_data()
{
    // A script of steps on the big bar, the status texts and an event holder;
    // "lines" counts the status lines the window was given, "events" the holder's.
    QTest::addColumn<QString>("script");
    QTest::addColumn<QList<int>>("positionStepPercent");
    QTest::addColumn<int>("lines");
    QTest::addColumn<int>("events");
    // The save's bar runs from 1: the raw position is divided, so it shows 100 one step before its end.
    QTest::newRow("min 1, position 1") << "min 1, max 5, pos 1" << QList<int>{1, 1, 25} << 0 << 0;
    QTest::newRow("min 1, position 2") << "min 1, max 5, pos 2" << QList<int>{2, 1, 50} << 0 << 0;
    QTest::newRow("min 1, position 3") << "min 1, max 5, pos 3" << QList<int>{3, 1, 75} << 0 << 0;
    QTest::newRow("min 1, position 4") << "min 1, max 5, pos 4" << QList<int>{4, 1, 100} << 0 << 0;
    QTest::newRow("min 1, position 5") << "min 1, max 5, pos 5" << QList<int>{5, 1, 125} << 0 << 0;
    QTest::newRow("equal bounds") << "min 3, max 3, pos 3" << QList<int>{3, 1, 0} << 0 << 0;
    QTest::newRow("ties to even down") << "max 8, pos 1" << QList<int>{1, 1, 12} << 0 << 0;
    QTest::newRow("ties to even up") << "max 8, pos 3" << QList<int>{3, 1, 38} << 0 << 0;
    QTest::newRow("negative span") << "min 10, max 0, pos 5" << QList<int>{5, 1, -50} << 0 << 0;
    QTest::newRow("max is 10 at first") << "pos 5" << QList<int>{5, 1, 50} << 0 << 0;
    QTest::newRow("min resets position and step") << "step 4, pos 7, min 2" << QList<int>{2, 1, 25} << 0 << 0;
    QTest::newRow("max resets position") << "min 2, pos 7, max 20" << QList<int>{2, 1, 11} << 0 << 0;
    QTest::newRow("step zero is one") << "step 0" << QList<int>{0, 1, 0} << 0 << 0;
    QTest::newRow("negative step is one") << "step -5" << QList<int>{0, 1, 0} << 0 << 0;
    QTest::newRow("step kept") << "step 60" << QList<int>{0, 60, 0} << 0 << 0;
    QTest::newRow("increment stops at max") << "max 5, step 3, inc 3" << QList<int>{5, 3, 100} << 0 << 0;
    QTest::newRow("hidden bar tells nobody") << "max 1000, pos 500" << QList<int>{500, 1, 50} << 0 << 0;
    QTest::newRow("showing tells once") << "max 1000, pos 500, show, show" << QList<int>{500, 1, 50} << 1 << 0;
    QTest::newRow("same percentage tells nothing")
        << "max 1000, show, pos 500, pos 501" << QList<int>{501, 1, 50} << 2 << 0;
    QTest::newRow("each percent tells once")
        << "max 1000, show, pos 600, inc 1000" << QList<int>{1000, 1, 100} << 2 + 40 << 0;
    QTest::newRow("same text tells once")
        << "text Decoding, text Decoding, note Page12, note Page12" << QList<int>{0, 1, 0} << 2 << 0;
    QTest::newRow("event holder tells once, reads empty") << "event x, event x" << QList<int>{0, 1, 0} << 0 << 1;
}

void tst_status::bigBarAndTexts()
{
    QFETCH(QString, script);
    QFETCH(QList<int>, positionStepPercent);
    QFETCH(int, lines);
    QFETCH(int, events);
    TestApp lcTest(nullptr, false);
    clsStatus& rcStatus = lcTest.app->Status();
    clsProgressBarInfo& rcBar = rcStatus.BigProgressBarInfo();
    clsEvent lcEvent;
    int llEvents = 0;
    connect(&lcEvent, &clsEvent::StatusChanged, this, [&]() { ++llEvents; });
    for (const QString& lsStep : script.split(QStringLiteral(", "))) {
        const QString lsVerb = lsStep.section(QLatin1Char(' '), 0, 0);
        const QString lsArgument = lsStep.section(QLatin1Char(' '), 1);
        const int llValue = lsArgument.toInt();
        if (lsVerb == QLatin1String("min"))
            rcBar.SetMin(llValue);
        else if (lsVerb == QLatin1String("max"))
            rcBar.SetMax(llValue);
        else if (lsVerb == QLatin1String("step"))
            rcBar.SetStepSize(llValue);
        else if (lsVerb == QLatin1String("pos"))
            rcBar.SetPosition(llValue);
        else if (lsVerb == QLatin1String("inc"))
            for (int i = 0; i < llValue; ++i)
                rcBar.Increment();
        else if (lsVerb == QLatin1String("show"))
            rcBar.SetVisible(true);
        else if (lsVerb == QLatin1String("text"))
            rcStatus.SetStatusString(lsArgument);
        else if (lsVerb == QLatin1String("note"))
            rcStatus.SetSmallStatusString(lsArgument);
        else if (lsVerb == QLatin1String("event"))
            lcEvent.SetStatusString(lsArgument);
        else
            QFAIL(qPrintable(lsStep));
    }
    QCOMPARE((QList<int>{rcBar.Position(), rcBar.StepSize(), rcBar.Percentage()}), positionStepPercent);
    QCOMPARE(lcTest.window.statusLines.size(), lines);
    QCOMPARE(llEvents, events);
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
