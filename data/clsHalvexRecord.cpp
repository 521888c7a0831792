#include "data/clsHalvexRecord.h"

#include "data/clsGpsPlaces.h"

#include <QLatin1String>
#include <QStringList>
#include <algorithm>

namespace {
const clsGpsPlaces* gcPlaces = nullptr;

constexpr qint32 kEquator = 54000000;    // 90 degrees in 1/600000 degree
constexpr qint32 kMeridian = 108000000;  // 180 degrees
constexpr qint32 kDegree = 600000;
constexpr qint32 kMinute = 10000;

void AppendLatin1(QString& rsOut, const char* vcText)
{
    rsOut.append(QLatin1String(vcText));
}

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

void AppendClock(QString& rsOut, qint32 vlHours, qint32 vlMinutes, qint32 vlSeconds)
{
    AppendNumber(rsOut, vlHours, 2);
    rsOut.append(QLatin1Char(':'));
    AppendNumber(rsOut, vlMinutes, 2);
    rsOut.append(QLatin1Char(':'));
    AppendNumber(rsOut, vlSeconds, 2);
}

// A packed time of two bytes; both 255 is an erased field and shows nothing.
void AppendPackedTime(QString& rsOut, quint8 vbyHigh, quint8 vbyLow)
{
    if (vbyHigh == 255 && vbyLow == 255)
        return;
    AppendClock(rsOut, vbyHigh / 8, (vbyHigh & 7) * 8 + vbyLow / 32, (vbyLow & 31) * 2);
}

// Leading decimal number of a column text; the columns hold plain integers.
qint64 Val(const QString& vsText)
{
    return vsText.toLongLong();
}

template <typename F>
QString Column(F&& vAppend)
{
    QString lsText;
    vAppend(lsText);
    return lsText;
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
qint32 clsHalvexRecord::Read32(int vlOffset)
{
    quint8& rbyTop = mcData[size_t(vlOffset + 3)];
    if (rbyTop >= 128)
        rbyTop -= 128;
    return qint32(rbyTop) * 16777216 + qint32(mcData[size_t(vlOffset + 2)]) * 65536
        + qint32(mcData[size_t(vlOffset + 1)]) * 256 + qint32(mcData[size_t(vlOffset)]);
}

qint32 clsHalvexRecord::lEndLatitude()
{
    return Read32(6);
}

qint32 clsHalvexRecord::lEndLongitude()
{
    return Read32(10);
}

qint32 clsHalvexRecord::lEndKmTeller()
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
    return QString::number(mlRitnummer);
}

void clsHalvexRecord::AppendDateOfTrip(QString& rsOut) const
{
    if (!mbValidGps) {
        AppendLatin1(rsOut, "unknown");
        return;
    }
    AppendNumber(rsOut, mcData[4] & 31);
    rsOut.append(QLatin1Char('-'));
    AppendNumber(rsOut, (mcData[5] % 2) * 8 + mcData[4] / 32);
    rsOut.append(QLatin1Char('-'));
    AppendNumber(rsOut, mcData[5] / 2 + 2000);
}

void clsHalvexRecord::AppendStartTime(QString& rsOut) const
{
    if (!isRitRegType())
        return;
    if (!mbValidGps)
        AppendLatin1(rsOut, "unknown");
    else
        AppendPackedTime(rsOut, mcData[1], mcData[0]);
}

void clsHalvexRecord::AppendStopTime(QString& rsOut) const
{
    if (!mbValidGps)
        AppendLatin1(rsOut, "unknown");
    else
        AppendPackedTime(rsOut, mcData[3], mcData[2]);
}

// Hours wrap once past midnight; then seconds and minutes borrow in that
// order. A stop a little before the start within the same hour therefore
// shows a negative hour (-01:50:00); kept, the exports have always shown it so.
void clsHalvexRecord::AppendDriveTime(QString& rsOut) const
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
        AppendClock(rsOut, h, m, s);
        return;
    }
    // Without a fix the display stores a ready drive time in bytes 0-1 and marks bytes 2-3.
    if (!mbValidGps && mcData[2] == 0 && mcData[3] == 248)
        AppendPackedTime(rsOut, mcData[1], mcData[0]);
}

void clsHalvexRecord::AppendStartKm(QString& rsOut)
{
    if (!mbIsValidKmStand || isRitRegType())
        AppendNumber(rsOut, mlStartKmTeller);
}

