// Every export format made from the golden page-file sets and compared byte
// for byte with the files in tests/data/export (the spreadsheet by its sheet
// XML, the PDF by pdftotext's reading of it), the save dialogue around the
// tab-delimited file, and that a save that fails never costs the user an
// earlier export.

#include "GoldenData.h"
#include "app/clsSettings.h"
#include "data/clsRecordCollection.h"
#include "export/clsExcel.h"
#include "export/clsTabDelimited.h"
#include "platform/Err.h"

#include <QDir>
#include <QProcess>
#include <QtTest>
#include <csignal>
#include <ctime>
#include <sys/resource.h>

namespace {
const QString kGolden = QStringLiteral(CORVANE_TEST_DATA "/export/");

// What of an export the golden file holds: the sheet XML of a workbook (its
// zip and document dates vary), the text of a PDF, the program's version as @VERSION@.
QByteArray Comparable(const QString& vsFile, const QString& vsFormat)
{
    QProcess lcReader;
    if (vsFormat == QLatin1String("xlsx"))
        lcReader.start(QStringLiteral("unzip"), {"-p", vsFile, "xl/sharedStrings.xml", "xl/worksheets/sheet1.xml"});
    if (vsFormat == QLatin1String("pdf"))
        lcReader.start(QStringLiteral("pdftotext"), {"-layout", vsFile, "-"});
    QByteArray lcContent = lcReader.waitForFinished() ? lcReader.readAllStandardOutput() : ReadAll(vsFile);
    return lcContent.replace(clsApplication::VersionString().toUtf8(), "@VERSION@");
}

// Lowers the largest file this process may write, so that a save fails half-way as on a full disk.
struct FileSizeLimit {
    rlimit saved{};
    explicit FileSizeLimit(rlim_t vlBytes)
    {
        getrlimit(RLIMIT_FSIZE, &saved);
        const rlimit lcLimit{vlBytes, saved.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lcLimit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &saved); }
};

// A row of tests/data/export-cases.txt.
struct GoldenCase { QString set; bool awkwardPlace, nothingSelected; QString format, golden, status; };
}
Q_DECLARE_METATYPE(GoldenCase)

class tst_Export : public QObject
{
    Q_OBJECT

private slots:
    // Times leave as UTC: the display's clock is taken as Dutch local time. A
    // write beyond a FileSizeLimit fails instead of ending the test.
    void initTestCase()
    {
        qputenv("TZ", "Europe/Amsterdam");
        tzset();
        std::signal(SIGXFSZ, SIG_IGN);
    }

    void golden_data()
    {
        QTest::addColumn<GoldenCase>("c");
        for (const QStringList& f : DataTable(QStringLiteral("export-cases.txt"), 7))
            QTest::newRow(qPrintable(f[0])) << GoldenCase{f[1], f[2] == "awkward", f[3] == "none", f[4], f[5], f[6]};
    }
    void golden()
    {
        QFETCH(GoldenCase, c);
        TestApp a(nullptr, false);
        QByteArray lcTable;
        if (c.awkwardPlace)
            lcTable = ReadAll(QStringLiteral(CORVANE_TEST_DATA "/pipeline-handbuilt/postcode.gps"))
                          .replace("2801 Gouda", "2801 Gouda \"Kaas\", ZH \x97 \x80");
        LoadSet(a, c.set, lcTable);
        if (c.nothingSelected)
            a.app->Selection() = clsRecordSelection{false, false, false, false, false, false, false};
        a.app->SetDisplayId(QStringLiteral("12.0.34.5.6.7.8.9"));
        a.app->SetRecordsTaken(QDateTime(QDate(2007, 3, 8), QTime(9, 15)));
        const QString lsFile = a.Home() + QStringLiteral("export.") + c.format;
        clsError lcError;
        a.app->ExportToFile(lcError, lsFile, c.format);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QVERIFY(a.app->DataSaved());
        QFile lcGolden(kGolden + c.golden);
        // CORVANE_UPDATE_GOLDEN=1 rewrites the golden files after a deliberate change; review the diff.
        if (qEnvironmentVariableIsSet("CORVANE_UPDATE_GOLDEN"))
            QVERIFY(lcGolden.open(QIODevice::WriteOnly) && lcGolden.write(Comparable(lsFile, c.format)) > 0 && lcGolden.flush());
        QCOMPARE(Comparable(lsFile, c.format), ReadAll(kGolden + c.golden));
        if (!c.status.isEmpty())
            QCOMPARE(a.window.LastStatus(), c.status);
    }

