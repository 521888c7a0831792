#pragma once

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

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
        process.start(QStringLiteral(CORVANE_BINARY_DIR "/sim/corvane-display-sim"),
                      vcArguments + QStringList{QStringLiteral("--link"), Link()});
        if (!process.waitForStarted(3000))
            return false;
        while (!process.canReadLine())
            if (!process.waitForReadyRead(3000))
                return false;
        pty = QString::fromLocal8Bit(process.readLine()).trimmed();
        return QFileInfo(Link()).symLinkTarget() == pty;
    }

    // Stops it as SIGTERM does; true when it left cleanly and took its link away.
    bool Stop()
    {
        process.terminate();
        return process.waitForFinished(3000) && Exited();
    }

    // It left by itself with status 0 (a pulled cable ends it) and took its link away.
    bool Exited()
    {
        if (process.state() != QProcess::NotRunning && !process.waitForFinished(3000))
            return false;
        return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 && !QFileInfo(Link()).isSymLink();
    }

    QString Link() const { return File(QStringLiteral("display")); }
    QString File(const QString& vsName) const { return dir.filePath(vsName); }

    QTemporaryDir dir;
    QProcess process;
    QString pty;
};
