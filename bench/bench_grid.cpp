// The record grid of the main window with a full display: how long after
// the pipeline the records show, how fast the grid scrolls, and how long a
// selection box takes to refill it. Offscreen, with the real window.
//
//   bench_grid [--pages N] [--scrolls K]
//       has bench_pipeline write the page files of a full display (pages 1..N,
//       default 255, of 64 KiB), decodes them with the world-cities place
//       table, then times the grid.

#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "app/clsError.h"
#include "data/clsFlashMemInfo.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/QtEventLoop.h"
#include "ui/clsRecordTableModel.h"
#include "ui/frmMain.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <sys/resource.h>
#include <vector>

namespace {
constexpr int kSizeLog2 = 16;

int Argument(const QStringList& vcArgs, const QString& vsName, int vlDefault)
{
    const int llAt = int(vcArgs.indexOf(vsName));
    return llAt >= 0 && llAt + 1 < vcArgs.size() ? vcArgs.at(llAt + 1).toInt() : vlDefault;
}

double CpuMs()
{
    rusage lcUsage{};
    getrusage(RUSAGE_SELF, &lcUsage);
    return double(lcUsage.ru_utime.tv_sec + lcUsage.ru_stime.tv_sec) * 1e3
        + double(lcUsage.ru_utime.tv_usec + lcUsage.ru_stime.tv_usec) / 1e3;
}

// What a filter box's operation does after the display check, and the paint
// that shows it: the core's ShowRecords (the shown rows' checks, then the
// window finds its rows), the column widths, the paint; wall and CPU
// milliseconds of each step.
QString ShowRecords(clsApplication& rcApp, frmMain& rcWindow, QTableView& rcGrid)
{
    QString lsTimes;
    const std::function<void()> lcSteps[] = {[&]() {
                                                 rcWindow.ClearGrid();
                                                 clsError lcError;
                                                 rcApp.ShowRecords(lcError);
                                             },
                                             [&]() { rcWindow.AutoSizeTheColumns(); },
                                             [&]() { rcGrid.viewport()->repaint(); }};
    const char* const lcNames[] = {"rows", "column widths", "paint"};
    double ldWall = 0, ldCpu = 0;
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer lcTimer;
        lcTimer.start();
        const double ldCpuBefore = CpuMs();
        lcSteps[i]();
        const double ldStepCpu = CpuMs() - ldCpuBefore;
        const double ldStepWall = double(lcTimer.nsecsElapsed()) / 1e6;
        ldWall += ldStepWall;
        ldCpu += ldStepCpu;
        lsTimes += QStringLiteral("%1 %2/%3, ").arg(QLatin1String(lcNames[i])).arg(ldStepWall, 0, 'f', 0).arg(ldStepCpu, 0, 'f', 0);
    }
    return QStringLiteral("%1 ms wall, %2 ms CPU (%3)").arg(ldWall, 0, 'f', 0).arg(ldCpu, 0, 'f', 0).arg(lsTimes.chopped(2));
}

void Scroll(QTableView& rcGrid, int vlSteps)
{
    QScrollBar* lcBar = rcGrid.verticalScrollBar();
    std::vector<double> lcTimes;
    QRandomGenerator lcRandom(5);
    for (int i = 0; i < vlSteps; ++i) {
        QElapsedTimer lcTimer;
        lcTimer.start();
        // A page down most of the time, now and then a jump as a dragged scroll bar makes.
        const int llTo = i % 10 == 9 ? int(lcRandom.bounded(lcBar->maximum() + 1)) : lcBar->value() + lcBar->pageStep();
        lcBar->setValue(qMin(llTo, lcBar->maximum()));
        rcGrid.viewport()->repaint();
        lcTimes.push_back(double(lcTimer.nsecsElapsed()) / 1e6);
    }
    std::sort(lcTimes.begin(), lcTimes.end());
    double ldSum = 0;
    for (double ldTime : lcTimes)
        ldSum += ldTime;
    std::printf("scroll: %d steps, mean %.2f ms, median %.2f ms, slowest %.2f ms\n", vlSteps, ldSum / vlSteps,
                lcTimes[lcTimes.size() / 2], lcTimes.back());
}
}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication lcQt(argc, argv);
    const QStringList lcArgs = QApplication::arguments();
    const int llPages = Argument(lcArgs, QStringLiteral("--pages"), 255);
    const int llScrolls = Argument(lcArgs, QStringLiteral("--scrolls"), 200);

    QTemporaryDir lcHome;
    QProcess lcPrepare;
    lcPrepare.setProcessChannelMode(QProcess::ForwardedChannels);
    lcPrepare.start(QStringLiteral(CORVANE_BENCH_DIR "/bench_pipeline"),
                    {QStringLiteral("--prepare"), lcHome.path(), QStringLiteral("--pages"), QString::number(llPages)});
    if (!lcPrepare.waitForFinished(-1) || lcPrepare.exitCode() != 0) {
        std::fprintf(stderr, "bench_pipeline --prepare failed\n");
        return 1;
    }

    QtEventLoop lcLoop;
    FakeUserDialogs lcDialogs;
    frmMain lcWindow;
    clsPlatform lcPlatform;
    lcPlatform.EventLoop = &lcLoop;
    lcPlatform.Dialogs = &lcDialogs;
    lcPlatform.MainWindow = &lcWindow;
    lcPlatform.HomeDir = lcHome.path();
    lcPlatform.PlacesFile = QStringLiteral(CORVANE_SHARED_DATA "/world-cities.gps");
    clsApplication lcApp(lcPlatform);
    lcWindow.Attach(lcApp);
    lcApp.Init();
    lcWindow.resize(1280, 800);
    lcWindow.show();
    QApplication::processEvents();
    auto* lcGrid = lcWindow.findChild<QTableView*>(QStringLiteral("flexGrid"));

    clsFlashMemInfo lcInfo;
    lcInfo.SetFirstPage(0);
    lcInfo.SetLastPage(llPages);
    lcInfo.SetSizeOnePage(kSizeLog2);
    lcInfo.SetMaxDataOneMessage(64);
    clsError lcError;
    QElapsedTimer lcTimer;
    lcTimer.start();
    lcApp.DecodeAndProcess(lcError, lcInfo);
    if (lcError.IsError()) {
        std::fprintf(stderr, "error: %s\n", qPrintable(lcError.Description()));
        return 1;
    }
    std::printf("pipeline: %lld ms, %d records\n", qint64(lcTimer.elapsed()), lcApp.Records().Count());
    const QString lsShow = ShowRecords(lcApp, lcWindow, *lcGrid);
    std::printf("grid after the pipeline, %d rows: %s\n", lcWindow.GridModel().RecordRows(), qPrintable(lsShow));
    Scroll(*lcGrid, llScrolls);

    const struct {
        const char* what;
        bool clsRecordSelection::*box;
    } kBoxes[] = {{"Route log off", &clsRecordSelection::cheRitRegistratie},
                  {"DBG route on", &clsRecordSelection::cheDebugRoute},
                  {"DBG route off", &clsRecordSelection::cheDebugRoute},
                  {"Route log on", &clsRecordSelection::cheRitRegistratie}};
    for (const auto& lcBox : kBoxes) {
        lcApp.Selection().*lcBox.box = !(lcApp.Selection().*lcBox.box);
        const QString lsShow = ShowRecords(lcApp, lcWindow, *lcGrid);
        std::printf("filter box, %s, %d rows: %s\n", lcBox.what, lcWindow.GridModel().RecordRows(), qPrintable(lsShow));
    }
    return 0;
}
