#include "upload/clsMCUUpgrade.h"

#include "app/clsApplication.h"
#include "app/clsCommunicationScope.h"
#include "app/clsError.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"
#include "platform/IUserDialogs.h"

#include <QFile>
#include <algorithm>

namespace {
const QString kWriteFailed = QStringLiteral("Unable to write to diplay, aborting upload");
// Two address bytes reach 64 KiB into a page.
constexpr qint32 kMaxSizeOnePage = 16;
}

clsMCUUpgrade::clsMCUUpgrade(clsApplication& rcApp)
    : mrApp(rcApp)
{
}

void clsMCUUpgrade::StartUpLoad(clsError& rcError, qint32& rlStartPage)
{
    clsProgressBarInfo& lcBig = Status().BigProgressBarInfo();
    clsProgressBarInfo& lcSmall = Status().SmallProgressBarInfo();
    lcBig.SetVisible(false);
    lcBig.SetMin(0);
    lcBig.SetMax(3);
    lcBig.Reset();
    lcBig.SetVisible(true);
    lcSmall.SetVisible(false);
    lcSmall.SetMin(0);
    lcSmall.SetMax(3);
    mlBytesWritten = 0;
    {
        clsCommunicationScope lcScope(mrApp);
        mcInfo = clsFlashMemInfo();
        // Once an earlier file of the run failed, nothing more goes to the display.
        if (!rcError.IsError())
            mrApp.GetMemoryInfo(rcError, mcInfo);
        lcBig.Increment();
        msDisplayId.clear();
        if (!rcError.IsError()) {
            msDisplayId = mrApp.GetDallesID(rcError);
            lcBig.Increment();
        }
        // An empty ID without an error ends the upload quietly.
        if (msDisplayId.isEmpty() || rcError.IsError()) {
            Status().SetStatusString(QStringLiteral("Stopping upload, Invalid ID"));
        } else {
            ReadUploadFile(rcError);
            if (!rcError.IsError()) {
                lcBig.Increment();
                // Exactly 1: the first file of a series on a display whose FirstPage is 0.
                if (rlStartPage == 1)
                    CheckDisplayIsEmpty(rcError);
            }
            if (!rcError.IsError()) {
                lcBig.Increment();
                qint32 llNextPage = rlStartPage;
                UploadData(rcError, rlStartPage, llNextPage);
                if (!rcError.IsError() && mbVerify)
                    VerifyUpload(rcError, rlStartPage);
                rlStartPage = llNextPage;
            }
            if (!rcError.IsError())
                Status().SetStatusString(QStringLiteral("Upload Completed"));
        }
    }
    lcBig.SetVisible(false);
}

void clsMCUUpgrade::ReadUploadFile(clsError& rcError)
{
    if (msFilename.isEmpty()) {
        rcError.SetError(ErrorCode::FilenameEmpty);
        return;
    }
    Status().SetStatusString(QStringLiteral("Opening File"));
    QFile lcFile(msFilename);
    if (!lcFile.open(QIODevice::ReadOnly)) {
        Status().SetStatusString(QStringLiteral("Unable to open file ") + msFilename);
        rcError.SetError(ErrorCode::UnableToOpenFile);
        return;
    }
    Status().SetStatusString(QStringLiteral("Reading File"));
    mcData = lcFile.readAll();
    const bool lbWhole = mcData.size() == lcFile.size();
    Status().SetStatusString(QStringLiteral("Closing File"));
    lcFile.close();
    if (!lbWhole)
        rcError.SetError(ErrorCode::UnableToOpenFile, QStringLiteral("Unable to read file ") + msFilename);
    else if (mcData.isEmpty())
        rcError.SetError(ErrorCode::UnableToOpenFile,
                         QStringLiteral("Nothing to upload: the file ") + msFilename + QStringLiteral(" is empty"));
}

