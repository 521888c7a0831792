#include "export/clsPdfExport.h"

#include "app/clsApplication.h"
#include "data/clsHalvexRecord.h"
#include "export/clsMileageRegister.h"
#include "platform/Err.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

namespace {
// Page geometry in points (1/72 inch) on A4.
constexpr double kPageWidth = 595.0;
constexpr double kPageHeight = 842.0;
constexpr double kMargin = 40.0;
constexpr double kTableTop = 130.0;
constexpr double kRowHeight = 14.0;
constexpr double kFooterTop = kPageHeight - kMargin;
// Column widths in points; they add up to the width between the margins.
constexpr double kWidths[] = {58.0, 44.0, 44.0, 112.0, 112.0, 49.0, 49.0, 47.0};
// From the fifth column on (the km) the numbers are right-aligned.
constexpr int kFirstNumberColumn = 5;

// A total's label runs over the text columns it leaves empty.
double FirstCellWidth(const QStringList& vcCells)
{
    double ldWidth = kWidths[0];
    for (int c = 1; c < kFirstNumberColumn && vcCells[c].isEmpty(); ++c)
        ldWidth += kWidths[c];
    return ldWidth;
}

QFont Font(double vdPoints, bool vbBold)
{
    QFont lcFont(QStringLiteral("DejaVu Sans"));
    lcFont.setPointSizeF(vdPoints);
    lcFont.setBold(vbBold);
    return lcFont;
}
}

QByteArray clsPdfExport::Render(clsRecordCollection& rcRecords)
{
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        throw clsRuntimeError(VbError::InvalidProcedureCall,
                              QStringLiteral("The PDF export needs fonts, which this program run has not loaded"),
                              GetIdString());
    std::vector<clsHalvexRecord*> lcTrips;
    for (clsHalvexRecord* lcRecord : Rows(rcRecords))
        if (lcRecord->isRitRegType())
            lcTrips.push_back(lcRecord);
    const clsMileageRegister lcRegister(lcTrips);
    const std::vector<clsMileageRegister::Line>& lcLines = lcRegister.Lines();
    const int llPerPage = int((kFooterTop - kRowHeight - kTableTop - kRowHeight) / kRowHeight);
    const int llPages = std::max(1, int(std::ceil(double(lcLines.size()) / llPerPage)));

    QByteArray lcData;
    QBuffer lcBuffer(&lcData);
    lcBuffer.open(QIODevice::WriteOnly);
    QPdfWriter lcWriter(&lcBuffer);
    lcWriter.setPageSize(QPageSize(QPageSize::A4));
    lcWriter.setPageMargins(QMarginsF(0, 0, 0, 0));
    lcWriter.setResolution(72);
    lcWriter.setTitle(QStringLiteral("Mileage register"));
    lcWriter.setCreator(clsApplication::ApplicationName() + QLatin1Char(' ') + clsApplication::VersionString());
    QPainter lcPainter(&lcWriter);
    for (int p = 0; p < llPages; ++p) {
        if (p > 0)
            lcWriter.newPage();
        PaintPageHeader(lcPainter, p + 1, llPages);
        const size_t llFirst = size_t(p) * size_t(llPerPage);
        const size_t llEnd = std::min(lcLines.size(), llFirst + size_t(llPerPage));
        for (size_t i = llFirst; i < llEnd; ++i)
            PaintLine(lcPainter, kTableTop + kRowHeight * double(i - llFirst + 1), lcLines[i].Cells,
                      lcLines[i].LineKind != clsMileageRegister::Kind::Trip);
    }
    lcPainter.end();
    return lcData;
}

void clsPdfExport::PaintPageHeader(QPainter& rcPainter, int vlPage, int vlPages) const
{
    rcPainter.setFont(Font(16, true));
    rcPainter.drawText(QRectF(kMargin, kMargin, kPageWidth - 2 * kMargin, 24), Qt::AlignLeft | Qt::AlignVCenter,
                       QStringLiteral("Mileage register"));
    rcPainter.setFont(Font(10, false));
    const QString lsDisplay = Context().DisplayId.isEmpty() ? QStringLiteral("not known (decoded from page files)")
                                                            : Context().DisplayId;
    const QString lsDownloaded = Context().Downloaded.isValid()
                                   ? Context().Downloaded.toString(QStringLiteral("d-M-yyyy HH:mm"))
                                   : QStringLiteral("not known");
    rcPainter.drawText(QRectF(kMargin, kMargin + 30, kPageWidth - 2 * kMargin, 14), Qt::AlignLeft,
                       QStringLiteral("KVT Memory Display: ") + lsDisplay);
    rcPainter.drawText(QRectF(kMargin, kMargin + 46, kPageWidth - 2 * kMargin, 14), Qt::AlignLeft,
                       QStringLiteral("Downloaded: ") + lsDownloaded);
    PaintLine(rcPainter, kTableTop, clsMileageRegister::Titles(), true);
    rcPainter.drawLine(QPointF(kMargin, kTableTop + kRowHeight), QPointF(kPageWidth - kMargin, kTableTop + kRowHeight));
    rcPainter.setFont(Font(8, false));
    rcPainter.drawText(QRectF(kMargin, kFooterTop, kPageWidth - 2 * kMargin, 12), Qt::AlignLeft,
                       clsApplication::ApplicationName());
    rcPainter.drawText(QRectF(kMargin, kFooterTop, kPageWidth - 2 * kMargin, 12), Qt::AlignRight,
                       QStringLiteral("Page %1 of %2").arg(vlPage).arg(vlPages));
}

void clsPdfExport::PaintLine(QPainter& rcPainter, double vdTop, const QStringList& vcCells, bool vbBold)
{
    rcPainter.setFont(Font(8, vbBold));
    const QFontMetricsF lcMetrics(rcPainter.font());
    double ldLeft = kMargin;
    for (int c = 0; c < vcCells.size(); ++c) {
        const double ldWidth = c == 0 ? FirstCellWidth(vcCells) : kWidths[c];
        const Qt::Alignment lAlign = c >= kFirstNumberColumn ? Qt::AlignRight : Qt::AlignLeft;
        const QString lsText = lcMetrics.elidedText(vcCells[c], Qt::ElideRight, ldWidth - 4);
        rcPainter.drawText(QRectF(ldLeft + 2, vdTop, ldWidth - 4, kRowHeight), lAlign | Qt::AlignVCenter, lsText);
        ldLeft += kWidths[c];
    }
}
