#include "data/clsHalvexRecord.h"

#include "data/clsGpsPlaces.h"
#include "data/clsRecordColumns.h"

#include <QLatin1String>
#include <QStringList>
#include <algorithm>

namespace {
const clsGpsPlaces* gcPlaces = nullptr;

constexpr qint32 kEquator = 54000000;    // 90 degrees in 1/600000 degree
constexpr qint32 kMeridian = 108000000;  // 180 degrees
constexpr qint32 kDegree = 600000;
constexpr qint32 kMinute = 10000;

// Decimal digits of a number padded with zeros to vlWidth; a negative number
// keeps its sign in front of the padded digits ("-01").
void AppendNumber(QString& rsOut, qint64 vlValue, int vlWidth = 1)
{
    char lcBuffer[24];
    char* lcEnd = lcBuffer + sizeof lcBuffer;
    char* p = lcEnd;
    quint64 llMagnitude = vlValue < 0 ? quint64(0) - quint64(vlValue) : quint64(vlValue);
    do {
        *--p = char('0' + llMagnitude % 10);
        llMagnitude /= 10;
    } while (llMagnitude != 0);
    while (lcEnd - p < vlWidth)
        *--p = '0';
    if (vlValue < 0)
        *--p = '-';
    rsOut.append(QLatin1String(p, lcEnd - p));
}

// Leading decimal number of a column text; the columns hold plain integers.
qint64 Val(const QString& vsText)
{
    return vsText.toLongLong();
}

QString Number(qint64 vlValue)
{
    QString lsText;
    AppendNumber(lsText, vlValue);
    return lsText;
}

QString Clock(qint32 vlHours, qint32 vlMinutes, qint32 vlSeconds)
{
    QString lsText;
    AppendNumber(lsText, vlHours, 2);
    lsText.append(QLatin1Char(':'));
    AppendNumber(lsText, vlMinutes, 2);
    lsText.append(QLatin1Char(':'));
    AppendNumber(lsText, vlSeconds, 2);
    return lsText;
}

// A packed time of two bytes; both 255 is an erased field and shows nothing.
QString PackedTime(quint8 vbyHigh, quint8 vbyLow)
{
    if (vbyHigh == 255 && vbyLow == 255)
        return QString();
    return Clock(vbyHigh / 8, (vbyHigh & 7) * 8 + vbyLow / 32, (vbyLow & 31) * 2);
}

QString Unknown()
{
    return QStringLiteral("unknown");
}
}

void clsHalvexRecord::UsePlaces(const clsGpsPlaces* vcPlaces)
{
    gcPlaces = vcPlaces;
}

void clsHalvexRecord::DeCodeData(const quint8* vcData, int vlCount)
{
    if (vlCount != kSize) {
        mbIsValid = false;
        return;
    }
    if (vcData[17] == 255) {
        mbIsValid = false;
        mbIsValidKmStand = false;
        return;
    }
    std::copy(vcData, vcData + kSize, mcData.begin());
    if (mcTexts) {
        mcTexts->originPlace.clear();
        mcTexts->destinationPlace.clear();
    }
    mbIsValid = true;
    mbValidGps = false;
    for (int i = 6; i <= 13; ++i)
        mbValidGps = mbValidGps || mcData[size_t(i)] != 0;
    mbIsValidKmStand = HasKmCounter()
        && !(mcData[20] == 255 && mcData[21] == 255 && mcData[22] == 255 && mcData[23] == 255);
}

clsHalvexRecord::clsHalvexRecord(const clsHalvexRecord& rcOther)
{
    *this = rcOther;
}

clsHalvexRecord& clsHalvexRecord::operator=(const clsHalvexRecord& rcOther)
{
    if (this == &rcOther)
        return *this;
    mlStartLatitude = rcOther.mlStartLatitude;
    mlStartLongitude = rcOther.mlStartLongitude;
    mcData = rcOther.mcData;
    mbIsValid = rcOther.mbIsValid;
    mbValidGps = rcOther.mbValidGps;
    mbIsValidKmStand = rcOther.mbIsValidKmStand;
    mlRecordNummer = rcOther.mlRecordNummer;
    mlRitnummer = rcOther.mlRitnummer;
    mlStartKmTeller = rcOther.mlStartKmTeller;
    mcTexts = rcOther.mcTexts ? std::make_unique<Texts>(*rcOther.mcTexts) : nullptr;
    return *this;
}

