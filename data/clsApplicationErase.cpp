// Erasing the display's logging area, the operating-system check that comes
// before every import, and clearing the table on the PC.

#include "app/clsApplication.h"

#include "app/clsCommunicationScope.h"
#include "app/clsLogger.h"
#include "data/clsFlashMemInfo.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "link/clsHalvexMsg.h"
#include "platform/IMainWindow.h"
#include "platform/IUserDialogs.h"

namespace {
QString HexItem(qint32 vlValue)
{
    const QString lsHex = QString::number(vlValue, 16).toUpper();
    return (lsHex.size() == 1 ? QStringLiteral("0x0") : QStringLiteral("0x")) + lsHex;
}

const QString kCopying = QStringLiteral("Copying data from the KVT Memory Display");
}

// Page by page from FirstPage + 1; a page the display will not erase is only
// logged and the erase goes on.
void clsApplication::ClearFlash(clsError& rcError, bool vbCheckId)
{
    clsCommunicationScope lcLink(*this);
    const QString lsId = GetDallesID(rcError);
    if (vbCheckId && lsId != msDisplayId) {
        Logger().AddErrorToLog(QStringLiteral("Wrong ID found, aborting erase of database"));
        // "download" in this status text is what users have always seen
        mcStatus.SetStatusString(QStringLiteral("Wrong ID found, stopping download"));
        rcError.SetError(ErrorCode::DifferentDisplay, QString());
    } else {
        if (!rcError.IsError())
            MakeSureLowCurrentDisplay(rcError);
        if (!rcError.IsError())
            ErasePages(rcError);
    }
    if (!rcError.IsError())
        mcStatus.SetStatusString(QStringLiteral("Erasing Route Logging and PoliceCheck data completed"));
}

// The erase request goes out once; only the first argument of whatever the
// message object holds afterwards decides the log line.
void clsApplication::ErasePages(clsError& rcError)
{
    clsFlashMemInfo lcInfo;
    mcStatus.SetStatusString(kCopying);
    GetMemoryInfo(rcError, lcInfo);
    if (rcError.IsError())
        return;
    clsProgressBarInfo& lcBig = mcStatus.BigProgressBarInfo();
    lcBig.SetMin(lcInfo.FirstPage());
    lcBig.SetMax(lcInfo.LastPage());
    lcBig.Reset();
    lcBig.SetVisible(true);
    clsHalvexMsg& lcMessage = MessageBrooker();
    for (qint32 llPage = lcInfo.FirstPage() + 1; llPage <= lcInfo.LastPage(); ++llPage) {
        Logger().AddToLog(QStringLiteral("Starting to erase page ") + QString::number(llPage));
        mcStatus.SetStatusString(QStringLiteral("Erasing page ") + QString::number(llPage));
        bool lbEmpty = false;
        IsPageEmpty(rcError, llPage, lbEmpty);
        if (lbEmpty) {
            Logger().AddToLog(QStringLiteral("Page already empty"));
        } else if (rcError.IsError()) {
            break;
        } else {
            qint32 llTimeout = 1000;
            lcMessage.SendAndWait(0x35, HexItem(llPage), llTimeout);
            if (lcMessage.ReceiveArguments(0) == 1)
                Logger().AddToLog(QStringLiteral("Erase succesfull"));
            else
                Logger().AddErrorToLog(QStringLiteral("Erase not succesfull"));
        }
        lcBig.Increment();
    }
    lcBig.SetVisible(false);
}

// A logging area that starts with "KVT" holds an operating-system image, not
// logged data: the import must stop, whether or not the user clears it.
void clsApplication::CheckForOperatingSystem(clsError& rcError)
{
    clsFlashMemInfo lcInfo;
    GetMemoryInfo(rcError, lcInfo);
    if (rcError.IsError())
        return;
    const qint32 llPage = lcInfo.FirstPage() + 1;
    bool lbEmpty = false;
    IsPageEmpty(rcError, llPage, lbEmpty);
    if (lbEmpty || rcError.IsError())
        return;
    SendAndRetry(rcError, 0x34, HexItem(llPage) + QStringLiteral(",0x00,0x00,") + HexItem(3),
                 [](const clsHalvexMsg& vcMessage) {
                     return vcMessage.ReceiveArguments(0) != 1 || vcMessage.ReceiveNofArguments() == 4;
                 });
    if (rcError.IsError())
        return;
    const clsHalvexMsg& lcMessage = MessageBrooker();
    if (lcMessage.ReceiveArguments(1) != 'K' || lcMessage.ReceiveArguments(2) != 'V' ||
        lcMessage.ReceiveArguments(3) != 'T')
        return;
    mcStatus.SetStatusString(QStringLiteral("Found Corvane Operating System"));
    const MsgResult lcAnswer =
        Dialogs().MsgBox(QStringLiteral("Found Corvane Operating System, do you wish to clear the display?"),
                         MsgButtons::YesNo, MsgIcon::Question, ApplicationName());
    if (lcAnswer == MsgResult::Yes)
        ClearFlash(rcError, false);
    if (!rcError.IsError())
        rcError.SetError(ErrorCode::OperatingSystemDetected);
}

void clsApplication::ClearRitAndPoliceTableInformation()
{
    while (mcRecords->Count() > 0)
        mcRecords->Remove(mcRecords->Count());
    if (mcPlatform.MainWindow)
        mcPlatform.MainWindow->RecordsCleared();
    mbDataSaved = true;
}
