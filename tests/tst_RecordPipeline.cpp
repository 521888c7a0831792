// From page files to finished records: the golden sets of tests/data, the
// import from a simulated display, the km rescaling and the bad files.

#include "support/GoldenData.h"
#include "support/PageFile.h"
#include "support/SimRig.h"
#include "platform/Err.h"
#include "sim/clsSimDataGenerator.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"

#include <QDir>
#include <QtTest>

namespace {
using Bytes = clsHalvexRecord::Bytes;

// A page file of vlSize bytes holding the records, the rest erased.
QByteArray PageText(const QVector<Bytes>& vcRecords, int vlSize = 256)
{
    QByteArray lcPage(256, char(0xFF));
    for (int i = 0; i < vcRecords.size(); ++i)
        std::copy(vcRecords[i].begin(), vcRecords[i].end(), lcPage.begin() + i * 24);
    return PageFileText(lcPage.left(vlSize));
}

// A trip, route point, tank stop or km correction with a fix, an end km and
// the counter a km correction read before (bytes 0, 1, 15, 16).
Bytes Record(int vlType, quint32 vlEndKm, quint32 vlPreviousKm = 0)
{
    Bytes b{quint8(vlPreviousKm), quint8(vlPreviousKm >> 8), 0, 0, 0x65, 0x0E, 1, 0, 0, 0, 1};
    b[15] = quint8(vlPreviousKm >> 16);
    b[16] = quint8(vlPreviousKm >> 24);
    b[17] = quint8(vlType);
    for (int i = 0; i < 4; ++i)
        b[size_t(18 + i)] = quint8(vlEndKm >> (8 * i));
    return b;
}

// A display with six pages of generated logbook; returns the records written.
int FillDisplay(SimRig& rcRig)
{
    rcRig.display.SetGeometry(0, 6, 8, 64);
    QByteArray lcFlash = rcRig.display.Flash();
    QString lsError;
    const int llWritten = clsSimDataGenerator::FillLog(lcFlash, 0, 6, 8, 5, 40, lsError);
    rcRig.display.SetFlash(lcFlash);
    return llWritten;
}

QStringList PageFiles(const TestApp& vcApp)
{
    return QDir(vcApp.Home()).entryList({QStringLiteral("Page*.DSW")});
}

QString Copied(int vlCount)
{
    return QStringLiteral("Copied %1 record(s) from KVT Memory Display").arg(vlCount);
}
}

class tst_RecordPipeline : public QObject
{
    Q_OBJECT

private slots:
    void golden_data()
    {
        QTest::addColumn<QString>("set");
        const QDir lcData(QStringLiteral(CORVANE_TEST_DATA));
        for (const QString& lsSet : lcData.entryList({QStringLiteral("pipeline-*")}, QDir::Dirs))
            QTest::newRow(qPrintable(lsSet)) << lsSet;
    }
    // Each set holds page files, the geometry they came from, perhaps its own
    // place table, and the lines the finished records must give (route included).
    void golden()
    {
        QFETCH(QString, set);
        TestApp a(nullptr, false);
        LoadSet(a, set);
        QStringList lcLines;
        for (int i = 1; i <= a.app->Records().Count(); ++i)
            lcLines << a.app->Records().Item(i).GetFullStringWithDelimiter(QStringLiteral("\t"), true);
        QFile lcExpected(QStringLiteral(CORVANE_TEST_DATA "/%1/expected.txt").arg(set));
        // CORVANE_UPDATE_GOLDEN=1 rewrites the expected lines after a deliberate change; review the diff.
        if (qEnvironmentVariableIsSet("CORVANE_UPDATE_GOLDEN"))
            QVERIFY(lcExpected.open(QIODevice::WriteOnly) && lcExpected.write((lcLines.join('\n') + '\n').toUtf8()) > 0 && lcExpected.flush());
        QCOMPARE(lcLines, QString::fromUtf8(ReadAll(lcExpected.fileName())).split(QLatin1Char('\n'), Qt::SkipEmptyParts));
        QVERIFY(PageFiles(a).isEmpty());
        QCOMPARE(a.app->DataSaved(), false);
        QVERIFY(a.dialogs.boxes.isEmpty());
        QCOMPARE(a.window.LastStatus(), Copied(lcLines.size()));
    }

