#include "export/ExportFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace {
constexpr long kDiskFull = 61;
}

clsRuntimeError ExportFiles::WriteError(const QFileDevice& vcFile, const QString& vsFileName, const QString& vsSource)
{
    const QFileInfo lcDirectory(QFileInfo(vsFileName).absolutePath());
    long llNumber = VbError::PathFileAccessError;
    if (!lcDirectory.isDir())
        llNumber = VbError::PathNotFound;
    else if (vcFile.error() == QFileDevice::ResourceError)
        llNumber = kDiskFull;
    else if (!lcDirectory.isWritable() || vcFile.error() == QFileDevice::PermissionsError)
        llNumber = VbError::PermissionDenied;
    return clsRuntimeError(llNumber,
                           clsRuntimeError::StandardDescription(llNumber) + QStringLiteral(": ")
                               + QDir::toNativeSeparators(vsFileName),
                           vsSource);
}

void ExportFiles::SaveWhole(const QString& vsFileName, const QByteArray& vcData, const QString& vsSource)
{
    QSaveFile lcFile(vsFileName);
    // Unbuffered: a buffered write that a full disk cuts short still commits the truncated file.
    if (!lcFile.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        throw WriteError(lcFile, vsFileName, vsSource);
    if (lcFile.write(vcData) != vcData.size())
        throw WriteError(lcFile, vsFileName, vsSource);
    if (!lcFile.commit())
        throw WriteError(lcFile, vsFileName, vsSource);
}
