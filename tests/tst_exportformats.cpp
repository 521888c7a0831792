// The export formats beyond the tab-delimited file, each made from the golden
// page-file sets and read back by a reader that is not our writer: an RFC 4180
// parser for CSV, unzip and the sheet XML for XLSX, an XML parser for GPX and
// KML, pdftotext for the PDF.

#include "TestFiles.h"
#include "support/TestApp.h"
#include "data/clsFlashMemInfo.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/Cp1252.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QXmlStreamReader>
#include <QtTest>
#include <csignal>
#include <ctime>
#include <sys/resource.h>

namespace {
using Rows = QList<QStringList>;

// Decodes a golden set in the home of an application not started yet, its own
// place table (or vcTable) included; the table is loaded as the application starts.
void LoadSet(TestApp& rcApp, const QString& vsSet, const QByteArray& vcTable = QByteArray())
{
    const QDir lcSet(QStringLiteral(CORVANE_TEST_DATA "/") + vsSet);
    for (const QString& lsFile : lcSet.entryList({QStringLiteral("Page*.DSW"), QStringLiteral("postcode.gps")}))
        QVERIFY(QFile::copy(lcSet.filePath(lsFile), rcApp.Home() + lsFile));
    if (!vcTable.isEmpty())
        WriteAll(rcApp.Home() + QStringLiteral("postcode.gps"), vcTable);
    rcApp.app->Init();
    const QList<QByteArray> lcNumbers = ReadAll(lcSet.filePath(QStringLiteral("geometry.txt"))).simplified().split(' ');
    QCOMPARE(lcNumbers.size(), 3);
    clsFlashMemInfo lcInfo;
    lcInfo.SetFirstPage(lcNumbers[0].toInt());
    lcInfo.SetLastPage(lcNumbers[1].toInt());
    lcInfo.SetSizeOnePage(lcNumbers[2].toInt());
    clsError lcError;
    rcApp.app->DecodeAndProcess(lcError, lcInfo);
    QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
}

QByteArray Export(TestApp& rcApp, const QString& vsFormat)
{
    const QString lsFile = rcApp.Home() + QStringLiteral("export.") + vsFormat;
    clsError lcError;
    rcApp.app->ExportToFile(lcError, lsFile, vsFormat);
    if (lcError.IsError())
        qWarning("%s", qPrintable(lcError.Description()));
    return ReadAll(lsFile);
}

// The golden lines (tab-separated, route last) of the records the default selection shows.
Rows ShownGoldenRows(TestApp& rcApp, const QString& vsSet)
{
    const QStringList lcLines = QString::fromUtf8(ReadAll(QStringLiteral(CORVANE_TEST_DATA "/") + vsSet
                                                          + QStringLiteral("/expected.txt")))
                                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    Rows lcRows;
    for (int i = 1; i <= rcApp.app->Records().Count(); ++i)
        if (rcApp.app->Selection().Admits(rcApp.app->Records().Item(i)))
            lcRows << lcLines[i - 1].split(QLatin1Char('\t'));
    return lcRows;
}

// RFC 4180: fields split by commas, records by CR LF, a quoted field may hold
// both and doubles its quotes.
Rows ParseCsv(const QString& vsText)
{
    Rows lcRows;
    QStringList lcRow;
    QString lsField;
    bool lbQuoted = false;
    for (int i = 0; i < vsText.size(); ++i) {
        const QChar c = vsText[i];
        if (lbQuoted) {
            if (c == QLatin1Char('"') && i + 1 < vsText.size() && vsText[i + 1] == QLatin1Char('"'))
                lsField += vsText[++i];
            else if (c == QLatin1Char('"'))
                lbQuoted = false;
            else
                lsField += c;
        } else if (c == QLatin1Char('"')) {
            lbQuoted = true;
        } else if (c == QLatin1Char(',')) {
            lcRow << lsField;
            lsField.clear();
        } else if (c == QLatin1Char('\r') && i + 1 < vsText.size() && vsText[i + 1] == QLatin1Char('\n')) {
            lcRow << lsField;
            lcRows << lcRow;
            lcRow.clear();
            lsField.clear();
            ++i;
        } else {
            lsField += c;
        }
    }
    return lcRows;
}

struct clsXmlElement {
    QString Name;
    QXmlStreamAttributes Attributes;
    QString Text;
    QList<clsXmlElement> Children;

