#include "app/clsApplication.h"

#include "app/clsLogger.h"
#include "data/clsFlashMemInfo.h"
#include "data/clsGpsPlaces.h"
#include "data/clsHalvexRecord.h"
#include "data/clsRecordCollection.h"
#include "platform/Err.h"
#include "platform/IEventLoop.h"
#include "platform/IMainWindow.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {
// Milliseconds between two chances for the window to handle its events while decoding.
constexpr quint32 kEventInterval = 10;
// Records decoded between two looks at the clock: some 30 microseconds.
constexpr quint32 kRecordsBetweenClockReads = 64;

// Runs one step unless an earlier one failed. A run-time error inside the
// step (a bad page file, an overflow) becomes the pending error, which the
// error value takes over, so the caller shows it like any other.
template <typename F>
void RunStep(clsError& rcError, F&& vStep)
{
    if (rcError.IsError())
        return;
    Err::Trap(std::forward<F>(vStep));
    rcError.IsError();
}

void ShowBar(clsProgressBarInfo& rcBar, qint32 vlMin, qint32 vlMax)
{
    rcBar.SetMin(vlMin);
    rcBar.SetMax(vlMax);
    rcBar.Reset();
    rcBar.SetVisible(true);
}

// Rounded to a 32-bit integer, ties to even; out of range is an overflow.
qint32 ToLong(double vdValue)
{
    const double ldRounded = std::nearbyint(vdValue);
    if (!(ldRounded >= std::numeric_limits<qint32>::min() && ldRounded <= std::numeric_limits<qint32>::max()))
        Err::Raise(VbError::Overflow);
    return qint32(ldRounded);
}

[[noreturn]] void RaiseInFile(long vlNumber, const QString& vsFile, qint64 vlLine)
{
    QString lsWhere = QDir::toNativeSeparators(vsFile);
    if (vlLine > 0)
        lsWhere += QStringLiteral(", line ") + QString::number(vlLine);
    throw clsRuntimeError(vlNumber, clsRuntimeError::StandardDescription(vlNumber) + QStringLiteral(" in ") + lsWhere,
                          vsFile);
}

// Reads the page file's values one line at a time: each line one byte in
// decimal. A line that is not a number is a type mismatch, a number beyond a
// byte an overflow, and asking past the last line an input past end of file.
class PageValues
{
public:
    PageValues(const QByteArray& vcContent, QString vsFile) : mcContent(vcContent), msFile(std::move(vsFile)) {}

    quint8 Next()
    {
        const char* p = mcContent.constData() + mlPos;
        const char* lcEnd = mcContent.constData() + mcContent.size();
        ++mlLine;
        // The download writes one to three digits and CR LF; any other line takes the careful road.
        qint32 llValue = 0;
        int n = 0;
        for (; n < 3 && lcEnd - p > n && IsDigit(p[n]); ++n)
            llValue = llValue * 10 + (p[n] - '0');
        if (n > 0 && llValue <= 255 && lcEnd - p > n + 1 && p[n] == '\r' && p[n + 1] == '\n') {
            mlPos += n + 2;
            return quint8(llValue);
        }
        return Careful(p, lcEnd);
    }

private:
    static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

    quint8 Careful(const char* p, const char* lcEnd)
    {
        if (p == lcEnd)
            RaiseInFile(VbError::InputPastEndOfFile, msFile, mlLine);
        while (p != lcEnd && (*p == ' ' || *p == '\t'))
            ++p;
        const bool lbNegative = p != lcEnd && *p == '-';
        if (lbNegative)
            ++p;
        const char* lcDigits = p;
        qint32 llValue = 0;
        while (p != lcEnd && *p >= '0' && *p <= '9' && llValue <= 255)
            llValue = llValue * 10 + (*p++ - '0');
        const bool lbNumber = p != lcDigits;
        while (p != lcEnd && *p >= '0' && *p <= '9')
            ++p;
        while (p != lcEnd && (*p == ' ' || *p == '\t'))
            ++p;
        if (!lbNumber || (p != lcEnd && *p != '\r' && *p != '\n'))
            RaiseInFile(VbError::TypeMismatch, msFile, mlLine);
        if (llValue > 255 || (lbNegative && llValue != 0))
            RaiseInFile(VbError::Overflow, msFile, mlLine);
        if (p != lcEnd && *p == '\r')
            ++p;
        if (p != lcEnd && *p == '\n')
            ++p;
        mlPos = p - mcContent.constData();
        return quint8(llValue);
    }

