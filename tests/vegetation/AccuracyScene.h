// A small airborne scan with known classes for judging the vegetation step through the whole
// classification: rolling terrain, two buildings, trees of several heights whose pulses give
// several returns, shrubs and patches of grass.
#pragma once

#include <Vexaro.h>

#include <cstdint>
#include <vector>

namespace vegtest {

/// True classes (LAS codes).
enum Truth : int { kTruthGround = 2, kTruthLow = 3, kTruthMedium = 4, kTruthHigh = 5, kTruthBuilding = 6 };

struct ScanReturn {
    double x, y, z;
    int lastReturn; ///< 1 for the last return of its pulse
    int truth;
};

struct AccuracyScene {
    double side = 0;
    std::vector<ScanReturn> returns;
};

/// The scan of a side x side square with about `pulsesPerSquareMetre` pulses; the same seed gives
/// the same returns everywhere. Vegetation returns carry the tier of their height above the bare
/// earth: below 0.4 m low, up to 2 m medium, above high.
AccuracyScene makeAccuracyScene(double side, double pulsesPerSquareMetre, uint64_t seed);

/// The returns as the library's records: class 1, no normals.
template <class T> std::vector<VX_Point<T>> toRecords(const AccuracyScene& scene)
{
    std::vector<VX_Point<T>> out;
    out.reserve(scene.returns.size());
    for (const ScanReturn& r : scene.returns) {
        VX_Point<T> p{};
        p.x = T(r.x), p.y = T(r.y), p.z = T(r.z);
        p.classification = 1;
        p.lastReturn = r.lastReturn;
        out.push_back(p);
    }
    return out;
}

} // namespace vegtest
