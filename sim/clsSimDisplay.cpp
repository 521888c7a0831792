#include "sim/clsSimDisplay.h"

namespace {
constexpr quint8 kDefaultId[8] = {12, 0, 34, 5, 6, 7, 8, 9};
}

clsSimDisplay::clsSimDisplay()
    : mcId(reinterpret_cast<const char*>(kDefaultId), 8)
    , mcRandom(mcFaults.Seed)
{
    SetGeometry(0, 63, 8, 64);
}

void clsSimDisplay::SetGeometry(int vlFirstPage, int vlLastPage, int vlSizeOnePage, int vlMaxDataOneMessage)
{
    mlFirstPage = vlFirstPage;
    mlLastPage = vlLastPage;
    mlSizeOnePage = vlSizeOnePage;
    mlMaxDataOneMessage = vlMaxDataOneMessage;
    mcFlash = QByteArray((vlLastPage + 1) * PageSize(), char(0xFF));
}

bool clsSimDisplay::SetFlash(const QByteArray& vcImage)
{
    if (vcImage.size() != mcFlash.size())
        return false;
    mcFlash = vcImage;
    return true;
}

QByteArray clsSimDisplay::Page(int vlPage) const
{
    if (vlPage < 0 || vlPage > mlLastPage)
        return QByteArray();
    return mcFlash.mid(vlPage * PageSize(), PageSize());
}

void clsSimDisplay::SetPage(int vlPage, const QByteArray& vcData)
{
    if (vlPage < 0 || vlPage > mlLastPage)
        return;
    const QByteArray lcPage = vcData.left(PageSize()).leftJustified(PageSize(), char(0xFF));
    mcFlash.replace(vlPage * PageSize(), PageSize(), lcPage);
}

bool clsSimDisplay::PageIsEmpty(int vlPage) const
{
    const QByteArray lcPage = Page(vlPage);
    return lcPage.count(char(0xFF)) == lcPage.size();
}

void clsSimDisplay::SetFaults(const clsSimFaults& vcFaults)
{
    mcFaults = vcFaults;
    mcRandom.seed(mcFaults.Seed);
}

QByteArray clsSimDisplay::Frame(quint8 vbyTo, quint8 vbyFrom, quint8 vbyFunc, const QByteArray& vcArguments,
                                bool vbPlainZero)
{
    QByteArray lcFrame;
    lcFrame.append(char(0)).append(char(0)).append(char(vbyTo)).append(char(vbyFrom)).append(char(0));
    lcFrame.append(char(vbyFunc));
    quint8 lbyChecksum = vbyTo ^ vbyFrom ^ vbyFunc;
    for (const char lcByte : vcArguments) {
        lbyChecksum ^= quint8(lcByte);
        if (lcByte != 0)
            lcFrame.append(lcByte);
        else
            lcFrame.append(char(0)).append(char(1));
    }
    const quint8 lbyLength = quint8(lcFrame.size() + 1);
    lcFrame[4] = char(lbyLength);
    lbyChecksum ^= lbyLength;
    lcFrame.append(char(lbyChecksum));
    if (lbyChecksum == 0 && !vbPlainZero)
        lcFrame.append(char(1));
    return lcFrame;
}

QList<clsSimDisplay::Reply> clsSimDisplay::Receive(const QByteArray& vcBytes)
{
    QList<Reply> lcReplies;
    for (int i = 0; i < vcBytes.size(); ++i) {
        if (mbBootloader) {
            if (!mBootloader)
                return lcReplies;
            const BootloaderReply lcAnswer = mBootloader(vcBytes.mid(i));
            if (!lcAnswer.reply.isEmpty())
                lcReplies.append(Reply{lcAnswer.reply, 0, false});
            if (lcAnswer.restarted) {
                mbBootloader = false;
                mcFrame.clear();
                mbLastWasZero = false;
            }
            return lcReplies;
        }
        ReceiveFrameByte(quint8(vcBytes.at(i)), lcReplies);
    }
    return lcReplies;
}

void clsSimDisplay::ReceiveFrameByte(quint8 vbyByte, QList<Reply>& rcReplies)
{
    if (mcFrame.isEmpty()) {
        if (vbyByte == 0 && mbLastWasZero) {
            mcFrame = QByteArray(2, char(0));
            mbLastWasZero = false;
        } else {
            mbLastWasZero = vbyByte == 0;
        }
        return;
    }
    if (mcFrame.size() == 2 && vbyByte == 0)
        return;
    mcFrame.append(char(vbyByte));
    if (mcFrame.size() == 5 && vbyByte < 7) {
        ++mcStats.badRequests;
        mcFrame.clear();
        return;
    }
    if (mcFrame.size() >= 5 && mcFrame.size() == quint8(mcFrame.at(4))) {
        HandleFrame(rcReplies);
        mcFrame.clear();
    }
}

