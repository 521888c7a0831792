#include "data/clsRecordCollection.h"

clsRecordCollection::clsRecordCollection() = default;
clsRecordCollection::~clsRecordCollection() = default;

void clsRecordCollection::Add(clsHalvexRecord&& vcRecord)
{
    mcItems.push_back(std::move(vcRecord));
}

void clsRecordCollection::Remove(int vlIndex)
{
    mcItems.erase(mcItems.begin() + (vlIndex - 1));
}

void clsRecordCollection::Clear()
{
    decltype(mcItems)().swap(mcItems);
}