    // The whole import: the check, the download, the memory map asked again,
    // then every processing step; the page files are gone afterwards. When the
    // second memory map is not answered, nothing is decoded and the page files
    // wait for the next attempt.
    void importFromSimulatedDisplay()
    {
        int llRequests = 0;
        {
            SimRig r;
            const int llWritten = FillDisplay(r);
            QVERIFY(llWritten > 40);
            clsError lcError;
            r.app().ImportDataFromDisplay(lcError);
            QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
            QCOMPARE(r.app().Records().Count(), llWritten);
            QCOMPARE(r.Funcs().last(), 0x36);
            QVERIFY(PageFiles(r.t).isEmpty());
            QCOMPARE(r.app().DataSaved(), false);
            QCOMPARE(r.t.window.LastStatus(), Copied(llWritten));
            QVERIFY(!r.t.window.gridRows.isEmpty());
            llRequests = r.display.Stats().requests;
        }
        SimRig r;
        FillDisplay(r);
        r.display.Faults().SilentFromRequest = llRequests;
        r.t.dialogs.answers.append(MsgResult::Cancel);
        clsError lcError;
        r.app().ImportDataFromDisplay(lcError);
        QCOMPARE(lcError.Error(), ErrorCode::CancelledByUser);
        QCOMPARE(r.app().Records().Count(), 0);
        QCOMPARE(PageFiles(r.t).size(), 6);
        QCOMPARE(r.app().DataSaved(), true);
        QVERIFY(!r.app().Status().BigProgressBarInfo().Visible());
    }

    // Between the anchor (1000) and a correction that says the counter read 1200
    // where the display now says 1100, readings are mapped from 1000..1200 onto
    // 1000..1100; a reading 10000 km or more beyond the anchor is left alone.
    void kmRescaling()
    {
        TestApp a;
        WriteAll(a.Home() + QStringLiteral("Page1.DSW"),
                 PageText({Record(2, 1000), Record(2, 1100), Record(6, 1201), Record(2, 1200), Record(2, 11000),
                           Record(8, 1100, 1200), Record(2, 1150), Record(8, 1300, 0), Record(2, 1400)}));
        clsError lcError;
        a.app->DecodeAndProcess(lcError, Geometry(0, 1, 8));
        QVERIFY(!lcError.IsError());
        QVector<qint32> lcEnd, lcStart;
        for (int i = 1; i <= a.app->Records().Count(); ++i) {
            lcEnd << a.app->Records().Item(i).lEndKmTeller();
            lcStart << a.app->Records().Item(i).lStartKmTeller();
        }
        QCOMPARE(lcEnd, (QVector<qint32>{1000, 1050, 1100, 1100, 11000, 1100, 1150, 1300, 1400}));
        // Each trip starts where the one before (or the km correction) ended.
        QCOMPARE(lcStart, (QVector<qint32>{0, 1000, 0, 1050, 1100, 1100, 1100, 1300, 1300}));
    }

    // No page files, or pages smaller than one record (1 and 16 bytes, which a
    // display may report): no record, and the page files are read all the same.
    // The bar's maximum is the page size over 24, rounded.
    void noRecords_data()
    {
        QTest::addColumn<int>("lastPage");
        QTest::addColumn<int>("sizeLog2");
        QTest::addColumn<int>("barMax");
        QTest::newRow("no page files") << 10 << 8 << 11;
        QTest::newRow("pages of one byte") << 1 << 0 << 0;
        QTest::newRow("pages of 16 bytes") << 1 << 4 << 1;
    }
    void noRecords()
    {
        QFETCH(int, lastPage);
        QFETCH(int, sizeLog2);
        QFETCH(int, barMax);
        TestApp a;
        if (lastPage == 1)
            WriteAll(a.Home() + QStringLiteral("Page1.DSW"), PageText({Record(2, 500)}, 1 << sizeLog2));
        clsError lcError;
        a.app->DecodeDataFromFiles(lcError, Geometry(0, lastPage, sizeLog2));
        QCOMPARE(a.app->Status().SmallProgressBarInfo().Max(), barMax);
        a.app->DecodeAndProcess(lcError, Geometry(0, lastPage, sizeLog2));
        QVERIFY2(!lcError.IsError(), qPrintable(lcError.Description()));
        QCOMPARE(a.app->Records().Count(), 0);
        QVERIFY(PageFiles(a).isEmpty());
        QCOMPARE(a.app->DataSaved(), true);
        QCOMPARE(a.window.LastStatus(), Copied(0));
    }

