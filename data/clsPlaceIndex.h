#pragma once

#include <QtGlobal>
#include <vector>

// Answers the place table's nearest-place question without scanning the
// whole table. The places are sorted into square cells, cell by cell, row by
// row, with their coordinates side by side; a small hash table says which
// cells hold places and where in that order each row's run of cells begins,
// so a search reads two short runs of places instead of the table. It gives
// the slot the full scan gives, the earlier slot on a tie, and raises the
// same overflow.
class clsPlaceIndex
{
public:
    // Squared search limit in encoded units: a radius of 10000 / 0.18.
    static constexpr double kLimit = (10000.0 / 0.18) * (10000.0 / 0.18);

    // What a search finds: whether a place is near enough, and the tag the table gave it.
    struct Found {
        bool found;
        quint64 tag;
    };

    // Slot i of the table is at (vcLatitudes[i], vcLongitudes[i]); vcTags[i]
    // is kept beside its coordinates, so an answer needs nothing from elsewhere.
    void Build(const std::vector<qint32>& vcLatitudes, const std::vector<qint32>& vcLongitudes,
               const std::vector<quint64>& vcTags);
    // The place nearest to the position within the limit. Raises Overflow
    // when the position is so far from some slot that the 32-bit differences
    // of the full scan would overflow.
    Found Nearest(qint32 vlLatitude, qint32 vlLongitude) const;
    // The full scan subtracts every slot in 32 bits; the extreme slots decide whether one overflows.
    void RaiseOnOverflow(qint32 vlLatitude, qint32 vlLongitude) const;

private:
    struct Point {
        qint32 latitude;
        qint32 longitude;
        quint64 tag;
    };
    // 32 neighbouring cells of one row: which of them hold places, and how
    // many occupied cells come before the first of them in cell order.
    struct Block {
        quint64 key;
        quint32 cells;
        quint32 before;
    };
    struct Run {
        quint32 first;
        quint32 end;
    };

    static quint64 Key(qint64 vlRow, qint64 vlBlock);
    const Block* Find(qint64 vlRow, qint64 vlBlock) const;
    Block& Insert(qint64 vlRow, qint64 vlBlock);
    // The places of one row from column vlFirst to vlLast (at most two blocks apart by one).
    Run Places(qint64 vlRow, qint64 vlFirst, qint64 vlLast) const;

    std::vector<Point> mcPoints;       // in cell order; a cell keeps the table's order
    std::vector<qint32> mcSlots;       // the slot of each point, asked on a tie
    std::vector<quint32> mcCellStart;  // first point of each occupied cell, and the end
    std::vector<Block> mcBlocks;       // open addressing, a power of two long
    quint64 mlMask = 0;
    int mlShift = 60;
    qint32 mlMinLatitude = 0;
    qint32 mlMaxLatitude = 0;
    qint32 mlMinLongitude = 0;
    qint32 mlMaxLongitude = 0;
};
