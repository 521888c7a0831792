#pragma once

#include "cli/clsCliOptions.h"

class clsApplication;
class clsError;
struct clsOutcome;
class clsTerminalDialogs;
class clsTerminalWindow;

// Runs the one command of a command-line call on the started application,
// each inside the same frame as a button of the main window, and turns the
// outcome into the exit status: 0 done, 1 an error (its text on stderr).
class clsCliCommands
{
public:
    static constexpr int kExitOk = 0;
    static constexpr int kExitError = 1;
    static constexpr int kExitUsage = 2;
    static constexpr int kExitInterrupted = 130;

    clsCliCommands(clsApplication& rcApplication, const clsCliOptions& rcOptions, clsTerminalWindow& rcWindow,
                   clsTerminalDialogs& rcDialogs);

    int Run();

private:
    int Download();
    int Erase();
    int Decode();
    int Id();
    int Detect();
    int Upload(bool vbSoftware);
    int UpdateFirmware();

    // Each named upload file chosen and ticked, as with the window's Select button and tick box.
    void ChooseUploadFiles();
    // The exit status of an operation's outcome.
    int Finish(const clsOutcome& vcOutcome);
    // The save step: only when a file was named or somebody can be asked for one.
    void Save(clsError& rcError);
    void PrintGrid();

    clsApplication& mcApplication;
    const clsCliOptions& mcOptions;
    clsTerminalWindow& mcWindow;
    clsTerminalDialogs& mcDialogs;
};
