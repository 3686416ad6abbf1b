// Driver of the iterative building growth; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/building/kernels.h"
#include "steps/common/InPlaceLaunch.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/RemapClass.h"
#include "steps/common/StepDrivers.h"

namespace vx::VX_BACKEND_NS {

/// The growth stages over one layout's views. Every launch is waited for and checked, and every
/// growth launch is followed by the remap of its marks, so no pass feeds on its own results.
template <class T, class L>
void runBuildingGrowthPasses(StepContext<T>& c, const LaunchConfig& cfg, bool ready, L layout)
{
    if (ready)
        orderedXyz(c, layout);
    const auto views = c.views(layout);
    const BuildingGrowthParams<T> par = buildingGrowthParams(c.par(), c.slots());
    const int n = c.pointCount();
    const auto run = [&](const auto& kernel) {
        if (ready)
            launch(cfg, n, kernel);
        c.checkDeviceError();
    };
    // The growth rules read the classes that their own launch writes.
    const auto grow = [&](const auto& kernel) {
        if (ready)
            launchInPlace(c, cfg, n, kernel);
        c.checkDeviceError();
    };
    const auto remap = [&](int from, int to) { run(k_remapClass<T, L>{views.pts, from, to}); };
    const auto update = [&](bool useGhostTest) {
        grow(k_updateBuilding<T, L>{views, par, useGhostTest});
        remap(par.markClass, par.buildingClass);
    };

    // After the first pass only the points near the last pass's joins are judged again (see
    // grid/Frontier.h). Rejection marks (classes from 256) would change on the first remap
    // unseen by the frontier, so a cloud holding any is judged whole in every pass.
    const int cells = c.groupCount();
    const bool frontier = ready && c.frontierPasses() && cells > 0 &&
                          countIndices(n, ClassAtLeast<PointsOf<T, L>>{views.pts, 256}) == 0;
    Buffer<uint8_t> changed, active;
    if (frontier)
        changed.allocate(c.backend(), static_cast<std::size_t>(cells)),
            active.allocate(c.backend(), static_cast<std::size_t>(cells));
    bool firstPass = true, anyChange = true;
    for (int iteration = 1; iteration <= c.par().Building2Iterations; ++iteration) {
        if (!frontier) {
            update(true);
        } else if (anyChange) {
            auto kernel = k_updateBuilding<T, L>{views, par, true};
            kernel.active = firstPass ? nullptr : active.data();
            grow(kernel);
            fillWith(changed.data(), cells, uint8_t{0});
            run(MarkCells<IndexOf<L>, HoldsClass<PointsOf<T, L>>>{
                views.itg, {views.pts, par.markClass}, changed.data(), n});
            remap(par.markClass, par.buildingClass);
            anyChange = countIf(changed.data(), cells, IsSet{}) > 0;
            if (anyChange)
                launch(c.quietLaunchConfig(cells), cells,
                       ActivateAroundChanges<T>{c.gridParameters(), changed.data(), active.data(), cells});
            c.checkDeviceError();
            firstPass = false;
        }
        c.msg(2, "Building growth iteration", iteration);
    }
    // Candidates the growth did not absorb go back to the class they came from.
    remap(kBuildingCandidate, par.sourceClass);
    update(false);

    grow(k_completeBuilding<T, L>{views, par});
    remap(par.markClass, par.buildingClass);

    c.msg(3, "Details Height: ", par.detailsHeight);
    grow(k_closeBuilding<T, L>{views, par});
    remap(par.markClass, par.buildingClass);
    c.msg(2, "Building growth ended!");
}

template <class T> void runBuildingGrowth(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    const bool ready = c.requireGrid();
    c.visit([&](auto layout) { runBuildingGrowthPasses(c, cfg, ready, layout); });
}

} // namespace vx::VX_BACKEND_NS
