// Place lookup: searches per second through the cell index against the full
// scan on the world-cities table, and the index's answers compared with the
// full scan's on a million positions over the US zip-code table.
//
//   bench_places [--compare N]   (N positions for the comparison, default 1000000)

#include "data/clsGpsPlaces.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <vector>

namespace {
struct Position {
    qint32 latitude;
    qint32 longitude;
};

// Half near a place of the table (some exactly on the limit's edge or
// half-way between neighbouring lines), half anywhere on earth.
std::vector<Position> Positions(const clsGpsPlaces& vcPlaces, int vlCount, quint32 vlSeed)
{
    QRandomGenerator lcRandom(vlSeed);
    static const qint32 kEdges[][2] = {{55555, 0}, {0, -55556}, {33333, 44444}, {-44444, 33334}, {0, 0}};
    std::vector<Position> lcPositions;
    lcPositions.reserve(size_t(vlCount));
    for (int i = 0; i < vlCount; ++i) {
        const qint32 llSlot = qint32(lcRandom.bounded(vcPlaces.Count() - 1));
        const clsGpsPlace a = vcPlaces.Place(llSlot);
        if (i % 2 == 1) {
            lcPositions.push_back({qint32(lcRandom.bounded(1, 108000000)), qint32(lcRandom.bounded(1, 216000000))});
        } else if (i % 10 == 0) {
            const auto& e = kEdges[lcRandom.bounded(5)];
            lcPositions.push_back({a.mlLatitude + e[0], a.mlLongitude + e[1]});
        } else if (i % 10 == 2) {
            const clsGpsPlace b = vcPlaces.Place(llSlot + 1);
            lcPositions.push_back({qint32((qint64(a.mlLatitude) + b.mlLatitude) / 2),
                                   qint32((qint64(a.mlLongitude) + b.mlLongitude) / 2)});
        } else {
            lcPositions.push_back({a.mlLatitude + qint32(lcRandom.bounded(-170000, 170000)),
                                   a.mlLongitude + qint32(lcRandom.bounded(-170000, 170000))});
        }
    }
    return lcPositions;
}

// Nanoseconds for searching every position of [vlFirst, vlEnd).
template <typename F>
qint64 Nanoseconds(const std::vector<Position>& vcPositions, size_t vlFirst, size_t vlEnd, F&& vSearch,
                   qint64& rlFound)
{
    QElapsedTimer lcTimer;
    lcTimer.start();
    for (size_t i = vlFirst; i < vlEnd; ++i)
        rlFound += vSearch(vcPositions[i]).isEmpty() ? 0 : 1;
    return lcTimer.nsecsElapsed();
}
}

int main(int argc, char** argv)
{
    QCoreApplication lcApp(argc, argv);
    const QStringList lcArgs = lcApp.arguments();
    const int llCompareIndex = int(lcArgs.indexOf(QStringLiteral("--compare")));
    const int llCompare = llCompareIndex > 0 && llCompareIndex + 1 < lcArgs.size() ? lcArgs[llCompareIndex + 1].toInt() : 1000000;

    const QString lsWorld = QStringLiteral(CORVANE_SHARED_DATA "/world-cities.gps");
    QElapsedTimer lcLoad;
    lcLoad.start();
    const clsGpsPlaces lcWorld(lsWorld, nullptr);
    std::printf("world-cities.gps: %d places, loaded and indexed in %lld ms\n", lcWorld.Count(),
                qint64(lcLoad.elapsed()));
    if (lcWorld.Count() < 2)
        return 1;

    // The two are timed in turns, a slice of each per round, so a load that
    // comes and goes on the machine weighs on both alike.
    constexpr size_t kRounds = 20, kIndexed = 50000, kScanned = 100;
    const std::vector<Position> lcMany = Positions(lcWorld, int(kRounds * kIndexed), 1);
    qint64 llFoundIndex = 0, llFoundLinear = 0, llIndexNs = 0, llLinearNs = 0;
    std::vector<double> lcRatios;
    for (size_t r = 0; r < kRounds; ++r) {
        const qint64 llIndex = Nanoseconds(lcMany, r * kIndexed, (r + 1) * kIndexed, [&](const Position& p) {
            return lcWorld.searchPosition(p.latitude, p.longitude);
        }, llFoundIndex);
        const qint64 llLinear = Nanoseconds(lcMany, r * kScanned, (r + 1) * kScanned, [&](const Position& p) {
            return lcWorld.searchPositionLinear(p.latitude, p.longitude);
        }, llFoundLinear);
        llIndexNs += llIndex;
        llLinearNs += llLinear;
        lcRatios.push_back((double(llLinear) / kScanned) / (double(llIndex) / kIndexed));
    }
    std::sort(lcRatios.begin(), lcRatios.end());
    const double ldIndex = double(kRounds * kIndexed) / (double(llIndexNs) / 1e9);
    const double ldLinear = double(kRounds * kScanned) / (double(llLinearNs) / 1e9);
    std::printf("index:  %12.0f searches/s (%zu positions, %lld found)\n", ldIndex, kRounds * kIndexed, llFoundIndex);
    std::printf("linear: %12.0f searches/s (%zu positions, %lld found)\n", ldLinear, kRounds * kScanned, llFoundLinear);
    std::printf("index / linear: %.0f times faster (rounds: lowest %.0f, median %.0f, highest %.0f)\n",
                ldIndex / ldLinear, lcRatios.front(), lcRatios[kRounds / 2], lcRatios.back());

    const clsGpsPlaces lcZip(QStringLiteral(CORVANE_SHARED_DATA "/us-zipcodes.gps"), nullptr);
    if (lcZip.Count() < 2)
        return 1;
    const std::vector<Position> lcCompare = Positions(lcZip, llCompare, 2);
    QElapsedTimer lcTimer;
    lcTimer.start();
    qint64 llDifferences = 0, llFound = 0;
    for (const Position& p : lcCompare) {
        const QString lsIndexed = lcZip.searchPosition(p.latitude, p.longitude);
        llFound += lsIndexed.isEmpty() ? 0 : 1;
        if (lsIndexed != lcZip.searchPositionLinear(p.latitude, p.longitude))
            ++llDifferences;
    }
    std::printf("us-zipcodes.gps: %d places, %zu positions compared (%lld found) in %.1f s: %lld differences\n",
                lcZip.Count(), lcCompare.size(), llFound, double(lcTimer.elapsed()) / 1000.0, llDifferences);
    return llDifferences == 0 ? 0 : 2;
}
