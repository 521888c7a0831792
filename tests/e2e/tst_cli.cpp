// corvane as a user runs it: a separate process against corvane-display-sim
// on a pseudo-terminal, through the real serial code, in real time. One run
// per command family; what the option parser, the core and the exports do is
// pinned in process, here only what the whole program shows.

#include "CorvaneProcess.h"
#include "PageFile.h"
#include "platform/Cp1252.h"

#include <QtTest>

#include <csignal>

namespace {
struct Refusal { QStringList arguments; int exitCode; QString says; };
struct EraseRun { QString answer; bool erased; QString says; };
struct Probe { QStringList port; int exitCode; QString out, err; };
struct Update { QString fault; int exitCode; QString says; };
}

class tst_Cli : public QObject
{
    Q_OBJECT
    QTemporaryDir mcSamples;
    QString Sample(const char* vsExtension) const { return mcSamples.filePath(QStringLiteral("sample.") + vsExtension); }

private slots:
    void initTestCase()
    {
        QCOMPARE(RunProgram(kSimulator, {"--write-samples", mcSamples.path()}).exitCode, 0);
    }

    // Each command's own help is pinned in process (tst_clioptions).
    void helpListsEveryCommand()
    {
        const clsRun lcRun = Corvane({"--help"});
        QCOMPARE(lcRun.exitCode, 0);
        for (const char* lsCommand : {"download", "erase", "decode", "id", "detect", "upload-db", "upload-software", "update-firmware"})
            QVERIFY2(lcRun.out.contains(QStringLiteral("\n  %1 ").arg(lsCommand)), lsCommand);
    }

    // Bad usage is exit status 2 with the reason on stderr, before anything is
    // touched; a run that cannot start is 1. The parser's reasons are tested in process.
    void refused_data()
    {
        QTest::addColumn<Refusal>("c");
        const QStringList lcNoPort{"--port", "/nonexistent/tty", "--home", "{home}"};
        QTest::newRow("refused arguments")
            << Refusal{QStringList{"erase", "-o", "x.txt"}, 2, "corvane: -o does not go with erase\nTry \"corvane --help\".\n"};
        QTest::newRow("decode of a missing directory")
            << Refusal{QStringList{"decode", "--geometry", "0,7,10", "/nonexistent/kvt"}, 1, "Path not found: /nonexistent/kvt"};
        QTest::newRow("upload-db without a file")
            << Refusal{QStringList{"upload-db", "--no"} + lcNoPort, 1, "Please select one or more items to upload"};
        QTest::newRow("update-firmware without a file")
            << Refusal{QStringList{"update-firmware", "--no"} + lcNoPort, 1, "No download file selected."};
        QTest::newRow("erase without an answer or a terminal")
            << Refusal{QStringList{"erase"} + lcNoPort, 2,
                       "corvane: this question needs an answer: run it on a terminal, or give --yes or --no\n"};
    }
    void refused()
    {
        QFETCH(Refusal, c);
        const auto& [arguments, exitCode, says] = c;
        QTemporaryDir lcHome;
        const clsRun lcRun = Corvane(QStringList(arguments).replaceInStrings(QStringLiteral("{home}"), lcHome.path()));
        QCOMPARE(lcRun.exitCode, exitCode);
        QVERIFY2(lcRun.err.contains(says), qPrintable(lcRun.err));
        QVERIFY(lcRun.out.isEmpty());
    }

