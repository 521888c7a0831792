// The .deb as a user gets it: made by CPack from the build tree, unpacked
// with dpkg -x into a temporary root, and its programs run from there. They
// must find their data in the installed tree, never in this source tree.

#include "CorvaneProcess.h"

#include <QtTest>

class tst_package : public QObject
{
    Q_OBJECT
    QTemporaryDir mcDir;
    QString msDeb;
    QString Installed(const QString& vsPath) const { return mcDir.filePath(QStringLiteral("root/usr/") + vsPath); }

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("dpkg-deb")).isEmpty())
            QSKIP("dpkg-deb is not installed");
        // The installed programs run with a home of their own.
        qunsetenv("CORVANE_HOME");
        qputenv("HOME", QFile::encodeName(mcDir.path()));
        qputenv("XDG_DATA_HOME", QFile::encodeName(mcDir.path()));
        const QString lsOut = mcDir.filePath(QStringLiteral("out"));
        const clsRun lcCpack = RunProgram(QStringLiteral(CORVANE_CPACK),
                                          {"-G", "DEB", "-B", lsOut, "--config", QStringLiteral(CORVANE_BINARY_DIR "/CPackConfig.cmake")}, 240000);
        QVERIFY2(lcCpack.exitCode == 0, qPrintable(lcCpack.err));
        const QStringList lcDebs = QDir(lsOut).entryList({QStringLiteral("*.deb")}, QDir::Files);
        QCOMPARE(lcDebs.size(), 1);
        msDeb = QDir(lsOut).filePath(lcDebs.first());
        QCOMPARE(QProcess::execute(QStringLiteral("dpkg-deb"), {"-x", msDeb, mcDir.filePath(QStringLiteral("root"))}), 0);
    }

    // A -dev package would drag compilers onto a user's machine; a missing Qt
    // runtime would leave the programs unable to start.
    void dependsOnRuntimePackagesOnly()
    {
        const QString lsDepends = RunProgram(QStringLiteral("dpkg-deb"), {"-f", msDeb, "Depends"}).out;
        for (const char* lsNeeded : {"libqt6core6", "libqt6serialport6", "qt6-qpa-plugins"})
            QVERIFY2(lsDepends.contains(QLatin1String(lsNeeded)), qPrintable(lsDepends));
        QVERIFY2(!lsDepends.contains(QLatin1String("-dev")), qPrintable(lsDepends));
    }

    void installed_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("mustContain"); // for a program: what --version answers
        QTest::newRow("place table") << "share/corvane/postcode.gps" << ReadAll(QStringLiteral(CORVANE_SOURCE_DIR "/share/postcode.gps"));
        QTest::newRow("udev rule for the KVT interface")
            << "lib/udev/rules.d/60-corvane-kvt.rules" << QByteArray("ATTRS{idVendor}==\"0403\", ATTRS{idProduct}==\"e990\"");
        QTest::newRow("icon") << "share/icons/hicolor/scalable/apps/corvane-desktop.svg" << QByteArray("<svg");
        QTest::newRow("man page of corvane") << "share/man/man1/corvane.1" << QByteArray(".SH SYNOPSIS");
        QTest::newRow("man page of the simulator") << "share/man/man1/corvane-display-sim.1" << QByteArray("pseudo\\-terminal");
        QTest::newRow("corvane") << "bin/corvane" << QByteArray("corvane (Corvane Desktop) 1.0.0\n");
        QTest::newRow("corvane-display-sim") << "bin/corvane-display-sim" << QByteArray("corvane-display-sim 1.0.0\n");
    }
    void installed()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, mustContain);
        if (path.startsWith(QLatin1String("bin/"))) {
            const clsRun lcRun = RunProgram(Installed(path), {"--version"});
            QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
            QCOMPARE(lcRun.out.toLatin1(), mustContain);
            return;
        }
        const QByteArray lcInstalled = ReadAll(Installed(path));
        QVERIFY2(!lcInstalled.isEmpty() && lcInstalled.contains(mustContain), qPrintable(path));
    }

    // A table put in place of the installed one names the places of a decode,
    // which proves the decode read the installed copy and not the one in this
    // source tree (installed pins that the shipped table is installed).
    void decodeUsesTheInstalledPlaceTable()
    {
        const QDir lcSet(QStringLiteral(CORVANE_TEST_DATA "/pipeline-handbuilt"));
        const QString lsTable = Installed(QStringLiteral("share/corvane/postcode.gps"));
        WriteAll(lsTable, ReadAll(lcSet.filePath(QStringLiteral("postcode.gps"))));
        // The page files of the set without its place table, so the decode has to find one.
        const QString lsPages = mcDir.filePath(QStringLiteral("pages"));
        QVERIFY(QDir().mkpath(lsPages));
        for (const QString& lsPage : lcSet.entryList({QStringLiteral("Page*.DSW")}, QDir::Files))
            QVERIFY(QFile::copy(lcSet.filePath(lsPage), QDir(lsPages).filePath(lsPage)));
        const QString lsSaved = mcDir.filePath(QStringLiteral("trips.txt"));
        const clsRun lcRun = RunProgram(Installed(QStringLiteral("bin/corvane")),
                                        {"decode", "--geometry", "0,3,8", "-o", lsSaved, lsPages}, 60000);
        QVERIFY2(lcRun.exitCode == 0, qPrintable(lcRun.err));
        QVERIFY(ReadAll(lsSaved).contains("\t1100\t1125\t25\t2801 Gouda\t4000 Li\xE8ge\t"));
    }
};

QTEST_GUILESS_MAIN(tst_package)
#include "tst_package.moc"
