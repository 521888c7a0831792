// kvtDsw.log: the line format, the question about a large log, and the
// banner and separator of each run.

#include "FakeUserDialogs.h"
#include "app/clsLogger.h"
#include "platform/VirtualClock.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {
QStringList Lines(const QString& vsPath)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly))
        return {};
    QStringList lcLines = QString::fromLatin1(lcFile.readAll()).split(QStringLiteral("\r\n"));
    lcLines.removeLast(); // after the last CR LF
    return lcLines;
}
}

class tst_logger : public QObject
{
    Q_OBJECT
private slots:
    void lineFormat();
    void emptyMessagesWriteNothing();
    void twoRunsAreSeparatedByOneEmptyLine();
    void largeLogQuestion_data();
    void largeLogQuestion();
};

void tst_logger::lineFormat()
{
    QTemporaryDir lcDir;
    VirtualClock lcClock;
    clsLogger lcLogger(lcDir.path() + QLatin1Char('/'), nullptr, lcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
    // The time stamp is the event loop's time of day, so a virtual clock gives virtual times.
    lcClock.SetDateTime(QDateTime(QDate(2026, 11, 2), QTime(9, 5, 7)));
    lcLogger.AddToLog(QStringLiteral("ID found 1.2.3.4.5.6.7.8."));
    lcClock.Advance(61000);
    lcLogger.AddWarningToLog(QStringLiteral("bad checksum"));
    lcClock.Advance(15 * 3600 * 1000);
    lcLogger.AddErrorToLog(QStringLiteral("Erase not succesfull"));
    lcLogger.AddToLog(QStringLiteral("raw text"), true);
    QCOMPARE(Lines(lcLogger.FileName()), QStringList({"2026/11/02-09:05:07 - ID found 1.2.3.4.5.6.7.8.",
                                                      "2026/11/02-09:06:08 - WARNING bad checksum",
                                                      "2026/11/03-00:06:08 - ERROR Erase not succesfull",
                                                      "raw text"}));
}

void tst_logger::emptyMessagesWriteNothing()
{
    QTemporaryDir lcDir;
    VirtualClock lcClock;
    clsLogger lcLogger(lcDir.path() + QLatin1Char('/'), nullptr, lcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
    lcLogger.AddToLog(QString());
    lcLogger.AddWarningToLog(QString());
    lcLogger.AddErrorToLog(QString());
    QVERIFY(!QFile::exists(lcLogger.FileName()));
}

void tst_logger::twoRunsAreSeparatedByOneEmptyLine()
{
    QTemporaryDir lcDir;
    for (int run = 0; run < 2; ++run) {
        VirtualClock lcClock;
        clsLogger lcLogger(lcDir.path() + QLatin1Char('/'), nullptr, lcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
        lcLogger.Init();
        lcLogger.DeInit();
    }
    QStringList lcLines = Lines(lcDir.path() + QStringLiteral("/kvtDsw.log"));
    static const QRegularExpression scStamp(QStringLiteral("^[0-9/:-]{19} - "));
    for (QString& rsLine : lcLines)
        rsLine.remove(scStamp);
    QCOMPARE(lcLines,
             QStringList({"K.V.T. Download Software 1.0.0", "Logging started", "Logging stopped", "",
                          "K.V.T. Download Software 1.0.0", "Logging started", "Logging stopped", ""}));
}

void tst_logger::largeLogQuestion_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("answerYes");
    QTest::addColumn<bool>("removed");
    QTest::newRow("exactly 10 MB is left alone") << qint64(10485760) << false << false << false;
    QTest::newRow("one byte more, Yes removes") << qint64(10485761) << true << true << true;
    QTest::newRow("one byte more, No keeps") << qint64(10485761) << true << false << false;
}

void tst_logger::largeLogQuestion()
{
    QFETCH(qint64, size);
    QFETCH(bool, asked);
    QFETCH(bool, answerYes);
    QFETCH(bool, removed);
    QTemporaryDir lcDir;
    VirtualClock lcClock;
    const QString lsLog = lcDir.path() + QStringLiteral("/kvtDsw.log");
    {
        QFile lcFile(lsLog);
        QVERIFY(lcFile.open(QIODevice::WriteOnly));
        QVERIFY(lcFile.resize(size));
    }
    FakeUserDialogs lcDialogs;
    lcDialogs.answers.enqueue(answerYes ? MsgResult::Yes : MsgResult::No);
    clsLogger lcLogger(lcDir.path() + QLatin1Char('/'), &lcDialogs, lcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
    lcLogger.Init();
    QCOMPARE(lcDialogs.boxes.size(), asked ? 1 : 0);
    if (asked) {
        const auto& lcBox = lcDialogs.boxes.first();
        QCOMPARE(lcBox.text, QStringLiteral("Log file is larger then xxx Mega bytes\r\nRemove?"));
        QCOMPARE(lcBox.title, QStringLiteral("Corvane Desktop"));
        QCOMPARE(lcBox.buttons, MsgButtons::YesNo);
        QCOMPARE(lcBox.icon, MsgIcon::Question);
    }
    const qint64 llNewSize = QFileInfo(lsLog).size();
    QCOMPARE(llNewSize < size, removed);
}

QTEST_GUILESS_MAIN(tst_logger)
#include "tst_logger.moc"
