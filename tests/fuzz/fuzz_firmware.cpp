// A Memory Display firmware file as a user might pick it: checked, then
// streamed to a bootloader that answers every line OK.
// Checks: the check names the first line that is not pairs of hexadecimal
// digits; a file that passes sends exactly the bytes of its lines after the
// header, each line once; a file whose first line is no "MD " header sends nothing.

#include "FuzzCheck.h"
#include "RecordingSerialPort.h"
#include "TestApp.h"
#include "link/clsRawPortSession.h"
#include "platform/Err.h"
#include "upload/clsFirmwareStream.h"

#include <cctype>
#include <cstdint>
#include <utility>

namespace {
// Takes every byte and answers OK once something was written since the last answer.
class AgreeingBootloader : public RecordingSerialPort
{
public:
    bool Output(const QByteArray& vcData) override { return mbLineWaiting = RecordingSerialPort::Output(vcData); }
    QByteArray Input() override { return std::exchange(mbLineWaiting, false) ? QByteArrayLiteral("OK\r\n") : QByteArray(); }
    bool WaitForInput(quint32 vlDeadline) override { return mbLineWaiting || RecordingSerialPort::WaitForInput(vlDeadline); }

private:
    bool mbLineWaiting = false;
};

bool IsHex(const QByteArray& vcLine)
{
    if (vcLine.isEmpty() || vcLine.size() % 2)
        return false;
    for (char c : vcLine)
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return false;
    return true;
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize)
{
    static AgreeingBootloader scPort;
    static TestApp scTest(&scPort);
    scPort.loop = &scTest.clock;
    const QByteArray lcInput(reinterpret_cast<const char*>(vcData), qsizetype(vlSize));
    const QString lsFile = WriteInput(QStringLiteral("update.kvt_md"), lcInput);
    const QList<QByteArray> lcLines = clsFirmwareStream::ReadLines(lsFile);
    int llFirstBad = 0;
    for (int i = 1; i < lcLines.size() && !llFirstBad; ++i)
        if (!IsHex(lcLines[i]))
            llFirstBad = i + 1;
    const QString lsProblem = clsFirmwareStream::CheckLines(lsFile, lcLines);
    if (llFirstBad) {
        FuzzCheck(lsProblem.startsWith(QStringLiteral("Line %1 of '").arg(llFirstBad)) && lsProblem.contains(lsFile),
                  "the check names the first bad line and the file", lsProblem);
        return 0;
    }
    FuzzCheck(lsProblem.isEmpty(), "a file of hexadecimal lines passes the check", lsProblem);
    scPort.written.clear();
    QByteArray lcExpected;
    for (int i = 1; i < lcLines.size(); ++i)
        lcExpected += QByteArray::fromHex(lcLines[i]);
    const bool lbHeader = !lcLines.isEmpty() && lcLines[0].startsWith("MD ");
    try {
        clsRawPortSession lcSession(*scTest.app);
        clsFirmwareStream lcStream(*scTest.app, lcSession, scTest.window.ProgressBar(IMainWindow::Bar::Small));
        const clsFirmwareStream::Result lResult = lcStream.SendFirmwareFile(QStringLiteral("MD "), lsFile, false, false);
        if (!lbHeader) {
            FuzzCheck(lResult != clsFirmwareStream::Result::Interrupted && scPort.written.join().isEmpty(),
                      "nothing is sent without the header");
            return 0;
        }
        FuzzCheck(lResult == clsFirmwareStream::Result::Complete, "an agreeing bootloader takes the whole file");
        FuzzCheck(scPort.written.join() == lcExpected, "every line's bytes are sent once, in order");
    } catch (const clsRuntimeError& e) {
        // Only a file that is its header alone runs out of lines.
        FuzzCheck(lbHeader && lcLines.size() == 1 && e.Number() == VbError::InputPastEndOfFile,
                  "only a header without lines is a run-time error", e.Description());
    }
    return 0;
}
