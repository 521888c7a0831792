#pragma once

#include "sim/clsSimFaults.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>
#include <random>

// What the firmware bootloader answers to bytes it received; restarted means
// the new firmware runs and the display speaks frames again.
struct BootloaderReply {
    QByteArray reply;
    bool restarted = false;
};

// The KVT Memory Display as the PC sees it through its serial line: flash
// pages, identity, screen and power state, and the device side of every
// request the program sends. Bytes from the host go in through Receive, the
// frames it answers come back with the delay the display adds to them; the
// serial port beneath decides when they reach the host.
class clsSimDisplay
{
public:
    static constexpr quint8 kAddress = 0x66;
    static constexpr quint8 kHostAddress = 0x01;

    struct Reply {
        QByteArray bytes;
        quint32 delayMs = 0; // beyond the wire time
        bool late = false;   // the display is busy and hears nothing until this reply is out
    };
    struct Request {
        quint8 func = 0;
        QByteArray arguments;
    };
    struct Statistics {
        int requests = 0;
        int badRequests = 0;
        int dropped = 0;
        int corrupted = 0;
        int wrongFunc = 0;
        int late = 0;
        int silent = 0;
    };

    // 64 pages of 256 bytes (page 0 is the first page of the logging area), 64 data bytes a read.
    clsSimDisplay();

    // Sets the geometry and erases all flash to 0xFF.
    void SetGeometry(int vlFirstPage, int vlLastPage, int vlSizeOnePage, int vlMaxDataOneMessage);
    int FirstPage() const { return mlFirstPage; }
    int LastPage() const { return mlLastPage; }
    int SizeOnePage() const { return mlSizeOnePage; }
    int MaxDataOneMessage() const { return mlMaxDataOneMessage; }
    int PageSize() const { return 1 << mlSizeOnePage; }

    // All pages from 0 to LastPage in order.
    const QByteArray& Flash() const { return mcFlash; }
    // A raw image of all pages; false when its size does not match the geometry.
    bool SetFlash(const QByteArray& vcImage);
    QByteArray Page(int vlPage) const;
    void SetPage(int vlPage, const QByteArray& vcData);
    bool PageIsEmpty(int vlPage) const;

    // The eight bytes of the identity.
    QByteArray Id() const { return mcId; }
    void SetId(const QByteArray& vcId) { mcId = vcId; }

    // The texts written to the screen, in order, and what came before each text (its place).
    QStringList ScreenText() const { return mcScreenText; }
    QList<QByteArray> ScreenPlaces() const { return mcScreenPlaces; }
    bool LowCurrent() const { return mbLowCurrent; }
    // Set when the display was plugged in; reported (and cleared) by the next 0xD0.
    void SetJustConnected(bool vbConnected) { mbJustConnected = vbConnected; }
    bool JustConnected() const { return mbJustConnected; }
    bool InBootloader() const { return mbBootloader; }
    void SetBootloaderHook(std::function<BootloaderReply(const QByteArray&)> vHook) { mBootloader = std::move(vHook); }

    // A test hook, not a display function: requests with this code are answered with their own arguments.
    void SetEchoFunction(quint8 vbyFunc) { mbyEchoFunc = vbyFunc; }

    clsSimFaults& Faults() { return mcFaults; }
    // Takes new faults and restarts their random generator from their seed.
    void SetFaults(const clsSimFaults& vcFaults);
    const Statistics& Stats() const { return mcStats; }
    // Every well-formed request, in order.
    const QList<Request>& Requests() const { return mcRequests; }
    void ClearRequests() { mcRequests.clear(); }

    // Bytes from the host; what the display sends back.
    QList<Reply> Receive(const QByteArray& vcBytes);

    // A frame as the display sends it: zero arguments go out as 00 01 and the
    // checksum leaves the 01 of each of them out, since the host's receiver
    // takes 00 01 in as two zeros and checks the checksum over what it took
    // in. A zero checksum is followed by 0x01 unless vbPlainZero.
    static QByteArray Frame(quint8 vbyTo, quint8 vbyFrom, quint8 vbyFunc, const QByteArray& vcArguments,
                            bool vbPlainZero = false);

private:
    void ReceiveFrameByte(quint8 vbyByte, QList<Reply>& rcReplies);
    void HandleFrame(QList<Reply>& rcReplies);
    // The arguments of the answer; false when the display does not answer.
    bool Answer(const Request& vcRequest, quint8& rbyFunc, QByteArray& rcArguments);
    QByteArray ReadPart(const QByteArray& vcArguments);
    void WriteFlash(const QByteArray& vcArguments);
    void ApplyFaults(Reply& rcReply, quint8 vbyFunc, const QByteArray& vcArguments);
    bool Chance(double vdRate);
    bool Trigger(int& rlCount, double vdRate);

    int mlFirstPage = 0;
    int mlLastPage = 63;
    int mlSizeOnePage = 8;
    int mlMaxDataOneMessage = 64;
    QByteArray mcFlash;
    QByteArray mcId;
    QStringList mcScreenText;
    QList<QByteArray> mcScreenPlaces;
    bool mbLowCurrent = false;
    bool mbJustConnected = false;
    bool mbBootloader = false;
    std::function<BootloaderReply(const QByteArray&)> mBootloader;
    quint8 mbyEchoFunc = 0;
    clsSimFaults mcFaults;
    std::mt19937 mcRandom;
    Statistics mcStats;
    QList<Request> mcRequests;

    // Frame assembly: a frame starts at 00 00 and ends after the number of
    // wire bytes it announces, so a plain zero checksum ends it cleanly.
    QByteArray mcFrame;
    bool mbLastWasZero = false;
};
