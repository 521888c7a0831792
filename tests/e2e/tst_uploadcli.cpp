// corvane upload-db, upload-software and update-firmware as a user runs them,
// against corvane-display-sim on a pseudo-terminal, in real time.

#include "CorvaneProcess.h"
#include "TestFiles.h"

#include "sim/clsSimSamples.h"

#include <QDir>
#include <QtTest>

#include <csignal>


namespace {
constexpr int kPageSize = 4096; // the simulator's default geometry: pages 0 to 63

QString Sample(const QTemporaryDir& vcDir, const char* vsExtension)
{
    return vcDir.filePath(QStringLiteral("samples/sample.") + QLatin1String(vsExtension));
}
}

class tst_UploadCli : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void help_data();
    void help();
    void nothingChosen_data();
    void nothingChosen();
    void missingFileSendsNothing();
    void databasesLandPageAfterPage();
    void verifyFindsOldDataUnderTheFile();
    void firmwareWithARejectingBootloader();
    void interruptedFirmwareUpdate();

private:
    QTemporaryDir mcSamples;
};

void tst_UploadCli::initTestCase()
{
    QProcess lcWrite;
    lcWrite.start(kSimulator, {"--write-samples", mcSamples.filePath(QStringLiteral("samples"))});
    QVERIFY(lcWrite.waitForFinished(10000));
    QCOMPARE(lcWrite.exitCode(), 0);
}

void tst_UploadCli::help_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("options");
    QTest::newRow("upload-db") << "upload-db" << QStringList{"--ssl", "--sfl", "--usl", "--ufl", "--verify"};
    QTest::newRow("upload-software") << "upload-software" << QStringList{"--kvt", "--kvt-sa", "--kvt-snd", "--verify"};
    QTest::newRow("update-firmware") << "update-firmware" << QStringList{"--kvt-md"};
}

void tst_UploadCli::help()
{
    QFETCH(QString, command);
    QFETCH(QStringList, options);
    const clsRun lcRun = Corvane({command, "--help"});
    QCOMPARE(lcRun.exitCode, 0);
    QVERIFY2(lcRun.out.startsWith(QStringLiteral("Usage: corvane %1 ").arg(command)), qPrintable(lcRun.out));
    for (const QString& lsOption : options + QStringList{"--port", "--home", "--yes,"})
        QVERIFY2(lcRun.out.contains(lsOption + QLatin1Char(' ')), qPrintable(lsOption));
    QVERIFY(Corvane({"--help"}).out.contains(QStringLiteral("\n  %1 ").arg(command)));
}

void tst_UploadCli::nothingChosen_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("error");
    QTest::newRow("upload-db without a file") << QStringList{"upload-db"} << 1
                                              << "Please select one or more items to upload";
    QTest::newRow("upload-software without a file") << QStringList{"upload-software"} << 1
                                                    << "Please select one or more items to upload";
    QTest::newRow("update-firmware without a file") << QStringList{"update-firmware"} << 1
                                                    << "No download file selected.";
    QTest::newRow("an option of another command") << QStringList{"upload-db", "--kvt-md", "x"} << 2 << "--kvt-md";
}

// Nothing reaches the display: no simulator is needed, only a port that does not answer.
void tst_UploadCli::nothingChosen()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, error);
    QTemporaryDir lcHome;
    const clsRun lcRun = Corvane(arguments + QStringList{"--home", lcHome.path(), "--port", "/nonexistent/tty", "--no"});
    QCOMPARE(lcRun.exitCode, exitCode);
    QVERIFY2(lcRun.err.contains(error), qPrintable(lcRun.err));
}

// Every file is checked before the first is sent: a missing second file stops the run before any write.
void tst_UploadCli::missingFileSendsNothing()
{
    QTemporaryDir lcDir;
    const QString lsImage = lcDir.filePath(QStringLiteral("flash.img"));
    QProcess lcSim;
    QString lsLink;
    QVERIFY(StartDisplay(lcSim, lcDir, {"--save-flash", lsImage}, lsLink));
    const clsRun lcRun = Corvane({"upload-db", "--ssl", Sample(mcSamples, "ssl"), "--ufl", "/nonexistent/x.ufl", "--port",
                               lsLink, "--home", lcDir.path(), "--yes"});
    QVERIFY(StopDisplay(lcSim));
    QCOMPARE(lcRun.exitCode, 1);
    QVERIFY2(lcRun.err.contains(QStringLiteral("ERROR: Upload Failed: Unable to find '/nonexistent/x.ufl'")),
             qPrintable(lcRun.err));
    QCOMPARE(ReadAll(lsImage), QByteArray(64 * kPageSize, char(0xFF)));
}

