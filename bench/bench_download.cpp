// Time to copy a display full of generated logbook data at 57600 bit/s on the
// virtual clock, against the wire limit: every byte of every request and
// answer back to back at 5760 bytes a second. Also the real time the program
// spends per download.
//
//   ./build/bench/bench_download [runs]

#include "SimRig.h"
#include "sim/clsSimDataGenerator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication lcApp(argc, argv);
    const int llRuns = argc > 1 ? QByteArray(argv[1]).toInt() : 5;
    QString lsError;
    clsSimDataGenerator lcGenerator(clsSimDataGenerator::LoadPlaces(clsSimDataGenerator::DefaultPlacesFile(), lsError));
    if (!lsError.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(lsError));
        return 1;
    }
    double ldRealMs = 0;
    for (int llRun = 1; llRun <= llRuns; ++llRun) {
        SimRig r;
        clsSimDisplay& lcDisplay = r.display;
        QByteArray lcFlash = lcDisplay.Flash();
        const int llRecords = clsSimDataGenerator::WriteLog(lcFlash, lcGenerator.Generate(quint32(llRun), 120), 0,
                                                            lcDisplay.LastPage(), lcDisplay.SizeOnePage());
        lcDisplay.SetFlash(lcFlash);
        QElapsedTimer lcReal;
        lcReal.start();
        const quint32 llStart = r.t.clock.timeGetTime();
        clsError lcError;
        r.app().DownloadPages(lcError);
        const quint32 llVirtualMs = r.t.clock.timeGetTime() - llStart;
        ldRealMs += double(lcReal.nsecsElapsed()) / 1e6;
        int llUsed = 0;
        for (int llPage = 1; llPage <= lcDisplay.LastPage(); ++llPage)
            llUsed += lcDisplay.PageIsEmpty(llPage) ? 0 : 1;
        const qint64 llBytes = r.port.BytesToDisplay() + r.port.BytesFromDisplay();
        const double ldWireMs = double(llBytes) * 1000.0 / 5760.0;
        std::printf("run %d: %d records on %d of %d pages, %lld bytes on the line, %u ms on the virtual clock, "
                    "wire limit %.0f ms, ratio %.3f%s\n",
                    llRun, llRecords, llUsed, lcDisplay.LastPage(), qint64(llBytes), llVirtualMs, ldWireMs,
                    double(llVirtualMs) / ldWireMs, lcError.IsError() ? " (ERROR)" : "");
        r.app().DeInit();
    }
    std::printf("real time per download: %.1f ms\n", ldRealMs / llRuns);
    return 0;
}