clsHalvexRecord::~clsHalvexRecord() = default;

void clsHalvexRecord::SetRoute(const QString& vsRoute)
{
    if (!mcTexts && vsRoute.isEmpty())
        return;
    if (!mcTexts)
        mcTexts = std::make_unique<Texts>();
    mcTexts->route = vsRoute;
}

bool clsHalvexRecord::isDisplayType() const
{
    return IsType(2, 5) || isTankStopType();
}

// The display marks a field with bit 31; the mark is taken off in the stored
// bytes on the first read, so every later read sees the cleared byte.
qint32 clsHalvexRecord::Read32(int vlOffset) const
{
    quint8& rbyTop = mcData[size_t(vlOffset + 3)];
    if (rbyTop >= 128)
        rbyTop -= 128;
    return qint32(rbyTop) * 16777216 + qint32(mcData[size_t(vlOffset + 2)]) * 65536
        + qint32(mcData[size_t(vlOffset + 1)]) * 256 + qint32(mcData[size_t(vlOffset)]);
}

qint32 clsHalvexRecord::lEndLatitude() const
{
    return Read32(6);
}

qint32 clsHalvexRecord::lEndLongitude() const
{
    return Read32(10);
}

qint32 clsHalvexRecord::lEndKmTeller() const
{
    return mbIsValidKmStand ? Read32(18) : 0;
}

void clsHalvexRecord::SetlEndKmTeller(qint32 vlValue)
{
    mcData[18] = quint8(vlValue & 255);
    mcData[19] = quint8((vlValue / 256) & 255);
    mcData[20] = quint8((vlValue / 65536) & 255);
    mcData[21] = quint8((vlValue / 16777216) & 255);
}

bool clsHalvexRecord::EndKmIsBlank() const
{
    return mcData[18] == 255 && mcData[19] == 255 && mcData[20] == 255 && mcData[21] == 255;
}

QString clsHalvexRecord::RitNumber() const
{
    return Number(mlRitnummer);
}

QString clsHalvexRecord::DateOfTrip() const
{
    if (!mbValidGps)
        return Unknown();
    QString lsText;
    AppendNumber(lsText, mcData[4] & 31);
    lsText.append(QLatin1Char('-'));
    AppendNumber(lsText, (mcData[5] % 2) * 8 + mcData[4] / 32);
    lsText.append(QLatin1Char('-'));
    AppendNumber(lsText, mcData[5] / 2 + 2000);
    return lsText;
}

QString clsHalvexRecord::StartTime() const
{
    if (!isRitRegType())
        return QString();
    return mbValidGps ? PackedTime(mcData[1], mcData[0]) : Unknown();
}

QString clsHalvexRecord::StopTime() const
{
    return mbValidGps ? PackedTime(mcData[3], mcData[2]) : Unknown();
}

// Hours wrap once past midnight; then seconds and minutes borrow in that
// order. A stop a little before the start within the same hour therefore
// shows a negative hour (-01:50:00); kept, the exports have always shown it so.
QString clsHalvexRecord::DriveTime() const
{
    const bool lbStartShown = isRitRegType() && !(mcData[0] == 255 && mcData[1] == 255);
    const bool lbStopShown = !(mcData[2] == 255 && mcData[3] == 255);
    if (mbValidGps && lbStartShown && lbStopShown) {
        const qint32 llStart = mcData[1] * 256 + mcData[0];
        const qint32 llStop = mcData[3] * 256 + mcData[2];
        qint32 h = (llStop / 2048) & 31, m = (llStop / 32) & 63, s = (llStop * 2) & 63;
        const qint32 h0 = (llStart / 2048) & 31, m0 = (llStart / 32) & 63, s0 = (llStart * 2) & 63;
        if (h < h0)
            h += 24;
        h -= h0;
        m -= m0;
        s -= s0;
        if (s >= 60) {
            s -= 60;
            m += 1;
        }
        if (s < 0) {
            s += 60;
            m -= 1;
        }
        if (m >= 60) {
            m -= 60;
            h += 1;
        }
        if (m < 0) {
            m += 60;
            h -= 1;
        }
        return Clock(h, m, s);
    }
    // Without a fix the display stores a ready drive time in bytes 0-1 and marks bytes 2-3.
    if (!mbValidGps && mcData[2] == 0 && mcData[3] == 248)
        return PackedTime(mcData[1], mcData[0]);
    return QString();
}

