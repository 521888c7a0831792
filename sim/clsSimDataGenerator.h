#pragma once

#include "sim/clsSimRecordEncoder.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QVector>
#include <random>

// A known place the simulated car drives between.
struct clsSimPlace {
    QString Name;
    double Latitude = 0.0;
    double Longitude = 0.0;
};

// Makes the logbook of a simulated car: days of trips between real places,
// route points along the way, radar, spot and traject-control alarms, tank
// stops and km corrections, all from one seed so that a run can be repeated.
class clsSimDataGenerator
{
public:
    // The Benelux place table shipped with the program.
    static QString DefaultPlacesFile();
    // Reads a place table (longitude;latitude;name per line, encoded as in the records).
    // Empty with rsError naming the file and line at fault when it cannot be used.
    static QVector<clsSimPlace> LoadPlaces(const QString& vsPath, QString& rsError);

    explicit clsSimDataGenerator(QVector<clsSimPlace> vcPlaces);

    // The events of vlDays days in the order the display logs them.
    QVector<clsSimRecordFields> Generate(quint32 vlSeed, int vlDays);

    // Writes records from the start of page vlFirstPage + 1 on (the first page is
    // not part of the logging area); each page holds page size \ 24 records and
    // its last bytes stay erased. Records that do not fit are left out.
    // Returns the number of records written.
    static int WriteLog(QByteArray& rcFlash, const QVector<clsSimRecordFields>& vcRecords, int vlFirstPage,
                        int vlLastPage, int vlPageSizeLog2);

    // The whole job for a flash image of the given geometry: load the shipped
    // places, generate vlDays from vlSeed and write the log. Returns the records
    // written, -1 with rsError set when the place table cannot be read.
    static int FillLog(QByteArray& rcFlash, int vlFirstPage, int vlLastPage, int vlPageSizeLog2, quint32 vlSeed,
                       int vlDays, QString& rsError);

private:
    struct Trip;
    void Drive(const clsSimPlace& vcTo, quint8 vbyTripType);
    void AddRoutePointsAndAlarms(const Trip& vcTrip);
    void AddTankStop(const clsSimPlace& vcWhere);
    void AddKmCorrection();
    const clsSimPlace& PlaceNear(const clsSimPlace& vcFrom, double vdMinKm, double vdMaxKm);
    clsSimRecordFields Event(quint8 vbyType, const QDateTime& vcWhen, double vdLatitude, double vdLongitude) const;

    double Uniform(double vdLow, double vdHigh);
    int Between(int vlLow, int vlHigh);
    bool Chance(double vdProbability);

    QVector<clsSimPlace> mcPlaces;
    std::mt19937 mcRandom;
    QVector<clsSimRecordFields> mcRecords;
    clsSimPlace mcHere;
    QDateTime mcNow;
    double mdTrueKm = 0.0;     // the car's real odometer
    double mdDisplayKm = 0.0;  // what the display counts; drifts until the next correction
    double mdKmScale = 1.0;
    double mdKmSinceTank = 0.0;
    quint16 mlReceipt = 0;
    quint8 mbyTripType = 1;
};
