// corvane-display-sim: a KVT Memory Display in software, on a pseudo-terminal
// that the program opens as its serial port.

#include "sim/clsSimDisplay.h"
#include "sim/clsSimOptions.h"
#include "sim/clsSimPtyRunner.h"
#include "sim/clsSimSamples.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

namespace {

int gaSignalPipe[2] = {-1, -1};

void OnSignal(int)
{
    const char lcByte = 1;
    [[maybe_unused]] const ssize_t llWritten = ::write(gaSignalPipe[1], &lcByte, 1);
}

int Fail(const QString& vsText)
{
    std::fprintf(stderr, "corvane-display-sim: %s\n", qPrintable(vsText));
    return 1;
}

// Puts the display on a pty and answers until a signal or the pulled cable ends it.
int Serve(QCoreApplication& rcApp, const clsSimOptions& vcOptions, clsSimDisplay& rcDisplay)
{
    QString lsError;
    clsSimPtyRunner lcRunner(rcDisplay);
    clsSimFaults lcFaults = rcDisplay.Faults();
    if (!vcOptions.ApplyFaults(lcFaults, lcRunner.Bootloader(), lsError))
        return Fail(lsError);
    rcDisplay.SetFaults(lcFaults);
    lcRunner.SetUnplugAfter(vcOptions.UnplugAfter());
    if (vcOptions.IsSet(QStringLiteral("log")) && !lcRunner.SetLogFile(vcOptions.Value(QStringLiteral("log")), lsError))
        return Fail(lsError);

    clsPtyTransport& lcPty = lcRunner.Transport();
    lcPty.SetBaudRate(vcOptions.Baud());
    if (!lcPty.Open(lsError))
        return Fail(lsError);
    if (vcOptions.IsSet(QStringLiteral("link")) && !lcPty.SetLink(vcOptions.Value(QStringLiteral("link")), lsError))
        return Fail(lsError);

    // Signals reach the event loop through a socket pair, the one thing a handler may safely touch.
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, gaSignalPipe) != 0)
        return Fail(QStringLiteral("socketpair failed"));
    QSocketNotifier lcSignals(gaSignalPipe[0], QSocketNotifier::Read);
    QObject::connect(&lcSignals, &QSocketNotifier::activated, &rcApp, &QCoreApplication::quit);
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    QObject::connect(&lcRunner, &clsSimPtyRunner::Unplugged, &rcApp, &QCoreApplication::quit);

    std::printf("%s\n", qPrintable(lcPty.SlavePath()));
    std::fflush(stdout);
    rcApp.exec();

    lcPty.Close();
    if (vcOptions.IsSet(QStringLiteral("save-flash")) && !vcOptions.SaveFlash(rcDisplay, lsError))
        return Fail(lsError);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication lcApp(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-display-sim"));
    QCoreApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(CORVANE_VERSION_MAJOR).arg(CORVANE_VERSION_MINOR).arg(CORVANE_VERSION_REVISION));

    clsSimOptions lcOptions;
    QString lsError;
    if (!lcOptions.Parse(QCoreApplication::arguments(), lsError))
        return Fail(lsError);
    if (lcOptions.IsSet(QStringLiteral("help"))) {
        std::printf("%s", qPrintable(lcOptions.HelpText()));
        return 0;
    }
    if (lcOptions.IsSet(QStringLiteral("version"))) {
        std::printf("%s %s\n", qPrintable(QCoreApplication::applicationName()),
                    qPrintable(QCoreApplication::applicationVersion()));
        return 0;
    }
    if (lcOptions.IsSet(QStringLiteral("write-samples"))) {
        const QStringList lcFiles = clsSimSamples::Write(lcOptions.Value(QStringLiteral("write-samples")), lsError);
        for (const QString& lsFile : lcFiles)
            std::printf("%s\n", qPrintable(lsFile));
        return lsError.isEmpty() ? 0 : Fail(lsError);
    }

    clsSimDisplay lcDisplay;
    if (!lcOptions.PrepareDisplay(lcDisplay, lsError))
        return Fail(lsError);
    return Serve(lcApp, lcOptions, lcDisplay);
}