QString clsHalvexRecord::sStartKm() const
{
    if (!mbIsValidKmStand || isRitRegType())
        return Number(mlStartKmTeller);
    return QString();
}

QString clsHalvexRecord::sEndKm() const
{
    if (mbIsValidKmStand && HasKmCounter() && !EndKmIsBlank())
        return Number(Read32(18));
    return QString();
}

// The start km shows only on a trip, the end km only when not erased.
QString clsHalvexRecord::DriveKm() const
{
    if (mbIsValidKmStand && isRitRegType() && !EndKmIsBlank())
        return Number(qint64(Read32(18)) - mlStartKmTeller);
    return QString();
}

QString clsHalvexRecord::Place(QString Texts::*vmCache, qint32 vlLatitude, qint32 vlLongitude) const
{
    if (!mcTexts)
        mcTexts = std::make_unique<Texts>();
    QString& rsCache = (*mcTexts).*vmCache;
    if (rsCache.isEmpty()) {
        rsCache = gcPlaces ? gcPlaces->searchPosition(vlLatitude, vlLongitude) : QString();
        // A single space remembers that nothing was found, so the table is asked once.
        if (rsCache.isEmpty())
            rsCache = QStringLiteral(" ");
    }
    return rsCache;
}

QString clsHalvexRecord::Origin(bool vbZipCode) const
{
    if (!mbValidGps)
        return Unknown();
    if (vbZipCode)
        return Place(&Texts::originPlace, mlStartLatitude, mlStartLongitude);
    return Latitude_to_String(0, mlStartLatitude) + QLatin1Char(' ') + Longitude_to_String(0, mlStartLongitude);
}

QString clsHalvexRecord::Destination(bool vbZipCode) const
{
    if (!mbValidGps)
        return Unknown();
    if (vbZipCode)
        return Place(&Texts::destinationPlace, lEndLatitude(), lEndLongitude());
    return GPSLocation();
}

void clsHalvexRecord::RaiseOnPlaceOverflow() const
{
    if (!mbValidGps || !gcPlaces)
        return;
    gcPlaces->RaiseOnOverflow(mlStartLatitude, mlStartLongitude);
    const qint32 llLatitude = lEndLatitude();
    gcPlaces->RaiseOnOverflow(llLatitude, lEndLongitude());
}

QString clsHalvexRecord::TypeOfTrip() const
{
    static const char* const kTexts[] = {"Private", "Business", "Commute", "Gasstop"};
    const quint8 lbyType = mcData[14];
    return QLatin1String(lbyType >= 1 && lbyType <= 4 ? kTexts[lbyType - 1] : "Unknown trip");
}

QString clsHalvexRecord::Speed() const
{
    if (!mbValidGps)
        return Unknown();
    return IsType(3, 5) ? Number(mcData[16]) : QString();
}

QString clsHalvexRecord::TypeOfAlarm() const
{
    // "Traject Contol" is the text the users' exports have always carried.
    static const char* const kTexts[] = {"Route Logging", "PoliceCheck", "SpotAlarm", "Traject Contol",
                                         "route",         "tankstop",    "km correctie"};
    if (IsType(2, 8))
        return QLatin1String(kTexts[RecordType() - 2]);
    return QStringLiteral("Unknown alarm code ") + Number(RecordType());
}

QString clsHalvexRecord::Description() const
{
    if (!isTankStopType())
        return QString();
    return QStringLiteral("No=") + TankBonNummer();
}

QString clsHalvexRecord::Amplitude() const
{
    return isPoliceCheckRadarType() ? Number(mcData[21]) : QString();
}

QString clsHalvexRecord::FrequencyBand() const
{
    if (!isPoliceCheckRadarType())
        return QString();
    const qint32 llOffset = mcData[19] * 256 + mcData[18];
    const quint8 lbyBand = mcData[20];
    if (lbyBand > 1)
        return QStringLiteral("Unknown Frequency Band Selection ") + Number(lbyBand);
    return Number((lbyBand == 0 ? 24000 : 34160) + llOffset) + QStringLiteral(" MHz");
}

QString clsHalvexRecord::TankBonNummer() const
{
    return HasKmCounter() ? Number(mcData[23] * 256 + mcData[22]) : QString();
}

