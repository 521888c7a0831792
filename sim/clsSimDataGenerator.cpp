#include "sim/clsSimDataGenerator.h"

#include <QFile>
#include <QTextStream>
#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
// The display's coordinates count 1/600000 degree.
constexpr double kUnitsPerDegree = 600000.0;
// Roads are longer than the straight line between two places.
constexpr double kRoadFactor = 1.25;

double DistanceKm(const clsSimPlace& vcA, const clsSimPlace& vcB)
{
    const double ldMeanLat = (vcA.Latitude + vcB.Latitude) / 2.0 * kPi / 180.0;
    const double ldEast = (vcB.Longitude - vcA.Longitude) * std::cos(ldMeanLat) * 111.32;
    const double ldNorth = (vcB.Latitude - vcA.Latitude) * 110.57;
    return std::sqrt(ldEast * ldEast + ldNorth * ldNorth);
}

int BearingDegrees(const clsSimPlace& vcA, const clsSimPlace& vcB)
{
    const double ldMeanLat = (vcA.Latitude + vcB.Latitude) / 2.0 * kPi / 180.0;
    const double ldEast = (vcB.Longitude - vcA.Longitude) * std::cos(ldMeanLat);
    const double ldNorth = vcB.Latitude - vcA.Latitude;
    const int llDegrees = int(std::lround(std::atan2(ldEast, ldNorth) * 180.0 / kPi));
    return (llDegrees + 360) % 360;
}

} // namespace

struct clsSimDataGenerator::Trip {
    clsSimPlace From;
    clsSimPlace To;
    QDateTime Start;
    qint64 Seconds = 0;
    double RoadKm = 0.0;
    double DisplayKmAtStart = 0.0;
};

QString clsSimDataGenerator::DefaultPlacesFile()
{
    return QStringLiteral(CORVANE_SIM_PLACES);
}

QVector<clsSimPlace> clsSimDataGenerator::LoadPlaces(const QString& vsPath, QString& rsError)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly)) {
        rsError = QStringLiteral("%1: %2").arg(vsPath, lcFile.errorString());
        return {};
    }
    QVector<clsSimPlace> lcPlaces;
    int llLine = 0;
    while (!lcFile.atEnd()) {
        ++llLine;
        const QString lsLine = QString::fromLatin1(lcFile.readLine()).trimmed();
        if (lsLine.isEmpty())
            continue;
        const QStringList lcFields = lsLine.split(QLatin1Char(';'));
        bool lbLon = false;
        bool lbLat = false;
        clsSimPlace lcPlace;
        if (lcFields.size() >= 3) {
            lcPlace.Longitude = lcFields[0].toLongLong(&lbLon) / kUnitsPerDegree - 180.0;
            lcPlace.Latitude = lcFields[1].toLongLong(&lbLat) / kUnitsPerDegree - 90.0;
            lcPlace.Name = lcFields.mid(2).join(QLatin1Char(';'));
        }
        if (!lbLon || !lbLat) {
            rsError = QStringLiteral("%1 line %2: expected longitude;latitude;name").arg(vsPath).arg(llLine);
            return {};
        }
        lcPlaces << lcPlace;
    }
    if (lcPlaces.isEmpty())
        rsError = QStringLiteral("%1: no places").arg(vsPath);
    return lcPlaces;
}

clsSimDataGenerator::clsSimDataGenerator(QVector<clsSimPlace> vcPlaces)
    : mcPlaces(std::move(vcPlaces))
{
}

// Own arithmetic over the engine's raw output: the standard distributions
// differ between libraries, and a seed must give the same logbook everywhere.
double clsSimDataGenerator::Uniform(double vdLow, double vdHigh)
{
    return vdLow + (vdHigh - vdLow) * (double(mcRandom()) / 4294967296.0);
}

int clsSimDataGenerator::Between(int vlLow, int vlHigh)
{
    return vlLow + int(mcRandom() % quint32(vlHigh - vlLow + 1));
}

bool clsSimDataGenerator::Chance(double vdProbability)
{
    return Uniform(0.0, 1.0) < vdProbability;
}