    const QByteArray& mcContent;
    QString msFile;
    qsizetype mlPos = 0;
    qint64 mlLine = 0;
};

// Appends the valid records of one page file to the collection, then deletes
// the file. A read error leaves the file where it is.
template <typename F>
void DecodePageFile(const QString& vsFile, qint32 vlPageSize, QByteArray& rcBuffer, clsRecordCollection& rcRecords,
                    clsProgressBarInfo& rcBar, F&& vRecordAdded)
{
    QFile lcFile(vsFile);
    if (!lcFile.open(QIODevice::ReadOnly))
        RaiseInFile(VbError::PathFileAccessError, vsFile, 0);
    rcBuffer.resize(lcFile.size());
    const qint64 llRead = lcFile.read(rcBuffer.data(), rcBuffer.size());
    if (llRead < 0)
        RaiseInFile(VbError::PathFileAccessError, vsFile, 0);
    rcBuffer.resize(llRead);
    lcFile.close();
    PageValues lcValues(rcBuffer, vsFile);
    clsHalvexRecord::Bytes lcBytes;
    for (qint32 llLeft = vlPageSize; llLeft / clsHalvexRecord::kSize >= 1; llLeft -= clsHalvexRecord::kSize) {
        for (quint8& rbyValue : lcBytes)
            rbyValue = lcValues.Next();
        clsHalvexRecord lcRecord;
        lcRecord.DeCodeData(lcBytes);
        if (lcRecord.IsValid()) {
            rcRecords.Add(std::move(lcRecord));
            vRecordAdded();
        }
        rcBar.Increment();
    }
    if (!QFile::remove(vsFile))
        RaiseInFile(VbError::PathFileAccessError, vsFile, 0);
}

// Steps 4 to 9 of the import, the same after a download and after an offline decode.
void ProcessDecodedRecords(clsApplication& rcApp, clsError& rcError)
{
    RunStep(rcError, [&] { rcApp.CleanUpDecodedInformation(rcError); });
    RunStep(rcError, [&] { rcApp.CountRecords(rcError); });
    RunStep(rcError, [&] { rcApp.CorrectKmInformation(rcError); });
    RunStep(rcError, [&] { rcApp.ProcessInformation(rcError); });
    RunStep(rcError, [&] { rcApp.CaluclateRoutePostcodes(rcError); });
    RunStep(rcError, [&] { rcApp.ShowRecords(rcError); });
    if (!rcError.IsError() && rcApp.Records().Count() > 0)
        rcApp.SetDataSaved(false);
}
}

void clsApplication::ImportDataFromDisplay(clsError& rcError)
{
    RunStep(rcError, [&] { CheckForOperatingSystem(rcError); });
    RunStep(rcError, [&] { DownloadPages(rcError); });
    // The download date an export's header shows.
    if (!rcError.IsError())
        mcRecordsTaken = QDateTime::currentDateTime();
    RunStep(rcError, [&] { DecodeDataFromFiles(rcError); });
    ProcessDecodedRecords(*this, rcError);
}

void clsApplication::DecodeAndProcess(clsError& rcError, const clsFlashMemInfo& vcInfo)
{
    mcRecords->Clear();
    RunStep(rcError, [&] { DecodeDataFromFiles(rcError, vcInfo); });
    ProcessDecodedRecords(*this, rcError);
}

// The memory map is asked again, so the display must still answer; without
// it the page files stay on disk for the next attempt.
void clsApplication::DecodeDataFromFiles(clsError& rcError)
{
    mcStatus.SetStatusString(QStringLiteral("Decoding"));
    clsFlashMemInfo lcInfo;
    GetMemoryInfo(rcError, lcInfo);
    if (rcError.IsError()) {
        mcStatus.BigProgressBarInfo().SetVisible(false);
        return;
    }
    DecodeDataFromFiles(rcError, lcInfo);
}

