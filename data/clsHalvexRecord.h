#pragma once

#include <QString>
#include <array>
#include <memory>

class clsGpsPlaces;

// One 24-byte record of the display's logbook, with every column the user
// sees as a text property. Decoding takes raw bytes only, so a saved page is
// a test fixture.
class clsHalvexRecord
{
public:
    static constexpr int kSize = 24;
    using Bytes = std::array<quint8, kSize>;

    clsHalvexRecord() = default;
    clsHalvexRecord(const clsHalvexRecord& rcOther);
    clsHalvexRecord(clsHalvexRecord&&) noexcept = default;
    clsHalvexRecord& operator=(const clsHalvexRecord& rcOther);
    clsHalvexRecord& operator=(clsHalvexRecord&&) noexcept = default;
    ~clsHalvexRecord();

    // Decodes an array of exactly 24 bytes (vlCount must be 24).
    void DeCodeData(const quint8* vcData, int vlCount);
    void DeCodeData(const Bytes& vcData) { DeCodeData(vcData.data(), kSize); }

    quint8 getItemOfArray(int vlIndex) const { return mcData[size_t(vlIndex)]; }

    bool IsValid() const { return mbIsValid; }
    bool ValidGps() const { return mbValidGps; }
    bool IsValidKmStand() const { return mbIsValidKmStand; }

    // Kind predicates (byte 17).
    quint8 RecordType() const { return mcData[17]; }
    bool isRitRegType() const { return RecordType() == 2; }
    bool isPoliceCheckRadarType() const { return RecordType() == 3; }
    bool isPoliceCheckSpotType() const { return RecordType() == 4; }
    bool isPoliceCheckTcType() const { return RecordType() == 5; }
    bool isRouteType() const { return RecordType() == 6; }
    bool isTankStopType() const { return RecordType() == 7; }
    bool isKmCorrectieType() const { return RecordType() == 8; }
    bool isDisplayType() const;
    bool isSaveToFile() const { return isDisplayType(); }

    // 32-bit fields; reading clears a set bit 31 in the stored bytes.
    qint32 lEndLatitude() const;
    qint32 lEndLongitude() const;
    qint32 lEndKmTeller() const;
    void SetlEndKmTeller(qint32 vlValue);
    // Whether sEndKm shows a number, without making its text.
    bool HasEndKm() const { return mbIsValidKmStand && HasKmCounter() && !EndKmIsBlank(); }

    qint32 lStartKmTeller() const { return mlStartKmTeller; }
    void SetlStartKmTeller(qint32 vlValue) { mlStartKmTeller = vlValue; }
    qint32 RecordNumber() const { return mlRecordNummer; }
    void SetRecordNumber(qint32 vlValue) { mlRecordNummer = vlValue; }
    qint32 Ritnummer() const { return mlRitnummer; }
    void SetRitnummer(qint32 vlValue) { mlRitnummer = vlValue; }
    QString Route() const { return mcTexts ? mcTexts->route : QString(); }
    void SetRoute(const QString& vsRoute);

    qint32 mlStartLatitude = 0;
    qint32 mlStartLongitude = 0;

    // Text columns; the column table (clsRecordColumns) puts them in order.
    QString RitNumber() const;
    QString DateOfTrip() const;
    QString StartTime() const;
    QString StopTime() const;
    QString DriveTime() const;
    QString sStartKm() const;
    QString sEndKm() const;
    QString DriveKm() const;
    QString Origin(bool vbZipCode) const;
    QString Destination(bool vbZipCode) const;
    // Raises the overflow that the place searches of Origin(true) and
    // Destination(true) would raise, without searching.
    void RaiseOnPlaceOverflow() const;
    QString TypeOfTrip() const;
    QString Speed() const;
    QString TypeOfAlarm() const;
    QString Description() const;
    QString Amplitude() const;
    QString FrequencyBand() const;
    QString TankBonNummer() const;
    QString PreviousKM() const;
    QString correctionKM() const;
    QString Direction() const;
    QString GPSLocation() const;

    static QString Latitude_to_String(qint16 vlMode, qint32 vlValue);
    static QString Longitude_to_String(qint16 vlMode, qint32 vlValue);

    void copyToTankstopRecord(const clsHalvexRecord& rcSource);

    static QString GetHeaderStringWithDelimiter(const QString& vsDelimiter);
    QString GetFullStringWithDelimiter(const QString& vsDelimiter, bool vbWithRoute) const;
    QString GetFullStringWithDelimiterToFile(const QString& vsDelimiter) const
    {
        return GetFullStringWithDelimiter(vsDelimiter, true);
    }

    // The place table that Origin and Destination ask; none means empty place texts.
    static void UsePlaces(const clsGpsPlaces* vcPlaces);

private:
    // A full display holds 700000 records, most of them route points that
    // never get a route or a place text: the texts live apart, made when
    // the first one is set, so a record takes 56 bytes instead of 120.
    struct Texts {
        QString route;
        QString originPlace;       // cached place texts, " " when nothing was found
        QString destinationPlace;
    };

    qint32 Read32(int vlOffset) const;
    bool IsType(int vlLow, int vlHigh) const { return RecordType() >= vlLow && RecordType() <= vlHigh; }
    bool HasKmCounter() const { return isRitRegType() || IsType(6, 8); }
    bool EndKmIsBlank() const;
    QString Place(QString Texts::*vmCache, qint32 vlLatitude, qint32 vlLongitude) const;

    // Reading a flagged field clears its flag bit in place, and the place
    // columns remember their lookup (in mcTexts); neither changes a text
    // column, so the text columns can be read from a const record.
    mutable Bytes mcData{};
    bool mbIsValid = false;
    bool mbValidGps = false;
    bool mbIsValidKmStand = false;
    qint32 mlRecordNummer = 0;
    qint32 mlRitnummer = 0;
    qint32 mlStartKmTeller = 0;
    mutable std::unique_ptr<Texts> mcTexts;
};
