// The tab-delimited export and the save dialogue around it: which records
// reach the file, the exact line layout, the replace question, and that a
// save that fails never costs the user an earlier export.

#include "TestFiles.h"
#include "support/TestApp.h"
#include "app/clsSettings.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "export/clsExcel.h"
#include "export/clsTabDelimited.h"
#include "platform/Err.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <csignal>
#include <sys/resource.h>

namespace {
// A record straight from its 24 bytes: no GPS fix (so no place lookup), the
// given type in byte 17, a km counter and tank receipt number where the type has one.
clsHalvexRecord MakeRecord(quint8 vbyType, qint32 vlNumber, const QString& vsRoute = QString())
{
    clsHalvexRecord::Bytes lcBytes{};
    lcBytes[0] = 0x20;
    lcBytes[1] = 0x40; // 08:01:00
    lcBytes[2] = 0x00;
    lcBytes[3] = 0x48; // 09:00:00
    lcBytes[14] = 2;
    lcBytes[16] = 87;
    lcBytes[17] = vbyType;
    lcBytes[18] = 0x39;
    lcBytes[19] = 0x30; // 12345 km
    lcBytes[22] = 7;
    clsHalvexRecord lcRecord;
    lcRecord.DeCodeData(lcBytes);
    lcRecord.SetRecordNumber(vlNumber);
    lcRecord.SetRoute(vsRoute);
    return lcRecord;
}

// Lowers the largest file this process may write, so that a save fails half-way as on a full disk.
class clsFileSizeLimit
{
public:
    explicit clsFileSizeLimit(rlim_t vlBytes)
    {
        getrlimit(RLIMIT_FSIZE, &mcSaved);
        mOldHandler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit lcLimit = mcSaved;
        lcLimit.rlim_cur = vlBytes;
        setrlimit(RLIMIT_FSIZE, &lcLimit);
    }
    ~clsFileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &mcSaved);
        std::signal(SIGXFSZ, mOldHandler);
    }

private:
    rlimit mcSaved{};
    void (*mOldHandler)(int);
};
}

class tst_Export : public QObject
{
    Q_OBJECT
private slots:
    void writesOnlyValidRecordsOfTheSavedKinds();
    void lineLayout();
    void emptyCollectionTouchesNoFile();
    void replaceQuestion_data();
    void replaceQuestion();
    void failedSaveKeepsEarlierFile_data();
    void failedSaveKeepsEarlierFile();
    void openDialogStartsInTheLastDirectory_data();
    void openDialogStartsInTheLastDirectory();
    void spreadsheetPlaceholder();
};

// Trips, both alarm kinds, traject control and tank stops go to the file, in
// collection order; route points, km corrections, unknown kinds and empty slots never do.
void tst_Export::writesOnlyValidRecordsOfTheSavedKinds()
{
    TestApp t;
    const quint8 lcTypes[] = {6, 2, 3, 8, 4, 255, 5, 9, 7};
    for (int i = 0; i < int(sizeof lcTypes); ++i)
        t.app->Records().Add(MakeRecord(lcTypes[i], i + 1));
    const QString lsFile = t.Home() + QStringLiteral("trips.txt");
    t.dialogs.fileNames.enqueue(lsFile);
    t.app->SetDataSaved(false);
    clsError lcError;
    t.app->SaveToDisk(lcError);
    QVERIFY(!lcError.IsError());

    QStringList lcNumbers;
    for (const QByteArray& lcLine : ReadAll(lsFile).split('\n'))
        if (!lcLine.isEmpty())
            lcNumbers << QString::fromLatin1(lcLine.left(lcLine.indexOf('\t')));
    QCOMPARE(lcNumbers, QStringList({"2", "3", "5", "7", "9"}));
    QVERIFY(t.app->DataSaved());
    QCOMPARE(t.app->Settings().LastTXTFilename(), lsFile);
    QCOMPARE(t.dialogs.dialogFilters, QStringList{QStringLiteral("Text file (tab delimited)(*.txt)|*.txt")});
}

