#pragma once

#include "export/clsRecordExport.h"

class QPainter;
class clsMileageRegister;

// The trips as a printable mileage register (A4), made with Qt's own PDF
// writer: the display's ID and the download date at the top of every page,
// one line a trip, totals per day, per month and overall. Needs the
// graphical part of Qt (fonts), so the program must run a QGuiApplication.
class clsPdfExport : public clsRecordExport
{
public:
    using clsRecordExport::clsRecordExport;

    QString FileFilter() override { return QStringLiteral("Mileage register (PDF)(*.pdf)|*.pdf"); }
    QString EditorName() override { return QStringLiteral("Mileage register"); }
    qint32 GetIndex() override { return 14; }
    QString GetIdString() override { return QStringLiteral("PDF"); }

protected:
    QByteArray Render(clsRecordCollection& rcRecords) override;

private:
    void PaintPageHeader(QPainter& rcPainter, int vlPage, int vlPages) const;
    static void PaintLine(QPainter& rcPainter, double vdTop, const QStringList& vcCells, bool vbBold);
};
