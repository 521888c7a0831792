#include "data/clsGpsPlaces.h"

#include "platform/Cp1252.h"
#include "platform/Err.h"
#include "platform/IUserDialogs.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>

namespace {
// The initial best distance of the scan: a full circle of longitude, squared.
constexpr double kFarAway = 46656000000000000.0;

// The leading number of a text, leniently: blanks are skipped, anything that
// is not a number gives 0, a fraction or exponent is allowed.
double Val(const QByteArray& vcText)
{
    QByteArray lcNumber;
    bool lbDigits = false, lbPoint = false, lbExponent = false;
    for (char c : vcText) {
        if (c == ' ' || c == '\t' || c == '\n')
            continue;
        const bool lbSignAllowed = lcNumber.isEmpty() || lcNumber.endsWith('e');
        if ((c == '+' || c == '-') && lbSignAllowed) {
            lcNumber += c;
        } else if (c >= '0' && c <= '9') {
            lcNumber += c;
            lbDigits = true;
        } else if (c == '.' && !lbPoint && !lbExponent) {
            lcNumber += c;
            lbPoint = true;
        } else if ((c == 'e' || c == 'E' || c == 'd' || c == 'D') && lbDigits && !lbExponent) {
            lcNumber += 'e';
            lbExponent = true;
        } else {
            break;
        }
    }
    while (!lcNumber.isEmpty() && !(lcNumber.back() >= '0' && lcNumber.back() <= '9') && lcNumber.back() != '.')
        lcNumber.chop(1);
    bool lbOk = false;
    const double ldValue = lbDigits ? lcNumber.toDouble(&lbOk) : 0.0;
    return lbOk ? ldValue : 0.0;
}

// Rounded to a 32-bit integer, ties to even; a number outside the range is an overflow.
qint32 ToLong(double vdValue)
{
    const double ldRounded = std::nearbyint(vdValue);
    if (!(ldRounded >= std::numeric_limits<qint32>::min() && ldRounded <= std::numeric_limits<qint32>::max()))
        Err::Raise(VbError::Overflow);
    return qint32(ldRounded);
}

// The leading number of a field. A plain run of digits, the usual case, is
// read directly; anything else goes through the lenient reading.
double FieldValue(const char* vcBegin, const char* vcEnd)
{
    const char* p = vcBegin;
    const bool lbNegative = p != vcEnd && *p == '-';
    if (lbNegative)
        ++p;
    if (p == vcEnd || vcEnd - p > 15)
        return Val(QByteArray(vcBegin, vcEnd - vcBegin));
    qint64 llValue = 0;
    for (; p != vcEnd; ++p) {
        if (*p < '0' || *p > '9')
            return Val(QByteArray(vcBegin, vcEnd - vcBegin));
        llValue = llValue * 10 + (*p - '0');
    }
    return double(lbNegative ? -llValue : llValue);
}

// One line of the file as a text-mode read gives it: ended by CR LF, a lone
// CR or a lone LF; a last line without an ending counts too.
struct Line {
    const char* begin;
    const char* end;
};

std::vector<Line> SplitLines(const QByteArray& vcContent)
{
    std::vector<Line> lcLines;
    const char* p = vcContent.constData();
    const char* lcEnd = p + vcContent.size();
    while (p != lcEnd) {
        const char* lcStart = p;
        while (p != lcEnd && *p != '\r' && *p != '\n')
            ++p;
        lcLines.push_back(Line{lcStart, p});
        if (p != lcEnd && *p++ == '\r' && p != lcEnd && *p == '\n')
            ++p;
    }
    return lcLines;
}

// The text in front of the next ";", taking it and the ";" off the line. A
// line without one cannot be split: an invalid procedure call.
Line TakeField(Line& rcLine)
{
    const char* lcSeparator = std::find(rcLine.begin, rcLine.end, ';');
    if (lcSeparator == rcLine.end)
        Err::Raise(VbError::InvalidProcedureCall);
    const Line lcField{rcLine.begin, lcSeparator};
    rcLine.begin = lcSeparator + 1;
    return lcField;
}

// Where a place text stands in the block of all texts: its offset in the
// high half, its length in the low half.
quint64 Tag(qsizetype vlOffset, qsizetype vlLength)
{
    return (quint64(vlOffset) << 32) | quint64(vlLength);
}

// Place texts are handed out without a reference count, pointing into a
// block of all the texts of a table that is kept until the program ends: a
// text copied anywhere stays valid after its table is gone, and handing one
// out touches no counter (a counter per text, scattered over the heap, cost a
// search more than finding the place). One block per table loaded.
const QChar* KeptForGood(QString vsBlock)
{
    static std::mutex gcLock;
    static auto* gcBlocks = new std::vector<QString>;
    const std::lock_guard<std::mutex> lcGuard(gcLock);
    gcBlocks->push_back(std::move(vsBlock));
    return gcBlocks->back().constData();
}

// All the texts in one block, one after another; rcTags says where each stands.
const QChar* SharedTexts(const std::vector<Line>& vcTexts, std::vector<quint64>& rcTags)
{
    qsizetype llTotal = 0;
    for (const Line& rcText : vcTexts)
        llTotal += rcText.end - rcText.begin;
    if (llTotal > qsizetype(std::numeric_limits<quint32>::max()))
        Err::Raise(VbError::Overflow);
    QString lsBlock(llTotal, Qt::Uninitialized);
    QChar* lcBlock = lsBlock.data();
    rcTags.clear();
    rcTags.reserve(vcTexts.size() + 1);
    qsizetype llOffset = 0;
    for (const Line& rcText : vcTexts) {
        rcTags.push_back(Tag(llOffset, rcText.end - rcText.begin));
        for (const char* p = rcText.begin; p != rcText.end; ++p)
            lcBlock[llOffset++] = Cp1252::DecodeByte(static_cast<unsigned char>(*p));
    }
    rcTags.push_back(0);
    return KeptForGood(std::move(lsBlock));
}
}

