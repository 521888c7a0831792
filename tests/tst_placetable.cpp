// Where the application finds postcode.gps, and that it loads it at start-up.

#include "TestApp.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace {
void Put(const QString& vsPath, const QByteArray& vcContent)
{
    QVERIFY(QDir().mkpath(QFileInfo(vsPath).path()));
    QFile lcFile(vsPath);
    QVERIFY(lcFile.open(QIODevice::WriteOnly));
    lcFile.write(vcContent);
}
}

class tst_PlaceTable : public QObject
{
    Q_OBJECT
private slots:
    void lookupOrder_data();
    void lookupOrder();
    void buildTreeFindsItsSourceTree();
    void errorBoxesComeAtStartUp();
};

// A tree as an install or a build leaves it: home/, prefix/bin (the
// program), prefix/share/corvane, prefix/CorvaneSourceDir.txt naming src/.
void tst_PlaceTable::lookupOrder_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QString>("found");
    QTest::newRow("own table first") << QStringList{"home", "installed", "source"} << "home";
    QTest::newRow("installed beside the program") << QStringList{"installed", "source"} << "installed";
    QTest::newRow("source tree of a build tree") << QStringList{"source"} << "source";
    QTest::newRow("a build tree whose source has none") << QStringList{"marker only"} << "home";
    QTest::newRow("nowhere") << QStringList{} << "home";
}

void tst_PlaceTable::lookupOrder()
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
        if (lcTables.contains(lsWhere))
            Put(lcTables[lsWhere], "1;1;x\r\n");
        if (lsWhere == "source" || lsWhere == "marker only")
            Put(lsRoot + "prefix/CorvaneSourceDir.txt", (lsRoot + "src\n").toUtf8());
    }
    QCOMPARE(QFileInfo(clsApplication::LocatePlacesFile(lsRoot + "home/", lsRoot + "prefix/bin")).absoluteFilePath(),
             QFileInfo(lcTables[found]).absoluteFilePath());
}

// The tests run from the build tree: the marker the build writes leads to the shipped table.
void tst_PlaceTable::buildTreeFindsItsSourceTree()
{
    QTemporaryDir lcHome;
    const QString lsFound = clsApplication::LocatePlacesFile(lcHome.path() + QLatin1Char('/'),
                                                             QStringLiteral(CORVANE_BINARY_DIR "/tests"));
    QCOMPARE(QFileInfo(lsFound).canonicalFilePath(),
             QFileInfo(QStringLiteral(CORVANE_TEST_DATA "/../../share/postcode.gps")).canonicalFilePath());
}

// Both boxes of a missing table come from Init, before any operation.
void tst_PlaceTable::errorBoxesComeAtStartUp()
{
    TestApp lcTest(nullptr, false);
    clsPlatform lcPlatform = lcTest.app->Platform();
    lcPlatform.PlacesFile = lcTest.Home() + QStringLiteral("missing/postcode.gps");
    lcTest.app.reset();
    lcTest.app = std::make_unique<clsApplication>(lcPlatform);
    lcTest.app->Init();
    QCOMPARE(lcTest.dialogs.boxes.size(), 2);
    QCOMPARE(lcTest.dialogs.boxes[0].text, QStringLiteral("ERROR Can't find file :postcode.gps"));
    QCOMPARE(lcTest.dialogs.boxes[1].text, QStringLiteral("ERROR in opening file:postcode.gps"));
    QCOMPARE(lcTest.dialogs.boxes[1].title, QStringLiteral("Error"));
    QVERIFY(lcTest.app->IsInitialised());
}

QTEST_GUILESS_MAIN(tst_PlaceTable)
#include "tst_placetable.moc"
