#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QtGlobal>

// What can go wrong with the simulated display. Counts ("...Next") are
// one-shot triggers for a test; rates are probabilities per reply, drawn from
// a generator seeded with Seed, for long runs and the command-line simulator.
struct clsSimFaults {
    // Replies that never come.
    int DropNext = 0;
    double DropRate = 0;
    // One byte of the reply changed to another value; CorruptIndex picks the
    // byte (-1: any byte of the frame, chosen at random).
    int CorruptNext = 0;
    double CorruptRate = 0;
    int CorruptIndex = -1;
    // The answer carries another function code.
    int WrongFuncNext = 0;
    double WrongFuncRate = 0;
    // The answer comes LateByMs after the request, past the host's time-out.
    // A display that is late is busy: what the host sends meanwhile is lost.
    int LateNext = 0;
    double LateRate = 0;
    quint32 LateByMs = 1200;
    // A late display that keeps listening answers the host's retry as well,
    // one answer more than the host waits for.
    bool LateKeepsListening = false;
    // From this request on (1 = the first) the display answers nothing, as with a pulled cable.
    int SilentFromRequest = 0;
    // From this request on the display reports NewId as its identity.
    int ChangeIdFromRequest = 0;
    QByteArray NewId;
    // Page-state answers other than the truth, by page.
    QMap<int, int> PageState;
    // Status byte of a read reply other than 1: by page * 65536 + offset for
    // one part, by page for every part of a page; BadReadRate gives status 0 at random.
    QMap<qint32, int> ReadStatusOfPart;
    QMap<int, int> ReadStatusOfPage;
    double BadReadRate = 0;
    // A memory map that reports this page-size exponent instead of the flash's
    // own (-1: the truth), for sizes no flash in memory could have.
    int ReportedSizeOnePage = -1;
    // Pages whose erase the display refuses (answer 0).
    QMap<int, bool> EraseRefused;
    // A zero checksum goes out without the 0x01 that keeps the host's receiver in step.
    bool PlainZeroChecksum = false;
    // Firmware download start (0xD9): no answer at all, or the answer "can't download".
    bool SilentOnDownloadStart = false;
    bool RefuseDownload = false;
    // The drop, corrupt, wrong-function and late faults hit only answers to
    // this function code (0: every answer), e.g. 0x33 for the flash writes.
    int OnlyFunc = 0;
    quint32 Seed = 1;

    // Applies one "name=value" item or a comma list of them, for example
    // "drop=0.01,corrupt=0.01,late=0.005,seed=7". False with rsError naming the bad item.
    bool Parse(const QString& vsSpec, QString& rsError);
    // The names Parse knows, one per line with its meaning, for --help.
    static QString Help();
    // "12.0.34.5.6.7.8.9", the program's way of showing an ID (trailing point optional): eight bytes.
    static bool ReadId(const QString& vsValue, QByteArray& rcId);
};