    // The golden image through the real program; the display's frame log shows the ID request on the wire.
    void downloadWritesTheGoldenFile()
    {
        SimProcess lcSim;
        QVERIFY(lcSim.Start(kDisplay + QStringList{"--log", lcSim.File("frames.log")}));
        const QString lsTrips = lcSim.File(QStringLiteral("trips.txt"));
        const clsRun lcRun = Corvane({"download", "--yes", "-o", lsTrips, "--port", lcSim.Link(), "--print", "--show", "tc",
                                      "--home", lcSim.File(QStringLiteral("home"))});
        QVERIFY(lcSim.Stop());
        QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
        QCOMPARE(ReadAll(lsTrips), ReadAll(kGolden + "trips.txt"));
        QVERIFY2(lcRun.err.contains(QStringLiteral("Copied 69 record(s) from KVT Memory Display")), qPrintable(lcRun.err));
        // --print: the grid's header, then only the traject-control row that --show tc admits.
        const QStringList lcPrinted = lcRun.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lcPrinted.size(), 2);
        QVERIFY(lcPrinted[0].startsWith(QStringLiteral("#\tRitnumber\tDate\t")));
        QCOMPARE(lcPrinted[1].split(QLatin1Char('\t')).value(16), QStringLiteral("Traject Contol"));
        QVERIFY(ReadAll(lcSim.File("frames.log")).contains(" in  00 00 66 01 07 ce ae\n"));
    }

    // Page files saved earlier decode to the same export, and their directory is
    // left exactly as it was. A PDF is drawn without a display, and a quiet run
    // prints nothing at all on stderr.
    void decodeOfSavedPagesGivesTheSameFile()
    {
        QTemporaryDir lcDir;
        const QString lsPages = lcDir.filePath(QStringLiteral("pages"));
        QVERIFY(QDir().mkpath(lsPages));
        const QByteArray lcImage = ReadAll(kGolden + "flash.img");
        for (int llPage : {1, 2})
            QVERIFY(WritePageFile(lsPages + QStringLiteral("/Page%1.DSW").arg(llPage),
                                  lcImage.mid(llPage * kPageSize, kPageSize)));
        const QMap<QString, QByteArray> lcBefore = Snapshot(lsPages);
        const QString lsTrips = lcDir.filePath(QStringLiteral("trips.txt"));
        const clsRun lcRun = Corvane({"decode", "--geometry", "0,7,10", "-o", lsTrips, "--print", lsPages});
        QVERIFY2(lcRun.exitCode == 0 && lcRun.err.contains("Save As: " + lsTrips), qPrintable(lcRun.err));
        QCOMPARE(ReadAll(lsTrips), ReadAll(kGolden + "trips.txt"));
        // --print: the header, then the saved lines without their route (the
        // default selection shows the kinds that are saved; "Show route" is off).
        QStringList lcExpected{QStringLiteral("#\tRitnumber\tDate\tStart Time\tStop Time\tDrive Time\tStart km\tEnd km\t"
                                              "Driven km\tZip code\tZip code\tOrigin\tDestination\tType of trip\t"
                                              "Direction\tSpeed\tEvent\tAmplitude\tFrequency\tTank receipt number\tRoute")};
        for (const QString& lsLine : Cp1252::Decode(ReadAll(lsTrips)).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
            lcExpected << lsLine.left(lsLine.lastIndexOf(QLatin1Char('\t')) + 1);
        QCOMPARE(lcRun.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts), lcExpected);
        // As on a desktop; without it Qt's graphical part warns on stderr.
        if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
            qputenv("XDG_RUNTIME_DIR", QFile::encodeName(lcDir.path()));
        const clsRun lcQuiet = Corvane({"decode", "-q", "--geometry", "0,7,10", "-o", lcDir.filePath("trips.pdf"), lsPages});
        QCOMPARE(lcQuiet.exitCode, 0);
        QCOMPARE(lcQuiet.err, QString());
        QVERIFY(ReadAll(lcDir.filePath("trips.pdf")).startsWith("%PDF-"));
        QCOMPARE(Snapshot(lsPages), lcBefore);
    }

    // The logging area, every page after FirstPage, is erased; FirstPage itself stays as it was.
    void erase_data()
    {
        QTest::addColumn<EraseRun>("c");
        QTest::newRow("--yes")
            << EraseRun{"--yes", true, "Corvane Desktop: Are you sure you want to clear the display database? [Yes/No] Yes\n"};
        QTest::newRow("--no") << EraseRun{"--no", false, "Nothing erased."};
    }
    void erase()
    {
        QFETCH(EraseRun, c);
        const auto& [answer, erased, says] = c;
        SimProcess lcSim;
        const QString lsSaved = lcSim.File(QStringLiteral("saved.img"));
        QVERIFY(lcSim.Start(kDisplay + QStringList{"--save-flash", lsSaved}));
        const clsRun lcRun = Corvane({"erase", answer, "--port", lcSim.Link(), "--home", lcSim.File(QStringLiteral("home"))});
        QVERIFY(lcSim.Stop());
        QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
        QVERIFY2(lcRun.err.contains(says), qPrintable(lcRun.err));
        QCOMPARE(lcRun.err.contains(QStringLiteral("KVT Upload: Clearing display successfully completed")), erased);
        const QByteArray lcImage = ReadAll(kGolden + "flash.img");
        const QByteArray lcLogging = erased ? QByteArray(lcImage.size() - kPageSize, char(0xFF)) : lcImage.mid(kPageSize);
        QCOMPARE(ReadAll(lsSaved), lcImage.left(kPageSize) + lcLogging);
    }

    // --simulate answers in process; a port given by path is kept under "Port"
    // beside the number, and a number given later clears the path again.
    void simulatedDisplayRemembersThePort()
    {
        QTemporaryDir lcHome;
        const QString lsIni = lcHome.filePath(QStringLiteral("kvtDsw.ini"));
        const clsRun lcByPath = Corvane({"id", "--simulate", "-v", "--port", "/dev/ttyUSB7", "--home", lcHome.path()});
        QVERIFY2(lcByPath.exitCode == 0, qPrintable(lcByPath.err));
        QCOMPARE(lcByPath.out, QStringLiteral("12.0.34.5.6.7.8.9.\n"));
        QVERIFY2(lcByPath.err.contains(QStringLiteral(" - Logging stopped\n")), qPrintable(lcByPath.err));
        QVERIFY(ReadAll(lsIni).contains("Com=1\r\n") && ReadAll(lsIni).contains("Port=/dev/ttyUSB7\r\n"));
        QCOMPARE(Corvane({"id", "--simulate", "--port", "3", "--home", lcHome.path()}).exitCode, 0);
        QVERIFY(ReadAll(lsIni).contains("Com=3\r\n") && ReadAll(lsIni).contains("Port=\r\n"));
    }

    // One round of the window's probe: the status line and greeting for a display
    // that says it was just plugged in, nothing for one that was greeted before.
    void detect_data()
    {
        QTest::addColumn<Probe>("c");
        QTest::newRow("just plugged in")
            << Probe{{"--simulate"}, 0, "Display detected: greeted with \"Connected to\" and \"Corvane Desktop\"\n", "Display Detected ("};
        QTest::newRow("greeted before")
            << Probe{{"--port", "{pty}"}, 0, "Display present: greeted before, it is greeted again once plugged in anew\n", ""};
        QTest::newRow("nothing on the port") << Probe{{"--port", "/dev/nonexistent-kvt"}, 1, "", "corvane: no display answers\n"};
    }
    void detect()
    {
        QFETCH(Probe, c);
        const auto& [port, exitCode, out, err] = c;
        SimProcess lcSim;
        if (port.contains(QStringLiteral("{pty}")))
            QVERIFY(lcSim.Start(kDisplay));
        const clsRun lcRun = Corvane(QStringList{"detect", "-v", "--home", lcSim.File(QStringLiteral("home"))}
                                     + QStringList(port).replaceInStrings(QStringLiteral("{pty}"), lcSim.Link()));
        QCOMPARE(lcRun.exitCode, exitCode);
        QCOMPARE(lcRun.out, out);
        QVERIFY2(lcRun.err.contains(err), qPrintable(lcRun.err));
    }

    // Two databases from the first page of the database area on, each on fresh
    // pages, read back with --verify; the choice is remembered in kvtDsw.ini.
    void databasesLandPageAfterPage()
    {
        SimProcess lcSim;
        const QString lsImage = lcSim.File(QStringLiteral("flash.img"));
        QVERIFY(lcSim.Start({"--save-flash", lsImage}));
        const clsRun lcRun = Corvane({"upload-db", "--ssl", Sample("ssl"), "--usl", Sample("usl"), "--verify", "--port",
                                      lcSim.Link(), "--home", lcSim.dir.path(), "--yes"});
        QVERIFY(lcSim.Stop());
        QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
        QVERIFY2(lcRun.err.contains(QStringLiteral("Upload successfully completed")), qPrintable(lcRun.err));
        const QByteArray lcFlash = ReadAll(lsImage);
        const QByteArray lcSsl = ReadAll(Sample("ssl")).chopped(1);
        const QByteArray lcUsl = ReadAll(Sample("usl")).chopped(1);
        constexpr int kSimPage = 4096;
        QCOMPARE(lcFlash.mid(kSimPage, lcSsl.size()), lcSsl);
        QCOMPARE(lcFlash.mid((2 + lcSsl.size() / kSimPage) * kSimPage, lcUsl.size()), lcUsl);
        const QByteArray lcIni = ReadAll(lcSim.File(QStringLiteral("kvtDsw.ini")));
        QVERIFY2(lcIni.contains("SSL=" + QDir::toNativeSeparators(Sample("ssl")).toLocal8Bit()), lcIni.constData());
    }

    // NAKs on the first lines: the update goes through, and the user sees the
    // retries as they happen. Ctrl+C while the unit stays silent ends the
    // stream after the line in flight, with the word that the display waits in its bootloader.
    void firmware_data()
    {
        QTest::addColumn<Update>("c");
        QTest::newRow("NAKs") << Update{"nak-lines=3", 0, "Firmware line 1 of 66 answered NAK"};
        QTest::newRow("Ctrl+C") << Update{"silent-lines=1000", 130, "stays in its bootloader"};
    }
    void firmware()
    {
        QFETCH(Update, c);
        const auto& [fault, exitCode, says] = c;
        SimProcess lcSim;
        QVERIFY(lcSim.Start({"--fault", fault}));
        const auto lcInterrupt = [](QProcess& rcProcess) {
            // once the first line is out, read without taking it from the run's output
            rcProcess.setReadChannel(QProcess::StandardError);
            while (!rcProcess.peek(1 << 16).contains("Firmware line") && rcProcess.waitForReadyRead(10000)) {
            }
            ::kill(pid_t(rcProcess.processId()), SIGINT);
        };
        const clsRun lcRun = Corvane({"update-firmware", "--kvt-md", Sample("kvt_md"), "--port", lcSim.Link(), "--home",
                                      lcSim.dir.path()},
                                     60000, exitCode ? lcInterrupt : std::function<void(QProcess&)>());
        QVERIFY(lcSim.Stop());
        QCOMPARE(lcRun.exitCode, exitCode);
        QVERIFY2(lcRun.err.contains(says), qPrintable(lcRun.err));
        QVERIFY2(!exitCode || lcRun.ms < 12000, qPrintable(QString::number(lcRun.ms)));
    }
};

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
