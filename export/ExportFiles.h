#pragma once

#include "platform/Err.h"

#include <QByteArray>
#include <QString>

class QFileDevice;

// Writing an export so that a failure never costs the user an earlier file:
// everything goes to a temporary file beside the target, renamed over it at the end.
namespace ExportFiles {
// The run-time error a failed open, write or rename stands for, naming the file.
clsRuntimeError WriteError(const QFileDevice& vcFile, const QString& vsFileName, const QString& vsSource);
// Writes vcData as the whole file; raises the run-time error of a failure.
void SaveWhole(const QString& vsFileName, const QByteArray& vcData, const QString& vsSource);
}
