#pragma once

#include "export/IDataFile.h"

// The spreadsheet export kept ready beside the tab-delimited one. This version
// writes nothing; it only tells whether Excel could be driven on this machine.
class clsExcel : public IDataFile
{
public:
    // True only where an "Excel.application" automation object can be created
    // (Windows with Excel installed); leaves no run-time error pending.
    bool EditorIsAvailible() override;
    bool SaveToFile(const QString& vsFileName, clsRecordCollection& rcRecords) override;
    QString FileFilter() override { return QString(); }
    QString EditorName() override { return QString(); }
    qint32 GetIndex() override { return 8; }
    QString GetIdString() override { return QStringLiteral("XLS"); }
};
