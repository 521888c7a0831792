#include "data/clsGpsPlaces.h"
#include "platform/Err.h"
#include "support/FakeUserDialogs.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>
#include <atomic>
#include <thread>

namespace {
const QString kCantFind = QStringLiteral("ERROR Can't find file :postcode.gps");
const QString kCantOpen = QStringLiteral("ERROR in opening file:postcode.gps");

// Longitude first, as the file has it. A and its twin share a position; B
// lies 111110 units east of A, so the point half-way is 55555 from both.
const QByteArray kTable = "1000000;2000000;A\r\n"
                          "1000000;2000000;A twin\r\n"
                          "1111110;2000000;B\r\n";

long RaisedNumber(const std::function<void()>& vAction)
{
    try {
        vAction();
    } catch (const clsRuntimeError& e) {
        return e.Number();
    }
    return 0;
}
}

class tst_clsGpsPlaces : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void loading_data();
    void loading();
    void lineIsSplitAtTheFirstTwoSeparators();
    void search_data();
    void search();
    void farTableValueOverflowsLikeTheScan();
    void placeTextOutlivesItsTable();
    void indexMatchesLinearScan_data();
    void indexMatchesLinearScan();

private:
    clsGpsPlaces* Load(const QByteArray* vcContent);

    QTemporaryDir mcDir;
    FakeUserDialogs mcDialogs;
    std::unique_ptr<clsGpsPlaces> mcPlaces;
};

void tst_clsGpsPlaces::init()
{
    mcDialogs.boxes.clear();
}

// Writes postcode.gps (none for a null content) and loads it.
clsGpsPlaces* tst_clsGpsPlaces::Load(const QByteArray* vcContent)
{
    const QString lsPath = mcDir.filePath(QStringLiteral("postcode.gps"));
    QFile::remove(lsPath);
    if (vcContent) {
        QFile lcFile(lsPath);
        if (!lcFile.open(QIODevice::WriteOnly))
            return nullptr;
        lcFile.write(*vcContent);
    }
    mcPlaces = std::make_unique<clsGpsPlaces>(lsPath, &mcDialogs);
    return mcPlaces.get();
}

void tst_clsGpsPlaces::loading_data()
{
    QTest::addColumn<bool>("exists");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("boxes");
    QTest::newRow("table") << true << kTable << 3 << QStringList();
    QTest::newRow("lone LF and no last ending") << true << QByteArray("1;2;a\n3;4;b") << 2 << QStringList();
    QTest::newRow("empty file") << true << QByteArray() << 0 << QStringList();
    QTest::newRow("missing file") << false << QByteArray() << 0 << QStringList{kCantFind, kCantOpen};
    QTest::newRow("line without separator") << true << QByteArray("1;2;a\r\nnothing here\r\n") << 0
                                            << QStringList{kCantOpen};
    QTest::newRow("second separator missing") << true << QByteArray("1;2\r\n") << 0 << QStringList{kCantOpen};
    QTest::newRow("empty line") << true << QByteArray("1;2;a\r\n\r\n3;4;b\r\n") << 0 << QStringList{kCantOpen};
    QTest::newRow("number beyond 32 bits") << true << QByteArray("3000000000;1;x\r\n") << 0 << QStringList{kCantOpen};
}

void tst_clsGpsPlaces::loading()
{
    QFETCH(bool, exists);
    QFETCH(QByteArray, content);
    QFETCH(int, count);
    QFETCH(QStringList, boxes);
    clsGpsPlaces* lcPlaces = Load(exists ? &content : nullptr);
    QCOMPARE(lcPlaces->Count(), count);
    QStringList lcShown;
    for (const FakeUserDialogs::Box& lcBox : mcDialogs.boxes) {
        lcShown << lcBox.text;
        QCOMPARE(lcBox.title, QStringLiteral("Error"));
        QCOMPARE(lcBox.buttons, MsgButtons::OK);
    }
    QCOMPARE(lcShown, boxes);
    // The slot after the last line stays empty at (0, 0).
    QCOMPARE(lcPlaces->Place(count).msPlaatsPostcodeName, QString());
    QCOMPARE(lcPlaces->Place(count).mlLatitude, 0);
    QCOMPARE(lcPlaces->searchPosition(2000000, 1000000), count == 3 ? QStringLiteral("A") : QString());
    QCOMPARE(lcPlaces->searchPosition(0, 1000000), QStringLiteral(" "));
}

