// Time to upload a 64 KiB database at 57600 bit/s against the wire time of the
// bytes the upload puts on the line: first on the virtual clock, then in real
// time against corvane-display-sim on its paced pty (which paces only the
// display's answers: the program's requests reach it at once).
//
//   ./build/bench/bench_upload [size-in-bytes] [--no-pty]

#include "FakeUserDialogs.h"
#include "app/clsApplication.h"
#include "app/clsSettings.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"
#include "platform/VirtualClock.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimSerialPort.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <cstdio>
#include <random>

namespace {
// The simulator's defaults: pages of 4096 bytes, 120 data bytes a message.
constexpr int kLog2 = 12;
constexpr int kMaxData = 120;
constexpr double kBytesPerMs = 5.76;

QByteArray Database(int vlSize)
{
    std::mt19937 lcRandom(64);
    QByteArray lcData;
    for (int i = 0; i < vlSize; ++i)
        lcData.append(char(lcRandom() & 0xFF));
    return lcData;
}

void Prepare(clsApplication& rcApp, const QString& vsFile)
{
    rcApp.Init();
    rcApp.Settings().SetLastFilenames(1, vsFile);
    rcApp.UploadSelection().SetTicked(UploadType::SSL, true);
}

struct VirtualRun {
    qint64 toDisplay = 0;
    qint64 fromDisplay = 0;
    quint32 ms = 0;
};

VirtualRun OnVirtualClock(const QString& vsFile)
{
    QTemporaryDir lcHome;
    VirtualClock lcClock;
    FakeUserDialogs lcDialogs;
    clsSimDisplay lcDisplay;
    lcDisplay.SetGeometry(0, 63, kLog2, kMaxData);
    clsSimSerialPort lcPort(lcDisplay, lcClock);
    clsPlatform lcPlatform;
    lcPlatform.EventLoop = &lcClock;
    lcPlatform.Dialogs = &lcDialogs;
    lcPlatform.Port = &lcPort;
    lcPlatform.HomeDir = lcHome.path();
    clsApplication lcApp(lcPlatform);
    Prepare(lcApp, vsFile);
    clsError lcError;
    lcApp.HandleUploadDatabases(lcError);
    if (lcError.IsError())
        std::fprintf(stderr, "virtual clock: %s\n", qPrintable(lcError.Description()));
    VirtualRun lcRun{lcPort.BytesToDisplay(), lcPort.BytesFromDisplay(), lcClock.timeGetTime()};
    lcApp.DeInit();
    return lcRun;
}

qint64 OverPty(const QString& vsFile, const QString& vsDir)
{
    const QString lsLink = vsDir + QStringLiteral("/kvt");
    QProcess lcSim;
    lcSim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    lcSim.start(QStringLiteral(CORVANE_SIM_BINARY), {"--link", lsLink, "--page-size-log2", QString::number(kLog2),
                                                       "--max-data", QString::number(kMaxData)});
    if (!lcSim.waitForReadyRead(5000)) {
        std::fprintf(stderr, "bench_upload: the simulator did not start\n");
        return -1;
    }
    QtEventLoop lcLoop;
    QtSerialPort lcPort(lcLoop);
    FakeUserDialogs lcDialogs;
    clsPlatform lcPlatform;
    lcPlatform.EventLoop = &lcLoop;
    lcPlatform.Dialogs = &lcDialogs;
    lcPlatform.Port = &lcPort;
    lcPlatform.HomeDir = vsDir;
    clsApplication lcApp(lcPlatform);
    Prepare(lcApp, vsFile);
    lcApp.Settings().SetPortPath(lsLink);
    lcApp.ApplyPortSettings();
    QElapsedTimer lcTimer;
    lcTimer.start();
    clsError lcError;
    lcApp.HandleUploadDatabases(lcError);
    const qint64 llMs = lcTimer.elapsed();
    lcApp.DeInit();
    lcSim.terminate();
    lcSim.waitForFinished(3000);
    if (lcError.IsError()) {
        std::fprintf(stderr, "pty: %s\n", qPrintable(lcError.Description()));
        return -1;
    }
    return llMs;
}
}

int main(int argc, char** argv)
{
    QCoreApplication lcQt(argc, argv);
    const QStringList lcArgs = QCoreApplication::arguments().mid(1);
    const int llSize = !lcArgs.isEmpty() && lcArgs[0].toInt() > 0 ? lcArgs[0].toInt() : 65536;
    QTemporaryDir lcDir;
    const QString lsFile = lcDir.filePath(QStringLiteral("bench.ssl"));
    QFile lcFile(lsFile);
    if (!lcFile.open(QIODevice::WriteOnly) || lcFile.write(Database(llSize)) != llSize)
        return 1;
    lcFile.close();

    const VirtualRun lcRun = OnVirtualClock(lsFile);
    const double ldWireMs = double(lcRun.toDisplay + lcRun.fromDisplay) / kBytesPerMs;
    const double ldAnswerMs = double(lcRun.fromDisplay) / kBytesPerMs;
    std::printf("%d bytes: %lld bytes to the display, %lld from it; wire time %.0f ms (answers %.0f ms)\n", llSize,
                lcRun.toDisplay, lcRun.fromDisplay, ldWireMs, ldAnswerMs);
    std::printf("virtual clock: %u ms, ratio %.3f\n", lcRun.ms, double(lcRun.ms) / ldWireMs);
    if (lcArgs.contains(QStringLiteral("--no-pty")))
        return 0;
    const qint64 llPtyMs = OverPty(lsFile, lcDir.path());
    if (llPtyMs < 0)
        return 1;
    std::printf("paced pty: %lld ms, ratio %.3f to the whole wire time, %.3f to the answers' wire time\n", llPtyMs,
                double(llPtyMs) / ldWireMs, double(llPtyMs) / ldAnswerMs);
    return 0;
}