void clsSimDisplay::HandleFrame(QList<Reply>& rcReplies)
{
    quint8 lbyChecksum = 0;
    for (const char lcByte : mcFrame)
        lbyChecksum ^= quint8(lcByte);
    Request lcRequest;
    lcRequest.func = quint8(mcFrame.at(5));
    bool lbWellFormed = lbyChecksum == 0;
    for (int i = 6; lbWellFormed && i < mcFrame.size() - 1; ++i) {
        if (mcFrame.at(i) != 0) {
            lcRequest.arguments.append(mcFrame.at(i));
            continue;
        }
        lbWellFormed = i + 1 < mcFrame.size() - 1 && mcFrame.at(i + 1) == 1;
        lcRequest.arguments.append(char(0));
        ++i;
    }
    if (!lbWellFormed || quint8(mcFrame.at(2)) != kAddress) {
        ++mcStats.badRequests;
        return;
    }
    mcRequests.append(lcRequest);
    const int llNumber = ++mcStats.requests;
    if (mcFaults.SilentFromRequest > 0 && llNumber >= mcFaults.SilentFromRequest) {
        ++mcStats.silent;
        return;
    }
    if (mcFaults.ChangeIdFromRequest > 0 && llNumber >= mcFaults.ChangeIdFromRequest && !mcFaults.NewId.isEmpty())
        mcId = mcFaults.NewId;
    quint8 lbyFunc = lcRequest.func;
    QByteArray lcArguments;
    const bool lbEnterBootloader = lcRequest.func == 0xD9;
    if (!Answer(lcRequest, lbyFunc, lcArguments))
        return;
    Reply lcReply;
    lcReply.bytes = Frame(kHostAddress, kAddress, lbyFunc, lcArguments, mcFaults.PlainZeroChecksum);
    ApplyFaults(lcReply, lbyFunc, lcArguments);
    if (!lcReply.bytes.isEmpty())
        rcReplies.append(lcReply);
    if (lbEnterBootloader && lcArguments.startsWith(char(1)))
        mbBootloader = true;
}

bool clsSimDisplay::Answer(const Request& vcRequest, quint8& rbyFunc, QByteArray& rcArguments)
{
    const QByteArray& a = vcRequest.arguments;
    rbyFunc = vcRequest.func;
    if (mbyEchoFunc != 0 && vcRequest.func == mbyEchoFunc) {
        rcArguments = a;
        return true;
    }
    switch (vcRequest.func) {
    case 0x0B:
        // 00 00 then 01 00: the second pair switches the low-current state on
        if (a.size() >= 1)
            mbLowCurrent = a.at(0) == 1;
        return true;
    case 0x0F:
        mcScreenPlaces.append(a.left(4));
        mcScreenText.append(QString::fromLatin1(a.mid(4)));
        return true;
    case 0x10:
    case 0xD1:
        return true;
    case 0x33:
        WriteFlash(a);
        rcArguments = QByteArray(1, char(1));
        return true;
    case 0x34:
        rcArguments = ReadPart(a);
        return true;
    case 0x35: {
        const int llPage = a.isEmpty() ? -1 : quint8(a.at(0));
        const bool lbErased = llPage >= 0 && llPage <= mlLastPage && !mcFaults.EraseRefused.value(llPage);
        if (lbErased)
            mcFlash.replace(llPage * PageSize(), PageSize(), QByteArray(PageSize(), char(0xFF)));
        rcArguments = QByteArray(1, char(lbErased ? 1 : 0));
        return true;
    }
    case 0x36:
        rcArguments.append(char(mlFirstPage)).append(char(mlLastPage));
        rcArguments.append(char(mcFaults.ReportedSizeOnePage >= 0 ? mcFaults.ReportedSizeOnePage : mlSizeOnePage));
        rcArguments.append(char(mlMaxDataOneMessage));
        return true;
    case 0x38: {
        const int llPage = a.isEmpty() ? -1 : quint8(a.at(0));
        int llState = PageIsEmpty(llPage) ? 1 : 2;
        if (llPage < 0 || llPage > mlLastPage)
            llState = 0;
        rcArguments = QByteArray(1, char(mcFaults.PageState.value(llPage, llState)));
        return true;
    }
    case 0xCE:
        rcArguments = mcId;
        return true;
    case 0xD0:
        rcArguments = QByteArray(1, char(mbJustConnected ? 1 : 0));
        mbJustConnected = false;
        return true;
    case 0xD9:
        if (mcFaults.SilentOnDownloadStart)
            return false;
        rcArguments = QByteArray(1, char(mcFaults.RefuseDownload ? 0 : 1));
        return true;
    default:
        // 0xCB and anything unknown: no answer
        return false;
    }
}

