#pragma once

#include "data/clsPlaceIndex.h"

#include <QString>
#include <vector>

class IUserDialogs;

// One known place of postcode.gps.
struct clsGpsPlace {
    QString msPlaatsPostcodeName;
    qint32 mlLatitude = 0;
    qint32 mlLongitude = 0;
};

// The table of known places, loaded once from postcode.gps, answering which
// place lies nearest to a position when one is near enough.
class clsGpsPlaces
{
public:
    // Loads vsPath; a missing or unreadable file is reported with message boxes and leaves the table empty.
    clsGpsPlaces(const QString& vsPath, IUserDialogs* vcDialogs);
    ~clsGpsPlaces();

    // The place text nearest to the encoded position within the limit; "" when none, " " for a zero coordinate.
    QString searchPosition(qint32 vlLatitude, qint32 vlLongitude) const;
    // The same answer by comparing every slot, the way the table has always been searched;
    // the reference the index is measured against.
    QString searchPositionLinear(qint32 vlLatitude, qint32 vlLongitude) const;
    // Raises the overflow that searchPosition raises for the position, without searching.
    void RaiseOnOverflow(qint32 vlLatitude, qint32 vlLongitude) const;
    // The number of lines loaded (N); the table has N + 1 slots, the last one empty.
    qint32 Count() const { return mlCount; }
    clsGpsPlace Place(qint32 vlSlot) const;

private:
    void Load(const QString& vsPath);
    QString Text(quint64 vlTag) const;

    qint32 mlCount = 0;
    // Slots 0 to N; slot N stays at (0, 0) with an empty text.
    std::vector<qint32> mcLatitudes;
    std::vector<qint32> mcLongitudes;
    // All place texts in one block; mcTexts[i] says where the text of slot i stands in it.
    const QChar* mcTextBlock = nullptr;
    std::vector<quint64> mcTexts;
    clsPlaceIndex mcIndex;
};