    QList<clsXmlElement> All(const QString& vsName) const
    {
        QList<clsXmlElement> lcFound;
        for (const clsXmlElement& lcChild : Children)
            if (lcChild.Name == vsName)
                lcFound << lcChild;
        return lcFound;
    }
    QString Child(const QString& vsName) const
    {
        const QList<clsXmlElement> lcFound = All(vsName);
        return lcFound.isEmpty() ? QString() : lcFound.first().Text;
    }
};

// The document as a tree; the namespace URI of the root goes into rsNamespace.
clsXmlElement ParseXml(const QByteArray& vcXml, QString& rsNamespace)
{
    QXmlStreamReader lcReader(vcXml);
    QList<clsXmlElement> lcOpen{clsXmlElement()};
    while (!lcReader.atEnd()) {
        switch (lcReader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (lcOpen.size() == 1)
                rsNamespace = lcReader.namespaceUri().toString();
            lcOpen << clsXmlElement{lcReader.name().toString(), lcReader.attributes(), QString(), {}};
            break;
        case QXmlStreamReader::Characters:
            lcOpen.last().Text += lcReader.text();
            break;
        case QXmlStreamReader::EndElement: {
            clsXmlElement lcDone = lcOpen.takeLast();
            lcDone.Text = lcDone.Text.trimmed();
            lcOpen.last().Children << lcDone;
            break;
        }
        default:
            break;
        }
    }
    if (lcReader.hasError())
        qWarning("XML: %s", qPrintable(lcReader.errorString()));
    return lcOpen.first().Children.value(0);
}

QByteArray Unzip(const QString& vsZip, const QString& vsMember)
{
    QProcess lcUnzip;
    lcUnzip.start(QStringLiteral("unzip"), {"-p", vsZip, vsMember});
    lcUnzip.waitForFinished();
    return lcUnzip.readAllStandardOutput();
}

// The cells of the first sheet by reference ("C2"): value, or the shared string, and whether it is a number.
struct clsCell {
    QString Value;
    bool IsNumber = false;
    int Style = 0;
};
QMap<QString, clsCell> SheetCells(const QString& vsBook, clsXmlElement& rcSheet)
{
    QString lsNamespace;
    QStringList lcShared;
    for (const clsXmlElement& lcItem : ParseXml(Unzip(vsBook, "xl/sharedStrings.xml"), lsNamespace).Children)
        lcShared << lcItem.Child(QStringLiteral("t"));
    rcSheet = ParseXml(Unzip(vsBook, "xl/worksheets/sheet1.xml"), lsNamespace);
    QMap<QString, clsCell> lcCells;
    for (const clsXmlElement& lcData : rcSheet.All(QStringLiteral("sheetData")))
        for (const clsXmlElement& lcRow : lcData.Children)
            for (const clsXmlElement& lcCell : lcRow.Children) {
                const bool lbShared = lcCell.Attributes.value(QStringLiteral("t")) == QLatin1String("s");
                const QString lsValue = lcCell.Child(QStringLiteral("v"));
                lcCells[lcCell.Attributes.value(QStringLiteral("r")).toString()]
                    = {lbShared ? lcShared.value(lsValue.toInt()) : lsValue, !lbShared,
                       lcCell.Attributes.value(QStringLiteral("s")).toInt()};
            }
    return lcCells;
}

// The place table of the hand-built set with a comma and quotes in one name.
QByteArray TableWithAwkwardName()
{
    QByteArray lcTable = ReadAll(QStringLiteral(CORVANE_TEST_DATA "/pipeline-handbuilt/postcode.gps"));
    lcTable.replace("2801 Gouda", "2801 Gouda \"Kaas\", ZH");
    return lcTable;
}
}