// 21 fields: each of the 20 columns followed by a tab, then the route; CR LF;
// Windows-1252. With no route the line ends in a tab.
void tst_Export::lineLayout()
{
    TestApp t;
    t.app->Records().Add(MakeRecord(2, 1));
    t.app->Records().Add(MakeRecord(7, 2, QStringLiteral("Liège — Maastricht")));
    const QString lsFile = t.Home() + QStringLiteral("trips.txt");
    t.dialogs.fileNames.enqueue(lsFile);
    clsError lcError;
    t.app->SaveToDisk(lcError);

    const QList<QByteArray> lcLines = ReadAll(lsFile).split('\n');
    QCOMPARE(lcLines.size(), 3);
    QVERIFY(lcLines[2].isEmpty());
    QCOMPARE(lcLines[0].count('\t'), 20);
    QVERIFY(lcLines[0].endsWith("\t\r"));
    QCOMPARE(lcLines[0].count('\r'), 1);
    QCOMPARE(lcLines[1].count('\t'), 20);
    QVERIFY2(lcLines[1].endsWith("\tLi\xE8ge \x97 Maastricht\r"), lcLines[1].constData());
    QCOMPARE(t.app->Records().Item(1).GetFullStringWithDelimiterToFile(QStringLiteral("\t")).toLatin1() + "\r",
             lcLines[0]);
    QCOMPARE(t.window.LastStatus(), QStringLiteral("Save to file"));
    QVERIFY(!t.app->Status().BigProgressBarInfo().Visible());
}

// Nothing to write: no file is made, an existing one is left alone, yet the data counts as saved.
void tst_Export::emptyCollectionTouchesNoFile()
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

void tst_Export::replaceQuestion_data()
{
    QTest::addColumn<bool>("cancelDialog");
    QTest::addColumn<MsgResult>("answer");
    QTest::addColumn<bool>("replaced");
    QTest::newRow("yes replaces") << false << MsgResult::Yes << true;
    QTest::newRow("no keeps the file and the last name") << false << MsgResult::No << false;
    QTest::newRow("cancelled dialog asks nothing") << true << MsgResult::OK << false;
}

void tst_Export::replaceQuestion()
{
    QFETCH(bool, cancelDialog);
    QFETCH(MsgResult, answer);
    QFETCH(bool, replaced);
    TestApp t;
    t.app->Settings().SetLastTXTFilename(QStringLiteral("before.txt"));
    t.app->Records().Add(MakeRecord(2, 1));
    t.app->SetDataSaved(false);
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
    QCOMPARE(t.dialogs.boxes.size(), cancelDialog ? 0 : 1);
    if (!cancelDialog) {
        QCOMPARE(t.dialogs.boxes[0].text, lsFile + QStringLiteral(" already exists.\r\nDo you want to replace it?"));
        QCOMPARE(t.dialogs.boxes[0].title, QStringLiteral("(Save As) Corvane Desktop"));
        QCOMPARE(t.dialogs.boxes[0].buttons, MsgButtons::YesNo);
    }
    QCOMPARE(ReadAll(lsFile) != QByteArray("earlier export\r\n"), replaced);
    QCOMPARE(t.app->DataSaved(), replaced);
    QCOMPARE(t.app->Settings().LastTXTFilename(), replaced ? lsFile : QStringLiteral("before.txt"));
}

// A failed save is an error value naming the file; the earlier export, if
// any, is untouched, no half-written file is left behind, and the data does
// not count as saved.
void tst_Export::failedSaveKeepsEarlierFile_data()
{
    QTest::addColumn<QString>("relativeName");
    QTest::addColumn<bool>("diskFull");
    QTest::addColumn<long>("number");
    QTest::newRow("directory missing") << "missing/trips.txt" << false << VbError::PathNotFound;
    QTest::newRow("disk full half-way") << "trips.txt" << true << 0L;
}

