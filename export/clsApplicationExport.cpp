// The export members of clsApplication: saving the records of the last
// download, and picking a file of a given type for the upload pages.

#include "app/clsApplication.h"

#include "app/clsSettings.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "export/clsTabDelimited.h"
#include "platform/Err.h"
#include "platform/IUserDialogs.h"

#include <QDir>
#include <QFileInfo>

void clsApplication::SaveToDisk(clsError& rcError)
{
    clsTabDelimited lcTabDelimited;
    IDataFile& lcDataFile = lcTabDelimited;
    if (!lcDataFile.EditorIsAvailible()) {
        Dialogs().MsgBox(lcDataFile.EditorName() + QStringLiteral(" is not availible, please contact your supplier"),
                         MsgButtons::OK, MsgIcon::Critical, ApplicationName());
        return;
    }
    // The dialog has no overwrite prompt of its own: the question below is the program's.
    const QString lsFileName = Dialogs().ShowSave(lcDataFile.FileFilter(), Settings().LastTXTFilename(), QString());
    if (lsFileName.isEmpty())
        return;
    if (CheckFileExists(lsFileName)) {
        const MsgResult lcAnswer = Dialogs().MsgBox(
            lsFileName + QStringLiteral(" already exists.\r\nDo you want to replace it?"), MsgButtons::YesNo,
            MsgIcon::None, QStringLiteral("(Save As) ") + ApplicationName());
        if (lcAnswer == MsgResult::No)
            return;
    }
    Settings().SetLastTXTFilename(lsFileName);
    // A failed write leaves DataSaved as it was: the records are not on disk.
    if (!Err::Trap([&]() { lcDataFile.SaveToFile(Settings().LastTXTFilename(), Records()); })) {
        rcError.CheckVBError();
        return;
    }
    SetDataSaved(true);
}

QString clsApplication::GetNewFileNameForDatafile(IDataFile& rcDataFile, const QString& vsCurrent)
{
    if (!rcDataFile.EditorIsAvailible())
        return QString();
    QString lsInitDir = GetDirectoryFromPath(vsCurrent);
    if (lsInitDir.isEmpty() || !QFileInfo(lsInitDir).isDir())
        lsInitDir = StdDirectory();
    return Dialogs().ShowOpen(rcDataFile.FileFilter(), QString(), lsInitDir);
}

bool clsApplication::CheckFileExists(const QString& vsPath) const
{
    const QFileInfo lcInfo(vsPath);
    return lcInfo.exists() && lcInfo.isFile();
}