// The user sees both boxes when the file is missing: the second one is the
// same path a failed read takes.
clsGpsPlaces::clsGpsPlaces(const QString& vsPath, IUserDialogs* vcDialogs)
{
    const QString lsName = QFileInfo(vsPath).fileName();
    const auto lcShow = [vcDialogs](const QString& vsText) {
        if (vcDialogs)
            vcDialogs->MsgBox(vsText, MsgButtons::OK, MsgIcon::None, QStringLiteral("Error"));
    };
    bool lbLoaded = false;
    if (!QFileInfo::exists(vsPath)) {
        lcShow(QStringLiteral("ERROR Can't find file :") + lsName);
    } else {
        try {
            Load(vsPath);
            lbLoaded = true;
        } catch (const clsRuntimeError&) {
        }
    }
    if (!lbLoaded) {
        lcShow(QStringLiteral("ERROR in opening file:") + lsName);
        mlCount = 0;
        mcLatitudes.assign(1, 0);
        mcLongitudes.assign(1, 0);
        mcTexts.assign(1, 0);
    }
    mcIndex.Build(mcLatitudes, mcLongitudes, mcTexts);
}

clsGpsPlaces::~clsGpsPlaces() = default;

// Each line is "longitude;latitude;text", the text being the rest of the line.
void clsGpsPlaces::Load(const QString& vsPath)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly))
        Err::Raise(VbError::PathFileAccessError);
    const QByteArray lcContent = lcFile.readAll();
    std::vector<Line> lcLines = SplitLines(lcContent);
    if (lcLines.size() > size_t(std::numeric_limits<qint32>::max()))
        Err::Raise(VbError::Overflow);
    const size_t llSlots = lcLines.size() + 1;
    mcLatitudes.assign(llSlots, 0);
    mcLongitudes.assign(llSlots, 0);
    for (size_t k = 0; k < lcLines.size(); ++k) {
        const Line lcLongitude = TakeField(lcLines[k]);
        const Line lcLatitude = TakeField(lcLines[k]);
        mcLongitudes[k] = ToLong(FieldValue(lcLongitude.begin, lcLongitude.end));
        mcLatitudes[k] = ToLong(FieldValue(lcLatitude.begin, lcLatitude.end));
    }
    mcTextBlock = SharedTexts(lcLines, mcTexts);
    mlCount = qint32(lcLines.size());
}

QString clsGpsPlaces::Text(quint64 vlTag) const
{
    const qsizetype llLength = qsizetype(vlTag & 0xFFFFFFFFu);
    if (llLength == 0)
        return QString();
    return QString::fromRawData(mcTextBlock + (vlTag >> 32), llLength);
}

clsGpsPlace clsGpsPlaces::Place(qint32 vlSlot) const
{
    const size_t i = size_t(vlSlot);
    return clsGpsPlace{Text(mcTexts[i]), mcLatitudes[i], mcLongitudes[i]};
}

QString clsGpsPlaces::searchPosition(qint32 vlLatitude, qint32 vlLongitude) const
{
    if (vlLatitude == 0 || vlLongitude == 0)
        return QStringLiteral(" ");
    if (mlCount < 1)
        return QString();
    const clsPlaceIndex::Found lcFound = mcIndex.Nearest(vlLatitude, vlLongitude);
    return lcFound.found ? Text(lcFound.tag) : QString();
}

void clsGpsPlaces::RaiseOnOverflow(qint32 vlLatitude, qint32 vlLongitude) const
{
    if (vlLatitude == 0 || vlLongitude == 0 || mlCount < 1)
        return;
    mcIndex.RaiseOnOverflow(vlLatitude, vlLongitude);
}

// Plain Euclidean distance on the encoded values, latitude and longitude
// units taken as equal; a strictly smaller distance is needed to replace the
// best, so the earlier line wins a tie.
QString clsGpsPlaces::searchPositionLinear(qint32 vlLatitude, qint32 vlLongitude) const
{
    if (vlLatitude == 0 || vlLongitude == 0)
        return QStringLiteral(" ");
    if (mlCount < 1)
        return QString();
    mcIndex.RaiseOnOverflow(vlLatitude, vlLongitude);
    double ldBest = kFarAway;
    size_t llBest = 0;
    const double ldLatitude = vlLatitude;
    const double ldLongitude = vlLongitude;
    for (size_t i = 0; i <= size_t(mlCount); ++i) {
        const double ldLat = ldLatitude - mcLatitudes[i];
        const double ldLon = ldLongitude - mcLongitudes[i];
        const double d = ldLat * ldLat + ldLon * ldLon;
        if (d < ldBest) {
            ldBest = d;
            llBest = i;
        }
    }
    return clsPlaceIndex::kLimit >= ldBest ? Text(mcTexts[llBest]) : QString();
}
