// Driver of the low-point search; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "steps/common/EngineViews.h"
#include "steps/ground/kernels.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runLowPoints(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    c.msg(4, "Filtering Low Points", c.slots.TargetClass);
    if (c.requireGrid()) {
        if (c.soa)
            launch(cfg, c.pointCount, k_findLowPointsSoA<T>{soaViews(c), c.slots.TargetClass});
        else
            launch(cfg, c.pointCount, k_findLowPoints<T>{aosViews(c), c.slots.TargetClass});
    }
    c.checkDeviceError();
    c.msg(2, "Low Point search done!");
}

} // namespace vx::VX_BACKEND_NS
