// Erasing the display and the operating-system check, against the simulated display.

#include "support/SimRig.h"

#include <QTest>

namespace {
QStringList EraseLog(const SimRig& r)
{
    QStringList lcLines = r.t.LogLines();
    return lcLines.mid(2);
}
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
        QCOMPARE(EraseLog(r), (QStringList{"Starting to erase page 1", "Erase succesfull", "Starting to erase page 2",
                                           "ERROR Erase not succesfull", "Starting to erase page 3",
                                           "Page already empty"}));
        QCOMPARE(r.app().Status().StatusString(),
                 QStringLiteral("Erasing Route Logging and PoliceCheck data completed"));
        const clsProgressBarInfo& lcBar = r.app().Status().BigProgressBarInfo();
        QCOMPARE(lcBar.Max(), 3);
        QCOMPARE(lcBar.Position(), 3);
        QVERIFY(!lcBar.Visible());
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    void nothingToEraseWhenFirstIsLast()
    {
        SimRig r;
        r.display.SetGeometry(2, 2, 6, 64);
        clsError lcError;
        r.app().ClearFlash(lcError, false);
        QCOMPARE(r.Funcs(), (QList<int>{0xCE, 0x0B, 0x0B, 0x36}));
        QCOMPARE(r.app().Status().StatusString(),
                 QStringLiteral("Erasing Route Logging and PoliceCheck data completed"));
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
        QCOMPARE(EraseLog(r), QStringList{"ERROR Wrong ID found, aborting erase of database"});
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
        QTest::addColumn<QByteArray>("start");
        QTest::addColumn<QList<MsgResult>>("answers");
        QTest::addColumn<int>("error");
        QTest::addColumn<bool>("erased");
        QTest::newRow("logged data") << QByteArray("KVX") << QList<MsgResult>{} << 0 << false;
        QTest::newRow("empty page") << QByteArray() << QList<MsgResult>{} << 0 << false;
        QTest::newRow("image, keep it") << QByteArray("KVT") << QList<MsgResult>{MsgResult::No}
                                        << ErrorCode::OperatingSystemDetected << false;
        QTest::newRow("image, clear it") << QByteArray("KVT") << QList<MsgResult>{MsgResult::Yes}
                                         << ErrorCode::OperatingSystemDetected << true;
    }
    void operatingSystemCheck()
    {
        QFETCH(QByteArray, start);
        QFETCH(QList<MsgResult>, answers);
        QFETCH(int, error);
        QFETCH(bool, erased);
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
