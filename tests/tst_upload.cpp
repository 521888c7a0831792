// The page upload engine and the database and display-image uploads, against
// the simulated display on the virtual clock.

#include "support/SimRig.h"
#include "support/TestFiles.h"

#include "app/clsSettings.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "upload/clsMCUUpgrade.h"

#include <QTest>

using SizeMap = QMap<int, int>;

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

// The write requests as "page:address:count".
QStringList Writes(const SimRig& r)
{
    QStringList lcWrites;
    for (const clsSimDisplay::Request& lcRequest : r.display.Requests()) {
        if (lcRequest.func != 0x33)
            continue;
        const QByteArray& a = lcRequest.arguments;
        lcWrites << QStringLiteral("%1:%2:%3").arg(quint8(a[0])).arg(quint8(a[1]) * 256 + quint8(a[2])).arg(quint8(a[3]));
    }
    return lcWrites;
}

// The data of the writes, in order.
QByteArray WrittenData(const SimRig& r)
{
    QByteArray lcData;
    for (const clsSimDisplay::Request& lcRequest : r.display.Requests())
        if (lcRequest.func == 0x33)
            lcData += lcRequest.arguments.mid(4);
    return lcData;
}

QString PutFile(SimRig& r, const QString& vsName, const QByteArray& vcData)
{
    const QString lsPath = r.t.Home() + vsName;
    WriteAll(lsPath, vcData);
    return lsPath;
}

QStringList BoxTexts(const SimRig& r)
{
    QStringList lcTexts;
    for (const FakeUserDialogs::Box& lcBox : r.t.dialogs.boxes)
        lcTexts << lcBox.text;
    return lcTexts;
}
}