class tst_ExportFormats : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void csvHoldsTheShownRows_data();
    void csvHoldsTheShownRows();
    void xlsxCellsAreTyped();
    void gpxTracksAndWaypoints();
    void kmlTracksAndEvents();
    void emptySelectionGivesEmptyDocuments_data();
    void emptySelectionGivesEmptyDocuments();
    void pdfMileageRegister();
    void failedExportKeepsTheEarlierFile_data();
    void failedExportKeepsTheEarlierFile();
    void formatByExtension_data();
    void formatByExtension();
};

// Times leave as UTC: the display's clock is taken as Dutch local time.
void tst_ExportFormats::initTestCase()
{
    qputenv("TZ", "Europe/Amsterdam");
    tzset();
}

void tst_ExportFormats::csvHoldsTheShownRows_data()
{
    QTest::addColumn<QString>("set");
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QString>("quotedPlace");
    QTest::newRow("hand-built, Liège in Windows-1252") << "pipeline-handbuilt" << QByteArray() << QString();
    QTest::newRow("generated") << "pipeline-generated" << QByteArray() << QString();
    QTest::newRow("page gaps") << "pipeline-gaps" << QByteArray() << QString();
    QTest::newRow("place with a comma and quotes")
        << "pipeline-handbuilt" << TableWithAwkwardName() << QStringLiteral("2801 Gouda \"Kaas\", ZH");
}

void tst_ExportFormats::csvHoldsTheShownRows()
{
    QFETCH(QString, set);
    QFETCH(QByteArray, table);
    QFETCH(QString, quotedPlace);
    TestApp a(nullptr, false);
    LoadSet(a, set, table);
    const QByteArray lcFile = Export(a, QStringLiteral("csv"));
    QVERIFY2(lcFile.startsWith("\xEF\xBB\xBF"), "UTF-8 byte-order mark");
    const Rows lcRows = ParseCsv(QString::fromUtf8(lcFile.mid(3)));
    QVERIFY(!lcRows.isEmpty());
    QCOMPARE(lcRows.first(), clsHalvexRecord::GetHeaderStringWithDelimiter(QStringLiteral("\t")).split('\t'));
    Rows lcExpected = ShownGoldenRows(a, set);
    if (!quotedPlace.isEmpty())
        for (QStringList& lcRow : lcExpected)
            lcRow.replaceInStrings(QStringLiteral("2801 Gouda"), quotedPlace);
    QCOMPARE(lcRows.mid(1), lcExpected);
}

