// corvane as a user runs it: a separate process, against corvane-display-sim
// on a pseudo-terminal through the real serial code, in real time.

#include "CorvaneProcess.h"
#include "PageFile.h"
#include "SimProcess.h"
#include "platform/Cp1252.h"

#include <QtTest>

namespace {
const QString kGolden = QStringLiteral(CORVANE_TEST_DATA "/cli-download/");
// The geometry and ID the golden image was made with.
const QStringList kDisplay = {"--first-page", "0", "--last-page", "7", "--page-size-log2", "10",
                              "--id", "12.0.34.5.6.7.8.9"};
constexpr int kPageSize = 1024;
}

class tst_Cli : public QObject
{
    Q_OBJECT
private slots:
    void helpListsEveryCommand();
    void badUsage_data();
    void badUsage();
    void downloadWritesTheGoldenFile();
    void decodeOfSavedPagesGivesTheSameFile();
    void decodeOfPagesSmallerThanARecord_data();
    void decodeOfPagesSmallerThanARecord();
    void decodeSavesByExtension_data();
    void decodeSavesByExtension();
    void erase_data();
    void erase();
    void silentDisplayIsCancelledUnderNo();
    void simulatedDisplayRemembersThePort();
    void detect_data();
    void detect();
};

void tst_Cli::helpListsEveryCommand()
{
    const clsRun lcRun = Corvane({"--help"});
    QCOMPARE(lcRun.exitCode, 0);
    for (const char* lsCommand : {"download", "erase", "decode", "id", "detect"}) {
        QVERIFY2(lcRun.out.contains(QStringLiteral("\n  %1 ").arg(lsCommand)), lsCommand);
        const clsRun lcCommand = Corvane({lsCommand, "--help"});
        QCOMPARE(lcCommand.exitCode, 0);
        QVERIFY2(lcCommand.out.startsWith(QStringLiteral("Usage: corvane %1 ").arg(lsCommand)),
                 qPrintable(lcCommand.out));
    }
}

void tst_Cli::badUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("says");
    QTest::newRow("refused arguments") << QStringList{"erase", "-o", "x.txt"} << 2
                                       << "corvane: -o does not go with erase\n";
    QTest::newRow("unknown format") << QStringList{"download", "--format", "doc"} << 2
                                    << "corvane: unknown format \"doc\"";
    QTest::newRow("decode of a missing directory") << QStringList{"decode", "--geometry", "0,7,10", "/nonexistent/kvt"}
                                                   << 1 << "Path not found: /nonexistent/kvt";
}

// Bad usage is exit status 2 with the reason on stderr, before anything is
// touched; the parser's reasons are tested in process.
void tst_Cli::badUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, says);
    const clsRun lcRun = Corvane(arguments);
    QCOMPARE(lcRun.exitCode, exitCode);
    QVERIFY2(lcRun.err.contains(says), qPrintable(lcRun.err));
    QVERIFY(lcRun.out.isEmpty());
}

void tst_Cli::downloadWritesTheGoldenFile()
{
    SimProcess lcSim;
    QVERIFY(lcSim.Start(kDisplay + QStringList{"--flash", kGolden + "flash.img"}));
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
}

// Page files saved earlier decode to the same export, and their directory is left exactly as it was.
void tst_Cli::decodeOfSavedPagesGivesTheSameFile()
{
    QTemporaryDir lcDir;
    const QString lsPages = lcDir.filePath(QStringLiteral("pages"));
    QVERIFY(QDir().mkpath(lsPages));
    const QByteArray lcImage = ReadAll(kGolden + "flash.img");
    QVERIFY(WritePageFile(lsPages + QStringLiteral("/Page1.DSW"), lcImage.mid(1 * kPageSize, kPageSize)));
    QVERIFY(WritePageFile(lsPages + QStringLiteral("/Page2.DSW"), lcImage.mid(2 * kPageSize, kPageSize)));
    const QMap<QString, QByteArray> lcBefore = Snapshot(lsPages);
    const QString lsTrips = lcDir.filePath(QStringLiteral("trips.txt"));

    const clsRun lcRun = Corvane({"decode", "--geometry", "0,7,10", "-o", lsTrips, "--print", lsPages});

    QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
    QCOMPARE(ReadAll(lsTrips), ReadAll(kGolden + "trips.txt"));
    QCOMPARE(Snapshot(lsPages), lcBefore);
    // --print: the header, then the saved lines without their route (the
    // default selection shows the kinds that are saved; "Show route" is off).
    QStringList lcExpected{QStringLiteral("#\tRitnumber\tDate\tStart Time\tStop Time\tDrive Time\tStart km\tEnd km\t"
                                          "Driven km\tZip code\tZip code\tOrigin\tDestination\tType of trip\t"
                                          "Direction\tSpeed\tEvent\tAmplitude\tFrequency\tTank receipt number\tRoute")};
    for (const QString& lsLine : Cp1252::Decode(ReadAll(lsTrips)).split(QStringLiteral("\r\n"), Qt::SkipEmptyParts))
        lcExpected << lsLine.left(lsLine.lastIndexOf(QLatin1Char('\t')) + 1);
    QCOMPARE(lcRun.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts), lcExpected);
}

