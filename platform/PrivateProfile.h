#pragma once

#include <QString>

// The private-profile functions with Windows semantics: section and key names
// are case-insensitive, a write changes only its own line (other sections,
// keys and comments stay as they are) and creates the file when it is missing.
// Files are Windows-1252 with CR LF.
namespace PrivateProfile {
// The leading decimal integer of the value; vlDefault when the key is missing, 0 when the value has no number,
// the nearest 32-bit number when it does not fit.
long GetInt(const QString& vsSection, const QString& vsKey, long vlDefault, const QString& vsFile);
// The value cut to vlBufferSize - 1 characters, as a buffer of that size would hold it.
QString GetString(const QString& vsSection, const QString& vsKey, const QString& vsDefault, int vlBufferSize,
                  const QString& vsFile);
// False when the file cannot be written.
bool WriteString(const QString& vsSection, const QString& vsKey, const QString& vsValue, const QString& vsFile);
// Why a write to the file would fail ("is a directory" ...); empty when it would not.
QString WriteProblem(const QString& vsFile);
}
