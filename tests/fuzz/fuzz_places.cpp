// postcode.gps as a user might leave it, loaded into the place table, then
// searched around every place it holds (up to 64), on the edge of the
// search limit and across it, and at a few far positions.
// Checks: the cell index gives the full scan's answer, or the same overflow.

#include "FuzzCheck.h"
#include "data/clsGpsPlaces.h"
#include "platform/Err.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace {
// The search's outcome: the place text, or the run-time error it raised (on a
// line of its own, which no place text can hold).
template <typename F>
QString Ask(F&& vSearch)
{
    try {
        return vSearch();
    } catch (const clsRuntimeError& e) {
        return QStringLiteral("\nrun-time error %1").arg(e.Number());
    }
}

void SameAnswer(const clsGpsPlaces& rcPlaces, qint64 vlLatitude, qint64 vlLongitude)
{
    const auto lcClamp = [](qint64 v) {
        return qint32(std::clamp<qint64>(v, std::numeric_limits<qint32>::min(), std::numeric_limits<qint32>::max()));
    };
    const qint32 llLatitude = lcClamp(vlLatitude);
    const qint32 llLongitude = lcClamp(vlLongitude);
    const QString lsIndexed = Ask([&] { return rcPlaces.searchPosition(llLatitude, llLongitude); });
    const QString lsScanned = Ask([&] { return rcPlaces.searchPositionLinear(llLatitude, llLongitude); });
    FuzzCheck(lsIndexed == lsScanned, "the index answers as the full scan",
              QStringLiteral("%1 %2: \"%3\" / \"%4\"").arg(llLatitude).arg(llLongitude).arg(lsIndexed, lsScanned));
}
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* vcData, size_t vlSize)
{
    const QByteArray lcInput(reinterpret_cast<const char*>(vcData), qsizetype(vlSize));
    const clsGpsPlaces lcPlaces(WriteInput(QStringLiteral("postcode.gps"), lcInput), nullptr);
    static const qint64 kOffsets[] = {0, 1, -1, 55555, -55555, 55556, -55556, 39284, -39285, 111111};
    const qint32 llPlaces = qMin<qint32>(lcPlaces.Count(), 64);
    for (qint32 i = 0; i < llPlaces; ++i) {
        const clsGpsPlace lcPlace = lcPlaces.Place(i);
        for (qint64 llLat : kOffsets)
            for (qint64 llLon : {qint64(0), qint64(55555), qint64(-40000), qint64(55556)})
                SameAnswer(lcPlaces, lcPlace.mlLatitude + llLat, lcPlace.mlLongitude + llLon);
    }
    for (qint64 llFar : {qint64(1), qint64(54000000), qint64(108000000), qint64(std::numeric_limits<qint32>::max()),
                         qint64(std::numeric_limits<qint32>::min())})
        SameAnswer(lcPlaces, llFar, llFar);
    return 0;
}
