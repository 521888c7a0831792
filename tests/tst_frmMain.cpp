// The main window under the offscreen platform, on the virtual clock against
// the simulated display: every control by its name and caption, the tabs, the
// frame around each action, the record grid's filter, the placeholders, the
// quit question, the About box and the port dialog.

#include "GoldenData.h"
#include "SimRig.h"
#include "app/clsSettings.h"
#include "sim/clsSimDataGenerator.h"
#include "sim/clsSimSamples.h"
#include "ui/clsRecordTableModel.h"
#include "ui/frmAbout.h"
#include "ui/frmMain.h"
#include "ui/frmSelectComPort.h"

#include <QtTest>
#include <QtWidgets>

namespace {
// The window on a simulated display holding a few generated days.
struct WindowRig {
    frmMain window;
    SimRig rig{&window};

    // Two days of driving hold trips and alarms; every kind of record needs about eight.
    explicit WindowRig(int vlDays = 2)
    {
        window.Attach(rig.app());
        // sampled at every status change and grid rebuild while an operation runs
        const auto lcSample = [this]() {
            if (app().CommunicationIsRunning())
                during << Enabled().contains(true);
        };
        QObject::connect(&app(), &clsApplication::StatusShown, &window, lcSample);
        QObject::connect(&window.GridModel(), &QAbstractItemModel::modelReset, &window, lcSample);
        if (vlDays > 0) {
            QByteArray lcFlash = rig.display.Flash();
            QString lsError;
            clsSimDataGenerator::FillLog(lcFlash, rig.display.FirstPage(), rig.display.LastPage(),
                                         rig.display.SizeOnePage(), 7, vlDays, lsError);
            rig.display.SetFlash(lcFlash);
        }
    }
    clsApplication& app() { return rig.app(); }
    template <typename T>
    T* Find(const QString& vsName)
    {
        return window.findChild<T*>(vsName);
    }
    void Click(const QString& vsName)
    {
        QAbstractButton* lcButton = Find<QAbstractButton>(vsName);
        QVERIFY2(lcButton, qPrintable(vsName));
        lcButton->click();
    }
    // Runs the test's body as Start runs the window: shown, auto-detection on.
    void Show()
    {
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }
    // Whether controls all over the window are on: the Exit button, the tabs,
    // the File menu, a record filter box and an upload tick box.
    QList<bool> Enabled()
    {
        return {Find<QPushButton>(QStringLiteral("cmdExit"))->isEnabled(),
                Find<QTabWidget>(QStringLiteral("tbsSelect"))->tabBar()->isEnabled(),
                Find<QMenu>(QStringLiteral("mnu_File"))->menuAction()->isEnabled(),
                Find<QCheckBox>(QStringLiteral("chePoliceCheck"))->isEnabled(),
                Find<QCheckBox>(QStringLiteral("chkSelectKVTCC"))->isEnabled()};
    }
    // Whether any of them was on, at each sample while an operation ran.
    QList<bool> during;
};

// A progress bar's text is its percentage, no caption.
QString Caption(QObject* vcControl)
{
    for (const char* lsProperty : {"title", "plainText", "text"})
        if (!qobject_cast<QProgressBar*>(vcControl) && vcControl->property(lsProperty).isValid())
            return vcControl->property(lsProperty).toString();
    return QString();
}

const QStringList kGridBoxes = {"cheRitRegistratie", "chePoliceCheck", "cheRitRegistratieTankstop",
                                "chePoliceCheckTc", "cheDebugRoute", "cheDebugKmCorrection"};
// Select button and tick box suffix, text box, settings index, dialog filter.
const QList<QStringList> kFileRows = DataTable(QStringLiteral("frmMain-files.txt"), 4);
struct FrameCase { QString control; bool silent; QList<MsgResult> answers; QString status; };
// A row of tests/data/frmMain-uploads.txt.
struct UploadCase { QString button; QStringList clicks; QString file, box; };
}
Q_DECLARE_METATYPE(FrameCase)
Q_DECLARE_METATYPE(UploadCase)

