// The command line's own parts: what its arguments are refused for, with
// which words, and what an accepted line asks for; the live progress line,
// the port list and the advice for a port refused for want of permission.

#include "cli/clsCliOptions.h"
#include "cli/clsPortAccess.h"
#include "cli/clsPortList.h"
#include "cli/clsProgressLine.h"
#include "TestFiles.h"

#include <QTest>

using Sample = clsProgressLine::Sample;
class tst_clioptions : public QObject
{
    Q_OBJECT
private slots:
    void parse_data() { AddTableRows(QStringLiteral("cli-options.txt")); }
    void parse()
    {
        QFETCH(QStringList, row);
        clsCliOptions o;
        const clsCliOptions::Outcome lcOutcome = o.Parse(row[1].split(QLatin1Char(' '), Qt::SkipEmptyParts));
        if (lcOutcome != clsCliOptions::Outcome::Run) {
            const QStringList lcOutcomes{"", "help: " + o.HelpText().section('\n', 0, 0), "version", "bad: " + o.UsageError()};
            QCOMPARE(lcOutcomes.at(int(lcOutcome)), row[2]);
            return;
        }
        const clsRecordSelection& s = o.mcSelection;
        const bool lbTicked[] = {s.cheRitRegistratie, s.chePoliceCheck, s.cheRitRegistratieTankstop,
                                 s.chePoliceCheckTc,  s.cheDebugRoute,  s.cheDebugKmCorrection};
        QStringList lcKinds;
        for (int i = 0; i < 6; ++i)
            if (lbTicked[i])
                lcKinds << QStringList{"route", "police", "tank", "tc", "dbg-route", "dbg-km"}.at(i);
        QStringList lcUploads;
        for (const auto& lcFile : o.mcUploadFiles)
            lcUploads << QLatin1String(clsUpgradeFile::Of(lcFile.first).Id) + QLatin1Char(':') + lcFile.second;
        const clsFlashMemInfo& g = o.mcGeometry;
        const QString lsGeometry = QStringLiteral("%1,%2,%3").arg(g.FirstPage()).arg(g.LastPage()).arg(g.SizeOnePage());
        const auto Flag = [](bool vbSet, const char* vsName) { return vbSet ? QLatin1String(vsName) : QLatin1String(""); };
        QCOMPARE(QStringList({clsCliOptions::CommandName(o.mCommand), o.msOutput, o.ExportFormat(), o.msPort,
                              Flag(o.mbPrint, "print"), QStringList{"ask", "yes", "no"}.at(int(o.mAnswer)),
                              QString::number(o.mlReconnects), Flag(o.mbSimulate, "simulate"), Flag(o.mbVerbose, "verbose"),
                              Flag(o.mbQuiet, "quiet"), lcKinds.join(QLatin1Char(',')),
                              o.mbGeometryGiven ? lsGeometry : QString(), o.msDecodeDirectory, o.msHome, o.msPlaces,
                              lcUploads.join(QLatin1Char(',')), Flag(o.mbVerify, "verify")})
                     .join(QLatin1Char(';')),
                 row[2]);
    }

    void progressLine_data() { AddTableRows(QStringLiteral("progress-lines.txt")); }
    void progressLine()
    {
        QFETCH(QStringList, row);
        const QString samples = row[1], line = row[2];
        clsProgressLine lcLine;
        QString lsLine;
        int llWidth = 0;
        for (const QString& lsSample : samples.split(QStringLiteral(" / "))) {
            const QStringList f = lsSample.split(QLatin1Char(';'));
            llWidth = f[6].toInt();
            lsLine = lcLine.Text(Sample{f[0], true, f[1].toInt(), f[2].toInt(), f[3].toInt(), f[4].toUInt(), f[5].toULongLong(), llWidth});
        }
        QCOMPARE(lsLine, line);
        QVERIFY(lsLine.size() < llWidth);
    }

    void portList_data()
    {
        using Port = clsPortList::Port;
        QTest::addColumn<QList<Port>>("ports");
        QTest::addColumn<QString>("listing");
        QTest::newRow("none") << QList<Port>() << "No serial ports found.\n";
        QTest::newRow("the KVT interface among others")
            << QList<Port>{{"/dev/ttyS0", false, 0, 0, "", ""},
                           {"/dev/ttyUSB0", true, 0x0403, 0xE990, "KVT Memory Display", "KVT01234"},
                           {"/dev/ttyUSB1", true, 0x0403, 0x6001, "FT232R USB UART", "A50285BI"}}
            << "PORT          ID         DESCRIPTION         SERIAL\n"
               "/dev/ttyS0    -          -                   -\n"
               "/dev/ttyUSB0  0403:e990  KVT Memory Display  KVT01234  <- KVT USB interface\n"
               "/dev/ttyUSB1  0403:6001  FT232R USB UART     A50285BI\n";
    }
    void portList()
    {
        QFETCH(QList<clsPortList::Port>, ports);
        QFETCH(QString, listing);
        QCOMPARE(clsPortList::Listing(ports), listing);
    }

    void permissionAdviceNamesBothWays()
    {
        const QString lsAdvice = clsPortAccess::PermissionAdvice(QStringLiteral("/dev/ttyUSB0"));
        QVERIFY(lsAdvice.startsWith(QStringLiteral("no permission to open /dev/ttyUSB0.")));
        QVERIFY(lsAdvice.contains(QStringLiteral("60-corvane-kvt.rules")));
        QVERIFY(lsAdvice.contains(QStringLiteral("sudo adduser $USER dialout")));
        // A device that is not there is no permission problem: the link reports it.
        QVERIFY(clsPortAccess::Problem(QStringLiteral("/dev/no-such-kvt-port")).isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_clioptions)
#include "tst_clioptions.moc"
