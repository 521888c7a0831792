#include "cli/clsCliInterrupt.h"

#include <QSocketNotifier>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int gaPipe[2] = {-1, -1};

void OnSignal(int)
{
    const char lcByte = 1;
    [[maybe_unused]] const ssize_t llWritten = ::write(gaPipe[1], &lcByte, 1);
}
}

clsCliInterrupt::clsCliInterrupt(std::function<void()> vOnInterrupt)
    : mOnInterrupt(std::move(vOnInterrupt))
{
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, gaPipe) != 0)
        return;
    mcNotifier = std::make_unique<QSocketNotifier>(gaPipe[0], QSocketNotifier::Read);
    connect(mcNotifier.get(), &QSocketNotifier::activated, this, [this]() {
        char lcByte = 0;
        [[maybe_unused]] const ssize_t llRead = ::read(gaPipe[0], &lcByte, 1);
        if (mOnInterrupt)
            mOnInterrupt();
    });
    std::signal(SIGINT, OnSignal);
}

clsCliInterrupt::~clsCliInterrupt()
{
    if (!mcNotifier)
        return;
    std::signal(SIGINT, SIG_DFL);
    mcNotifier.reset();
    ::close(gaPipe[0]);
    ::close(gaPipe[1]);
}
#else
clsCliInterrupt::clsCliInterrupt(std::function<void()> vOnInterrupt)
    : mOnInterrupt(std::move(vOnInterrupt))
{
}

clsCliInterrupt::~clsCliInterrupt() = default;
#endif
