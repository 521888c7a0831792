// The export members of clsApplication: saving the records of the last
// download, and picking a file of a given type for the upload pages.

#include "app/clsApplication.h"

#include "app/clsLogger.h"
#include "app/clsSettings.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "export/clsExportFormats.h"
#include "export/clsRecordExport.h"
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
    if (!MayReplace(lsFileName))
        return;
    Settings().SetLastTXTFilename(lsFileName);
    // A failed write leaves DataSaved as it was: the records are not on disk.
    if (!Err::Trap([&]() { lcDataFile.SaveToFile(Settings().LastTXTFilename(), Records()); })) {
        rcError.CheckVBError();
        return;
    }
    SetDataSaved(true);
}

bool clsApplication::MayReplace(const QString& vsFileName)
{
    if (!CheckFileExists(vsFileName))
        return true;
    const MsgResult lcAnswer = Dialogs().MsgBox(
        vsFileName + QStringLiteral(" already exists.\r\nDo you want to replace it?"), MsgButtons::YesNo,
        MsgIcon::None, QStringLiteral("(Save As) ") + ApplicationName());
    return lcAnswer != MsgResult::No;
}

// The dialog starts where the last tab-delimited file went: exports usually go beside it.
void clsApplication::ExportAs(clsError& rcError, const QString& vsFormat)
{
    const QString lsFileName = Dialogs().ShowSave(clsExportFormats::DialogFilter(), QString(),
                                                  GetDirectoryFromPath(Settings().LastTXTFilename()));
    if (lsFileName.isEmpty() || !MayReplace(lsFileName))
        return;
    ExportToFile(rcError, lsFileName, vsFormat.isEmpty() ? clsExportFormats::OfFile(lsFileName) : vsFormat);
}

void clsApplication::ExportToFile(clsError& rcError, const QString& vsFileName, const QString& vsFormat)
{
    const std::unique_ptr<IDataFile> lcFile = clsExportFormats::Create(vsFormat, ExportContext());
    const bool lbWritten = Err::Trap([&]() {
        if (!lcFile)
            throw clsRuntimeError(VbError::BadFileNameOrNumber,
                                  QStringLiteral("No export format for ") + QDir::toNativeSeparators(vsFileName)
                                      + QStringLiteral(": name it .") + clsExportFormats::Names().join(QStringLiteral(", ."))
                                      + QStringLiteral(" or give the format"),
                                  QStringLiteral("Export"));
        lcFile->SaveToFile(vsFileName, Records());
    });
    if (!lbWritten) {
        rcError.CheckVBError();
        return;
    }
    SetDataSaved(true);
    const auto* lcExport = dynamic_cast<const clsRecordExport*>(lcFile.get());
    if (lcExport && !lcExport->Note().isEmpty()) {
        Logger().AddToLog(lcExport->Note() + QStringLiteral(": ") + QDir::toNativeSeparators(vsFileName));
        Status().SetStatusString(lcExport->Note());
    }
}

clsExportContext clsApplication::ExportContext() const
{
    return {mcSelection, msDisplayId, mcRecordsTaken};
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
