#include "export/clsExportFormats.h"

#include "export/clsCsvExport.h"
#include "export/clsGpxExport.h"
#include "export/clsKmlExport.h"
#include "export/clsPdfExport.h"
#include "export/clsTabDelimited.h"
#include "export/clsXlsxExport.h"

#include <QFileInfo>

QStringList clsExportFormats::Names()
{
    return {"txt", "csv", "xlsx", "gpx", "kml", "pdf"};
}

QString clsExportFormats::OfFile(const QString& vsFileName)
{
    const QString lsSuffix = QFileInfo(vsFileName).suffix().toLower();
    return Names().contains(lsSuffix) ? lsSuffix : QString();
}

std::unique_ptr<IDataFile> clsExportFormats::Create(const QString& vsFormat, const clsExportContext& vcContext)
{
    const QString lsFormat = vsFormat.toLower();
    if (lsFormat == QLatin1String("txt"))
        return std::make_unique<clsTabDelimited>();
    if (lsFormat == QLatin1String("csv"))
        return std::make_unique<clsCsvExport>(vcContext);
    if (lsFormat == QLatin1String("xlsx"))
        return std::make_unique<clsXlsxExport>(vcContext);
    if (lsFormat == QLatin1String("gpx"))
        return std::make_unique<clsGpxExport>(vcContext);
    if (lsFormat == QLatin1String("kml"))
        return std::make_unique<clsKmlExport>(vcContext);
    if (lsFormat == QLatin1String("pdf"))
        return std::make_unique<clsPdfExport>(vcContext);
    return nullptr;
}

QString clsExportFormats::DialogFilter()
{
    QStringList lcFilters;
    for (const QString& lsFormat : Names())
        lcFilters << Create(lsFormat, clsExportContext())->FileFilter();
    return lcFilters.join(QLatin1Char('|'));
}
