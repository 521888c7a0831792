#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>
#include <cstdio>
#include <cstdlib>

// A broken promise of the code under test: abort, so libFuzzer keeps the
// input as a finding and the corpus run fails.
inline void FuzzCheck(bool vbHolds, const char* vsWhat, const QString& vsDetail = QString())
{
    if (vbHolds)
        return;
    std::fprintf(stderr, "fuzz check failed: %s\n%s\n", vsWhat, qPrintable(vsDetail));
    std::abort();
}

// The input as a file for a parser that reads files: vsName is a path, or a
// name in a temporary directory that lasts the run. Returns the file's path.
inline QString WriteInput(const QString& vsName, const QByteArray& vcContent)
{
    static QTemporaryDir scDir;
    const QString lsPath = QDir(scDir.path()).filePath(vsName);
    QFile lcFile(lsPath);
    FuzzCheck(lcFile.open(QIODevice::WriteOnly) && lcFile.write(vcContent) == vcContent.size(), "input written", lsPath);
    return lsPath;
}
