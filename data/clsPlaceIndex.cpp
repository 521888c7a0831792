#include "data/clsPlaceIndex.h"

#include "platform/Err.h"

#include <algorithm>
#include <limits>
#include <tuple>

namespace {
// The farthest whole offset in one axis that can still lie within the limit
// (55555 squared is below the limit, 55556 squared above it).
constexpr qint64 kReach = 55555;
// Twice the reach and a little: the places near enough to a position lie in
// at most two rows of cells and two cells of each row.
constexpr qint64 kCellSize = 2 * (kReach + 1);
static_assert(kCellSize > 2 * kReach, "a search reads at most two rows");
// The squared distance that no place within the limit reaches.
constexpr qint64 kBeyond = 3086419754;
constexpr qint64 kBlockWidth = 32;
// No row of 32-bit coordinates gets near this number, so it marks a free hash slot.
constexpr quint64 kFree = quint64(0x7FFFFFFF) << 32;

inline qint64 FloorDiv(qint64 vlValue, qint64 vlBy)
{
    return vlValue >= 0 ? vlValue / vlBy : -((-vlValue + vlBy - 1) / vlBy);
}

inline qint64 Cell(qint64 vlValue)
{
    return FloorDiv(vlValue, kCellSize);
}

// The cells of a block below column vlBit.
quint32 Below(qint64 vlBit)
{
    return vlBit >= kBlockWidth ? 0xFFFFFFFFu : (quint32(1) << vlBit) - 1;
}

int Bits(quint32 vlCells)
{
    return __builtin_popcount(vlCells);
}
}

quint64 clsPlaceIndex::Key(qint64 vlRow, qint64 vlBlock)
{
    return (quint64(quint32(qint32(vlRow))) << 32) | quint32(qint32(vlBlock));
}

const clsPlaceIndex::Block* clsPlaceIndex::Find(qint64 vlRow, qint64 vlBlock) const
{
    const quint64 llKey = Key(vlRow, vlBlock);
    for (quint64 i = (llKey * 0x9E3779B97F4A7C15ull) >> mlShift;; i = (i + 1) & mlMask) {
        const Block& rcBlock = mcBlocks[i];
        if (rcBlock.key == llKey)
            return &rcBlock;
        if (rcBlock.key == kFree)
            return nullptr;
    }
}

clsPlaceIndex::Block& clsPlaceIndex::Insert(qint64 vlRow, qint64 vlBlock)
{
    const quint64 llKey = Key(vlRow, vlBlock);
    for (quint64 i = (llKey * 0x9E3779B97F4A7C15ull) >> mlShift;; i = (i + 1) & mlMask) {
        Block& rcBlock = mcBlocks[i];
        if (rcBlock.key == llKey)
            return rcBlock;
        if (rcBlock.key == kFree) {
            rcBlock.key = llKey;
            return rcBlock;
        }
    }
}

void clsPlaceIndex::Build(const std::vector<qint32>& vcLatitudes, const std::vector<qint32>& vcLongitudes,
                          const std::vector<quint64>& vcTags)
{
    const size_t llCount = std::min({vcLatitudes.size(), vcLongitudes.size(), vcTags.size()});
    // Sorted by row, then column, then slot, so a cell keeps the table's order.
    struct Keyed {
        qint64 row;
        qint64 column;
        size_t slot;
        bool operator<(const Keyed& rcOther) const
        {
            return std::tie(row, column, slot) < std::tie(rcOther.row, rcOther.column, rcOther.slot);
        }
    };
    std::vector<Keyed> lcOrder(llCount);
    for (size_t i = 0; i < llCount; ++i)
        lcOrder[i] = Keyed{Cell(vcLatitudes[i]), Cell(vcLongitudes[i]), i};
    std::sort(lcOrder.begin(), lcOrder.end());

    mcPoints.resize(llCount);
    mcSlots.resize(llCount);
    for (size_t i = 0; i < llCount; ++i) {
        const size_t llSlot = lcOrder[i].slot;
        mcPoints[i] = Point{vcLatitudes[llSlot], vcLongitudes[llSlot], vcTags[llSlot]};
        mcSlots[i] = qint32(llSlot);
    }

    // At most half the hash slots in use keeps the probes short and
    // the table still small enough to stay in the cache.
    size_t llBlocks = 0;
    for (size_t i = 0; i < llCount; ++i) {
        const qint64 llRow = Cell(mcPoints[i].latitude);
        const qint64 llBlock = FloorDiv(Cell(mcPoints[i].longitude), kBlockWidth);
        if (i == 0 || llRow != Cell(mcPoints[i - 1].latitude)
            || llBlock != FloorDiv(Cell(mcPoints[i - 1].longitude), kBlockWidth))
            ++llBlocks;
    }
    int llBits = 4;
    while ((quint64(1) << llBits) < 2 * quint64(llBlocks))
        ++llBits;
    mlShift = 64 - llBits;
    mlMask = (quint64(1) << llBits) - 1;
    mcBlocks.assign(size_t(mlMask + 1), Block{kFree, 0, 0});
    mcCellStart.clear();
    for (size_t i = 0; i < llCount; ++i) {
        const qint64 llRow = Cell(mcPoints[i].latitude);
        const qint64 llColumn = Cell(mcPoints[i].longitude);
        if (i > 0 && llRow == Cell(mcPoints[i - 1].latitude) && llColumn == Cell(mcPoints[i - 1].longitude))
            continue;
        const qint64 llBlock = FloorDiv(llColumn, kBlockWidth);
        Block& rcBlock = Insert(llRow, llBlock);
        if (rcBlock.cells == 0)
            rcBlock.before = quint32(mcCellStart.size());
        rcBlock.cells |= quint32(1) << (llColumn - llBlock * kBlockWidth);
        mcCellStart.push_back(quint32(i));
    }
    mcCellStart.push_back(quint32(llCount));

    const auto lcLat = std::minmax_element(vcLatitudes.begin(), vcLatitudes.begin() + qint64(llCount));
    const auto lcLon = std::minmax_element(vcLongitudes.begin(), vcLongitudes.begin() + qint64(llCount));
    mlMinLatitude = llCount ? *lcLat.first : 0;
    mlMaxLatitude = llCount ? *lcLat.second : 0;
    mlMinLongitude = llCount ? *lcLon.first : 0;
    mlMaxLongitude = llCount ? *lcLon.second : 0;
}

