#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <vector>

class clsRecordCollection;
struct clsRecordSelection;

// The record grid: the valid records that the selection admits, in record
// order, each once, in the columns of the record table. Only the list of
// admitted record numbers is kept; the cells are made from the records when
// the view asks for them. The route column stays empty unless "Show route"
// is ticked, as the saved file's lines without the route stop before it. Below the
// records the grid can show blank rows, as an empty grid does at start.
class clsRecordTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    clsRecordTableModel(const clsRecordCollection& rcRecords, const clsRecordSelection& rcSelection,
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
    // Rows at each end of the grid that the column widths are taken from.
    static constexpr int kWidthSampleRows = 300;
    // The longest text of each column, in characters, over the header and
    // the first and the last kWidthSampleRows rows.
    QStringList LongestTexts() const;

private:
    QString CellText(int vlRow, int vlColumn) const;

    const clsRecordCollection& mcRecords;
    const clsRecordSelection& mcSelection;
    QStringList mcHeader;
    std::vector<int> mcRows;
    int mlBlankRows = 0;
};
