// Record pipeline: from the page files of a full display to the finished
// records in the grid, with the world-cities place table, timed and with the
// process's peak memory.
//
//   bench_pipeline [--pages N] [--size-log2 S] [--seed S]
//       fills pages 1..N (default 255) of 2^S bytes (default 16) with a generated
//       logbook, writes the page files to a temporary directory, then decodes
//       and processes them in a fresh process (so the generation's memory does
//       not count) and reports time, records and peak resident memory.
//   bench_pipeline --prepare DIR [--pages N] [--size-log2 S] [--seed S]
//       only writes the page files and geometry.txt into DIR (a golden set).
//   bench_pipeline --run DIR [--pages N] [--size-log2 S]
//       only the measured part, on page files already in DIR.

#include "FakeUserDialogs.h"
#include "PageFile.h"
#include "app/clsApplication.h"
#include "app/clsError.h"
#include "data/clsFlashMemInfo.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/IMainWindow.h"
#include "platform/QtEventLoop.h"
#include "sim/clsSimDataGenerator.h"
#include "ui/clsRecordTableModel.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <sys/resource.h>

namespace {
struct Options {
    int pages = 255;
    int sizeLog2 = 16;
    quint32 seed = 11;
    QString prepare;
    QString run;
};

Options Parse(const QStringList& vcArgs)
{
    Options lcOptions;
    for (int i = 1; i + 1 < vcArgs.size(); i += 2) {
        const QString& lsKey = vcArgs[i];
        const QString& lsValue = vcArgs[i + 1];
        if (lsKey == QLatin1String("--pages"))
            lcOptions.pages = lsValue.toInt();
        else if (lsKey == QLatin1String("--size-log2"))
            lcOptions.sizeLog2 = lsValue.toInt();
        else if (lsKey == QLatin1String("--seed"))
            lcOptions.seed = lsValue.toUInt();
        else if (lsKey == QLatin1String("--prepare"))
            lcOptions.prepare = lsValue;
        else if (lsKey == QLatin1String("--run"))
            lcOptions.run = lsValue;
    }
    return lcOptions;
}

// Enough days of driving to fill every page, then the page files the
// download would write: one decimal byte a line, CR LF.
bool Prepare(const Options& vcOptions, const QString& vsDirectory)
{
    QString lsError;
    const QVector<clsSimPlace> lcPlaces =
        clsSimDataGenerator::LoadPlaces(clsSimDataGenerator::DefaultPlacesFile(), lsError);
    if (lcPlaces.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(lsError));
        return false;
    }
    const qint64 llCapacity = qint64(vcOptions.pages) * ((1 << vcOptions.sizeLog2) / 24);
    clsSimDataGenerator lcGenerator(lcPlaces);
    const qint64 llPerDay = qMax<qint64>(1, lcGenerator.Generate(vcOptions.seed, 100).size() / 100);
    QByteArray lcFlash;
    QVector<clsSimRecordFields> lcRecords;
    for (int llDays = int(llCapacity / llPerDay) + 1; lcRecords.size() < llCapacity; llDays += llDays / 10 + 1)
        lcRecords = lcGenerator.Generate(vcOptions.seed, llDays);
    clsSimDataGenerator::WriteLog(lcFlash, lcRecords, 0, vcOptions.pages, vcOptions.sizeLog2);

    QDir().mkpath(vsDirectory);
    const int llPageSize = 1 << vcOptions.sizeLog2;
    for (int llPage = 1; llPage <= vcOptions.pages; ++llPage)
        if (!WritePageFile(QDir(vsDirectory).filePath(QStringLiteral("Page%1.DSW").arg(llPage)),
                           lcFlash.mid(qsizetype(llPage) * llPageSize, llPageSize)))
            return false;
    QFile lcGeometry(QDir(vsDirectory).filePath(QStringLiteral("geometry.txt")));
    if (!lcGeometry.open(QIODevice::WriteOnly))
        return false;
    lcGeometry.write(QByteArray::number(0) + ' ' + QByteArray::number(vcOptions.pages) + ' '
                     + QByteArray::number(vcOptions.sizeLog2) + '\n');
    return true;
}


class NullBar : public IProgressBar
{
public:
    bool Visible() const override { return visible; }
    void SetVisible(bool v) override { visible = v; }
    int Min() const override { return min; }
    void SetMin(int v) override { min = v; }
    int Max() const override { return max; }
    void SetMax(int v) override { max = v; }
    int Value() const override { return value; }
    void SetValue(int v) override { value = v; }
    bool visible = false;
    int min = 0, max = 100, value = 0;
};

// Does on each change what the main window does on a refill, through the
// window's own table model: finds the shown rows, reads the texts its column
// widths are taken from, and the cells of one screen of rows (a window of
// 1280 by 800 shows about 25).
class RefillingWindow : public IMainWindow
{
public:
    static constexpr int kScreenRows = 40;

