// kvtDsw.log: the line format, the question about a large log, and the
// banner and separator of each run.

#include "FakeUserDialogs.h"
#include "app/clsLogger.h"
#include "platform/VirtualClock.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace {
QStringList Lines(const QString& vsPath)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly))
        return {};
    return QString::fromLatin1(lcFile.readAll()).split(QStringLiteral("\r\n"));
}
}

class tst_logger : public QObject
{
    Q_OBJECT
    QTemporaryDir mcDir;
    VirtualClock mcClock;
    QString Dir() const { return mcDir.path() + QLatin1Char('/'); }

private slots:
    void init() { QFile::remove(Dir() + QStringLiteral("kvtDsw.log")); }

    // The time stamp is the event loop's time of day, so a virtual clock gives
    // virtual times. Empty messages write nothing, not even the file.
    void lineFormat()
    {
        clsLogger lcLogger(Dir(), nullptr, mcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
        lcLogger.AddToLog(QString());
        lcLogger.AddWarningToLog(QString());
        lcLogger.AddErrorToLog(QString());
        QVERIFY(!QFile::exists(lcLogger.FileName()));
        mcClock.SetDateTime(QDateTime(QDate(2026, 11, 2), QTime(9, 5, 7)));
        lcLogger.AddToLog(QStringLiteral("ID found 1.2.3.4.5.6.7.8."));
        mcClock.Advance(61000);
        lcLogger.AddWarningToLog(QStringLiteral("bad checksum"));
        mcClock.Advance(15 * 3600 * 1000);
        lcLogger.AddErrorToLog(QStringLiteral("Erase not succesfull"));
        lcLogger.AddToLog(QStringLiteral("raw text"), true);
        QCOMPARE(Lines(lcLogger.FileName()), QStringList({"2026/11/02-09:05:07 - ID found 1.2.3.4.5.6.7.8.",
                                                          "2026/11/02-09:06:08 - WARNING bad checksum",
                                                          "2026/11/03-00:06:08 - ERROR Erase not succesfull", "raw text", ""}));
    }

    void twoRunsAreSeparatedByOneEmptyLine()
    {
        mcClock.SetDateTime(QDateTime(QDate(2026, 11, 2), QTime(9, 5, 7)));
        for (int llRun = 0; llRun < 2; ++llRun) {
            clsLogger lcLogger(Dir(), nullptr, mcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
            lcLogger.Init();
            lcLogger.DeInit();
        }
        const QString lsStamp = QStringLiteral("2026/11/02-09:05:07 - ");
        const QStringList lcRun = {lsStamp + "K.V.T. Download Software 1.0.0", lsStamp + "Logging started",
                                   lsStamp + "Logging stopped", ""};
        QCOMPARE(Lines(Dir() + QStringLiteral("kvtDsw.log")), lcRun + lcRun + QStringList{""});
    }

    void largeLogQuestion_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<bool>("asked");
        QTest::addColumn<bool>("answerYes");
        QTest::newRow("exactly 10 MB is left alone") << qint64(10485760) << false << false;
        QTest::newRow("one byte more, Yes removes") << qint64(10485761) << true << true;
        QTest::newRow("one byte more, No keeps") << qint64(10485761) << true << false;
    }
    void largeLogQuestion()
    {
        QFETCH(qint64, size);
        QFETCH(bool, asked);
        QFETCH(bool, answerYes);
        QFile lcFile(Dir() + QStringLiteral("kvtDsw.log"));
        QVERIFY(lcFile.open(QIODevice::WriteOnly) && lcFile.resize(size));
        lcFile.close();
        FakeUserDialogs lcDialogs;
        lcDialogs.answers.enqueue(answerYes ? MsgResult::Yes : MsgResult::No);
        clsLogger lcLogger(Dir(), &lcDialogs, mcClock, QStringLiteral("Corvane Desktop"), "1.0.0");
        lcLogger.Init();
        QCOMPARE(lcDialogs.boxes.size(), asked ? 1 : 0);
        QCOMPARE(QFileInfo(lcFile.fileName()).size() < size, answerYes);
        if (!asked)
            return;
        const auto& lcBox = lcDialogs.boxes.first();
        QCOMPARE(lcBox.text, QStringLiteral("Log file is larger then xxx Mega bytes\r\nRemove?"));
        QCOMPARE(lcBox.title, QStringLiteral("Corvane Desktop"));
        QCOMPARE(lcBox.buttons, MsgButtons::YesNo);
        QCOMPARE(lcBox.icon, MsgIcon::Question);
    }
};

QTEST_GUILESS_MAIN(tst_logger)
#include "tst_logger.moc"
