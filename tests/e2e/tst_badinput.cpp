// Bad input as users give it, through corvane end to end: a port that is not
// there or is a file, a home that is a file, a page file of the decode named by
// the user's path, a save that cannot be made, a display pulled half-way, a run
// stopped by a signal. (The parsers' own refusals are pinned in process and
// fuzzed.) Every row says the exit status, what stderr must say (each text
// exactly once, in that order), and the user's own files must be exactly as they were.

#include "CorvaneProcess.h"
#include "PageFile.h"

#include <QtTest>

#include <csignal>
#include <unistd.h>

namespace {
// Every row ends with exit status 1. prepare: a step of Scene::Prepare; display:
// the simulated display's options, none: no display.
struct BadCase { QStringList arguments, says; QString prepare = {}; QByteArray content = {}; QStringList display = {}; };

// One run's directories: the user's files (an earlier export, saved page
// files) and the program's home; "{user}", "{home}", "{root}" in a row name them.
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
        for (int llPage : {1, 2})
            WriteAll(Pages() + QStringLiteral("/Page%1.DSW").arg(llPage), PageFileText(lcImage.mid(llPage * kPageSize, kPageSize)));
    }

    QString Fill(QString vsText, const QString& vsPort = QString()) const
    {
        return vsText.replace(QStringLiteral("{user}"), QDir::toNativeSeparators(User()))
            .replace(QStringLiteral("{home}"), QDir::toNativeSeparators(Home()))
            .replace(QStringLiteral("{root}"), QDir::toNativeSeparators(root.path()))
            .replace(QStringLiteral("{port}"), vsPort);
    }

    // "write PATH" puts vcContent (or a line of text) there, "read-only PATH" takes away writing.
    void Prepare(const QString& vsStep, const QByteArray& vcContent) const
    {
        const QString lsPath = Fill(vsStep.section(QLatin1Char(' '), 1));
        if (vsStep.startsWith(QLatin1String("write ")))
            WriteAll(lsPath, vcContent.isEmpty() ? QByteArray("a file of the user\r\n") : vcContent);
        else if (vsStep.startsWith(QLatin1String("read-only ")))
            QFile::setPermissions(lsPath, QFile::ReadOwner | QFile::ExeOwner);
    }
};
}