const clsSimPlace& clsSimDataGenerator::PlaceNear(const clsSimPlace& vcFrom, double vdMinKm, double vdMaxKm)
{
    int llBest = Between(0, int(mcPlaces.size()) - 1);
    double ldBestMiss = 1e9;
    for (int i = 0; i < 300; ++i) {
        const int llIndex = Between(0, int(mcPlaces.size()) - 1);
        const double ldKm = DistanceKm(vcFrom, mcPlaces[llIndex]);
        const double ldMiss = ldKm < vdMinKm ? vdMinKm - ldKm : (ldKm > vdMaxKm ? ldKm - vdMaxKm : 0.0);
        if (ldMiss < ldBestMiss) {
            ldBestMiss = ldMiss;
            llBest = llIndex;
        }
        if (ldMiss == 0.0)
            break;
    }
    return mcPlaces[llBest];
}

clsSimRecordFields clsSimDataGenerator::Event(quint8 vbyType, const QDateTime& vcWhen, double vdLatitude,
                                               double vdLongitude) const
{
    clsSimRecordFields lcFields;
    lcFields.RecordType = vbyType;
    lcFields.Date = vcWhen.date();
    lcFields.StopTime = vcWhen.time();
    lcFields.Latitude = vdLatitude;
    lcFields.Longitude = vdLongitude;
    lcFields.TripType = mbyTripType;
    lcFields.KmCounter = qint32(std::lround(mdDisplayKm));
    return lcFields;
}

QVector<clsSimRecordFields> clsSimDataGenerator::Generate(quint32 vlSeed, int vlDays)
{
    mcRandom.seed(vlSeed);
    mcRecords.clear();
    if (mcPlaces.isEmpty() || vlDays <= 0)
        return mcRecords;

    const clsSimPlace lcHome = mcPlaces[Between(0, qMin(int(mcPlaces.size()), 60) - 1)];
    const clsSimPlace lcWork = PlaceNear(lcHome, 8.0, 45.0);
    mcHere = lcHome;
    const QDate lcFirstDay = QDate(2023, 1, 2).addDays(vlSeed % 700);
    mcNow = QDateTime(lcFirstDay, QTime(6, 30), Qt::UTC);
    mdTrueKm = Between(15000, 180000);
    mdDisplayKm = mdTrueKm;
    mdKmScale = Uniform(0.97, 1.03);
    mdKmSinceTank = Uniform(0.0, 400.0);
    mlReceipt = quint16(Between(1000, 30000));

    // Installing the display: the user sets its counter to the car's odometer.
    clsSimRecordFields lcInstall = Event(8, mcNow, mcHere.Latitude, mcHere.Longitude);
    lcInstall.PreviousKm = 0;
    mcRecords << lcInstall;

    int llNextCorrection = Between(8, 14);
    for (int llDay = 0; llDay < vlDays; ++llDay) {
        const QDate lcDate = lcFirstDay.addDays(llDay);
        const auto StartAt = [this, &lcDate](int vlHour, int vlMinuteSpread) {
            const QDateTime lcAt(lcDate, QTime(vlHour, 0).addSecs(Between(0, vlMinuteSpread * 60)), Qt::UTC);
            mcNow = qMax(mcNow.addSecs(Between(300, 1800)), lcAt);
        };
        StartAt(6, 150);
        if (llDay == llNextCorrection) {
            AddKmCorrection();
            llNextCorrection += Between(8, 14);
        }
        if (lcDate.dayOfWeek() <= 5) {
            Drive(lcWork, 3);
            if (Chance(0.3)) {
                StartAt(11, 120);
                Drive(PlaceNear(lcWork, 5.0, 70.0), 2);
                mcNow = mcNow.addSecs(Between(1800, 7200));
                Drive(lcWork, 2);
            }
            StartAt(16, 150);
            Drive(lcHome, 3);
        } else if (Chance(0.7)) {
            StartAt(9, 240);
            Drive(PlaceNear(lcHome, 10.0, 150.0), 1);
            mcNow = mcNow.addSecs(Between(3600, 5 * 3600));
            Drive(lcHome, 1);
        }
        if (Chance(0.12)) {
            // An evening out, home again around midnight.
            StartAt(19, 90);
            Drive(PlaceNear(lcHome, 15.0, 90.0), 1);
            StartAt(23, 50);
            Drive(lcHome, 1);
        }
    }
    return mcRecords;
}

