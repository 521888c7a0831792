#pragma once

#include <QString>

// Message boxes and the common file dialog. The main window shows real boxes,
// the command line asks on the terminal or answers from --yes/--no, tests
// answer from a script and keep a record of every box.
enum class MsgButtons { OK, OKCancel, YesNo };
enum class MsgIcon { None, Critical, Question, Exclamation, Information };
enum class MsgResult { OK, Cancel, Yes, No };

class IUserDialogs
{
public:
    virtual ~IUserDialogs() = default;

    virtual MsgResult MsgBox(const QString& vsText, MsgButtons vButtons, MsgIcon vIcon, const QString& vsTitle) = 0;
    // The save dialog: returns the chosen file name, empty when cancelled.
    virtual QString ShowSave(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) = 0;
    // The open dialog for an existing file: the chosen name, empty when cancelled.
    virtual QString ShowOpen(const QString& vsFilter, const QString& vsFileName, const QString& vsInitDir) = 0;
    // The port dialog: vsPort is a port number or a device path, shown selected and
    // replaced by the user's choice; false when cancelled.
    virtual bool SelectComPort(QString& rsPort) { (void)rsPort; return false; }
    // The hourglass while the firmware is streamed.
    virtual void SetBusyCursor(bool vbBusy) { (void)vbBusy; }
};
