#include "cli/clsDecodeHome.h"

#include <QDir>
#include <QRegularExpression>
#include <csignal>
#include <cstdlib>
#include <vector>

#ifdef Q_OS_WIN
#include <direct.h>
#include <io.h>
#define unlink _unlink
#define rmdir _rmdir
#else
#include <unistd.h>
#endif

namespace {
// What a signal handler may remove: plain C strings made before the handler
// is installed, so the handler itself only calls unlink, rmdir and _exit.
std::vector<QByteArray> gaRemovable;
std::vector<const char*> gaRemovablePaths;
const char* gsHomeDirectory = nullptr;

// The files the program makes in its home besides the copies.
const char* const kOwnFiles[] = {"kvtDsw.ini", "kvtDsw.log"};

extern "C" void RemoveAndExit(int vlSignal)
{
    for (const char* lsPath : gaRemovablePaths)
        ::unlink(lsPath);
    if (gsHomeDirectory)
        ::rmdir(gsHomeDirectory);
    std::_Exit(128 + vlSignal);
}

void RestoreSignals()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    gsHomeDirectory = nullptr;
    gaRemovablePaths.clear();
    gaRemovable.clear();
}
}

clsDecodeHome::clsDecodeHome() = default;

clsDecodeHome::~clsDecodeHome()
{
    Remove();
}

// A name that a Windows copy changed in case ("page3.dsw") is read all the same.
bool clsDecodeHome::Prepare(const QString& vsDirectory, QString& rsError)
{
    const QDir lcSource(vsDirectory);
    if (!lcSource.exists()) {
        rsError = QStringLiteral("Path not found: ") + QDir::toNativeSeparators(vsDirectory);
        return false;
    }
    static const QRegularExpression scPage(QStringLiteral("^page(\\d+)\\.dsw$"),
                                           QRegularExpression::CaseInsensitiveOption);
    QList<QPair<QString, QString>> lcFiles;
    bool lbPages = false;
    for (const QString& lsFile : lcSource.entryList(QDir::Files)) {
        const QRegularExpressionMatch lcMatch = scPage.match(lsFile);
        if (lcMatch.hasMatch()) {
            lcFiles.append({lsFile, QStringLiteral("Page") + QString::number(lcMatch.captured(1).toLongLong())
                                        + QStringLiteral(".DSW")});
            lbPages = true;
        } else if (lsFile.compare(QLatin1String("postcode.gps"), Qt::CaseInsensitive) == 0) {
            lcFiles.append({lsFile, QStringLiteral("postcode.gps")});
        }
    }
    if (!lbPages) {
        rsError = QStringLiteral("No page files (PageN.DSW) in ") + QDir::toNativeSeparators(vsDirectory);
        return false;
    }
    mcDir = std::make_unique<QTemporaryDir>();
    if (!mcDir->isValid()) {
        rsError = QStringLiteral("Unable to make a temporary directory: ") + mcDir->errorString();
        return false;
    }
    QStringList lcNames;
    for (const auto& lcFile : lcFiles)
        lcNames << lcFile.second;
    RemoveOnSignal(lcNames);
    for (const auto& [lsFile, lsTarget] : lcFiles) {
        const QString lsFrom = lcSource.filePath(lsFile);
        const QString lsCopy = mcDir->filePath(lsTarget);
        if (!QFile::copy(lsFrom, lsCopy)) {
            rsError = QStringLiteral("Unable to read ") + QDir::toNativeSeparators(lsFrom);
            return false;
        }
        mcCopies.append({QDir::toNativeSeparators(lsCopy),
                         QDir::toNativeSeparators(QFileInfo(lsFrom).absoluteFilePath())});
    }
    return true;
}

QString clsDecodeHome::Path() const
{
    return mcDir ? mcDir->path() : QString();
}

QString clsDecodeHome::UserNames(const QString& vsText) const
{
    QString lsText = vsText;
    for (const auto& [lsCopy, lsUser] : mcCopies)
        lsText.replace(lsCopy, lsUser);
    return lsText;
}

void clsDecodeHome::Remove()
{
    if (!mcDir)
        return;
    RestoreSignals();
    mcDir->remove();
    mcDir.reset();
    mcCopies.clear();
}

// Every path the handler may remove is made before it is installed, and the
// list is not grown afterwards, so a signal never sees it half-built.
void clsDecodeHome::RemoveOnSignal(const QStringList& vcNames)
{
    QStringList lcNames = vcNames;
    for (const char* lsName : kOwnFiles)
        lcNames << QString::fromLatin1(lsName);
    gaRemovable.clear();
    gaRemovablePaths.clear();
    for (const QString& lsName : lcNames)
        gaRemovable.push_back(QFile::encodeName(mcDir->filePath(lsName)));
    gaRemovable.push_back(QFile::encodeName(mcDir->path()));
    for (size_t i = 0; i + 1 < gaRemovable.size(); ++i)
        gaRemovablePaths.push_back(gaRemovable[i].constData());
    gsHomeDirectory = gaRemovable.back().constData();
    std::signal(SIGINT, RemoveAndExit);
    std::signal(SIGTERM, RemoveAndExit);
}
