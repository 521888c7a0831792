#pragma once

#include <QObject>
#include <functional>
#include <memory>

class QSocketNotifier;

// Ctrl+C (SIGINT) as a request to the running operation instead of the end of
// the program, for as long as the object lives: the signal reaches the event
// loop through a socket pair, the one thing a handler may safely touch, and
// the operation's waits run the callback. Elsewhere than on Unix it does nothing.
class clsCliInterrupt : public QObject
{
    Q_OBJECT
public:
    explicit clsCliInterrupt(std::function<void()> vOnInterrupt);
    ~clsCliInterrupt() override;

private:
    std::function<void()> mOnInterrupt;
    std::unique_ptr<QSocketNotifier> mcNotifier;
};
