#include "export/clsXlsxExport.h"

#include "data/clsRecordColumns.h"
#include "export/clsTypedCell.h"
#include "platform/Err.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <algorithm>
#include <xlsxwriter.h>

namespace {
constexpr double kSecondsADay = 86400.0;
constexpr double kWidestColumn = 60.0;

struct clsFormats {
    lxw_format* Header;
    lxw_format* Date;
    lxw_format* TimeOfDay;
    lxw_format* Duration;
};

clsFormats MakeFormats(lxw_workbook* vcBook)
{
    clsFormats lcFormats{};
    lcFormats.Header = workbook_add_format(vcBook);
    format_set_bold(lcFormats.Header);
    lcFormats.Date = workbook_add_format(vcBook);
    format_set_num_format(lcFormats.Date, "d-m-yyyy");
    lcFormats.TimeOfDay = workbook_add_format(vcBook);
    format_set_num_format(lcFormats.TimeOfDay, "hh:mm:ss");
    // A drive time can pass 24 hours; [h] keeps counting instead of wrapping.
    lcFormats.Duration = workbook_add_format(vcBook);
    format_set_num_format(lcFormats.Duration, "[h]:mm:ss");
    return lcFormats;
}

void WriteCell(lxw_worksheet* vcSheet, lxw_row_t vlRow, lxw_col_t vlColumn, const clsTypedCell& vcCell,
               const clsFormats& vcFormats)
{
    switch (vcCell.CellKind()) {
    case clsTypedCell::Kind::Empty:
        return;
    case clsTypedCell::Kind::Number:
        worksheet_write_number(vcSheet, vlRow, vlColumn, vcCell.Number(), nullptr);
        return;
    case clsTypedCell::Kind::Date: {
        lxw_datetime lcDate{vcCell.Date().year(), vcCell.Date().month(), vcCell.Date().day(), 0, 0, 0.0};
        worksheet_write_datetime(vcSheet, vlRow, vlColumn, &lcDate, vcFormats.Date);
        return;
    }
    case clsTypedCell::Kind::TimeOfDay:
        worksheet_write_number(vcSheet, vlRow, vlColumn, vcCell.Number() / kSecondsADay, vcFormats.TimeOfDay);
        return;
    case clsTypedCell::Kind::Duration:
        worksheet_write_number(vcSheet, vlRow, vlColumn, vcCell.Number() / kSecondsADay, vcFormats.Duration);
        return;
    case clsTypedCell::Kind::Text:
        worksheet_write_string(vcSheet, vlRow, vlColumn, vcCell.Text().toUtf8().constData(), nullptr);
        return;
    }
}

clsRuntimeError BookError(const QString& vsTarget, lxw_error vlError)
{
    return clsRuntimeError(VbError::PathFileAccessError,
                           QStringLiteral("Unable to write the workbook ") + QDir::toNativeSeparators(vsTarget)
                               + QStringLiteral(": ") + QString::fromUtf8(lxw_strerror(vlError)),
                           QStringLiteral("XLSX"));
}
}

// libxlsxwriter writes only to a named file: the workbook is made in a
// private temporary folder and then saved over the target like every export.
QByteArray clsXlsxExport::Render(clsRecordCollection& rcRecords)
{
    QTemporaryDir lcFolder;
    if (!lcFolder.isValid())
        throw clsRuntimeError(VbError::PathFileAccessError,
                              QStringLiteral("No temporary folder for the workbook ") + QDir::toNativeSeparators(Target())
                                  + QStringLiteral(": ") + lcFolder.errorString(),
                              GetIdString());
    const QString lsBook = lcFolder.filePath(QStringLiteral("export.xlsx"));
    lxw_workbook* lcBook = workbook_new(QFile::encodeName(lsBook).constData());
    if (!lcBook)
        throw BookError(Target(), LXW_ERROR_CREATING_XLSX_FILE);
    const clsFormats lcFormats = MakeFormats(lcBook);
    lxw_worksheet* lcSheet = workbook_add_worksheet(lcBook, "Trips");

    const std::vector<clsRecordColumn>& lcColumns = RecordColumns();
    std::vector<double> lcWidths(lcColumns.size(), 0.0);
    for (size_t c = 0; c < lcColumns.size(); ++c) {
        worksheet_write_string(lcSheet, 0, lxw_col_t(c), lcColumns[c].Title.toUtf8().constData(), lcFormats.Header);
        lcWidths[c] = lcColumns[c].Title.size();
    }
    const std::vector<clsHalvexRecord*> lcRows = Rows(rcRecords);
    for (size_t r = 0; r < lcRows.size(); ++r) {
        for (size_t c = 0; c < lcColumns.size(); ++c) {
            const clsTypedCell lcCell = clsTypedCell::Of(lcColumns[c], *lcRows[r]);
            WriteCell(lcSheet, lxw_row_t(r + 1), lxw_col_t(c), lcCell, lcFormats);
            lcWidths[c] = std::max(lcWidths[c], double(lcCell.Text().size()));
        }
    }
    for (size_t c = 0; c < lcColumns.size(); ++c)
        worksheet_set_column(lcSheet, lxw_col_t(c), lxw_col_t(c), std::min(lcWidths[c] + 2.0, kWidestColumn), nullptr);
    worksheet_freeze_panes(lcSheet, 1, 0);
    worksheet_autofilter(lcSheet, 0, 0, lxw_row_t(lcRows.size()), lxw_col_t(lcColumns.size() - 1));

    const lxw_error llClosed = workbook_close(lcBook);
    if (llClosed != LXW_NO_ERROR)
        throw BookError(Target(), llClosed);
    QFile lcFile(lsBook);
    if (!lcFile.open(QIODevice::ReadOnly))
        throw BookError(Target(), LXW_ERROR_CREATING_TMPFILE);
    return lcFile.readAll();
}
