// Driver of the iterative building growth; compiled once per backend.
#pragma once

#include "steps/building/kernels.h"
#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "steps/common/EngineViews.h"
#include "steps/common/RemapClass.h"

namespace vx::VX_BACKEND_NS {

template <class T> k_remapClass<T> remapKernel(AosPoints<T> pts, int from, int to)
{
    return {pts, from, to};
}
inline k_remapClassSoA remapKernel(SoaPoints pts, int from, int to)
{
    return {pts, from, to};
}

/// The growth stages over one layout's views. Every launch is waited for and checked, and every
/// growth launch is followed by the remap of its marks, so no pass feeds on its own results.
template <class T, class Points, class Index, class Groups>
void runBuildingGrowthPasses(ClassifierCore<T>& c, const LaunchConfig& cfg, bool ready,
                             const NeighbourhoodKernel<T, Points, Index, Groups>& views)
{
    const BuildingGrowthParams<T> par = buildingGrowthParams(c.par, c.slots);
    const int n = c.pointCount;
    const auto run = [&](const auto& kernel) {
        if (ready)
            launch(cfg, n, kernel);
        c.checkDeviceError();
    };
    const auto remap = [&](int from, int to) { run(remapKernel(views.pts, from, to)); };
    const auto update = [&](bool useGhostTest) {
        run(UpdateBuilding<T, Points, Index, Groups>{views, par, useGhostTest});
        remap(par.markClass, par.buildingClass);
    };

    for (int iteration = 1; iteration <= c.par.Building2Iterations; ++iteration) {
        update(true);
        c.msg(2, "Building growth iteration", iteration);
    }
    // Candidates the growth did not absorb go back to the class they came from.
    remap(kBuildingCandidate, par.sourceClass);
    update(false);

    run(CompleteBuilding<T, Points, Index, Groups>{views, par});
    remap(par.markClass, par.buildingClass);

    c.msg(3, "Details Height: ", par.detailsHeight);
    run(CloseBuilding<T, Points, Index, Groups>{views, par});
    remap(par.markClass, par.buildingClass);
    c.msg(2, "Building growth ended!");
}

template <class T> void runBuildingGrowth(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    const bool ready = c.requireGrid();
    if (c.soa)
        runBuildingGrowthPasses(c, cfg, ready, soaViews(c));
    else
        runBuildingGrowthPasses(c, cfg, ready, aosViews(c));
}

} // namespace vx::VX_BACKEND_NS
