// The page upload engine and the database and display-image uploads, against
// the simulated display on the virtual clock.

#include "support/GoldenData.h"
#include "support/SimRig.h"

#include "app/clsSettings.h"
#include "upload/clsMCUUpgrade.h"

#include <QTest>

namespace {
const QString kWriteFailed = QStringLiteral("Unable to write to diplay, aborting upload");
const QString kWriteFailedBox = QStringLiteral("Corvane Desktop: ") + kWriteFailed + QStringLiteral(" [OK Critical]");

// Bytes that differ from their neighbours and are never 0 or 0xFF.
QByteArray Pattern(int vlSize, int vlSeed = 0)
{
    QByteArray lcData;
    for (int i = 0; i < vlSize; ++i)
        lcData.append(char(1 + (i * 7 + vlSeed * 13) % 250));
    return lcData;
}

// The write requests as "page:address:count", and the data they carried.
QStringList Writes(const SimRig& r, QByteArray* rcData = nullptr)
{
    QStringList lcWrites;
    for (const clsSimDisplay::Request& lcRequest : r.display.Requests()) {
        const QByteArray& a = lcRequest.arguments;
        if (lcRequest.func != 0x33)
            continue;
        lcWrites << QStringLiteral("%1:%2:%3").arg(quint8(a[0])).arg(quint8(a[1]) * 256 + quint8(a[2])).arg(quint8(a[3]));
        if (rcData)
            *rcData += a.mid(4);
    }
    return lcWrites;
}

QString PutFile(SimRig& r, const QString& vsName, const QByteArray& vcData)
{
    WriteAll(r.t.Home() + vsName, vcData);
    return r.t.Home() + vsName;
}

// One file through the engine from rlPage on; rlPage becomes the next free page.
clsError Upload(SimRig& r, const QString& vsFile, qint32& rlPage, bool vbVerify = false)
{
    clsMCUUpgrade lcEngine(r.app());
    lcEngine.SetStatus(&r.app().Status());
    lcEngine.SetVerify(vbVerify);
    lcEngine.SetFilename(vsFile);
    clsError lcError;
    lcEngine.StartUpLoad(lcError, rlPage);
    return lcError;
}

// The display images' or the databases' upload of the files of the given
// settings indices, ticked, the others not. Each index has a file of vcSizes
// bytes (100 when ticked and not there), 0 none chosen, -1 chosen but not
// there; rcFiles gets the files written, by index.
clsError UploadTicked(SimRig& r, bool vbSoftware, const QList<int>& vcTicked, const QMap<int, int>& vcSizes = {},
                      QMap<int, QByteArray>* rcFiles = nullptr)
{
    QMap<int, QByteArray> lcFiles;
    for (const clsUpgradeFile::Row& lcRow : clsUpgradeFile::Table()) {
        r.app().UploadSelection().SetTicked(lcRow.Type, vcTicked.contains(lcRow.Index));
        const int llSize = vcSizes.value(lcRow.Index, vcTicked.contains(lcRow.Index) ? 100 : 0);
        const QString lsPath = r.t.Home() + QStringLiteral("file.") + QString::fromLatin1(lcRow.Id);
        if (llSize > 0)
            WriteAll(lsPath, lcFiles[lcRow.Index] = Pattern(llSize, lcRow.Index));
        if (llSize != 0)
            r.app().Settings().SetLastFilenames(lcRow.Index, lsPath);
    }
    if (rcFiles)
        *rcFiles = lcFiles;
    clsError lcError;
    vbSoftware ? r.app().HandleUploadKVT(lcError) : r.app().HandleUploadDatabases(lcError);
    return lcError;
}

// Appends the text to the list unless it repeats the last one.
void AddNew(QStringList& rcList, const QString& vsText)
{
    if (!vsText.isEmpty() && (rcList.isEmpty() || rcList.last() != vsText))
        rcList << vsText;
}

struct WriteCase { int firstPage, log2, maxData, size; QString writes; int nextPage; };
struct FailureCase { QString file, fault; int error; QString description, status; int writes; };
// sizes by settings index: one more than a multiple of 64, so the last byte is the lost one;
// 0 no file chosen, -1 not there
struct TickedCase { bool software; QList<int> ticked; QMap<int, int> sizes; int error; QList<int> sent; };
}
Q_DECLARE_METATYPE(WriteCase)
Q_DECLARE_METATYPE(FailureCase)
Q_DECLARE_METATYPE(TickedCase)

