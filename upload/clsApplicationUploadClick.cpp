// The upload buttons of the main window, with their boxes, for the window and
// the command line alike: the front end forwards the click and reads the
// outcome.

#include "app/clsApplication.h"

#include "platform/Err.h"
#include "platform/IMainWindow.h"
#include "platform/IUserDialogs.h"

namespace {
const QString kUploadTitle = QStringLiteral("KVT Upload");
}

clsOutcome clsApplication::cmdUploadDatabases_Click()
{
    return UploadClick(clsUploadSelection::Databases(),
                       [this](clsError& rcError) { HandleUploadDatabases(rcError); });
}

clsOutcome clsApplication::cmdInstallKVTSoftware_Click()
{
    return UploadClick(clsUploadSelection::DisplayImages(), [this](clsError& rcError) { HandleUploadKVT(rcError); });
}

// Nothing ticked: one box and nothing else. Otherwise the upload in the
// window's frame, its outcome in a box, then the error to HandleError.
clsOutcome clsApplication::UploadClick(const std::vector<UploadType>& vcTypes,
                                       const std::function<void(clsError&)>& vUpload)
{
    if (!mcUploadSelection.AnyTicked(vcTypes)) {
        const QString lsText = QStringLiteral("Please select one or more items to upload");
        Dialogs().MsgBox(lsText, MsgButtons::OK, MsgIcon::None, kUploadTitle);
        clsOutcome lcOutcome;
        lcOutcome.Number = ErrorCode::NoFileSelected;
        lcOutcome.Description = lsText;
        return lcOutcome;
    }
    // The buttons' frame with HandleError: the grid keeps its records.
    return clsOperation(*this, clsOperation::Kind::Buttons, true).Run([&](clsError& rcError) {
        if (!Err::Trap([&]() { vUpload(rcError); }))
            rcError.CheckVBError();
        if (rcError.IsError())
            Dialogs().MsgBox(QStringLiteral("ERROR: Upload Failed: ") + rcError.Description(), MsgButtons::OK,
                             MsgIcon::Critical, QStringLiteral("KVT Upload ERROR"));
        else
            Dialogs().MsgBox(QStringLiteral("Upload successfully completed"), MsgButtons::OK, MsgIcon::None,
                             kUploadTitle);
    });
}

// The file is the one the firmware text box shows, which mirrors the setting.
clsOutcome clsApplication::cmdInstallKVTMemoryDisplay_Click()
{
    const QString lsFile = MainWindow().UploadFileText(clsUpgradeFile::Of(UploadType::KVTMD).Index);
    return RunOperationQuietly([&](clsError& rcError) { subStartSoftwareDownload(rcError, lsFile); });
}
