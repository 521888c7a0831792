// A Memory Display firmware file as a user might pick it: checked, then
// streamed to a bootloader that answers every line OK.
// Checks: the check names the first line that is not pairs of hexadecimal
// digits; a file that passes sends exactly the bytes of its lines after the
// header, each line once; a file whose first line is no "MD " header sends nothing.

#include "FakeMainWindow.h"
#include "FuzzCheck.h"
#include "TestApp.h"
#include "link/clsRawPortSession.h"
#include "platform/IEventLoop.h"
#include "platform/ISerialPort.h"
#include "platform/Err.h"
#include "upload/clsFirmwareStream.h"

#include <QFile>
#include <cctype>
#include <cstdint>

namespace {
// Takes every byte and answers OK once something was written since the last answer.
class AgreeingBootloader : public ISerialPort
{
public:
    void SetCommPort(const QString& vsPort) override { msPort = vsPort; }
    QString CommPort() const override { return msPort; }
    bool PortOpen() const override { return mbOpen; }
    bool SetPortOpen(bool vbOpen) override { return (mbOpen = vbOpen), true; }
    bool Output(const QByteArray& vcData) override
    {
        written += vcData;
        mbLineWaiting = true;
        return true;
    }
    QByteArray Input() override
    {
        const bool lbAnswer = mbLineWaiting;
        mbLineWaiting = false;
        return lbAnswer ? QByteArrayLiteral("OK\r\n") : QByteArray();
    }
    bool WaitForInput(quint32 vlDeadline) override
    {
        if (!mbLineWaiting && loop)
            loop->WaitForEvents(vlDeadline);
        return mbLineWaiting;
    }
    void Flush() override {}
    void Purge() override {}

    QByteArray written;
    IEventLoop* loop = nullptr;

private:
    QString msPort;
    bool mbOpen = false;
    bool mbLineWaiting = false;
};

bool IsHex(const QByteArray& vcLine)
{
    if (vcLine.size() % 2)
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
    const QString lsFile = scTest.Home() + QStringLiteral("update.kvt_md");
    {
        QFile lcFile(lsFile);
        FuzzCheck(lcFile.open(QIODevice::WriteOnly)
                      && lcFile.write(reinterpret_cast<const char*>(vcData), qint64(vlSize)) == qint64(vlSize),
                  "firmware file written");
    }
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
    // An empty line passes the check but sends nothing, so no bootloader
    // answers it: the stream waits and resynchronises for ever.
    for (int i = 1; i < lcLines.size(); ++i)
        if (lcLines[i].isEmpty())
            return 0;

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
            FuzzCheck(lResult != clsFirmwareStream::Result::Interrupted && scPort.written.isEmpty(),
                      "nothing is sent without the header");
            return 0;
        }
        FuzzCheck(lResult == clsFirmwareStream::Result::Complete, "an agreeing bootloader takes the whole file");
        FuzzCheck(scPort.written == lcExpected, "every line's bytes are sent once, in order");
    } catch (const clsRuntimeError& e) {
        // Only a file that is its header alone runs out of lines.
        FuzzCheck(lbHeader && lcLines.size() == 1 && e.Number() == VbError::InputPastEndOfFile,
                  "only a header without lines is a run-time error", e.Description());
    }
    return 0;
}
