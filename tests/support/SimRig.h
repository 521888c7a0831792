#pragma once

#include "TestApp.h"
#include "sim/clsSimBootloader.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimOptions.h"
#include "sim/clsSimSerialPort.h"

// An application on the virtual clock wired to a simulated display through
// an in-process serial line at 57600 bit/s.
struct SimRig {
    clsSimDisplay display;
    VirtualClock* clock = nullptr;
    clsSimSerialPort port{display, [this]() -> IEventLoop& { return *clock; },
                          [this](quint32 vlDelay, std::function<void()> vAction) {
                              clock->ScheduleIn(vlDelay, std::move(vAction));
                          }};
    TestApp t;
    // The Memory Display's bootloader behind the display, after it said yes to 0xD9.
    clsSimBootloader bootloader;
    // Every byte the bootloader was given, in order.
    QByteArray bootloaderReceived;

    // vcWindow: the real main window instead of the recording one.
    explicit SimRig(IMainWindow* vcWindow = nullptr)
        : t(&port, true, vcWindow)
    {
        clock = &t.clock;
        display.SetBootloaderHook([this](const QByteArray& vcBytes) {
            bootloaderReceived += vcBytes;
            BootloaderReply lcReply{bootloader.Receive(vcBytes), bootloader.Restarted()};
            if (lcReply.restarted)
                bootloader.Reset();
            return lcReply;
        });
    }
    clsApplication& app() { return *t.app; }

    // Faults as the simulator's --fault takes them ("nak-lines=2,drop=0.01,seed=7"):
    // the bootloader's to the bootloader, the rest to the display, whose random
    // faults start again from the seed.
    void Fault(const QString& vsFaults)
    {
        clsSimOptions lcOptions;
        clsSimFaults lcFaults = display.Faults();
        QString lsError;
        QVERIFY2(lcOptions.Parse({QStringLiteral("sim"), QStringLiteral("--fault"), vsFaults}, lsError) &&
                     lcOptions.ApplyFaults(lcFaults, bootloader, lsError),
                 qPrintable(lsError));
        display.SetFaults(lcFaults);
    }

    // The function codes of the requests the display received, in order.
    QList<int> Funcs() const
    {
        QList<int> lcFuncs;
        for (const clsSimDisplay::Request& lcRequest : display.Requests())
            lcFuncs << lcRequest.func;
        return lcFuncs;
    }

    // The requests the display received: function code and arguments in hex,
    // "CE 38:01"; a run of n equal requests reads "38:01*n".
    QString Trace() const
    {
        QStringList lcTrace;
        int llRun = 1;
        for (const clsSimDisplay::Request& lcRequest : display.Requests()) {
            QString lsRequest = QString::number(lcRequest.func, 16).toUpper();
            if (!lcRequest.arguments.isEmpty())
                lsRequest += QLatin1Char(':') + QString::fromLatin1(lcRequest.arguments.toHex().toUpper());
            if (!lcTrace.isEmpty() && lcTrace.last().section(QLatin1Char('*'), 0, 0) == lsRequest) {
                lcTrace.last() = lsRequest + QStringLiteral("*%1").arg(++llRun);
                continue;
            }
            lcTrace << lsRequest;
            llRun = 1;
        }
        return lcTrace.join(QLatin1Char(' '));
    }
};
