// The .deb as a user gets it: made by CPack from the build tree, unpacked
// with dpkg -x into a temporary root, and its programs run from there. They
// must find their data in the installed tree, never in this source tree.

#include "TestFiles.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {
const QString kTestData = QStringLiteral(CORVANE_TEST_DATA "/");

struct clsRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

clsRun Run(const QString& vsProgram, const QStringList& vcArguments, const QString& vsHome)
{
    QProcess lcProcess;
    QProcessEnvironment lcEnvironment = QProcessEnvironment::systemEnvironment();
    lcEnvironment.remove(QStringLiteral("CORVANE_HOME"));
    lcEnvironment.insert(QStringLiteral("HOME"), vsHome);
    lcEnvironment.insert(QStringLiteral("XDG_DATA_HOME"), vsHome);
    lcProcess.setProcessEnvironment(lcEnvironment);
    lcProcess.start(vsProgram, vcArguments);
    lcProcess.closeWriteChannel();
    clsRun lcRun;
    if (!lcProcess.waitForFinished(60000)) {
        lcProcess.kill();
        lcProcess.waitForFinished();
        lcRun.err = "did not finish in time";
        return lcRun;
    }
    if (lcProcess.exitStatus() == QProcess::NormalExit)
        lcRun.exitCode = lcProcess.exitCode();
    lcRun.out = lcProcess.readAllStandardOutput();
    lcRun.err = lcProcess.readAllStandardError();
    return lcRun;
}

// The page files of a golden set without its place table, so the decode has to find one.
void CopyPageFiles(const QString& vsSet, const QString& vsTarget)
{
    QVERIFY(QDir().mkpath(vsTarget));
    const QDir lcSet(kTestData + vsSet);
    const QStringList lcPages = lcSet.entryList({QStringLiteral("Page*.DSW")}, QDir::Files);
    QVERIFY(!lcPages.isEmpty());
    for (const QString& lsPage : lcPages)
        QVERIFY(QFile::copy(lcSet.filePath(lsPage), QDir(vsTarget).filePath(lsPage)));
}
}

class tst_package : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void dependsOnRuntimePackagesOnly();
    void installedFiles_data();
    void installedFiles();
    void programsAnswerVersion_data();
    void programsAnswerVersion();
    void decodeUsesTheInstalledPlaceTable_data();
    void decodeUsesTheInstalledPlaceTable();

private:
    QString Installed(const QString& vsPath) const { return mcDir.filePath(QStringLiteral("root/usr/") + vsPath); }

    QTemporaryDir mcDir;
    QString msDeb;
};

void tst_package::initTestCase()
{
    if (QStandardPaths::findExecutable(QStringLiteral("dpkg-deb")).isEmpty())
        QSKIP("dpkg-deb is not installed");
    QVERIFY(mcDir.isValid());
    const QString lsOut = mcDir.filePath(QStringLiteral("out"));
    QProcess lcCpack;
    lcCpack.start(QStringLiteral(CORVANE_CPACK),
                  {"-G", "DEB", "-B", lsOut, "--config", QStringLiteral(CORVANE_BINARY_DIR "/CPackConfig.cmake")});
    QVERIFY(lcCpack.waitForFinished(240000));
    QVERIFY2(lcCpack.exitCode() == 0, lcCpack.readAllStandardError().constData());
    const QStringList lcDebs = QDir(lsOut).entryList({QStringLiteral("*.deb")}, QDir::Files);
    QCOMPARE(lcDebs.size(), 1);
    msDeb = QDir(lsOut).filePath(lcDebs.first());
    QCOMPARE(QProcess::execute(QStringLiteral("dpkg-deb"), {"-x", msDeb, mcDir.filePath(QStringLiteral("root"))}), 0);
}

// A -dev package would drag compilers onto a user's machine; a missing Qt
// runtime would leave the programs unable to start.
void tst_package::dependsOnRuntimePackagesOnly()
{
    QProcess lcField;
    lcField.start(QStringLiteral("dpkg-deb"), {"-f", msDeb, "Depends"});
    QVERIFY(lcField.waitForFinished());
    const QString lsDepends = QString::fromUtf8(lcField.readAllStandardOutput()).trimmed();
    for (const char* lsNeeded : {"libqt6core6", "libqt6serialport6", "qt6-qpa-plugins"})
        QVERIFY2(lsDepends.contains(QLatin1String(lsNeeded)), qPrintable(lsDepends));
    QVERIFY2(!lsDepends.contains(QLatin1String("-dev")), qPrintable(lsDepends));
}