    // Nothing to write: no file is made, an existing one is left alone, yet the data counts as saved.
    void emptyCollectionTouchesNoFile()
    {
        TestApp t;
        const QString lsFresh = t.Home() + QStringLiteral("fresh.txt");
        const QString lsEarlier = t.Home() + QStringLiteral("earlier.txt");
        WriteAll(lsEarlier, "earlier export\r\n");
        t.dialogs.fileNames << lsFresh << lsEarlier;
        t.dialogs.answers.enqueue(MsgResult::Yes);
        for (int i = 0; i < 2; ++i) {
            t.app->SetDataSaved(false);
            clsError lcError;
            t.app->SaveToDisk(lcError);
            QVERIFY(!lcError.IsError());
            QVERIFY(t.app->DataSaved());
        }
        QVERIFY(!QFile::exists(lsFresh));
        QCOMPARE(ReadAll(lsEarlier), QByteArray("earlier export\r\n"));
    }

    // Save asks before it replaces a file; the file written is the tab-delimited export.
    void saveQuestion_data()
    {
        QTest::addColumn<bool>("cancelDialog");
        QTest::addColumn<MsgResult>("answer");
        QTest::newRow("yes replaces") << false << MsgResult::Yes;
        QTest::newRow("no keeps the file and the last name") << false << MsgResult::No;
        QTest::newRow("cancelled dialog asks nothing") << true << MsgResult::OK;
    }
    void saveQuestion()
    {
        QFETCH(bool, cancelDialog);
        QFETCH(MsgResult, answer);
        const bool lbReplaced = answer == MsgResult::Yes;
        TestApp t(nullptr, false);
        LoadSet(t, QStringLiteral("pipeline-handbuilt"));
        t.app->Settings().SetLastTXTFilename(QStringLiteral("before.txt"));
        const QString lsFile = t.Home() + QStringLiteral("trips.txt");
        WriteAll(lsFile, "earlier export\r\n");
        if (!cancelDialog) {
            t.dialogs.fileNames.enqueue(lsFile);
            t.dialogs.answers.enqueue(answer);
        }
        clsError lcError;
        t.app->SaveToDisk(lcError);
        QVERIFY(!lcError.IsError());
        QCOMPARE(t.dialogs.dialogInitialNames, QStringList{QStringLiteral("before.txt")});
        QCOMPARE(t.dialogs.dialogFilters, QStringList{QStringLiteral("Text file (tab delimited)(*.txt)|*.txt")});
        QCOMPARE(t.dialogs.boxes.size(), cancelDialog ? 0 : 1);
        if (!cancelDialog) {
            QCOMPARE(t.dialogs.boxes[0].text, lsFile + QStringLiteral(" already exists.\r\nDo you want to replace it?"));
            QCOMPARE(t.dialogs.boxes[0].title, QStringLiteral("(Save As) Corvane Desktop"));
            QCOMPARE(t.dialogs.boxes[0].buttons, MsgButtons::YesNo);
        }
        QCOMPARE(ReadAll(lsFile), lbReplaced ? ReadAll(kGolden + QStringLiteral("handbuilt.txt")) : "earlier export\r\n");
        QCOMPARE(t.app->DataSaved(), lbReplaced);
        QCOMPARE(t.app->Settings().LastTXTFilename(), lbReplaced ? lsFile : QStringLiteral("before.txt"));
        if (lbReplaced)
            QCOMPARE(t.window.LastStatus(), QStringLiteral("Save to file"));
        QVERIFY(!t.app->Status().BigProgressBarInfo().Visible());
    }

