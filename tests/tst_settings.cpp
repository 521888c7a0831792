// kvtDsw.ini: defaults, the keys written back (all but "TXT"), the 999-character
// buffer, and an ini file written on Windows surviving a round trip.

#include "TestFiles.h"
#include "app/clsSettings.h"
#include "platform/Err.h"
#include "platform/PrivateProfile.h"

#include <QTemporaryDir>
#include <QTest>

class tst_settings : public QObject
{
    Q_OBJECT
    QTemporaryDir mcDir;
    QString Ini() const { return mcDir.filePath(QStringLiteral("kvtDsw.ini")); }

private slots:
    void init() { QFile::remove(Ini()); }

    // Without a file: port 1, no names, and nothing written before the end.
    void defaultsAndEveryKeyButTxtWritten()
    {
        clsSettings lcSettings(mcDir.path() + QLatin1Char('/'));
        lcSettings.Init();
        QCOMPARE(lcSettings.comPort(), 1);
        for (qint16 i : {0, 1, 2, 3, 4, 6, 10, 11, 12})
            QVERIFY(lcSettings.LastFilenames(i).isEmpty());
        QVERIFY(!QFile::exists(Ini()));
        lcSettings.SetcomPort(4);
        lcSettings.SetLastFilenames(1, QStringLiteral("C:\\db\\spot.ssl"));
        lcSettings.SetLastTXTFilename(QStringLiteral("C:\\new.txt"));
        lcSettings.DeInit();
        QCOMPARE(ReadAll(Ini()), QByteArray("[Common]\r\nCom=4\r\nKVT=\r\nUFL=\r\nUSL=\r\nSFL=\r\nSSL=C:\\db\\spot.ssl\r\n"
                                            "KVT_SA=\r\nKVT_MD=\r\nKVT_SND=\r\n"));
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
        clsSettings lcSettings(mcDir.path() + QLatin1Char('/'));
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
        clsSettings lcSettings(mcDir.path() + QLatin1Char('/'));
        lcSettings.Init();
        QCOMPARE(lcSettings.LastFilenames(0).size(), 998);
        QCOMPARE(lcSettings.LastFilenames(1), QString(998, QLatin1Char('b')));
    }

    // See tests/data/settings/README.md.
    void windowsIniSurvivesRoundTrip()
    {
        WriteAll(Ini(), ReadAll(QStringLiteral(CORVANE_TEST_DATA "/settings/windows-before.ini")));
        clsSettings lcSettings(mcDir.path() + QLatin1Char('/'));
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

QTEST_GUILESS_MAIN(tst_settings)
#include "tst_settings.moc"