void clsHalvexRecord::AppendEndKm(QString& rsOut)
{
    if (mbIsValidKmStand && HasKmCounter() && !EndKmIsBlank())
        AppendNumber(rsOut, Read32(18));
}

// The start km shows only on a trip, the end km only when not erased.
void clsHalvexRecord::AppendDriveKm(QString& rsOut)
{
    if (mbIsValidKmStand && isRitRegType() && !EndKmIsBlank())
        AppendNumber(rsOut, qint64(Read32(18)) - mlStartKmTeller);
}

QString clsHalvexRecord::Place(QString Texts::*vmCache, qint32 vlLatitude, qint32 vlLongitude)
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

void clsHalvexRecord::AppendOrigin(QString& rsOut, bool vbZipCode)
{
    if (!mbValidGps) {
        AppendLatin1(rsOut, "unknown");
    } else if (vbZipCode) {
        rsOut += Place(&Texts::originPlace, mlStartLatitude, mlStartLongitude);
    } else {
        AppendLatitude(rsOut, 0, mlStartLatitude);
        rsOut.append(QLatin1Char(' '));
        AppendLongitude(rsOut, 0, mlStartLongitude);
    }
}

void clsHalvexRecord::AppendDestination(QString& rsOut, bool vbZipCode)
{
    if (!mbValidGps) {
        AppendLatin1(rsOut, "unknown");
        return;
    }
    const qint32 llLatitude = lEndLatitude();
    const qint32 llLongitude = lEndLongitude();
    if (vbZipCode) {
        rsOut += Place(&Texts::destinationPlace, llLatitude, llLongitude);
    } else {
        AppendLatitude(rsOut, 0, llLatitude);
        rsOut.append(QLatin1Char(' '));
        AppendLongitude(rsOut, 0, llLongitude);
    }
}

void clsHalvexRecord::AppendTypeOfTrip(QString& rsOut) const
{
    static const char* const kTexts[] = {"Private", "Business", "Commute", "Gasstop"};
    const quint8 lbyType = mcData[14];
    AppendLatin1(rsOut, lbyType >= 1 && lbyType <= 4 ? kTexts[lbyType - 1] : "Unknown trip");
}

void clsHalvexRecord::AppendSpeed(QString& rsOut) const
{
    if (!mbValidGps)
        AppendLatin1(rsOut, "unknown");
    else if (IsType(3, 5))
        AppendNumber(rsOut, mcData[16]);
}

void clsHalvexRecord::AppendTypeOfAlarm(QString& rsOut) const
{
    // "Traject Contol" is the text the users' exports have always carried.
    static const char* const kTexts[] = {"Route Logging", "PoliceCheck", "SpotAlarm", "Traject Contol",
                                         "route",         "tankstop",    "km correctie"};
    if (IsType(2, 8)) {
        AppendLatin1(rsOut, kTexts[RecordType() - 2]);
        return;
    }
    AppendLatin1(rsOut, "Unknown alarm code ");
    AppendNumber(rsOut, RecordType());
}

void clsHalvexRecord::AppendAmplitude(QString& rsOut) const
{
    if (isPoliceCheckRadarType())
        AppendNumber(rsOut, mcData[21]);
}

void clsHalvexRecord::AppendFrequencyBand(QString& rsOut) const
{
    if (!isPoliceCheckRadarType())
        return;
    const qint32 llOffset = mcData[19] * 256 + mcData[18];
    const quint8 lbyBand = mcData[20];
    if (lbyBand > 1) {
        AppendLatin1(rsOut, "Unknown Frequency Band Selection ");
        AppendNumber(rsOut, lbyBand);
        return;
    }
    AppendNumber(rsOut, (lbyBand == 0 ? 24000 : 34160) + llOffset);
    AppendLatin1(rsOut, " MHz");
}

void clsHalvexRecord::AppendTankBonNummer(QString& rsOut) const
{
    if (HasKmCounter())
        AppendNumber(rsOut, mcData[23] * 256 + mcData[22]);
}

void clsHalvexRecord::AppendDirection(QString& rsOut) const
{
    if (!mbValidGps)
        AppendLatin1(rsOut, "unknown");
    else
        AppendNumber(rsOut, (mcData[15] * 2) % 360);
}

