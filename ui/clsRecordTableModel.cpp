#include "ui/clsRecordTableModel.h"

#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "data/clsRecordSelection.h"

namespace {
const QString kTab = QStringLiteral("\t");
}

clsRecordTableModel::clsRecordTableModel(clsRecordCollection& rcRecords, const clsRecordSelection& rcSelection,
                                         QObject* vcParent)
    : QAbstractTableModel(vcParent)
    , mcRecords(rcRecords)
    , mcSelection(rcSelection)
    , mcHeader(clsHalvexRecord::GetHeaderStringWithDelimiter(kTab).split(kTab))
{
}

int clsRecordTableModel::rowCount(const QModelIndex& vcParent) const
{
    if (vcParent.isValid())
        return 0;
    return qMax(int(mcRows.size()), mlBlankRows);
}

int clsRecordTableModel::columnCount(const QModelIndex& vcParent) const
{
    return vcParent.isValid() ? 0 : int(mcHeader.size());
}

QVariant clsRecordTableModel::data(const QModelIndex& vcIndex, int vlRole) const
{
    if (vlRole != Qt::DisplayRole || !vcIndex.isValid() || vcIndex.row() >= int(mcRows.size()))
        return {};
    return Cells(vcIndex.row()).value(vcIndex.column());
}

QVariant clsRecordTableModel::headerData(int vlSection, Qt::Orientation vOrientation, int vlRole) const
{
    if (vlRole != Qt::DisplayRole)
        return {};
    if (vOrientation == Qt::Vertical)
        return vlSection + 1;
    return mcHeader.value(vlSection);
}

void clsRecordTableModel::Reload()
{
    beginResetModel();
    mcRows.clear();
    mlBlankRows = 0;
    mlCachedRow = -1;
    for (int i = 1; i <= mcRecords.Count(); ++i) {
        const clsHalvexRecord& lcRecord = mcRecords.Item(i);
        if (lcRecord.IsValid() && mcSelection.Admits(lcRecord))
            mcRows.push_back(i);
    }
    endResetModel();
}

void clsRecordTableModel::Clear(int vlBlankRows)
{
    beginResetModel();
    mcRows.clear();
    mlBlankRows = vlBlankRows;
    mlCachedRow = -1;
    endResetModel();
}

void clsRecordTableModel::FillWithBlankRows(int vlRows)
{
    const int llNow = rowCount();
    if (vlRows <= llNow)
        return;
    beginInsertRows(QModelIndex(), llNow, vlRows - 1);
    mlBlankRows = vlRows;
    endInsertRows();
}

QStringList clsRecordTableModel::LongestTexts() const
{
    QStringList lcLongest = mcHeader;
    for (int llRow = 0; llRow < int(mcRows.size()); ++llRow) {
        const QStringList& lcCells = Cells(llRow);
        for (int c = 0; c < lcCells.size() && c < lcLongest.size(); ++c) {
            if (lcCells.at(c).size() > lcLongest.at(c).size())
                lcLongest[c] = lcCells.at(c);
        }
    }
    return lcLongest;
}

const QStringList& clsRecordTableModel::Cells(int vlRow) const
{
    if (vlRow != mlCachedRow) {
        clsHalvexRecord& lcRecord = mcRecords.Item(mcRows[size_t(vlRow)]);
        mcCachedCells = lcRecord.GetFullStringWithDelimiter(kTab, mcSelection.cheShowRoute).split(kTab);
        mlCachedRow = vlRow;
    }
    return mcCachedCells;
}
