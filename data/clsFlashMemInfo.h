#pragma once

#include <QtGlobal>

// The display's flash geometry as it reports it.
class clsFlashMemInfo
{
public:
    qint32 FirstPage() const { return mlFirstPage; }
    void SetFirstPage(qint32 vlValue) { mlFirstPage = vlValue; }
    qint32 LastPage() const { return mlLastPage; }
    void SetLastPage(qint32 vlValue) { mlLastPage = vlValue; }
    // Base-2 logarithm of the page size.
    qint32 SizeOnePage() const { return mlSizeOnePage; }
    void SetSizeOnePage(qint32 vlValue) { mlSizeOnePage = vlValue; }
    qint32 MaxDataOneMessage() const { return mlMaxDataOneMessage; }
    void SetMaxDataOneMessage(qint32 vlValue) { mlMaxDataOneMessage = vlValue; }

private:
    qint32 mlFirstPage = 0;
    qint32 mlLastPage = 0;
    qint32 mlSizeOnePage = 0;
    qint32 mlMaxDataOneMessage = 0;
};
