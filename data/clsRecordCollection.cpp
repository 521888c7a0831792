#include "data/clsRecordCollection.h"

#include "data/clsHalvexRecord.h"

clsRecordCollection::clsRecordCollection() = default;
clsRecordCollection::~clsRecordCollection() = default;

void clsRecordCollection::Add(std::unique_ptr<clsHalvexRecord> vcRecord)
{
    mcItems.push_back(std::move(vcRecord));
}

void clsRecordCollection::Remove(int vlIndex)
{
    mcItems.erase(mcItems.begin() + (vlIndex - 1));
}

void clsRecordCollection::Clear()
{
    mcItems.clear();
}
