#include "platform/Err.h"

#include <QHash>

namespace {
struct PendingError {
    long number = 0;
    QString description;
    QString source;
};

PendingError& Pending()
{
    static PendingError scPending;
    return scPending;
}
}

clsRuntimeError::clsRuntimeError(long vlNumber, const QString& vsDescription, const QString& vsSource)
    : std::runtime_error(
          (vsDescription.isEmpty() ? StandardDescription(vlNumber) : vsDescription).toStdString())
    , mlNumber(vlNumber)
    , msDescription(vsDescription.isEmpty() ? StandardDescription(vlNumber) : vsDescription)
    , msSource(vsSource)
{
}

QString clsRuntimeError::StandardDescription(long vlNumber)
{
    static const QHash<long, QString> scTexts = {
        {3, QStringLiteral("Return without GoSub")},
        {5, QStringLiteral("Invalid procedure call or argument")},
        {6, QStringLiteral("Overflow")},
        {7, QStringLiteral("Out of memory")},
        {9, QStringLiteral("Subscript out of range")},
        {10, QStringLiteral("This array is fixed or temporarily locked")},
        {11, QStringLiteral("Division by zero")},
        {13, QStringLiteral("Type mismatch")},
        {28, QStringLiteral("Out of stack space")},
        {52, QStringLiteral("Bad file name or number")},
        {53, QStringLiteral("File not found")},
        {54, QStringLiteral("Bad file mode")},
        {55, QStringLiteral("File already open")},
        {57, QStringLiteral("Device I/O error")},
        {58, QStringLiteral("File already exists")},
        {61, QStringLiteral("Disk full")},
        {62, QStringLiteral("Input past end of file")},
        {67, QStringLiteral("Too many files")},
        {68, QStringLiteral("Device unavailable")},
        {70, QStringLiteral("Permission denied")},
        {71, QStringLiteral("Disk not ready")},
        {75, QStringLiteral("Path/File access error")},
        {76, QStringLiteral("Path not found")},
        {91, QStringLiteral("Object variable or With block variable not set")},
        {429, QStringLiteral("ActiveX component can't create object")},
    };
    const auto lcIt = scTexts.constFind(vlNumber);
    if (lcIt != scTexts.constEnd())
        return *lcIt;
    return QStringLiteral("Application-defined or object-defined error");
}

namespace Err {
long Number() { return Pending().number; }
QString Description() { return Pending().description; }
QString Source() { return Pending().source; }

void Raise(long vlNumber, const QString& vsSource, const QString& vsDescription)
{
    throw clsRuntimeError(vlNumber, vsDescription, vsSource);
}

void SetPending(const clsRuntimeError& vcError)
{
    Pending() = PendingError{vcError.Number(), vcError.Description(), vcError.Source()};
}

void Clear()
{
    Pending() = PendingError{};
}
}
