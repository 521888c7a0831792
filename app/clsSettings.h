#pragma once

#include <QString>
#include <array>

// The few things the program remembers between runs, in kvtDsw.ini, section
// "Common": the port and the last file of each file type.
class clsSettings
{
public:
    explicit clsSettings(const QString& vsDirectory);

    void Init();
    void DeInit();

    qint32 comPort() const { return mlComPort; }
    void SetcomPort(qint32 vlPort) { mlComPort = vlPort; }
    // A device path given instead of a number ("Port" key), empty when the number is used.
    QString PortPath() const { return msPortPath; }
    void SetPortPath(const QString& vsPath) { msPortPath = vsPath; }

    QString LastTXTFilename() const { return msLastTXTFilename; }
    void SetLastTXTFilename(const QString& vsName) { msLastTXTFilename = vsName; }

    // Indexed by the file type's index; outside 0..12 is a subscript error.
    QString LastFilenames(qint16 vlIndex) const;
    void SetLastFilenames(qint16 vlIndex, const QString& vsName);

    QString FileName() const { return msFile; }
    // Why DeInit will not be able to save the settings; empty when it will.
    QString SaveProblem() const;

private:
    QString ReadKey(const char* vsKey) const;
    void WriteKey(const char* vsKey, const QString& vsValue) const;

    QString msFile;
    qint32 mlComPort = 1;
    QString msPortPath;
    QString msLastTXTFilename;
    std::array<QString, 13> mcLastFilenames;
};
