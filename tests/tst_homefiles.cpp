// The program's files in its home directory. kvtDsw.log: the line format, the
// question about a large log, and the banner and separator of each run.
// kvtDsw.ini: defaults, the keys written back (all but "TXT"), the 999-character
// buffer, and an ini file written on Windows surviving a round trip.

#include "FakeUserDialogs.h"
#include "TestFiles.h"
#include "app/clsLogger.h"
#include "app/clsSettings.h"
#include "platform/Err.h"
#include "platform/PrivateProfile.h"
#include "platform/VirtualClock.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

class tst_HomeFiles : public QObject
{
    Q_OBJECT
    QTemporaryDir mcDir;
    VirtualClock mcClock;
    QString Dir() const { return mcDir.path() + QLatin1Char('/'); }
    QString Log() const { return Dir() + QStringLiteral("kvtDsw.log"); }
    QString Ini() const { return Dir() + QStringLiteral("kvtDsw.ini"); }
    QStringList Lines() const { return QString::fromLatin1(ReadAll(Log())).split(QStringLiteral("\r\n")); }

private slots:
    void init()
    {
        QFile::remove(Log());
        QFile::remove(Ini());
    }

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
        QCOMPARE(Lines(), QStringList({"2026/11/02-09:05:07 - ID found 1.2.3.4.5.6.7.8.",
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
        QCOMPARE(Lines(), lcRun + lcRun + QStringList{""});
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
        QFile lcFile(Log());
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

    // Without a file: port 1, no names, and nothing written before the end. Each
    // name is written to its own key and read back from it.
    void defaultsAndEveryKeyButTxtWritten()
    {
        clsSettings lcSettings(Dir());
        lcSettings.Init();
        QCOMPARE(lcSettings.comPort(), 1);
        const QList<qint16> lcWritten = {0, 1, 2, 3, 4, 10, 11, 12};
        for (qint16 i : lcWritten + QList<qint16>{6})
            QVERIFY(lcSettings.LastFilenames(i).isEmpty());
        QVERIFY(!QFile::exists(Ini()));
        lcSettings.SetcomPort(4);
        for (qint16 i : lcWritten)
            lcSettings.SetLastFilenames(i, QStringLiteral("C:\\db\\%1.ssl").arg(i));
        lcSettings.SetLastTXTFilename(QStringLiteral("C:\\new.txt"));
        lcSettings.DeInit();
        QCOMPARE(ReadAll(Ini()), QByteArray("[Common]\r\nCom=4\r\nKVT=C:\\db\\0.ssl\r\nUFL=C:\\db\\4.ssl\r\nUSL=C:\\db\\3.ssl\r\n"
                                            "SFL=C:\\db\\2.ssl\r\nSSL=C:\\db\\1.ssl\r\nKVT_SA=C:\\db\\10.ssl\r\n"
                                            "KVT_MD=C:\\db\\11.ssl\r\nKVT_SND=C:\\db\\12.ssl\r\n"));
        clsSettings lcAgain(Dir());
        lcAgain.Init();
        for (qint16 i : lcWritten)
            QCOMPARE(lcAgain.LastFilenames(i), QStringLiteral("C:\\db\\%1.ssl").arg(i));
        try {
            lcSettings.SetLastFilenames(13, QStringLiteral("x"));
            QFAIL("expected a run-time error");
        } catch (const clsRuntimeError& e) {
            QCOMPARE(e.Number(), VbError::SubscriptOutOfRange);
        }
    }

    // The export's name is read, and never written back: the old value stays in the file.
    void txtIsReadButNotWritten()
    {
        WriteAll(Ini(), "[Common]\r\nTXT=C:\\trips.txt\r\n");
        clsSettings lcSettings(Dir());
        lcSettings.Init();
        QCOMPARE(lcSettings.LastTXTFilename(), QStringLiteral("C:\\trips.txt"));
        QCOMPARE(lcSettings.LastFilenames(6), QStringLiteral("C:\\trips.txt"));
        lcSettings.SetLastTXTFilename(QStringLiteral("C:\\new.txt"));
        lcSettings.DeInit();
        QVERIFY(ReadAll(Ini()).contains("TXT=C:\\trips.txt\r\n"));
        QVERIFY(!ReadAll(Ini()).contains("new.txt"));
    }

    void longValueIsCutAtTheBuffer()
    {
        WriteAll(Ini(), "[Common]\r\nKVT=" + QByteArray(1200, 'a') + "\r\nSSL=" + QByteArray(998, 'b') + "\r\n");
        clsSettings lcSettings(Dir());
        lcSettings.Init();
        QCOMPARE(lcSettings.LastFilenames(0).size(), 998);
        QCOMPARE(lcSettings.LastFilenames(1), QString(998, QLatin1Char('b')));
    }

    // See tests/data/settings/README.md.
    void windowsIniSurvivesRoundTrip()
    {
        WriteAll(Ini(), ReadAll(QStringLiteral(CORVANE_TEST_DATA "/settings/windows-before.ini")));
        clsSettings lcSettings(Dir());
        lcSettings.Init();
        QCOMPARE(lcSettings.comPort(), 3);
        QCOMPARE(lcSettings.LastFilenames(1), QStringLiteral("D:\\Corvane\\Spot\u00E9.ssl"));
        lcSettings.SetcomPort(5);
        lcSettings.DeInit();
        QCOMPARE(ReadAll(Ini()), ReadAll(QStringLiteral(CORVANE_TEST_DATA "/settings/windows-after.ini")));
    }

    void profileInt_data() { AddTableRows(QStringLiteral("profile-int.txt")); }
    void profileInt()
    {
        QFETCH(QStringList, row);
        WriteAll(Ini(), row[1].toLatin1());
        QCOMPARE(PrivateProfile::GetInt(QStringLiteral("Common"), QStringLiteral("COM"), 1, Ini()), long(row[2].toLongLong()));
    }
};

QTEST_GUILESS_MAIN(tst_HomeFiles)
#include "tst_homefiles.moc"
