// corvane-display-sim's command line: bad options are refused with a message
// naming what is wrong, and the sample files it writes are what the upload
// paths expect.

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct clsRun {
    int exitCode = -1;
    QString out;
    QString err;
};

clsRun Run(const QStringList& vcArguments)
{
    QProcess lcSim;
    lcSim.start(QStringLiteral(CORVANE_BINARY_DIR "/sim/corvane-display-sim"), vcArguments);
    clsRun lcRun;
    if (!lcSim.waitForFinished(5000)) {
        lcSim.kill();
        lcSim.waitForFinished();
        return lcRun;
    }
    lcRun.exitCode = lcSim.exitCode();
    lcRun.out = QString::fromLocal8Bit(lcSim.readAllStandardOutput());
    lcRun.err = QString::fromLocal8Bit(lcSim.readAllStandardError());
    return lcRun;
}

} // namespace

class tst_SimCli : public QObject
{
    Q_OBJECT
private slots:
    void BadOptionsAreRefused_data();
    void BadOptionsAreRefused();
    void HelpNamesEveryOption();
    void WritesSamplesOfEveryType();
};

void tst_SimCli::BadOptionsAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");

    QTest::newRow("page size") << QStringList{"--page-size-log2", "17"} << "--page-size-log2 17: expected a number from 5 to 16";
    QTest::newRow("max data") << QStringList{"--max-data", "0"} << "--max-data 0: expected a number from 1 to 251";
    QTest::newRow("pages reversed") << QStringList{"--first-page", "5", "--last-page", "2"}
                                    << "--last-page 2 lies before --first-page 5";
    QTest::newRow("id of seven bytes") << QStringList{"--id", "1.2.3.4.5.6.7"} << "--id 1.2.3.4.5.6.7: expected eight bytes";
    QTest::newRow("id byte too large") << QStringList{"--id", "1.2.3.4.5.6.7.256"} << "--id 1.2.3.4.5.6.7.256: expected eight bytes";
    QTest::newRow("unknown fault") << QStringList{"--fault", "drop=0.1,melt=1"} << "--fault melt=1:";
    QTest::newRow("nak-lines not a number") << QStringList{"--fault", "nak-lines=x"} << "--fault nak-lines=x: expected a whole number";
    QTest::newRow("missing image") << QStringList{"--flash", "/nonexistent/flash.img"} << "/nonexistent/flash.img:";
    QTest::newRow("image too large") << QStringList{"--last-page", "1", "--page-size-log2", "5", "--flash", "@big"}
                                     << "bytes, more than the 64 bytes of pages 0 to 1";
}

void tst_SimCli::BadOptionsAreRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    QTemporaryDir lcDir;
    const int llImage = arguments.indexOf(QStringLiteral("@big"));
    if (llImage >= 0) {
        arguments[llImage] = lcDir.filePath(QStringLiteral("big.img"));
        QFile lcFile(arguments[llImage]);
        QVERIFY(lcFile.open(QIODevice::WriteOnly) && lcFile.write(QByteArray(65, '\x01')) == 65);
    }
    const clsRun lcRun = Run(arguments);
    QCOMPARE(lcRun.exitCode, 1);
    QVERIFY2(lcRun.err.contains(message), qPrintable(lcRun.err));
    // Refused before a pty was made: nothing on standard output.
    QCOMPARE(lcRun.out, QString());
}

void tst_SimCli::HelpNamesEveryOption()
{
    const clsRun lcRun = Run({QStringLiteral("--help")});
    QCOMPARE(lcRun.exitCode, 0);
    for (const char* lsOption : {"--link", "--baud", "--no-pacing", "--first-page", "--last-page", "--page-size-log2",
                                 "--max-data", "--id", "--flash", "--save-flash", "--generate", "--seed", "--days",
                                 "--write-samples", "--fault", "--unplug-after", "--log", "--help", "--version",
                                 "nak-lines=", "silent-start=", "silent-after=", "drop=", "corrupt="})
        QVERIFY2(lcRun.out.contains(QLatin1String(lsOption)), lsOption);
}

void tst_SimCli::WritesSamplesOfEveryType()
{
    QTemporaryDir lcDir;
    const QString lsDir = lcDir.filePath(QStringLiteral("samples"));
    const clsRun lcRun = Run({QStringLiteral("--write-samples"), lsDir});
    QCOMPARE(lcRun.exitCode, 0);
    QCOMPARE(lcRun.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts).size(), 8);
    for (const char* lsExt : {"ssl", "sfl", "usl", "ufl", "kvt", "kvt_sa", "kvt_snd", "kvt_md"}) {
        QFile lcFile(QDir(lsDir).filePath(QStringLiteral("sample.") + QLatin1String(lsExt)));
        QVERIFY2(lcFile.open(QIODevice::ReadOnly) && lcFile.size() > 1, lsExt);
    }
    QFile lcKvt(QDir(lsDir).filePath(QStringLiteral("sample.kvt")));
    QVERIFY(lcKvt.open(QIODevice::ReadOnly));
    QCOMPARE(lcKvt.read(3), QByteArray("KVT"));

    QFile lcMd(QDir(lsDir).filePath(QStringLiteral("sample.kvt_md")));
    QVERIFY(lcMd.open(QIODevice::ReadOnly));
    const QList<QByteArray> lcLines = lcMd.readAll().split('\n');
    QVERIFY(lcLines.first().startsWith("MD "));
    QCOMPARE(lcLines[lcLines.size() - 2], QByteArray("4853\r"));
    for (int i = 1; i < lcLines.size() - 1; ++i) {
        const QByteArray lcHex = lcLines[i].chopped(1);
        QVERIFY2(lcHex.size() % 2 == 0 && QByteArray::fromHex(lcHex).toHex().toUpper() == lcHex, lcLines[i].constData());
    }
}

QTEST_GUILESS_MAIN(tst_SimCli)
#include "tst_SimCli.moc"
