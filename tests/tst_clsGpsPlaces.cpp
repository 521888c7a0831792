// The place table: how postcode.gps is read, where the application finds it,
// the nearest-place search with its kept quirks, its index against the scan
// (and fuzz_places, whose corpus compares the two around every place).

#include "GoldenData.h"
#include "data/clsGpsPlaces.h"
#include "platform/Err.h"
#include "support/TestApp.h"
#include "support/TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

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
    void init() { mcDialogs.boxes.clear(); }
    void loading_data()
    {
        QTest::addColumn<QString>("content");
        QTest::addColumn<int>("count");
        QTest::addColumn<QStringList>("boxes");
        const QMap<QString, QString> lcBoxes{{"find", kCantFind}, {"open", kCantOpen}};
        for (const QStringList& f : DataTable(QStringLiteral("places-loading.txt"), 4)) {
            QStringList lcShown;
            for (const QString& lsBox : f[3].split(QLatin1Char(' '), Qt::SkipEmptyParts))
                lcShown << lcBoxes[lsBox];
            QTest::newRow(qPrintable(f[0])) << f[1] << f[2].toInt() << lcShown;
        }
    }
    void loading()
    {
        QFETCH(QString, content);
        QFETCH(int, count);
        QFETCH(QStringList, boxes);
        const QByteArray lcContent = content.toLatin1();
        clsGpsPlaces* lcPlaces = Load(content == QLatin1String("-") ? nullptr : &lcContent);
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
    // Numbers are read leniently (leading number, exponent and all, else 0, rounded half to even);
    // the place text is the rest of the line in Windows-1252, separators and all.
    void lineIsSplitAtTheFirstTwoSeparators()
    {
        const QByteArray lcContent = "  10abc;x;text;with;semis\r\n25d-1;0.35E1;Li\xE8ge \x80\r\n";
        clsGpsPlaces* lcPlaces = Load(&lcContent);
        QCOMPARE(lcPlaces->Count(), 2);
        QCOMPARE(lcPlaces->Place(0).mlLongitude, 10);
        QCOMPARE(lcPlaces->Place(0).mlLatitude, 0);
        QCOMPARE(lcPlaces->Place(0).msPlaatsPostcodeName, QStringLiteral("text;with;semis"));
        QCOMPARE(lcPlaces->Place(1).mlLongitude, 2);
        QCOMPARE(lcPlaces->Place(1).mlLatitude, 4);
        QCOMPARE(lcPlaces->Place(1).msPlaatsPostcodeName, QStringLiteral("Li\u00E8ge \u20AC"));
    }
    void search_data()
    {
        QTest::addColumn<qint32>("latitude");
        QTest::addColumn<qint32>("longitude");
        QTest::addColumn<QString>("expected");
        for (const QStringList& f : DataTable(QStringLiteral("places-search.txt"), 4))
            QTest::newRow(qPrintable(f[0])) << f[1].toInt() << f[2].toInt() << f[3];
    }
    void search()
    {
        QFETCH(qint32, latitude);
        QFETCH(qint32, longitude);
        QFETCH(QString, expected);
        clsGpsPlaces* lcPlaces = Load(&kTable);
        QCOMPARE(lcPlaces->searchPosition(latitude, longitude), expected);
        QCOMPARE(lcPlaces->searchPositionLinear(latitude, longitude), expected);
    }
    // Records keep the texts they looked up when the table is loaded anew at
    // start-up, so a text must not point into memory that went with its table.
    void textOutlivesItsTable()
    {
        const QString lsText = Load(&kTable)->searchPosition(2000000, 1111110);
        mcPlaces.reset();
        QCOMPARE(lsText, QStringLiteral("B"));
    }
    // The scan subtracts in 32 bits: a table value far enough from the position
    // overflows, wherever it stands in the table.
    void farTableValueOverflowsLikeTheScan()
    {
        const QByteArray lcContent = "1000000;2000000;A\r\n-2000000000;1;far\r\n";
        clsGpsPlaces* lcPlaces = Load(&lcContent);
        QCOMPARE(RaisedNumber([&] { lcPlaces->searchPosition(2000000, 200000000); }), VbError::Overflow);
        QCOMPARE(RaisedNumber([&] { lcPlaces->searchPositionLinear(2000000, 200000000); }), VbError::Overflow);
        QCOMPARE(RaisedNumber([&] { lcPlaces->searchPositionLinear(2000000, 147483647); }), 0L);
        QCOMPARE(RaisedNumber([&] { lcPlaces->searchPosition(2000000, 147483647); }), 0L);
        QCOMPARE(RaisedNumber([&] { lcPlaces->searchPosition(2000000, 147483648); }), VbError::Overflow);
    }
    // A tree as an install or a build leaves it: home/, prefix/bin (the
    // program), prefix/share/corvane, prefix/CorvaneSourceDir.txt naming src/.
    void lookupOrder_data()
    {
        QTest::addColumn<QStringList>("present");
        QTest::addColumn<QString>("found");
        QTest::newRow("own table first") << QStringList{"home", "installed", "source"} << "home";
        QTest::newRow("installed beside the program") << QStringList{"installed", "source"} << "installed";
        QTest::newRow("source tree of a build tree") << QStringList{"source"} << "source";
        QTest::newRow("a build tree whose source has none") << QStringList{"marker only"} << "home";
        QTest::newRow("nowhere") << QStringList{} << "home";
    }
    void lookupOrder()
    {
        QFETCH(QStringList, present);
        QFETCH(QString, found);
        QTemporaryDir lcDir;
        const QString lsRoot = lcDir.path() + QLatin1Char('/');
        const QMap<QString, QString> lcTables = {{"home", lsRoot + "home/postcode.gps"},
                                                 {"installed", lsRoot + "prefix/share/corvane/postcode.gps"},
                                                 {"source", lsRoot + "src/share/postcode.gps"}};
        QVERIFY(QDir().mkpath(lsRoot + "home"));
        QVERIFY(QDir().mkpath(lsRoot + "prefix/bin"));
        for (const QString& lsWhere : present) {
            if (lcTables.contains(lsWhere)) {
                QVERIFY(QDir().mkpath(QFileInfo(lcTables[lsWhere]).path()));
                WriteAll(lcTables[lsWhere], "1;1;x\r\n");
            }
            if (lsWhere == "source" || lsWhere == "marker only")
                WriteAll(lsRoot + "prefix/CorvaneSourceDir.txt", (lsRoot + "src\n").toUtf8());
        }
        QCOMPARE(QFileInfo(clsApplication::LocatePlacesFile(lsRoot + "home/", lsRoot + "prefix/bin")).absoluteFilePath(),
                 QFileInfo(lcTables[found]).absoluteFilePath());
    }
    // Both boxes of a missing table come from Init, before any operation.
    void errorBoxesComeAtStartUp()
    {
        TestApp lcTest(nullptr, false);
        clsPlatform lcPlatform = lcTest.app->Platform();
        lcPlatform.PlacesFile = lcTest.Home() + QStringLiteral("missing/postcode.gps");
        lcTest.app.reset();
        lcTest.app = std::make_unique<clsApplication>(lcPlatform);
        lcTest.app->Init();
        QCOMPARE(lcTest.dialogs.boxes.size(), 2);
        QCOMPARE(lcTest.dialogs.boxes[0].text + lcTest.dialogs.boxes[1].text, kCantFind + kCantOpen);
        QVERIFY(lcTest.app->IsInitialised());
    }

private:
    // Writes postcode.gps (none for a null content) and loads it.
    clsGpsPlaces* Load(const QByteArray* vcContent)
    {
        const QString lsPath = mcDir.filePath(QStringLiteral("postcode.gps"));
        QFile::remove(lsPath);
        if (vcContent)
            WriteAll(lsPath, *vcContent);
        mcPlaces = std::make_unique<clsGpsPlaces>(lsPath, &mcDialogs);
        return mcPlaces.get();
    }
    QTemporaryDir mcDir;
    FakeUserDialogs mcDialogs;
    std::unique_ptr<clsGpsPlaces> mcPlaces;
};

QTEST_GUILESS_MAIN(tst_clsGpsPlaces)
#include "tst_clsGpsPlaces.moc"