// Every page from FirstPage on, FirstPage included: a page file of it left
// from earlier is decoded too. A page of P bytes holds P \ 24 records; its
// last P mod 24 bytes are never read. A decoded file is deleted; one that
// fails to read stays for the next attempt.
void clsApplication::DecodeDataFromFiles(clsError& rcError, const clsFlashMemInfo& vcInfo)
{
    Q_UNUSED(rcError);
    mcStatus.SetStatusString(QStringLiteral("Decoding"));
    clsProgressBarInfo& rcBig = mcStatus.BigProgressBarInfo();
    clsProgressBarInfo& rcSmall = mcStatus.SmallProgressBarInfo();
    rcBig.SetMin(vcInfo.FirstPage());
    rcBig.SetMax(vcInfo.LastPage());
    rcBig.Reset();
    rcBig.SetVisible(true);
    const double ldPageSize = std::ldexp(1.0, vcInfo.SizeOnePage());
    rcSmall.SetMin(0);
    rcSmall.SetMax(ToLong(ldPageSize / clsHalvexRecord::kSize));
    rcSmall.Reset();
    const qint32 llPageSize = ToLong(ldPageSize);

    // The window stays responsive; asking it after every one of a display's
    // 700000 records would cost more than the decoding, and so would reading
    // the clock after each.
    IEventLoop& rcLoop = *mcPlatform.EventLoop;
    quint32 llEventsRun = rcLoop.timeGetTime() - kEventInterval;
    quint32 llAdded = 0;
    const auto lcRecordAdded = [&rcLoop, &llEventsRun, &llAdded]() {
        if (llAdded++ % kRecordsBetweenClockReads != 0 || rcLoop.timeGetTime() - llEventsRun < kEventInterval)
            return;
        rcLoop.DoEvents();
        llEventsRun = rcLoop.timeGetTime();
    };
    // Room for every record the page files can hold (a record takes 24
    // lines of at least two bytes), so the records never move while they come in.
    std::vector<QString> lcFiles;
    qint64 llRoom = mcRecords->Count();
    for (qint32 llPage = vcInfo.FirstPage(); llPage <= vcInfo.LastPage(); ++llPage) {
        const QString lsFile = PageFileName(llPage);
        const bool lbFound = Logger().CheckFileExists(lsFile);
        lcFiles.push_back(lbFound ? lsFile : QString());
        if (lbFound)
            llRoom += std::min<qint64>(llPageSize / clsHalvexRecord::kSize, QFileInfo(lsFile).size() / 48);
    }
    mcRecords->Reserve(int(std::min<qint64>(llRoom, std::numeric_limits<int>::max())));
    // One buffer for every file: a fresh one per file cost more in page faults than reading.
    QByteArray lcBuffer;
    for (const QString& lsFile : lcFiles) {
        if (!lsFile.isEmpty()) {
            rcSmall.SetVisible(true);
            rcSmall.Reset();
            DecodePageFile(lsFile, llPageSize, lcBuffer, *mcRecords, rcSmall, lcRecordAdded);
            rcSmall.SetVisible(false);
        }
        rcBig.Increment();
    }
    rcBig.SetVisible(false);
}

// A safety pass: decoding keeps only valid records, so nothing is removed in a normal run.
void clsApplication::CleanUpDecodedInformation(clsError& rcError)
{
    Q_UNUSED(rcError);
    mcStatus.SetStatusString(QStringLiteral("Cleaning up decoded information"));
    clsProgressBarInfo& rcBar = mcStatus.BigProgressBarInfo();
    const qint32 llCount = mcRecords->Count();
    if (llCount > 0)
        ShowBar(rcBar, 1, llCount + 1);
    for (qint32 i = 1; i <= llCount && i <= mcRecords->Count(); ++i) {
        if (!mcRecords->Item(i).IsValid()) {
            mcRecords->Remove(i);
            rcBar.Increment();
            if (i > mcRecords->Count())
                break;
            --i;
            continue;
        }
        rcBar.Increment();
    }
    rcBar.SetVisible(false);
}

// The numbers the user sees run over the display kinds only, in flash order.
void clsApplication::CountRecords(clsError& rcError)
{
    Q_UNUSED(rcError);
    mcStatus.SetStatusString(QStringLiteral("Counting records"));
    clsProgressBarInfo& rcBar = mcStatus.BigProgressBarInfo();
    ShowBar(rcBar, 1, mcRecords->Count() + 1);
    qint32 llNumber = 1;
    for (qint32 i = 1; i <= mcRecords->Count(); ++i) {
        clsHalvexRecord& rcRecord = mcRecords->Item(i);
        if (rcRecord.isDisplayType())
            rcRecord.SetRecordNumber(llNumber++);
        rcBar.Increment();
    }
    rcBar.SetVisible(false);
}

