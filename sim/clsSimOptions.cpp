#include "sim/clsSimOptions.h"

#include "sim/clsSimBootloader.h"
#include "sim/clsSimDataGenerator.h"
#include "sim/clsSimDisplay.h"
#include "sim/clsSimFaults.h"

#include <QFile>

#include <cstdio>

namespace {

// 7 bytes of frame, the status byte and the data, every zero doubled, within the host's 254-byte receive buffer.
constexpr int kSafeMaxData = 122;

// "12.0.34.5.6.7.8.9" (the program's way of showing an ID, trailing point optional) or 16 hex digits.
bool ReadId(const QString& vsText, QByteArray& rcId)
{
    if (!vsText.contains(QLatin1Char('.'))) {
        rcId = QByteArray::fromHex(vsText.toLatin1());
        return vsText.size() == 16 && rcId.size() == 8 && rcId.toHex().compare(vsText.toLatin1(), Qt::CaseInsensitive) == 0;
    }
    return clsSimFaults::ReadId(vsText, rcId);
}

bool ApplyFault(const QString& vsSpec, clsSimFaults& rcFaults, clsSimBootloader& rcBootloader, QString& rsError)
{
    for (const QString& lsItem : vsSpec.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QString lsName = lsItem.section(QLatin1Char('='), 0, 0).trimmed();
        const QString lsValue = lsItem.section(QLatin1Char('='), 1).trimmed();
        bool lbOk = false;
        const int llValue = lsValue.toInt(&lbOk);
        if (lsName == QLatin1String("nak-lines") || lsName == QLatin1String("silent-start") ||
            lsName == QLatin1String("silent-lines") || lsName == QLatin1String("reb-at") ||
            lsName == QLatin1String("silent-after")) {
            if (!lbOk || llValue < 0) {
                rsError = QStringLiteral("--fault %1: expected a whole number").arg(lsItem);
                return false;
            }
            if (lsName == QLatin1String("nak-lines"))
                rcBootloader.SetNakLines(llValue);
            else if (lsName == QLatin1String("silent-start"))
                rcBootloader.SetSilentOnStart(llValue != 0);
            else if (lsName == QLatin1String("silent-lines"))
                rcBootloader.SetSilentLines(llValue);
            else if (lsName == QLatin1String("reb-at"))
                rcBootloader.SetRebootAtRecord(llValue);
            else
                rcFaults.SilentFromRequest = llValue + 1;
            continue;
        }
        QString lsError;
        if (!rcFaults.Parse(lsItem, lsError)) {
            rsError = QStringLiteral("--fault %1: %2").arg(lsItem, lsError);
            return false;
        }
    }
    return true;
}

bool LoadFlash(const QString& vsPath, clsSimDisplay& rcDisplay, QString& rsError)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly)) {
        rsError = QStringLiteral("%1: %2").arg(vsPath, lcFile.errorString());
        return false;
    }
    QByteArray lcImage = lcFile.readAll();
    const qsizetype llSize = rcDisplay.Flash().size();
    if (lcImage.size() > llSize) {
        rsError = QStringLiteral("%1: %2 bytes, more than the %3 bytes of pages 0 to %4")
                      .arg(vsPath).arg(lcImage.size()).arg(llSize).arg(rcDisplay.LastPage());
        return false;
    }
    // What the image leaves out is erased flash.
    lcImage.append(QByteArray(llSize - lcImage.size(), char(0xFF)));
    rcDisplay.SetFlash(lcImage);
    return true;
}

bool Generate(clsSimDisplay& rcDisplay, quint32 vlSeed, int vlDays, QString& rsError)
{
    QByteArray lcFlash = rcDisplay.Flash();
    const int llWritten = clsSimDataGenerator::FillLog(lcFlash, rcDisplay.FirstPage(), rcDisplay.LastPage(),
                                                       rcDisplay.SizeOnePage(), vlSeed, vlDays, rsError);
    if (llWritten < 0)
        return false;
    rcDisplay.SetFlash(lcFlash);
    std::fprintf(stderr, "corvane-display-sim: %d generated records written\n", llWritten);
    return true;
}

} // namespace

