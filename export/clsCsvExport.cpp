#include "export/clsCsvExport.h"

#include "data/clsRecordColumns.h"

#include <QStringList>

QString clsCsvExport::Field(const QString& vsText)
{
    const bool lbQuote = vsText.contains(QLatin1Char(',')) || vsText.contains(QLatin1Char('"'))
                      || vsText.contains(QLatin1Char('\r')) || vsText.contains(QLatin1Char('\n'))
                      || vsText.startsWith(QLatin1Char(' ')) || vsText.endsWith(QLatin1Char(' '));
    if (!lbQuote)
        return vsText;
    QString lsQuoted = vsText;
    lsQuoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + lsQuoted + QLatin1Char('"');
}

QByteArray clsCsvExport::Render(clsRecordCollection& rcRecords)
{
    const std::vector<clsRecordColumn>& lcColumns = RecordColumns();
    QStringList lcFields;
    for (const clsRecordColumn& lcColumn : lcColumns)
        lcFields << Field(lcColumn.Title);
    QString lsText = lcFields.join(QLatin1Char(',')) + QLatin1String("\r\n");
    for (const clsHalvexRecord* lcRecord : Rows(rcRecords)) {
        lcFields.clear();
        for (const clsRecordColumn& lcColumn : lcColumns)
            lcFields << Field(lcColumn.Text(*lcRecord));
        lsText += lcFields.join(QLatin1Char(',')) + QLatin1String("\r\n");
    }
    return QByteArray("\xEF\xBB\xBF") + lsText.toUtf8();
}
