#include "sim/clsSimSamples.h"

#include "sim/clsSimBootloader.h"
#include "sim/clsSimRecordEncoder.h"

#include <QDir>
#include <QFile>
#include <random>

namespace {

// A warning database: its type tag, the number of entries, then per entry the
// position as the display keeps positions, the kind, the speed limit and the heading.
QByteArray Database(const char* vsTag, int vlEntries, quint32 vlSeed)
{
    std::mt19937 lcRandom(vlSeed);
    QByteArray lcData(vsTag);
    lcData.append(char(vlEntries & 0xFF));
    lcData.append(char(vlEntries >> 8));
    for (int i = 0; i < vlEntries; ++i) {
        const double ldLat = 49.5 + double(lcRandom() % 40000) / 10000.0;
        const double ldLon = 2.5 + double(lcRandom() % 45000) / 10000.0;
        for (const quint32 llValue : {clsSimRecordEncoder::EncodeLatitude(ldLat), clsSimRecordEncoder::EncodeLongitude(ldLon)})
            for (int b = 0; b < 4; ++b)
                lcData.append(char(llValue >> (8 * b)));
        lcData.append(char(1 + lcRandom() % 5));
        lcData.append(char(30 + 10 * (lcRandom() % 10)));
        lcData.append(char(lcRandom() % 180));
        lcData.append(char(0));
    }
    return lcData;
}

// A display image: its signature and name, then filler the display would take as code.
QByteArray Image(const QByteArray& vcSignature, int vlSize, quint32 vlSeed)
{
    std::mt19937 lcRandom(vlSeed);
    QByteArray lcData = vcSignature;
    while (lcData.size() < vlSize)
        lcData.append(char(lcRandom() & 0xFF));
    return lcData;
}

} // namespace

QByteArray clsSimSamples::FirmwareFile(int vlProgramSize)
{
    constexpr int kLineData = 32;
    std::mt19937 lcRandom(11);
    QByteArray lcFile("MD KVT Memory Display firmware sample\r\n");
    for (int llAddress = 0; llAddress < vlProgramSize; llAddress += kLineData) {
        QByteArray lcData;
        for (int i = 0; i < qMin(kLineData, vlProgramSize - llAddress); ++i)
            lcData.append(char(lcRandom() & 0xFF));
        lcFile.append(clsSimBootloader::Record(clsSimBootloader::kDataRecord, quint16(llAddress), lcData).toHex().toUpper());
        lcFile.append("\r\n");
    }
    lcFile.append(clsSimBootloader::Record(clsSimBootloader::kEndRecord, 0, {}).toHex().toUpper());
    lcFile.append("\r\n4853\r\n");
    return lcFile;
}

QStringList clsSimSamples::Write(const QString& vsDirectory, QString& rsError)
{
    const QList<QPair<QString, QByteArray>> lcSamples = {
        {QStringLiteral("ssl"), Database("SSL", 700, 1)},
        {QStringLiteral("sfl"), Database("SFL", 120, 2)},
        {QStringLiteral("usl"), Database("USL", 25, 3)},
        {QStringLiteral("ufl"), Database("UFL", 8, 4)},
        {QStringLiteral("kvt"), Image("KVT_CC sample operating system", 20000, 5)},
        {QStringLiteral("kvt_sa"), Image("KVT_SA sample spectrum analyser", 6000, 6)},
        {QStringLiteral("kvt_snd"), Image("KVT_SND sample sounds", 30000, 7)},
        {QStringLiteral("kvt_md"), FirmwareFile(2048)},
    };
    if (!QDir().mkpath(vsDirectory)) {
        rsError = QStringLiteral("%1: cannot create the directory").arg(vsDirectory);
        return {};
    }
    QStringList lcWritten;
    for (const auto& lcSample : lcSamples) {
        const QString lsPath = QDir(vsDirectory).filePath(QStringLiteral("sample.") + lcSample.first);
        QFile lcFile(lsPath);
        if (!lcFile.open(QIODevice::WriteOnly | QIODevice::Truncate) || lcFile.write(lcSample.second) != lcSample.second.size()) {
            rsError = QStringLiteral("%1: %2").arg(lsPath, lcFile.errorString());
            return lcWritten;
        }
        lcWritten << lsPath;
    }
    return lcWritten;
}
