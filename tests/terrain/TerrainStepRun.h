// The terrain step on a built scene: points of class 1 and the classes it gives them.
#pragma once

#include <Vexaro.h>

#include <functional>
#include <vector>

namespace terraintest {

template <class T> VX_Point<T> point(double x, double y, double z)
{
    VX_Point<T> p{};
    p.x = static_cast<T>(x);
    p.y = static_cast<T>(y);
    p.z = static_cast<T>(z);
    p.classification = 1;
    p.lastReturn = 1;
    return p;
}

/// Runs the terrain step (ground class 2, bridge decks `deckClass`) on the CPU in one grid cell,
/// after `set` has set the parameters; the classes of the points.
template <class T>
std::vector<int> classify(std::vector<VX_Point<T>> pts, bool soa,
                          const std::function<void(Vexaro<T>&)>& set = nullptr, int deckClass = -1)
{
    Vexaro<T> v;
    v.setMessageLevel(-1);
    v.setFacadeMessageLevel(-1);
    v.setComputeBackend("cpu");
    v.set_SoA(soa);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    if (set)
        set(v);
    v.regularGridDecomposition2D(1000, 1000);
    v.classifyTerrainGround(2, deckClass);
    std::vector<short> out(pts.size());
    v.saveClassesToBuffer(out.data(), static_cast<int>(out.size()));
    return std::vector<int>(out.begin(), out.end());
}

} // namespace terraintest
