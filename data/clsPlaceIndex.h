#pragma once

#include <QtGlobal>
#include <vector>

// Answers the place table's nearest-place question without scanning the
// whole table: the places are sorted into square cells as wide as the search
// limit, so every place near enough to count lies in the 3 x 3 cells around
// the position. It gives the slot the full scan gives, the earlier slot on a
// tie, and raises the same overflow.
class clsPlaceIndex
{
public:
    // Squared search limit in encoded units: a radius of 10000 / 0.18.
    static constexpr double kLimit = (10000.0 / 0.18) * (10000.0 / 0.18);

    // Slot i of the table is at (vcLatitudes[i], vcLongitudes[i]).
    void Build(const std::vector<qint32>& vcLatitudes, const std::vector<qint32>& vcLongitudes);
    // The slot nearest to the position within the limit, or -1. Raises Overflow
    // when the position is so far from some slot that the 32-bit differences
    // of the full scan would overflow.
    qint32 Nearest(qint32 vlLatitude, qint32 vlLongitude) const;
    // The full scan subtracts every slot in 32 bits; the extreme slots decide whether one overflows.
    void RaiseOnOverflow(qint32 vlLatitude, qint32 vlLongitude) const;

private:
    struct Entry {
        qint32 latitude;
        qint32 longitude;
        qint32 slot;
    };

    static qint64 Cell(qint32 vlValue);

    // Sorted by row, then column; mcColumns[i] is the column of mcEntries[i].
    std::vector<Entry> mcEntries;
    std::vector<qint32> mcColumns;
    // Entries of row r are mcRowStart[r - mlFirstRow] up to mcRowStart[r - mlFirstRow + 1].
    std::vector<qint32> mcRowStart;
    qint64 mlFirstRow = 0;
    qint32 mlMinLatitude = 0;
    qint32 mlMaxLatitude = 0;
    qint32 mlMinLongitude = 0;
    qint32 mlMaxLongitude = 0;
};
