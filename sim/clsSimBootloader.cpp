#include "sim/clsSimBootloader.h"

namespace {

const QByteArray kOk = QByteArrayLiteral("OK\r\n");
const QByteArray kAck = QByteArrayLiteral("ACK\r\n");
const QByteArray kNak = QByteArrayLiteral("NAK\r\n");
const QByteArray kReb = QByteArrayLiteral("REB\r\n");
constexpr char kStart1 = 'H';
constexpr char kStart2 = 'S';
// Mark, length, two address bytes, type and checksum around the data.
constexpr int kOverhead = 6;

} // namespace

QByteArray clsSimBootloader::Record(quint8 vbyType, quint16 vlAddress, const QByteArray& vcData)
{
    QByteArray lcRecord;
    lcRecord.append(char(kRecordMark));
    lcRecord.append(char(vcData.size()));
    lcRecord.append(char(vlAddress >> 8));
    lcRecord.append(char(vlAddress & 0xFF));
    lcRecord.append(char(vbyType));
    lcRecord.append(vcData);
    quint8 lbySum = 0;
    for (int i = 1; i < lcRecord.size(); ++i)
        lbySum = quint8(lbySum + quint8(lcRecord[i]));
    lcRecord.append(char(quint8(0x100 - lbySum)));
    return lcRecord;
}

void clsSimBootloader::Reset()
{
    mcPending.clear();
    mbRestarted = false;
    mlRecords = 0;
}

QByteArray clsSimBootloader::Receive(const QByteArray& vcBytes)
{
    mcPending.append(vcBytes);
    QByteArray lcAnswers;
    while (!mcPending.isEmpty() && !mbRestarted) {
        const char lcFirst = mcPending[0];
        if (lcFirst == char(kRecordMark)) {
            if (mcPending.size() < 2 || mcPending.size() < quint8(mcPending[1]) + kOverhead)
                break;
            lcAnswers.append(Judge());
        } else if (lcFirst == kStart1) {
            if (mcPending.size() < 2)
                break;
            if (mcPending[1] != kStart2) {
                mcPending.remove(0, 1);
                continue;
            }
            mcPending.clear();
            mbRestarted = true;
            if (!mbSilentOnStart)
                lcAnswers.append(kReb);
        } else {
            // Between records: the host's resynchronising fill, or noise.
            mcPending.remove(0, 1);
        }
    }
    return lcAnswers;
}

// One complete record stands at the front of the pending bytes.
QByteArray clsSimBootloader::Judge()
{
    const int llData = quint8(mcPending[1]);
    const QByteArray lcRecord = mcPending.left(llData + kOverhead);
    mcPending.remove(0, lcRecord.size());

    quint8 lbySum = 0;
    for (int i = 1; i < lcRecord.size(); ++i)
        lbySum = quint8(lbySum + quint8(lcRecord[i]));
    const quint8 lbyType = quint8(lcRecord[4]);
    if (++mlRecords == mlRebootAtRecord) {
        mbRestarted = true;
        return kReb;
    }
    if (lbySum != 0 || (lbyType != kDataRecord && lbyType != kEndRecord))
        return kNak;
    if (mlSilentLinesLeft > 0) {
        --mlSilentLinesLeft;
        return QByteArray();
    }
    if (mlNakLinesLeft > 0) {
        --mlNakLinesLeft;
        return kNak;
    }
    if (lbyType == kEndRecord)
        return kAck;
    const int llAddress = (quint8(lcRecord[2]) << 8) | quint8(lcRecord[3]);
    if (mcProgram.size() < llAddress + llData)
        mcProgram.append(QByteArray(llAddress + llData - mcProgram.size(), char(0xFF)));
    mcProgram.replace(llAddress, llData, lcRecord.mid(5, llData));
    return kOk;
}