// The first record with a km reading is the first anchor; every
// km-correction record becomes the next one, after the trips since the
// previous anchor have been rescaled onto the corrected counter.
void clsApplication::CorrectKmInformation(clsError& rcError)
{
    Q_UNUSED(rcError);
    mcStatus.SetStatusString(QStringLiteral("Correction Km information"));
    clsProgressBarInfo& rcBar = mcStatus.BigProgressBarInfo();
    ShowBar(rcBar, 1, mcRecords->Count() + 1);
    qint32 llAnchor = 0;
    for (qint32 i = 1; i <= mcRecords->Count(); ++i) {
        clsHalvexRecord& rcRecord = mcRecords->Item(i);
        if (rcRecord.IsValid()) {
            if (llAnchor == 0 && rcRecord.IsValidKmStand() && rcRecord.HasEndKm())
                llAnchor = i;
            if (rcRecord.isKmCorrectieType()) {
                const double ldPrevious = rcRecord.PreviousKM().toDouble();
                if (ldPrevious != 0)
                    RecalculateKmTellers(llAnchor, i, ToLong(ldPrevious));
                llAnchor = i;
            }
        }
        rcBar.Increment();
    }
    rcBar.SetVisible(false);
}

// The counter ran from A (anchor) to P before the display was corrected to B:
// readings between are mapped linearly from A..P onto A..B. Readings at or
// below A, or 10000 km or more beyond it, are taken as unrelated and kept.
void clsApplication::RecalculateKmTellers(qint32 vlAnchor, qint32 vlCorrection, qint32 vlPreviousKm)
{
    if (vlAnchor < 1 || vlAnchor > mcRecords->Count() || vlCorrection < 1 || vlCorrection > mcRecords->Count())
        Err::Raise(VbError::SubscriptOutOfRange);
    const double A = mcRecords->Item(vlAnchor).lEndKmTeller();
    const double B = mcRecords->Item(vlCorrection).lEndKmTeller();
    const double ldSpan = B - A;
    const double ldScale = double(vlPreviousKm) - A;
    if (!(ldSpan > 0))
        return;
    for (qint32 j = vlAnchor; j <= vlCorrection - 1; ++j) {
        clsHalvexRecord& rcRecord = mcRecords->Item(j);
        if (!rcRecord.IsValid() || !rcRecord.IsValidKmStand() || !rcRecord.HasEndKm())
            continue;
        const double ldKm = rcRecord.lEndKmTeller();
        if (!(ldKm > A && std::fabs(ldKm - A) < 10000))
            continue;
        if (ldScale == 0)
            Err::Raise(VbError::DivisionByZero);
        rcRecord.SetlEndKmTeller(ToLong(A + (ldKm - A) * ldSpan / ldScale));
    }
}

// A trip starts where the previous one (or the first km-correction record)
// ended, in km and in position. Trips are numbered afresh on each new date;
// a trip without a date continues the count of the day before it.
void clsApplication::ProcessInformation(clsError& rcError)
{
    Q_UNUSED(rcError);
    mcStatus.SetStatusString(QStringLiteral("Processing information"));
    clsProgressBarInfo& rcBar = mcStatus.BigProgressBarInfo();
    ShowBar(rcBar, 1, mcRecords->Count() + 1);
    const QString lsUnknown = QStringLiteral("unknown");
    qint32 llPreviousKm = 0;
    qint32 llPreviousLongitude = 0;
    qint32 llPreviousLatitude = 0;
    qint32 llTrip = 1;
    QString lsPreviousDate;
    clsHalvexRecord* lcPreviousTrip = nullptr;
    for (qint32 i = 1; i <= mcRecords->Count(); ++i) {
        clsHalvexRecord& rcRecord = mcRecords->Item(i);
        if (!rcRecord.IsValid()) {
            rcBar.Increment();
            continue;
        }
        if (rcRecord.isKmCorrectieType()) {
            rcRecord.SetlStartKmTeller(rcRecord.lEndKmTeller());
            llPreviousKm = rcRecord.lEndKmTeller();
            if (i == 1) {
                llPreviousLongitude = rcRecord.lEndLongitude();
                llPreviousLatitude = rcRecord.lEndLatitude();
            }
        }
        if (rcRecord.isTankStopType() && !rcRecord.ValidGps() && lcPreviousTrip)
            rcRecord.copyToTankstopRecord(*lcPreviousTrip);
        if (rcRecord.isRitRegType()) {
            rcRecord.SetlStartKmTeller(llPreviousKm);
            llPreviousKm = rcRecord.lEndKmTeller();
            rcRecord.mlStartLongitude = llPreviousLongitude;
            rcRecord.mlStartLatitude = llPreviousLatitude;
            llPreviousLongitude = rcRecord.lEndLongitude();
            llPreviousLatitude = rcRecord.lEndLatitude();
            lcPreviousTrip = &rcRecord;
            const QString lsDate = rcRecord.DateOfTrip();
            if (lsDate == lsUnknown || lsDate == lsPreviousDate) {
                rcRecord.SetRitnummer(llTrip);
            } else {
                lsPreviousDate = lsDate;
                llTrip = 1;
                rcRecord.SetRitnummer(1);
            }
            ++llTrip;
        } else {
            rcRecord.SetRitnummer(llTrip);
        }
        rcBar.Increment();
    }
    rcBar.SetVisible(false);
}

