// Bad input as users give it, through corvane end to end: a port that is not
// there, files that are directories, binary and huge files, a save that cannot
// be made, a display pulled half-way. Every row says the exit status, what
// stderr must say (each text exactly once), and the user's own files must be
// exactly as they were.

#include "CorvaneProcess.h"

#include <QRandomGenerator>
#include <QtTest>

#include <csignal>

#ifdef Q_OS_UNIX
#include <sys/types.h>
#include <unistd.h>
#endif

namespace {
const QString kGolden = QStringLiteral(CORVANE_TEST_DATA "/cli-download/");
const QStringList kDisplay = {"--first-page", "0", "--last-page", "7", "--page-size-log2", "10",
                              "--id", "12.0.34.5.6.7.8.9", "--flash", kGolden + "flash.img"};
constexpr int kPageSize = 1024;
const QString kGeometry = QStringLiteral("0,7,10");

QByteArray Noise(int vlSize, quint32 vlSeed)
{
    QRandomGenerator lcRandom(vlSeed);
    QByteArray lcBytes(vlSize, '\0');
    for (char& c : lcBytes)
        c = char(lcRandom.bounded(256));
    return lcBytes;
}

bool RunningAsRoot()
{
#ifdef Q_OS_UNIX
    return geteuid() == 0;
#else
    return false;
#endif
}

// One run's directories: the user's files (an earlier export, saved page
// files, a place table) and the program's home.
struct Scene {
    QTemporaryDir root;
    QString User() const { return root.filePath(QStringLiteral("user")); }
    QString Home() const { return root.filePath(QStringLiteral("home")); }
    QString Pages() const { return User() + QStringLiteral("/pages"); }

    Scene()
    {
        QDir().mkpath(Pages());
        QDir().mkpath(Home());
        WriteAll(User() + QStringLiteral("/trips.txt"), "an earlier export\r\n");
        const QByteArray lcImage = ReadAll(kGolden + "flash.img");
        WriteAll(Pages() + QStringLiteral("/Page1.DSW"), PageFileText(lcImage.mid(kPageSize, kPageSize)));
        WriteAll(Pages() + QStringLiteral("/Page2.DSW"), PageFileText(lcImage.mid(2 * kPageSize, kPageSize)));
    }

    QString Fill(QString vsText, const QString& vsPort) const
    {
        return vsText.replace(QStringLiteral("{user}"), QDir::toNativeSeparators(User()))
            .replace(QStringLiteral("{home}"), QDir::toNativeSeparators(Home()))
            .replace(QStringLiteral("{root}"), QDir::toNativeSeparators(root.path()))
            .replace(QStringLiteral("{port}"), vsPort);
    }
};

// What each row does to the scene before the run.
void Prepare(const Scene& s, const QString& vsBadThing)
{
    const QString lsLongName = s.User() + QLatin1Char('/') + QString(250, QLatin1Char('x')) + QStringLiteral(".txt");
    if (vsBadThing == QLatin1String("port is a file"))
        WriteAll(s.User() + QStringLiteral("/notaport"), "a file of the user\n");
    else if (vsBadThing == QLatin1String("port is a directory"))
        QDir().mkpath(s.User() + QStringLiteral("/portdir"));
    else if (vsBadThing == QLatin1String("home is a file"))
        WriteAll(s.root.filePath(QStringLiteral("homefile")), "not a directory\n");
    else if (vsBadThing == QLatin1String("read-only home"))
        QFile::setPermissions(s.Home(), QFile::ReadOwner | QFile::ExeOwner);
    else if (vsBadThing == QLatin1String("ini is a directory"))
        QDir().mkpath(s.Home() + QStringLiteral("/kvtDsw.ini"));
    else if (vsBadThing == QLatin1String("log is a directory"))
        QDir().mkpath(s.Home() + QStringLiteral("/kvtDsw.log"));
    else if (vsBadThing == QLatin1String("binary ini"))
        WriteAll(s.Home() + QStringLiteral("/kvtDsw.ini"), Noise(4096, 1));
    else if (vsBadThing == QLatin1String("huge ini"))
        WriteAll(s.Home() + QStringLiteral("/kvtDsw.ini"),
                 QByteArray("[Common]\r\nCom=99999999999999999999999999\r\n") + QByteArray("Key=value\r\n").repeated(200000));
    else if (vsBadThing == QLatin1String("binary postcode.gps"))
        WriteAll(s.User() + QStringLiteral("/places.gps"), Noise(65536, 2));
    else if (vsBadThing == QLatin1String("huge postcode.gps"))
        WriteAll(s.User() + QStringLiteral("/places.gps"), QByteArray("111073332;85254498;3511 Utrecht\r\n").repeated(300000));
    else if (vsBadThing == QLatin1String("binary page file"))
        WriteAll(s.Pages() + QStringLiteral("/Page2.DSW"), Noise(4096, 3));
    else if (vsBadThing == QLatin1String("huge page file"))
        WriteAll(s.Pages() + QStringLiteral("/Page2.DSW"), QByteArray("255\r\n").repeated(1000000));
    else if (vsBadThing == QLatin1String("value beyond a byte"))
        WriteAll(s.Pages() + QStringLiteral("/Page2.DSW"), QByteArray("7\r\n").repeated(129) + "300\r\n"
                                                              + QByteArray("7\r\n").repeated(kPageSize - 130));
    else if (vsBadThing == QLatin1String("read-only -o directory"))
        QFile::setPermissions(s.User(), QFile::ReadOwner | QFile::ExeOwner);
    else if (vsBadThing == QLatin1String("save fails over an existing file"))
        WriteAll(lsLongName, "an export the user keeps\r\n");
}
}

