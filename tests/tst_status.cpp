// The status model as the window sees it: the percentage rule, when a change
// reaches the window, and what of a bar is copied to the window's control.

#include "TestApp.h"
#include "TestFiles.h"
#include "app/clsEvent.h"
#include "app/clsStatus.h"

#include <QTest>

class tst_status : public QObject
{
    Q_OBJECT
private slots:
    void bigBarAndTexts_data() { AddTableRows(QStringLiteral("status-scripts.txt")); }
    void bigBarAndTexts()
    {
        QFETCH(QStringList, row);
        const QString script = row[1], positionStepPercent = row[2];
        const int lines = row[3].toInt(), events = row[4].toInt();
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
        QCOMPARE(QStringLiteral("%1,%2,%3").arg(rcBar.Position()).arg(rcBar.StepSize()).arg(rcBar.Percentage()), positionStepPercent);
        QCOMPARE(lcTest.window.statusLines.size(), lines);
        QCOMPARE(llEvents, events);
        QCOMPARE(lcEvent.StatusString(), QString());
    }

    void windowLinePadsToNinety_data()
    {
        QTest::addColumn<int>("length");
        QTest::addColumn<int>("lineLength");
        QTest::newRow("short text is padded") << 10 << 90 + 6;
        QTest::newRow("exactly 90") << 90 << 90 + 6;
        QTest::newRow("95 characters stay unpadded") << 95 << 95 + 6;
    }
    void windowLinePadsToNinety()
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
};

QTEST_GUILESS_MAIN(tst_status)
#include "tst_status.moc"
