#include "platform/PrivateProfile.h"

#include "platform/Cp1252.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringList>
#include <algorithm>
#include <limits>
#include <optional>

namespace {
QStringList ReadLines(const QString& vsFile)
{
    QFile lcFile(vsFile);
    if (!lcFile.open(QIODevice::ReadOnly))
        return {};
    QString lsText = Cp1252::Decode(lcFile.readAll());
    lsText.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QStringList lcLines = lsText.split(QLatin1Char('\n'));
    if (!lcLines.isEmpty() && lcLines.last().isEmpty())
        lcLines.removeLast();
    return lcLines;
}

// The section name of a "[name]" line.
std::optional<QString> SectionOf(const QString& vsLine)
{
    const QString lsLine = vsLine.trimmed();
    if (!lsLine.startsWith(QLatin1Char('[')))
        return std::nullopt;
    const int llEnd = lsLine.indexOf(QLatin1Char(']'));
    return (llEnd < 0 ? lsLine.mid(1) : lsLine.mid(1, llEnd - 1)).trimmed();
}

// The key name of a "key=value" line; comments and other lines have none.
std::optional<QString> KeyOf(const QString& vsLine)
{
    const QString lsLine = vsLine.trimmed();
    if (lsLine.startsWith(QLatin1Char(';')))
        return std::nullopt;
    const int llEqual = lsLine.indexOf(QLatin1Char('='));
    if (llEqual < 0)
        return std::nullopt;
    return lsLine.left(llEqual).trimmed();
}

bool SameName(const QString& a, const QString& b)
{
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

std::optional<QString> FindValue(const QString& vsSection, const QString& vsKey, const QString& vsFile)
{
    bool lbInSection = false;
    for (const QString& lsLine : ReadLines(vsFile)) {
        if (const auto lsSection = SectionOf(lsLine)) {
            lbInSection = SameName(*lsSection, vsSection);
            continue;
        }
        if (!lbInSection)
            continue;
        const auto lsKey = KeyOf(lsLine);
        if (!lsKey || !SameName(*lsKey, vsKey))
            continue;
        QString lsValue = lsLine.mid(lsLine.indexOf(QLatin1Char('=')) + 1).trimmed();
        if (lsValue.size() >= 2 && (lsValue.front() == QLatin1Char('"') || lsValue.front() == QLatin1Char('\''))
            && lsValue.back() == lsValue.front())
            lsValue = lsValue.mid(1, lsValue.size() - 2);
        return lsValue;
    }
    return std::nullopt;
}
}

namespace PrivateProfile {
long GetInt(const QString& vsSection, const QString& vsKey, long vlDefault, const QString& vsFile)
{
    const auto lsValue = FindValue(vsSection, vsKey, vsFile);
    if (!lsValue)
        return vlDefault;
    int i = 0;
    bool lbNegative = false;
    if (i < lsValue->size() && (lsValue->at(i) == QLatin1Char('-') || lsValue->at(i) == QLatin1Char('+')))
        lbNegative = lsValue->at(i++) == QLatin1Char('-');
    // A number beyond the 32-bit range stops growing at its edge, so a key
    // that a user filled with digits reads as the nearest number that fits.
    constexpr qint64 kBeyond = qint64(std::numeric_limits<qint32>::max()) + 1;
    qint64 llValue = 0;
    for (; i < lsValue->size() && lsValue->at(i).isDigit(); ++i)
        llValue = std::min(llValue * 10 + lsValue->at(i).digitValue(), kBeyond);
    return long(std::clamp<qint64>(lbNegative ? -llValue : llValue, std::numeric_limits<qint32>::min(),
                                   std::numeric_limits<qint32>::max()));
}

QString GetString(const QString& vsSection, const QString& vsKey, const QString& vsDefault, int vlBufferSize,
                  const QString& vsFile)
{
    const QString lsValue = FindValue(vsSection, vsKey, vsFile).value_or(vsDefault);
    return lsValue.left(qMax(0, vlBufferSize - 1));
}

bool WriteString(const QString& vsSection, const QString& vsKey, const QString& vsValue, const QString& vsFile)
{
    QStringList lcLines = ReadLines(vsFile);
    const QString lsNewLine = vsKey + QLatin1Char('=') + vsValue;
    int llSectionLine = -1;
    int llInsertAt = -1;
    bool lbInSection = false;
    bool lbDone = false;
    for (int i = 0; i < lcLines.size() && !lbDone; ++i) {
        if (const auto lsSection = SectionOf(lcLines[i])) {
            if (lbInSection)
                break;
            lbInSection = SameName(*lsSection, vsSection);
            if (lbInSection)
                llSectionLine = llInsertAt = i;
            continue;
        }
        if (!lbInSection)
            continue;
        const auto lsKey = KeyOf(lcLines[i]);
        if (lsKey && SameName(*lsKey, vsKey)) {
            lcLines[i] = lsNewLine;
            lbDone = true;
        } else if (!lcLines[i].trimmed().isEmpty()) {
            llInsertAt = i;
        }
    }
    if (!lbDone) {
        if (llSectionLine < 0) {
            lcLines << QLatin1Char('[') + vsSection + QLatin1Char(']') << lsNewLine;
        } else {
            lcLines.insert(llInsertAt + 1, lsNewLine);
        }
    }
    QSaveFile lcFile(vsFile);
    if (!lcFile.open(QIODevice::WriteOnly))
        return false;
    lcFile.write(Cp1252::Encode(lcLines.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")));
    return lcFile.commit();
}

QString WriteProblem(const QString& vsFile)
{
    const QFileInfo lcFile(vsFile);
    if (lcFile.isDir())
        return QStringLiteral("is a directory");
    if (lcFile.exists() && !lcFile.isWritable())
        return QStringLiteral("is read-only");
    // A write replaces the file through a new one beside it.
    if (!QFileInfo(lcFile.absolutePath()).isWritable())
        return QStringLiteral("is in a directory that cannot be written");
    return QString();
}
}