class tst_BadInput : public QObject
{
    Q_OBJECT
private slots:
    void badInput_data();
    void badInput();
    void yesGivesUpOnAMissingDisplay();
    void stoppedRunLeavesNoTemporaryDirectory_data();
    void stoppedRunLeavesNoTemporaryDirectory();
};

void tst_BadInput::badInput_data()
{
    QTest::addColumn<QString>("badThing");
    QTest::addColumn<QStringList>("display"); // the simulated display's options; none: no display
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("says");

    const QStringList lcDownload = {"download", "--yes", "--reconnect", "0", "--home", "{home}", "-o", "{user}/trips.txt"};
    const QStringList lcId = {"id", "--simulate", "--home", "{home}"};
    const QStringList lcDecode = {"decode", "--geometry", kGeometry, "-o", "{root}/new.txt", "{user}/pages"};
    const QString lsCancelled = QStringLiteral("corvane: Action cancelled by user.\n");
    const QStringList lcNone;

    QTest::newRow("missing port") << "" << lcNone << lcDownload + QStringList{"--port", "/dev/ttyNOPE"} << 1
                                  << QStringList{"corvane: Unable to open serial port /dev/ttyNOPE: No such file or directory\n",
                                                 lsCancelled};
    QTest::newRow("port is a file") << "port is a file" << lcNone << lcDownload + QStringList{"--port", "{user}/notaport"}
                                    << 1 << QStringList{"corvane: Unable to open serial port {user}/notaport: ", lsCancelled};
    QTest::newRow("port is a directory") << "port is a directory" << lcNone
                                         << lcDownload + QStringList{"--port", "{user}/portdir"} << 1
                                         << QStringList{"corvane: Unable to open serial port {user}/portdir: ", lsCancelled};
    QTest::newRow("home is a file") << "home is a file" << lcNone
                                    << QStringList{"id", "--simulate", "--home", "{root}/homefile"} << 1
                                    << QStringList{"corvane: cannot write in the home directory {root}/homefile\n"};
    QTest::newRow("read-only home") << "read-only home" << lcNone << lcId << 1
                                    << QStringList{"corvane: cannot write in the home directory {home}\n"};
    QTest::newRow("ini is a directory") << "ini is a directory" << lcNone << lcId << 0
                                        << QStringList{"The settings cannot be saved: {home}/kvtDsw.ini is a directory\n"};
    // The program goes on without a log and says so.
    QTest::newRow("log is a directory") << "log is a directory" << lcNone << lcId << 0
                                        << QStringList{"Unable to write the log file (Path/File access error: "
                                                       "{home}/kvtDsw.log), going on without a log\n"};
    QTest::newRow("binary ini") << "binary ini" << lcNone << lcId << 0 << QStringList{};
    QTest::newRow("huge ini") << "huge ini" << lcNone << lcId << 0 << QStringList{};
    QTest::newRow("binary postcode.gps") << "binary postcode.gps" << lcNone
                                         << lcDecode + QStringList{"--places", "{user}/places.gps"} << 0
                                         << QStringList{"Error: ERROR in opening file:places.gps\n"};
    QTest::newRow("huge postcode.gps") << "huge postcode.gps" << lcNone
                                       << lcDecode + QStringList{"--places", "{user}/places.gps"} << 0 << QStringList{};
    QTest::newRow("binary page file") << "binary page file" << lcNone << lcDecode << 1
                                      << QStringList{"corvane: Type mismatch in {user}/pages/Page2.DSW, line 1\n"};
    QTest::newRow("huge page file") << "huge page file" << lcNone << lcDecode << 0 << QStringList{};
    QTest::newRow("value beyond a byte") << "value beyond a byte" << lcNone << lcDecode << 1
                                         << QStringList{"corvane: Overflow in {user}/pages/Page2.DSW, line 130\n"};
    QTest::newRow("-o in a missing directory") << "" << lcNone
                                               << QStringList{"download", "--simulate", "--home", "{home}", "-o",
                                                              "{root}/missing/trips.txt"}
                                               << 1 << QStringList{"corvane: Path not found: {root}/missing/trips.txt\n"};
    QTest::newRow("-o in a read-only directory") << "read-only -o directory" << lcNone
                                                 << QStringList{"download", "--simulate", "--home", "{home}", "-o",
                                                                "{user}/new.txt"}
                                                 << 1 << QStringList{"corvane: Permission denied: {user}/new.txt\n"};
    QTest::newRow("save fails over an existing file")
        << "save fails over an existing file" << lcNone
        << QStringList{"download", "--simulate", "--yes", "--home", "{home}", "-o",
                       "{user}/" + QString(250, QLatin1Char('x')) + ".txt"}
        << 1 << QStringList{"corvane: Path/File access error: {user}/" + QString(250, QLatin1Char('x')) + ".txt\n"};

    // The display answers so many requests, then its cable is pulled.
    for (int llAnswered : {1, 4, 12, 25}) {
        QTest::addRow("download, display pulled after %d requests", llAnswered)
            << "" << kDisplay + QStringList{"--unplug-after", QString::number(llAnswered)}
            << lcDownload + QStringList{"--port", "{port}"} << 1
            << QStringList{"corvane: Serial port {port} lost: ", lsCancelled};
    }
    for (int llAnswered : {1, 3, 6}) {
        QTest::addRow("erase, display pulled after %d requests", llAnswered)
            << "" << kDisplay + QStringList{"--unplug-after", QString::number(llAnswered)}
            << QStringList{"erase", "--yes", "--reconnect", "0", "--home", "{home}", "--port", "{port}"} << 1
            << QStringList{"corvane: Serial port {port} lost: "};
    }
}

