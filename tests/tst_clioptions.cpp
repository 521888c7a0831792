// The command line's arguments: what is refused, with which words, and what
// an accepted line asks for.

#include "cli/clsCliOptions.h"

#include <QTest>

class tst_clioptions : public QObject
{
    Q_OBJECT
private slots:
    void parse_data();
    void parse();
};

void tst_clioptions::parse_data()
{
    // What a run asks for: command|output|port|print|answer|simulate|verbose|shown kinds|geometry|directory.
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("outcome");
    QTest::newRow("no command") << "" << "bad: no command given";
    QTest::newRow("unknown command") << "copy" << "bad: unknown command \"copy\"";
    QTest::newRow("option of another command") << "erase -o x.txt" << "bad: -o does not go with erase";
    QTest::newRow("decode takes no port") << "decode --port 3" << "bad: --port does not go with decode";
    QTest::newRow("decode without geometry") << "decode ." << "bad: decode needs --geometry FIRST,LAST,SIZELOG2";
    QTest::newRow("decode without directory")
        << "decode --geometry 0,7,10" << "bad: decode needs the directory that holds the page files";
    QTest::newRow("last before first")
        << "decode --geometry 3,1,8 ." << "bad: --geometry wants FIRST,LAST,SIZELOG2 with 0 <= FIRST <= LAST and "
                                          "0 <= SIZELOG2 <= 30, not \"3,1,8\"";
    QTest::newRow("geometry of two numbers") << "decode --geometry 0,7 ." << "bad: --geometry wants FIRST,LAST,SIZELOG2 "
                                                                             "with 0 <= FIRST <= LAST and 0 <= "
                                                                             "SIZELOG2 <= 30, not \"0,7\"";
    QTest::newRow("page beyond 32 bits") << "decode --geometry 0,1,31 ." << "bad: --geometry wants FIRST,LAST,"
                                                                            "SIZELOG2 with 0 <= FIRST <= LAST and 0 <= "
                                                                            "SIZELOG2 <= 30, not \"0,1,31\"";
    QTest::newRow("yes and no") << "id --yes --no" << "bad: --yes and --no exclude each other";
    QTest::newRow("unknown kind") << "download --show route,trains"
                                  << "bad: unknown kind \"trains\" for --show (route, police, tank, tc, dbg-route, "
                                     "dbg-km, all, none)";
    QTest::newRow("missing value") << "download --port" << "bad: --port needs a value";
    QTest::newRow("empty inline value") << "download --port=" << "bad: --port needs a value";
    QTest::newRow("value of a switch") << "download --print=1" << "bad: --print takes no value";
    QTest::newRow("unknown option") << "download --colour" << "bad: unknown option --colour";
    QTest::newRow("port 0") << "id --port 0" << "bad: --port 0: port numbers start at 1";
    QTest::newRow("second argument") << "id extra" << "bad: unexpected argument \"extra\"";
    QTest::newRow("help wins") << "download --port 3 --help" << "help";
    QTest::newRow("help of bad usage") << "copy --help" << "bad: unknown command \"copy\"";
    QTest::newRow("version") << "--version" << "version";
    QTest::newRow("defaults") << "download" << "download||||ask|||route,police,tank,tc||";
    QTest::newRow("download, all said")
        << "download -o t.txt --port /dev/ttyUSB7 --print --show tc,Route --yes --yes -v"
        << "download|t.txt|/dev/ttyUSB7|print|yes||verbose|route,tc||";
    QTest::newRow("inline values, options ended")
        << "decode --output=t.txt --show=all --geometry=0,7,10 -- -pages"
        << "decode|t.txt|||ask|||route,police,tank,tc,dbg-route,dbg-km|0,7,10|-pages";
    QTest::newRow("a lone dash is the directory") << "decode --geometry 0,7,10 -"
                                                  << "decode||||ask|||route,police,tank,tc|0,7,10|-";
    QTest::newRow("simulated, shown nothing") << "download --simulate --port 3 --no --show none"
                                              << "download||3||no|simulate||||";
}

void tst_clioptions::parse()
{
    QFETCH(QString, arguments);
    QFETCH(QString, outcome);
    clsCliOptions lcOptions;
    const clsCliOptions::Outcome lcOutcome = lcOptions.Parse(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
    QString lsOutcome;
    if (lcOutcome == clsCliOptions::Outcome::BadUsage)
        lsOutcome = QStringLiteral("bad: ") + lcOptions.UsageError();
    else if (lcOutcome != clsCliOptions::Outcome::Run)
        lsOutcome = lcOutcome == clsCliOptions::Outcome::Help ? QStringLiteral("help") : QStringLiteral("version");
    else {
        const clsRecordSelection& rcShown = lcOptions.mcSelection;
        QStringList lcKinds;
        const std::pair<const char*, bool> lcTicks[] = {
            {"route", rcShown.cheRitRegistratie},   {"police", rcShown.chePoliceCheck},
            {"tank", rcShown.cheRitRegistratieTankstop}, {"tc", rcShown.chePoliceCheckTc},
            {"dbg-route", rcShown.cheDebugRoute},   {"dbg-km", rcShown.cheDebugKmCorrection}};
        for (const auto& lcTick : lcTicks)
            if (lcTick.second)
                lcKinds << QLatin1String(lcTick.first);
        const clsFlashMemInfo& rcGeometry = lcOptions.mcGeometry;
        lsOutcome = QStringList{clsCliOptions::CommandName(lcOptions.mCommand), lcOptions.msOutput, lcOptions.msPort,
                                lcOptions.mbPrint ? QStringLiteral("print") : QString(),
                                QStringList{"ask", "yes", "no"}.at(int(lcOptions.mAnswer)),
                                lcOptions.mbSimulate ? QStringLiteral("simulate") : QString(),
                                lcOptions.mbVerbose ? QStringLiteral("verbose") : QString(), lcKinds.join(QLatin1Char(',')),
                                lcOptions.mbGeometryGiven ? QStringLiteral("%1,%2,%3")
                                                                .arg(rcGeometry.FirstPage())
                                                                .arg(rcGeometry.LastPage())
                                                                .arg(rcGeometry.SizeOnePage())
                                                          : QString(),
                                lcOptions.msDecodeDirectory}
                        .join(QLatin1Char('|'));
    }
    QCOMPARE(lsOutcome, outcome);
}

QTEST_GUILESS_MAIN(tst_clioptions)
#include "tst_clioptions.moc"