class tst_Upload : public QObject
{
    Q_OBJECT

private slots:
    // Messages never cross a page end, addresses restart on every page, and the
    // loop stops with one byte left; the status texts in order.
    void writeFrames_data()
    {
        QTest::addColumn<WriteCase>("c");
        for (const QStringList& f : DataTable(QStringLiteral("upload-writes.txt"), 7))
            QTest::newRow(qPrintable(f[0])) << WriteCase{f[1].toInt(), f[2].toInt(), f[3].toInt(), f[4].toInt(), f[5], f[6].toInt()};
    }
    void writeFrames()
    {
        QFETCH(WriteCase, c);
        SimRig r;
        r.display.SetGeometry(c.firstPage, c.firstPage + 20, c.log2, c.maxData);
        const QByteArray lcFile = Pattern(c.size);
        QStringList lcTexts, lcSmall;
        connect(&r.app().Status(), &clsStatus::StatusChanged, this, [&]() {
            AddNew(lcTexts, r.app().Status().StatusString());
            AddNew(lcSmall, r.app().Status().SmallStatusString());
        });
        qint32 llPage = c.firstPage + 1;
        clsError lcError = Upload(r, PutFile(r, QStringLiteral("db.ssl"), lcFile), llPage);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QByteArray lcSent;
        const QStringList lcWrites = Writes(r, &lcSent);
        if (c.writes != QLatin1String("*"))
            QCOMPARE(lcWrites, c.writes.split(QLatin1Char(' '), Qt::SkipEmptyParts));
        QCOMPARE(llPage, c.nextPage);
        QCOMPARE(lcSent, lcFile.left(lcSent.size()));
        QVERIFY(lcSent.size() >= c.size - 1);
        // the emptiness check only for start page 1
        QCOMPARE(r.Funcs().contains(0x38), c.firstPage == 0);
        QStringList lcExpected{"Getting ID from display", "Received ID from display", "Opening File", "Reading File",
                               "Closing File", "Uploading Information", "Upload Completed"};
        if (c.firstPage == 0)
            lcExpected.insert(5, QStringLiteral("check if display is empty"));
        QCOMPARE(lcTexts, lcExpected);
        QCOMPARE(lcSmall.first(), QStringLiteral("Page%1").arg(c.firstPage + 1));
        QCOMPARE(lcSmall.last(), QStringLiteral("Page%1").arg(c.nextPage - 1));
        QCOMPARE(r.app().Status().SmallStatusString(), QString());
        QVERIFY(!r.app().Status().BigProgressBarInfo().Visible());
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    void failures_data()
    {
        QTest::addColumn<FailureCase>("c");
        for (const QStringList& f : DataTable(QStringLiteral("upload-failures.txt"), 7))
            QTest::newRow(qPrintable(f[0])) << FailureCase{f[1], f[2], f[3].toInt(nullptr, 0), f[4], f[5], f[6].toInt()};
    }
    void failures()
    {
        QFETCH(FailureCase, c);
        SimRig r;
        r.display.SetGeometry(1, 9, 10, 240);
        r.Fault(c.fault);
        if (c.fault == QLatin1String("silent-from=1"))
            r.t.dialogs.answers << MsgResult::Cancel;
        const QMap<QString, QByteArray> lcContents{{"data", Pattern(3000)}, {"zeros", QByteArray(600, '\0')}, {"empty", {}}};
        QString lsFile = c.file == QLatin1String("-") ? QString() : r.t.Home() + QStringLiteral("not-there.ssl");
        if (lcContents.contains(c.file))
            lsFile = PutFile(r, QStringLiteral("db.ssl"), lcContents[c.file]);
        qint32 llPage = 2;
        clsError lcError = Upload(r, lsFile, llPage);
        QCOMPARE(lcError.Error(), c.error);
        QVERIFY2(lcError.Description().startsWith(c.description), qPrintable(lcError.Description()));
        QVERIFY2(r.app().Status().StatusString().startsWith(c.status), qPrintable(r.app().Status().StatusString()));
        QCOMPARE(Writes(r).size(), c.writes);
        const bool lbWriteFailed = c.status == kWriteFailed;
        QVERIFY(lbWriteFailed || llPage == 2);
        QVERIFY(!r.app().CommunicationIsRunning());
        QVERIFY(!r.app().Status().BigProgressBarInfo().Visible());
        QCOMPARE(r.t.dialogs.Shown(true).contains(kWriteFailedBox), lbWriteFailed);
        // a frame that cannot be built never reaches the line, not even in part
        for (const QByteArray& lcChunk : r.port.Written())
            QVERIFY(c.file != QLatin1String("zeros") || lcChunk.size() < 6 || quint8(lcChunk.at(5)) != 0x33);
    }

    // Only at start page 1, after the memory map and the ID, from FirstPage + 1
    // on, stopping at the first page with data.
    void displayNotEmpty_data()
    {
        QTest::addColumn<MsgResult>("answer");
        QTest::newRow("no: nothing written") << MsgResult::No;
        QTest::newRow("yes: erased, then written") << MsgResult::Yes;
    }
    void displayNotEmpty()
    {
        QFETCH(MsgResult, answer);
        const bool lbYes = answer == MsgResult::Yes;
        SimRig r;
        r.display.SetGeometry(0, 6, 8, 64);
        r.display.SetPage(0, QByteArray(10, 0x11));
        r.display.SetPage(3, QByteArray(10, 0x22));
        r.t.dialogs.answers << answer;
        qint32 llPage = 1;
        QCOMPARE(Upload(r, PutFile(r, QStringLiteral("db.ssl"), Pattern(300)), llPage).Error(), lbYes ? 0 : 0x20000002);
        QCOMPARE(r.t.dialogs.Shown(true).value(0),
                 QStringLiteral("Corvane Desktop: Display not empty do you whish to continue? [YesNo Question]"));
        QCOMPARE(r.Trace().section(QLatin1Char(' '), 0, 4), QStringLiteral("36 CE 38:01 38:02 38:03"));
        QCOMPARE(Writes(r).size(), lbYes ? 5 : 0);
        QCOMPARE(r.display.Page(3).left(12), lbYes ? QByteArray(12, char(0xFF)) : QByteArray(10, 0x22) + "\xFF\xFF");
        QCOMPARE(r.display.Page(2).left(44), lbYes ? Pattern(300).mid(256, 44) : QByteArray(44, char(0xFF)));
        // page FirstPage is never looked at, nor erased
        QCOMPARE(r.display.Page(0).left(10), QByteArray(10, 0x11));
    }

    // Written over data that was not erased, the flash holds a mix that the
    // read-back finds; on erased flash the read-back agrees.
    void verify_data()
    {
        QTest::addColumn<bool>("oldData");
        QTest::newRow("erased flash") << false;
        QTest::newRow("old data under the file") << true;
    }
    void verify()
    {
        QFETCH(bool, oldData);
        SimRig r;
        r.display.SetGeometry(2, 8, 8, 100);
        if (oldData)
            r.display.SetPage(4, QByteArray(256, char(0x0F)));
        const QString lsFile = PutFile(r, QStringLiteral("db.usl"), Pattern(700));
        qint32 llPage = 3;
        clsError lcError = Upload(r, lsFile, llPage, true);
        const quint8 lbyWritten = quint8(Pattern(700).at(256));
        QCOMPARE(lcError.Description(),
                 !oldData ? QStringLiteral("No error.")
                          : QStringLiteral("Verify failed: %1 differs from the display at page 4, offset 0 (byte 256 of "
                                           "the file: 0x%2 written, 0x%3 read back)")
                                .arg(lsFile, QString::number(lbyWritten, 16).toUpper(),
                                     QString::number(lbyWritten & 0x0F, 16).toUpper()));
        QCOMPARE(lcError.Error(), oldData ? 0x20000001 : 0);
        // the read-back stops at the first byte that differs
        QCOMPARE(r.Funcs().count(0x34), oldData ? 4 : 8);
    }

    // Ticked files are all checked before the first is sent, then follow one
    // another page after page.
    void uploadTicked_data()
    {
        QTest::addColumn<TickedCase>("c");
        QTest::newRow("SSL and UFL, no gap between")
            << TickedCase{false, {1, 4}, {{1, 961}, {2, 65}, {4, 257}}, 0, {1, 4}};
        QTest::newRow("only USL") << TickedCase{false, {3}, {{3, 513}}, 0, {3}};
        QTest::newRow("missing UFL: nothing sent") << TickedCase{false, {1, 4}, {{1, 961}, {4, -1}}, 0x2000000A, {}};
        QTest::newRow("no UFL chosen: nothing sent") << TickedCase{false, {1, 4}, {{1, 961}, {4, 0}}, 0x20000009, {}};
        QTest::newRow("images in the order CC, SA, SND")
            << TickedCase{true, {12, 10, 0}, {{0, 321}, {10, 577}, {12, 129}}, 0, {0, 10, 12}};
    }
    void uploadTicked()
    {
        QFETCH(TickedCase, c);
        SimRig r;
        r.display.SetGeometry(0, 20, 8, 64);
        QMap<int, QByteArray> lcFiles;
        const clsError lcError = UploadTicked(r, c.software, c.ticked, c.sizes, &lcFiles);
        QCOMPARE(lcError.Error(), c.error);
        if (c.error == 0x2000000A)
            QCOMPARE(lcError.Description(), QStringLiteral("Unable to find '%1file.UFL'").arg(r.t.Home()));
        QByteArray lcExpected;
        for (const int llIndex : c.sent) {
            const QByteArray lcFile = lcFiles[llIndex];
            lcExpected += lcFile.left(lcFile.size() - 1) + QByteArray(256 - (lcFile.size() - 1) % 256, char(0xFF));
        }
        QCOMPARE(r.display.Flash().mid(256, lcExpected.size() + 256).toHex(), (lcExpected + QByteArray(256, char(0xFF))).toHex());
        QCOMPARE(r.Funcs().mid(0, 3), (c.sent.isEmpty() ? QList<int>{0x0B, 0x0B} : QList<int>{0x0B, 0x0B, 0x36}));
    }

    // Once a file failed, later databases still reach the engine, which sends
    // nothing; later display images are skipped.
    void laterFilesAfterAFailure_data()
    {
        QTest::addColumn<bool>("software");
        QTest::addColumn<QString>("lastStatus");
        QTest::newRow("databases") << false << "Stopping upload, Invalid ID";
        QTest::newRow("display images") << true << kWriteFailed;
    }
    void laterFilesAfterAFailure()
    {
        QFETCH(bool, software);
        QFETCH(QString, lastStatus);
        SimRig r;
        r.display.SetGeometry(0, 20, 8, 64);
        r.Fault(QStringLiteral("only-func=0x33,drop-next=1"));
        QCOMPARE(UploadTicked(r, software, software ? QList<int>{0, 10, 12} : QList<int>{1, 2, 3, 4}).Error(), 0x20000001);
        QCOMPARE(Writes(r).size(), 1);
        QCOMPARE(r.app().Status().StatusString(), lastStatus);
        QCOMPARE(r.t.dialogs.Shown(true), QStringList{kWriteFailedBox});
    }

    // The cable pulled at each phase of a two-file upload: a clear error within
    // the documented waits (six seconds of retries, or one second for a write),
    // and the files on the PC untouched.
    void cablePulled_data()
    {
        QTest::addColumn<int>("silentFrom"); // request number
        QTest::addColumn<int>("error");
        QTest::addColumn<quint32>("waitMs");
        QTest::newRow("before the memory map") << 3 << 0x20000002 << 6000u;
        QTest::newRow("during the emptiness check") << 9 << 0x20000002 << 6000u;
        QTest::newRow("mid-page") << 19 << 0x20000001 << 1000u;
        QTest::newRow("between files") << 23 << 0x20000002 << 6000u;
    }
    void cablePulled()
    {
        QFETCH(int, silentFrom);
        QFETCH(int, error);
        QFETCH(quint32, waitMs);
        SimRig r;
        r.display.SetGeometry(0, 12, 8, 64);
        r.display.Faults().SilentFromRequest = silentFrom;
        r.t.dialogs.answers << MsgResult::Cancel;
        QMap<int, QByteArray> lcFiles;
        QCOMPARE(UploadTicked(r, false, {1, 2}, {{1, 300}, {2, 200}}, &lcFiles).Error(), error);
        QCOMPARE(r.display.Stats().requests - r.display.Stats().silent, silentFrom - 1);
        // the whole run, the waits for the silent display included
        QVERIFY2(r.clock->timeGetTime() < waitMs + 1000, qPrintable(QString::number(r.clock->timeGetTime())));
        for (const int llIndex : {1, 2})
            QCOMPARE(ReadAll(r.app().Settings().LastFilenames(qint16(llIndex))), lcFiles[llIndex]);
        QVERIFY(!r.app().CommunicationIsRunning());
    }
};

QTEST_GUILESS_MAIN(tst_Upload)
#include "tst_upload.moc"