void tst_Export::failedSaveKeepsEarlierFile()
{
    QFETCH(QString, relativeName);
    QFETCH(bool, diskFull);
    QFETCH(long, number);
    TestApp t;
    for (int i = 1; i <= 200; ++i)
        t.app->Records().Add(MakeRecord(2, i));
    t.app->SetDataSaved(false);
    const QString lsFile = t.Home() + relativeName;
    if (diskFull)
        WriteAll(lsFile, "earlier export\r\n");
    t.dialogs.fileNames.enqueue(lsFile);
    t.dialogs.answers.enqueue(MsgResult::Yes);
    clsError lcError;
    {
        const clsFileSizeLimit lcLimit(diskFull ? 4096 : RLIM_INFINITY);
        t.app->SaveToDisk(lcError);
    }

    QVERIFY(lcError.IsError());
    QVERIFY(lcError.ISVBError());
    if (number != 0)
        QCOMPARE(long(lcError.Error()), number);
    QVERIFY2(lcError.Description().contains(QDir::toNativeSeparators(lsFile)), qPrintable(lcError.Description()));
    QVERIFY(!t.app->DataSaved());
    QVERIFY(!t.app->Status().BigProgressBarInfo().Visible());
    QCOMPARE(Err::Number(), 0L);
    if (diskFull)
        QCOMPARE(ReadAll(lsFile), QByteArray("earlier export\r\n"));
    const QStringList lcLeft = QDir(t.Home()).entryList({QStringLiteral("trips*")}, QDir::Files);
    QCOMPARE(lcLeft, diskFull ? QStringList{QStringLiteral("trips.txt")} : QStringList());
}

void tst_Export::openDialogStartsInTheLastDirectory_data()
{
    QTest::addColumn<QString>("lastFile");
    QTest::addColumn<bool>("inLastDirectory");
    QTest::newRow("existing directory") << "uploads/spots.ssl" << true;
    QTest::newRow("directory gone") << "gone/spots.ssl" << false;
    QTest::newRow("no last file") << "" << false;
}

void tst_Export::openDialogStartsInTheLastDirectory()
{
    QFETCH(QString, lastFile);
    QFETCH(bool, inLastDirectory);
    TestApp t;
    QDir(t.Home()).mkdir(QStringLiteral("uploads"));
    const QString lsLast = lastFile.isEmpty() ? QString() : t.Home() + lastFile;
    t.dialogs.fileNames.enqueue(QStringLiteral("chosen.txt"));
    clsTabDelimited lcTabDelimited;
    QCOMPARE(t.app->GetNewFileNameForDatafile(lcTabDelimited, lsLast), QStringLiteral("chosen.txt"));
    QCOMPARE(t.dialogs.dialogInitialNames, QStringList{QString()});
    QCOMPARE(t.dialogs.dialogInitDirs,
             QStringList{inLastDirectory ? t.Home() + QStringLiteral("uploads/") : t.app->StdDirectory()});
}

// Without Excel the spreadsheet type is unavailable, says so without leaving
// an error behind, is never offered a dialog, and writes nothing.
void tst_Export::spreadsheetPlaceholder()
{
    TestApp t;
    clsExcel lcExcel;
    Err::SetPending(clsRuntimeError(429));
    QVERIFY(!lcExcel.EditorIsAvailible());
    QCOMPARE(Err::Number(), 0L);
    t.dialogs.fileNames.enqueue(QStringLiteral("x.xls"));
    QCOMPARE(t.app->GetNewFileNameForDatafile(lcExcel, QString()), QString());
    QVERIFY(t.dialogs.dialogFilters.isEmpty());
    const QString lsFile = t.Home() + QStringLiteral("records.xls");
    t.app->Records().Add(MakeRecord(2, 1));
    QVERIFY(!lcExcel.SaveToFile(lsFile, t.app->Records()));
    QVERIFY(!QFile::exists(lsFile));
    QCOMPARE(lcExcel.GetIndex(), 8);
    QCOMPARE(lcExcel.GetIdString(), QStringLiteral("XLS"));
}

QTEST_GUILESS_MAIN(tst_Export)
#include "tst_export.moc"
