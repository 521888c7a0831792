#include "app/clsLogger.h"

#include "platform/Cp1252.h"
#include "platform/Err.h"
#include "platform/IEventLoop.h"
#include "platform/IUserDialogs.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
constexpr qint64 kLargeLog = 10485761;
}

clsLogger::clsLogger(const QString& vsDirectory, IUserDialogs* vcDialogs, IEventLoop& rcLoop,
                     QString vsApplicationName, QString vsVersion)
    : msFile(vsDirectory + QStringLiteral("kvtDsw.log"))
    , mcDialogs(vcDialogs)
    , mrLoop(rcLoop)
    , msApplicationName(std::move(vsApplicationName))
    , msVersion(std::move(vsVersion))
{
}

void clsLogger::Init()
{
    CheckLogFileSize();
    AddToLog(QStringLiteral("K.V.T. Download Software ") + msVersion);
    AddToLog(QStringLiteral("Logging started"));
}

void clsLogger::DeInit()
{
    AddToLog(QStringLiteral("Logging stopped"));
    AddToLog(QString(), true);
}

// The "xxx" stays in the question as it is; no size is put in its place.
void clsLogger::CheckLogFileSize()
{
    if (!CheckFileExists(msFile) || QFileInfo(msFile).size() < kLargeLog || !mcDialogs)
        return;
    const MsgResult lcAnswer = mcDialogs->MsgBox(
        QStringLiteral("Log file is larger then xxx Mega bytes\r\nRemove?"), MsgButtons::YesNo, MsgIcon::Question,
        msApplicationName);
    if (lcAnswer == MsgResult::Yes)
        QFile::remove(msFile);
}

// A run-time error's own text with the log's path, so the user knows which file failed.
QString clsLogger::NamingTheFile(long vlNumber) const
{
    return clsRuntimeError::StandardDescription(vlNumber) + QStringLiteral(": ") + QDir::toNativeSeparators(msFile);
}

void clsLogger::AddToLog(const QString& vsMessage, bool vbRaw)
{
    if (mbOff || (vsMessage.isEmpty() && !vbRaw))
        return;
    const QString lsLine = vbRaw ? vsMessage
                                 : mrLoop.CurrentDateTime().toString(QStringLiteral("yyyy/MM/dd-HH:mm:ss"))
                                       + QStringLiteral(" - ") + vsMessage;
    QFile lcFile(msFile);
    if (!lcFile.open(QIODevice::Append))
        Err::Raise(VbError::PathFileAccessError, QStringLiteral("clsLogger"), NamingTheFile(VbError::PathFileAccessError));
    const QByteArray lcBytes = Cp1252::Encode(lsLine) + "\r\n";
    // A full disk shows only when the bytes are pushed out.
    if (lcFile.write(lcBytes) != lcBytes.size() || !lcFile.flush())
        Err::Raise(VbError::DeviceIOError, QStringLiteral("clsLogger"), NamingTheFile(VbError::DeviceIOError));
    if (mEcho)
        mEcho(lsLine);
}

void clsLogger::AddWarningToLog(const QString& vsMessage)
{
    if (!vsMessage.isEmpty())
        AddToLog(QStringLiteral("WARNING ") + vsMessage);
}

void clsLogger::AddErrorToLog(const QString& vsMessage)
{
    if (!vsMessage.isEmpty())
        AddToLog(QStringLiteral("ERROR ") + vsMessage);
}

bool clsLogger::CheckFileExists(const QString& vsPath) const
{
    QFileInfo lcInfo(vsPath);
    return lcInfo.exists() && lcInfo.isFile();
}
