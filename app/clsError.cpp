#include "app/clsError.h"

#include "platform/Err.h"
#include "platform/IEventLoop.h"

#include <QDateTime>
#include <QLocale>

QString clsError::Description() const
{
    return msDescription.isEmpty() ? TableText(Error()) : msDescription;
}

void clsError::SetError(qint32 vlError)
{
    mlError = vlError;
    if (vlError != 0)
        msDateTime = Now();
    msDescription.clear();
}

void clsError::SetWarning(qint32 vlWarning)
{
    SetError(vlWarning);
}

void clsError::CheckVBError()
{
    if (Err::Number() == 0)
        return;
    mlError = qint32(Err::Number());
    msDescription = Err::Description();
    msLocation = Err::Source();
    msDateTime = Now();
    mlLevel = 3;
    Err::Clear();
}

bool clsError::IsError()
{
    if (mlError == 0)
        CheckVBError();
    return mlError != 0 && !IsWarning();
}

bool clsError::ISVBError()
{
    if (mlError == 0)
        CheckVBError();
    return mlError != 0 && (mlError & ErrorCode::ProgramBit) == 0;
}

void clsError::Clear()
{
    msDescription.clear();
    msLocation.clear();
    msDateTime.clear();
    msExecutableFileName.clear();
    mlError = 0;
    mlLevel = 0;
    Err::Clear();
}

void clsError::SetError(qint32 vlError, const QString& vsText, const QVector<QVariant>& vcArgs, const QVariant& vLevel,
                        const QVariant& vLocation, const QVariant& vExecutable)
{
    msDateTime = Now();
    if (vLevel.isValid())
        mlLevel = vLevel.toInt();
    if (vLocation.isValid())
        msLocation = vLocation.toString();
    if (vExecutable.isValid())
        msExecutableFileName = vExecutable.toString();
    SetError(vlError);
    msDescription = Expand(vsText, vcArgs);
}

QString clsError::TableText(qint32 vlError)
{
    switch (vlError) {
    case 0:
        return QStringLiteral("No error.");
    case ErrorCode::UnableToCommunicate:
        return QStringLiteral("Unable to communicate with display.");
    case ErrorCode::CancelledByUser:
        return QStringLiteral("Action cancelled by user.");
    case ErrorCode::DifferentDisplay:
        return QStringLiteral("Different display detected.");
    case ErrorCode::UnableToOpenFile:
        return QStringLiteral("Unable to open file.");
    case ErrorCode::FilenameEmpty:
        return QStringLiteral("Filename is empty.");
    case ErrorCode::NoUsbInterface:
        return QStringLiteral(
            "Unable to find USB PC Interface. Using default COM port settings with the RS232 PC Interface.");
    case ErrorCode::OperatingSystemDetected:
        return QStringLiteral("Corvane Operating System Detected");
    case ErrorCode::CommunicationError:
        return QStringLiteral("Communication error");
    case ErrorCode::NoFileSelected:
        return QStringLiteral("No file was selected");
    case ErrorCode::UnableToFindFile:
        return QStringLiteral("Unable to find file");
    default:
        return QStringLiteral("Description for this error is not available. Error nr.: ") + QString::number(vlError);
    }
}

namespace {
IEventLoop* gcErrorClock = nullptr;
}

void clsError::UseEventLoop(IEventLoop* vcLoop)
{
    gcErrorClock = vcLoop;
}

QString clsError::Now()
{
    const QDateTime lcNow = gcErrorClock ? gcErrorClock->CurrentDateTime() : QDateTime::currentDateTime();
    return QLocale::c().toString(lcNow, QStringLiteral("dd MMMM yyyy hh:mm:ss"));
}

// Replaces the placeholders left to right; an inserted text is not scanned again.
QString clsError::Expand(const QString& vsText, const QVector<QVariant>& vcArgs)
{
    QString lsResult;
    int llArg = 0;
    for (int i = 0; i < vsText.size(); ++i) {
        const QChar lcChar = vsText[i];
        if (lcChar != QLatin1Char('%') || i + 1 >= vsText.size()) {
            lsResult += lcChar;
            continue;
        }
        const QChar lcKind = vsText[i + 1].toUpper();
        if (!QStringLiteral("DIFLCXOSU").contains(lcKind) || llArg >= vcArgs.size() || llArg >= 10) {
            lsResult += lcChar;
            continue;
        }
        const QVariant& lvArg = vcArgs[llArg++];
        // Negative numbers show their 32-bit pattern, as Hex and Oct do.
        if (lcKind == QLatin1Char('X'))
            lsResult += QString::number(quint32(lvArg.toLongLong()), 16).toUpper();
        else if (lcKind == QLatin1Char('O'))
            lsResult += QString::number(quint32(lvArg.toLongLong()), 8);
        else if (lcKind == QLatin1Char('U'))
            lsResult += QString::number(quint32(lvArg.toLongLong()));
        else
            lsResult += lvArg.toString();
        ++i;
    }
    return lsResult.replace(QStringLiteral("%%"), QStringLiteral("%"));
}
