// Helpers of the vegetation tests: running the whole step on a tiny cloud through the public
// methods, and running one pass directly on host arrays in either layout.
#pragma once

#include "common/TestSupport.h"
#include "steps/vegetation/kernels.h"

#include <functional>
#include <type_traits>
#include <vector>

namespace vegtest {

using vxtest::point;

/// The vegetation classes the tests pass unless they say otherwise.
constexpr int kLow = 3, kMedium = 4, kHigh = 5, kGround = 2;

struct StepClasses {
    int low = kLow, medium = kMedium, high = kHigh, ground = kGround, ignored = 0;
};

/// Loads the points, admits the classes of the table (none: no table), tunes the classifier,
/// decomposes into cubes of edge cell and runs the vegetation step; returns the classes after
/// it in input order. The output of the decomposition and of the step is discarded.
template <class T>
std::vector<int> runStep(const vxtest::Setting& s, std::vector<VX_Point<T>> pts, std::vector<int> table,
                         const std::function<void(Vexaro<T>&)>& tune = {}, StepClasses k = {},
                         double cell = 100.0)
{
    Vexaro<T> v;
    vxtest::configure(v, s);
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    if (!table.empty())
        v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
    if (tune)
        tune(v);
    {
        vxtest::CaptureStdout quiet;
        v.regularGridDecomposition3Dcube(cell);
        v.performVegetationClassification(k.low, k.medium, k.high, k.ground, k.ignored);
    }
    return vxtest::classes(v);
}

/// A cloud held in host arrays with its grid, for calling a pass's functor directly.
template <class T> struct HostCloud {
    std::vector<VX_Point<T>> points;
    std::vector<VX_IndexToGroup> index;
    std::vector<VX_DecompositionGroups> cells;
    VX_DecompositionGridParameters<T> grid{};
    std::vector<int> table; ///< empty: no table, every class admitted
};

/// All points in one cell of the given edge, visited in input order.
template <class T> HostCloud<T> oneCell(std::vector<VX_Point<T>> pts, T edge = T(100))
{
    HostCloud<T> c;
    c.points = std::move(pts);
    const int n = static_cast<int>(c.points.size());
    for (int i = 0; i < n; ++i)
        c.index.push_back({i, 0});
    c.cells.push_back({0, n, n});
    c.grid.cellsX = c.grid.cellsY = c.grid.cellsZ = 1;
    c.grid.sizeX = c.grid.sizeY = c.grid.sizeZ = edge;
    return c;
}

/// The step's parameter block with the engine's defaults and the test classes.
template <class T> vx::VegetationParams<T> defaultParams(StepClasses k = {})
{
    vx::ClassSlots slots;
    slots.TargetClass = k.low;
    slots.TargetClass2 = k.medium;
    slots.TargetClass3 = k.high;
    slots.GroundClass = k.ground;
    return vx::vegetationParams(vx::Parameters<T>{}, slots);
}

/// The phase-two pass with the per-field rule chosen by the layout, as the driver does.
template <class T, class P, class I, class G>
using Phase2Of = vx::CompletePlantsPhase2<T, P, I, G, std::is_same_v<P, vx::SoaPoints>>;

/// Runs pass Kernel once over every position in ascending order, in the chosen layout, and
/// returns the classes in input order. The cloud itself is left as it was.
template <template <class, class, class, class> class Kernel, class T>
std::vector<int> runPass(const HostCloud<T>& cloud, bool soa, const vx::VegetationParams<T>& p)
{
    std::vector<VX_Point<T>> pts = cloud.points;
    std::vector<VX_IndexToGroup> itg = cloud.index;
    std::vector<VX_DecompositionGroups> cells = cloud.cells;
    const int n = static_cast<int>(pts.size());
    const vx::AllowedClasses allowed = cloud.table.empty()
                                           ? vx::AllowedClasses{}
                                           : vx::AllowedClasses{cloud.table.data(), int(cloud.table.size())};
    std::vector<int> out;
    if (!soa) {
        Kernel<T, vx::AosPoints<T>, vx::AosIndex, vx::AosGroups> k{
            {{pts.data()}, {itg.data()}, {cells.data()}, allowed, cloud.grid, n}, p};
        for (int i = 0; i < n; ++i)
            k(i);
        for (const auto& q : pts)
            out.push_back(q.classification);
        return out;
    }
    std::vector<float> x, y, z, nx, ny, nz, hi;
    std::vector<int32_t> cls, last, pointIndex, group, start, end, count;
    for (const auto& q : pts) {
        x.push_back(float(q.x)), y.push_back(float(q.y)), z.push_back(float(q.z));
        nx.push_back(float(q.nx)), ny.push_back(float(q.ny)), nz.push_back(float(q.nz));
        hi.push_back(q.heightIndex), cls.push_back(q.classification), last.push_back(q.lastReturn);
    }
    for (const auto& e : itg)
        pointIndex.push_back(e.pointIndex), group.push_back(e.group);
    for (const auto& g : cells)
        start.push_back(g.start), end.push_back(g.end), count.push_back(g.count);
    vxPointSoA ps{x.data(),  y.data(),  z.data(),   nx.data(),  ny.data(),
                  nz.data(), hi.data(), cls.data(), last.data()};
    Kernel<T, vx::SoaPoints, vx::SoaIndex, vx::SoaGroups> k{
        {{ps},
         {vxIndexToGroupSoA{pointIndex.data(), group.data()}},
         {vxDecompositionGroupsSoA{start.data(), end.data(), count.data()}},
         allowed,
         cloud.grid,
         n},
        p};
    for (int i = 0; i < n; ++i)
        k(i);
    return cls;
}

} // namespace vegtest
