#include "data/clsGpsPlaces.h"

#include "platform/Cp1252.h"
#include "platform/Err.h"
#include "platform/IUserDialogs.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>

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

// The lines of the file as a text-mode read gives them: ended by CR LF, a
// lone CR or a lone LF; a last line without an ending counts too.
std::vector<QByteArray> SplitLines(const QByteArray& vcContent)
{
    std::vector<QByteArray> lcLines;
    qsizetype llStart = 0;
    const qsizetype llSize = vcContent.size();
    for (qsizetype i = 0; i < llSize; ++i) {
        const char c = vcContent[i];
        if (c != '\r' && c != '\n')
            continue;
        lcLines.push_back(vcContent.mid(llStart, i - llStart));
        if (c == '\r' && i + 1 < llSize && vcContent[i + 1] == '\n')
            ++i;
        llStart = i + 1;
    }
    if (llStart < llSize)
        lcLines.push_back(vcContent.mid(llStart));
    return lcLines;
}

// The text in front of the next ";", taking it and the ";" off the line. A
// line without one cannot be split: an invalid procedure call.
QByteArray TakeField(QByteArray& rcLine)
{
    const qsizetype llSeparator = rcLine.indexOf(';');
    if (llSeparator < 0)
        Err::Raise(VbError::InvalidProcedureCall);
    QByteArray lcField = rcLine.left(llSeparator);
    rcLine.remove(0, llSeparator + 1);
    return lcField;
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
        mcNames.assign(1, QString());
    }
    mcIndex.Build(mcLatitudes, mcLongitudes);
}

clsGpsPlaces::~clsGpsPlaces() = default;

// Each line is "longitude;latitude;text", the text being the rest of the line.
void clsGpsPlaces::Load(const QString& vsPath)
{
    QFile lcFile(vsPath);
    if (!lcFile.open(QIODevice::ReadOnly))
        Err::Raise(VbError::PathFileAccessError);
    const std::vector<QByteArray> lcLines = SplitLines(lcFile.readAll());
    const size_t llSlots = lcLines.size() + 1;
    mcLatitudes.assign(llSlots, 0);
    mcLongitudes.assign(llSlots, 0);
    mcNames.assign(llSlots, QString());
    for (size_t k = 0; k < lcLines.size(); ++k) {
        QByteArray lcLine = lcLines[k];
        mcLongitudes[k] = ToLong(Val(TakeField(lcLine)));
        mcLatitudes[k] = ToLong(Val(TakeField(lcLine)));
        mcNames[k] = Cp1252::Decode(lcLine);
    }
    if (lcLines.size() > size_t(std::numeric_limits<qint32>::max()))
        Err::Raise(VbError::Overflow);
    mlCount = qint32(lcLines.size());
}

clsGpsPlace clsGpsPlaces::Place(qint32 vlSlot) const
{
    const size_t i = size_t(vlSlot);
    return clsGpsPlace{mcNames[i], mcLatitudes[i], mcLongitudes[i]};
}

QString clsGpsPlaces::searchPosition(qint32 vlLatitude, qint32 vlLongitude) const
{
    if (vlLatitude == 0 || vlLongitude == 0)
        return QStringLiteral(" ");
    if (mlCount < 1)
        return QString();
    const qint32 llSlot = mcIndex.Nearest(vlLatitude, vlLongitude);
    return llSlot < 0 ? QString() : mcNames[size_t(llSlot)];
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
    return clsPlaceIndex::kLimit >= ldBest ? mcNames[llBest] : QString();
}