void tst_ExportFormats::xlsxCellsAreTyped()
{
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-handbuilt"));
    Export(a, QStringLiteral("xlsx"));
    clsXmlElement lcSheet;
    const QMap<QString, clsCell> lcCells = SheetCells(a.Home() + QStringLiteral("export.xlsx"), lcSheet);
    // Row 2 is the first trip: 5-3-2007 07:05:40 to 08:30:00, 01:24:20, 1000 to 1050 km, Utrecht.
    QCOMPARE(lcCells.value("A1").Value, QStringLiteral("#"));
    QCOMPARE(lcCells.value("U1").Value, QStringLiteral("Route"));
    const qint64 llSerial = QDate(1899, 12, 30).daysTo(QDate(2007, 3, 5));
    QCOMPARE(lcCells.value("C2").Value.toDouble(), double(llSerial));
    QVERIFY(lcCells.value("C2").IsNumber && lcCells.value("C2").Style > 0);
    QCOMPARE(lcCells.value("D2").Value.toDouble(), (7 * 3600 + 5 * 60 + 40) / 86400.0);
    QCOMPARE(lcCells.value("F2").Value.toDouble(), (1 * 3600 + 24 * 60 + 20) / 86400.0);
    QVERIFY(lcCells.value("F2").Style != lcCells.value("D2").Style);
    QVERIFY(lcCells.value("I2").IsNumber);
    QCOMPARE(lcCells.value("I2").Value, QStringLiteral("50"));
    QCOMPARE(lcCells.value("J2").Value, QStringLiteral("3511 Utrecht"));
    QVERIFY(!lcCells.value("J2").IsNumber);
    // A trip without a fix keeps its "unknown" date as text, not as a broken date.
    bool lbUnknownDate = false;
    for (auto it = lcCells.cbegin(); it != lcCells.cend(); ++it)
        lbUnknownDate |= it.key().startsWith('C') && it->Value == QLatin1String("unknown") && !it->IsNumber;
    QVERIFY(lbUnknownDate);
    QVERIFY(lcCells.contains("A15") && !lcCells.contains("A16"));
    QCOMPARE(lcSheet.All("autoFilter").value(0).Attributes.value("ref").toString(), QStringLiteral("A1:U15"));
    const clsXmlElement lcPane = lcSheet.All("sheetViews").value(0).Children.value(0).All("pane").value(0);
    QCOMPARE(lcPane.Attributes.value("state").toString(), QStringLiteral("frozen"));
    QCOMPARE(lcPane.Attributes.value("ySplit").toString(), QStringLiteral("1"));
    QCOMPARE(lcSheet.All("cols").value(0).Children.size(), 21);
}

void tst_ExportFormats::gpxTracksAndWaypoints()
{
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-handbuilt"));
    QString lsNamespace;
    const clsXmlElement lcGpx = ParseXml(Export(a, QStringLiteral("gpx")), lsNamespace);
    QCOMPARE(lsNamespace, QStringLiteral("http://www.topografix.com/GPX/1/1"));
    QCOMPARE(lcGpx.Name, QStringLiteral("gpx"));
    QCOMPARE(lcGpx.Attributes.value("version").toString(), QStringLiteral("1.1"));
    QVERIFY(!lcGpx.Attributes.value("creator").isEmpty());

    const QList<clsXmlElement> lcTracks = lcGpx.All("trk");
    // Six of the seven trips have a fix; the one without is left out.
    QCOMPARE(lcTracks.size(), 6);
    for (const clsXmlElement& lcTrack : lcTracks)
        for (const clsXmlElement& lcPoint : lcTrack.All("trkseg").value(0).All("trkpt")) {
            QVERIFY(qAbs(lcPoint.Attributes.value("lat").toDouble()) <= 90.0);
            QVERIFY(qAbs(lcPoint.Attributes.value("lon").toDouble()) <= 180.0);
        }
    // Trip 2 runs from Utrecht through the Amersfoort points and the unnamed one to Gouda, in UTC (CET - 1 h).
    const QList<clsXmlElement> lcWay = lcTracks[1].All("trkseg").value(0).All("trkpt");
    QCOMPARE(lcWay.size(), 5);
    QCOMPARE(lcWay.first().Child("time"), QStringLiteral("2007-03-05T08:00:00Z"));
    QCOMPARE(lcWay[1].Child("time"), QStringLiteral("2007-03-05T07:45:00Z"));
    QCOMPARE(lcWay.last().Child("time"), QStringLiteral("2007-03-05T08:45:10Z"));
    QCOMPARE(lcWay.last().Attributes.value("lat").toString(), QStringLiteral("52.0166700"));
    QCOMPARE(lcWay.last().Attributes.value("lon").toString(), QStringLiteral("4.7083300"));
    // The trip past midnight stops on the next day.
    const QList<clsXmlElement> lcNight = lcTracks[2].All("trkseg").value(0).All("trkpt");
    QCOMPARE(lcNight.first().Child("time"), QStringLiteral("2007-03-06T22:50:00Z"));
    QCOMPARE(lcNight.last().Child("time"), QStringLiteral("2007-03-06T23:10:00Z"));
    QVERIFY(lcTracks[2].Child("name").contains(QStringLiteral("4000 Liège")));

    QStringList lcNames;
    for (const clsXmlElement& lcWaypoint : lcGpx.All("wpt"))
        lcNames << lcWaypoint.Child("name");
    QCOMPARE(lcNames, QStringList({"PoliceCheck", "SpotAlarm", "Traject Contol", "tankstop", "PoliceCheck", "PoliceCheck"}));
    QVERIFY(lcGpx.All("wpt").first().Child("desc").contains(QStringLiteral("Speed: ")));
    QCOMPARE(a.window.LastStatus(), QStringLiteral("2 record(s) without a position left out"));
}

