#include "upload/clsFirmwareStream.h"

#include "app/clsApplication.h"
#include "app/clsLogger.h"
#include "link/clsRawPortSession.h"
#include "platform/Err.h"
#include "platform/IEventLoop.h"
#include "platform/IMainWindow.h"

#include <QFile>

namespace {
constexpr long kDeviceIOError = 57;
// The start command at the end of the file: the bootloader may start the
// new firmware without a word.
const QByteArray kStartCommand = QByteArrayLiteral("4853");
constexpr int kSilencesBeforeResync = 4;

bool IsHexLine(const QByteArray& vcLine)
{
    if (vcLine.size() % 2 != 0)
        return false;
    for (const char c : vcLine)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')))
            return false;
    return true;
}
}

clsFirmwareStream::clsFirmwareStream(clsApplication& rcApp, clsRawPortSession& rcSession, IProgressBar& rcBar)
    : mrApp(rcApp)
    , mrSession(rcSession)
    , mrBar(rcBar)
{
}

// Lines end with CR LF, LF or CR; a last line end adds no empty line.
QList<QByteArray> clsFirmwareStream::ReadLines(const QString& vsFileName)
{
    QFile lcFile(vsFileName);
    if (!lcFile.open(QIODevice::ReadOnly))
        Err::Raise(VbError::FileNotFound, QStringLiteral("SendFirmwareFile"));
    QByteArray lcText = lcFile.readAll();
    lcText.replace("\r\n", "\n").replace('\r', '\n');
    if (lcText.endsWith('\n'))
        lcText.chop(1);
    return lcText.isEmpty() ? QList<QByteArray>() : lcText.split('\n');
}

QString clsFirmwareStream::CheckLines(const QString& vsFileName, const QList<QByteArray>& vcLines)
{
    for (int i = 1; i < vcLines.size(); ++i) {
        // A line with nothing to send is never answered: the stream would retry it for ever.
        if (vcLines[i].isEmpty())
            return QStringLiteral("Line %1 of '%2' is empty.").arg(i + 1).arg(vsFileName);
        if (!IsHexLine(vcLines[i]))
            return QStringLiteral("Line %1 of '%2' is not made of pairs of hexadecimal digits.")
                .arg(i + 1)
                .arg(vsFileName);
    }
    return QString();
}

clsFirmwareStream::Result clsFirmwareStream::SendFirmwareFile(const QString& vsStartMarker, const QString& vsFileName,
                                                              bool vbAddCR, bool vbAddLF)
{
    const QList<QByteArray> lcLines = ReadLines(vsFileName);
    const bool lbVisible = mrBar.Visible();
    mrBar.SetVisible(true);
    mrBar.SetMax(int(lcLines.size()));
    const int llThreshold = 3 + (vbAddCR ? 1 : 0) + (vbAddLF ? 1 : 0);
    QByteArray lcMarker = vsStartMarker.toLatin1();
    int llLineCount = 0;
    Result lResult = Result::Complete;
    for (int i = 0; i < lcLines.size(); ++i) {
        mrApp.EventLoop().DoEvents();
        if (!lcMarker.isEmpty()) {
            if (lcLines[i].left(3) != lcMarker.left(3)) {
                lResult = Result::HeaderRefused;
                break;
            }
            if (++i >= lcLines.size())
                Err::Raise(VbError::InputPastEndOfFile, QStringLiteral("SendFirmwareFile"));
            lcMarker.clear();
        }
        ++llLineCount;
        mrBar.SetValue(llLineCount);
        const int llLines = int(lcLines.size()) - (vsStartMarker.isEmpty() ? 0 : 1);
        if (!SendLine(lcLines[i], llLineCount, llLines, vbAddCR, vbAddLF, llThreshold))
            break;
    }
    if (mbInterrupted)
        lResult = Result::Interrupted;
    else
        mrBar.SetValue(mrBar.Max());
    mrBar.SetVisible(lbVisible);
    return lResult;
}

// The answer decides: OK or ACK the next line, REB the end, NAK the same line
// again, silence the same line again, a resync after every fourth. The start
// command's fourth silence means the unit started without a word.
bool clsFirmwareStream::SendLine(const QByteArray& vcLine, int vlLine, int vlLines, bool vbAddCR, bool vbAddLF,
                                 int vlThreshold)
{
    const QString lsLine = QStringLiteral("Firmware line %1 of %2").arg(vlLine).arg(vlLines);
    Report(lsLine, false);
    int llAttempt = 1;
    while (llAttempt > 0) {
        if (mrApp.CancelRequested()) {
            mbInterrupted = true;
            return false;
        }
        WriteLine(vcLine, vbAddCR, vbAddLF);
        const QByteArray lcReply = CollectReply(vlThreshold);
        if (lcReply.contains("OK") || lcReply.contains("ACK"))
            return true;
        if (lcReply.contains("REB"))
            return false;
        ++llAttempt;
        if (lcReply.contains("NAK")) {
            ++mlNaks;
            Report(lsLine + QStringLiteral(" answered NAK, sending it again"), true);
            continue;
        }
        if (vcLine == kStartCommand && llAttempt == kSilencesBeforeResync + 1)
            return false;
        if (llAttempt <= kSilencesBeforeResync) {
            Report(lsLine + QStringLiteral(" not answered, sending it again"), true);
            continue;
        }
        ++mlResyncs;
        Report(lsLine + QStringLiteral(" not answered, resynchronising the bootloader (round %1)").arg(mlResyncs),
               true);
        Resynchronise();
        llAttempt = 1;
    }
    return true;
}

// One byte a write, as the bootloader has always been fed.
void clsFirmwareStream::WriteLine(const QByteArray& vcLine, bool vbAddCR, bool vbAddLF)
{
    for (int i = 0; i + 1 < vcLine.size(); i += 2)
        Write(QByteArray::fromHex(vcLine.mid(i, 2)));
    if (vbAddCR)
        Write(QByteArray(1, '\r'));
    if (vbAddLF)
        Write(QByteArray(1, '\n'));
}

// Judged only once the answer is longer than the threshold, so a bare "ACK"
// waits out the whole time.
QByteArray clsFirmwareStream::CollectReply(int vlThreshold)
{
    IEventLoop& lcLoop = mrApp.EventLoop();
    const quint32 llDeadline = lcLoop.timeGetTime() + kReplyWaitMs;
    QByteArray lcReply;
    while (lcReply.size() <= vlThreshold && qint32(lcLoop.timeGetTime() - llDeadline) < 0) {
        mrSession.WaitForInput(llDeadline);
        lcReply += mrSession.Input();
    }
    return lcReply;
}

// A record cut short on the line is completed by the fill and rejected; the
// bootloader drops the rest of the fill until the next record mark.
void clsFirmwareStream::Resynchronise()
{
    IEventLoop& lcLoop = mrApp.EventLoop();
    for (int i = 0; i < kResyncCharacters; ++i) {
        Write(QByteArrayLiteral("Y"));
        lcLoop.Sleep(1);
    }
    lcLoop.Sleep(kResyncPauseMs);
}

void clsFirmwareStream::Write(const QByteArray& vcBytes)
{
    if (!mrSession.Output(vcBytes))
        Err::Raise(kDeviceIOError, QStringLiteral("SendFirmwareFile"));
}

// The line in flight on the status line; every retry in the log.
void clsFirmwareStream::Report(const QString& vsText, bool vbWarning)
{
    if (vbWarning)
        mrApp.Logger().AddWarningToLog(vsText);
    else
        mrApp.Status().SetStatusString(vsText);
}