// Every page size a display can report decodes; a page smaller than a
// record holds none, and its file is read all the same.
void tst_Cli::decodeOfPagesSmallerThanARecord_data()
{
    QTest::addColumn<QString>("sizeLog2");
    QTest::newRow("1 byte") << "0";
    QTest::newRow("16 bytes") << "4";
}

void tst_Cli::decodeOfPagesSmallerThanARecord()
{
    QFETCH(QString, sizeLog2);
    QTemporaryDir lcDir;
    WritePageFile(lcDir.filePath(QStringLiteral("Page1.DSW")), ReadAll(kGolden + "flash.img").mid(kPageSize, 16));
    const clsRun lcRun = Corvane({"decode", "--geometry", "0,1," + sizeLog2, "--print", lcDir.path()});
    QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
    QVERIFY2(lcRun.err.contains(QStringLiteral("Copied 0 record(s) from KVT Memory Display")), qPrintable(lcRun.err));
    QCOMPARE(lcRun.out.count(QLatin1Char('\n')), 1);
}

void tst_Cli::decodeSavesByExtension_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("start");
    QTest::addColumn<QString>("stderr");
    QTest::newRow("csv, quiet") << QStringList{"-q"} << "trips.csv" << QByteArray("\xEF\xBB\xBF#,Ritnumber,") << "";
    QTest::newRow("xlsx is a zip") << QStringList{} << "trips.xlsx" << QByteArray("PK\x03\x04") << "Save As: ";
    QTest::newRow("pdf without a display") << QStringList{"-q"} << "trips.pdf" << QByteArray("%PDF-") << "";
    QTest::newRow("--format over the extension") << QStringList{"--format", "gpx"} << "trips.txt"
                                                 << QByteArray("<?xml") << "Save As: ";
    QTest::newRow("unknown extension: tab-delimited") << QStringList{"-q"} << "trips.dat" << QByteArray("1\t1\t") << "";
}

// Quiet runs print nothing at all on stderr; the others say where the file went.
void tst_Cli::decodeSavesByExtension()
{
    QFETCH(QStringList, options);
    QFETCH(QString, file);
    QFETCH(QByteArray, start);
    QFETCH(QString, stderr);
    QTemporaryDir lcDir;
    const QString lsPages = lcDir.filePath(QStringLiteral("pages"));
    QVERIFY(QDir().mkpath(lsPages));
    const QByteArray lcImage = ReadAll(kGolden + "flash.img");
    WritePageFile(lsPages + QStringLiteral("/Page1.DSW"), lcImage.mid(1 * kPageSize, kPageSize));
    const QString lsOut = lcDir.filePath(file);
    // As on a desktop; without it Qt's graphical part (the PDF) warns on stderr.
    static QTemporaryDir scRuntime;
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(scRuntime.path()));

    const clsRun lcRun = Corvane(QStringList{"decode", "--geometry", "0,7,10", "-o", lsOut, lsPages} + options);

    QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
    QCOMPARE(ReadAll(lsOut).left(start.size()), start);
    if (stderr.isEmpty())
        QCOMPARE(lcRun.err, QString());
    else
        QVERIFY2(lcRun.err.contains(stderr), qPrintable(lcRun.err));
}

void tst_Cli::erase_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<bool>("erased");
    QTest::addColumn<QString>("says");
    QTest::newRow("--yes") << "--yes" << 0 << true
                           << "Corvane Desktop: Are you sure you want to clear the display database? [Yes/No] Yes\n";
    QTest::newRow("--no") << "--no" << 0 << false << "Nothing erased.";
    QTest::newRow("no answer without a terminal") << "" << 2 << false << "give --yes or --no";
}

// The logging area, every page after FirstPage, is erased; FirstPage itself
// stays as it was. Without an answer nothing is sent to the display at all.
void tst_Cli::erase()
{
    QFETCH(QString, answer);
    QFETCH(int, exitCode);
    QFETCH(bool, erased);
    QFETCH(QString, says);
    SimProcess lcSim;
    const QString lsSaved = lcSim.File(QStringLiteral("saved.img"));
    QVERIFY(lcSim.Start(kDisplay + QStringList{"--flash", kGolden + "flash.img", "--save-flash", lsSaved}));
    QStringList lcArguments = {"erase", "--port", lcSim.Link(), "--home", lcSim.File(QStringLiteral("home"))};
    if (!answer.isEmpty())
        lcArguments << answer;
    const clsRun lcRun = Corvane(lcArguments);
    QVERIFY(lcSim.Stop());

    QVERIFY2(lcRun.exitCode == exitCode, qPrintable(lcRun.err));
    QVERIFY2(lcRun.err.contains(says), qPrintable(lcRun.err));
    const QByteArray lcImage = ReadAll(kGolden + "flash.img");
    const QByteArray lcSavedImage = ReadAll(lsSaved);
    QCOMPARE(lcSavedImage.size(), lcImage.size());
    QCOMPARE(lcSavedImage.left(kPageSize), lcImage.left(kPageSize));
    const QByteArray lcLogging = erased ? QByteArray(lcImage.size() - kPageSize, char(0xFF)) : lcImage.mid(kPageSize);
    QCOMPARE(lcSavedImage.mid(kPageSize), lcLogging);
    if (erased)
        QVERIFY(lcRun.err.contains(QStringLiteral("KVT Upload: Clearing display successfully completed")));
}