void tst_ExportFormats::kmlTracksAndEvents()
{
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-handbuilt"));
    QString lsNamespace;
    const clsXmlElement lcKml = ParseXml(Export(a, QStringLiteral("kml")), lsNamespace);
    QCOMPARE(lsNamespace, QStringLiteral("http://www.opengis.net/kml/2.2"));
    const QList<clsXmlElement> lcFolders = lcKml.All("Document").value(0).All("Folder");
    QCOMPARE(lcFolders.size(), 2);
    const QList<clsXmlElement> lcTrips = lcFolders[0].All("Placemark");
    QCOMPARE(lcTrips.size(), 6);
    const clsXmlElement lcSecond = lcTrips[1];
    QCOMPARE(lcSecond.All("TimeSpan").value(0).Child("begin"), QStringLiteral("2007-03-05T08:00:00Z"));
    const QStringList lcCoordinates = lcSecond.All("LineString").value(0).Child("coordinates").split(' ');
    QCOMPARE(lcCoordinates.size(), 5);
    // Longitude first.
    QCOMPARE(lcCoordinates.last(), QStringLiteral("4.7083300,52.0166700"));
    const QList<clsXmlElement> lcEvents = lcFolders[1].All("Placemark");
    QCOMPARE(lcEvents.size(), 6);
    for (const clsXmlElement& lcEvent : lcEvents) {
        QVERIFY(!lcEvent.Child("name").isEmpty());
        QCOMPARE(lcEvent.All("Point").value(0).Child("coordinates").split(',').size(), 2);
    }
}

void tst_ExportFormats::emptySelectionGivesEmptyDocuments_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("mustHave");
    QTest::addColumn<QByteArray>("mustNotHave");
    QTest::newRow("csv: only the header") << "csv" << QByteArray("#,Ritnumber,Date") << QByteArray("\r\n1,");
    QTest::newRow("gpx: no track, no waypoint") << "gpx" << QByteArray("</metadata>") << QByteArray("<trk");
    QTest::newRow("gpx: no waypoint") << "gpx" << QByteArray("<gpx") << QByteArray("<wpt");
    QTest::newRow("kml: empty folders") << "kml" << QByteArray("<Folder>") << QByteArray("<Placemark");
}

void tst_ExportFormats::emptySelectionGivesEmptyDocuments()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, mustHave);
    QFETCH(QByteArray, mustNotHave);
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-generated"));
    a.app->Selection() = clsRecordSelection{false, false, false, false, false, false, false};
    const QByteArray lcFile = Export(a, format);
    QVERIFY(lcFile.contains(mustHave));
    QVERIFY(!lcFile.contains(mustNotHave));
}

