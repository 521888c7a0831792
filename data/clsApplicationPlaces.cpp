// The place table of the application: created at start-up, so that its error
// boxes come then and not in the middle of the first import.

#include "app/clsApplication.h"

#include "data/clsGpsPlaces.h"
#include "data/clsHalvexRecord.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
const QString kPlacesFile = QStringLiteral("postcode.gps");
// Written by the build into the top of its build tree; holds the source tree's path.
const QString kBuildTreeMarker = QStringLiteral("CorvaneSourceDir.txt");
}

void clsApplication::CreateGpsPlaces()
{
    QString lsPath = mcPlatform.PlacesFile;
    if (lsPath.isEmpty()) {
        const QString lsProgram = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString();
        lsPath = LocatePlacesFile(StdDirectory(), lsProgram);
    }
    mcGpsPlaces = std::make_unique<clsGpsPlaces>(lsPath, mcPlatform.Dialogs);
    clsHalvexRecord::UsePlaces(mcGpsPlaces.get());
}

clsGpsPlaces& clsApplication::GpsPlaces()
{
    if (!mcGpsPlaces)
        CreateGpsPlaces();
    return *mcGpsPlaces;
}

// The user's own table in StdDirectory, else the one installed with the
// program (../share/corvane/ beside the executable), else, for a program run
// from its build tree, the source tree's share/. The build tree names its
// source tree in a file of its own, so an installed program carries no path
// of the machine it was built on. Found nowhere: StdDirectory's, which the
// table reports as missing.
QString clsApplication::LocatePlacesFile(const QString& vsStdDirectory, const QString& vsProgramDirectory)
{
    const QString lsOwn = vsStdDirectory + kPlacesFile;
    if (QFileInfo::exists(lsOwn) || vsProgramDirectory.isEmpty())
        return lsOwn;
    const QDir lcProgram(vsProgramDirectory);
    const QString lsInstalled = lcProgram.filePath(QStringLiteral("../share/corvane/") + kPlacesFile);
    if (QFileInfo::exists(lsInstalled))
        return QDir::cleanPath(lsInstalled);
    QFile lcSourceTree(lcProgram.filePath(QStringLiteral("../") + kBuildTreeMarker));
    if (lcSourceTree.open(QIODevice::ReadOnly)) {
        const QString lsShipped =
            QDir(QString::fromUtf8(lcSourceTree.readAll().trimmed())).filePath(QStringLiteral("share/") + kPlacesFile);
        if (QFileInfo::exists(lsShipped))
            return lsShipped;
    }
    return lsOwn;
}
