// How long the program takes to read the display's pages over a real serial
// line at 57600 bit/s: corvane-display-sim on a paced pty, the production
// serial port and the application's reliable request.
//
//   build/bench/bench_sim_pty [pages] [max-data]

#include "CorvaneProcess.h"
#include "TestApp.h"
#include "app/clsSettings.h"
#include "platform/QtEventLoop.h"
#include "platform/QtSerialPort.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication lcQt(argc, argv);
    const int llPages = argc > 1 ? atoi(argv[1]) : 4;
    const int llMaxData = argc > 2 ? atoi(argv[2]) : 120;
    SimProcess lcSim;
    if (!lcSim.Start({"--generate", "--days", "60", "--max-data", QString::number(llMaxData)})) {
        std::fprintf(stderr, "bench_sim_pty: the simulator did not start\n");
        return 1;
    }
    QtEventLoop lcLoop;
    QtSerialPort lcPort(lcLoop);
    TestApp t(&lcPort, true, nullptr, &lcLoop);
    clsApplication& lcApp = *t.app;
    lcApp.Settings().SetPortPath(lcSim.Link());
    lcApp.ApplyPortSettings();
    lcApp.SetCommunicationIsRunning(true);

    clsError lcError;
    QElapsedTimer lcTimer;
    lcTimer.start();
    qint64 llBytes = 0;
    for (int llPage = 1; llPage <= llPages && !lcError.IsError(); ++llPage) {
        for (int llOffset = 0; llOffset < 4096 && !lcError.IsError(); llOffset += llMaxData) {
            const int llCount = qMin(llMaxData, 4096 - llOffset);
            lcApp.SendAndRetry(lcError, 0x34, QStringLiteral("0x%1,0x%2,0x%3,0x%4")
                                                  .arg(llPage, 2, 16, QLatin1Char('0'))
                                                  .arg(llOffset >> 8, 2, 16, QLatin1Char('0'))
                                                  .arg(llOffset & 0xFF, 2, 16, QLatin1Char('0'))
                                                  .arg(llCount, 2, 16, QLatin1Char('0')));
            llBytes += llCount;
        }
    }
    const qint64 llMs = lcTimer.elapsed();
    lcSim.Stop();
    if (lcError.IsError()) {
        std::fprintf(stderr, "bench_sim_pty: %s\n", qPrintable(lcError.Description()));
        return 1;
    }
    std::printf("%d pages of 4096 bytes, %d data bytes a read: %lld ms, %.0f ms a page, %.0f bytes/s\n", llPages,
                llMaxData, llMs, double(llMs) / llPages, double(llBytes) * 1000.0 / double(llMs));
    return 0;
}
