// The upload members of clsApplication: choosing the file of each upload
// type, and sending the ticked databases or display images page after page.

#include "app/clsApplication.h"

#include "app/clsSettings.h"
#include "data/clsFlashMemInfo.h"
#include "platform/IMainWindow.h"
#include "upload/clsMCUUpgrade.h"
#include "upload/clsUpgradeFile.h"

// A cancelled dialog changes nothing.
void clsApplication::GetNewFileNameForUpload(UploadType vType)
{
    clsUpgradeFile lcType(vType);
    const qint16 llIndex = qint16(lcType.GetIndex());
    const QString lsFile = GetNewFileNameForDatafile(lcType, MainWindow().UploadFileText(llIndex));
    if (lsFile.isEmpty())
        return;
    Settings().SetLastFilenames(llIndex, lsFile);
    MainWindow().SetUploadFileText(llIndex, lsFile);
}

void clsApplication::ShowLastUploadFiles()
{
    for (const clsUpgradeFile::Row& lcRow : clsUpgradeFile::Table())
        MainWindow().SetUploadFileText(lcRow.Index, Settings().LastFilenames(lcRow.Index));
}

void clsApplication::HandleUploadDatabases(clsError& rcError)
{
    UploadTicked(rcError, clsUploadSelection::Databases(), false);
}

void clsApplication::HandleUploadKVT(clsError& rcError)
{
    UploadTicked(rcError, clsUploadSelection::DisplayImages(), true);
}

// Every ticked file is checked before the first is sent. The files follow
// one another page after page from FirstPage + 1; the first failure ends the
// run, and the pages written before it stay on the display. The databases
// still hand every later file to the engine, which then sends nothing; the
// display images skip them.
void clsApplication::UploadTicked(clsError& rcError, const std::vector<UploadType>& vcTypes,
                                  bool vbSkipAfterError)
{
    clsFlashMemInfo lcInfo;
    clsMCUUpgrade lcEngine(*this);
    MakeSureLowCurrentDisplay(rcError);
    for (const UploadType lType : vcTypes) {
        if (!mcUploadSelection.Ticked(lType))
            continue;
        bool lbOk = false;
        CheckFileExistsAndWarn(rcError, Settings().LastFilenames(clsUpgradeFile::Of(lType).Index), lbOk);
        if (!lbOk)
            return;
    }
    if (rcError.IsError())
        return;
    lcEngine.SetStatus(&mcStatus);
    lcEngine.SetVerify(mbVerifyUploads);
    GetMemoryInfo(rcError, lcInfo);
    qint32 llStartPage = lcInfo.FirstPage() + 1;
    for (const UploadType lType : vcTypes) {
        if (!mcUploadSelection.Ticked(lType) || (vbSkipAfterError && rcError.IsError()))
            continue;
        lcEngine.SetFilename(Settings().LastFilenames(clsUpgradeFile::Of(lType).Index));
        lcEngine.StartUpLoad(rcError, llStartPage);
    }
    lcEngine.SetStatus(nullptr);
}

// No box here: the text reaches the user through the error.
void clsApplication::CheckFileExistsAndWarn(clsError& rcError, const QString& vsFileName, bool& rbOk)
{
    if (rcError.IsError())
        return;
    rbOk = CheckFileExists(vsFileName);
    if (rbOk)
        return;
    if (vsFileName.isEmpty())
        rcError.SetError(ErrorCode::NoFileSelected);
    else
        rcError.SetError(ErrorCode::UnableToFindFile, QStringLiteral("Unable to find '") + vsFileName +
                                                          QLatin1Char('\''));
}

void clsApplication::CheckFileExists(const QString& vsFileName, bool& rbExists) const
{
    rbExists = CheckFileExists(vsFileName);
}
