#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

class clsRecordCollection;
struct clsRecordSelection;

// The record grid: the valid records that the selection admits, in record
// order, each once. Only the list of admitted record numbers is kept; the
// cells are made from the records when the view asks for them. Below the
// records the grid can show blank rows, as an empty grid does at start.
class clsRecordTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    clsRecordTableModel(clsRecordCollection& rcRecords, const clsRecordSelection& rcSelection,
                        QObject* vcParent = nullptr);

    int rowCount(const QModelIndex& vcParent = QModelIndex()) const override;
    int columnCount(const QModelIndex& vcParent = QModelIndex()) const override;
    QVariant data(const QModelIndex& vcIndex, int vlRole) const override;
    QVariant headerData(int vlSection, Qt::Orientation vOrientation, int vlRole) const override;

    // The record list or the selection changed: the rows are found again, blank rows dropped.
    void Reload();
    // Only the header (and vlBlankRows empty rows).
    void Clear(int vlBlankRows = 0);
    // At least this many rows, blank ones below the records.
    void FillWithBlankRows(int vlRows);
    int RecordRows() const { return int(mcRows.size()); }
    // The longest text of each column over the header and every row, in characters.
    QStringList LongestTexts() const;

private:
    // The cells of one record; the last row asked for is kept, as a view asks cell by cell.
    const QStringList& Cells(int vlRow) const;

    clsRecordCollection& mcRecords;
    const clsRecordSelection& mcSelection;
    QStringList mcHeader;
    std::vector<int> mcRows;
    int mlBlankRows = 0;
    mutable int mlCachedRow = -1;
    mutable QStringList mcCachedCells;
};
