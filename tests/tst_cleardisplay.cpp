// The clear dialogue around the erase, against the simulated display.

#include "support/SimRig.h"

#include <QTest>

class tst_ClearDisplay : public QObject
{
    Q_OBJECT

private slots:
    void clearDisplayDialogue_data()
    {
        QTest::addColumn<bool>("saved");
        QTest::addColumn<QList<MsgResult>>("answers");
        QTest::addColumn<bool>("silent");
        QTest::addColumn<QString>("lastText");
        QTest::addColumn<QString>("lastTitle");
        using R = QList<MsgResult>;
        QTest::newRow("unsaved, No: silent stop") << false << R{MsgResult::No} << false << "" << "";
        // marked saved before the save runs, so a cancelled save still leads on to the clear
        QTest::newRow("unsaved, Yes, save cancelled") << false << R{MsgResult::Yes, MsgResult::Yes} << false
                                                      << "Clearing display successfully completed" << "KVT Upload";
        QTest::newRow("not sure") << true << R{MsgResult::No} << false << "" << "";
        QTest::newRow("cleared") << true << R{MsgResult::Yes} << false << "Clearing display successfully completed"
                                 << "KVT Upload";
        QTest::newRow("failed") << true << R{MsgResult::Yes, MsgResult::Cancel} << true
                                << "ERROR: Clearing display Failed: Action cancelled by user."
                                << "KVT Upload ERROR";
    }
    void clearDisplayDialogue()
    {
        QFETCH(bool, saved);
        QFETCH(QList<MsgResult>, answers);
        QFETCH(bool, silent);
        QFETCH(QString, lastText);
        QFETCH(QString, lastTitle);
        SimRig r;
        r.display.SetGeometry(0, 1, 6, 64);
        r.display.SetPage(1, QByteArray(64, 0x11));
        r.display.Faults().SilentFromRequest = silent ? 1 : 0;
        r.app().SetDataSaved(saved);
        r.t.dialogs.answers.append(answers);
        const clsOutcome lcOutcome = r.app().clearDisplay();
        // what the command line's exit status and "Nothing erased." go by
        QCOMPARE(lcOutcome.IsError(), silent);
        QCOMPARE(lcOutcome.Cancelled, silent || lastText.isEmpty());
        const QList<FakeUserDialogs::Box>& lcBoxes = r.t.dialogs.boxes;
        QCOMPARE(lcBoxes[0].text, saved ? QStringLiteral("Are you sure you want to clear the display database?")
                                        : QStringLiteral("Do you want to save route info to disk, before clearing "
                                                         "the display memory?"));
        QCOMPARE(lcBoxes.size(), answers.size() + (lastText.isEmpty() ? 0 : 1));
        QCOMPARE(r.t.dialogs.dialogFilters.size(), !saved && answers[0] == MsgResult::Yes ? 1 : 0);
        if (lastText.isEmpty()) {
            QVERIFY(r.display.Requests().isEmpty());
            QVERIFY(r.t.window.calls.isEmpty());
            return;
        }
        QCOMPARE(lcBoxes.last().text, lastText);
        QCOMPARE(lcBoxes.last().title, lastTitle);
        QCOMPARE(r.display.PageIsEmpty(1), !silent);
        QCOMPARE(r.t.window.calls, (QStringList{"EnableButtons(0)", "EnableMenu(0)", "EnableButtons(1)",
                                                "EnableMenu(1)"}));
    }

};

QTEST_GUILESS_MAIN(tst_ClearDisplay)
#include "tst_cleardisplay.moc"