void tst_package::installedFiles_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("mustContain");
    QTest::newRow("place table") << "share/corvane/postcode.gps" << ReadAll(QStringLiteral(CORVANE_SOURCE_DIR "/share/postcode.gps"));
    QTest::newRow("udev rule for the KVT interface")
        << "lib/udev/rules.d/60-corvane-kvt.rules" << QByteArray("ATTRS{idVendor}==\"0403\", ATTRS{idProduct}==\"e990\"");
    QTest::newRow("icon") << "share/icons/hicolor/scalable/apps/corvane-desktop.svg" << QByteArray("<svg");
    QTest::newRow("man page of corvane") << "share/man/man1/corvane.1" << QByteArray(".SH SYNOPSIS");
    QTest::newRow("man page of the simulator") << "share/man/man1/corvane-display-sim.1" << QByteArray("pseudo\\-terminal");
}

void tst_package::installedFiles()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, mustContain);
    const QByteArray lcInstalled = ReadAll(Installed(path));
    QVERIFY2(!lcInstalled.isEmpty(), qPrintable(path));
    QVERIFY2(lcInstalled.contains(mustContain), qPrintable(path));
}

void tst_package::programsAnswerVersion_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("corvane") << "corvane" << QByteArray("corvane (Corvane Desktop) 1.0.0\n");
    QTest::newRow("corvane-display-sim") << "corvane-display-sim" << QByteArray("corvane-display-sim 1.0.0\n");
}

void tst_package::programsAnswerVersion()
{
    QFETCH(QString, program);
    QFETCH(QByteArray, answer);
    const clsRun lcRun = Run(Installed(QStringLiteral("bin/") + program), {"--version"}, mcDir.path());
    QVERIFY2(lcRun.exitCode == 0, lcRun.err.constData());
    QCOMPARE(lcRun.out, answer);
}

// The shipped table names the places of a generated log; a different table
// put in its place must name them instead, which proves the decode read the
// installed copy and not the one in this source tree.
void tst_package::decodeUsesTheInstalledPlaceTable_data()
{
    QTest::addColumn<QString>("set");
    QTest::addColumn<QString>("geometry");
    QTest::addColumn<QString>("placeTable");
    QTest::addColumn<QByteArray>("trip");
    QTest::newRow("shipped table") << "pipeline-generated" << "0,5,10" << QString()
                                   << QByteArray("\t148390\t148400\t10\tEnschede (NL)\tHengelo (NL)\t");
    QTest::newRow("table replaced in the install") << "pipeline-handbuilt" << "0,3,8" << "pipeline-handbuilt/postcode.gps"
                                                   << QByteArray("\t1100\t1125\t25\t2801 Gouda\t4000 Li\xE8ge\t");
}

void tst_package::decodeUsesTheInstalledPlaceTable()
{
    QFETCH(QString, set);
    QFETCH(QString, geometry);
    QFETCH(QString, placeTable);
    QFETCH(QByteArray, trip);
    const QString lsInstalledTable = Installed(QStringLiteral("share/corvane/postcode.gps"));
    const QByteArray lcShipped = ReadAll(lsInstalledTable);
    if (!placeTable.isEmpty())
        WriteAll(lsInstalledTable, ReadAll(kTestData + placeTable));
    const QString lsPages = mcDir.filePath(QStringLiteral("pages-") + set);
    CopyPageFiles(set, lsPages);
    const QString lsSaved = mcDir.filePath(set + QStringLiteral(".txt"));

    const clsRun lcRun = Run(Installed(QStringLiteral("bin/corvane")),
                             {"decode", "--geometry", geometry, "-o", lsSaved, lsPages}, mcDir.path());
    WriteAll(lsInstalledTable, lcShipped);
    QVERIFY2(lcRun.exitCode == 0, lcRun.err.constData());
    QVERIFY2(ReadAll(lsSaved).contains(trip), trip.constData());
}

QTEST_GUILESS_MAIN(tst_package)
#include "tst_package.moc"
