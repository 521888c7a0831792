#pragma once

#include <QString>
#include <functional>

class IEventLoop;
class IUserDialogs;

// Appends time-stamped lines to kvtDsw.log beside the program. The file is
// opened and closed for every line, so nothing is lost when the program dies.
// A line that cannot be written is a run-time error for the caller.
class clsLogger
{
public:
    // Time stamps come from rcLoop, so a virtual clock gives virtual times.
    clsLogger(const QString& vsDirectory, IUserDialogs* vcDialogs, IEventLoop& rcLoop, QString vsApplicationName,
              QString vsVersion);

    void Init();
    void DeInit();
    void AddToLog(const QString& vsMessage, bool vbRaw = false);
    void AddWarningToLog(const QString& vsMessage);
    void AddErrorToLog(const QString& vsMessage);
    bool CheckFileExists(const QString& vsPath) const;

    QString FileName() const { return msFile; }
    // Logging off for the rest of the run (a log that could not be started): lines are dropped.
    void SwitchOff() { mbOff = true; }
    bool IsOff() const { return mbOff; }
    // Also hands every written line to vEcho (the command line's -v).
    void SetEcho(std::function<void(const QString&)> vEcho) { mEcho = std::move(vEcho); }

private:
    QString NamingTheFile(long vlNumber) const;
    void CheckLogFileSize();

    QString msFile;
    IUserDialogs* mcDialogs;
    IEventLoop& mrLoop;
    bool mbOff = false;
    QString msApplicationName;
    QString msVersion;
    std::function<void(const QString&)> mEcho;
};