// Two databases from the first page of the database area on, each on fresh
// pages, read back with --verify; the choice is remembered in kvtDsw.ini.
void tst_UploadCli::databasesLandPageAfterPage()
{
    QTemporaryDir lcDir;
    const QString lsImage = lcDir.filePath(QStringLiteral("flash.img"));
    QProcess lcSim;
    QString lsLink;
    QVERIFY(StartDisplay(lcSim, lcDir, {"--save-flash", lsImage}, lsLink));
    const QString lsSsl = Sample(mcSamples, "ssl");
    const QString lsUsl = Sample(mcSamples, "usl");
    const clsRun lcRun = Corvane({"upload-db", "--ssl", lsSsl, "--usl", lsUsl, "--verify", "--port", lsLink, "--home",
                               lcDir.path(), "--yes"});
    QVERIFY(StopDisplay(lcSim));
    QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
    QVERIFY2(lcRun.err.contains(QStringLiteral("Upload successfully completed")), qPrintable(lcRun.err));
    const QByteArray lcFlash = ReadAll(lsImage);
    const QByteArray lcSslData = ReadAll(lsSsl);
    const QByteArray lcUslData = ReadAll(lsUsl);
    const int llUslPage = 1 + (int(lcSslData.size()) - 1) / kPageSize + 1;
    QCOMPARE(lcFlash.mid(kPageSize, lcSslData.size() - 1), lcSslData.left(lcSslData.size() - 1));
    QCOMPARE(lcFlash.mid(llUslPage * kPageSize, lcUslData.size() - 1), lcUslData.left(lcUslData.size() - 1));
    const QByteArray lcIni = ReadAll(lcDir.filePath(QStringLiteral("kvtDsw.ini")));
    QVERIFY2(lcIni.contains("SSL=" + QDir::toNativeSeparators(lsSsl).toLocal8Bit()), lcIni.constData());
}

// With FirstPage 1 no emptiness check is made: the file is written over old
// data, which flash cannot take back, and the read-back names where.
void tst_UploadCli::verifyFindsOldDataUnderTheFile()
{
    QTemporaryDir lcDir;
    const QString lsOld = lcDir.filePath(QStringLiteral("old.img"));
    WriteAll(lsOld, QByteArray(3 * kPageSize, char(0x0F)));
    QProcess lcSim;
    QString lsLink;
    QVERIFY(StartDisplay(lcSim, lcDir, {"--first-page", "1", "--flash", lsOld}, lsLink));
    const QString lsKvt = Sample(mcSamples, "kvt");
    const clsRun lcRun = Corvane({"upload-software", "--kvt", lsKvt, "--verify", "--port", lsLink, "--home", lcDir.path()});
    QVERIFY(StopDisplay(lcSim));
    QCOMPARE(lcRun.exitCode, 1);
    QVERIFY2(lcRun.err.contains(QStringLiteral("Verify failed: %1 differs from the display at page 2, offset 0")
                                    .arg(lsKvt)),
             qPrintable(lcRun.err));
}

// Three NAKs and four silences on the first lines: the update goes through,
// and the user sees the retries as they happen.
void tst_UploadCli::firmwareWithARejectingBootloader()
{
    QTemporaryDir lcDir;
    QProcess lcSim;
    QString lsLink;
    QVERIFY(StartDisplay(lcSim, lcDir, {"--fault", "nak-lines=3"}, lsLink));
    const clsRun lcRun = Corvane({"update-firmware", "--kvt-md", Sample(mcSamples, "kvt_md"), "--port", lsLink, "--home",
                               lcDir.path()});
    QVERIFY(StopDisplay(lcSim));
    QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
    QVERIFY2(lcRun.err.contains(QStringLiteral("Firmware line 1 of 66 answered NAK")), qPrintable(lcRun.err));
}

// Ctrl+C while the unit stays silent: the stream ends after the line in
// flight, with exit status 130 and the word that the display waits in its bootloader.
void tst_UploadCli::interruptedFirmwareUpdate()
{
    QTemporaryDir lcDir;
    QProcess lcSim;
    QString lsLink;
    QVERIFY(StartDisplay(lcSim, lcDir, {"--fault", "silent-lines=1000"}, lsLink));
    const clsRun lcRun = Corvane({"update-firmware", "--kvt-md", Sample(mcSamples, "kvt_md"), "--port", lsLink, "--home",
                               lcDir.path()},
                              60000, [](QProcess& rcProcess) {
                                  // once the first line is out, read without taking it from the run's output
                                  rcProcess.setReadChannel(QProcess::StandardError);
                                  while (!rcProcess.peek(1 << 16).contains("Firmware line") &&
                                         rcProcess.waitForReadyRead(10000)) {
                                  }
                                  ::kill(pid_t(rcProcess.processId()), SIGINT);
                              });
    QVERIFY(StopDisplay(lcSim));
    QCOMPARE(lcRun.exitCode, 130);
    QVERIFY2(lcRun.err.contains(QStringLiteral("stays in its bootloader")), qPrintable(lcRun.err));
    QVERIFY2(lcRun.ms < 12000, qPrintable(QString::number(lcRun.ms)));
}

QTEST_GUILESS_MAIN(tst_UploadCli)
#include "tst_uploadcli.moc"