    void SetStatusLine(const QString& vsText) override { status = vsText.trimmed(); }
    IProgressBar& ProgressBar(Bar) override { return bar; }
    void EnableButtons(bool) override {}
    void EnableMenu(bool) override {}
    void ClearGrid() override {}
    void RecordsChanged() override
    {
        model->Reload();
        characters = 0;
        for (const QString& lsText : model->LongestTexts())
            characters += lsText.size();
        for (int llRow = 0; llRow < std::min(kScreenRows, model->rowCount()); ++llRow)
            for (int c = 0; c < model->columnCount(); ++c)
                characters += model->data(model->index(llRow, c), Qt::DisplayRole).toString().size();
    }
    void RecordsCleared() override {}
    void AutoSizeTheColumns() override {}
    QString UploadFileText(int) const override { return {}; }
    void SetUploadFileText(int, const QString&) override {}
    void SetMdWarningHighlighted(bool) override {}
    void GiveUpWork() override {}

    NullBar bar;
    QString status;
    std::unique_ptr<clsRecordTableModel> model;
    qint64 characters = 0;
};

// The high-water mark of this process's resident memory. ru_maxrss would
// carry over the parent's peak through exec, so /proc is asked first.
double PeakMB()
{
    QFile lcStatus(QStringLiteral("/proc/self/status"));
    if (lcStatus.open(QIODevice::ReadOnly)) {
        for (const QByteArray& lcLine : lcStatus.readAll().split('\n')) {
            if (lcLine.startsWith("VmHWM:"))
                return lcLine.mid(6).trimmed().split(' ').first().toDouble() / 1024.0;
        }
    }
    rusage lcUsage{};
    getrusage(RUSAGE_SELF, &lcUsage);
    return double(lcUsage.ru_maxrss) / 1024.0;
}

double CpuSeconds()
{
    rusage lcUsage{};
    getrusage(RUSAGE_SELF, &lcUsage);
    return double(lcUsage.ru_utime.tv_sec + lcUsage.ru_stime.tv_sec)
        + double(lcUsage.ru_utime.tv_usec + lcUsage.ru_stime.tv_usec) / 1e6;
}

int Run(const Options& vcOptions)
{
    QtEventLoop lcLoop;
    FakeUserDialogs lcDialogs;
    RefillingWindow lcWindow;
    clsPlatform lcPlatform;
    lcPlatform.EventLoop = &lcLoop;
    lcPlatform.Dialogs = &lcDialogs;
    lcPlatform.MainWindow = &lcWindow;
    lcPlatform.HomeDir = vcOptions.run;
    lcPlatform.PlacesFile = QStringLiteral(CORVANE_SHARED_DATA "/world-cities.gps");
    clsApplication lcApp(lcPlatform);
    lcWindow.model = std::make_unique<clsRecordTableModel>(lcApp.Records(), lcApp.Selection());
    QElapsedTimer lcStartUp;
    lcStartUp.start();
    lcApp.Init();
    std::printf("start-up with the place table: %lld ms\n", qint64(lcStartUp.elapsed()));
    const double ldBefore = PeakMB();
    const double ldCpuBefore = CpuSeconds();

    clsFlashMemInfo lcInfo;
    lcInfo.SetFirstPage(0);
    lcInfo.SetLastPage(vcOptions.pages);
    lcInfo.SetSizeOnePage(vcOptions.sizeLog2);
    lcInfo.SetMaxDataOneMessage(64);
    clsError lcError;
    QElapsedTimer lcTimer;
    lcTimer.start();
    lcApp.DecodeAndProcess(lcError, lcInfo);
    const qint64 llMs = lcTimer.elapsed();
    const double ldCpu = CpuSeconds() - ldCpuBefore;
    if (lcError.IsError()) {
        std::fprintf(stderr, "error: %s\n", qPrintable(lcError.Description()));
        return 1;
    }
    std::printf("pages: %d of %d bytes; records: %d; grid rows: %d (%lld characters read)\n", vcOptions.pages,
                1 << vcOptions.sizeLog2, lcApp.Records().Count(), lcWindow.model->RecordRows(), lcWindow.characters);
    std::printf("status: %s\n", qPrintable(lcWindow.status));
    std::printf("pipeline: %lld ms wall, %.2f s CPU; peak resident memory %.1f MB (%.1f MB before the pipeline)\n",
                llMs, ldCpu, PeakMB(), ldBefore);
    return 0;
}
}

int main(int argc, char** argv)
{
    QCoreApplication lcApplication(argc, argv);
    Options lcOptions = Parse(lcApplication.arguments());
    if (!lcOptions.run.isEmpty())
        return Run(lcOptions);
    if (!lcOptions.prepare.isEmpty())
        return Prepare(lcOptions, lcOptions.prepare) ? 0 : 1;

    QTemporaryDir lcDir;
    QElapsedTimer lcTimer;
    lcTimer.start();
    if (!Prepare(lcOptions, lcDir.path()))
        return 1;
    std::printf("page files written in %lld ms\n", qint64(lcTimer.elapsed()));
    std::fflush(stdout);
    QProcess lcChild;
    lcChild.setProcessChannelMode(QProcess::ForwardedChannels);
    lcChild.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--run"), lcDir.path(), QStringLiteral("--pages"), QString::number(lcOptions.pages),
                   QStringLiteral("--size-log2"), QString::number(lcOptions.sizeLog2)});
    lcChild.waitForFinished(-1);
    return lcChild.exitCode();
}
