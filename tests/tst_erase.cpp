// Erasing the display, the dialogue around it and the operating-system check,
// against the simulated display.

#include "support/SimRig.h"

#include <QTest>

namespace {
struct OsCase { QByteArray start; QList<MsgResult> answers; int error; bool erased; };
struct ClearCase { bool saved; QList<MsgResult> answers; bool silent; QString lastText, lastTitle; };
}

class tst_Erase : public QObject
{
    Q_OBJECT

private slots:
    void clearFlash()
    {
        SimRig r;
        r.display.SetGeometry(0, 3, 6, 64);
        for (int llPage : {0, 1, 2})
            r.display.SetPage(llPage, QByteArray(64, 0x11));
        r.display.Faults().EraseRefused[2] = true;
        clsError lcError;
        r.app().ClearFlash(lcError, false);
        QVERIFY(!lcError.IsError());
        QCOMPARE(r.Funcs(), (QList<int>{0xCE, 0x0B, 0x0B, 0x36, 0x38, 0x35, 0x38, 0x35, 0x38}));
        QVERIFY(!r.display.PageIsEmpty(0));
        QVERIFY(r.display.PageIsEmpty(1));
        QVERIFY(r.display.LowCurrent());
        QCOMPARE(r.t.LogLines().mid(2), (QStringList{"Starting to erase page 1", "Erase succesfull", "Starting to erase page 2",
                                           "ERROR Erase not succesfull", "Starting to erase page 3",
                                           "Page already empty"}));
        QCOMPARE(r.app().Status().StatusString(), QStringLiteral("Erasing Route Logging and PoliceCheck data completed"));
        const clsProgressBarInfo& lcBar = r.app().Status().BigProgressBarInfo();
        QCOMPARE((QList<int>{lcBar.Max(), lcBar.Position(), lcBar.Visible()}), (QList<int>{3, 3, 0}));
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    void nothingToEraseWhenFirstIsLast()
    {
        SimRig r;
        r.display.SetGeometry(2, 2, 6, 64);
        clsError lcError;
        r.app().ClearFlash(lcError, false);
        QCOMPARE(r.Funcs(), (QList<int>{0xCE, 0x0B, 0x0B, 0x36}));
        QCOMPARE(r.app().Status().StatusString(), QStringLiteral("Erasing Route Logging and PoliceCheck data completed"));
    }

    void wrongIdStopsBeforeAnything()
    {
        SimRig r;
        r.app().SetDisplayId(QStringLiteral("1.2.3.4.5.6.7.8."));
        clsError lcError;
        r.app().ClearFlash(lcError, true);
        QCOMPARE(lcError.Error(), ErrorCode::DifferentDisplay);
        QCOMPARE(lcError.Description(), QStringLiteral("Different display detected."));
        QCOMPARE(r.Funcs(), QList<int>{0xCE});
        QCOMPARE(r.t.LogLines().mid(2), QStringList{"ERROR Wrong ID found, aborting erase of database"});
        QCOMPARE(r.app().Status().StatusString(), QStringLiteral("Wrong ID found, stopping download"));
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // A page-state request that fails ends the loop; pages erased before stay erased.
    void failedPageStateStops()
    {
        SimRig r;
        r.display.SetGeometry(0, 3, 6, 64);
        for (int llPage : {1, 2, 3})
            r.display.SetPage(llPage, QByteArray(64, 0x11));
        r.display.Faults().SilentFromRequest = 7;
        r.t.dialogs.answers << MsgResult::Cancel;
        clsError lcError;
        r.app().ClearFlash(lcError, false);
        QCOMPARE(lcError.Error(), ErrorCode::CancelledByUser);
        QVERIFY(r.display.PageIsEmpty(1));
        QVERIFY(!r.display.PageIsEmpty(2));
        QCOMPARE(r.app().Status().BigProgressBarInfo().Position(), 1);
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    void operatingSystemCheck_data()
    {
        QTest::addColumn<OsCase>("c");
        QTest::newRow("logged data") << OsCase{"KVX", {}, 0, false};
        QTest::newRow("empty page") << OsCase{{}, {}, 0, false};
        QTest::newRow("image, keep it") << OsCase{"KVT", {MsgResult::No}, ErrorCode::OperatingSystemDetected, false};
        QTest::newRow("image, clear it") << OsCase{"KVT", {MsgResult::Yes}, ErrorCode::OperatingSystemDetected, true};
    }
    void operatingSystemCheck()
    {
        QFETCH(OsCase, c);
        const auto& [start, answers, error, erased] = c;
        SimRig r;
        r.display.SetGeometry(4, 6, 8, 64);
        r.display.SetPage(5, start);
        r.t.dialogs.answers.append(answers);
        clsError lcError;
        r.app().CheckForOperatingSystem(lcError);
        QCOMPARE(lcError.Error(), error);
        QCOMPARE(r.display.PageIsEmpty(5), start.isEmpty() || erased);
        QCOMPARE(r.t.dialogs.boxes.size(), answers.size());
        if (!answers.isEmpty()) {
            QCOMPARE(r.t.dialogs.boxes[0].text,
                     QStringLiteral("Found Corvane Operating System, do you wish to clear the display?"));
            QCOMPARE(r.t.dialogs.boxes[0].title, QStringLiteral("Corvane Desktop"));
        }
        if (!start.isEmpty())
            QCOMPARE(r.display.Requests().value(2).arguments, QByteArray::fromHex("05000003"));
    }

    void clearDisplayDialogue_data()
    {
        QTest::addColumn<ClearCase>("c");
        const QString lsCleared = QStringLiteral("Clearing display successfully completed");
        QTest::newRow("unsaved, No: silent stop") << ClearCase{false, {MsgResult::No}, false, "", ""};
        // marked saved before the save runs, so a cancelled save still leads on to the clear
        QTest::newRow("unsaved, Yes, save cancelled") << ClearCase{false, {MsgResult::Yes, MsgResult::Yes}, false, lsCleared, "KVT Upload"};
        QTest::newRow("not sure") << ClearCase{true, {MsgResult::No}, false, "", ""};
        QTest::newRow("cleared") << ClearCase{true, {MsgResult::Yes}, false, lsCleared, "KVT Upload"};
        QTest::newRow("failed") << ClearCase{true, {MsgResult::Yes, MsgResult::Cancel}, true,
                                             "ERROR: Clearing display Failed: Action cancelled by user.", "KVT Upload ERROR"};
    }
    void clearDisplayDialogue()
    {
        QFETCH(ClearCase, c);
        const auto& [saved, answers, silent, lastText, lastTitle] = c;
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
        QCOMPARE(r.t.window.calls, (QStringList{"EnableButtons(0)", "EnableMenu(0)", "EnableButtons(1)", "EnableMenu(1)"}));
    }

    void clearTableOnly()
    {
        SimRig r;
        r.app().SetDataSaved(false);
        r.app().ClearRitAndPoliceTableInformation();
        QVERIFY(r.app().DataSaved());
        QCOMPARE(r.t.window.calls, QStringList{"RecordsCleared"});
        QVERIFY(r.display.Requests().isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_Erase)
#include "tst_erase.moc"
