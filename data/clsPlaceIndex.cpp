#include "data/clsPlaceIndex.h"

#include "platform/Err.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {
// Wider than the limit's radius (55555.56), so a place within the limit is never two cells away.
constexpr qint64 kCellSize = 55556;
}

qint64 clsPlaceIndex::Cell(qint32 vlValue)
{
    const qint64 llValue = vlValue;
    return llValue >= 0 ? llValue / kCellSize : -((-llValue + kCellSize - 1) / kCellSize);
}

void clsPlaceIndex::Build(const std::vector<qint32>& vcLatitudes, const std::vector<qint32>& vcLongitudes)
{
    const size_t llCount = std::min(vcLatitudes.size(), vcLongitudes.size());
    std::vector<qint32> lcOrder(llCount);
    std::iota(lcOrder.begin(), lcOrder.end(), 0);
    const auto lcCell = [&](qint32 i) {
        return std::make_pair(Cell(vcLatitudes[size_t(i)]), Cell(vcLongitudes[size_t(i)]));
    };
    std::stable_sort(lcOrder.begin(), lcOrder.end(), [&](qint32 a, qint32 b) { return lcCell(a) < lcCell(b); });

    mcEntries.resize(llCount);
    mcColumns.resize(llCount);
    for (size_t i = 0; i < llCount; ++i) {
        const size_t llSlot = size_t(lcOrder[i]);
        mcEntries[i] = Entry{vcLatitudes[llSlot], vcLongitudes[llSlot], qint32(llSlot)};
        mcColumns[i] = qint32(Cell(vcLongitudes[llSlot]));
    }
    // Rows of 32-bit coordinates number at most about 77000, so a row directory stays small.
    mcRowStart.clear();
    mlFirstRow = llCount ? Cell(mcEntries.front().latitude) : 0;
    const qint64 llRows = llCount ? Cell(mcEntries.back().latitude) - mlFirstRow + 1 : 0;
    mcRowStart.assign(size_t(llRows + 1), 0);
    for (const Entry& e : mcEntries)
        ++mcRowStart[size_t(Cell(e.latitude) - mlFirstRow + 1)];
    for (size_t r = 1; r < mcRowStart.size(); ++r)
        mcRowStart[r] += mcRowStart[r - 1];

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
    RaiseOnOverflow(vlLatitude, vlLongitude);

    const qint64 llRow = Cell(vlLatitude);
    const qint64 llColumn = Cell(vlLongitude);
    double ldBest = kLimit;
    qint32 llBest = -1;
    const qint64 llLastRow = mlFirstRow + qint64(mcRowStart.size()) - 2;
    for (qint64 llR = std::max(llRow - 1, mlFirstRow); llR <= std::min(llRow + 1, llLastRow); ++llR) {
        const auto lcRowBegin = mcColumns.begin() + mcRowStart[size_t(llR - mlFirstRow)];
        const auto lcRowEnd = mcColumns.begin() + mcRowStart[size_t(llR - mlFirstRow + 1)];
        const auto lcFirst = std::lower_bound(lcRowBegin, lcRowEnd, llColumn - 1);
        const auto lcLast = std::upper_bound(lcFirst, lcRowEnd, llColumn + 1);
        for (auto i = size_t(lcFirst - mcColumns.begin()); i < size_t(lcLast - mcColumns.begin()); ++i) {
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

void clsPlaceIndex::RaiseOnOverflow(qint32 vlLatitude, qint32 vlLongitude) const
{
    constexpr qint64 kMax = std::numeric_limits<qint32>::max();
    constexpr qint64 kMin = std::numeric_limits<qint32>::min();
    if (qint64(vlLatitude) - mlMinLatitude > kMax || qint64(vlLatitude) - mlMaxLatitude < kMin
        || qint64(vlLongitude) - mlMinLongitude > kMax || qint64(vlLongitude) - mlMaxLongitude < kMin)
        Err::Raise(VbError::Overflow);
}
