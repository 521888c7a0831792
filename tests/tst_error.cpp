// The error value: its number space, table texts, the SetError formatter and
// the capture of a pending run-time error.

#include "app/clsError.h"
#include "platform/Err.h"

#include <QTest>

class tst_error : public QObject
{
    Q_OBJECT
private slots:
    void freshValue();
    void tableTexts_data();
    void tableTexts();
    void descriptionOverrideLastsUntilNextNumber();
    void warningsAreNotErrors();
    void formatter_data();
    void formatter();
    void emptyTextFallsBackToTable();
    void capturesPendingRuntimeError();
    void programErrorIsNotVbError();
    void clearDropsPendingRuntimeError();
};

void tst_error::freshValue()
{
    clsError lcError;
    QCOMPARE(lcError.Error(), 0);
    QVERIFY(!lcError.IsError());
    QCOMPARE(lcError.Description(), QStringLiteral("No error."));
    QVERIFY(lcError.DateTime().isEmpty());
}

void tst_error::tableTexts_data()
{
    QTest::addColumn<qint32>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("communicate") << 0x20000001 << "Unable to communicate with display.";
    QTest::newRow("cancelled") << 0x20000002 << "Action cancelled by user.";
    QTest::newRow("different") << 0x20000003 << "Different display detected.";
    QTest::newRow("open") << 0x20000004 << "Unable to open file.";
    QTest::newRow("empty name") << 0x20000005 << "Filename is empty.";
    QTest::newRow("usb") << 0x20000006
                         << "Unable to find USB PC Interface. Using default COM port settings with the RS232 PC "
                            "Interface.";
    QTest::newRow("os") << 0x20000007 << "Corvane Operating System Detected";
    QTest::newRow("communication") << 0x20000008 << "Communication error";
    QTest::newRow("no file") << 0x20000009 << "No file was selected";
    QTest::newRow("find") << 0x2000000A << "Unable to find file";
    QTest::newRow("unknown program number")
        << 0x2000000B << "Description for this error is not available. Error nr.: 536870923";
    QTest::newRow("runtime number") << 11 << "Description for this error is not available. Error nr.: 11";
}

void tst_error::tableTexts()
{
    QFETCH(qint32, number);
    QFETCH(QString, text);
    clsError lcError;
    lcError.SetError(number);
    QCOMPARE(lcError.Description(), text);
    QCOMPARE(lcError.Error(), number);
    QVERIFY(lcError.IsError());
    QVERIFY(!lcError.DateTime().isEmpty());
}

void tst_error::descriptionOverrideLastsUntilNextNumber()
{
    clsError lcError;
    lcError.SetError(ErrorCode::DifferentDisplay);
    lcError.SetDescription(QStringLiteral("custom"));
    QCOMPARE(lcError.Description(), QStringLiteral("custom"));
    lcError.SetError(ErrorCode::DifferentDisplay);
    QCOMPARE(lcError.Description(), QStringLiteral("Different display detected."));
}

void tst_error::warningsAreNotErrors()
{
    clsError lcError;
    lcError.SetWarning(0x60000006);
    QVERIFY(lcError.IsWarning());
    QVERIFY(!lcError.IsError());
    QCOMPARE(lcError.Error(), 0);
    QCOMPARE(lcError.Warning(), 0x60000006);
    QCOMPARE(lcError.Description(), QStringLiteral("No error."));

    lcError.SetError(ErrorCode::CancelledByUser);
    QVERIFY(!lcError.IsWarning());
    QCOMPARE(lcError.Warning(), 0);
}

void tst_error::formatter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariantList>("args");
    QTest::addColumn<QString>("expected");
    QTest::newRow("two decimals") << "Page %D of %D" << QVariantList{3, 7} << "Page 3 of 7";
    QTest::newRow("lower-case letters") << "%d/%i/%l/%c/%f" << QVariantList{1, 2, 3, 4, 5} << "1/2/3/4/5";
    QTest::newRow("hex upper-case, no prefix") << "0x%X" << QVariantList{255} << "0xFF";
    QTest::newRow("hex of a negative number") << "%X" << QVariantList{-1} << "FFFFFFFF";
    QTest::newRow("octal") << "%O" << QVariantList{8} << "10";
    QTest::newRow("text") << "Unable to find '%S'" << QVariantList{QStringLiteral("a.ssl")} << "Unable to find 'a.ssl'";
    QTest::newRow("unsigned") << "%U" << QVariantList{-2} << "4294967294";
    QTest::newRow("doubled percent") << "100%% done" << QVariantList{} << "100% done";
    QTest::newRow("inserted text is not scanned") << "%S and %D" << QVariantList{QStringLiteral("%D"), 5}
                                                  << "%D and 5";
    QTest::newRow("percent before a plain letter stays") << "50%A" << QVariantList{1} << "50%A";
    QTest::newRow("placeholder without argument stays") << "%D of %D" << QVariantList{1} << "1 of %D";
}

void tst_error::formatter()
{
    QFETCH(QString, text);
    QFETCH(QVariantList, args);
    QFETCH(QString, expected);
    clsError lcError;
    lcError.SetError(1, text, QVector<QVariant>(args.begin(), args.end()), 2, QStringLiteral("here"));
    QCOMPARE(lcError.Description(), expected);
    QCOMPARE(lcError.Level(), 2);
    QCOMPARE(lcError.Location(), QStringLiteral("here"));
}

void tst_error::emptyTextFallsBackToTable()
{
    clsError lcError;
    lcError.SetError(ErrorCode::DifferentDisplay, QString());
    QCOMPARE(lcError.Description(), QStringLiteral("Different display detected."));
}

void tst_error::capturesPendingRuntimeError()
{
    Err::Clear();
    volatile int llZero = 0;
    Err::Trap([&]() {
        if (llZero == 0)
            Err::Raise(VbError::DivisionByZero, QStringLiteral("clsTest"));
    });
    clsError lcError;
    QVERIFY(lcError.IsError());
    QCOMPARE(lcError.Error(), 11);
    QCOMPARE(lcError.Level(), 3);
    QCOMPARE(lcError.Description(), QStringLiteral("Division by zero"));
    QCOMPARE(lcError.Location(), QStringLiteral("clsTest"));
    QVERIFY(lcError.ISVBError());
    QCOMPARE(Err::Number(), 0L);
}

void tst_error::programErrorIsNotVbError()
{
    clsError lcError;
    lcError.SetError(ErrorCode::CancelledByUser);
    QVERIFY(!lcError.ISVBError());
}

void tst_error::clearDropsPendingRuntimeError()
{
    Err::SetPending(clsRuntimeError(VbError::Overflow));
    clsError lcError;
    lcError.SetError(ErrorCode::CancelledByUser);
    lcError.Clear();
    QCOMPARE(lcError.Error(), 0);
    QCOMPARE(Err::Number(), 0L);
    QVERIFY(!lcError.IsError());
}

QTEST_GUILESS_MAIN(tst_error)
#include "tst_error.moc"