// A km-correction record keeps the counter from before the correction in the
// bytes the other kinds use for times, heading and speed.
QString clsHalvexRecord::PreviousKM() const
{
    if (!isKmCorrectieType())
        return QString();
    return Number(qint32(mcData[16] & 127) * 16777216 + qint32(mcData[15]) * 65536 + qint32(mcData[1]) * 256
                  + qint32(mcData[0]));
}

QString clsHalvexRecord::correctionKM() const
{
    const QString lsPrevious = PreviousKM();
    if (lsPrevious.isEmpty())
        return QString();
    return Number(qint32(Val(lsPrevious) - Val(sEndKm())));
}

QString clsHalvexRecord::Direction() const
{
    return mbValidGps ? Number((mcData[15] * 2) % 360) : Unknown();
}

QString clsHalvexRecord::GPSLocation() const
{
    const qint32 llLatitude = lEndLatitude();
    return Latitude_to_String(0, llLatitude) + QLatin1Char(' ') + Longitude_to_String(0, lEndLongitude());
}

namespace {
// One coordinate as text. Modes: 0 full text (N,52,21.4567), 1 hemisphere
// letter, 2 degrees, 3 minutes, 4 fraction of a minute, 5 full text without
// the letter.
QString Coordinate(qint16 vlMode, QLatin1Char vcHemisphere, qint32 v, int vlDegreeDigits)
{
    QString lsText;
    if (vlMode == 0 || vlMode == 1)
        lsText.append(vcHemisphere);
    if (vlMode == 0 || vlMode == 2 || vlMode == 5) {
        lsText.append(QLatin1Char(','));
        AppendNumber(lsText, v / kDegree, vlDegreeDigits);
    }
    v %= kDegree;
    if (vlMode == 0 || vlMode == 3 || vlMode == 5) {
        lsText.append(QLatin1Char(','));
        AppendNumber(lsText, v / kMinute, 2);
    }
    if (vlMode == 0 || vlMode == 5)
        lsText.append(QLatin1Char('.'));
    v %= kMinute;
    if (vlMode == 0 || vlMode == 4 || vlMode == 5)
        AppendNumber(lsText, v, 4);
    return lsText;
}
}

// The equator value itself counts as south.
QString clsHalvexRecord::Latitude_to_String(qint16 vlMode, qint32 vlValue)
{
    const bool lbNorth = vlValue > kEquator;
    return Coordinate(vlMode, QLatin1Char(lbNorth ? 'N' : 'S'),
                      lbNorth ? vlValue % kEquator : kEquator - vlValue % kEquator, 2);
}

// Only the span from 180 up to (not including) 360 encoded degrees is east.
QString clsHalvexRecord::Longitude_to_String(qint16 vlMode, qint32 vlValue)
{
    const bool lbEast = vlValue / kMeridian == 1;
    return Coordinate(vlMode, QLatin1Char(lbEast ? 'E' : 'W'),
                      lbEast ? vlValue % kMeridian : kMeridian - vlValue % kMeridian, 3);
}

// A tank stop logged without a fix takes the position, date and times of the
// record it is given; its own trip type and km data stay.
void clsHalvexRecord::copyToTankstopRecord(const clsHalvexRecord& rcSource)
{
    if (!rcSource.mbValidGps)
        return;
    std::copy(rcSource.mcData.begin(), rcSource.mcData.begin() + 14, mcData.begin());
    mcData[15] = rcSource.mcData[15];
    mcData[16] = rcSource.mcData[16];
    mlStartLongitude = rcSource.lEndLongitude();
    mlStartLatitude = rcSource.lEndLatitude();
    mbValidGps = true;
}

QString clsHalvexRecord::GetHeaderStringWithDelimiter(const QString& vsDelimiter)
{
    QStringList lcTitles;
    for (const clsRecordColumn& rcColumn : RecordColumns())
        lcTitles << rcColumn.Title;
    return lcTitles.join(vsDelimiter);
}

// Every column but the route is followed by the delimiter, so a line without
// the route ends with one.
QString clsHalvexRecord::GetFullStringWithDelimiter(const QString& vsDelimiter, bool vbWithRoute) const
{
    const std::vector<clsRecordColumn>& rcColumns = RecordColumns();
    QString lsLine;
    lsLine.reserve(256);
    for (size_t i = 0; i + 1 < rcColumns.size(); ++i) {
        lsLine += rcColumns[i].Text(*this);
        lsLine += vsDelimiter;
    }
    if (vbWithRoute)
        lsLine += rcColumns.back().Text(*this);
    return lsLine;
}
