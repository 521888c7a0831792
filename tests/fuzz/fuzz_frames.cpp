// The frame receiver, fed bytes from the cable. The first input byte chooses
// how the rest is cut into serial-port events; the rest is the byte stream.
// Checks: the frames taken in do not depend on how the stream was cut, and a
// frame the host builds itself reads back with its function code and
// arguments (the checksum holds when the number of zero arguments is even,
// since the receiver checks the escape 00 01 as the two zeros it took in).

#include "FuzzCheck.h"
#include "link/clsHalvexMsg.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>
#include <cstdint>
#include <tuple>
#include <vector>

namespace {
struct Frame {
    quint8 adressTo, adressFrom, func, cs, nofArguments;
    bool csOk;
    QByteArray arguments;
    auto Fields() const { return std::tie(adressTo, adressFrom, func, cs, nofArguments, csOk, arguments); }
    bool operator==(const Frame& o) const { return Fields() == o.Fields(); }
};

// Every frame the receiver raises MessageReceived for, fed in chunks of the given sizes.
std::vector<Frame> Receive(const QByteArray& vcStream, const std::vector<int>& vcChunks, quint8& rbyCollected)
{
    clsHalvexMsg lcMsg(nullptr, [](const QByteArray&) { return true; });
    std::vector<Frame> lcFrames;
    QObject::connect(&lcMsg, &clsHalvexMsg::MessageReceived, [&]() {
        Frame f{lcMsg.ReceiveAdressTo(), lcMsg.ReceiveAdressFrom(), lcMsg.ReceiveFunc(), lcMsg.ReceiveCS(),
                lcMsg.ReceiveNofArguments(), lcMsg.ReceiveCSOK(), QByteArray()};
        for (int i = 0; i < clsHalvexMsg::kBufferSize; ++i)
            f.arguments.append(char(lcMsg.ReceiveArguments(i)));
        lcFrames.push_back(f);
    });
    qsizetype llAt = 0;
    for (size_t i = 0; llAt < vcStream.size(); ++i) {
        const qsizetype llSize = vcChunks.empty() ? vcStream.size() : vcChunks[i % vcChunks.size()];
        lcMsg.ProcesReceivedString(vcStream.mid(llAt, llSize));
        llAt += llSize;
    }
    rbyCollected = lcMsg.ReceiveNofBytes();
    return lcFrames;
}

// Chunk sizes from 1 to 64, drawn from the seed byte.
std::vector<int> Chunks(quint8 vbySeed)
{
    std::vector<int> lcSizes;
    quint32 llState = vbySeed * 2654435761u + 1;
    const int llLongest = 1 + vbySeed % 64;
    for (int i = 0; i < 97; ++i) {
        llState = llState * 1103515245u + 12345u;
        lcSizes.push_back(1 + int((llState >> 16) % quint32(llLongest)));
    }
    return lcSizes;
}

void ChunkingChangesNothing(const QByteArray& vcStream, quint8 vbySeed)
{
    quint8 lbyWhole = 0, lbyChunked = 0, lbySingle = 0;
    const std::vector<Frame> lcWhole = Receive(vcStream, {}, lbyWhole);
    FuzzCheck(Receive(vcStream, Chunks(vbySeed), lbyChunked) == lcWhole, "chunked frames differ from the whole stream's");
    FuzzCheck(Receive(vcStream, {1}, lbySingle) == lcWhole, "byte-by-byte frames differ from the whole stream's");
    FuzzCheck(lbyWhole == lbyChunked && lbyWhole == lbySingle, "a partly collected frame depends on the chunks");
}

// A host-built frame with the function code and up to 240 arguments taken from the stream.
void OwnFrameReadsBack(const QByteArray& vcStream)
{
    if (vcStream.isEmpty() || vcStream.at(0) == 0)
        return; // a zero function code is not escaped and reads as a run of zeros
    const quint8 lbyFunc = quint8(vcStream.at(0));
    QStringList lcItems;
    QByteArray lcArguments;
    int llWire = 7, llZeros = 0;
    for (qsizetype i = 1; i < vcStream.size(); ++i) {
        const quint8 lbyArgument = quint8(vcStream.at(i));
        const int llWidth = lbyArgument == 0 ? 2 : 1;
        if (llWire + llWidth > 254) // the receiver drops a frame of 254 bytes or more
            break;
        llWire += llWidth;
        llZeros += lbyArgument == 0;
        lcItems << clsHalvexMsg::ByteToHexArgument(lbyArgument);
        lcArguments.append(char(lbyArgument));
    }
    QByteArray lcWire;
    clsHalvexMsg lcSender(nullptr, [&lcWire](const QByteArray& vcFrame) {
        lcWire += vcFrame;
        return true;
    });
    lcSender.SetDeviceAddress(102);
    lcSender.SetHostAddress(1);
    lcSender.Send(lbyFunc, lcItems.join(QLatin1Char(',')));
    FuzzCheck(lcWire.size() == llWire && quint8(lcWire.at(4)) == llWire, "frame length on the wire");
    quint8 lbyCollected = 0;
    const std::vector<Frame> lcFrames = Receive(lcWire, {}, lbyCollected);
    FuzzCheck(lcFrames.size() == 1, "an own frame reads back as exactly one frame");
    const Frame& f = lcFrames.front();
    FuzzCheck(f.func == lbyFunc && f.adressTo == 102 && f.adressFrom == 1, "header of an own frame");
    FuzzCheck(f.nofArguments == lcArguments.size() && f.arguments.left(lcArguments.size()) == lcArguments,
              "arguments of an own frame");
    FuzzCheck(f.csOk == (llZeros % 2 == 0), "checksum of an own frame");
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize)
{
    if (vlSize == 0)
        return 0;
    const QByteArray lcStream(reinterpret_cast<const char*>(vcData) + 1, qsizetype(vlSize - 1));
    ChunkingChangesNothing(lcStream, vcData[0]);
    OwnFrameReadsBack(lcStream);
    return 0;
}