void tst_ExportFormats::pdfMileageRegister()
{
    if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
        QSKIP("pdftotext is not installed");
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-handbuilt"));
    a.app->SetDisplayId(QStringLiteral("12.0.34.5.6.7.8.9"));
    a.app->SetRecordsTaken(QDateTime(QDate(2007, 3, 8), QTime(9, 15)));
    QVERIFY(Export(a, QStringLiteral("pdf")).startsWith("%PDF"));
    QProcess lcReader;
    lcReader.start(QStringLiteral("pdftotext"), {"-layout", a.Home() + QStringLiteral("export.pdf"), "-"});
    QVERIFY(lcReader.waitForFinished());
    const QString lsText = QString::fromUtf8(lcReader.readAllStandardOutput()).simplified();
    for (const char* lsExpected :
         {"Mileage register", "KVT Memory Display: 12.0.34.5.6.7.8.9", "Downloaded: 8-3-2007 09:15",
          "5-3-2007 07:05:40 08:30:00 3511 Utrecht 3511 Utrecht 1000 1050 50",
          "6-3-2007 23:50:00 00:10:00 2801 Gouda 4000 Liège 1100 1125 25", "Total 5-3-2007 100",
          "Total 6-3-2007 50", "Total 7-3-2007 30000", "Total March 2007 30150", "All trips 30150", "Page 1 of 1"})
        QVERIFY2(lsText.contains(QString::fromUtf8(lsExpected)), lsExpected);
    // Alarms and tank stops are no trips.
    QVERIFY(!lsText.contains(QStringLiteral("tankstop")));
}

void tst_ExportFormats::failedExportKeepsTheEarlierFile_data()
{
    QTest::addColumn<QString>("format");
    for (const char* lsFormat : {"txt", "csv", "xlsx", "gpx", "kml", "pdf"})
        QTest::newRow(lsFormat) << lsFormat;
}

// A full disk half-way through: the earlier export stays whole and the error names the file.
void tst_ExportFormats::failedExportKeepsTheEarlierFile()
{
    QFETCH(QString, format);
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-generated"));
    const QString lsTarget = a.Home() + QStringLiteral("trips.") + format;
    WriteAll(lsTarget, "earlier export");
    clsError lcError;
    {
        rlimit lcSaved{};
        getrlimit(RLIMIT_FSIZE, &lcSaved);
        const auto lOldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit lcLimit = lcSaved;
        lcLimit.rlim_cur = 200;
        setrlimit(RLIMIT_FSIZE, &lcLimit);
        a.app->ExportToFile(lcError, lsTarget, format);
        setrlimit(RLIMIT_FSIZE, &lcSaved);
        std::signal(SIGXFSZ, lOldHandler);
    }
    QVERIFY2(lcError.IsError(), ReadAll(lsTarget).left(300).constData());
    QVERIFY2(lcError.Description().contains(QStringLiteral("trips.") + format), qPrintable(lcError.Description()));
    QCOMPARE(ReadAll(lsTarget), QByteArray("earlier export"));
    QCOMPARE(QDir(a.Home()).entryList({QStringLiteral("trips.*")}, QDir::Files | QDir::Hidden).size(), 1);
}

void tst_ExportFormats::formatByExtension_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("upper-case extension") << "TRIPS.CSV" << QString() << QByteArray("\xEF\xBB\xBF#,");
    QTest::newRow("format given over the extension") << "trips.dat" << "gpx" << QByteArray("<?xml");
    QTest::newRow("txt stays tab-delimited") << "trips.txt" << QString() << QByteArray("1\t1\t5-3-2007\t");
    QTest::newRow("unknown extension: nothing written") << "trips.doc" << QString() << QByteArray();
}

void tst_ExportFormats::formatByExtension()
{
    QFETCH(QString, fileName);
    QFETCH(QString, format);
    QFETCH(QByteArray, start);
    TestApp a(nullptr, false);
    LoadSet(a, QStringLiteral("pipeline-handbuilt"));
    a.dialogs.fileNames.enqueue(a.Home() + fileName);
    clsError lcError;
    a.app->ExportAs(lcError, format);
    QCOMPARE(a.dialogs.dialogFilters.size(), 1);
    QVERIFY(a.dialogs.dialogFilters.first().contains(QStringLiteral("|*.kml|")));
    QCOMPARE(ReadAll(a.Home() + fileName).left(start.size()), start);
    QCOMPARE(lcError.IsError(), start.isEmpty());
    if (start.isEmpty())
        QVERIFY2(lcError.Description().contains(QStringLiteral(".csv")), qPrintable(lcError.Description()));
}

QTEST_MAIN(tst_ExportFormats)
#include "tst_exportformats.moc"
