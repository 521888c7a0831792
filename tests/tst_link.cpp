// The reliable request and the link members of the application, against the
// simulated display on the virtual clock.

#include "support/SimRig.h"
#include "link/clsHalvexMsg.h"

#include <QElapsedTimer>
#include <QTest>

namespace {
const QString kId = QStringLiteral("12.0.34.5.6.7.8.9.");
const QString kRetryBox = QStringLiteral("Corvane Desktop: Unable to communicate with display\r\nplease check the cables\r\n"
                                         "Press ok to continue and cancel to stop [OKCancel None]");

struct Retries { QString faults; QList<MsgResult> answers; int error, requests; QString lastRetry; };
// ms, bytes: the virtual time taken and the bytes on the line both ways
struct IdCase {
    QByteArray id; bool stopped; int silentFrom; QString text, status; int error, requests; quint32 ms; qint64 bytes;
};
}

class tst_Link : public QObject
{
    Q_OBJECT

private slots:
    void retries_data()
    {
        QTest::addColumn<Retries>("c");
        using R = QList<MsgResult>;
        QTest::newRow("answered at once") << Retries{"", {}, 0, 1, ""};
        QTest::newRow("fifth attempt answered") << Retries{"drop-next=4", {}, 0, 5, "Retry 4"};
        QTest::newRow("sixth attempt answered still asks")
            << Retries{"drop-next=5", R{MsgResult::Cancel}, ErrorCode::CancelledByUser, 6, "Retry 5"};
        QTest::newRow("OK, same display: fresh round") << Retries{"drop-next=6", R{MsgResult::OK}, 0, 8, "Retry 5"};
        QTest::newRow("OK, another display") << Retries{"drop-next=6,new-id-from=7,new-id=1.2.3.4.5.6.7.8",
                                                        R{MsgResult::OK, MsgResult::OK}, ErrorCode::DifferentDisplay,
                                                        7, "Retry 5"};
        // the ID request gets its own box; cancelled there, the ID is empty and the round starts again
        QTest::newRow("OK, no ID answer: round again")
            << Retries{"silent-from=1", R{MsgResult::OK, MsgResult::Cancel, MsgResult::Cancel}, ErrorCode::CancelledByUser,
                       18, "Retry 5"};
    }
    void retries()
    {
        QFETCH(Retries, c);
        const auto& [faults, answers, error, requests, lastRetry] = c;
        SimRig r;
        r.Fault(faults);
        r.t.dialogs.answers.append(answers);
        r.app().SetDisplayId(kId);
        QStringList lcRetryLines;
        connect(&r.app().Status(), &clsStatus::StatusChanged, [&]() {
            if (!r.app().Status().SmallStatusString().isEmpty())
                lcRetryLines << r.app().Status().SmallStatusString();
        });
        QElapsedTimer lcReal;
        lcReal.start();
        clsError lcError;
        r.app().SendAndRetry(lcError, 0x36, QString());
        QVERIFY(lcReal.elapsed() < 500);
        QCOMPARE(lcError.Error(), error);
        QCOMPARE(r.display.Stats().requests, requests);
        QCOMPARE(lcRetryLines.value(lcRetryLines.size() - 1), lastRetry);
        QCOMPARE(r.app().Status().SmallStatusString(), QString());
        QStringList lcBoxes(answers.size(), kRetryBox);
        if (error == ErrorCode::DifferentDisplay) {
            lcBoxes.last() = QStringLiteral("Corvane Desktop: Different display detected, aborting [OK None]");
            QCOMPARE(r.app().Status().StatusString(), QStringLiteral("Different display detected, aborting"));
        }
        QCOMPARE(r.t.dialogs.Shown(true), lcBoxes);
        // an unanswered attempt costs a second
        QVERIFY(r.clock->timeGetTime() >= quint32(1000 * qMin(requests - 1, 6)));
    }

