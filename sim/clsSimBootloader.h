#pragma once

#include <QByteArray>

// The Memory Display's bootloader, entered after the display said yes to a
// firmware download (0xD9). It takes raw bytes, no frames and no line ends:
// where a record ends follows from the record itself.
//
//   3A  n  addrHi addrLo  type  data[n]  cs     a record, n + 6 bytes
//   48 53                                       "HS": start the new firmware
//
// type 00 is program data, 01 the end of the image; cs makes the sum of the
// bytes from n to cs zero (mod 256). Answers, each followed by CR LF: "OK" for
// a good data record, "ACK" for the end record, "NAK" for a bad checksum or
// an unknown type, "REB" for the start command, after which the display
// restarts into its message protocol. Bytes between records (the host's "Y"
// fill when it resynchronises) are ignored.
class clsSimBootloader
{
public:
    static constexpr quint8 kRecordMark = 0x3A;
    static constexpr quint8 kDataRecord = 0x00;
    static constexpr quint8 kEndRecord = 0x01;

    // Bytes of one record of the layout above.
    static QByteArray Record(quint8 vbyType, quint16 vlAddress, const QByteArray& vcData);

    // Faults: the first vlCount good records are answered "NAK" as if damaged on the line.
    void SetNakLines(int vlCount) { mlNakLinesLeft = vlCount; }
    // Fault: the start command restarts the display without an answer.
    void SetSilentOnStart(bool vbSilent) { mbSilentOnStart = vbSilent; }
    // Fault: the first vlCount good records are lost on the line: no answer, nothing written.
    void SetSilentLines(int vlCount) { mlSilentLinesLeft = vlCount; }
    // Fault: record vlRecord (1 = the first) is answered "REB" and the display restarts, before the file's end.
    void SetRebootAtRecord(int vlRecord) { mlRebootAtRecord = vlRecord; }

    // Takes received bytes; returns the answers they caused (possibly none).
    QByteArray Receive(const QByteArray& vcBytes);
    // True once the start command came in; the display then leaves the bootloader.
    bool Restarted() const { return mbRestarted; }
    // Starts a fresh bootloader session (the display entered it again).
    void Reset();

    // The program memory written by accepted data records, erased (0xFF) elsewhere.
    const QByteArray& Program() const { return mcProgram; }

private:
    QByteArray Judge();

    QByteArray mcPending;
    QByteArray mcProgram;
    int mlNakLinesLeft = 0;
    int mlSilentLinesLeft = 0;
    int mlRebootAtRecord = 0;
    int mlRecords = 0;
    bool mbSilentOnStart = false;
    bool mbRestarted = false;
};
