#pragma once

#include "export/clsRecordExport.h"

// The table as comma-separated values (RFC 4180) for any spreadsheet: a
// header row of the 21 column titles, one row per record, CR LF, UTF-8 with
// a byte-order mark so spreadsheets do not take it for the local code page.
class clsCsvExport : public clsRecordExport
{
public:
    using clsRecordExport::clsRecordExport;

    QString FileFilter() override { return QStringLiteral("CSV file (comma separated)(*.csv)|*.csv"); }
    QString EditorName() override { return QStringLiteral("CSV file"); }
    qint32 GetIndex() override { return 10; }
    QString GetIdString() override { return QStringLiteral("CSV"); }

    // A field as RFC 4180 wants it: quoted when it holds a comma, a quote or
    // a line break, or starts or ends with a space (which readers trim).
    static QString Field(const QString& vsText);

protected:
    QByteArray Render(clsRecordCollection& rcRecords) override;
};
