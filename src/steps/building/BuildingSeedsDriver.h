// Driver of the building seed filter; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "steps/building/kernels.h"
#include "steps/common/InPlaceLaunch.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/StepDrivers.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runBuildingSeeds(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    const bool ready = c.requireGrid();
    const BuildingSeedParams<T> par = buildingSeedParams(c.par(), c.slots());
    const int n = c.pointCount();
    mem::profilerStart(c.backend());
    if (ready)
        c.visit([&](auto layout) {
            orderedXyz(c, layout);
            launchInPlace(c, cfg, n, k_initialBuildingFilter<T, decltype(layout)>{c.views(layout), par});
        });
    // Announced while the launch may still be running; the wait follows.
    c.msg(2, "ORDER", par.sourceClass);
    c.checkDeviceError();
}

} // namespace vx::VX_BACKEND_NS
