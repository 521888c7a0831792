#include "app/clsSettings.h"

#include "platform/Err.h"
#include "platform/PrivateProfile.h"

#include <QDir>

namespace {
const QString kSection = QStringLiteral("Common");
constexpr int kBufferSize = 999;

struct FileKey {
    const char* key;
    qint16 index;
};
// Read and write order of the file-name keys; "TXT" is read on its own and never written.
constexpr FileKey kFileKeys[] = {
    {"KVT", 0}, {"UFL", 4}, {"USL", 3}, {"SFL", 2}, {"SSL", 1}, {"KVT_SA", 10}, {"KVT_MD", 11}, {"KVT_SND", 12},
};
}

clsSettings::clsSettings(const QString& vsDirectory)
    : msFile(vsDirectory + QStringLiteral("kvtDsw.ini"))
{
}

void clsSettings::Init()
{
    mlComPort = qint32(PrivateProfile::GetInt(kSection, QStringLiteral("Com"), 1, msFile));
    msPortPath = ReadKey("Port");
    mcLastFilenames[0] = ReadKey("KVT");
    msLastTXTFilename = ReadKey("TXT");
    mcLastFilenames[6] = msLastTXTFilename;
    mcLastFilenames[4] = ReadKey("UFL");
    mcLastFilenames[3] = ReadKey("USL");
    mcLastFilenames[2] = ReadKey("SFL");
    mcLastFilenames[1] = ReadKey("SSL");
    mcLastFilenames[10] = ReadKey("KVT_SA");
    mcLastFilenames[11] = ReadKey("KVT_MD");
    mcLastFilenames[12] = ReadKey("KVT_SND");
}

void clsSettings::DeInit()
{
    WriteKey("Com", QString::number(mlComPort));
    for (const FileKey& lcKey : kFileKeys)
        WriteKey(lcKey.key, mcLastFilenames[size_t(lcKey.index)]);
    // A device path is kept beside the number, and only when one was given.
    if (!msPortPath.isEmpty() || !ReadKey("Port").isEmpty())
        WriteKey("Port", msPortPath);
}

QString clsSettings::LastFilenames(qint16 vlIndex) const
{
    if (vlIndex < 0 || size_t(vlIndex) >= mcLastFilenames.size())
        Err::Raise(VbError::SubscriptOutOfRange, QStringLiteral("clsSettings"));
    return mcLastFilenames[size_t(vlIndex)];
}

void clsSettings::SetLastFilenames(qint16 vlIndex, const QString& vsName)
{
    if (vlIndex < 0 || size_t(vlIndex) >= mcLastFilenames.size())
        Err::Raise(VbError::SubscriptOutOfRange, QStringLiteral("clsSettings"));
    mcLastFilenames[size_t(vlIndex)] = vsName;
}

QString clsSettings::SaveProblem() const
{
    const QString lsProblem = PrivateProfile::WriteProblem(msFile);
    if (lsProblem.isEmpty())
        return QString();
    return QStringLiteral("The settings cannot be saved: ") + QDir::toNativeSeparators(msFile) + QLatin1Char(' ')
        + lsProblem;
}

QString clsSettings::ReadKey(const char* vsKey) const
{
    return PrivateProfile::GetString(kSection, QString::fromLatin1(vsKey), QString(), kBufferSize, msFile);
}

// Write failures are ignored: settings are a convenience.
void clsSettings::WriteKey(const char* vsKey, const QString& vsValue) const
{
    PrivateProfile::WriteString(kSection, QString::fromLatin1(vsKey), vsValue, msFile);
}
