// The operation frame every user action runs in, the codec's refusal of a
// second request inside a wait, and the raw port session.

#include "RecordingSerialPort.h"
#include "SimRig.h"
#include "app/clsCommunicationScope.h"
#include "app/clsSettings.h"
#include "link/clsHalvexMsg.h"
#include "link/clsRawPortSession.h"
#include "platform/Err.h"

#include <QTest>

namespace {
const QStringList kWindowFrame{"EnableButtons(0)", "EnableMenu(0)", "ClearGrid", "AutoSizeTheColumns",
                               "EnableMenu(1)", "EnableButtons(1)"};
const QStringList kQuietFrame{"EnableButtons(0)", "EnableMenu(0)", "EnableButtons(1)", "EnableMenu(1)"};
// The ID request as it goes on the wire, and the memory map request.
const QByteArray kIdRequest("\x00\x00\x66\x01\x07\xCE\xAE", 7);
const QByteArray kMemoryRequest("\x00\x00\x66\x01\x07\x36\x56", 7);

enum class Body { Nothing, ProgramError, Cancel, RuntimeError, RuntimeAfterOwnError, HeldLinkThenThrow, Nested };
struct FrameCase { Body body; bool quiet; int number; QString description; bool cancelled; };
}

class tst_Operation : public QObject
{
    Q_OBJECT

private slots:
    void frame_data()
    {
        QTest::addColumn<FrameCase>("c");
        const QString lsDifferent = QStringLiteral("Different display detected.");
        const QString lsCancelled = QStringLiteral("Action cancelled by user.");
        QTest::newRow("done") << FrameCase{Body::Nothing, false, 0, "", false};
        QTest::newRow("program error") << FrameCase{Body::ProgramError, false, ErrorCode::DifferentDisplay, lsDifferent, false};
        QTest::newRow("cancelled") << FrameCase{Body::Cancel, false, ErrorCode::CancelledByUser, lsCancelled, true};
        QTest::newRow("run-time error") << FrameCase{Body::RuntimeError, false, int(VbError::Overflow), "Overflow", false};
        QTest::newRow("the first error stays")
            << FrameCase{Body::RuntimeAfterOwnError, false, ErrorCode::DifferentDisplay, lsDifferent, false};
        QTest::newRow("link held when it throws")
            << FrameCase{Body::HeldLinkThenThrow, false, int(VbError::SubscriptOutOfRange), "Subscript out of range", false};
        QTest::newRow("inner frame leaves the window alone") << FrameCase{Body::Nested, false, 0, "", false};
        QTest::newRow("quiet, run-time error") << FrameCase{Body::RuntimeError, true, int(VbError::Overflow), "Overflow", false};
        QTest::newRow("quiet, cancelled") << FrameCase{Body::Cancel, true, ErrorCode::CancelledByUser, lsCancelled, true};
    }
    // Whatever the operation does, the link is given back, the window comes on
    // again, auto-detection runs again and the outcome tells what happened.
    void frame()
    {
        QFETCH(FrameCase, c);
        const auto& [body, quiet, number, description, cancelled] = c;
        TestApp t;
        clsApplication& lcApp = *t.app;
        // link held, auto-detection running, cancel requested
        const auto lcState = [&]() {
            return QStringLiteral("%1 %2 %3")
                .arg(lcApp.CommunicationIsRunning()).arg(lcApp.AutoDetectionRunning()).arg(lcApp.CancelRequested());
        };
        QCOMPARE(lcState(), QStringLiteral("0 1 0"));
        lcApp.RequestCancel();
        QString lsInside;
        const auto lcOperation = [&](clsError& rcError) {
            lsInside = lcState();
            switch (c.body) {
            case Body::Nothing: break;
            case Body::ProgramError: rcError.SetError(ErrorCode::DifferentDisplay); break;
            case Body::Cancel: rcError.SetError(ErrorCode::CancelledByUser); break;
            case Body::RuntimeError: Err::Raise(VbError::Overflow); break;
            case Body::RuntimeAfterOwnError:
                rcError.SetError(ErrorCode::DifferentDisplay);
                Err::Raise(VbError::Overflow);
                break;
            case Body::HeldLinkThenThrow: {
                clsCommunicationScope lcInner(lcApp);
                Err::Raise(VbError::SubscriptOutOfRange);
                break;
            }
            case Body::Nested: {
                const clsOutcome lcInner = lcApp.RunOperation([](clsError&) { Err::Raise(VbError::DivisionByZero); });
                QCOMPARE(lcInner.Number, int(VbError::DivisionByZero));
                QVERIFY(!lcApp.AutoDetectionRunning());
                break;
            }
            }
        };
        const clsOutcome lcOutcome = quiet ? lcApp.RunOperationQuietly(lcOperation) : lcApp.RunOperation(lcOperation);
        QCOMPARE(lcOutcome.Number, number);
        QCOMPARE(lcOutcome.Description, description);
        QCOMPARE(lcOutcome.Cancelled, cancelled);
        QCOMPARE(lsInside, QStringLiteral("1 0 0"));
        QCOMPARE(lcState(), QStringLiteral("0 1 0"));
        QCOMPARE(t.window.calls, quiet ? kQuietFrame : kWindowFrame);
        const QString lsShown = body == Body::Nested ? QStringLiteral("Division by zero") : description;
        QCOMPARE(t.window.LastStatus(), quiet ? QString() : lsShown);
        QCOMPARE(t.LogLines().filter(QStringLiteral("ERROR ")),
                 quiet || lsShown.isEmpty() ? QStringList() : QStringList{QStringLiteral("ERROR ") + lsShown});
        QCOMPARE(Err::Number(), 0L);
    }