    void malformedPageFileEndsTheImport_data()
    {
        QTest::addColumn<QByteArray>("page2");
        QTest::addColumn<QString>("description");
        QTest::addColumn<int>("records");
        const QByteArray lcGood = PageText({Record(2, 500), Record(2, 600)});
        QTest::newRow("not a number") << QByteArray(lcGood).replace(0, 1, "abc") << "Type mismatch in %1, line 1" << 1;
        QTest::newRow("value above 255") << QByteArray(lcGood).replace(0, 1, "256") << "Overflow in %1, line 1" << 1;
        QTest::newRow("negative value") << QByteArray(lcGood).replace(0, 1, "-1") << "Overflow in %1, line 1" << 1;
        QTest::newRow("short file") << lcGood.split('\n').mid(0, 30).join('\n') << "Input past end of file in %1, line 31" << 2;
    }
    // Decoding stops at the bad value: the records of earlier pages stay, the bad
    // file stays on disk, no later step runs, and HandleError shows the text.
    void malformedPageFileEndsTheImport()
    {
        QFETCH(QByteArray, page2);
        QFETCH(QString, description);
        QFETCH(int, records);
        TestApp a;
        WriteAll(a.Home() + QStringLiteral("Page1.DSW"), PageText({Record(2, 400)}));
        WriteAll(a.Home() + QStringLiteral("Page2.DSW"), page2);
        clsError lcError;
        a.app->DecodeAndProcess(lcError, Geometry(0, 3, 8));
        const QString lsFile = QDir::toNativeSeparators(a.Home() + QStringLiteral("Page2.DSW"));
        QCOMPARE(lcError.Description(), description.arg(lsFile));
        QCOMPARE(a.app->Records().Count(), records);
        QCOMPARE(a.app->Records().Item(1).RecordNumber(), 0);
        QCOMPARE(PageFiles(a), QStringList{QStringLiteral("Page2.DSW")});
        QCOMPARE(a.app->DataSaved(), true);
        a.app->HandleError(lcError);
        QCOMPARE(a.window.LastStatus(), description.arg(lsFile).left(90).trimmed());
    }

    // A table value so far off that the lookup's 32-bit difference overflows
    // ends the import with the run-time error; the grid step alone reports it too,
    // before the window reads a row.
    void farPlaceTableValueIsAnOverflowNotACrash()
    {
        TestApp a(nullptr, false);
        WriteAll(a.Home() + QStringLiteral("postcode.gps"), "-2000000000;1;far away\r\n");
        a.app->Init();
        Bytes lcRoute = Record(6, 100);
        lcRoute[13] = 0x10; // longitude 268435457, 2268435457 from the table's value
        WriteAll(a.Home() + QStringLiteral("Page1.DSW"), PageText({lcRoute, Record(2, 200)}));
        clsError lcError;
        a.app->DecodeAndProcess(lcError, Geometry(0, 1, 8));
        QCOMPARE(lcError.Description(), QStringLiteral("Overflow"));
        QCOMPARE(a.app->Records().Count(), 2);
        lcError.Clear();
        a.app->Selection().cheDebugRoute = true;
        a.app->ShowRecords(lcError);
        QCOMPARE(lcError.Error(), qint32(VbError::Overflow));
        // the window is never told to read rows whose places could not be looked up
        QVERIFY(!a.window.calls.contains(QStringLiteral("RecordsChanged")));
    }
};

QTEST_GUILESS_MAIN(tst_RecordPipeline)
#include "tst_RecordPipeline.moc"