// Status 1 and the bytes, or a status alone when the display has nothing to give.
QByteArray clsSimDisplay::ReadPart(const QByteArray& vcArguments)
{
    if (vcArguments.size() < 4)
        return QByteArray(1, char(0));
    const int llPage = quint8(vcArguments.at(0));
    const int llOffset = quint8(vcArguments.at(1)) * 256 + quint8(vcArguments.at(2));
    const int llCount = quint8(vcArguments.at(3));
    int llStatus = mcFaults.ReadStatusOfPart.value(llPage * 65536 + llOffset,
                                                    mcFaults.ReadStatusOfPage.value(llPage, 1));
    if (llStatus == 1 && Chance(mcFaults.BadReadRate))
        llStatus = 0;
    if (llPage > mlLastPage || llOffset + llCount > PageSize())
        llStatus = 0;
    if (llStatus != 1)
        return QByteArray(1, char(llStatus));
    return QByteArray(1, char(1)) + mcFlash.mid(llPage * PageSize() + llOffset, llCount);
}

// Page, address high and low byte, count, data; the display writes what it
// is given within the page. Flash only clears bits: a byte written over one
// that was not erased keeps the zeros of both.
void clsSimDisplay::WriteFlash(const QByteArray& vcArguments)
{
    if (vcArguments.size() < 4)
        return;
    const int llPage = quint8(vcArguments.at(0));
    const int llAddress = quint8(vcArguments.at(1)) * 256 + quint8(vcArguments.at(2));
    const int llCount = qMin(int(quint8(vcArguments.at(3))), int(vcArguments.size()) - 4);
    if (llPage > mlLastPage || llAddress + llCount > PageSize())
        return;
    char* lcCell = mcFlash.data() + llPage * PageSize() + llAddress;
    for (int i = 0; i < llCount; ++i)
        lcCell[i] = char(quint8(lcCell[i]) & quint8(vcArguments.at(4 + i)));
}

void clsSimDisplay::ApplyFaults(Reply& rcReply, quint8 vbyFunc, const QByteArray& vcArguments)
{
    if (mcFaults.OnlyFunc != 0 && vbyFunc != mcFaults.OnlyFunc)
        return;
    if (Trigger(mcFaults.DropNext, mcFaults.DropRate)) {
        ++mcStats.dropped;
        rcReply.bytes.clear();
        return;
    }
    if (Trigger(mcFaults.WrongFuncNext, mcFaults.WrongFuncRate)) {
        ++mcStats.wrongFunc;
        rcReply.bytes = Frame(kHostAddress, kAddress, quint8(vbyFunc + 1), vcArguments, mcFaults.PlainZeroChecksum);
    }
    if (Trigger(mcFaults.LateNext, mcFaults.LateRate)) {
        ++mcStats.late;
        rcReply.delayMs = mcFaults.LateByMs;
        rcReply.late = !mcFaults.LateKeepsListening;
    }
    if (Trigger(mcFaults.CorruptNext, mcFaults.CorruptRate)) {
        ++mcStats.corrupted;
        const int llSize = int(rcReply.bytes.size());
        int llIndex = mcFaults.CorruptIndex;
        if (llIndex < 0 || llIndex >= llSize)
            llIndex = int(mcRandom() % quint32(llSize));
        const quint8 lbyChange = quint8(1 + mcRandom() % 255);
        rcReply.bytes[llIndex] = char(quint8(rcReply.bytes.at(llIndex)) ^ lbyChange);
    }
}

bool clsSimDisplay::Chance(double vdRate)
{
    if (vdRate <= 0)
        return false;
    return std::uniform_real_distribution<double>(0.0, 1.0)(mcRandom) < vdRate;
}

bool clsSimDisplay::Trigger(int& rlCount, double vdRate)
{
    if (rlCount > 0) {
        --rlCount;
        return true;
    }
    return Chance(vdRate);
}
