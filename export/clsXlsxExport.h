#pragma once

#include "export/clsRecordExport.h"

// The table as an Excel workbook: dates as dates, times and drive times as
// times, km, speeds and numbers as numbers, the header row frozen and
// filtered, each column as wide as its text.
class clsXlsxExport : public clsRecordExport
{
public:
    using clsRecordExport::clsRecordExport;

    QString FileFilter() override { return QStringLiteral("Excel workbook(*.xlsx)|*.xlsx"); }
    QString EditorName() override { return QStringLiteral("Excel workbook"); }
    qint32 GetIndex() override { return 11; }
    QString GetIdString() override { return QStringLiteral("XLSX"); }

protected:
    QByteArray Render(clsRecordCollection& rcRecords) override;
};
