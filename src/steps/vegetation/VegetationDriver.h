// Driver of the vegetation step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "steps/common/InPlaceLaunch.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/StepDrivers.h"
#include "steps/vegetation/kernels.h"

#include <iostream>

namespace vx::VX_BACKEND_NS {

/// The filter, the two spreading passes and the completion over one layout's views.
template <class T, class L>
void runVegetationPasses(StepContext<T>& c, const LaunchConfig& cfg, bool ready, L layout)
{
    if (ready)
        orderedXyz(c, layout);
    const auto views = c.views(layout);
    const VegetationParams<T> p = vegetationParams(c.par(), c.slots());
    const int n = c.pointCount();

    if (ready)
        launchInPlace(c, cfg, n, k_filterPlants<T, L>{views, p});
    c.checkDeviceError();

    const int iterations = c.par().VegetationIterations;
    if (iterations > 0) {
        for (int i = 1; i <= iterations; ++i) {
            if (ready)
                launchInPlace(c, cfg, n, k_iteratePlants<T, L>{views, p});
            c.checkDeviceError();
            c.msg(2, "Vegetation Iteration: ", i);
        }
    }
    if (iterations >= 1) {
        for (int i = 1; i <= iterations; ++i) {
            if (ready)
                launchInPlace(c, cfg, n, k_IteratePlantsSecond<T, L>{views, p});
            c.checkDeviceError();
            c.msg(2, "Vegetation Iteration: ", i);
        }
    }

    if (ready)
        launchInPlace(c, cfg, n, k_completePlants<T, L>{views, p});
    c.checkDeviceError();
    c.msg(2, "Ratio", c.par().VegetationRatio);
    if (ready)
        launchInPlace(c, cfg, n, k_completePlantsPhase2<T, L>{views, p});
    c.checkDeviceError();
    c.msg(2, "Vegetation complete!");
}

template <class T> void runVegetation(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    // The parameter lines print whatever the message level, values separated by single blanks.
    std::cout << c.par().VegetationRange << ' ' << c.par().VegetationDfG << ' ' << c.par().VegetationMaxCos
              << ' ' << c.par().VegetationProcOfChaos << ' ' << c.par().VegetationProcOfGhosts << '\n'
              << std::flush;
    std::cout << c.slots().GroundClass << ' ' << c.slots().BuildingClass << ' ' << c.slots().ChaosClass
              << '\n'
              << std::flush;
    const bool ready = c.requireGrid();
    c.visit([&](auto layout) { runVegetationPasses(c, cfg, ready, layout); });
}

} // namespace vx::VX_BACKEND_NS
