// kvtDsw.ini: defaults, the keys written back (all but "TXT"), the 999-character
// buffer, and an ini file written on Windows surviving a round trip.

#include "TestFiles.h"
#include "app/clsSettings.h"
#include "platform/Err.h"
#include "platform/PrivateProfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class tst_settings : public QObject
{
    Q_OBJECT
private slots:
    void defaultsWithoutFile();
    void writesEveryKeyButTxt();
    void txtIsReadButNotWritten();
    void longValueIsCutAtTheBuffer();
    void windowsIniSurvivesRoundTrip();
    void indexOutsideTheArrayIsSubscriptError();
    void profileInt_data();
    void profileInt();

private:
    QTemporaryDir mcDir;
    QString Dir() const { return mcDir.path() + QLatin1Char('/'); }
};

void tst_settings::defaultsWithoutFile()
{
    QTemporaryDir lcDir;
    clsSettings lcSettings(lcDir.path() + QLatin1Char('/'));
    lcSettings.Init();
    QCOMPARE(lcSettings.comPort(), 1);
    QVERIFY(lcSettings.LastTXTFilename().isEmpty());
    for (qint16 i : {0, 1, 2, 3, 4, 6, 10, 11, 12})
        QVERIFY(lcSettings.LastFilenames(i).isEmpty());
    QVERIFY(!QFile::exists(lcSettings.FileName()));
}

void tst_settings::writesEveryKeyButTxt()
{
    QTemporaryDir lcDir;
    clsSettings lcSettings(lcDir.path() + QLatin1Char('/'));
    lcSettings.Init();
    lcSettings.SetcomPort(4);
    lcSettings.SetLastFilenames(1, QStringLiteral("C:\\db\\spot.ssl"));
    lcSettings.DeInit();
    QCOMPARE(ReadAll(lcSettings.FileName()),
             QByteArray("[Common]\r\nCom=4\r\nKVT=\r\nUFL=\r\nUSL=\r\nSFL=\r\nSSL=C:\\db\\spot.ssl\r\n"
                        "KVT_SA=\r\nKVT_MD=\r\nKVT_SND=\r\n"));
}

void tst_settings::txtIsReadButNotWritten()
{
    QTemporaryDir lcDir;
    const QString lsIni = lcDir.path() + QStringLiteral("/kvtDsw.ini");
    WriteAll(lsIni, "[Common]\r\nTXT=C:\\trips.txt\r\n");
    clsSettings lcSettings(lcDir.path() + QLatin1Char('/'));
    lcSettings.Init();
    QCOMPARE(lcSettings.LastTXTFilename(), QStringLiteral("C:\\trips.txt"));
    QCOMPARE(lcSettings.LastFilenames(6), QStringLiteral("C:\\trips.txt"));
    lcSettings.SetLastTXTFilename(QStringLiteral("C:\\new.txt"));
    lcSettings.DeInit();
    // The old value stays in the file: the export's name is never written back.
    QVERIFY(ReadAll(lsIni).contains("TXT=C:\\trips.txt\r\n"));
    QVERIFY(!ReadAll(lsIni).contains("new.txt"));
}

void tst_settings::longValueIsCutAtTheBuffer()
{
    QTemporaryDir lcDir;
    const QString lsIni = lcDir.path() + QStringLiteral("/kvtDsw.ini");
    WriteAll(lsIni, "[Common]\r\nKVT=" + QByteArray(1200, 'a') + "\r\nSSL=" + QByteArray(998, 'b') + "\r\n");
    clsSettings lcSettings(lcDir.path() + QLatin1Char('/'));
    lcSettings.Init();
    QCOMPARE(lcSettings.LastFilenames(0).size(), 998);
    QCOMPARE(lcSettings.LastFilenames(1), QString(998, QLatin1Char('b')));
}

void tst_settings::windowsIniSurvivesRoundTrip()
{
    QTemporaryDir lcDir;
    const QString lsIni = lcDir.path() + QStringLiteral("/kvtDsw.ini");
    const QByteArray lcOriginal = "; written by Corvane Desktop on Windows\r\n"
                                  "[common]\r\n"
                                  "com=3\r\n"
                                  "Ssl=D:\\Corvane\\Spot\xE9.ssl\r\n"
                                  "Extra=keep me\r\n"
                                  "\r\n"
                                  "[Window]\r\n"
                                  "Left=120\r\n"
                                  "; a comment in another section\r\n";
    WriteAll(lsIni, lcOriginal);
    clsSettings lcSettings(lcDir.path() + QLatin1Char('/'));
    lcSettings.Init();
    QCOMPARE(lcSettings.comPort(), 3);
    QCOMPARE(lcSettings.LastFilenames(1), QStringLiteral("D:\\Corvane\\Spot\u00E9.ssl"));
    lcSettings.SetcomPort(5);
    lcSettings.DeInit();
    QCOMPARE(ReadAll(lsIni),
             QByteArray("; written by Corvane Desktop on Windows\r\n"
                        "[common]\r\n"
                        "Com=5\r\n"
                        "SSL=D:\\Corvane\\Spot\xE9.ssl\r\n"
                        "Extra=keep me\r\n"
                        "KVT=\r\nUFL=\r\nUSL=\r\nSFL=\r\nKVT_SA=\r\nKVT_MD=\r\nKVT_SND=\r\n"
                        "\r\n"
                        "[Window]\r\n"
                        "Left=120\r\n"
                        "; a comment in another section\r\n"));
}

void tst_settings::indexOutsideTheArrayIsSubscriptError()
{
    clsSettings lcSettings(Dir());
    try {
        lcSettings.SetLastFilenames(13, QStringLiteral("x"));
        QFAIL("expected a run-time error");
    } catch (const clsRuntimeError& e) {
        QCOMPARE(e.Number(), VbError::SubscriptOutOfRange);
    }
}

void tst_settings::profileInt_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("value");
    QTest::newRow("missing key gives the default") << QByteArray("[Common]\r\n") << 1;
    QTest::newRow("leading number") << QByteArray("[Common]\r\nCom=12abc\r\n") << 12;
    QTest::newRow("no number") << QByteArray("[Common]\r\nCom=abc\r\n") << 0;
    QTest::newRow("spaces around") << QByteArray("[Common]\r\n  Com = 7 \r\n") << 7;
    QTest::newRow("key of another section") << QByteArray("[Other]\r\nCom=9\r\n") << 1;
    QTest::newRow("26 digits") << QByteArray("[Common]\r\nCom=99999999999999999999999999\r\n") << 2147483647;
    QTest::newRow("26 digits below zero") << QByteArray("[Common]\r\nCom=-99999999999999999999999999\r\n")
                                          << -2147483647 - 1;
    QTest::newRow("one past the largest") << QByteArray("[Common]\r\nCom=2147483648\r\n") << 2147483647;
    QTest::newRow("the smallest") << QByteArray("[Common]\r\nCom=-2147483648\r\n") << -2147483647 - 1;
    QTest::newRow("one past 32 bits") << QByteArray("[Common]\r\nCom=4294967297\r\n") << 2147483647;
}

void tst_settings::profileInt()
{
    QFETCH(QByteArray, content);
    QFETCH(int, value);
    const QString lsIni = Dir() + QStringLiteral("int.ini");
    WriteAll(lsIni, content);
    QCOMPARE(PrivateProfile::GetInt(QStringLiteral("Common"), QStringLiteral("COM"), 1, lsIni), long(value));
}

QTEST_GUILESS_MAIN(tst_settings)
#include "tst_settings.moc"
