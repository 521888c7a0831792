#pragma once

#include "TestFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <functional>

// corvane and corvane-display-sim as a user runs them: separate processes,
// the display on a pseudo-terminal that corvane opens as its serial port.

inline const QString kCorvane = QStringLiteral(CORVANE_BINARY_DIR "/cli/corvane");
inline const QString kSimulator = QStringLiteral(CORVANE_BINARY_DIR "/sim/corvane-display-sim");
// The golden download, and the geometry and ID its flash image was made with.
inline const QString kGolden = QStringLiteral(CORVANE_TEST_DATA "/cli-download/");
inline const QStringList kDisplay = {"--first-page", "0", "--last-page", "7", "--page-size-log2", "10",
                                     "--id", "12.0.34.5.6.7.8.9", "--flash", kGolden + "flash.img"};
constexpr int kPageSize = 1024;

struct clsRun {
    int exitCode = -1; // -1: did not end by itself
    QString out;
    QString err;
    qint64 ms = 0;
};

// Runs a program with stdin a pipe, so it is not interactive. vWhileRunning is
// called once the process has started (to signal it, for example).
inline clsRun RunProgram(const QString& vsProgram, const QStringList& vcArguments, int vlTimeoutMs = 30000,
                         const std::function<void(QProcess&)>& vWhileRunning = {})
{
    QProcess lcProcess;
    QElapsedTimer lcTimer;
    lcTimer.start();
    lcProcess.start(vsProgram, vcArguments);
    lcProcess.closeWriteChannel();
    if (vWhileRunning && lcProcess.waitForStarted())
        vWhileRunning(lcProcess);
    clsRun lcRun;
    if (!lcProcess.waitForFinished(vlTimeoutMs)) {
        lcProcess.kill();
        lcProcess.waitForFinished();
        lcRun.err = QStringLiteral("did not finish in time\n");
    } else if (lcProcess.exitStatus() == QProcess::NormalExit) {
        lcRun.exitCode = lcProcess.exitCode();
    }
    lcRun.out = QString::fromLocal8Bit(lcProcess.readAllStandardOutput());
    lcRun.err += QString::fromLocal8Bit(lcProcess.readAllStandardError());
    lcRun.ms = lcTimer.elapsed();
    return lcRun;
}

inline clsRun Corvane(const QStringList& vcArguments, int vlTimeoutMs = 30000,
                      const std::function<void(QProcess&)>& vWhileRunning = {})
{
    return RunProgram(kCorvane, vcArguments, vlTimeoutMs, vWhileRunning);
}

// corvane-display-sim on a pseudo-terminal, linked at "display" in a
// temporary directory of its own that also holds the files of a run.
class SimProcess
{
public:
    ~SimProcess()
    {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(3000);
        }
    }

    // Starts it with vcArguments and --link; false when it printed no pty.
    bool Start(const QStringList& vcArguments)
    {
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(kSimulator, vcArguments + QStringList{QStringLiteral("--link"), Link()});
        if (!process.waitForStarted(3000))
            return false;
        while (!process.canReadLine())
            if (!process.waitForReadyRead(3000))
                return false;
        return QFileInfo(Link()).symLinkTarget() == QString::fromLocal8Bit(process.readLine()).trimmed();
    }

    // Stops it as SIGTERM does (a pulled cable has ended it already); true
    // when it left cleanly and took its link away.
    bool Stop()
    {
        process.terminate();
        return (process.state() == QProcess::NotRunning || process.waitForFinished(3000))
               && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0
               && !QFileInfo(Link()).isSymLink();
    }

    QString Link() const { return File(QStringLiteral("display")); }
    QString File(const QString& vsName) const { return dir.filePath(vsName); }

    QTemporaryDir dir;
    QProcess process;
};

// Every file under the directory with its content.
inline QMap<QString, QByteArray> Snapshot(const QString& vsDirectory)
{
    QMap<QString, QByteArray> lcFiles;
    for (QDirIterator lcIt(vsDirectory, QDir::Files, QDirIterator::Subdirectories); lcIt.hasNext();) {
        const QString lsPath = lcIt.next();
        lcFiles[lsPath] = ReadAll(lsPath);
    }
    return lcFiles;
}