void tst_BadInput::badInput()
{
    QFETCH(QString, badThing);
    QFETCH(QStringList, display);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QStringList, says);
    if (badThing.startsWith(QLatin1String("read-only")) && RunningAsRoot())
        QSKIP("root writes in a read-only directory");
    Scene s;
    Prepare(s, badThing);
    const QMap<QString, QByteArray> lcBefore = Snapshot(s.User());

    QProcess lcSim;
    QString lsPort;
    if (!display.isEmpty())
        QVERIFY(StartDisplay(lcSim, s.root, display, lsPort));
    QStringList lcArguments;
    for (const QString& lsArgument : arguments)
        lcArguments << s.Fill(lsArgument, lsPort);
    const clsRun lcRun = Corvane(lcArguments, 60000);
    if (!display.isEmpty())
        StopDisplay(lcSim);
    QFile::setPermissions(s.User(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QFile::setPermissions(s.Home(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    QVERIFY2(lcRun.exitCode == exitCode, qPrintable(QString::number(lcRun.exitCode) + QLatin1Char('\n') + lcRun.err));
    for (const QString& lsText : says)
        QVERIFY2(lcRun.err.count(s.Fill(lsText, lsPort)) == 1, qPrintable(s.Fill(lsText, lsPort) + "\n---\n" + lcRun.err));
    QVERIFY2(!lcRun.err.contains(QStringLiteral("corvane-")), qPrintable(lcRun.err)); // no temporary copy named
    QCOMPARE(Snapshot(s.User()), lcBefore);
}

// --yes answers the question after a silent display twice, then Cancel, and the run ends there.
void tst_BadInput::yesGivesUpOnAMissingDisplay()
{
    Scene s;
    const clsRun lcRun = Corvane({"id", "--yes", "--port", "/dev/ttyNOPE", "--home", s.Home()}, 60000);
    QCOMPARE(lcRun.exitCode, 1);
    // The port's own reason comes once, before the first question.
    const QString lsReason = QStringLiteral("corvane: Unable to open serial port /dev/ttyNOPE: No such file or directory\n");
    QCOMPARE(lcRun.err.count(lsReason), 1);
    QVERIFY(lcRun.err.indexOf(lsReason) < lcRun.err.indexOf(QStringLiteral("Unable to communicate with display")));
    QCOMPARE(lcRun.err.count(QStringLiteral("Corvane Desktop: Unable to communicate with display\n")), 3);
    QCOMPARE(lcRun.err.count(QStringLiteral("[OK/Cancel] OK\n")), 2);
    QCOMPARE(lcRun.err.count(QStringLiteral("[OK/Cancel] Cancel (--reconnect 2: no more attempts)\n")), 1);
    QVERIFY(lcRun.err.endsWith(QStringLiteral("corvane: Action cancelled by user.\n")));
    QVERIFY(lcRun.out.isEmpty());
}

void tst_BadInput::stoppedRunLeavesNoTemporaryDirectory_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("signal");
    QTest::addColumn<int>("exitCode"); // -1: ended by the signal itself
    QTest::newRow("id, SIGTERM") << "id" << int(SIGTERM) << -1;
    QTest::newRow("decode, SIGINT") << "decode" << int(SIGINT) << 130;
    QTest::newRow("decode, SIGTERM") << "decode" << int(SIGTERM) << 143;
}

// Only decode makes a temporary home, and it goes with the run however the
// run ends. The decode is caught while it loads a big place table.
void tst_BadInput::stoppedRunLeavesNoTemporaryDirectory()
{
#ifndef Q_OS_UNIX
    QSKIP("signals to another process");
#else
    QFETCH(QString, command);
    QFETCH(int, signal);
    QFETCH(int, exitCode);
    Scene s;
    const QString lsTemp = s.root.filePath(QStringLiteral("tmp"));
    QVERIFY(QDir().mkpath(lsTemp));
    WriteAll(s.Pages() + QStringLiteral("/postcode.gps"), QByteArray("111073332;85254498;3511 Utrecht\r\n").repeated(1000000));
    QProcessEnvironment lcEnvironment = QProcessEnvironment::systemEnvironment();
    lcEnvironment.insert(QStringLiteral("TMPDIR"), lsTemp);
    QProcess lcCorvane;
    lcCorvane.setProcessEnvironment(lcEnvironment);
    const QStringList lcArguments = command == QLatin1String("id")
        ? QStringList{"id", "--yes", "--port", "/dev/ttyNOPE", "--home", s.Home()}
        : QStringList{"decode", "--geometry", kGeometry, "-o", s.root.filePath("new.txt"), s.Pages()};
    lcCorvane.start(kCorvane, lcArguments);
    QVERIFY(lcCorvane.waitForStarted());
    const QDir lcTemp(lsTemp);
    // The decode is stopped once its copies are made; id has nothing to wait for.
    QElapsedTimer lcTimer;
    lcTimer.start();
    while (command == QLatin1String("decode") && lcTimer.elapsed() < 10000) {
        const QStringList lcHomes = lcTemp.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        if (!lcHomes.isEmpty() && QFileInfo::exists(lsTemp + QLatin1Char('/') + lcHomes[0] + QStringLiteral("/postcode.gps")))
            break;
        QTest::qWait(5);
    }
    if (command == QLatin1String("id"))
        QTest::qWait(500);
    QCOMPARE(lcCorvane.state(), QProcess::Running);
    ::kill(pid_t(lcCorvane.processId()), signal);
    QVERIFY(lcCorvane.waitForFinished(10000));
    if (exitCode < 0) {
        QCOMPARE(lcCorvane.exitStatus(), QProcess::CrashExit);
    } else {
        QCOMPARE(lcCorvane.exitStatus(), QProcess::NormalExit);
        QCOMPARE(lcCorvane.exitCode(), exitCode);
    }
    QCOMPARE(lcTemp.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
#endif
}

QTEST_GUILESS_MAIN(tst_BadInput)
#include "tst_badinput.moc"