// Page FirstPage itself is never looked at; the scan stops at the first page that holds data.
void clsMCUUpgrade::CheckDisplayIsEmpty(clsError& rcError)
{
    Status().SetStatusString(QStringLiteral("check if display is empty"));
    clsProgressBarInfo& lcSmall = Status().SmallProgressBarInfo();
    const bool lbVisible = lcSmall.Visible();
    const qint32 llMin = lcSmall.Min();
    const qint32 llMax = lcSmall.Max();
    lcSmall.SetVisible(true);
    lcSmall.SetMin(mcInfo.FirstPage() + 1);
    lcSmall.SetMax(mcInfo.LastPage());
    bool lbEmpty = true;
    for (qint32 llPage = mcInfo.FirstPage() + 1; llPage <= mcInfo.LastPage() && lbEmpty; ++llPage) {
        mrApp.IsPageEmpty(rcError, llPage, lbEmpty);
        lcSmall.Increment();
    }
    if (!rcError.IsError() && !lbEmpty) {
        const MsgResult lcAnswer =
            mrApp.Dialogs().MsgBox(QStringLiteral("Display not empty do you whish to continue?"), MsgButtons::YesNo,
                                   MsgIcon::Question, clsApplication::ApplicationName());
        if (lcAnswer == MsgResult::Yes)
            mrApp.ClearFlash(rcError, false);
        else
            rcError.SetError(ErrorCode::CancelledByUser);
    }
    lcSmall.SetVisible(lbVisible);
    lcSmall.SetMin(llMin);
    lcSmall.SetMax(llMax);
}

// A geometry the loop cannot work with would send nothing for ever or
// addresses that do not fit their two bytes.
bool clsMCUUpgrade::CheckGeometry(clsError& rcError)
{
    if (mcInfo.MaxDataOneMessage() > 0 && mcInfo.SizeOnePage() >= 0 && mcInfo.SizeOnePage() <= kMaxSizeOnePage)
        return true;
    rcError.SetError(ErrorCode::CommunicationError,
                     QStringLiteral("The display reports pages of 2^%D bytes and %D bytes a message: "
                                    "nothing can be uploaded"),
                     {mcInfo.SizeOnePage(), mcInfo.MaxDataOneMessage()});
    return false;
}

// Messages never cross a page end, and the address restarts at 0 on every
// page. The loop stops with one byte still to send, so that byte is never
// written: the display has always been given its files this way.
void clsMCUUpgrade::UploadData(clsError& rcError, qint32 vlStartPage, qint32& rlNextPage)
{
    if (!CheckGeometry(rcError))
        return;
    const qint32 llTotal = qint32(mcData.size());
    const qint32 llMax = mcInfo.MaxDataOneMessage();
    const qint32 llPageSize = qint32(1) << mcInfo.SizeOnePage();
    qint32 llOffset = 0;
    qint32 llPage = vlStartPage;
    Status().SetStatusString(QStringLiteral("Uploading Information"));
    clsProgressBarInfo& lcBig = Status().BigProgressBarInfo();
    lcBig.SetMin(0);
    lcBig.SetMax(llTotal);
    lcBig.Reset();
    lcBig.SetStepSize(llMax);
    lcBig.SetVisible(true);
    // The exponent, not the page size; the bar stays hidden.
    clsProgressBarInfo& lcSmall = Status().SmallProgressBarInfo();
    lcSmall.SetMin(0);
    lcSmall.SetMax(mcInfo.SizeOnePage());
    lcSmall.Reset();
    lcSmall.SetStepSize(llMax);
    lcSmall.SetVisible(false);
    Status().SetSmallStatusString(QStringLiteral("Page") + QString::number(llPage));
    while (llOffset < llTotal - 1 && !rcError.IsError()) {
        const qint32 llPageEnd = (llPage + 1 - vlStartPage) * llPageSize - 1;
        if (llOffset + llMax > llPageEnd) {
            // The bytes left in this page, but never past the end of the file.
            const qint32 llCount = qMin(llPageEnd + 1 - llOffset, llTotal - llOffset);
            if (llCount > 0 && SendPart(rcError, llPage, llPageSize, llOffset, llCount))
                llOffset += llCount;
            if (llOffset < llTotal - 1) {
                ++llPage;
                Status().SetSmallStatusString(QStringLiteral("Page") + QString::number(llPage));
            }
        } else {
            const qint32 llCount = qMin(llTotal - llOffset, llMax);
            // The full message size, also after a short last message: it ends the loop.
            if (SendPart(rcError, llPage, llPageSize, llOffset, llCount))
                llOffset += llMax;
        }
        lcBig.Increment();
    }
    Status().SetSmallStatusString(QString());
    rlNextPage = llPage + 1;
}

