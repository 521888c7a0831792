#include "data/clsPlaceIndex.h"

#include "platform/Err.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {
// Wider than the limit's radius (55555.56), so a place within the limit is never two cells away.
constexpr qint64 kCellSize = 55556;
// Columns of one row; cells of 32-bit coordinates span about -38700 to 38700.
constexpr qint64 kColumns = 1 << 17;
constexpr qint64 kColumnOffset = 1 << 16;
}

qint64 clsPlaceIndex::Cell(qint32 vlValue)
{
    const qint64 llValue = vlValue;
    return llValue >= 0 ? llValue / kCellSize : -((-llValue + kCellSize - 1) / kCellSize);
}

qint64 clsPlaceIndex::CellKey(qint64 vlRow, qint64 vlColumn)
{
    return vlRow * kColumns + vlColumn + kColumnOffset;
}

void clsPlaceIndex::Build(const std::vector<qint32>& vcLatitudes, const std::vector<qint32>& vcLongitudes)
{
    const size_t llCount = std::min(vcLatitudes.size(), vcLongitudes.size());
    std::vector<qint64> lcKeys(llCount);
    for (size_t i = 0; i < llCount; ++i)
        lcKeys[i] = CellKey(Cell(vcLatitudes[i]), Cell(vcLongitudes[i]));
    std::vector<qint32> lcOrder(llCount);
    std::iota(lcOrder.begin(), lcOrder.end(), 0);
    std::stable_sort(lcOrder.begin(), lcOrder.end(), [&](qint32 a, qint32 b) { return lcKeys[size_t(a)] < lcKeys[size_t(b)]; });

    mcKeys.resize(llCount);
    mcEntries.resize(llCount);
    for (size_t i = 0; i < llCount; ++i) {
        const size_t llSlot = size_t(lcOrder[i]);
        mcKeys[i] = lcKeys[llSlot];
        mcEntries[i] = Entry{vcLatitudes[llSlot], vcLongitudes[llSlot], qint32(llSlot)};
    }
    const auto lcLat = std::minmax_element(vcLatitudes.begin(), vcLatitudes.begin() + qint64(llCount));
    const auto lcLon = std::minmax_element(vcLongitudes.begin(), vcLongitudes.begin() + qint64(llCount));
    mlMinLatitude = llCount ? *lcLat.first : 0;
    mlMaxLatitude = llCount ? *lcLat.second : 0;
    mlMinLongitude = llCount ? *lcLon.first : 0;
    mlMaxLongitude = llCount ? *lcLon.second : 0;
}

qint32 clsPlaceIndex::Nearest(qint32 vlLatitude, qint32 vlLongitude) const
{
    if (mcEntries.empty())
        return -1;
    // The full scan subtracts every slot in 32 bits; the extreme slots decide whether one overflows.
    constexpr qint64 kMax = std::numeric_limits<qint32>::max();
    constexpr qint64 kMin = std::numeric_limits<qint32>::min();
    if (qint64(vlLatitude) - mlMinLatitude > kMax || qint64(vlLatitude) - mlMaxLatitude < kMin
        || qint64(vlLongitude) - mlMinLongitude > kMax || qint64(vlLongitude) - mlMaxLongitude < kMin)
        Err::Raise(VbError::Overflow);

    const qint64 llRow = Cell(vlLatitude);
    const qint64 llColumn = Cell(vlLongitude);
    double ldBest = kLimit;
    qint32 llBest = -1;
    for (qint64 llR = llRow - 1; llR <= llRow + 1; ++llR) {
        const auto lcFirst = std::lower_bound(mcKeys.begin(), mcKeys.end(), CellKey(llR, llColumn - 1));
        const auto lcLast = std::lower_bound(lcFirst, mcKeys.end(), CellKey(llR, llColumn + 2));
        for (auto i = size_t(lcFirst - mcKeys.begin()); i < size_t(lcLast - mcKeys.begin()); ++i) {
            const Entry& e = mcEntries[i];
            const double ldLat = double(vlLatitude - e.latitude);
            const double ldLon = double(vlLongitude - e.longitude);
            const double d = ldLat * ldLat + ldLon * ldLon;
            // Within the limit the squares are exact, so equal distances are truly equal: the earlier slot wins.
            if (d < ldBest || (d == ldBest && (llBest < 0 || e.slot < llBest))) {
                ldBest = d;
                llBest = e.slot;
            }
        }
    }
    return llBest;
}
