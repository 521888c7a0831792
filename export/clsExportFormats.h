#pragma once

#include "export/clsExportContext.h"

#include <QString>
#include <QStringList>
#include <memory>

class IDataFile;

// The file types the records can be saved as, known by a short name that is
// also the file extension: txt (the tab-delimited file), csv, xlsx, gpx, kml, pdf.
class clsExportFormats
{
public:
    // In the order the save dialog lists them.
    static QStringList Names();
    // The format a file name's extension asks for (any case); empty when none.
    static QString OfFile(const QString& vsFileName);
    // A writer of the named format; null for a name that is not one.
    static std::unique_ptr<IDataFile> Create(const QString& vsFormat, const clsExportContext& vcContext);
    // The filters of all formats for one save dialog, "description|pattern" pairs joined by "|".
    static QString DialogFilter();
};
