// The error value: its number space, table texts, the SetError formatter and
// the capture of a pending run-time error.

#include "TestFiles.h"
#include "app/clsError.h"
#include "platform/Err.h"

#include <QTest>

class tst_error : public QObject
{
    Q_OBJECT
private slots:
    void value_data() { AddTableRows(QStringLiteral("error-values.txt")); }
    void value()
    {
        QFETCH(QStringList, row);
        const QString steps = row[1], reads = row[2];
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
        QCOMPARE(lcReads.join(QLatin1Char(';')), reads);
    }

    void formatter_data() { AddTableRows(QStringLiteral("error-formatter.txt")); }
    void formatter()
    {
        QFETCH(QStringList, row);
        const QString number = row[1], text = row[2], arguments = row[3], expected = row[4];
        QVector<QVariant> lcArguments;
        for (const QString& lsArgument : arguments.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            bool lbNumber = false;
            const int llValue = lsArgument.toInt(&lbNumber);
            lcArguments << (lbNumber ? QVariant(llValue) : QVariant(lsArgument));
        }
        clsError lcError;
        lcError.SetError(qint32(number.toUInt(nullptr, 16)), text, lcArguments, 2, QStringLiteral("here"));
        QCOMPARE(lcError.Description(), expected);
        QCOMPARE(lcError.Level(), 2);
        QCOMPARE(lcError.Location(), QStringLiteral("here"));
    }
};

QTEST_GUILESS_MAIN(tst_error)
#include "tst_error.moc"
