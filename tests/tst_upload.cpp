// The page upload engine and the database and display-image uploads, against
// the simulated display on the virtual clock, and seeded uploads to a display
// that drops, garbles and delays its answers.

#include "support/GoldenData.h"
#include "support/SimRig.h"
#include "support/TestFiles.h"

#include "app/clsSettings.h"
#include "upload/clsMCUUpgrade.h"

#include <QTest>
#include <random>

namespace {
const QString kWriteFailed = QStringLiteral("Unable to write to diplay, aborting upload");

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

QStringList BoxTexts(const SimRig& r)
{
    QStringList lcTexts;
    for (const FakeUserDialogs::Box& lcBox : r.t.dialogs.boxes)
        lcTexts << lcBox.text;
    return lcTexts;
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

// The files of the given settings indices ticked and chosen, each vlSize bytes.
void Tick(SimRig& r, const QList<UploadType>& vcTypes, int vlSize = 100)
{
    for (const UploadType lType : vcTypes) {
        const QString lsPath = PutFile(r, QStringLiteral("f%1").arg(int(lType)), Pattern(vlSize, int(lType)));
        r.app().Settings().SetLastFilenames(clsUpgradeFile::Of(lType).Index, lsPath);
        r.app().UploadSelection().SetTicked(lType, true);
    }
}

clsError UploadTicked(SimRig& r, bool vbSoftware)
{
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
        QString lsError;
        QVERIFY2(r.display.Faults().Parse(c.fault, lsError), qPrintable(lsError));
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
        QCOMPARE(BoxTexts(r).contains(kWriteFailed), lbWriteFailed);
        if (lbWriteFailed) {
            QCOMPARE(r.t.dialogs.boxes.last().icon, MsgIcon::Critical);
            QCOMPARE(r.t.dialogs.boxes.last().title, QStringLiteral("Corvane Desktop"));
        }
        // a frame that cannot be built never reaches the line, not even in part
        for (const QByteArray& lcChunk : r.port.Written())
            QVERIFY(c.file != QLatin1String("zeros") || lcChunk.size() < 6 || quint8(lcChunk.at(5)) != 0x33);
    }

    // Only at start page 1, from FirstPage + 1 on, stopping at the first page with data.
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
        QCOMPARE(BoxTexts(r).value(0), QStringLiteral("Display not empty do you whish to continue?"));
        QCOMPARE(r.t.dialogs.boxes.value(0).buttons, MsgButtons::YesNo);
        QList<QByteArray> lcScanned;
        for (const clsSimDisplay::Request& lcRequest : r.display.Requests().mid(0, 5))
            if (lcRequest.func == 0x38)
                lcScanned << lcRequest.arguments.toHex();
        QCOMPARE(lcScanned, (QList<QByteArray>{"01", "02", "03"}));
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
        if (!oldData) {
            QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
            QCOMPARE(r.Funcs().count(0x34), 8);
            return;
        }
        const quint8 lbyWritten = quint8(Pattern(700).at(256));
        QCOMPARE(lcError.Error(), 0x20000001);
        QCOMPARE(lcError.Description(),
                 QStringLiteral("Verify failed: %1 differs from the display at page 4, offset 0 (byte 256 of the "
                                "file: 0x%2 written, 0x%3 read back)")
                     .arg(lsFile, QString::number(lbyWritten, 16).toUpper(), QString::number(lbyWritten & 0x0F, 16).toUpper()));
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
        QTest::newRow("no UFL chosen: nothing sent") << TickedCase{false, {1, 4}, {{1, 961}}, 0x20000009, {}};
        QTest::newRow("images in the order CC, SA, SND")
            << TickedCase{true, {12, 10, 0}, {{0, 321}, {10, 577}, {12, 129}}, 0, {0, 10, 12}};
    }
    void uploadTicked()
    {
        QFETCH(TickedCase, c);
        SimRig r;
        r.display.SetGeometry(0, 20, 8, 64);
        QMap<int, QByteArray> lcFiles;
        for (const clsUpgradeFile::Row& lcRow : clsUpgradeFile::Table()) {
            r.app().UploadSelection().SetTicked(lcRow.Type, c.ticked.contains(lcRow.Index));
            const int llSize = c.sizes.value(lcRow.Index, 0);
            const QString lsPath = r.t.Home() + QStringLiteral("file.") + QString::fromLatin1(lcRow.Id);
            if (llSize > 0)
                WriteAll(lsPath, lcFiles[lcRow.Index] = Pattern(llSize, lcRow.Index));
            if (llSize != 0)
                r.app().Settings().SetLastFilenames(lcRow.Index, lsPath);
        }
        clsError lcError = UploadTicked(r, c.software);
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
        QString lsFault;
        r.display.Faults().Parse(QStringLiteral("only-func=0x33,drop-next=1"), lsFault);
        const std::vector<UploadType>& lcTypes = software ? clsUploadSelection::DisplayImages() : clsUploadSelection::Databases();
        Tick(r, QList<UploadType>(lcTypes.begin(), lcTypes.end()));
        QCOMPARE(UploadTicked(r, software).Error(), 0x20000001);
        QCOMPARE(Writes(r).size(), 1);
        QCOMPARE(r.app().Status().StatusString(), lastStatus);
        QCOMPARE(BoxTexts(r), QStringList{kWriteFailed});
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
        Tick(r, {UploadType::SSL}, 300);
        Tick(r, {UploadType::SFL}, 200);
        QCOMPARE(UploadTicked(r, false).Error(), error);
        QCOMPARE(r.display.Stats().requests - r.display.Stats().silent, silentFrom - 1);
        // the whole run, the waits for the silent display included
        QVERIFY2(r.clock->timeGetTime() < waitMs + 1000, qPrintable(QString::number(r.clock->timeGetTime())));
        QCOMPARE(ReadAll(r.app().Settings().LastFilenames(1)), Pattern(300, int(UploadType::SSL)));
        QCOMPARE(ReadAll(r.app().Settings().LastFilenames(2)), Pattern(200, int(UploadType::SFL)));
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // Every seeded run either succeeds with the display's flash equal to the
    // file (its deliberately lost last byte excepted) or stops with an error;
    // a success whose flash differs is a silent corruption. The read-back is
    // on. CORVANE_RELIABILITY_RUNS sets the number of runs (300 by default);
    // the figures go to docs/reliability.md.
    void seededUploadsUnderFaults_data()
    {
        QTest::addColumn<QString>("faults");
        QTest::newRow("drop, corrupt, late at 1/100") << "drop=0.01,corrupt=0.01,late=0.01";
        QTest::newRow("writes only: drop, corrupt, late at 2/100") << "only-func=0x33,drop=0.02,corrupt=0.02,late=0.02";
    }
    void seededUploadsUnderFaults()
    {
        QFETCH(QString, faults);
        const int llRuns = qEnvironmentVariableIntValue("CORVANE_RELIABILITY_RUNS") > 0
                               ? qEnvironmentVariableIntValue("CORVANE_RELIABILITY_RUNS") : 300;
        int llComplete = 0, llWriteFailed = 0, llOtherStop = 0;
        clsSimDisplay::Statistics lcInjected;
        for (int llRun = 1; llRun <= llRuns; ++llRun) {
            SimRig r;
            // 12 database pages of 256 bytes, written in parts of 60 bytes
            r.display.SetGeometry(0, 12, 8, 60);
            std::mt19937 lcRandom{quint32(llRun)};
            QByteArray lcFile;
            const int llSize = 200 + int(lcRandom() % 1800);
            for (int i = 0; i < llSize; ++i)
                lcFile.append(char(lcRandom() % 4 == 0 ? 0 : lcRandom() & 0xFF));
            r.app().Settings().SetLastFilenames(1, PutFile(r, QStringLiteral("db.ssl"), lcFile));
            r.app().UploadSelection().SetTicked(UploadType::SSL, true);
            r.app().SetVerifyUploads(true);
            clsSimFaults lcFaults;
            QString lsError;
            QVERIFY(lcFaults.Parse(faults, lsError));
            lcFaults.Seed = quint32(llRun);
            r.display.SetFaults(lcFaults);
            for (int i = 0; i < 8; ++i)
                r.t.dialogs.answers << MsgResult::Cancel;
            clsError lcError = UploadTicked(r, false);
            const clsSimDisplay::Statistics& s = r.display.Stats();
            lcInjected.dropped += s.dropped;
            lcInjected.corrupted += s.corrupted;
            lcInjected.late += s.late;
            lcInjected.requests += s.requests;
            if (lcError.IsError()) {
                (BoxTexts(r).contains(kWriteFailed) ? llWriteFailed : llOtherStop)++;
                QVERIFY2(!lcError.Description().startsWith(QLatin1String("Verify failed")), qPrintable(lcError.Description()));
                continue;
            }
            ++llComplete;
            // all but the last byte as in the file, the last one written or left erased, nothing after it
            const QByteArray lcFlash = r.display.Flash().mid(256);
            QCOMPARE(lcFlash.left(llSize - 1), lcFile.left(llSize - 1));
            QVERIFY(lcFlash.at(llSize - 1) == lcFile.at(llSize - 1) || lcFlash.at(llSize - 1) == char(0xFF));
            QCOMPARE(lcFlash.mid(llSize).count(char(0xFF)), lcFlash.size() - llSize);
        }
        qInfo("%s: %d runs, %d complete, %d stopped at a failed write, %d stopped otherwise, 0 silent corruptions; "
              "%d requests, %d dropped, %d corrupted, %d late",
              qPrintable(faults), llRuns, llComplete, llWriteFailed, llOtherStop, lcInjected.requests,
              lcInjected.dropped, lcInjected.corrupted, lcInjected.late);
        QVERIFY(llComplete > 0);
        QVERIFY(llWriteFailed > 0);
    }
};

QTEST_GUILESS_MAIN(tst_Upload)
#include "tst_upload.moc"