    void secondRequestInsideAWait_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("SendAndWait") << 0;
        QTest::newRow("Send") << 1;
        QTest::newRow("SendFlashData") << 2;
    }
    // Inside the wait of a request nothing else reaches the line: the
    // auto-detection timer is off, and a second request is refused.
    void secondRequestInsideAWait()
    {
        QFETCH(int, kind);
        RecordingSerialPort lcPort;
        TestApp t(&lcPort);
        lcPort.loop = &t.clock;
        clsHalvexMsg& lcMessage = t.app->MessageBrooker();
        QString lsRefusal;
        int llTimers = -1;
        t.clock.ScheduleIn(500, [&]() {
            llTimers = t.clock.ActiveTimerCount();
            try {
                qint32 llTimeout = 1000;
                if (kind == 0)
                    lcMessage.SendAndWait(0xD0, QString(), llTimeout);
                else if (kind == 1)
                    lcMessage.Send(0x10, QString());
                else
                    lcMessage.SendFlashData(1, 0, 0, 1, 0, QByteArray(1, 'x'));
            } catch (const clsRuntimeError& e) {
                lsRefusal = e.Description();
            }
        });
        bool lbAnswered = true;
        const clsOutcome lcOutcome = t.app->RunOperation([&](clsError&) {
            qint32 llTimeout = 1000;
            lbAnswered = lcMessage.SendAndWait(0xCE, QString(), llTimeout);
        });
        QVERIFY(!lcOutcome.IsError());
        QVERIFY(!lbAnswered);
        QCOMPARE(llTimers, 0);
        QCOMPARE(lsRefusal, QStringLiteral("A request to the display is still waiting for its answer"));
        QCOMPARE(lcPort.written, QList<QByteArray>{kIdRequest});
        QCOMPARE(lcMessage.SendFunc(), quint8(0xCE));
        QCOMPARE(t.clock.timeGetTime(), 1000u);
        QCOMPARE(t.clock.ActiveTimerCount(), 1);
    }

    void rawSessionRestoresTheCodec_data()
    {
        QTest::addColumn<bool>("throws");
        QTest::newRow("ends normally") << false;
        QTest::newRow("left by a run-time error") << true;
    }
    // While the session lives the port's input is the session's, whatever
    // else happens to the port; afterwards the codec has it again.
    void rawSessionRestoresTheCodec()
    {
        QFETCH(bool, throws);
        SimRig r;
        clsApplication& lcApp = r.app();
        clsError lcError;
        lcApp.GetDallesID(lcError);
        const clsOutcome lcOutcome = lcApp.RunOperation([&](clsError&) {
            clsRawPortSession lcRaw(lcApp);
            // Settings applied meanwhile must not give the port back to the codec.
            lcApp.Settings().SetcomPort(3);
            lcApp.ApplyPortSettings();
            QVERIFY(lcRaw.Output(kMemoryRequest));
            const quint32 llSent = r.clock->timeGetTime();
            lcRaw.Flush();
            // 7 bytes of 10 bits at 57600 bit/s
            QCOMPARE(r.clock->timeGetTime() - llSent, 2u);
            QVERIFY(lcRaw.WaitForInput(llSent + 1000));
            const QByteArray lcReply = lcRaw.Input();
            QVERIFY2(lcReply.startsWith(QByteArray("\x00\x00\x01\x66", 4)), lcReply.toHex().constData());
            QCOMPARE(quint8(lcReply.at(5)), quint8(0x36));
            QCOMPARE(lcApp.MessageBrooker().ReceiveFunc(), quint8(0xCE));
            QVERIFY(lcRaw.Output(kIdRequest));
            QVERIFY(lcRaw.WaitForInput(r.clock->timeGetTime() + 1000));
            lcRaw.Purge();
            QVERIFY(lcRaw.Input().isEmpty());
            const quint32 llDeadline = r.clock->timeGetTime() + 300;
            QVERIFY(!lcRaw.WaitForInput(llDeadline));
            QCOMPARE(r.clock->timeGetTime(), llDeadline);
            if (throws)
                Err::Raise(VbError::Overflow);
        });
        QCOMPARE(lcOutcome.IsError(), throws);
        QCOMPARE(lcApp.GetDallesID(lcError), QStringLiteral("12.0.34.5.6.7.8.9."));
        QVERIFY(!lcError.IsError());
        QCOMPARE(lcApp.MessageBrooker().ReceiveFunc(), quint8(0xCE));
    }
};

QTEST_GUILESS_MAIN(tst_Operation)
#include "tst_operation.moc"