bool clsMCUUpgrade::SendPart(clsError& rcError, qint32 vlPage, qint32 vlPageSize, qint32 vlOffset, qint32 vlCount)
{
    const qint32 llAddress = vlOffset % vlPageSize;
    bool lbOk = false;
    QString lsCannotBuild;
    try {
        lbOk = mrApp.MessageBrooker().SendFlashData(vlPage, quint8(llAddress / 256), quint8(llAddress % 256),
                                                    quint8(vlCount), vlOffset, mcData);
    } catch (const clsRuntimeError& e) {
        lsCannotBuild = e.Description();
    }
    if (lbOk) {
        mlBytesWritten = qMax(mlBytesWritten, vlOffset + vlCount);
        return true;
    }
    Status().SetStatusString(kWriteFailed);
    mrApp.Dialogs().MsgBox(kWriteFailed, MsgButtons::OK, MsgIcon::Critical, clsApplication::ApplicationName());
    if (lsCannotBuild.isEmpty())
        rcError.SetError(ErrorCode::UnableToCommunicate);
    else
        rcError.SetError(ErrorCode::UnableToCommunicate,
                         QStringLiteral("The write of %D bytes of %S to page %D at address %D does not fit in one "
                                        "message (%S)"),
                         {vlCount, msFilename, vlPage, llAddress, lsCannotBuild});
    return false;
}

// Reads back what the write put on the display, with the page read of the
// download, and names the first byte that differs.
void clsMCUUpgrade::VerifyUpload(clsError& rcError, qint32 vlStartPage)
{
    Status().SetStatusString(QStringLiteral("Verifying Information"));
    const qint32 llPageSize = qint32(1) << mcInfo.SizeOnePage();
    const qint32 llMax = mcInfo.MaxDataOneMessage();
    qint32 llOffset = 0;
    while (llOffset < mlBytesWritten && !rcError.IsError()) {
        const qint32 llPage = vlStartPage + llOffset / llPageSize;
        const qint32 llAddress = llOffset % llPageSize;
        const qint32 llCount = std::min({llMax, llPageSize - llAddress, mlBytesWritten - llOffset});
        Status().SetSmallStatusString(QStringLiteral("Page") + QString::number(llPage));
        const QByteArray lcRead = ReadPart(rcError, llPage, llAddress, llCount);
        for (qint32 i = 0; i < lcRead.size() && !rcError.IsError(); ++i) {
            if (lcRead.at(i) == mcData.at(llOffset + i))
                continue;
            rcError.SetError(ErrorCode::UnableToCommunicate,
                             QStringLiteral("Verify failed: %S differs from the display at page %D, offset %D "
                                            "(byte %D of the file: 0x%X written, 0x%X read back)"),
                             {msFilename, llPage, llAddress + i, llOffset + i, quint8(mcData.at(llOffset + i)),
                              quint8(lcRead.at(i))});
        }
        llOffset += llCount;
    }
    Status().SetSmallStatusString(QString());
}

QByteArray clsMCUUpgrade::ReadPart(clsError& rcError, qint32 vlPage, qint32 vlAddress, qint32 vlCount)
{
    const QString lsItems = clsHalvexMsg::ByteToHexArgument(quint8(vlPage)) + QLatin1Char(',') +
                            clsHalvexMsg::ByteToHexArgument(quint8(vlAddress / 256)) + QLatin1Char(',') +
                            clsHalvexMsg::ByteToHexArgument(quint8(vlAddress % 256)) + QLatin1Char(',') +
                            clsHalvexMsg::ByteToHexArgument(quint8(vlCount));
    mrApp.SendAndRetry(rcError, 0x34, lsItems, [vlCount](const clsHalvexMsg& vcMessage) {
        return vcMessage.ReceiveArguments(0) != 1 || vcMessage.ReceiveNofArguments() == vlCount + 1;
    });
    if (rcError.IsError())
        return QByteArray();
    const clsHalvexMsg& lcMessage = mrApp.MessageBrooker();
    if (lcMessage.ReceiveArguments(0) != 1) {
        rcError.SetError(ErrorCode::UnableToCommunicate,
                         QStringLiteral("Verify failed: the display did not give back page %D at offset %D of %S"),
                         {vlPage, vlAddress, msFilename});
        return QByteArray();
    }
    QByteArray lcBytes;
    for (qint32 i = 1; i <= vlCount; ++i)
        lcBytes.append(char(lcMessage.ReceiveArguments(i)));
    return lcBytes;
}
