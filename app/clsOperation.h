#pragma once

#include <QString>
#include <functional>

class clsApplication;
class clsError;

// What an operation came to, for the front end that started it.
struct clsOutcome {
    qint32 Number = 0;          // 0: no error
    QString Description;
    bool Cancelled = false;     // the user cancelled (0x20000002)
    bool IsError() const { return Number != 0; }
};

// The frame every user action runs in: the window's buttons and menus off and
// the display auto-detection stopped, so that nothing else can talk to the
// display inside the operation's waits; CommunicationIsRunning held; a fresh
// error value, into which a run-time error thrown inside is caught; the error
// shown; the window on again; the outcome handed back. A frame inside a frame
// leaves the window to the outer one.
class clsOperation
{
public:
    enum class Kind {
        // A button of the main window: the grid is cut to its header first
        // and the columns sized after.
        Window,
        // The upload handlers' frame: buttons and menus only, the grid untouched.
        Buttons,
    };

    clsOperation(clsApplication& rcApp, Kind vKind, bool vbHandleError);
    clsOutcome Run(const std::function<void(clsError&)>& vOperation);

private:
    void Begin();
    void End();
    void RunCaught(const std::function<void(clsError&)>& vOperation, clsError& rcError);

    clsApplication& mrApp;
    Kind mKind;
    bool mbHandleError;
    bool mbOutermost = false;
    bool mbDetectionWasOn = false;
};