class tst_frmMain : public QObject
{
    Q_OBJECT

private slots:
    // The application's timers share one event loop: one rig at a time.
    void init()
    {
        if (QByteArray(QTest::currentTestFunction()) != "gridFilter")
            mcFilterRig.reset();
    }
    void cleanupTestCase() { mcFilterRig.reset(); }
    void controls_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("caption");
        for (const QStringList& f : DataTable(QStringLiteral("frmMain-controls.txt"), 2))
            QTest::newRow(qPrintable(f[0])) << f[0] << f[1];
    }
    void controls()
    {
        QFETCH(QString, name);
        QFETCH(QString, caption);
        frmMain lcWindow;
        const QList<QObject*> lcFound = lcWindow.findChildren<QObject*>(name);
        QCOMPARE(lcFound.size(), 1);
        QCOMPARE(Caption(lcFound.first()), caption);
    }
    void firstActivation()
    {
        WindowRig w;
        w.app().Settings().SetLastFilenames(1, QStringLiteral("/data/spots.ssl"));
        w.app().Settings().SetLastFilenames(12, QStringLiteral("/data/sounds.kvt_snd"));
        QCOMPARE(w.window.windowTitle(), QStringLiteral("KVT Desktop"));
        w.Show();
        QCOMPARE(w.window.windowTitle(), QStringLiteral("Corvane Desktop"));
        auto* lcTabs = w.Find<QTabWidget>(QStringLiteral("tbsSelect"));
        QStringList lcShown; // caption, key, page
        for (int i = 0; i < lcTabs->count(); ++i)
            lcShown << lcTabs->tabText(i) + QLatin1Char('|') + w.window.TabKey(i) + QLatin1Char('|')
                           + lcTabs->widget(i)->objectName();
        QCOMPARE(lcShown, (QStringList{"Get Route Logging and PoliceCheck|1A|pctShifting_1", "Update Display|4A|pctShifting_4",
                                       "Update Corvane Operating System|3A|pctShifting_3", "Update SpotList|2A|pctShifting_2"}));
        QCOMPARE(lcTabs->currentIndex(), 0);
        QVERIFY(!w.Find<QWidget>(QStringLiteral("pctShifting_5"))->isVisible());
        QVERIFY(lcTabs->indexOf(w.Find<QWidget>(QStringLiteral("pctShifting_5"))) < 0);
        QCOMPARE(w.Find<QTableView>(QStringLiteral("flexGrid"))->model()->rowCount() + 1, 14);
        QCOMPARE(w.Find<QTableView>(QStringLiteral("flexGrid"))->model()->columnCount(), 21);
        QCOMPARE(w.Find<QLineEdit>(QStringLiteral("txtUpdateDbSSL"))->text(), QStringLiteral("/data/spots.ssl"));
        QCOMPARE(w.Find<QLineEdit>(QStringLiteral("txtSelectKVTSND"))->text(), QStringLiteral("/data/sounds.kvt_snd"));
    }
    void frame_data()
    {
        QTest::addColumn<FrameCase>("c");
        QTest::newRow("Copy") << FrameCase{"cmdDownload", false, {}, "Copied"};
        QTest::newRow("Copy, display silent, cancelled")
            << FrameCase{"cmdDownload", true, {MsgResult::Cancel}, "Action cancelled by user."};
        QTest::newRow("Route log box") << FrameCase{"cheRitRegistratie", false, {}, "Copied"};
        QTest::newRow("DBG kmCo box") << FrameCase{"cheDebugKmCorrection", false, {}, "Copied"};
        QTest::newRow("Show route") << FrameCase{"cheShowRoute", false, {}, "Copied"};
        QTest::newRow("Clear Log") << FrameCase{"cmdClearRouteAndPoliceTable", false, {MsgResult::Yes}, ""};
    }
    // Disabled while the operation works (sampled at every status change),
    // enabled after it, also after an error.
    void frame()
    {
        QFETCH(FrameCase, c);
        WindowRig w;
        w.Show();
        w.rig.display.Faults().SilentFromRequest = c.silent ? 1 : 0;
        w.rig.t.dialogs.answers.append(c.answers);
        w.Click(c.control);
        QVERIFY(!w.during.isEmpty() && !w.during.contains(true));
        QVERIFY(!w.Enabled().contains(false));
        const QString lsStatus = w.Find<QLabel>(QStringLiteral("lblStatusLine"))->text();
        QVERIFY2(c.status.isEmpty() || lsStatus.startsWith(c.status), qPrintable(lsStatus));
        QVERIFY(!w.app().CommunicationIsRunning());
    }
    void uploadPages_data()
    {
        QTest::addColumn<UploadCase>("c");
        for (const QStringList& f : DataTable(QStringLiteral("frmMain-uploads.txt"), 5))
            QTest::newRow(qPrintable(f[0])) << UploadCase{f[1], f[2].split(QLatin1Char(' '), Qt::SkipEmptyParts), f[3], f[4]};
    }
    // The tick boxes reach the upload the button starts; the window is off while
    // the upload talks to the display and on again after it.
    void uploadPages()
    {
        QFETCH(UploadCase, c);
        WindowRig w(0);
        w.rig.display.SetGeometry(0, 8, 8, 64);
        w.Show();
        if (!c.file.isEmpty()) {
            const QString lsPath = w.rig.t.Home() + c.file;
            WriteAll(lsPath, QByteArray(100, 'x'));
            // only the clicked rows name the file: a box wired to another row fails the upload
            for (const QStringList& f : kFileRows)
                if (c.clicks.contains(QStringLiteral("chkSelect") + f[0]))
                    w.app().Settings().SetLastFilenames(qint16(f[2].toInt()), lsPath);
        }
        for (const QString& lsBox : c.clicks)
            w.Click(lsBox);
        const int llRequests = w.rig.display.Requests().size();
        w.Click(c.button);
        QCOMPARE(w.rig.t.dialogs.Shown(true), QStringList{c.box});
        // a ticked box with no file still greets the display before the files are checked
        const bool lbTalked = !c.box.contains(QLatin1String("Please select"));
        QCOMPARE(w.rig.display.Requests().size() > llRequests, lbTalked);
        QVERIFY(!lbTalked || (!w.during.isEmpty() && !w.during.contains(true)));
        QVERIFY(!w.Enabled().contains(false));
        QVERIFY(!w.app().CommunicationIsRunning());
    }
    void selectButtons_data()
    {
        QTest::addColumn<QStringList>("row");
        for (const QStringList& f : kFileRows)
            QTest::newRow(qPrintable(f[0])) << f;
    }
    // Each Select button opens the dialog with its type's filter in the last
    // file's directory and chooses the file of its own row and nothing else; a cancel changes nothing.
    void selectButtons()
    {
        QFETCH(QStringList, row);
        const QString lsButton = QStringLiteral("cmdSelect") + row[0], &textBox = row[1];
        const qint16 index = qint16(row[2].toInt());
        WindowRig w(0);
        w.app().Settings().SetLastFilenames(index, w.rig.t.Home() + QStringLiteral("old.file"));
        w.Show();
        w.Click(lsButton);
        QCOMPARE(w.rig.t.dialogs.dialogFilters, QStringList{row[3]});
        QCOMPARE(w.rig.t.dialogs.dialogInitDirs, QStringList{w.rig.t.Home()});
        QCOMPARE(w.Find<QLineEdit>(textBox)->text(), w.rig.t.Home() + QStringLiteral("old.file"));
        w.rig.t.dialogs.fileNames << QStringLiteral("/new/one");
        w.Click(lsButton);
        QCOMPARE(w.Find<QLineEdit>(textBox)->text(), QStringLiteral("/new/one"));
        QCOMPARE(w.app().Settings().LastFilenames(index), QStringLiteral("/new/one"));
        int llChanged = 0;
        for (QLineEdit* lcBox : w.window.findChildren<QLineEdit*>())
            llChanged += lcBox->text() == QLatin1String("/new/one");
        QCOMPARE(llChanged, 1);
    }
    void stopFirmwareOnClose_data()
    {
        QTest::addColumn<MsgResult>("answer");
        QTest::addColumn<bool>("closed");
        QTest::newRow("Yes stops the update and closes") << MsgResult::Yes << true;
        QTest::newRow("No lets it run") << MsgResult::No << false;
    }
    // The unit stays silent, so the stream would run for ever: only the user's
    // Yes (or, after No, the test itself) stops it.
    void stopFirmwareOnClose()
    {
        QFETCH(MsgResult, answer);
        QFETCH(bool, closed);
        WindowRig w(0);
        w.Show();
        const QString lsFile = w.rig.t.Home() + QStringLiteral("fw.kvt_md");
        WriteAll(lsFile, clsSimSamples::FirmwareFile(300));
        w.app().Settings().SetLastFilenames(11, lsFile);
        w.app().ShowLastUploadFiles();
        w.rig.bootloader.SetSilentLines(1000000);
        w.rig.t.dialogs.answers << answer;
        w.rig.clock->ScheduleIn(50000, [&]() { w.window.close(); });
        w.rig.clock->ScheduleIn(200000, [&]() { w.app().RequestCancel(); });
        w.Click(QStringLiteral("cmdInstallKVTMemoryDisplay"));
        QCoreApplication::processEvents();
        QCOMPARE(w.rig.t.dialogs.Shown(true),
                 (QStringList{"Corvane Desktop: The Memory Display firmware is being updated.\r\n"
                              "Stop the update? [YesNo Question]",
                              "Corvane Desktop: Firmware update stopped: the Memory Display stays in its bootloader until "
                              "the update is run again. [OK Exclamation]"}));
        const quint32 llStopped = closed ? 50000 : 200000;
        QVERIFY2(w.rig.clock->timeGetTime() >= llStopped && w.rig.clock->timeGetTime() < llStopped + 10000,
                 qPrintable(QString::number(w.rig.clock->timeGetTime())));
        QCOMPARE(w.window.isVisible(), !closed);
    }
    void gridFilter_data()
    {
        QTest::addColumn<QStringList>("boxes");
        QTest::addColumn<QList<int>>("types");
        for (const QStringList& f : DataTable(QStringLiteral("frmMain-grid.txt"), 3)) {
            QList<int> lcTypes;
            for (const QString& lsType : f[2].split(QLatin1Char(' '), Qt::SkipEmptyParts))
                lcTypes << lsType.toInt();
            QTest::newRow(qPrintable(f[0])) << f[1].split(QLatin1Char(' '), Qt::SkipEmptyParts) << lcTypes;
        }
    }
    // The rows are the valid records of the ticked kinds in record order, each once.
    void gridFilter()
    {
        QFETCH(QStringList, boxes);
        QFETCH(QList<int>, types);
        if (!mcFilterRig) {
            mcFilterRig = std::make_unique<WindowRig>(8);
            mcFilterRig->Show();
            mcFilterRig->Click(QStringLiteral("cmdDownload"));
        }
        WindowRig& w = *mcFilterRig;
        for (const QString& lsBox : kGridBoxes)
            if (w.Find<QCheckBox>(lsBox)->isChecked() != boxes.contains(lsBox))
                w.Click(lsBox);
        QStringList lcExpected;
        clsRecordCollection& lcRecords = w.app().Records();
        for (int i = 1; i <= lcRecords.Count(); ++i) {
            clsHalvexRecord& lcRecord = lcRecords.Item(i);
            if (lcRecord.IsValid() && types.contains(lcRecord.RecordType()))
                lcExpected << lcRecord.GetFullStringWithDelimiter(QStringLiteral("\t"), false);
        }
        QAbstractItemModel* lcModel = w.Find<QTableView>(QStringLiteral("flexGrid"))->model();
        QStringList lcShown;
        for (int r = 0; r < lcModel->rowCount(); ++r) {
            QStringList lcCells;
            for (int c = 0; c < lcModel->columnCount(); ++c)
                lcCells << lcModel->index(r, c).data().toString();
            lcShown << lcCells.join(QLatin1Char('\t'));
        }
        QCOMPARE(lcShown, lcExpected);
        QVERIFY(types.isEmpty() || !lcExpected.isEmpty());
        // The widths come from a sample of the rows, which holds the header, the first and the last row.
        auto* lcGrid = w.Find<QTableView>(QStringLiteral("flexGrid"));
        for (int c = 0; c < lcModel->columnCount(); ++c) {
            QCOMPARE_GE(lcGrid->columnWidth(c), lcGrid->horizontalHeader()->fontMetrics().horizontalAdvance(
                                                    lcModel->headerData(c, Qt::Horizontal).toString()));
            for (const QString& lsRow : {lcShown.value(0), lcShown.value(lcShown.size() - 1)})
                QCOMPARE_GE(lcGrid->columnWidth(c), lcGrid->fontMetrics().horizontalAdvance(lsRow.section('\t', c, c)));
        }
    }
    void placeholders_data()
    {
        QTest::addColumn<QString>("control");
        for (const char* lcName : {"cmdExportRouteAndPoliceToExcel", "cmdExportToExcelStopAndFalseList",
                                   "cmdRetreiveSpotAndFalseList", "cmdSaveSpotAndFalseList"})
            QTest::newRow(lcName) << QString::fromLatin1(lcName);
    }
    void placeholders()
    {
        QFETCH(QString, control);
        WindowRig w(0);
        w.Show();
        w.app().SetDataSaved(false);
        const int llRows = w.window.GridModel().rowCount();
        const int llRequests = w.rig.display.Requests().size();
        w.Click(control);
        QCOMPARE(w.rig.t.dialogs.Shown(true), QStringList{"Corvane Desktop: Functionality not implemented [OK Information]"});
        QCOMPARE(w.window.GridModel().rowCount(), llRows);
        QCOMPARE(w.rig.display.Requests().size(), llRequests);
        QVERIFY(!w.app().DataSaved());
    }
    void quitQuestion_data()
    {
        QTest::addColumn<bool>("copied");
        QTest::addColumn<QList<MsgResult>>("answers");
        QTest::addColumn<bool>("closed");
        QTest::newRow("unsaved, No keeps everything") << true << QList<MsgResult>{MsgResult::No} << false;
        QTest::newRow("unsaved, Yes quits") << true << QList<MsgResult>{MsgResult::Yes} << true;
        QTest::newRow("nothing unsaved: no question") << false << QList<MsgResult>{} << true;
    }
    void quitQuestion()
    {
        QFETCH(bool, copied);
        QFETCH(QList<MsgResult>, answers);
        QFETCH(bool, closed);
        WindowRig w;
        w.Show();
        if (copied)
            w.Click(QStringLiteral("cmdDownload"));
        const int llRows = w.window.GridModel().rowCount();
        w.rig.t.dialogs.answers.append(answers);
        w.Click(QStringLiteral("cmdExit"));
        QCOMPARE(w.rig.t.dialogs.Shown(true),
                 QStringList(answers.size(), "Corvane Desktop: Information is not saved.\r\n"
                                             "Are you sure you want to quite? [YesNo Question]"));
        QCOMPARE(w.window.isVisible(), !closed);
        QCOMPARE(w.app().DataSaved(), closed);
        QCOMPARE(w.window.GridModel().rowCount(), llRows);
    }
    // A display plugged in during a Copy is greeted only after the Copy.
    void noDetectionDuringOperation()
    {
        WindowRig w;
        w.app().Start([&]() {
            w.Show();
            w.rig.clock->Advance(900);
            w.rig.display.SetJustConnected(true);
            w.Click(QStringLiteral("cmdDownload"));
            QVERIFY(!w.rig.Funcs().contains(0xD0));
            QVERIFY2(w.rig.clock->timeGetTime() > 1000, qPrintable(QString::number(w.rig.clock->timeGetTime())));
            w.rig.clock->Advance(1100);
            QCOMPARE(w.rig.display.ScreenText().value(0), QStringLiteral("Connected to"));
        });
    }
    void about_data()
    {
        QTest::addColumn<QList<int>>("version");
        QTest::addColumn<QString>("text");
        QTest::newRow("1.2.31") << QList<int>{1, 2, 31} << "Version: 1.2.31";
        QTest::newRow("revision 0 shown") << QList<int>{2, 0, 0} << "Version: 2.0.0";
    }
    void about()
    {
        QFETCH(QList<int>, version);
        QFETCH(QString, text);
        QCOMPARE(frmAbout::VersionText(version.at(0), version.at(1), version.at(2)), text);
        frmAbout lcAbout;
        QCOMPARE(lcAbout.windowTitle(), QStringLiteral("Corvane Desktop"));
        QCOMPARE(lcAbout.findChild<QLabel*>(QStringLiteral("lblTxtKVTDesktop"))->text(), QStringLiteral("Corvane Desktop"));
        QCOMPARE(lcAbout.findChild<QLabel*>(QStringLiteral("lblVersion"))->text(),
                 QStringLiteral("Version: ") + clsApplication::VersionString());
        auto* lcOk = lcAbout.findChild<QPushButton*>(QStringLiteral("cmdOk"));
        QCOMPARE(lcOk->text(), QStringLiteral("&Ok"));
        lcAbout.show();
        lcOk->click();
        QVERIFY(!lcAbout.isVisible());
    }
    void portDialog()
    {
        const QList<IRegistry::SerialDevice> lcDevices = {
            {QStringLiteral("/dev/ttyS0"), QStringLiteral("built-in"), false, 0, 0},
            {QStringLiteral("/dev/ttyUSB0"), QStringLiteral("FT232R"), true, 0x0403, 0xE990},
            {QStringLiteral("COM4"), QString(), false, 0, 0},
        };
        frmSelectComPort lcDialog(lcDevices);
        QCOMPARE(lcDialog.windowTitle(), QStringLiteral("Setup Com-Port"));
        auto* lcList = lcDialog.findChild<QComboBox*>(QStringLiteral("cboComport"));
        QStringList lcEntries;
        for (int i = 0; i < lcList->count(); ++i)
            lcEntries << lcList->itemText(i);
        QCOMPARE(lcEntries, (QStringList{"Com1", "Com2", "Com3", "Com4", "Com5", "Com6", "Com7", "Com8", "Com9",
                                         "/dev/ttyS0  (built-in)", "/dev/ttyUSB0  (KVT USB interface)"}));
        lcDialog.SetComport(QStringLiteral("3"));
        QCOMPARE(lcList->currentText(), QStringLiteral("Com3"));
        QCOMPARE(lcDialog.GetComport(), QStringLiteral("3"));
        lcDialog.SetComport(QStringLiteral("/dev/ttyUSB0"));
        QCOMPARE(lcDialog.GetComport(), QStringLiteral("/dev/ttyUSB0"));
        lcDialog.findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
        QVERIFY(!lcDialog.OkPressed());
        lcDialog.findChild<QPushButton*>(QStringLiteral("cmdOk"))->click();
        QVERIFY(lcDialog.OkPressed());
    }

private:
    // One download serves every row of the filter table.
    std::unique_ptr<WindowRig> mcFilterRig;
};

QTEST_MAIN(tst_frmMain)
#include "tst_frmMain.moc"
