// The page download: the display's memory map, the state of each page, and
// every used page copied part by part into its page file.

#include "app/clsApplication.h"

#include "app/clsCommunicationScope.h"
#include "app/clsLogger.h"
#include "data/clsFlashMemInfo.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "link/clsHalvexMsg.h"
#include "platform/Err.h"

#include <QFile>
#include <QStringList>
#include <cmath>
#include <limits>

namespace {

// "0x" and at least two upper-case hex digits; a value above 255 keeps all
// its digits, so the codec refuses it as an overflow.
QString HexItem(qint32 vlValue)
{
    const QString lsHex = QString::number(vlValue, 16).toUpper();
    return (lsHex.size() == 1 ? QStringLiteral("0x0") : QStringLiteral("0x")) + lsHex;
}

// The offset in the page as its high and low byte: "0x02,0x00" for 512.
QString OffsetItems(qint32 vlOffset)
{
    while (vlOffset >= 32768)
        vlOffset -= 65536;
    const QString lsHex = QStringLiteral("%1").arg(quint16(qint16(vlOffset)), 4, 16, QLatin1Char('0')).toUpper();
    return QStringLiteral("0x") + lsHex.left(2) + QStringLiteral(",0x") + lsHex.mid(2);
}

QString ReadItems(qint32 vlPage, qint32 vlOffset, qint32 vlCount)
{
    return HexItem(vlPage) + QLatin1Char(',') + OffsetItems(vlOffset) + QLatin1Char(',') + HexItem(vlCount);
}

// A read answer that says data follows must carry all of it: a frame damaged
// on the line can pass the checksum with a byte too many or too few.
std::function<bool(const clsHalvexMsg&)> ReadIsWhole(qint32 vlCount)
{
    return [vlCount](const clsHalvexMsg& vcMessage) {
        return vcMessage.ReceiveArguments(0) != 1 || vcMessage.ReceiveNofArguments() == vlCount + 1;
    };
}

// Reply bytes 1 to vlCount, one decimal value a line.
QByteArray ReplyLines(const clsHalvexMsg& vcMessage, qint32 vlCount)
{
    QStringList lcValues;
    for (qint32 i = 1; i <= vlCount; ++i)
        lcValues << QString::number(vcMessage.ReceiveArguments(i));
    return (lcValues.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n")).toLatin1();
}

void WriteLines(QFile& rcFile, const QByteArray& vcLines)
{
    if (rcFile.write(vcLines) != vcLines.size() || !rcFile.flush())
        Err::Raise(VbError::PathFileAccessError, QStringLiteral("DownloadPages"));
}

// 2 ^ SizeOnePage bytes, worked out in floating point; a page that does not
// fit a 32-bit integer is an overflow, raised before any page file is made.
qint32 PageSize(qint32 vlSizeOnePage)
{
    const double ldSize = std::ldexp(1.0, vlSizeOnePage);
    if (ldSize > std::numeric_limits<qint32>::max())
        Err::Raise(VbError::Overflow, QStringLiteral("DownloadPages"));
    return qint32(ldSize);
}

}

void clsApplication::GetMemoryInfo(clsError& rcError, clsFlashMemInfo& rcInfo)
{
    SendAndRetry(rcError, 0x36, QString());
    if (rcError.IsError())
        return;
    const clsHalvexMsg& lcMessage = MessageBrooker();
    rcInfo.SetFirstPage(lcMessage.ReceiveArguments(0));
    rcInfo.SetLastPage(lcMessage.ReceiveArguments(1));
    rcInfo.SetSizeOnePage(lcMessage.ReceiveArguments(2));
    rcInfo.SetMaxDataOneMessage(lcMessage.ReceiveArguments(3));
}

// Only the answer 1 is empty; the caller reads the answer again to tell 2 (data) from the rest.
void clsApplication::IsPageEmpty(clsError& rcError, qint32 vlPage, bool& rbIsEmpty)
{
    SendAndRetry(rcError, 0x38, HexItem(vlPage));
    rbIsEmpty = !rcError.IsError() && MessageBrooker().ReceiveArguments(0) == 1;
}

qint32 clsApplication::GetPercentage(qint32 vlValue, qint32 vlTotal)
{
    if (vlValue >= vlTotal)
        return 100;
    if (vlTotal == 0)
        Err::Raise(VbError::DivisionByZero, QStringLiteral("GetPercentage"));
    return qint32(qint64(vlValue) * 100 / vlTotal);
}

QString clsApplication::PageFileName(qint32 vlPage) const
{
    return StdDirectory() + QStringLiteral("Page") + QString::number(vlPage) + QStringLiteral(".DSW");
}

// The first page of the area is never read: it holds nothing for the PC.
void clsApplication::DownloadPages(clsError& rcError)
{
    clsCommunicationScope lcScope(*this);
    msDisplayId = GetDallesID(rcError);
    while (mcRecords->Count() > 0)
        mcRecords->Remove(mcRecords->Count());
    // Compared as the display's ID text has always been compared. The ID
    // read ends in a point, so an all-zero display passes this test and is read.
    if (msDisplayId.isEmpty() || msDisplayId == QLatin1String("0.0.0.0.0.0.0.0")) {
        rcError.SetError(1, QStringLiteral("Invalid ID found"));
        return;
    }
    Logger().AddToLog(QStringLiteral("ID found ") + msDisplayId);
    clsFlashMemInfo lcInfo;
    mcStatus.SetStatusString(QStringLiteral("Copying data from the KVT Memory Display"));
    qint32 llPageSize = 0;
    GetMemoryInfo(rcError, lcInfo);
    if (!rcError.IsError()) {
        Logger().AddToLog(QStringLiteral("First page found on ") + QString::number(lcInfo.FirstPage()));
        Logger().AddToLog(QStringLiteral("Last page found on ") + QString::number(lcInfo.LastPage()));
        Logger().AddToLog(QStringLiteral("Size of one page is ") + QString::number(lcInfo.SizeOnePage()));
        llPageSize = PageSize(lcInfo.SizeOnePage());
    }
    clsProgressBarInfo& lcBig = mcStatus.BigProgressBarInfo();
    lcBig.SetMin(lcInfo.FirstPage());
    lcBig.SetMax(lcInfo.LastPage() + 1);
    lcBig.SetVisible(true);
    lcBig.Reset();
    // The display's own progress feedback (0x26, 0x27) stays switched off: nothing of it is sent.
    for (qint32 llPage = lcInfo.FirstPage() + 1; llPage <= lcInfo.LastPage(); ++llPage) {
        lcBig.Increment();
        bool lbEmpty = false;
        IsPageEmpty(rcError, llPage, lbEmpty);
        if (!lbEmpty) {
            // only 2 means data; a truly empty page (1) is passed over without a word
            if (MessageBrooker().ReceiveArguments(0) != 2)
                Logger().AddToLog(QStringLiteral("Page ") + QString::number(llPage) + QStringLiteral(" is empty"));
            else
                DownloadPage(rcError, llPage, llPageSize, lcInfo.MaxDataOneMessage());
        }
        mcStatus.SmallProgressBarInfo().SetVisible(false);
        if (rcError.IsError())
            break;
        mcStatus.SetStatusString(QStringLiteral("Copied ") +
                                 QString::number(GetPercentage(llPage, lcInfo.LastPage())) +
                                 QStringLiteral("% of total"));
    }
    lcBig.SetVisible(false);
}

// Whole parts of MaxDataOneMessage bytes, then the remainder. A part whose
// answer does not say "data follows" is left out of the file; the remainder's
// answer is written without that look.
void clsApplication::DownloadPage(clsError& rcError, qint32 vlPage, qint32 vlPageSize, qint32 vlMaxData)
{
    clsProgressBarInfo& lcSmall = mcStatus.SmallProgressBarInfo();
    lcSmall.SetMin(0);
    lcSmall.SetMax(vlPageSize + 1);
    lcSmall.Reset();
    lcSmall.SetStepSize(vlMaxData);
    lcSmall.SetVisible(true);
    Logger().AddToLog(QStringLiteral("Starting to download page ") + QString::number(vlPage));
    if (vlMaxData == 0)
        Err::Raise(VbError::DivisionByZero, QStringLiteral("DownloadPages"));
    const QString lsFile = PageFileName(vlPage);
    QFile lcFile(lsFile);
    if (!lcFile.open(QIODevice::WriteOnly | QIODevice::Truncate))
        Err::Raise(VbError::PathFileAccessError, QStringLiteral("DownloadPages"),
                   QStringLiteral("Path/File access error: ") + lsFile);
    const qint32 llWhole = vlPageSize / vlMaxData * vlMaxData;
    const clsHalvexMsg& lcMessage = MessageBrooker();
    qint32 llOffset = 0;
    for (; llOffset <= llWhole - 1; llOffset += vlMaxData) {
        SendAndRetry(rcError, 0x34, ReadItems(vlPage, llOffset, vlMaxData), ReadIsWhole(vlMaxData));
        if (rcError.IsError()) {
            llOffset = vlPageSize;
            continue;
        }
        if (lcMessage.ReceiveArguments(0) == 1)
            WriteLines(lcFile, ReplyLines(lcMessage, vlMaxData));
        lcSmall.Increment();
        mcStatus.SetStatusString(QString::number(GetPercentage(llOffset, vlPageSize)) + QStringLiteral("% of page ") +
                                 QString::number(vlPage) + QStringLiteral(" and ") +
                                 QString::number(GetPercentage(vlPage, vlMaxData)) +
                                 QStringLiteral("% of total of pages"));
    }
    const qint32 llRest = vlPageSize % vlMaxData;
    if (llRest > 0 && !rcError.IsError()) {
        SendAndRetry(rcError, 0x34, ReadItems(vlPage, llOffset, llRest), ReadIsWhole(llRest));
        if (!rcError.IsError())
            WriteLines(lcFile, ReplyLines(lcMessage, llRest));
    }
    lcFile.close();
    Logger().AddToLog(QStringLiteral("Finished downloading page ") + QString::number(vlPage));
    if (rcError.IsError())
        QFile::remove(lsFile);
}
