// Erasing the display, the dialogue around it and the operating-system check,
// against the simulated display.

#include "support/SimRig.h"
#include "TestFiles.h"

#include <QTest>

namespace {
struct OsCase {
    QByteArray start; QList<MsgResult> answers; int error; bool erased; QString trace; QMap<qint32, int> readStatus = {};
};
struct ClearCase { bool saved; QList<MsgResult> answers; bool silent; QString lastText, lastTitle; };
}

class tst_Erase : public QObject
{
    Q_OBJECT

private slots:
    void clearFlash_data() { AddTableRows(QStringLiteral("erase-scenarios.txt")); }
    void clearFlash()
    {
        QFETCH(QStringList, row);
        const QList<int> geometry = Numbers(row[1]);
        SimRig r;
        r.display.SetGeometry(geometry[0], geometry[1], geometry[2], 64);
        for (int llPage : Numbers(row[2]))
            r.display.SetPage(llPage, QByteArray(r.display.PageSize(), 0x11));
        bool lbCheckId = false;
        RunSteps(row[3], {{"refuse", [&](const QString& a) { r.display.Faults().EraseRefused[a.toInt()] = true; }},
                          {"silent", [&](const QString& a) { r.display.Faults().SilentFromRequest = a.toInt(); }},
                          {"cancel", [&](const QString&) { r.t.dialogs.answers << MsgResult::Cancel; }},
                          {"expect", [&](const QString& a) {
                               r.app().SetDisplayId(a);
                               lbCheckId = true;
                           }}});
        clsError lcError;
        r.app().ClearFlash(lcError, lbCheckId);
        const QString lsError = QStringLiteral("%1 %2").arg(lcError.Error(), 0, 16).arg(lcError.Description());
        QCOMPARE(lcError.IsError() ? lsError : QString(), row[4]);
        QCOMPARE(r.Trace(), row[5]);
        QStringList lcKept;
        for (int llPage = geometry[0]; llPage <= geometry[1]; ++llPage)
            if (!r.display.PageIsEmpty(llPage))
                lcKept << QString::number(llPage);
        QCOMPARE(lcKept.join(QLatin1Char(',')), row[6]);
        QCOMPARE(r.t.LogLines().mid(2).join(QStringLiteral("; ")), row[7]);
        QCOMPARE(r.app().Status().StatusString(), row[8]);
        const clsProgressBarInfo& lcBar = r.app().Status().BigProgressBarInfo();
        QCOMPARE(QStringLiteral("%1,%2,%3").arg(lcBar.Max()).arg(lcBar.Position()).arg(lcBar.Visible()), row[9]);
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    void operatingSystemCheck_data()
    {
        QTest::addColumn<OsCase>("c");
        const QString lsRead = QStringLiteral("36 38:05 34:05000003");
        QTest::newRow("logged data") << OsCase{"KVX", {}, 0, false, lsRead};
        QTest::newRow("empty page") << OsCase{{}, {}, 0, false, "36 38:05"};
        QTest::newRow("image, keep it") << OsCase{"KVT", {MsgResult::No}, ErrorCode::OperatingSystemDetected, false, lsRead};
        QTest::newRow("image, clear it") << OsCase{"KVT", {MsgResult::Yes}, ErrorCode::OperatingSystemDetected, true,
                                                   lsRead + " CE B:0000 B:0100 36 38:05 35:05 38:06"};
        // an answer without data is taken as it is, not asked again
        QTest::newRow("read without data") << OsCase{"KVT", {}, 0, false, lsRead, {{5 * 65536, 0}}};
    }
    void operatingSystemCheck()
    {
        QFETCH(OsCase, c);
        const auto& [start, answers, error, erased, trace, readStatus] = c;
        SimRig r;
        r.display.SetGeometry(4, 6, 8, 64);
        r.display.SetPage(5, start);
        r.display.Faults().ReadStatusOfPart = readStatus;
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
        QCOMPARE(r.Trace(), trace);
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
