#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

// Program error numbers: bit 29 marks the program's own, bit 30 a warning.
namespace ErrorCode {
constexpr qint32 UnableToCommunicate = 0x20000001;
constexpr qint32 CancelledByUser = 0x20000002;
constexpr qint32 DifferentDisplay = 0x20000003;
constexpr qint32 UnableToOpenFile = 0x20000004;
constexpr qint32 FilenameEmpty = 0x20000005;
constexpr qint32 NoUsbInterface = 0x20000006;
constexpr qint32 OperatingSystemDetected = 0x20000007;
constexpr qint32 CommunicationError = 0x20000008;
constexpr qint32 NoFileSelected = 0x20000009;
constexpr qint32 UnableToFindFile = 0x2000000A;
constexpr qint32 ProgramBit = 0x20000000;
constexpr qint32 WarningBit = 0x40000000;
}

// The error value every operation fills instead of throwing: the caller makes
// one, passes it down, tests IsError and hands it to HandleError.
class IEventLoop;

class clsError
{
public:
    // Where the date of an error comes from; without one, the system clock.
    static void UseEventLoop(IEventLoop* vcLoop);

    QString Description() const;
    void SetDescription(const QString& vsDescription) { msDescription = vsDescription; }

    qint32 Error() const { return IsWarning() ? 0 : mlError; }
    void SetError(qint32 vlError);

    QString Location() const { return msLocation; }
    void SetLocation(const QString& vsLocation) { msLocation = vsLocation; }

    QString DateTime() const { return msDateTime; }
    void SetDateTime(const QString& vsDateTime) { msDateTime = vsDateTime; }

    // Captures a pending run-time error of the platform.
    void CheckVBError();
    bool IsError();
    bool ISVBError();

    QString ExecutableFileName() const { return msExecutableFileName; }
    void SetExecutableFileName(const QString& vsName) { msExecutableFileName = vsName; }

    qint32 Level() const { return mlLevel; }
    void SetLevel(qint32 vlLevel) { mlLevel = vlLevel; }

    void Clear();

    // Sets number, text and the optional parts at once. The text may hold
    // placeholders %D %I %F %L %C (decimal), %X (hex), %O (octal), %S (text)
    // and %U (unsigned), filled from vcArgs in order; "%%" gives one "%".
    void SetError(qint32 vlError, const QString& vsText, const QVector<QVariant>& vcArgs = {},
                  const QVariant& vLevel = {}, const QVariant& vLocation = {}, const QVariant& vExecutable = {});

    void Copy(const clsError& vcOther) { *this = vcOther; }

    bool IsWarning() const { return mlError != 0 && (mlError & ErrorCode::WarningBit) != 0; }
    qint32 Warning() const { return IsWarning() ? mlError : 0; }
    void SetWarning(qint32 vlWarning);

    // The text of a program error number.
    static QString TableText(qint32 vlError);
    static QString Now();

private:
    static QString Expand(const QString& vsText, const QVector<QVariant>& vcArgs);

    qint32 mlError = 0;
    qint32 mlLevel = 0;
    QString msDescription;
    QString msLocation;
    QString msDateTime;
    QString msExecutableFileName;
};
