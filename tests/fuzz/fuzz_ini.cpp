// kvtDsw.ini as a user might leave it. The input's first line is
// "section|key|value", the write to try; the rest is the file.
// Checks: every key's number and text can be read without fault, the value
// written reads back, and every other key of the file still reads as before.

#include "FuzzCheck.h"
#include "platform/Cp1252.h"
#include "platform/PrivateProfile.h"

#include <QStringList>
#include <cstdint>
#include <utility>
#include <vector>

namespace {
using Key = std::pair<QString, QString>;

// The section and key names of the file, as the reader sees them.
std::vector<Key> Keys(const QString& vsText)
{
    std::vector<Key> lcKeys;
    QString lsSection;
    for (QString lsLine : vsText.split(QLatin1Char('\n'))) {
        lsLine = lsLine.trimmed();
        if (lsLine.startsWith(QLatin1Char('['))) {
            const int llEnd = lsLine.indexOf(QLatin1Char(']'));
            lsSection = (llEnd < 0 ? lsLine.mid(1) : lsLine.mid(1, llEnd - 1)).trimmed();
        } else if (!lsLine.startsWith(QLatin1Char(';')) && lsLine.contains(QLatin1Char('='))) {
            lcKeys.emplace_back(lsSection, lsLine.left(lsLine.indexOf(QLatin1Char('='))).trimmed());
        }
    }
    return lcKeys;
}

// A name the file can hold: one line, no blanks around it, not read as a section or comment.
bool UsableName(const QString& vsName, const QString& vsForbidden)
{
    if (vsName.isEmpty() || vsName != vsName.trimmed() || vsName.startsWith(QLatin1Char('['))
        || vsName.startsWith(QLatin1Char(';')))
        return false;
    for (QChar c : vsForbidden)
        if (vsName.contains(c))
            return false;
    return !vsName.contains(QLatin1Char('\r')) && !vsName.contains(QLatin1Char('\n'));
}

// A value the file can hold as it is: one line, no blanks around it, not in quotes.
bool UsableValue(const QString& vsValue)
{
    if (vsValue != vsValue.trimmed() || vsValue.contains(QLatin1Char('\r')) || vsValue.contains(QLatin1Char('\n')))
        return false;
    const bool lbQuoted = vsValue.size() >= 2 && (vsValue.front() == QLatin1Char('"') || vsValue.front() == QLatin1Char('\''))
        && vsValue.back() == vsValue.front();
    return !lbQuoted && Cp1252::Decode(Cp1252::Encode(vsValue)) == vsValue;
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize)
{
    const QByteArray lcInput(reinterpret_cast<const char*>(vcData), qsizetype(vlSize));
    const qsizetype llHeaderEnd = lcInput.indexOf('\n');
    const QStringList lcWrite = Cp1252::Decode(llHeaderEnd < 0 ? lcInput : lcInput.left(llHeaderEnd)).split(QLatin1Char('|'));
    const QByteArray lcContent = llHeaderEnd < 0 ? QByteArray() : lcInput.mid(llHeaderEnd + 1);
    const QString lsFile = WriteInput(QStringLiteral("kvtDsw.ini"), lcContent);

    std::vector<std::pair<Key, QString>> lcBefore;
    for (const Key& lcKey : Keys(Cp1252::Decode(lcContent))) {
        PrivateProfile::GetInt(lcKey.first, lcKey.second, 1, lsFile);
        lcBefore.emplace_back(lcKey, PrivateProfile::GetString(lcKey.first, lcKey.second, QString(), 999, lsFile));
        if (lcBefore.size() >= 32)
            break;
    }
    if (lcWrite.size() != 3 || !UsableName(lcWrite[0], QStringLiteral("]")) || !UsableName(lcWrite[1], QStringLiteral("="))
        || !UsableValue(lcWrite[2]))
        return 0;
    const QString &lsSection = lcWrite[0], &lsKey = lcWrite[1], &lsValue = lcWrite[2];
    FuzzCheck(PrivateProfile::WriteString(lsSection, lsKey, lsValue, lsFile), "the write succeeds");
    FuzzCheck(PrivateProfile::GetString(lsSection, lsKey, QStringLiteral("<missing>"), 100000, lsFile) == lsValue,
              "the value written reads back", lsValue);
    for (const auto& [lcKey, lsOld] : lcBefore) {
        if (!lcKey.first.compare(lsSection, Qt::CaseInsensitive) && !lcKey.second.compare(lsKey, Qt::CaseInsensitive))
            continue;
        FuzzCheck(PrivateProfile::GetString(lcKey.first, lcKey.second, QString(), 999, lsFile) == lsOld,
                  "a neighbour of the key written keeps its value", lcKey.first + QLatin1Char('/') + lcKey.second);
    }
    return 0;
}