// Numbers are read leniently (leading number, else 0, rounded half to even);
// the place text is the rest of the line in Windows-1252, separators and all.
void tst_clsGpsPlaces::lineIsSplitAtTheFirstTwoSeparators()
{
    const QByteArray lcContent = "  12abc;x;text;with;semis\r\n2.5;3.5;Li\xE8ge \x80\r\n";
    clsGpsPlaces* lcPlaces = Load(&lcContent);
    QCOMPARE(lcPlaces->Count(), 2);
    QCOMPARE(lcPlaces->Place(0).mlLongitude, 12);
    QCOMPARE(lcPlaces->Place(0).mlLatitude, 0);
    QCOMPARE(lcPlaces->Place(0).msPlaatsPostcodeName, QStringLiteral("text;with;semis"));
    QCOMPARE(lcPlaces->Place(1).mlLongitude, 2);
    QCOMPARE(lcPlaces->Place(1).mlLatitude, 4);
    QCOMPARE(lcPlaces->Place(1).msPlaatsPostcodeName, QStringLiteral("Li\u00E8ge \u20AC"));
}

void tst_clsGpsPlaces::search_data()
{
    QTest::addColumn<qint32>("latitude");
    QTest::addColumn<qint32>("longitude");
    QTest::addColumn<QString>("expected");
    QTest::newRow("on A, the earlier of two") << 2000000 << 1000000 << "A";
    QTest::newRow("on B") << 2000000 << 1111110 << "B";
    QTest::newRow("half-way, earlier line wins") << 2000000 << 1055555 << "A";
    QTest::newRow("one unit nearer B") << 2000000 << 1055556 << "B";
    QTest::newRow("55555 north") << 2055555 << 1000000 << "A";
    QTest::newRow("55556 north") << 2055556 << 1000000 << "";
    QTest::newRow("55555 west") << 2000000 << 944445 << "A";
    QTest::newRow("55556 south") << 1944444 << 1000000 << "";
    QTest::newRow("33333 by 44444 is 55555") << 2033333 << 955556 << "A";
    QTest::newRow("33334 by 44444 is beyond") << 2033334 << 955556 << "";
    QTest::newRow("zero latitude") << 0 << 1000000 << " ";
    QTest::newRow("zero longitude") << 2000000 << 0 << " ";
    QTest::newRow("near (0,0) the empty slot wins") << 10 << 10 << "";
    QTest::newRow("negative position") << -5 << -7 << "";
}

void tst_clsGpsPlaces::search()
{
    QFETCH(qint32, latitude);
    QFETCH(qint32, longitude);
    QFETCH(QString, expected);
    clsGpsPlaces* lcPlaces = Load(&kTable);
    QCOMPARE(lcPlaces->searchPosition(latitude, longitude), expected);
    QCOMPARE(lcPlaces->searchPositionLinear(latitude, longitude), expected);
}

// The scan subtracts in 32 bits: a table value far enough from the position
// overflows, wherever it stands in the table.
void tst_clsGpsPlaces::farTableValueOverflowsLikeTheScan()
{
    const QByteArray lcContent = "1000000;2000000;A\r\n-2000000000;1;far\r\n";
    clsGpsPlaces* lcPlaces = Load(&lcContent);
    QCOMPARE(RaisedNumber([&] { lcPlaces->searchPosition(2000000, 200000000); }), VbError::Overflow);
    QCOMPARE(RaisedNumber([&] { lcPlaces->searchPositionLinear(2000000, 200000000); }), VbError::Overflow);
    QCOMPARE(RaisedNumber([&] { lcPlaces->searchPositionLinear(2000000, 147483647); }), 0L);
    QCOMPARE(RaisedNumber([&] { lcPlaces->searchPosition(2000000, 147483647); }), 0L);
    QCOMPARE(RaisedNumber([&] { lcPlaces->searchPosition(2000000, 147483648); }), VbError::Overflow);
}