void clsSimDataGenerator::Drive(const clsSimPlace& vcTo, quint8 vbyTripType)
{
    mbyTripType = vbyTripType;
    Trip lcTrip;
    lcTrip.From = mcHere;
    lcTrip.To = vcTo;
    lcTrip.Start = mcNow;
    lcTrip.RoadKm = DistanceKm(mcHere, vcTo) * kRoadFactor + Uniform(0.5, 3.0);
    const double ldSpeed = qBound(32.0, 30.0 + lcTrip.RoadKm * 0.6, 105.0) * Uniform(0.85, 1.1);
    lcTrip.Seconds = qint64(lcTrip.RoadKm / ldSpeed * 3600.0) + Between(60, 300);
    lcTrip.DisplayKmAtStart = mdDisplayKm;

    // Now and then the receiver finds no satellites for a whole trip.
    const bool lbFix = !Chance(0.03);
    if (lbFix)
        AddRoutePointsAndAlarms(lcTrip);

    mdTrueKm += lcTrip.RoadKm;
    mdDisplayKm += lcTrip.RoadKm * mdKmScale;
    mdKmSinceTank += lcTrip.RoadKm;
    mcNow = lcTrip.Start.addSecs(lcTrip.Seconds);

    const bool lbTank = mdKmSinceTank > Uniform(500.0, 750.0);
    if (lbTank)
        mbyTripType = 4;
    clsSimRecordFields lcRecord = Event(2, mcNow, vcTo.Latitude, vcTo.Longitude);
    lcRecord.StartTime = lcTrip.Start.time();
    lcRecord.Direction = BearingDegrees(lcTrip.From, vcTo);
    lcRecord.TankReceipt = 0;
    if (!lbFix) {
        lcRecord.HasFix = false;
        lcRecord.DriveTimeMarker = true;
        lcRecord.DriveTime = QTime(0, 0).addSecs(int(lcTrip.Seconds));
    }
    mcRecords << lcRecord;
    mcHere = vcTo;
    if (lbTank)
        AddTankStop(vcTo);
}

void clsSimDataGenerator::AddRoutePointsAndAlarms(const Trip& vcTrip)
{
    const int llPoints = int(vcTrip.RoadKm / 7.0);
    const double ldBend = Uniform(-0.04, 0.04);
    const int llDirection = BearingDegrees(vcTrip.From, vcTrip.To);
    for (int i = 1; i <= llPoints; ++i) {
        const double ldPart = double(i) / double(llPoints + 1);
        // Roads wander: a sideways offset that is largest halfway.
        const double ldSide = std::sin(kPi * ldPart) * ldBend;
        const double ldLat = vcTrip.From.Latitude + (vcTrip.To.Latitude - vcTrip.From.Latitude) * ldPart + ldSide;
        const double ldLon = vcTrip.From.Longitude + (vcTrip.To.Longitude - vcTrip.From.Longitude) * ldPart - ldSide;
        const QDateTime lcWhen = vcTrip.Start.addSecs(qint64(double(vcTrip.Seconds) * ldPart));
        mdDisplayKm = vcTrip.DisplayKmAtStart + vcTrip.RoadKm * ldPart * mdKmScale;

        clsSimRecordFields lcPoint = Event(6, lcWhen, ldLat, ldLon);
        lcPoint.Direction = llDirection + Between(-10, 10);
        lcPoint.TankReceipt = 0;
        mcRecords << lcPoint;

        const QDateTime lcAlarmTime = lcWhen.addSecs(Between(20, 120));
        if (Chance(0.05)) {
            clsSimRecordFields lcRadar = Event(3, lcAlarmTime, ldLat, ldLon);
            lcRadar.Direction = lcPoint.Direction;
            lcRadar.Speed = quint8(Between(45, 135));
            // K band around 24.125 GHz or Ka band around 34.3 GHz.
            lcRadar.FrequencyBand = Chance(0.7) ? 0 : 1;
            lcRadar.FrequencyOffset = quint16(lcRadar.FrequencyBand == 0 ? Between(75, 175) : Between(90, 190));
            lcRadar.Amplitude = quint8(Between(15, 250));
            mcRecords << lcRadar;
        } else if (Chance(0.05)) {
            clsSimRecordFields lcSpot = Event(4, lcAlarmTime, ldLat, ldLon);
            lcSpot.Direction = lcPoint.Direction;
            lcSpot.Speed = quint8(Between(30, 130));
            mcRecords << lcSpot;
        } else if (Chance(0.02)) {
            clsSimRecordFields lcTraject = Event(5, lcAlarmTime, ldLat, ldLon);
            lcTraject.Direction = lcPoint.Direction;
            lcTraject.Speed = quint8(Between(80, 125));
            mcRecords << lcTraject;
        }
    }
}

