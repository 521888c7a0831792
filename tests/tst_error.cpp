// The error value: its number space, table texts, the SetError formatter and
// the capture of a pending run-time error.

#include "app/clsError.h"
#include "platform/Err.h"

#include <QTest>

class tst_error : public QObject
{
    Q_OBJECT
private slots:
    void value_data();
    void value();
    void formatter_data();
    void formatter();
};

void tst_error::value_data()
{
    // Steps on one error value, then what it reads as:
    // number|warning|description|error|vb|level|location|dated|pending run-time error.
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("reads");
    const QString lsNoText = QStringLiteral("Description for this error is not available. Error nr.: ");
    QTest::newRow("fresh") << "" << "0|0|No error.||||||0";
    QTest::newRow("communicate") << "error 20000001" << "20000001|0|Unable to communicate with display.|error||||dated|0";
    QTest::newRow("cancelled") << "error 20000002" << "20000002|0|Action cancelled by user.|error||||dated|0";
    QTest::newRow("different") << "error 20000003" << "20000003|0|Different display detected.|error||||dated|0";
    QTest::newRow("open") << "error 20000004" << "20000004|0|Unable to open file.|error||||dated|0";
    QTest::newRow("empty name") << "error 20000005" << "20000005|0|Filename is empty.|error||||dated|0";
    QTest::newRow("usb") << "error 20000006"
                         << "20000006|0|Unable to find USB PC Interface. Using default COM port settings with the RS232 "
                            "PC Interface.|error||||dated|0";
    QTest::newRow("os") << "error 20000007" << "20000007|0|Corvane Operating System Detected|error||||dated|0";
    QTest::newRow("communication") << "error 20000008" << "20000008|0|Communication error|error||||dated|0";
    QTest::newRow("no file") << "error 20000009" << "20000009|0|No file was selected|error||||dated|0";
    QTest::newRow("find") << "error 2000000A" << "2000000A|0|Unable to find file|error||||dated|0";
    QTest::newRow("unknown program number") << "error 2000000B"
                                            << "2000000B|0|" + lsNoText + "536870923|error||||dated|0";
    QTest::newRow("run-time number") << "error B" << "B|0|" + lsNoText + "11|error|vb|||dated|0";
    QTest::newRow("own text lasts until the next number")
        << "error 20000003, describe custom" << "20000003|0|custom|error||||dated|0";
    QTest::newRow("next number brings the table text back")
        << "error 20000003, describe custom, error 20000003" << "20000003|0|Different display detected.|error||||dated|0";
    QTest::newRow("warning is no error") << "warn 60000006" << "0|60000006|No error.|||||dated|0";
    QTest::newRow("error after a warning") << "warn 60000006, error 20000002"
                                           << "20000002|0|Action cancelled by user.|error||||dated|0";
    QTest::newRow("pending run-time error is captured") << "raise" << "B|0|Division by zero|error|vb|3|clsTest|dated|0";
    QTest::newRow("clear drops a pending run-time error") << "pend, error 20000002, clear" << "0|0|No error.||||||0";
}

void tst_error::value()
{
    QFETCH(QString, steps);
    QFETCH(QString, reads);
    Err::Clear();
    clsError lcError;
    for (const QString& lsStep : steps.split(QStringLiteral(", "), Qt::SkipEmptyParts)) {
        const QString lsVerb = lsStep.section(QLatin1Char(' '), 0, 0);
        const QString lsArgument = lsStep.section(QLatin1Char(' '), 1);
        if (lsVerb == QLatin1String("error"))
            lcError.SetError(qint32(lsArgument.toUInt(nullptr, 16)));
        else if (lsVerb == QLatin1String("warn"))
            lcError.SetWarning(qint32(lsArgument.toUInt(nullptr, 16)));
        else if (lsVerb == QLatin1String("describe"))
            lcError.SetDescription(lsArgument);
        else if (lsVerb == QLatin1String("clear"))
            lcError.Clear();
        else if (lsVerb == QLatin1String("pend"))
            Err::SetPending(clsRuntimeError(VbError::Overflow));
        else if (lsVerb == QLatin1String("raise"))
            Err::Trap([]() { Err::Raise(VbError::DivisionByZero, QStringLiteral("clsTest")); });
        else
            QFAIL(qPrintable(lsStep));
    }
    const bool lbError = lcError.IsError(); // first: it captures a pending run-time error
    const QStringList lcReads = {QString::number(quint32(lcError.Error()), 16).toUpper(),
                                 QString::number(quint32(lcError.Warning()), 16).toUpper(),
                                 lcError.Description(),
                                 lbError ? QStringLiteral("error") : QString(),
                                 lcError.ISVBError() ? QStringLiteral("vb") : QString(),
                                 lcError.Level() ? QString::number(lcError.Level()) : QString(),
                                 lcError.Location(),
                                 lcError.DateTime().isEmpty() ? QString() : QStringLiteral("dated"),
                                 QString::number(Err::Number())};
    QCOMPARE(lcReads.join(QLatin1Char('|')), reads);
}

void tst_error::formatter_data()
{
    QTest::addColumn<qint32>("number");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariantList>("args");
    QTest::addColumn<QString>("expected");
    QTest::newRow("two decimals") << 1 << "Page %D of %D" << QVariantList{3, 7} << "Page 3 of 7";
    QTest::newRow("lower-case letters") << 1 << "%d/%i/%l/%c/%f" << QVariantList{1, 2, 3, 4, 5} << "1/2/3/4/5";
    QTest::newRow("hex upper-case, no prefix") << 1 << "0x%X" << QVariantList{255} << "0xFF";
    QTest::newRow("hex of a negative number") << 1 << "%X" << QVariantList{-1} << "FFFFFFFF";
    QTest::newRow("octal") << 1 << "%O" << QVariantList{8} << "10";
    QTest::newRow("text") << 1 << "Unable to find '%S'" << QVariantList{QStringLiteral("a.ssl")}
                          << "Unable to find 'a.ssl'";
    QTest::newRow("unsigned") << 1 << "%U" << QVariantList{-2} << "4294967294";
    QTest::newRow("doubled percent") << 1 << "100%% done" << QVariantList{} << "100% done";
    QTest::newRow("inserted text is not scanned")
        << 1 << "%S and %D" << QVariantList{QStringLiteral("%D"), 5} << "%D and 5";
    QTest::newRow("percent before a plain letter stays") << 1 << "50%A" << QVariantList{1} << "50%A";
    QTest::newRow("placeholder without argument stays") << 1 << "%D of %D" << QVariantList{1} << "1 of %D";
    QTest::newRow("empty text gives the table's") << ErrorCode::DifferentDisplay << "" << QVariantList{}
                                                   << "Different display detected.";
}

void tst_error::formatter()
{
    QFETCH(qint32, number);
    QFETCH(QString, text);
    QFETCH(QVariantList, args);
    QFETCH(QString, expected);
    clsError lcError;
    lcError.SetError(number, text, QVector<QVariant>(args.begin(), args.end()), 2, QStringLiteral("here"));
    QCOMPARE(lcError.Description(), expected);
    QCOMPARE(lcError.Level(), 2);
    QCOMPARE(lcError.Location(), QStringLiteral("here"));
}

QTEST_GUILESS_MAIN(tst_error)
#include "tst_error.moc"