// Records keep the texts they were given; the table may go first.
void tst_clsGpsPlaces::placeTextOutlivesItsTable()
{
    QString lsText = Load(&kTable)->searchPosition(2000000, 1111110);
    const QString lsPlace = mcPlaces->Place(0).msPlaatsPostcodeName;
    mcPlaces.reset();
    QCOMPARE(lsText, QStringLiteral("B"));
    QCOMPARE(lsPlace, QStringLiteral("A"));
    lsText += QStringLiteral(";A");
    QCOMPARE(lsText, QStringLiteral("B;A"));
}

void tst_clsGpsPlaces::indexMatchesLinearScan_data()
{
    QTest::addColumn<QString>("table");
    QTest::newRow("world cities") << QStringLiteral(CORVANE_SHARED_DATA "/world-cities.gps");
    QTest::newRow("us zip codes") << QStringLiteral(CORVANE_SHARED_DATA "/us-zipcodes.gps");
}

// Half the positions lie within a few limit-radii of a place, some exactly on
// the limit's edge or half-way between two places; half lie anywhere.
void tst_clsGpsPlaces::indexMatchesLinearScan()
{
    QFETCH(QString, table);
    QVERIFY2(QFileInfo::exists(table), qPrintable(table + QStringLiteral(" is missing")));
    clsGpsPlaces lcPlaces(table, &mcDialogs);
    QVERIFY(lcPlaces.Count() > 1000);
    QRandomGenerator lcRandom(20061);
    static const qint32 kEdges[][2] = {{55555, 0}, {0, -55556}, {33333, 44444}, {-44444, 33334}, {0, 0}};
    std::vector<std::pair<qint32, qint32>> lcPositions;
    for (int i = 0; i < 20000; ++i) {
        // Neighbouring lines of these tables are mostly neighbouring places.
        const qint32 llSlot = qint32(lcRandom.bounded(lcPlaces.Count() - 1));
        const clsGpsPlace a = lcPlaces.Place(llSlot);
        if (i % 2 == 1) {
            lcPositions.emplace_back(qint32(lcRandom.bounded(1, 108000000)), qint32(lcRandom.bounded(1, 216000000)));
        } else if (i % 10 == 0) {
            const auto& e = kEdges[lcRandom.bounded(5)];
            lcPositions.emplace_back(a.mlLatitude + e[0], a.mlLongitude + e[1]);
        } else if (i % 10 == 2) {
            const clsGpsPlace b = lcPlaces.Place(llSlot + 1);
            lcPositions.emplace_back(qint32((qint64(a.mlLatitude) + b.mlLatitude) / 2),
                                     qint32((qint64(a.mlLongitude) + b.mlLongitude) / 2));
        } else {
            lcPositions.emplace_back(a.mlLatitude + qint32(lcRandom.bounded(-170000, 170000)),
                                     a.mlLongitude + qint32(lcRandom.bounded(-170000, 170000)));
        }
    }
    // The full scans dominate; the table is read-only, so two threads share them.
    std::atomic<int> llDifferences{0};
    std::atomic<int> llFound{0};
    const auto lcCompare = [&](size_t vlFirst, size_t vlEnd) {
        for (size_t i = vlFirst; i < vlEnd; ++i) {
            const auto& p = lcPositions[i];
            const QString lsIndexed = lcPlaces.searchPosition(p.first, p.second);
            llFound += lsIndexed.isEmpty() ? 0 : 1;
            const QString lsScanned = lcPlaces.searchPositionLinear(p.first, p.second);
            if (lsIndexed != lsScanned && ++llDifferences <= 5)
                qWarning() << "differs at" << p.first << p.second << lsIndexed << lsScanned;
        }
    };
    std::thread lcOther(lcCompare, lcPositions.size() / 2, lcPositions.size());
    lcCompare(0, lcPositions.size() / 2);
    lcOther.join();
    QCOMPARE(llDifferences.load(), 0);
    QVERIFY(llFound.load() > 5000);
}

QTEST_GUILESS_MAIN(tst_clsGpsPlaces)
#include "tst_clsGpsPlaces.moc"