void clsSimDataGenerator::AddTankStop(const clsSimPlace& vcWhere)
{
    mcNow = mcNow.addSecs(Between(120, 600));
    clsSimRecordFields lcTank = Event(7, mcNow, vcWhere.Latitude, vcWhere.Longitude);
    // Under a filling station's roof the receiver often loses its fix.
    lcTank.HasFix = !Chance(0.25);
    lcTank.TankReceipt = ++mlReceipt;
    mcRecords << lcTank;
    mdKmSinceTank = 0.0;
}

// The user puts the display's counter right again; it drifted from the car's odometer since the last time.
void clsSimDataGenerator::AddKmCorrection()
{
    clsSimRecordFields lcCorrection = Event(8, mcNow, mcHere.Latitude, mcHere.Longitude);
    lcCorrection.PreviousKm = qint32(std::lround(mdDisplayKm));
    lcCorrection.KmCounter = qint32(std::lround(mdTrueKm));
    mcRecords << lcCorrection;
    mdDisplayKm = mdTrueKm;
    mdKmScale = Uniform(0.97, 1.03);
    mcNow = mcNow.addSecs(Between(30, 120));
}

int clsSimDataGenerator::WriteLog(QByteArray& rcFlash, const QVector<clsSimRecordFields>& vcRecords,
                                  int vlFirstPage, int vlLastPage, int vlPageSizeLog2)
{
    const int llPageSize = 1 << vlPageSizeLog2;
    const int llPerPage = llPageSize / clsSimRecordEncoder::kRecordSize;
    const qsizetype llNeeded = qsizetype(vlLastPage + 1) * llPageSize;
    if (rcFlash.size() < llNeeded)
        rcFlash.append(QByteArray(llNeeded - rcFlash.size(), char(0xFF)));
    int llWritten = 0;
    for (int llPage = vlFirstPage + 1; llPage <= vlLastPage; ++llPage) {
        for (int llSlot = 0; llSlot < llPerPage; ++llSlot) {
            if (llWritten == vcRecords.size())
                return llWritten;
            const clsSimRecordEncoder::Bytes lcBytes = clsSimRecordEncoder::Encode(vcRecords[llWritten++]);
            const qsizetype llOffset = qsizetype(llPage) * llPageSize + llSlot * clsSimRecordEncoder::kRecordSize;
            std::copy(lcBytes.begin(), lcBytes.end(), rcFlash.begin() + llOffset);
        }
    }
    return llWritten;
}

int clsSimDataGenerator::FillLog(QByteArray& rcFlash, int vlFirstPage, int vlLastPage, int vlPageSizeLog2,
                                 quint32 vlSeed, int vlDays, QString& rsError)
{
    const QVector<clsSimPlace> lcPlaces = LoadPlaces(DefaultPlacesFile(), rsError);
    if (lcPlaces.isEmpty())
        return -1;
    const QVector<clsSimRecordFields> lcRecords = clsSimDataGenerator(lcPlaces).Generate(vlSeed, vlDays);
    return WriteLog(rcFlash, lcRecords, vlFirstPage, vlLastPage, vlPageSizeLog2);
}