class tst_BadInput : public QObject
{
    Q_OBJECT
private slots:
    void badInput_data()
    {
        QTest::addColumn<BadCase>("c");

        const QStringList lcDownload = {"download", "--yes", "--reconnect", "0", "--home", "{home}", "-o", "{user}/trips.txt"};
        const QString lsCancelled = QStringLiteral("corvane: Action cancelled by user.\n");
        const QString lsNoPort = QStringLiteral("corvane: Unable to open serial port /dev/ttyNOPE: No such file or directory\n");
        const QString lsLongName = "{user}/" + QString(250, QLatin1Char('x')) + ".txt";

        // The port's own reason comes once, before the first question; --no cancels there.
        QTest::newRow("missing port, --no")
            << BadCase{{"download", "--no", "--home", "{home}", "-o", "{user}/new.txt", "--port", "/dev/ttyNOPE"},
                       {lsNoPort, "Corvane Desktop: Unable to communicate with display\n", "[OK/Cancel] Cancel\n", lsCancelled}};
        // --yes answers OK as often as --reconnect says, then Cancel.
        QTest::newRow("missing port, --yes")
            << BadCase{{"id", "--yes", "--reconnect", "1", "--home", "{home}", "--port", "/dev/ttyNOPE"},
                       {lsNoPort, "[OK/Cancel] OK\n", "[OK/Cancel] Cancel (--reconnect 1: no more attempts)\n", lsCancelled}};
        QTest::newRow("port is a file")
            << BadCase{lcDownload + QStringList{"--port", "{user}/notaport"},
                       {"corvane: Unable to open serial port {user}/notaport: ", lsCancelled}, "write {user}/notaport"};
        QTest::newRow("home is a file")
            << BadCase{{"id", "--simulate", "--home", "{root}/homefile"},
                       {"corvane: cannot write in the home directory {root}/homefile\n"}, "write {root}/homefile"};
        QTest::newRow("read-only home")
            << BadCase{{"id", "--simulate", "--home", "{home}"},
                       {"corvane: cannot write in the home directory {home}\n"}, "read-only {home}"};
        QTest::newRow("binary page file")
            << BadCase{{"decode", "--geometry", "0,7,10", "-o", "{root}/new.txt", "{user}/pages"},
                       {"corvane: Type mismatch in {user}/pages/Page2.DSW, line 1\n"}, "write {user}/pages/Page2.DSW",
                       QByteArray("\x89PNG\r\n\x1a\n\0\0", 10)};
        QTest::newRow("-o in a missing directory")
            << BadCase{{"download", "--simulate", "--home", "{home}", "-o", "{root}/missing/trips.txt"},
                       {"corvane: Path not found: {root}/missing/trips.txt\n"}};
        QTest::newRow("-o in a read-only directory")
            << BadCase{{"download", "--simulate", "--home", "{home}", "-o", "{user}/new.txt"},
                       {"corvane: Permission denied: {user}/new.txt\n"}, "read-only {user}"};
        QTest::newRow("save fails over an existing file")
            << BadCase{{"download", "--simulate", "--yes", "--home", "{home}", "-o", lsLongName},
                       {"corvane: Path/File access error: " + lsLongName + "\n"}, "write " + lsLongName};
        // The display answers so many requests (ID, memory map, page state, reads), then its cable is pulled.
        QTest::newRow("download, display pulled after 4 requests")
            << BadCase{lcDownload + QStringList{"--port", "{port}"}, {"corvane: Serial port {port} lost: ", lsCancelled},
                       "", "", kDisplay + QStringList{"--unplug-after", "4"}};
        QTest::newRow("erase, display pulled after 3 requests")
            << BadCase{{"erase", "--yes", "--reconnect", "0", "--home", "{home}", "--port", "{port}"},
                       {"corvane: Serial port {port} lost: "}, "", "", kDisplay + QStringList{"--unplug-after", "3"}};
    }
    void badInput()
    {
        QFETCH(BadCase, c);
        const auto& [arguments, says, prepare, content, display] = c;
        if (prepare.startsWith(QLatin1String("read-only")) && geteuid() == 0)
            QSKIP("root writes in a read-only directory");
        Scene s;
        s.Prepare(prepare, content);
        const QMap<QString, QByteArray> lcBefore = Snapshot(s.User());
        SimProcess lcSim;
        if (!display.isEmpty())
            QVERIFY(lcSim.Start(display));
        QStringList lcArguments;
        for (const QString& lsArgument : arguments)
            lcArguments << s.Fill(lsArgument, lcSim.Link());
        const clsRun lcRun = Corvane(lcArguments, 60000);
        QFile::setPermissions(s.User(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QFile::setPermissions(s.Home(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        QVERIFY2(lcRun.exitCode == 1, qPrintable(QString::number(lcRun.exitCode) + QLatin1Char('\n') + lcRun.err));
        qsizetype llAfter = 0;
        for (const QString& lsText : says) {
            const QString lsSaid = s.Fill(lsText, lcSim.Link());
            QVERIFY2(lcRun.err.count(lsSaid) == 1 && lcRun.err.indexOf(lsSaid) >= llAfter,
                     qPrintable(lsSaid + "\n---\n" + lcRun.err));
            llAfter = lcRun.err.indexOf(lsSaid);
        }
        QVERIFY2(!lcRun.err.contains(QStringLiteral("corvane-")), qPrintable(lcRun.err)); // no temporary copy named
        QCOMPARE(Snapshot(s.User()), lcBefore);
    }

    void stoppedRunLeavesNoTemporaryDirectory_data()
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
    void stoppedRunLeavesNoTemporaryDirectory()
    {
        QFETCH(QString, command);
        QFETCH(int, signal);
        QFETCH(int, exitCode);
        Scene s;
        const QString lsTemp = s.root.filePath(QStringLiteral("tmp"));
        QVERIFY(QDir().mkpath(lsTemp));
        WriteAll(s.Pages() + QStringLiteral("/postcode.gps"), QByteArray("111073332;85254498;3511 Utrecht\r\n").repeated(1000000));
        const bool lbDecode = command == QLatin1String("decode");
        const QDir lcTemp(lsTemp);
        const auto lcStop = [&](QProcess& rcCorvane) {
            // The decode is stopped once its copies are made; id has nothing to wait for.
            QElapsedTimer lcTimer;
            lcTimer.start();
            while (lbDecode && lcTimer.elapsed() < 10000) {
                const QStringList lcHomes = lcTemp.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
                if (!lcHomes.isEmpty() && QFileInfo::exists(lsTemp + QLatin1Char('/') + lcHomes[0] + QStringLiteral("/postcode.gps")))
                    break;
                QTest::qWait(5);
            }
            QTest::qWait(lbDecode ? 0 : 500);
            QCOMPARE(rcCorvane.state(), QProcess::Running);
            ::kill(pid_t(rcCorvane.processId()), signal);
        };
        const QByteArray lcTmpDir = qgetenv("TMPDIR");
        qputenv("TMPDIR", QFile::encodeName(lsTemp));
        const clsRun lcRun = Corvane(lbDecode ? QStringList{"decode", "--geometry", "0,7,10", "-o", s.root.filePath("new.txt"), s.Pages()}
                                              : QStringList{"id", "--yes", "--port", "/dev/ttyNOPE", "--home", s.Home()},
                                     10000, lcStop);
        lcTmpDir.isEmpty() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", lcTmpDir);
        QCOMPARE(lcRun.exitCode, exitCode);
        QCOMPARE(lcTemp.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }
};

QTEST_GUILESS_MAIN(tst_BadInput)
#include "tst_badinput.moc"
