// Driver of the building seed filter; compiled once per backend.
#pragma once

#include "steps/building/kernels.h"
#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "steps/common/EngineViews.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runBuildingSeeds(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    const bool ready = c.requireGrid();
    const BuildingSeedParams<T> par = buildingSeedParams(c.par, c.slots);
    const int n = c.pointCount;
    if (c.soa) {
        mem::profilerStart(c.backend());
        if (ready)
            launch(cfg, n, k_initialBuildingFilterSoA<T>{soaViews(c), par});
    } else if (ready) {
        launch(cfg, n, k_initialBuildingFilter<T>{aosViews(c), par});
    }
    // Announced while the launch may still be running; the wait follows.
    c.msg(2, "ORDER", par.sourceClass);
    c.checkDeviceError();
}

} // namespace vx::VX_BACKEND_NS