QString clsHalvexRecord::DateOfTrip() const
{
    return Column([this](QString& s) { AppendDateOfTrip(s); });
}

QString clsHalvexRecord::StartTime() const
{
    return Column([this](QString& s) { AppendStartTime(s); });
}

QString clsHalvexRecord::StopTime() const
{
    return Column([this](QString& s) { AppendStopTime(s); });
}

QString clsHalvexRecord::DriveTime() const
{
    return Column([this](QString& s) { AppendDriveTime(s); });
}

QString clsHalvexRecord::sStartKm()
{
    return Column([this](QString& s) { AppendStartKm(s); });
}

QString clsHalvexRecord::sEndKm()
{
    return Column([this](QString& s) { AppendEndKm(s); });
}

QString clsHalvexRecord::DriveKm()
{
    return Column([this](QString& s) { AppendDriveKm(s); });
}

QString clsHalvexRecord::Origin(bool vbZipCode)
{
    return Column([this, vbZipCode](QString& s) { AppendOrigin(s, vbZipCode); });
}

QString clsHalvexRecord::Destination(bool vbZipCode)
{
    return Column([this, vbZipCode](QString& s) { AppendDestination(s, vbZipCode); });
}

QString clsHalvexRecord::TypeOfTrip() const
{
    return Column([this](QString& s) { AppendTypeOfTrip(s); });
}

QString clsHalvexRecord::Speed() const
{
    return Column([this](QString& s) { AppendSpeed(s); });
}

QString clsHalvexRecord::TypeOfAlarm() const
{
    return Column([this](QString& s) { AppendTypeOfAlarm(s); });
}

QString clsHalvexRecord::Description() const
{
    if (!isTankStopType())
        return QString();
    return QStringLiteral("No=") + TankBonNummer();
}

QString clsHalvexRecord::Amplitude() const
{
    return Column([this](QString& s) { AppendAmplitude(s); });
}

QString clsHalvexRecord::FrequencyBand() const
{
    return Column([this](QString& s) { AppendFrequencyBand(s); });
}

QString clsHalvexRecord::TankBonNummer() const
{
    return Column([this](QString& s) { AppendTankBonNummer(s); });
}

// A km-correction record keeps the counter from before the correction in the
// bytes the other kinds use for times, heading and speed.
QString clsHalvexRecord::PreviousKM() const
{
    if (!isKmCorrectieType())
        return QString();
    return QString::number(qint32(mcData[16] & 127) * 16777216 + qint32(mcData[15]) * 65536
                           + qint32(mcData[1]) * 256 + qint32(mcData[0]));
}

QString clsHalvexRecord::correctionKM()
{
    const QString lsPrevious = PreviousKM();
    if (lsPrevious.isEmpty())
        return QString();
    return QString::number(qint32(Val(lsPrevious) - Val(sEndKm())));
}

QString clsHalvexRecord::Direction() const
{
    return Column([this](QString& s) { AppendDirection(s); });
}

QString clsHalvexRecord::GPSLocation()
{
    QString lsText;
    AppendLatitude(lsText, 0, lEndLatitude());
    lsText.append(QLatin1Char(' '));
    AppendLongitude(lsText, 0, lEndLongitude());
    return lsText;
}

// Modes: 0 full text (N,52,21.4567), 1 hemisphere letter, 2 degrees,
// 3 minutes, 4 fraction of a minute, 5 full text without the letter.
// The equator value itself counts as south.
void clsHalvexRecord::AppendLatitude(QString& rsOut, qint16 vlMode, qint32 vlValue)
{
    const bool lbNorth = vlValue > kEquator;
    qint32 v = lbNorth ? vlValue % kEquator : kEquator - vlValue % kEquator;
    if (vlMode == 0 || vlMode == 1)
        rsOut.append(QLatin1Char(lbNorth ? 'N' : 'S'));
    if (vlMode == 0 || vlMode == 2 || vlMode == 5) {
        rsOut.append(QLatin1Char(','));
        AppendNumber(rsOut, v / kDegree, 2);
    }
    v %= kDegree;
    if (vlMode == 0 || vlMode == 3 || vlMode == 5) {
        rsOut.append(QLatin1Char(','));
        AppendNumber(rsOut, v / kMinute, 2);
    }
    if (vlMode == 0 || vlMode == 5)
        rsOut.append(QLatin1Char('.'));
    v %= kMinute;
    if (vlMode == 0 || vlMode == 4 || vlMode == 5)
        AppendNumber(rsOut, v, 4);
}