// The display answers two requests and then nothing: six attempts of a
// second each, then the retry question, answered Cancel by --no.
void tst_Cli::silentDisplayIsCancelledUnderNo()
{
    SimProcess lcSim;
    QVERIFY(lcSim.Start({"--generate", "--days", "1", "--fault", "silent-after=2"}));
    const QString lsTrips = lcSim.File(QStringLiteral("trips.txt"));
    const clsRun lcRun = Corvane({"download", "--no", "-o", lsTrips, "--port", lcSim.Link(), "--home",
                                  lcSim.File(QStringLiteral("home"))});
    QVERIFY(lcSim.Stop());

    QCOMPARE(lcRun.exitCode, 1);
    QVERIFY2(lcRun.err.endsWith(QStringLiteral("corvane: Action cancelled by user.\n")), qPrintable(lcRun.err));
    QVERIFY(lcRun.err.contains(QStringLiteral("Corvane Desktop: Unable to communicate with display\n")));
    QVERIFY(lcRun.err.contains(QStringLiteral("[OK/Cancel] Cancel\n")));
    QVERIFY(!QFile::exists(lsTrips));
    QVERIFY2(lcRun.ms < 12000, qPrintable(QString::number(lcRun.ms)));
}

// --simulate answers in process; a port given by path is kept under "Port"
// beside the number, and a number given later clears the path again.
void tst_Cli::simulatedDisplayRemembersThePort()
{
    QTemporaryDir lcHome;
    const QString lsIni = lcHome.filePath(QStringLiteral("kvtDsw.ini"));
    const clsRun lcByPath = Corvane({"id", "--simulate", "-v", "--port", "/dev/ttyUSB7", "--home", lcHome.path()});
    QVERIFY2(lcByPath.exitCode == 0, qPrintable(lcByPath.err));
    QCOMPARE(lcByPath.out, QStringLiteral("12.0.34.5.6.7.8.9.\n"));
    QVERIFY2(lcByPath.err.contains(QStringLiteral(" - Logging stopped\n")), qPrintable(lcByPath.err));
    QVERIFY(ReadAll(lsIni).contains("Com=1\r\n"));
    QVERIFY(ReadAll(lsIni).contains("Port=/dev/ttyUSB7\r\n"));

    const clsRun lcByNumber = Corvane({"id", "--simulate", "--port", "3", "--home", lcHome.path()});
    QCOMPARE(lcByNumber.exitCode, 0);
    QVERIFY(ReadAll(lsIni).contains("Com=3\r\n"));
    QVERIFY(ReadAll(lsIni).contains("Port=\r\n"));
}

void tst_Cli::detect_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    QTest::newRow("just plugged in") << "--simulate" << 0
                                     << "Display detected: greeted with \"Connected to\" and \"Corvane Desktop\"\n"
                                     << "Display Detected (";
    QTest::newRow("greeted before") << "pty" << 0
                                    << "Display present: greeted before, it is greeted again once plugged in anew\n"
                                    << "";
    QTest::newRow("nothing on the port") << "/dev/nonexistent-kvt" << 1 << ""
                                         << "corvane: no display answers\n";
}

// One round of the window's probe: the status line and greeting for a display
// that says it was just plugged in, nothing for one that was greeted before.
void tst_Cli::detect()
{
    QFETCH(QString, port);
    QFETCH(int, exitCode);
    QFETCH(QString, out);
    QFETCH(QString, err);
    SimProcess lcSim;
    QStringList lcArguments = {"detect", "-v", "--home", lcSim.File(QStringLiteral("home"))};
    if (port == QLatin1String("pty")) {
        QVERIFY(lcSim.Start(kDisplay));
        lcArguments << "--port" << lcSim.Link();
    } else {
        lcArguments << (port.startsWith(QLatin1Char('/')) ? QStringList{"--port", port} : QStringList{port});
    }
    const clsRun lcRun = Corvane(lcArguments);
    QCOMPARE(lcRun.exitCode, exitCode);
    QCOMPARE(lcRun.out, out);
    QVERIFY2(lcRun.err.contains(err), qPrintable(lcRun.err));
}

QTEST_GUILESS_MAIN(tst_Cli)
#include "tst_cli.moc"
