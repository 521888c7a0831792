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
Q_DECLARE_METATYPE(Sample)

namespace {
Sample Bar(const QString& vsWhat, qint32 vlMin, qint32 vlMax, qint32 vlPosition, quint32 vlNow, quint64 vlBytes, int vlWidth = 100)
{
    return Sample{vsWhat, true, vlMin, vlMax, vlPosition, vlNow, vlBytes, vlWidth};
}
}

class tst_clioptions : public QObject
{
    Q_OBJECT
private slots:
    void parse_data()
    {
        QTest::addColumn<QString>("arguments");
        QTest::addColumn<QString>("outcome");
        for (const QStringList& lcRow : TableRows(QStringLiteral("cli-options.txt")))
            QTest::newRow(qPrintable(lcRow[0])) << lcRow[1] << lcRow[2];
    }
    void parse()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, outcome);
        clsCliOptions o;
        const clsCliOptions::Outcome lcOutcome = o.Parse(arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        QString lsOutcome;
        if (lcOutcome == clsCliOptions::Outcome::BadUsage)
            lsOutcome = QStringLiteral("bad: ") + o.UsageError();
        else if (lcOutcome != clsCliOptions::Outcome::Run)
            lsOutcome = lcOutcome == clsCliOptions::Outcome::Help ? QStringLiteral("help") : QStringLiteral("version");
        else {
            const clsRecordSelection& rcShown = o.mcSelection;
            QStringList lcKinds;
            const std::pair<const char*, bool> lcTicks[] = {
                {"route", rcShown.cheRitRegistratie},   {"police", rcShown.chePoliceCheck},
                {"tank", rcShown.cheRitRegistratieTankstop}, {"tc", rcShown.chePoliceCheckTc},
                {"dbg-route", rcShown.cheDebugRoute},   {"dbg-km", rcShown.cheDebugKmCorrection}};
            for (const auto& lcTick : lcTicks)
                if (lcTick.second)
                    lcKinds << QLatin1String(lcTick.first);
            QStringList lcUploads;
            for (const auto& lcFile : o.mcUploadFiles)
                for (const clsUpgradeFile::Row& lcRow : clsUpgradeFile::Table())
                    if (lcRow.Type == lcFile.first)
                        lcUploads << QLatin1String(lcRow.Id) + QLatin1Char(':') + lcFile.second;
            const clsFlashMemInfo& g = o.mcGeometry;
            const auto Flag = [](bool vbSet, const char* vsName) { return vbSet ? QLatin1String(vsName) : QLatin1String(""); };
            lsOutcome = QStringList{clsCliOptions::CommandName(o.mCommand), o.msOutput, o.ExportFormat(), o.msPort,
                                    Flag(o.mbPrint, "print"), QStringList{"ask", "yes", "no"}.at(int(o.mAnswer)),
                                    QString::number(o.mlReconnects), Flag(o.mbSimulate, "simulate"),
                                    Flag(o.mbVerbose, "verbose"), Flag(o.mbQuiet, "quiet"), lcKinds.join(QLatin1Char(',')),
                                    o.mbGeometryGiven ? QStringLiteral("%1,%2,%3").arg(g.FirstPage()).arg(g.LastPage()).arg(g.SizeOnePage())
                                                      : QString(),
                                    o.msDecodeDirectory, o.msHome, o.msPlaces, lcUploads.join(QLatin1Char(',')),
                                    Flag(o.mbVerify, "verify")}
                            .join(QLatin1Char(';'));
        }
        QCOMPARE(lsOutcome, outcome);
    }

    // Each row: the run starts with the first sample, the line is that of the
    // second; the last row's run starts anew, so the erase after a download
    // does not inherit the download's start.
    void progressLine_data()
    {
        QTest::addColumn<QList<Sample>>("samples");
        QTest::addColumn<QString>("line");
        QTest::newRow("download: a quarter of the pages in 10 s at 5.76 kB/s")
            << QList<Sample>{Bar("Copying data", 0, 64, 0, 1000, 0), Bar("12% of page 16 and 25% of total of pages", 0, 64, 16, 11000, 57600, 120)}
            << "12% of page 16 and 25% of total of pages  [#####...............]  25%  page 16 of 64  5.8 kB/s  0:30 left";
        QTest::newRow("firmware lines, slow line, over an hour left")
            << QList<Sample>{Bar("Sending line", 0, 40000, 0, 0, 0), Bar("Sending line 100", 0, 40000, 100, 10000, 4000)}
            << "Sending line 100  [....................]   0%  line 100 of 40000  400 B/s  1:06:30 left";
        QTest::newRow("a text without a unit keeps the run's unit")
            << QList<Sample>{Bar("0% of page 1 and 1% of total of pages", 0, 64, 1, 0, 0), Bar("Copied 7% of total", 0, 64, 6, 500, 3000)}
            << "Copied 7% of total  [#...................]   9%  page 6 of 64";
        QTest::newRow("first second: no rate, no estimate yet")
            << QList<Sample>{Bar("Erasing page 1", 0, 63, 0, 0, 0), Bar("Erasing page 1", 0, 63, 1, 500, 30)}
            << "Erasing page 1  [....................]   1%  page 1 of 63";
        QTest::newRow("decoding: no bytes on the line, no unit")
            << QList<Sample>{Bar("Decoding", 1, 11, 1, 0, 0), Bar("Decoding", 1, 11, 6, 2000, 0)}
            << "Decoding  [##########..........]  50%  5 of 10  0:02 left";
        QTest::newRow("narrow terminal: the text gives way to the numbers")
            << QList<Sample>{Bar("Copying data from the KVT Memory Display", 0, 10, 0, 0, 0),
                             Bar("Copying data from the KVT Memory Display", 0, 10, 5, 5000, 5000, 66)}
            << QString::fromUtf8("Copyi…  [##########..........]  50%  5 of 10  1.0 kB/s  0:05 left");
        QTest::newRow("a new run restarts the estimate")
            << QList<Sample>{Bar("Copying", 0, 64, 0, 0, 0), Bar("Copying", 0, 64, 64, 60000, 600000),
                             Bar("Erasing page 1", 0, 63, 0, 60000, 600000), Bar("Erasing page 1", 0, 63, 21, 62000, 600100)}
            << "Erasing page 1  [######..............]  33%  page 21 of 63  50 B/s  0:04 left";
    }
    void progressLine()
    {
        QFETCH(QList<Sample>, samples);
        QFETCH(QString, line);
        clsProgressLine lcLine;
        QString lsLine;
        for (const Sample& lcSample : samples)
            lsLine = lcLine.Text(lcSample);
        QCOMPARE(lsLine, line);
        QVERIFY(lsLine.size() < samples.last().Width);
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