class tst_Upload : public QObject
{
    Q_OBJECT

private slots:
    // Messages never cross a page end, addresses restart on every page, and the
    // loop stops with one byte left.
    void writeFrames_data()
    {
        QTest::addColumn<int>("firstPage");
        QTest::addColumn<int>("log2");
        QTest::addColumn<int>("maxData");
        QTest::addColumn<int>("size");
        QTest::addColumn<QStringList>("writes");
        QTest::addColumn<int>("nextPage");
        QTest::newRow("one page, max divides it") << 0 << 8 << 64 << 256
                                                 << QStringList{"1:0:64", "1:64:64", "1:128:64", "1:192:64"} << 2;
        QTest::newRow("page + 10: 10 bytes at address 0 of the next page")
            << 0 << 8 << 64 << 266 << QStringList{"1:0:64", "1:64:64", "1:128:64", "1:192:64", "2:0:10"} << 3;
        QTest::newRow("max + 1: the last byte is lost") << 0 << 8 << 64 << 65 << QStringList{"1:0:64"} << 2;
        QTest::newRow("page + 1: the last byte is lost, no page for it")
            << 0 << 8 << 64 << 257 << QStringList{"1:0:64", "1:64:64", "1:128:64", "1:192:64"} << 2;
        QTest::newRow("one byte sends nothing") << 0 << 8 << 64 << 1 << QStringList{} << 2;
        QTest::newRow("max does not divide: shortened at every page end")
            << 0 << 8 << 100 << 600
            << QStringList{"1:0:100", "1:100:100", "1:200:56", "2:0:100", "2:100:100", "2:200:56", "3:0:88"} << 4;
        QTest::newRow("file ends in a page's last message") << 0 << 8 << 64 << 250
                                                            << QStringList{"1:0:64", "1:64:64", "1:128:64", "1:192:58"}
                                                            << 2;
        QTest::newRow("start page 5, 512-byte pages") << 4 << 9 << 200 << 700
                                                      << QStringList{"5:0:200", "5:200:200", "5:400:112", "6:0:188"} << 7;
        QTest::newRow("two address bytes") << 0 << 10 << 240 << 1000
                                           << QStringList{"1:0:240", "1:240:240", "1:480:240", "1:720:240", "1:960:40"} << 2;
    }
    void writeFrames()
    {
        QFETCH(int, firstPage);
        QFETCH(int, log2);
        QFETCH(int, maxData);
        QFETCH(int, size);
        QFETCH(QStringList, writes);
        QFETCH(int, nextPage);
        SimRig r;
        r.display.SetGeometry(firstPage, firstPage + 8, log2, maxData);
        const QByteArray lcFile = Pattern(size);
        clsMCUUpgrade lcEngine(r.app());
        lcEngine.SetStatus(&r.app().Status());
        lcEngine.SetFilename(PutFile(r, QStringLiteral("db.ssl"), lcFile));
        qint32 llPage = firstPage + 1;
        clsError lcError;
        lcEngine.StartUpLoad(lcError, llPage);
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QCOMPARE(Writes(r), writes);
        QCOMPARE(llPage, nextPage);
        const QByteArray lcSent = WrittenData(r);
        QCOMPARE(lcSent, lcFile.left(lcSent.size()));
        QCOMPARE(lcEngine.BytesWritten(), qint32(lcSent.size()));
        // the emptiness check only for start page 1
        QCOMPARE(r.Funcs().contains(0x38), firstPage == 0);
        QCOMPARE(r.app().Status().StatusString(), QStringLiteral("Upload Completed"));
        QVERIFY(!r.app().Status().BigProgressBarInfo().Visible());
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // The status texts in order, and the page in the small status.
    void statusTexts()
    {
        SimRig r;
        r.display.SetGeometry(0, 20, 8, 128);
        clsMCUUpgrade lcEngine(r.app());
        lcEngine.SetStatus(&r.app().Status());
        lcEngine.SetFilename(PutFile(r, QStringLiteral("db.ssl"), Pattern(3000)));
        QStringList lcTexts;
        QStringList lcSmall;
        connect(&r.app().Status(), &clsStatus::StatusChanged, this, [&]() {
            const QString lsText = r.app().Status().StatusString();
            if (!lsText.isEmpty() && (lcTexts.isEmpty() || lcTexts.last() != lsText))
                lcTexts << lsText;
            const QString lsSmall = r.app().Status().SmallStatusString();
            if (!lsSmall.isEmpty() && (lcSmall.isEmpty() || lcSmall.last() != lsSmall))
                lcSmall << lsSmall;
        });
        qint32 llPage = 12;
        clsError lcError;
        lcEngine.StartUpLoad(lcError, llPage);
        QCOMPARE(lcTexts, (QStringList{"Getting ID from display", "Received ID from display", "Opening File",
                                       "Reading File", "Closing File", "Uploading Information", "Upload Completed"}));
        QCOMPARE(lcSmall.first(), QStringLiteral("Page12"));
        QCOMPARE(lcSmall.last(), QStringLiteral("Page23"));
        QCOMPARE(llPage, 24);
        QCOMPARE(r.app().Status().SmallStatusString(), QString());
    }

    void failures_data()
    {
        QTest::addColumn<QString>("file");     // "-" no name, "?" a file that is not there
        QTest::addColumn<QString>("fault");    // of the simulated display
        QTest::addColumn<int>("startPage");
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("description"); // its start
        QTest::addColumn<QString>("status");
        QTest::addColumn<int>("writes");
        QTest::newRow("no answer to a write") << "data" << "only-func=0x33,drop-next=1" << 2 << 0x20000001
                                              << "Unable to communicate with display." << kWriteFailed << 1;
        QTest::newRow("cable pulled mid-page") << "data" << "silent-from=5" << 2 << 0x20000001
                                               << "Unable to communicate with display." << kWriteFailed << 3;
        QTest::newRow("late answer") << "data" << "only-func=0x33,late-next=1,late-by=1500" << 2 << 0x20000001
                                     << "Unable to communicate with display." << kWriteFailed << 1;
        QTest::newRow("another function code") << "data" << "only-func=0x33,wrong-func-next=1" << 2 << 0x20000001
                                               << "Unable to communicate with display." << kWriteFailed << 1;
        QTest::newRow("zeros past the frame's limit") << "zeros" << "" << 2 << 0x20000001
                                                      << "The write of 240 bytes of " << kWriteFailed << 0;
        QTest::newRow("empty file") << "empty" << "" << 2 << 0x20000004 << "Nothing to upload: the file "
                                    << "Closing File" << 0;
        QTest::newRow("missing file") << "?" << "" << 2 << 0x20000004 << "Unable to open file." << "Unable to open file "
                                      << 0;
        QTest::newRow("no file name") << "-" << "" << 2 << 0x20000005 << "Filename is empty." << "Received ID from display"
                                      << 0;
        QTest::newRow("no display") << "data" << "silent-from=1" << 2 << 0x20000002 << "Action cancelled by user."
                                    << "Stopping upload, Invalid ID" << 0;
    }
    void failures()
    {
        QFETCH(QString, file);
        QFETCH(QString, fault);
        QFETCH(int, startPage);
        QFETCH(int, error);
        QFETCH(QString, description);
        QFETCH(QString, status);
        QFETCH(int, writes);
        SimRig r;
        r.display.SetGeometry(1, 9, 10, 240);
        QString lsError;
        QVERIFY2(r.display.Faults().Parse(fault, lsError), qPrintable(lsError));
        if (fault.contains(QLatin1String("silent-from=1")))
            r.t.dialogs.answers << MsgResult::Cancel;
        QString lsFile;
        if (file == QLatin1String("data"))
            lsFile = PutFile(r, QStringLiteral("db.ssl"), Pattern(3000));
        else if (file == QLatin1String("zeros"))
            lsFile = PutFile(r, QStringLiteral("db.ssl"), QByteArray(600, '\0'));
        else if (file == QLatin1String("empty"))
            lsFile = PutFile(r, QStringLiteral("db.ssl"), QByteArray());
        else if (file == QLatin1String("?"))
            lsFile = r.t.Home() + QStringLiteral("not-there.ssl");
        clsMCUUpgrade lcEngine(r.app());
        lcEngine.SetStatus(&r.app().Status());
        lcEngine.SetFilename(lsFile);
        qint32 llPage = startPage;
        clsError lcError;
        lcEngine.StartUpLoad(lcError, llPage);
        QCOMPARE(lcError.Error(), error);
        QVERIFY2(lcError.Description().startsWith(description), qPrintable(lcError.Description()));
        QVERIFY2(r.app().Status().StatusString().startsWith(status), qPrintable(r.app().Status().StatusString()));
        QCOMPARE(Writes(r).size(), writes);
        if (status != kWriteFailed)
            QCOMPARE(llPage, startPage);
        QVERIFY(!r.app().CommunicationIsRunning());
        QVERIFY(!r.app().Status().BigProgressBarInfo().Visible());
        const bool lbWriteFailed = status == kWriteFailed;
        QCOMPARE(BoxTexts(r).contains(kWriteFailed), lbWriteFailed);
        if (lbWriteFailed) {
            QCOMPARE(r.t.dialogs.boxes.last().icon, MsgIcon::Critical);
            QCOMPARE(r.t.dialogs.boxes.last().title, QStringLiteral("Corvane Desktop"));
        }
        // a frame that cannot be built never reaches the line, not even in part
        if (file == QLatin1String("zeros"))
            for (const QByteArray& lcChunk : r.port.Written())
                QVERIFY(lcChunk.size() < 6 || quint8(lcChunk.at(5)) != 0x33);
    }

    // Only at start page 1, from FirstPage + 1 on, stopping at the first page with data.
    void displayNotEmpty_data()
    {
        QTest::addColumn<MsgResult>("answer");
        QTest::addColumn<int>("error");
        QTest::newRow("no: nothing written") << MsgResult::No << 0x20000002;
        QTest::newRow("yes: erased, then written") << MsgResult::Yes << 0;
    }
    void displayNotEmpty()
    {
        QFETCH(MsgResult, answer);
        QFETCH(int, error);
        SimRig r;
        r.display.SetGeometry(0, 6, 8, 64);
        r.display.SetPage(0, QByteArray(10, 0x11));
        r.display.SetPage(3, QByteArray(10, 0x22));
        r.t.dialogs.answers << answer;
        clsMCUUpgrade lcEngine(r.app());
        lcEngine.SetStatus(&r.app().Status());
        lcEngine.SetFilename(PutFile(r, QStringLiteral("db.ssl"), Pattern(300)));
        qint32 llPage = 1;
        clsError lcError;
        lcEngine.StartUpLoad(lcError, llPage);
        QCOMPARE(lcError.Error(), error);
        QCOMPARE(BoxTexts(r).value(0), QStringLiteral("Display not empty do you whish to continue?"));
        QCOMPARE(r.t.dialogs.boxes.value(0).buttons, MsgButtons::YesNo);
        QList<QByteArray> lcScanned;
        for (const clsSimDisplay::Request& lcRequest : r.display.Requests().mid(0, 5))
            if (lcRequest.func == 0x38)
                lcScanned << lcRequest.arguments.toHex();
        QCOMPARE(lcScanned, (QList<QByteArray>{"01", "02", "03"}));
        QCOMPARE(Writes(r).size(), error ? 0 : 5);
        QCOMPARE(r.display.Page(3).left(12), error ? QByteArray(10, 0x22) + QByteArray(2, char(0xFF))
                                                   : QByteArray(12, char(0xFF)));
        QCOMPARE(r.display.Page(2).left(44), error ? QByteArray(44, char(0xFF)) : Pattern(300).mid(256, 44));
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
        r.app().SetVerifyUploads(true);
        clsMCUUpgrade lcEngine(r.app());
        lcEngine.SetStatus(&r.app().Status());
        lcEngine.SetVerify(true);
        const QString lsFile = PutFile(r, QStringLiteral("db.usl"), Pattern(700));
        lcEngine.SetFilename(lsFile);
        qint32 llPage = 3;
        clsError lcError;
        lcEngine.StartUpLoad(lcError, llPage);
        const quint8 lbyWritten = quint8(Pattern(700).at(256));
        if (!oldData) {
            QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
            QCOMPARE(r.Funcs().count(0x34), 8);
            return;
        }
        QCOMPARE(lcError.Error(), 0x20000001);
        QCOMPARE(lcError.Description(),
                 QStringLiteral("Verify failed: %1 differs from the display at page 4, offset 0 (byte 256 of the "
                                "file: 0x%2 written, 0x%3 read back)")
                     .arg(lsFile, QString::number(lbyWritten, 16).toUpper(),
                          QString::number(lbyWritten & 0x0F, 16).toUpper()));
    }

    // Ticked files are all checked before the first is sent, then follow one
    // another page after page.
    void uploadTicked_data()
    {
        QTest::addColumn<bool>("software");
        QTest::addColumn<QList<int>>("ticked");   // settings indices
        // by settings index: the size of its file (one more than a multiple of
        // 64, so its last byte is the lost one), 0 no file chosen, -1 not there
        QTest::addColumn<SizeMap>("sizes");
        QTest::addColumn<int>("error");
        QTest::addColumn<QList<int>>("sent"); // from page 1 on
        QTest::newRow("SSL and UFL, no gap between")
            << false << QList<int>{1, 4} << SizeMap{{1, 961}, {2, 65}, {4, 257}} << 0 << QList<int>{1, 4};
        QTest::newRow("only USL") << false << QList<int>{3} << SizeMap{{3, 513}} << 0 << QList<int>{3};
        QTest::newRow("missing UFL: nothing sent")
            << false << QList<int>{1, 4} << SizeMap{{1, 961}, {4, -1}} << 0x2000000A << QList<int>{};
        QTest::newRow("no UFL chosen: nothing sent")
            << false << QList<int>{1, 4} << SizeMap{{1, 961}} << 0x20000009 << QList<int>{};
        QTest::newRow("images in the order CC, SA, SND")
            << true << QList<int>{12, 10, 0} << SizeMap{{0, 321}, {10, 577}, {12, 129}} << 0
            << QList<int>{0, 10, 12};
    }
    void uploadTicked()
    {
        QFETCH(bool, software);
        QFETCH(QList<int>, ticked);
        QFETCH(SizeMap, sizes);
        QFETCH(int, error);
        QFETCH(QList<int>, sent);
        SimRig r;
        r.display.SetGeometry(0, 20, 8, 64);
        QMap<int, QByteArray> lcFiles;
        for (const clsUpgradeFile::Row& lcRow : clsUpgradeFile::Table()) {
            r.app().UploadSelection().SetTicked(lcRow.Type, ticked.contains(lcRow.Index));
            const int llSize = sizes.value(lcRow.Index, 0);
            if (llSize == 0)
                continue;
            const QString lsPath = r.t.Home() + QStringLiteral("file.") + QString::fromLatin1(lcRow.Id);
            if (llSize > 0) {
                lcFiles[lcRow.Index] = Pattern(llSize, lcRow.Index);
                WriteAll(lsPath, lcFiles[lcRow.Index]);
            }
            r.app().Settings().SetLastFilenames(lcRow.Index, lsPath);
        }
        clsError lcError;
        if (software)
            r.app().HandleUploadKVT(lcError);
        else
            r.app().HandleUploadDatabases(lcError);
        QCOMPARE(lcError.Error(), error);
        if (error == 0x2000000A)
            QCOMPARE(lcError.Description(), QStringLiteral("Unable to find '%1file.UFL'").arg(r.t.Home()));
        if (sent.isEmpty()) {
            QCOMPARE(r.Funcs(), (QList<int>{0x0B, 0x0B}));
            return;
        }
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QByteArray lcExpected;
        for (const int llIndex : sent) {
            const QByteArray lcFile = lcFiles[llIndex];
            lcExpected += lcFile.left(lcFile.size() - 1);
            lcExpected += QByteArray(256 - (lcFile.size() - 1) % 256, char(0xFF));
        }
        QCOMPARE(r.display.Flash().mid(256, lcExpected.size() + 256).toHex(),
                 (lcExpected + QByteArray(256, char(0xFF))).toHex());
        QCOMPARE(r.Funcs().mid(0, 3), (QList<int>{0x0B, 0x0B, 0x36}));
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
        const std::vector<UploadType>& lcTypes =
            software ? clsUploadSelection::DisplayImages() : clsUploadSelection::Databases();
        for (const UploadType lType : lcTypes) {
            const QString lsPath = PutFile(r, QStringLiteral("f") + QString::number(int(lType)), Pattern(100));
            r.app().Settings().SetLastFilenames(clsUpgradeFile::Of(lType).Index, lsPath);
            r.app().UploadSelection().SetTicked(lType, true);
        }
        clsError lcError;
        if (software)
            r.app().HandleUploadKVT(lcError);
        else
            r.app().HandleUploadDatabases(lcError);
        QCOMPARE(lcError.Error(), 0x20000001);
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
        QList<QByteArray> lcFiles = {Pattern(300, 1), Pattern(200, 2)};
        const QStringList lcPaths = {PutFile(r, QStringLiteral("a.ssl"), lcFiles[0]),
                                     PutFile(r, QStringLiteral("b.sfl"), lcFiles[1])};
        r.app().Settings().SetLastFilenames(1, lcPaths[0]);
        r.app().Settings().SetLastFilenames(2, lcPaths[1]);
        r.app().UploadSelection().SetTicked(UploadType::SSL, true);
        r.app().UploadSelection().SetTicked(UploadType::SFL, true);
        clsError lcError;
        r.app().HandleUploadDatabases(lcError);
        QCOMPARE(lcError.Error(), error);
        QCOMPARE(r.display.Stats().requests - r.display.Stats().silent, silentFrom - 1);
        // the whole run, the waits for the silent display included
        const quint32 llElapsed = r.clock->timeGetTime();
        QVERIFY2(llElapsed < waitMs + 1000, qPrintable(QString::number(llElapsed)));
        QCOMPARE(ReadAll(lcPaths[0]), lcFiles[0]);
        QCOMPARE(ReadAll(lcPaths[1]), lcFiles[1]);
        QVERIFY(!r.app().CommunicationIsRunning());
    }

    // The upload buttons' texts and boxes, shared by the window and the command line.
    void uploadButtons_data()
    {
        QTest::addColumn<bool>("software");
        QTest::addColumn<QString>("file"); // "" nothing ticked, "?" ticked but not there
        QTest::addColumn<QString>("box");
        QTest::addColumn<MsgIcon>("icon");
        QTest::addColumn<int>("error");
        for (const bool lbSoftware : {false, true}) {
            const char* lsPage = lbSoftware ? "software: " : "databases: ";
            QTest::newRow(qPrintable(lsPage + QStringLiteral("nothing ticked")))
                << lbSoftware << "" << "KVT Upload: Please select one or more items to upload" << MsgIcon::None
                << 0x20000009;
            QTest::newRow(qPrintable(lsPage + QStringLiteral("done")))
                << lbSoftware << "f.bin" << "KVT Upload: Upload successfully completed" << MsgIcon::None << 0;
            QTest::newRow(qPrintable(lsPage + QStringLiteral("failed")))
                << lbSoftware << "?" << "KVT Upload ERROR: ERROR: Upload Failed: Unable to find '%1missing'"
                << MsgIcon::Critical << 0x2000000A;
        }
    }
    void uploadButtons()
    {
        QFETCH(bool, software);
        QFETCH(QString, file);
        QFETCH(QString, box);
        QFETCH(MsgIcon, icon);
        QFETCH(int, error);
        SimRig r;
        r.display.SetGeometry(0, 8, 8, 64);
        const UploadType lType = software ? UploadType::KVTSA : UploadType::UFL;
        if (!file.isEmpty()) {
            const QString lsPath = file == QLatin1String("?") ? r.t.Home() + QStringLiteral("missing")
                                                              : PutFile(r, file, Pattern(100));
            r.app().Settings().SetLastFilenames(clsUpgradeFile::Of(lType).Index, lsPath);
            r.app().UploadSelection().SetTicked(lType, true);
        }
        const clsOutcome lcOutcome =
            software ? r.app().cmdInstallKVTSoftware_Click() : r.app().cmdUploadDatabases_Click();
        QCOMPARE(lcOutcome.Number, error);
        QCOMPARE(r.t.dialogs.boxes.size(), 1);
        QCOMPARE(r.t.dialogs.boxes[0].title + QStringLiteral(": ") + r.t.dialogs.boxes[0].text,
                 QString(box).replace(QStringLiteral("%1"), r.t.Home()));
        QCOMPARE(r.t.dialogs.boxes[0].icon, icon);
        QCOMPARE(r.t.dialogs.boxes[0].buttons, MsgButtons::OK);
        // the window is off for the run and the grid keeps its rows; nothing at all when nothing is ticked
        QCOMPARE(r.t.window.calls.contains(QStringLiteral("EnableButtons(0)")), !file.isEmpty());
        QVERIFY(!r.t.window.calls.contains(QStringLiteral("ClearGrid")));
        QCOMPARE(r.display.Requests().isEmpty(), file.isEmpty());
        // the error went through HandleError: its text on the status line
        if (error && !file.isEmpty())
            QCOMPARE(r.app().Status().StatusString(), lcOutcome.Description);
    }

    // Each member of the choose family opens the dialog with its type's filter;
    // a choice lands in the settings and the text box, a cancel changes nothing.
    void chooseFile_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("filter");
        QTest::newRow("SSL") << int(UploadType::SSL) << 1 << "SSL file(*.ssl)|*.ssl";
        QTest::newRow("SFL") << int(UploadType::SFL) << 2 << "SFL file(*.sfl)|*.sfl";
        QTest::newRow("USL") << int(UploadType::USL) << 3 << "USL file(*.usl)|*.usl";
        QTest::newRow("UFL") << int(UploadType::UFL) << 4 << "UFL file(*.ufl)|*.ufl";
        QTest::newRow("KVT_CC") << int(UploadType::KVTCC) << 0 << "KVT file(*.kvt)|*.kvt";
        QTest::newRow("KVT_SA") << int(UploadType::KVTSA) << 10 << "KVT file(*.kvt_sa)|*.kvt_sa";
        QTest::newRow("KVT_SND") << int(UploadType::KVTSND) << 12 << "KVT file(*.kvt_snd)|*.kvt_snd";
        QTest::newRow("KVT_MD") << int(UploadType::KVTMD) << 11 << "KVT file(*.kvt_md)|*.kvt_md";
    }
    void chooseFile()
    {
        QFETCH(int, type);
        QFETCH(int, index);
        QFETCH(QString, filter);
        TestApp t;
        const QString lsOld = t.Home() + QStringLiteral("old.file");
        t.app->Settings().SetLastFilenames(qint16(index), lsOld);
        t.app->ShowLastUploadFiles();
        QCOMPARE(t.window.uploadFiles.value(index), lsOld);
        t.app->GetNewFileNameForUpload(UploadType(type));
        QCOMPARE(t.dialogs.dialogFilters, QStringList{filter});
        QCOMPARE(t.dialogs.dialogInitDirs, QStringList{t.Home()});
        QCOMPARE(t.app->Settings().LastFilenames(qint16(index)), lsOld);
        t.dialogs.fileNames << QStringLiteral("/new/one");
        t.app->GetNewFileNameForUpload(UploadType(type));
        QCOMPARE(t.app->Settings().LastFilenames(qint16(index)), QStringLiteral("/new/one"));
        QCOMPARE(t.window.uploadFiles.value(index), QStringLiteral("/new/one"));
        clsUpgradeFile lcType{UploadType(type)};
        clsRecordCollection lcRecords;
        QVERIFY(!lcType.SaveToFile(lsOld, lcRecords));
        QVERIFY(!QFile::exists(lsOld));
    }
};

QTEST_GUILESS_MAIN(tst_Upload)
#include "tst_upload.moc"
