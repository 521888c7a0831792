// What the command line shows on a terminal: the live progress line, the port
// list and the advice for a port refused for want of permission.

#include "cli/clsCliOptions.h"
#include "cli/clsPortAccess.h"
#include "cli/clsPortList.h"
#include "cli/clsProgressLine.h"

#include <QtTest>

class tst_CliTerminal : public QObject
{
    Q_OBJECT

private slots:
    void progressLine_data();
    void progressLine();
    void newRunRestartsTheEstimate();
    void portList_data();
    void portList();
    void permissionAdviceNamesBothWays();
    void formatOption_data();
    void formatOption();
};

using Sample = clsProgressLine::Sample;
Q_DECLARE_METATYPE(Sample)

namespace {
Sample Bar(const QString& vsWhat, qint32 vlMin, qint32 vlMax, qint32 vlPosition, quint32 vlNow, quint64 vlBytes,
           int vlWidth = 100)
{
    Sample lcSample;
    lcSample.What = vsWhat;
    lcSample.BarVisible = true;
    lcSample.Min = vlMin;
    lcSample.Max = vlMax;
    lcSample.Position = vlPosition;
    lcSample.NowMs = vlNow;
    lcSample.Bytes = vlBytes;
    lcSample.Width = vlWidth;
    return lcSample;
}
}

// Each row: the run starts with the first sample, the line is that of the second.
void tst_CliTerminal::progressLine_data()
{
    QTest::addColumn<Sample>("start");
    QTest::addColumn<Sample>("now");
    QTest::addColumn<QString>("line");
    QTest::newRow("download: a quarter of the pages in 10 s at 5.76 kB/s")
        << Bar("Copying data", 0, 64, 0, 1000, 0) << Bar("12% of page 16 and 25% of total of pages", 0, 64, 16, 11000, 57600, 120)
        << "12% of page 16 and 25% of total of pages  [#####...............]  25%  page 16 of 64  5.8 kB/s  0:30 left";
    QTest::newRow("firmware lines, slow line, over an hour left")
        << Bar("Sending line", 0, 40000, 0, 0, 0) << Bar("Sending line 100", 0, 40000, 100, 10000, 4000)
        << "Sending line 100  [....................]   0%  line 100 of 40000  400 B/s  1:06:30 left";
    QTest::newRow("a text without a unit keeps the run's unit")
        << Bar("0% of page 1 and 1% of total of pages", 0, 64, 1, 0, 0) << Bar("Copied 7% of total", 0, 64, 6, 500, 3000)
        << "Copied 7% of total  [#...................]   9%  page 6 of 64";
    QTest::newRow("first second: no rate, no estimate yet")
        << Bar("Erasing page 1", 0, 63, 0, 0, 0) << Bar("Erasing page 1", 0, 63, 1, 500, 30)
        << "Erasing page 1  [....................]   1%  page 1 of 63";
    QTest::newRow("decoding: no bytes on the line, no unit")
        << Bar("Decoding", 1, 11, 1, 0, 0) << Bar("Decoding", 1, 11, 6, 2000, 0)
        << "Decoding  [##########..........]  50%  5 of 10  0:02 left";
    QTest::newRow("narrow terminal: the text gives way to the numbers")
        << Bar("Copying data from the KVT Memory Display", 0, 10, 0, 0, 0)
        << Bar("Copying data from the KVT Memory Display", 0, 10, 5, 5000, 5000, 66)
        << QString::fromUtf8("Copyi…  [##########..........]  50%  5 of 10  1.0 kB/s  0:05 left");
}

void tst_CliTerminal::progressLine()
{
    QFETCH(Sample, start);
    QFETCH(Sample, now);
    QFETCH(QString, line);
    clsProgressLine lcLine;
    lcLine.Text(start);
    QCOMPARE(lcLine.Text(now), line);
    QVERIFY(lcLine.Text(now).size() < now.Width);
}

// The erase after a download, or the next decode step, must not inherit the last run's start.
void tst_CliTerminal::newRunRestartsTheEstimate()
{
    clsProgressLine lcLine;
    lcLine.Text(Bar("Copying", 0, 64, 0, 0, 0));
    lcLine.Text(Bar("Copying", 0, 64, 64, 60000, 600000));
    lcLine.Text(Bar("Erasing page 1", 0, 63, 0, 60000, 600000));
    QCOMPARE(lcLine.Text(Bar("Erasing page 1", 0, 63, 21, 62000, 600100)),
             QStringLiteral("Erasing page 1  [######..............]  33%  page 21 of 63  50 B/s  0:04 left"));
}

void tst_CliTerminal::portList_data()
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

void tst_CliTerminal::portList()
{
    QFETCH(QList<clsPortList::Port>, ports);
    QFETCH(QString, listing);
    QCOMPARE(clsPortList::Listing(ports), listing);
}

void tst_CliTerminal::permissionAdviceNamesBothWays()
{
    const QString lsAdvice = clsPortAccess::PermissionAdvice(QStringLiteral("/dev/ttyUSB0"));
    QVERIFY(lsAdvice.startsWith(QStringLiteral("no permission to open /dev/ttyUSB0.")));
    QVERIFY(lsAdvice.contains(QStringLiteral("60-corvane-kvt.rules")));
    QVERIFY(lsAdvice.contains(QStringLiteral("sudo adduser $USER dialout")));
    // A device that is not there is no permission problem: the link reports it.
    QVERIFY(clsPortAccess::Problem(QStringLiteral("/dev/no-such-kvt-port")).isEmpty());
}

void tst_CliTerminal::formatOption_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("format");
    QTest::newRow("extension") << QStringList{"download", "-o", "Trips.XLSX"} << "xlsx";
    QTest::newRow("--format over the extension") << QStringList{"download", "-o", "trips.txt", "--format", "KML"} << "kml";
    QTest::newRow("unknown extension stays tab-delimited") << QStringList{"decode", "--geometry", "0,1,8", "-o", "trips.dat", "."}
                                                           << "txt";
    QTest::newRow("unknown format") << QStringList{"download", "--format", "doc"} << QString();
    QTest::newRow("--format does not go with erase") << QStringList{"erase", "--format", "csv"} << QString();
}

void tst_CliTerminal::formatOption()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, format);
    clsCliOptions lcOptions;
    const clsCliOptions::Outcome lcOutcome = lcOptions.Parse(arguments);
    QCOMPARE(lcOutcome == clsCliOptions::Outcome::Run, !format.isEmpty());
    if (!format.isEmpty())
        QCOMPARE(lcOptions.ExportFormat(), format);
}

QTEST_GUILESS_MAIN(tst_CliTerminal)
#include "tst_cliterminal.moc"
