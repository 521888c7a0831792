// The clear dialogue around ClearFlash, the same for the main window's erase
// buttons and the command line. It lives apart from the erase itself because
// it saves the route data first, which brings in the export.

#include "app/clsApplication.h"

#include "platform/Err.h"
#include "platform/IUserDialogs.h"

// Unsaved route data is never erased from the display: answering No to the
// save question ends the dialogue without a word.
clsOutcome clsApplication::clearDisplay()
{
    clsOutcome lcDeclined;
    lcDeclined.Cancelled = true;
    if (!mbDataSaved) {
        const MsgResult lcSave = Dialogs().MsgBox(
            QStringLiteral("Do you want to save route info to disk, before clearing the display memory?"),
            MsgButtons::YesNo, MsgIcon::None, ApplicationName());
        if (lcSave != MsgResult::No) {
            mbDataSaved = true;
            clsError lcSaveError;
            Err::Trap([&]() { SaveToDisk(lcSaveError); });
            HandleError(lcSaveError);
        }
    }
    if (!mbDataSaved)
        return lcDeclined;
    if (Dialogs().MsgBox(QStringLiteral("Are you sure you want to clear the display database?"), MsgButtons::YesNo,
                         MsgIcon::None, ApplicationName()) != MsgResult::Yes)
        return lcDeclined;
    // The closing box comes whatever way the erase ended, a run-time error too.
    return clsOperation(*this, clsOperation::Kind::Buttons, true).Run([this](clsError& rcError) {
        Err::Trap([&]() { ClearFlash(rcError, false); });
        if (rcError.IsError())
            Dialogs().MsgBox(QStringLiteral("ERROR: Clearing display Failed: ") + rcError.Description(),
                             MsgButtons::OK, MsgIcon::None, QStringLiteral("KVT Upload ERROR"));
        else
            Dialogs().MsgBox(QStringLiteral("Clearing display successfully completed"), MsgButtons::OK,
                             MsgIcon::None, QStringLiteral("KVT Upload"));
    });
}
