#include "link/clsHalvexMsg.h"

#include "platform/Cp1252.h"
#include "platform/Err.h"
#include "platform/IEventLoop.h"

#include <cmath>

namespace {

int DigitValue(QChar vcChar)
{
    const char c = vcChar.toLatin1();
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The runtime's numeric reading of a text: blanks are ignored, "&H" / "&O"
// start a hexadecimal / octal literal typed like the runtime types it (four
// hex digits at most give a signed 16-bit value, so &HFFFF is -1), anything
// else is a decimal number with an optional fraction. Reading stops at the
// first character that does not fit; nothing readable gives 0.
double ReadNumber(const QString& vsText)
{
    QString lsText = vsText;
    lsText.remove(QLatin1Char(' ')).remove(QLatin1Char('\t')).remove(QLatin1Char('\n'));
    if (lsText.startsWith(QLatin1Char('&')) && lsText.size() >= 2) {
        const QChar lcKind = lsText.at(1).toUpper();
        const int llBase = lcKind == QLatin1Char('H') ? 16 : 8;
        const int llStart = (lcKind == QLatin1Char('H') || lcKind == QLatin1Char('O')) ? 2 : 1;
        qint64 llValue = 0;
        int llDigits = 0;
        for (int i = llStart; i < lsText.size() && llDigits < 16; ++i, ++llDigits) {
            const int llDigit = DigitValue(lsText.at(i));
            if (llDigit < 0 || llDigit >= llBase)
                break;
            llValue = llValue * llBase + llDigit;
        }
        if (llValue <= 0xFFFF && llDigits <= 4)
            return qint16(quint16(llValue));
        return qint32(quint32(llValue));
    }
    int i = 0;
    bool lbNegative = false;
    if (i < lsText.size() && (lsText.at(i) == QLatin1Char('-') || lsText.at(i) == QLatin1Char('+')))
        lbNegative = lsText.at(i++) == QLatin1Char('-');
    double ldValue = 0;
    for (; i < lsText.size() && lsText.at(i).isDigit(); ++i)
        ldValue = ldValue * 10 + lsText.at(i).digitValue();
    if (i < lsText.size() && lsText.at(i) == QLatin1Char('.')) {
        double ldScale = 0.1;
        for (++i; i < lsText.size() && lsText.at(i).isDigit(); ++i, ldScale /= 10)
            ldValue += lsText.at(i).digitValue() * ldScale;
    }
    return lbNegative ? -ldValue : ldValue;
}

// A number stored into a byte: rounded half to even, overflow outside 0..255.
qint64 ToByte(double vdValue)
{
    const double ldRounded = std::nearbyint(vdValue);
    if (ldRounded < 0 || ldRounded > 255)
        Err::Raise(VbError::Overflow, QStringLiteral("clsHalvexMsg"));
    return qint64(ldRounded);
}

}

clsHalvexMsg::clsHalvexMsg(IEventLoop* vcLoop, std::function<bool(const QByteArray&)> vSendString, QObject* vParent)
    : QObject(vParent)
    , mcLoop(vcLoop)
    , mSendString(std::move(vSendString))
{
    ClearSendBuffer();
    ClearRecieveBuffer();
    mbSending = true;
}

// A wait that is still looping when the object goes ends at once.
clsHalvexMsg::~clsHalvexMsg()
{
    mbReceived = true;
}

void clsHalvexMsg::ClearSendBuffer()
{
    mcSend = FrameRecord{};
}

void clsHalvexMsg::ClearRecieveBuffer()
{
    mcReceive = FrameRecord{};
}

void clsHalvexMsg::AddArgumentByte(qint64 vlValue)
{
    if (vlValue < 0 || vlValue > 255)
        Err::Raise(VbError::Overflow, QStringLiteral("clsHalvexMsg"));
    if (mcSend.NofArguments >= kBufferSize)
        Err::Raise(VbError::SubscriptOutOfRange, QStringLiteral("clsHalvexMsg"));
    mcSend.Arguments[mcSend.NofArguments] = quint8(vlValue);
    ++mcSend.NofArguments;
}

// A one-character tail is never read (the 3 of "1,2,3" is dropped), and an
// "&H" item of the wrong length repeats the previous item's value: callers
// and the display have always lived with both.
void clsHalvexMsg::AddArguments(const QString& vsArguments)
{
    QString lsRest = vsArguments;
    qint64 llValue = 0;
    while (lsRest.size() >= 2) {
        QString lsItem;
        const int llComma = lsRest.indexOf(QLatin1Char(','));
        if (llComma >= 0) {
            lsItem = lsRest.left(llComma);
            lsRest = lsRest.mid(llComma + 1);
        } else {
            lsItem = lsRest;
            lsRest.clear();
        }
        if (lsItem.startsWith(QLatin1String("0x"))) {
            llValue = ToByte(ReadNumber(QStringLiteral("&h") + lsItem.mid(2)));
        } else if (lsItem.startsWith(QLatin1String("&H"))) {
            if (lsItem.size() == 3 || lsItem.size() == 4)
                llValue = ToByte(ReadNumber(QStringLiteral("&h") + lsItem.mid(2)));
        } else {
            llValue = ToByte(ReadNumber(lsItem));
        }
        AddArgumentByte(llValue);
    }
}

void clsHalvexMsg::RemoveArgument(qint16 vlIndex)
{
    if (vlIndex < 0 || vlIndex >= mcSend.NofArguments)
        Err::Raise(VbError::SubscriptOutOfRange, QStringLiteral("clsHalvexMsg"));
    for (int i = vlIndex; i < mcSend.NofArguments - 1; ++i)
        mcSend.Arguments[size_t(i)] = mcSend.Arguments[size_t(i + 1)];
    --mcSend.NofArguments;
}

// Only argument bytes are escaped; header, length and checksum go out as they
// are, so a zero checksum is sent as a plain 0x00.
void clsHalvexMsg::SendFrame()
{
    RefuseWhileWaiting();
    auto& b = mcSend.Buffer;
    const auto lcPut = [&b](int vlPosition, quint8 vbyValue) {
        if (vlPosition >= kBufferSize)
            Err::Raise(VbError::SubscriptOutOfRange, QStringLiteral("clsHalvexMsg"));
        b[size_t(vlPosition)] = vbyValue;
    };
    b[0] = mcSend.Preamble1;
    b[1] = mcSend.Preamble2;
    b[2] = mcSend.AdressTo;
    b[3] = mcSend.AdressFrom;
    b[5] = mcSend.Func;
    int llPosition = 6;
    for (int i = 0; i < mcSend.NofArguments; ++i) {
        const quint8 lbyArgument = mcSend.Arguments[size_t(i)];
        if (lbyArgument != 0) {
            lcPut(llPosition++, lbyArgument);
        } else {
            lcPut(llPosition++, 0x00);
            lcPut(llPosition++, 0x01);
        }
    }
    const int llLength = llPosition + 1;
    lcPut(llLength - 1, 0);
    mcSend.NofBytes = quint8(llLength);
    b[4] = quint8(llLength);
    quint8 lbyChecksum = 0;
    for (int i = 0; i < llLength; ++i)
        lbyChecksum ^= b[size_t(i)];
    mcSend.CS = lbyChecksum;
    b[size_t(llLength - 1)] = lbyChecksum;
    const QByteArray lcFrame(reinterpret_cast<const char*>(b.data()), llLength);
    if (mbSending && mSendString)
        mSendString(lcFrame);
    emit MessageSend();
}

void clsHalvexMsg::Send(quint8 vbyFunc, const QString& vsArguments)
{
    RefuseWhileWaiting();
    if (!mbSending)
        return;
    mcSend.Func = vbyFunc;
    mcSend.NofArguments = 0;
    if (!vsArguments.isEmpty())
        AddArguments(vsArguments);
    SendFrame();
}

// An answer with another function code counts as no answer.
bool clsHalvexMsg::SendAndWait(quint8 vbyFunc, const QString& vsArguments, qint32& rlTimeout)
{
    RefuseWhileWaiting();
    const quint32 llDeadline = mcLoop->timeGetTime() + quint32(rlTimeout);
    mbReceived = false;
    ClearRecieveBuffer();
    Send(vbyFunc, vsArguments);
    WaitForReply(llDeadline);
    return mcReceive.Func == mcSend.Func && mbReceived;
}

bool clsHalvexMsg::SendFlashData(qint32 vlPage, quint8 vbyAddress1, quint8 vbyAddress2, quint8 vbyCount, qint32 vlStart,
                                 const QByteArray& vcData)
{
    RefuseWhileWaiting();
    mcSend.Func = 0x33;
    mcSend.NofArguments = 0;
    AddArgumentByte(vlPage);
    AddArgumentByte(vbyAddress1);
    AddArgumentByte(vbyAddress2);
    AddArgumentByte(vbyCount);
    for (qint32 i = vlStart; i < vlStart + vbyCount; ++i) {
        if (i < 0 || i >= vcData.size())
            Err::Raise(VbError::SubscriptOutOfRange, QStringLiteral("clsHalvexMsg"));
        AddArgumentByte(quint8(vcData.at(i)));
    }
    mbReceived = false;
    ClearRecieveBuffer();
    const quint32 llDeadline = mcLoop->timeGetTime() + 1000;
    SendFrame();
    WaitForReply(llDeadline);
    return mcReceive.Func == mcSend.Func;
}

// Lets events run, the serial port's receive event among them, until an
// answer came in, sending was stopped or the deadline passed.
bool clsHalvexMsg::WaitForReply(quint32 vlDeadline)
{
    struct Waiting {
        bool& rbWaiting;
        ~Waiting() { rbWaiting = false; }
    } lcWaiting{mbWaiting};
    mbWaiting = true;
    while (qint32(mcLoop->timeGetTime() - vlDeadline) < 0 && mbSending && !mbReceived)
        mcLoop->WaitForEvents(vlDeadline);
    return mbReceived;
}

void clsHalvexMsg::RefuseWhileWaiting() const
{
    if (mbWaiting)
        Err::Raise(VbError::InvalidProcedureCall, QStringLiteral("clsHalvexMsg"),
                   QStringLiteral("A request to the display is still waiting for its answer"));
}

// A 0x00 is only understood with the byte after it: 00 00 starts a frame,
// 00 n stands for n more zeros (the escape 00 01 of one zero argument). The
// meaning of a zero stays open across calls, as does unread input.
bool clsHalvexMsg::ProcesReceivedString(const QByteArray& vcReceived)
{
    mcPendingInput.append(vcReceived);
    bool lbAllTaken = true;
    while (!mcPendingInput.isEmpty()) {
        const quint8 lbyByte = quint8(mcPendingInput.at(0));
        mbyReceiveByte = lbyByte;
        if (lbyByte != 0 && !mbZeroPending) {
            lbAllTaken &= AddReceivedByte(lbyByte);
        } else if (lbyByte != 0) {
            for (int i = 0; i < lbyByte; ++i)
                lbAllTaken &= AddReceivedByte(0);
            mbZeroPending = false;
        } else if (!mbZeroPending) {
            lbAllTaken &= AddReceivedByte(0);
            mbZeroPending = true;
        } else {
            ClearRecieveBuffer();
            mcReceive.Buffer[0] = 0;
            mcReceive.Buffer[1] = 0;
            mcReceive.NofBytes = 2;
            mbZeroPending = false;
        }
        if (mcReceive.NofBytes > 0 && mcReceive.NofBytes == mcReceive.Buffer[4])
            CompleteFrame();
        mcPendingInput.remove(0, 1);
    }
    return lbAllTaken;
}

bool clsHalvexMsg::AddReceivedByte(quint8 vbyValue)
{
    if (mcReceive.NofBytes >= 254) {
        ClearRecieveBuffer();
        return false;
    }
    mcReceive.Buffer[mcReceive.NofBytes] = vbyValue;
    ++mcReceive.NofBytes;
    return true;
}

void clsHalvexMsg::CompleteFrame()
{
    auto& r = mcReceive;
    const int llCount = r.NofBytes;
    r.Preamble1 = r.Buffer[0];
    r.Preamble2 = r.Buffer[1];
    r.AdressTo = r.Buffer[2];
    r.AdressFrom = r.Buffer[3];
    r.Func = r.Buffer[5];
    r.CS = r.Buffer[size_t(llCount - 1)];
    r.NofArguments = 0;
    const auto lcAppend = [&r](quint8 vbyValue) {
        if (r.NofArguments >= kBufferSize)
            r.NofArguments = 0;
        r.Arguments[r.NofArguments] = vbyValue;
        ++r.NofArguments;
    };
    int i = 6;
    while (i < llCount - 1) {
        if (r.Buffer[size_t(i)] != 0) {
            lcAppend(r.Buffer[size_t(i)]);
            ++i;
            continue;
        }
        ++i;
        const int llZeros = r.Buffer[size_t(i)];
        for (int j = 0; j <= llZeros; ++j)
            lcAppend(0);
        ++i;
    }
    quint8 lbyChecksum = 0;
    for (int j = 0; j < llCount; ++j)
        lbyChecksum ^= r.Buffer[size_t(j)];
    r.CSOK = lbyChecksum == 0;
    r.NofBytes = 0;
    mbReceived = true;
    emit MessageReceived();
}

quint8 clsHalvexMsg::SendArguments(int vlIndex) const
{
    return vlIndex >= 0 && vlIndex < kBufferSize ? mcSend.Arguments[size_t(vlIndex)] : 0;
}

quint8 clsHalvexMsg::SendBuffer(int vlIndex) const
{
    return vlIndex >= 0 && vlIndex < kBufferSize ? mcSend.Buffer[size_t(vlIndex)] : 0;
}

quint8 clsHalvexMsg::ReceiveArguments(int vlIndex) const
{
    return vlIndex >= 0 && vlIndex < kBufferSize ? mcReceive.Arguments[size_t(vlIndex)] : 0;
}

quint8 clsHalvexMsg::ReceiveBuffer(int vlIndex) const
{
    return vlIndex >= 0 && vlIndex < kBufferSize ? mcReceive.Buffer[size_t(vlIndex)] : 0;
}

QString clsHalvexMsg::ByteToHexArgument(quint8 vbyValue)
{
    const QString lsHex = QString::number(vbyValue, 16).toUpper();
    return (lsHex.size() == 1 ? QStringLiteral("0x0") : QStringLiteral("0x")) + lsHex;
}

QString clsHalvexMsg::StringToArgumentList(const QString& vsText)
{
    QString lsList;
    for (const char lcByte : Cp1252::Encode(vsText))
        lsList += ByteToHexArgument(quint8(lcByte)) + QLatin1Char(',');
    return lsList;
}
