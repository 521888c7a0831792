#pragma once

#include <memory>
#include <vector>

class clsHalvexRecord;

// The decoded records of the last download, in flash order, indexed from 1.
class clsRecordCollection
{
public:
    clsRecordCollection();
    ~clsRecordCollection();

    int Count() const { return int(mcItems.size()); }
    clsHalvexRecord& Item(int vlIndex) { return *mcItems[size_t(vlIndex - 1)]; }
    const clsHalvexRecord& Item(int vlIndex) const { return *mcItems[size_t(vlIndex - 1)]; }
    void Add(std::unique_ptr<clsHalvexRecord> vcRecord);
    void Remove(int vlIndex);
    void Clear();
    void Reserve(int vlCount) { mcItems.reserve(size_t(vlCount)); }

private:
    std::vector<std::unique_ptr<clsHalvexRecord>> mcItems;
};