    // Answers the reliable request does not take, each costing one attempt: a
    // wrong checksum (logged), another function code, the second answer of a
    // late display that still heard the retry (it comes in the pause before
    // the next request), and the answer after a zero checksum that came
    // without its 0x01 (the receiver still waits for the meaning of that zero;
    // the ID below ends in one). The display echoes 0x7E's argument. codec:
    // what the frame codec alone makes of the fault, answered and checksum
    // right; it takes a garbled answer.
    void answersNotTaken_data()
    {
        QTest::addColumn<QString>("faults");
        QTest::addColumn<int>("requests");
        QTest::addColumn<QString>("warning");
        QTest::addColumn<QString>("codec");
        QTest::newRow("wrong checksum")
            << "only-func=0x7E,corrupt-next=1" << 4 << "WARNING Answer to function 0x7E has a wrong checksum" << "1 0";
        QTest::newRow("another function code") << "only-func=0x7E,wrong-func-next=1" << 4 << "" << "0 1";
        QTest::newRow("second answer of a late display") << "only-func=0x7E,late-next=1,late-listening" << 4 << "" << "";
        QTest::newRow("zero checksum and 0x01") << "" << 3 << "" << "";
        QTest::newRow("plain zero checksum") << "plain-zero-cs" << 4 << "" << "";
    }
    void answersNotTaken()
    {
        QFETCH(QString, faults);
        QFETCH(int, requests);
        QFETCH(QString, warning);
        QFETCH(QString, codec);
        SimRig r;
        r.display.SetId(QByteArray::fromHex("A701010101010101"));
        r.display.SetEchoFunction(0x7E);
        r.display.Faults().CorruptIndex = 6;
        r.Fault(faults);
        clsError lcError;
        QCOMPARE(r.app().GetDallesID(lcError), QStringLiteral("167.1.1.1.1.1.1.1."));
        QCOMPARE(r.app().MessageBrooker().ReceiveCS(), quint8(0));
        r.app().SendAndRetry(lcError, 0x7E, QStringLiteral("0x01"));
        r.app().SendAndRetry(lcError, 0x7E, QStringLiteral("0x02"));
        QVERIFY(!lcError.IsError());
        QCOMPARE(r.app().MessageBrooker().ReceiveArguments(0), quint8(2));
        QCOMPARE(r.display.Stats().requests, requests);
        QCOMPARE(r.t.LogLines().filter(QStringLiteral("WARNING")), warning.isEmpty() ? QStringList() : QStringList{warning});
        if (codec.isEmpty())
            return;
        r.Fault(faults);
        qint32 llTimeout = 1000;
        const bool lbAnswered = r.app().MessageBrooker().SendAndWait(0x7E, QStringLiteral("0x03"), llTimeout);
        QCOMPARE(QStringLiteral("%1 %2").arg(lbAnswered).arg(r.app().MessageBrooker().ReceiveCSOK()), codec);
    }

    void getDallesId_data()
    {
        QTest::addColumn<IdCase>("c");
        const QByteArray lcId = QByteArray::fromHex("0C00220506070809");
        const QString lsReceived = QStringLiteral("Received ID from display");
        // 7 bytes out, 16 back (the ID holds a zero) at 5760 bytes a second: the answer is in after 4 ms
        QTest::newRow("eight numbers, eight points") << IdCase{lcId, false, 0, kId, lsReceived, 0, 1, 4, 23};
        QTest::newRow("short answer gives zeros")
            << IdCase{QByteArray::fromHex("010203"), false, 0, "1.2.3.0.0.0.0.0.", lsReceived, 0, 1, 3, 17};
        QTest::newRow("communication stopped")
            << IdCase{lcId, true, 0, "", "Getting ID from display", ErrorCode::CommunicationError, 0, 0, 0};
        QTest::newRow("no answer, cancelled: logged")
            << IdCase{lcId, false, 1, "", "Unable to get ID from display", ErrorCode::CancelledByUser, 6, 6000, 42};
    }
    void getDallesId()
    {
        QFETCH(IdCase, c);
        const auto& [id, stopped, silentFrom, text, status, error, requests, ms, bytes] = c;
        SimRig r;
        r.display.SetId(id);
        r.display.Faults().SilentFromRequest = silentFrom;
        if (silentFrom)
            r.t.dialogs.answers << MsgResult::Cancel;
        r.app().SetCommunicationStopped(stopped);
        clsError lcError;
        QCOMPARE(r.app().GetDallesID(lcError), text);
        QCOMPARE(lcError.Error(), error);
        QCOMPARE(r.app().Status().StatusString(), status);
        QCOMPARE(r.display.Stats().requests, requests);
        QCOMPARE(r.t.LogLines().last() == QStringLiteral("ERROR Unable to get ID from display"), silentFrom != 0);
        QCOMPARE(r.clock->timeGetTime(), ms);
        QCOMPARE(r.port.BytesToDisplay() + r.port.BytesFromDisplay(), bytes);
    }

    void lowCurrent_data()
    {
        QTest::addColumn<bool>("silent");
        QTest::addColumn<QString>("requests");
        QTest::newRow("both pairs in order") << false << "B:0000 B:0100";
        QTest::newRow("second only after the first") << true << "B:0000*6";
    }
    void lowCurrent()
    {
        QFETCH(bool, silent);
        QFETCH(QString, requests);
        SimRig r;
        r.display.Faults().SilentFromRequest = silent ? 1 : 0;
        r.t.dialogs.answers << MsgResult::Cancel;
        clsError lcError;
        r.app().MakeSureLowCurrentDisplay(lcError);
        QCOMPARE(r.Trace(), requests);
        QCOMPARE(r.display.LowCurrent(), !silent);
    }
};

QTEST_GUILESS_MAIN(tst_Link)
#include "tst_link.moc"