    // A failed save is an error value naming the file; the earlier export, if
    // any, is untouched, no half-written file is left behind, and the data does
    // not count as saved. "save" is the Save button's tab-delimited file.
    void failedSaveKeepsTheEarlierFile_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("diskFull");
        QTest::newRow("save, directory missing") << "save" << "missing/trips.txt" << false;
        for (const char* lsFormat : {"save", "txt", "csv", "xlsx", "gpx", "kml", "pdf"})
            QTest::newRow(qPrintable(QStringLiteral("%1, disk full half-way").arg(lsFormat)))
                << lsFormat << QStringLiteral("trips.%1").arg(lsFormat) << true;
    }
    void failedSaveKeepsTheEarlierFile()
    {
        QFETCH(QString, format);
        QFETCH(QString, name);
        QFETCH(bool, diskFull);
        TestApp t(nullptr, false);
        LoadSet(t, QStringLiteral("pipeline-generated"));
        const QString lsTarget = t.Home() + name;
        if (diskFull)
            WriteAll(lsTarget, "earlier export");
        t.dialogs.fileNames.enqueue(lsTarget);
        t.dialogs.answers.enqueue(MsgResult::Yes);
        clsError lcError;
        {
            const FileSizeLimit lcLimit(diskFull ? 200 : RLIM_INFINITY);
            format == QLatin1String("save") ? t.app->SaveToDisk(lcError) : t.app->ExportToFile(lcError, lsTarget, format);
        }
        QVERIFY2(lcError.IsError() && lcError.ISVBError(), qPrintable(lcError.Description()));
        QVERIFY(diskFull || lcError.Error() == VbError::PathNotFound);
        QVERIFY2(lcError.Description().contains(QDir::toNativeSeparators(lsTarget)), qPrintable(lcError.Description()));
        QVERIFY(!t.app->DataSaved());
        QVERIFY(!t.app->Status().BigProgressBarInfo().Visible());
        QCOMPARE(Err::Number(), 0L);
        QCOMPARE(ReadAll(lsTarget), QByteArray(diskFull ? "earlier export" : ""));
        QCOMPARE(QDir(t.Home()).entryList({QStringLiteral("trips*")}, QDir::Files | QDir::Hidden).size(), diskFull ? 1 : 0);
    }

    // The format follows the extension unless given; the dialog offers every format.
    void formatByExtension_data()
    {
        QTest::addColumn<QString>("fileName");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("start");
        QTest::newRow("upper-case extension") << "TRIPS.CSV" << QString() << QByteArray("\xEF\xBB\xBF#,");
        QTest::newRow("format given over the extension") << "trips.dat" << "gpx" << QByteArray("<?xml");
        QTest::newRow("txt stays tab-delimited") << "trips.txt" << QString() << QByteArray("1\t1\t5-3-2007\t");
        QTest::newRow("unknown extension: nothing written") << "trips.doc" << QString() << QByteArray();
    }
    void formatByExtension()
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
        QVERIFY2(!start.isEmpty() || lcError.Description().contains(QStringLiteral(".csv")), qPrintable(lcError.Description()));
    }

    void exportAsWritesNothingUnasked_data()
    {
        QTest::addColumn<bool>("cancelled");
        QTest::newRow("dialog cancelled") << true;
        QTest::newRow("No to replacing a file") << false;
    }
    // Export As keeps the file the user declined to replace, and a cancelled dialog is no error.
    void exportAsWritesNothingUnasked()
    {
        QFETCH(bool, cancelled);
        TestApp a(nullptr, false);
        LoadSet(a, QStringLiteral("pipeline-handbuilt"));
        const QString lsFile = a.Home() + QStringLiteral("trips.csv");
        WriteAll(lsFile, "earlier export\r\n");
        if (!cancelled) {
            a.dialogs.fileNames.enqueue(lsFile);
            a.dialogs.answers.enqueue(MsgResult::No);
        }
        clsError lcError;
        a.app->ExportAs(lcError, QString());
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QCOMPARE(a.dialogs.boxes.size(), cancelled ? 0 : 1);
        QCOMPARE(ReadAll(lsFile), QByteArray("earlier export\r\n"));
        QVERIFY(!a.app->DataSaved());
    }

    void openDialogStartsInTheLastDirectory_data()
    {
        QTest::addColumn<QString>("lastFile");
        QTest::addColumn<bool>("inLastDirectory");
        QTest::newRow("existing directory") << "uploads/spots.ssl" << true;
        QTest::newRow("directory gone") << "gone/spots.ssl" << false;
        QTest::newRow("no last file") << "" << false;
    }
    void openDialogStartsInTheLastDirectory()
    {
        QFETCH(QString, lastFile);
        QFETCH(bool, inLastDirectory);
        TestApp t;
        QDir(t.Home()).mkdir(QStringLiteral("uploads"));
        t.dialogs.fileNames.enqueue(QStringLiteral("chosen.txt"));
        clsTabDelimited lcTabDelimited;
        QCOMPARE(t.app->GetNewFileNameForDatafile(lcTabDelimited, lastFile.isEmpty() ? QString() : t.Home() + lastFile),
                 QStringLiteral("chosen.txt"));
        QCOMPARE(t.dialogs.dialogInitialNames, QStringList{QString()});
        QCOMPARE(t.dialogs.dialogInitDirs, QStringList{inLastDirectory ? t.Home() + QStringLiteral("uploads/") : t.app->StdDirectory()});
    }

    // Without Excel the spreadsheet type is unavailable, says so without leaving
    // an error behind, is never offered a dialog, and writes nothing.
    void spreadsheetPlaceholder()
    {
        TestApp t(nullptr, false);
        LoadSet(t, QStringLiteral("pipeline-handbuilt"));
        clsExcel lcExcel;
        Err::SetPending(clsRuntimeError(429));
        QVERIFY(!lcExcel.EditorIsAvailible());
        QCOMPARE(Err::Number(), 0L);
        t.dialogs.fileNames.enqueue(QStringLiteral("x.xls"));
        QCOMPARE(t.app->GetNewFileNameForDatafile(lcExcel, QString()), QString());
        QVERIFY(t.dialogs.dialogFilters.isEmpty());
        const QString lsFile = t.Home() + QStringLiteral("records.xls");
        QVERIFY(!lcExcel.SaveToFile(lsFile, t.app->Records()));
        QVERIFY(!QFile::exists(lsFile));
        QCOMPARE(lcExcel.GetIndex(), 8);
        QCOMPARE(lcExcel.GetIdString(), QStringLiteral("XLS"));
    }
};

QTEST_MAIN(tst_Export)
#include "tst_export.moc"
