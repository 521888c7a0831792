#pragma once

#include "data/clsHalvexRecord.h"
#include "platform/LargeBlock.h"

#include <vector>

// The decoded records of the last download, in flash order, indexed from 1.
class clsRecordCollection
{
public:
    clsRecordCollection();
    ~clsRecordCollection();

    int Count() const { return int(mcItems.size()); }
    clsHalvexRecord& Item(int vlIndex) { return mcItems[size_t(vlIndex - 1)]; }
    const clsHalvexRecord& Item(int vlIndex) const { return mcItems[size_t(vlIndex - 1)]; }
    void Add(clsHalvexRecord&& vcRecord);
    void Remove(int vlIndex);
    // Empties the collection and gives its memory back.
    void Clear();
    // Room for vlCount records, so a full display is not copied while it grows.
    void Reserve(int vlCount) { mcItems.reserve(size_t(vlCount)); }

private:
    // The records themselves, side by side: one allocation for a display
    // instead of one per record.
    std::vector<clsHalvexRecord, LargeBlock::Allocator<clsHalvexRecord>> mcItems;
};
