#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class clsApplication;
class clsRawPortSession;
class IProgressBar;

// Streams a Memory Display firmware file, line by line, into the display's
// bootloader on the raw port: the bytes of a line one by one, no line end,
// then the bootloader's answer ("OK", "ACK", "NAK", "REB") decides what comes
// next. A rejected line is sent again for as long as the unit rejects it, and
// a silent unit is tried for ever in rounds of four waits and a resync; only
// a cancel request, checked before every send, ends the stream early.
class clsFirmwareStream
{
public:
    enum class Result {
        Complete,      // the end of the file, "REB", or the start command left unanswered
        HeaderRefused, // the first line is not a firmware header: nothing sent
        Interrupted,   // stopped on request; the display stays in its bootloader
    };

    static constexpr quint32 kReplyWaitMs = 5000;
    static constexpr int kResyncCharacters = 256;
    static constexpr quint32 kResyncPauseMs = 100;

    clsFirmwareStream(clsApplication& rcApp, clsRawPortSession& rcSession, IProgressBar& rcBar);

    // The lines a firmware file holds, header included; a run-time error when
    // the file cannot be read.
    static QList<QByteArray> ReadLines(const QString& vsFileName);
    // Empty when every line after the header is pairs of hexadecimal digits,
    // else the text that names the file and the first line at fault.
    static QString CheckLines(const QString& vsFileName, const QList<QByteArray>& vcLines);

    // Throws a run-time error when the file cannot be read or the port fails.
    Result SendFirmwareFile(const QString& vsStartMarker, const QString& vsFileName, bool vbAddCR, bool vbAddLF);

    int Naks() const { return mlNaks; }
    int Resyncs() const { return mlResyncs; }

private:
    // Sends one line until it is done; false when the whole download is done.
    bool SendLine(const QByteArray& vcLine, int vlLine, int vlLines, bool vbAddCR, bool vbAddLF, int vlThreshold);
    void WriteLine(const QByteArray& vcLine, bool vbAddCR, bool vbAddLF);
    QByteArray CollectReply(int vlThreshold);
    void Resynchronise();
    void Write(const QByteArray& vcBytes);
    void Report(const QString& vsText, bool vbWarning);

    clsApplication& mrApp;
    clsRawPortSession& mrSession;
    IProgressBar& mrBar;
    bool mbInterrupted = false;
    int mlNaks = 0;
    int mlResyncs = 0;
};