// Cells are numbered in cell order, so the occupied cells from one column to
// another of a row are neighbours in that numbering, and so are their places.
clsPlaceIndex::Run clsPlaceIndex::Places(qint64 vlRow, qint64 vlFirst, qint64 vlLast) const
{
    const qint64 llFirstBlock = FloorDiv(vlFirst, kBlockWidth);
    const qint64 llLastBlock = FloorDiv(vlLast, kBlockWidth);
    const Block* lcFirst = Find(vlRow, llFirstBlock);
    const Block* lcLast = llLastBlock == llFirstBlock ? lcFirst : Find(vlRow, llLastBlock);
    if (!lcFirst && !lcLast)
        return Run{0, 0};
    const quint32 llFirstCell = lcFirst
        ? lcFirst->before + Bits(lcFirst->cells & Below(vlFirst - llFirstBlock * kBlockWidth))
        : lcLast->before;
    const quint32 llEndCell = lcLast
        ? lcLast->before + Bits(lcLast->cells & Below(vlLast - llLastBlock * kBlockWidth + 1))
        : lcFirst->before + Bits(lcFirst->cells);
    return Run{mcCellStart[llFirstCell], mcCellStart[llEndCell]};
}

clsPlaceIndex::Found clsPlaceIndex::Nearest(qint32 vlLatitude, qint32 vlLongitude) const
{
    if (mcPoints.empty())
        return Found{false, 0};
    RaiseOnOverflow(vlLatitude, vlLongitude);

    const qint64 llFirstColumn = Cell(qint64(vlLongitude) - kReach);
    const qint64 llLastColumn = Cell(qint64(vlLongitude) + kReach);
    const qint64 llFirstRow = Cell(qint64(vlLatitude) - kReach);
    // Both rows are found before either is read, so the processor fetches them side by side.
    const Run lcRuns[2] = {Places(llFirstRow, llFirstColumn, llLastColumn),
                           llFirstRow == Cell(qint64(vlLatitude) + kReach)
                               ? Run{0, 0}
                               : Places(llFirstRow + 1, llFirstColumn, llLastColumn)};
    qint64 llBest = kBeyond;
    qint64 llBestPoint = -1;
    for (const Run& rcRun : lcRuns) {
        for (quint32 i = rcRun.first; i < rcRun.end; ++i) {
            const qint64 llLat = qint64(vlLatitude) - mcPoints[i].latitude;
            const qint64 llLon = qint64(vlLongitude) - mcPoints[i].longitude;
            const qint64 d = llLat * llLat + llLon * llLon;
            // Whole numbers, so equal distances are truly equal: the earlier slot wins.
            if (d < llBest || (d == llBest && llBestPoint >= 0 && mcSlots[i] < mcSlots[size_t(llBestPoint)])) {
                llBest = d;
                llBestPoint = i;
            }
        }
    }
    if (llBestPoint < 0)
        return Found{false, 0};
    return Found{true, mcPoints[size_t(llBestPoint)].tag};
}

void clsPlaceIndex::RaiseOnOverflow(qint32 vlLatitude, qint32 vlLongitude) const
{
    constexpr qint64 kMax = std::numeric_limits<qint32>::max();
    constexpr qint64 kMin = std::numeric_limits<qint32>::min();
    if (qint64(vlLatitude) - mlMinLatitude > kMax || qint64(vlLatitude) - mlMaxLatitude < kMin
        || qint64(vlLongitude) - mlMinLongitude > kMax || qint64(vlLongitude) - mlMaxLongitude < kMin)
        Err::Raise(VbError::Overflow);
}