// The places the route points pass, each once in a row, handed to the next
// trip; a point with no place near enough is named by its coordinates.
// The window runs this step on its own ("Show route"), so it keeps its
// run-time errors (a place table far off) in the error value itself.
void clsApplication::CaluclateRoutePostcodes(clsError& rcError)
{
    RunStep(rcError, [&] { CollectRoutes(); });
}

void clsApplication::CollectRoutes()
{
    mcStatus.SetStatusString(QStringLiteral("Processing route information"));
    clsGpsPlaces& rcPlaces = GpsPlaces();
    clsProgressBarInfo& rcBar = mcStatus.BigProgressBarInfo();
    ShowBar(rcBar, 1, mcRecords->Count() + 1);
    QString lsRoute;
    QString lsLastPlace;
    for (qint32 i = 1; i <= mcRecords->Count(); ++i) {
        clsHalvexRecord& rcRecord = mcRecords->Item(i);
        if (rcRecord.IsValid() && rcRecord.isRouteType()) {
            const qint32 llLatitude = rcRecord.lEndLatitude();
            QString lsPlace = rcPlaces.searchPosition(llLatitude, rcRecord.lEndLongitude());
            if (lsPlace.isEmpty())
                lsPlace = rcRecord.GPSLocation();
            if (lsPlace != lsLastPlace) {
                if (!lsRoute.isEmpty())
                    lsRoute += QLatin1Char(';');
                lsRoute += lsPlace;
            }
            lsLastPlace = lsPlace;
        }
        // The trip gets a copy of just its route; the text being built keeps its room for the next one.
        if (rcRecord.IsValid() && rcRecord.isRitRegType()) {
            rcRecord.SetRoute(QString(lsRoute.constData(), lsRoute.size()));
            lsRoute.truncate(0);
        }
        rcBar.Increment();
    }
    rcBar.SetVisible(false);
}

// The grid shows every valid record that a ticked selection box belongs to;
// the route column is filled while "Show route" is ticked. The window reads
// the rows itself and a record looks its places up when first read, for
// the rows a window draws or a file gets; here, inside the operation, the
// shown rows are only checked for a search that would overflow, so that
// error is reported like any other run-time error and never met while the
// window draws.
// The window refills the grid with it alone too, so like the route step it
// keeps its run-time errors in the error value.
void clsApplication::ShowRecords(clsError& rcError)
{
    RunStep(rcError, [&] { FillGrid(); });
}

void clsApplication::FillGrid()
{
    GpsPlaces();
    clsProgressBarInfo& rcBar = mcStatus.SmallProgressBarInfo();
    ShowBar(rcBar, 1, mcRecords->Count() + 1);
    for (qint32 i = 1; i <= mcRecords->Count(); ++i) {
        const clsHalvexRecord& rcRecord = mcRecords->Item(i);
        if (mcSelection.Admits(rcRecord))
            rcRecord.RaiseOnPlaceOverflow();
        rcBar.Increment();
    }
    rcBar.SetVisible(false);
    mcStatus.SetStatusString(QStringLiteral("Copied ") + QString::number(mcRecords->Count())
                             + QStringLiteral(" record(s) from KVT Memory Display"));
    if (mcPlatform.MainWindow)
        mcPlatform.MainWindow->RecordsChanged();
}
