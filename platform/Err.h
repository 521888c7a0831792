#pragma once

#include <QString>
#include <stdexcept>

// A run-time error of the classic kind (overflow, subscript out of range,
// input past end of file ...). Thrown only inside an operation and caught at
// its boundary, where it becomes the pending Err that clsError captures.
class clsRuntimeError : public std::runtime_error
{
public:
    explicit clsRuntimeError(long vlNumber, const QString& vsDescription = QString(), const QString& vsSource = QString());

    long Number() const { return mlNumber; }
    const QString& Description() const { return msDescription; }
    const QString& Source() const { return msSource; }

    // The runtime's own text of a run-time error number.
    static QString StandardDescription(long vlNumber);

private:
    long mlNumber;
    QString msDescription;
    QString msSource;
};

// Classic run-time error numbers used by the program.
namespace VbError {
constexpr long InvalidProcedureCall = 5;
constexpr long Overflow = 6;
constexpr long SubscriptOutOfRange = 9;
constexpr long DivisionByZero = 11;
constexpr long TypeMismatch = 13;
constexpr long BadFileNameOrNumber = 52;
constexpr long FileNotFound = 53;
constexpr long DeviceIOError = 57;
constexpr long InputPastEndOfFile = 62;
constexpr long PermissionDenied = 70;
constexpr long PathFileAccessError = 75;
constexpr long PathNotFound = 76;
}

// The pending run-time error: number 0 when none is pending.
namespace Err {
long Number();
QString Description();
QString Source();
void Raise(long vlNumber, const QString& vsSource = QString(), const QString& vsDescription = QString());
void SetPending(const clsRuntimeError& vcError);
void Clear();

// Runs vAction and turns a run-time error it throws into the pending error.
template <typename F>
bool Trap(F&& vAction)
{
    try {
        vAction();
        return true;
    } catch (const clsRuntimeError& e) {
        SetPending(e);
        return false;
    }
}
}
