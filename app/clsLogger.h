#pragma once

#include <QString>
#include <functional>

class IUserDialogs;

// Appends time-stamped lines to kvtDsw.log beside the program. The file is
// opened and closed for every line, so nothing is lost when the program dies.
class clsLogger
{
public:
    clsLogger(const QString& vsDirectory, IUserDialogs* vcDialogs, QString vsApplicationName, QString vsVersion);

    void Init();
    void DeInit();
    void AddToLog(const QString& vsMessage, bool vbRaw = false);
    void AddWarningToLog(const QString& vsMessage);
    void AddErrorToLog(const QString& vsMessage);
    bool CheckFileExists(const QString& vsPath) const;

    QString FileName() const { return msFile; }
    // Also hands every written line to vEcho (the command line's -v).
    void SetEcho(std::function<void(const QString&)> vEcho) { mEcho = std::move(vEcho); }

private:
    void CheckLogFileSize();

    QString msFile;
    IUserDialogs* mcDialogs;
    QString msApplicationName;
    QString msVersion;
    std::function<void(const QString&)> mEcho;
};
