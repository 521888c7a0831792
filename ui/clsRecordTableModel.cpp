#include "ui/clsRecordTableModel.h"

#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "data/clsRecordColumns.h"
#include "data/clsRecordSelection.h"
#include "platform/Err.h"

#include <algorithm>

clsRecordTableModel::clsRecordTableModel(const clsRecordCollection& rcRecords, const clsRecordSelection& rcSelection,
                                         QObject* vcParent)
    : QAbstractTableModel(vcParent)
    , mcRecords(rcRecords)
    , mcSelection(rcSelection)
{
    for (const clsRecordColumn& lcColumn : RecordColumns())
        mcHeader << lcColumn.Title;
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
    return CellText(vcIndex.row(), vcIndex.column());
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

// A grid of 600,000 rows is not read through before its widths matter: the
// rows on the first and the last screens, and a good many more, stand for
// the rest. A longer text further in is cut off in its cell.
QStringList clsRecordTableModel::LongestTexts() const
{
    QStringList lcLongest = mcHeader;
    const int llRows = int(mcRows.size());
    const int llHeadEnd = std::min(llRows, kWidthSampleRows);
    const int llTailStart = std::max(llHeadEnd, llRows - kWidthSampleRows);
    for (int c = 0; c < mcHeader.size(); ++c) {
        for (int llRow = 0; llRow < llRows; llRow = llRow + 1 == llHeadEnd ? llTailStart : llRow + 1) {
            const QString lsText = CellText(llRow, c);
            if (lsText.size() > lcLongest.at(c).size())
                lcLongest[c] = lsText;
        }
    }
    return lcLongest;
}

// A place cell looks its place up when first read. A search that overflows
// was reported by the operation that filled the grid (or stopped it before
// the rows were checked); here, while the grid is drawn, the cell stays empty.
QString clsRecordTableModel::CellText(int vlRow, int vlColumn) const
{
    const std::vector<clsRecordColumn>& lcColumns = RecordColumns();
    if (vlColumn < 0 || vlColumn >= int(lcColumns.size()))
        return QString();
    if (vlColumn == int(lcColumns.size()) - 1 && !mcSelection.cheShowRoute)
        return QString();
    try {
        return lcColumns[size_t(vlColumn)].Text(mcRecords.Item(mcRows[size_t(vlRow)]));
    } catch (const clsRuntimeError&) {
        return QString();
    }
}
