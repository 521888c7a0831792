#pragma once

#include "PageFile.h"
#include "TestFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QStringList>
#include <functional>
#include <QTemporaryDir>

// corvane and corvane-display-sim as a user runs them: separate processes,
// the display on a pseudo-terminal that corvane opens as its serial port.

inline const QString kCorvane = QStringLiteral(CORVANE_BINARY_DIR "/cli/corvane");
inline const QString kSimulator = QStringLiteral(CORVANE_BINARY_DIR "/sim/corvane-display-sim");

struct clsRun {
    int exitCode = -1;
    QString out;
    QString err;
    qint64 ms = 0;
};

// Runs corvane with stdin a pipe, so it is not interactive. vWhileRunning is
// called once the process has started (to signal it, for example).
inline clsRun Corvane(const QStringList& vcArguments, int vlTimeoutMs = 30000,
                      const std::function<void(QProcess&)>& vWhileRunning = {})
{
    QProcess lcProcess;
    QElapsedTimer lcTimer;
    lcTimer.start();
    lcProcess.start(kCorvane, vcArguments);
    lcProcess.closeWriteChannel();
    if (vWhileRunning && lcProcess.waitForStarted())
        vWhileRunning(lcProcess);
    clsRun lcRun;
    if (!lcProcess.waitForFinished(vlTimeoutMs)) {
        lcProcess.kill();
        lcProcess.waitForFinished();
        lcRun.err = QStringLiteral("corvane did not finish in time\n");
    } else if (lcProcess.exitStatus() == QProcess::NormalExit) {
        lcRun.exitCode = lcProcess.exitCode();
    }
    lcRun.out = QString::fromLocal8Bit(lcProcess.readAllStandardOutput());
    lcRun.err += QString::fromLocal8Bit(lcProcess.readAllStandardError());
    lcRun.ms = lcTimer.elapsed();
    return lcRun;
}

// The simulated display on a pty linked at rsLink; false when it did not come up.
inline bool StartDisplay(QProcess& rcSim, const QTemporaryDir& vcDir, const QStringList& vcArguments, QString& rsLink)
{
    rsLink = vcDir.filePath(QStringLiteral("display"));
    rcSim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    rcSim.start(kSimulator, vcArguments + QStringList{"--link", rsLink});
    if (!rcSim.waitForStarted(3000))
        return false;
    while (!rcSim.canReadLine())
        if (!rcSim.waitForReadyRead(3000))
            return false;
    return QFileInfo::exists(rsLink);
}

inline bool StopDisplay(QProcess& rcSim)
{
    rcSim.terminate();
    return rcSim.waitForFinished(3000) && rcSim.exitStatus() == QProcess::NormalExit && rcSim.exitCode() == 0;
}

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