clsSimOptions::clsSimOptions()
{
    mcParser.setApplicationDescription(QStringLiteral(
        "A KVT Memory Display in software. Opens a pseudo-terminal, prints the path of its slave side\n"
        "on standard output and answers the program on it like a display on a 57600 bit/s serial line.\n"
        "Point the program at the printed path (or at --link PATH). Stops on Ctrl+C (SIGINT) or SIGTERM."));
    // Help is printed by hand: the fault list reads better unwrapped, after the options.
    mcParser.addOption({{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help.")});
    mcParser.addVersionOption();
    mcParser.addOptions({
        {QStringLiteral("link"), QStringLiteral("Keep a symbolic link to the pty's slave at <path>, removed on exit."),
         QStringLiteral("path")},
        {QStringLiteral("baud"), QStringLiteral("Pace the display's output at <rate> bit/s, ten bits a byte (default 57600)."),
         QStringLiteral("rate"), QStringLiteral("57600")},
        {QStringLiteral("no-pacing"), QStringLiteral("Send answers as fast as the pty takes them.")},
        {QStringLiteral("first-page"), QStringLiteral("FirstPage of the memory map: the page before the logging area (default 0)."),
         QStringLiteral("n"), QStringLiteral("0")},
        {QStringLiteral("last-page"), QStringLiteral("LastPage of the memory map (default 63)."), QStringLiteral("n"),
         QStringLiteral("63")},
        {QStringLiteral("page-size-log2"), QStringLiteral("SizeOnePage: a page holds 2^<n> bytes (default 12, 4096 bytes)."),
         QStringLiteral("n"), QStringLiteral("12")},
        {QStringLiteral("max-data"), QStringLiteral("MaxDataOneMessage: data bytes a read answer carries (default 120, the most that\n"
                        "always fits a frame: each zero byte takes two bytes on the line)."),
         QStringLiteral("n"), QStringLiteral("120")},
        {QStringLiteral("id"), QStringLiteral("The display's 8-byte ID, as 1.2.3.4.5.6.7.8 or 16 hex digits."),
         QStringLiteral("id")},
        {QStringLiteral("flash"), QStringLiteral("Load a raw flash image (all pages in order; a short image is erased at the end)."),
         QStringLiteral("image")},
        {QStringLiteral("save-flash"), QStringLiteral("Write the flash as a raw image on exit, after erases and uploads."),
         QStringLiteral("image")},
        {QStringLiteral("generate"), QStringLiteral("Fill the logging area (pages after FirstPage) with generated logged data.")},
        {QStringLiteral("seed"), QStringLiteral("Seed of --generate (default 1); the same seed gives the same data."),
         QStringLiteral("n"), QStringLiteral("1")},
        {QStringLiteral("days"), QStringLiteral("Days of driving --generate makes (default 30)."), QStringLiteral("n"),
         QStringLiteral("30")},
        {QStringLiteral("write-samples"),
         QStringLiteral("Write sample upload files of every type (.ssl .sfl .usl .ufl .kvt .kvt_sa .kvt_snd .kvt_md) to <dir> and exit."),
         QStringLiteral("dir")},
        {QStringLiteral("fault"),
         QStringLiteral("Inject a fault (list below); repeatable, or a comma list."),
         QStringLiteral("name=value")},
        {QStringLiteral("unplug-after"), QStringLiteral("Close the pty once request <n> has been answered, as a pulled cable; then exit."),
         QStringLiteral("n")},
        {QStringLiteral("log"), QStringLiteral("Write one line per frame in and out (time, direction, hex bytes) to <file>."),
         QStringLiteral("file")},
    });
}

QString clsSimOptions::HelpText() const
{
    return mcParser.helpText() + QStringLiteral("\nFaults (--fault name=value):\n"
                                                "nak-lines=N       answer NAK to the first N good firmware lines\n"
                                                "silent-lines=N    answer nothing to the first N good firmware lines\n"
                                                "reb-at=N          answer REB to firmware line N and restart, before the end\n"
                                                "silent-start=1    restart on the start command 4853 without answering REB\n"
                                                "silent-after=N    answer nothing after N requests (silent-from=N+1)\n")
           + clsSimFaults::Help();
}

// A number option within its range; false with rsError naming the option.
bool clsSimOptions::ReadNumber(const QString& vsName, int vlMin, int vlMax, int& rlValue, QString& rsError) const
{
    if (!mcParser.isSet(vsName))
        return true;
    bool lbOk = false;
    const int llValue = mcParser.value(vsName).toInt(&lbOk, 0);
    if (!lbOk || llValue < vlMin || llValue > vlMax) {
        rsError = QStringLiteral("--%1 %2: expected a number from %3 to %4")
                      .arg(vsName, mcParser.value(vsName)).arg(vlMin).arg(vlMax);
        return false;
    }
    rlValue = llValue;
    return true;
}

bool clsSimOptions::Parse(const QStringList& vcArguments, QString& rsError)
{
    if (!mcParser.parse(vcArguments)) {
        rsError = mcParser.errorText();
        return false;
    }
    if (!ReadNumber(QStringLiteral("first-page"), 0, 255, mlFirst, rsError) ||
        !ReadNumber(QStringLiteral("last-page"), 0, 255, mlLast, rsError) ||
        !ReadNumber(QStringLiteral("page-size-log2"), 5, 16, mlLog2, rsError) ||
        !ReadNumber(QStringLiteral("max-data"), 1, 251, mlMaxData, rsError) ||
        !ReadNumber(QStringLiteral("seed"), 0, 0x7FFFFFFF, mlSeed, rsError) ||
        !ReadNumber(QStringLiteral("days"), 1, 100000, mlDays, rsError) ||
        !ReadNumber(QStringLiteral("baud"), 1, 4000000, mlBaud, rsError) ||
        !ReadNumber(QStringLiteral("unplug-after"), 1, 0x7FFFFFFF, mlUnplugAfter, rsError))
        return false;
    if (mlLast < mlFirst) {
        rsError = QStringLiteral("--last-page %1 lies before --first-page %2").arg(mlLast).arg(mlFirst);
        return false;
    }
    if (mlMaxData > kSafeMaxData)
        std::fprintf(stderr, "corvane-display-sim: with --max-data above %d a read of many zero bytes overflows a frame\n",
                     kSafeMaxData);
    return true;
}

bool clsSimOptions::PrepareDisplay(clsSimDisplay& rcDisplay, QString& rsError) const
{
    rcDisplay.SetGeometry(mlFirst, mlLast, mlLog2, mlMaxData);
    if (IsSet(QStringLiteral("id"))) {
        QByteArray lcId;
        if (!ReadId(Value(QStringLiteral("id")), lcId)) {
            rsError = QStringLiteral("--id %1: expected eight bytes as 1.2.3.4.5.6.7.8 or 16 hex digits")
                          .arg(Value(QStringLiteral("id")));
            return false;
        }
        rcDisplay.SetId(lcId);
    }
    if (IsSet(QStringLiteral("flash")) && !LoadFlash(Value(QStringLiteral("flash")), rcDisplay, rsError))
        return false;
    return !IsSet(QStringLiteral("generate")) || Generate(rcDisplay, quint32(mlSeed), mlDays, rsError);
}

bool clsSimOptions::ApplyFaults(clsSimFaults& rcFaults, clsSimBootloader& rcBootloader, QString& rsError) const
{
    for (const QString& lsFault : mcParser.values(QStringLiteral("fault")))
        if (!ApplyFault(lsFault, rcFaults, rcBootloader, rsError))
            return false;
    return true;
}

bool clsSimOptions::SaveFlash(const clsSimDisplay& rcDisplay, QString& rsError) const
{
    QFile lcFile(Value(QStringLiteral("save-flash")));
    if (!lcFile.open(QIODevice::WriteOnly | QIODevice::Truncate) || lcFile.write(rcDisplay.Flash()) != rcDisplay.Flash().size()) {
        rsError = QStringLiteral("%1: %2").arg(lcFile.fileName(), lcFile.errorString());
        return false;
    }
    return true;
}
