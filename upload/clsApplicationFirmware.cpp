// The Memory Display firmware download: the display is asked whether it can
// take a download, the message protocol is switched off, the file goes line by
// line to the bootloader on the raw port, and the protocol comes back.

#include "app/clsApplication.h"

#include "app/clsLogger.h"
#include "link/clsHalvexMsg.h"
#include "link/clsRawPortSession.h"
#include "platform/Err.h"
#include "platform/IMainWindow.h"
#include "platform/IUserDialogs.h"
#include "upload/clsFirmwareStream.h"

namespace {
const QString kErrorTitle = QStringLiteral("ERROR");
// Both texts are 18 characters wide, so the blanks overwrite the warning exactly.
const QString kDontDisconnect = QStringLiteral(" Don't Disconnect!");
const QString kBlankText = QString(18, QLatin1Char(' '));
}

void clsApplication::writeMessageToDisplay(bool vbShow)
{
    QString lsArguments;
    for (const quint8 lbyItem : {quint8(0x0B), quint8(0x28), quint8(0x00), quint8(0x01)})
        lsArguments += clsHalvexMsg::ByteToHexArgument(lbyItem) + QLatin1Char(',');
    lsArguments += clsHalvexMsg::StringToArgumentList(vbShow ? kDontDisconnect : kBlankText);
    qint32 llTimeout = 1000;
    MessageBrooker().SendAndWait(0x0F, lsArguments, llTimeout);
}

// Every way out ends with 0xCB, sent after the protocol is back on.
void clsApplication::subStartSoftwareDownload(clsError& rcError, const QString& vsFileName)
{
    if (FirmwareFileAccepted(rcError, vsFileName))
        DownloadFirmware(rcError, vsFileName);
    MessageBrooker().Send(0xCB, QString());
    MainWindow().ProgressBar(IMainWindow::Bar::Download).SetValue(0);
}

// Refused before the display is asked anything: no name, no file, or a line
// the bootloader could not be given.
bool clsApplication::FirmwareFileAccepted(clsError& rcError, const QString& vsFileName)
{
    QString lsText;
    qint32 llError = ErrorCode::UnableToFindFile;
    if (vsFileName.isEmpty()) {
        lsText = QStringLiteral("No download file selected.");
        llError = ErrorCode::NoFileSelected;
    } else if (!CheckFileExists(vsFileName)) {
        lsText = QStringLiteral("Unable to find file '") + vsFileName + QLatin1Char('\'');
    } else {
        QList<QByteArray> lcLines;
        if (!Err::Trap([&]() { lcLines = clsFirmwareStream::ReadLines(vsFileName); })) {
            Err::Clear();
            lsText = QStringLiteral("ERROR in opening software download file:") + vsFileName;
            llError = ErrorCode::UnableToOpenFile;
        } else if (lcLines.value(0).startsWith("MD ")) {
            lsText = clsFirmwareStream::CheckLines(vsFileName, lcLines);
            llError = ErrorCode::UnableToOpenFile;
        }
    }
    if (lsText.isEmpty())
        return true;
    Dialogs().MsgBox(lsText, MsgButtons::OK, MsgIcon::None, kErrorTitle);
    rcError.SetError(llError, lsText);
    return false;
}

void clsApplication::DownloadFirmware(clsError& rcError, const QString& vsFileName)
{
    writeMessageToDisplay(true);
    qint32 llTimeout = 1000;
    clsHalvexMsg& lcMessage = MessageBrooker();
    const bool lbAnswered = lcMessage.SendAndWait(0xD9, QString(), llTimeout);
    if (!lbAnswered || lcMessage.ReceiveArguments(0) != 1) {
        writeMessageToDisplay(false);
        const QString lsText = lbAnswered ? QStringLiteral("Device can't download.") : QStringLiteral("Display not found.");
        Dialogs().MsgBox(lsText, MsgButtons::OK, MsgIcon::None, kErrorTitle);
        rcError.SetError(ErrorCode::UnableToCommunicate, lsText);
        return;
    }
    MainWindow().SetMdWarningHighlighted(true);
    lcMessage.StopComSending();
    StreamFirmware(rcError, vsFileName);
    lcMessage.StartComSending();
    MainWindow().SetMdWarningHighlighted(false);
    writeMessageToDisplay(false);
}

// A run-time error (the file, the port) ends the stream with its box; an
// interruption leaves the display in its bootloader, and the user must know.
void clsApplication::StreamFirmware(clsError& rcError, const QString& vsFileName)
{
    Dialogs().SetBusyCursor(true);
    clsFirmwareStream::Result lResult = clsFirmwareStream::Result::Complete;
    const bool lbRan = Err::Trap([&]() {
        clsRawPortSession lcSession(*this);
        clsFirmwareStream lcStream(*this, lcSession, MainWindow().ProgressBar(IMainWindow::Bar::Download));
        lResult = lcStream.SendFirmwareFile(QStringLiteral("MD "), vsFileName, false, false);
    });
    Dialogs().SetBusyCursor(false);
    if (!lbRan) {
        const QString lsText = QStringLiteral("ERROR in opening software download file:") + vsFileName;
        rcError.SetError(ErrorCode::UnableToOpenFile, lsText + QStringLiteral(" (") + Err::Description() +
                                                          QLatin1Char(')'));
        Err::Clear();
        Dialogs().MsgBox(lsText, MsgButtons::OK, MsgIcon::None, QStringLiteral("Error"));
        return;
    }
    if (lResult != clsFirmwareStream::Result::Interrupted)
        return;
    const QString lsText = QStringLiteral("Firmware update stopped: the Memory Display stays in its bootloader "
                                          "until the update is run again.");
    Logger().AddErrorToLog(lsText);
    mcStatus.SetStatusString(lsText);
    Dialogs().MsgBox(lsText, MsgButtons::OK, MsgIcon::Exclamation, ApplicationName());
    rcError.SetError(ErrorCode::CancelledByUser, lsText);
}