// As the latitude, with three digits of degrees; only the span from 180 up to
// (not including) 360 encoded degrees is east.
void clsHalvexRecord::AppendLongitude(QString& rsOut, qint16 vlMode, qint32 vlValue)
{
    const bool lbEast = vlValue / kMeridian == 1;
    qint32 v = lbEast ? vlValue % kMeridian : kMeridian - vlValue % kMeridian;
    if (vlMode == 0 || vlMode == 1)
        rsOut.append(QLatin1Char(lbEast ? 'E' : 'W'));
    if (vlMode == 0 || vlMode == 2 || vlMode == 5) {
        rsOut.append(QLatin1Char(','));
        AppendNumber(rsOut, v / kDegree, 3);
    }
    v %= kDegree;
    if (vlMode == 0 || vlMode == 3 || vlMode == 5) {
        rsOut.append(QLatin1Char(','));
        AppendNumber(rsOut, v / kMinute, 2);
    }
    if (vlMode == 0 || vlMode == 5)
        rsOut.append(QLatin1Char('.'));
    v %= kMinute;
    if (vlMode == 0 || vlMode == 4 || vlMode == 5)
        AppendNumber(rsOut, v, 4);
}

QString clsHalvexRecord::Latitude_to_String(qint16 vlMode, qint32 vlValue)
{
    return Column([&](QString& s) { AppendLatitude(s, vlMode, vlValue); });
}

QString clsHalvexRecord::Longitude_to_String(qint16 vlMode, qint32 vlValue)
{
    return Column([&](QString& s) { AppendLongitude(s, vlMode, vlValue); });
}

// A tank stop logged without a fix takes the position, date and times of the
// record it is given; its own trip type and km data stay.
void clsHalvexRecord::copyToTankstopRecord(clsHalvexRecord& rcSource)
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
    static const QStringList kTitles = {
        QStringLiteral("#"),           QStringLiteral("Ritnumber"),      QStringLiteral("Date"),
        QStringLiteral("Start Time"),  QStringLiteral("Stop Time"),      QStringLiteral("Drive Time"),
        QStringLiteral("Start km"),    QStringLiteral("End km"),         QStringLiteral("Driven km"),
        QStringLiteral("Zip code"),    QStringLiteral("Zip code"),       QStringLiteral("Origin"),
        QStringLiteral("Destination"), QStringLiteral("Type of trip"),   QStringLiteral("Direction"),
        QStringLiteral("Speed"),       QStringLiteral("Event"),          QStringLiteral("Amplitude"),
        QStringLiteral("Frequency"),   QStringLiteral("Tank receipt number"), QStringLiteral("Route"),
    };
    return kTitles.join(vsDelimiter);
}

// The two "Zip code" columns carry the place names, "Origin" and
// "Destination" the coordinates. Every column is followed by the delimiter.
QString clsHalvexRecord::GetFullStringWithDelimiter(const QString& vsDelimiter, bool vbWithRoute)
{
    QString s;
    s.reserve(256);
    const auto lcNext = [&]() { s += vsDelimiter; };
    AppendNumber(s, mlRecordNummer);
    lcNext();
    AppendNumber(s, mlRitnummer);
    lcNext();
    AppendDateOfTrip(s);
    lcNext();
    AppendStartTime(s);
    lcNext();
    AppendStopTime(s);
    lcNext();
    AppendDriveTime(s);
    lcNext();
    AppendStartKm(s);
    lcNext();
    AppendEndKm(s);
    lcNext();
    AppendDriveKm(s);
    lcNext();
    AppendOrigin(s, true);
    lcNext();
    AppendDestination(s, true);
    lcNext();
    AppendOrigin(s, false);
    lcNext();
    AppendDestination(s, false);
    lcNext();
    AppendTypeOfTrip(s);
    lcNext();
    AppendDirection(s);
    lcNext();
    AppendSpeed(s);
    lcNext();
    AppendTypeOfAlarm(s);
    lcNext();
    AppendAmplitude(s);
    lcNext();
    AppendFrequencyBand(s);
    lcNext();
    AppendTankBonNummer(s);
    lcNext();
    if (vbWithRoute && mcTexts)
        s += mcTexts->route;
    return s;
}
