// Driver of the low-point search; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "steps/common/StepDrivers.h"
#include "steps/ground/kernels.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runLowPoints(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    c.msg(4, "Filtering Low Points", c.slots().TargetClass);
    if (c.requireGrid())
        c.visit([&](auto layout) {
            launch(cfg, c.pointCount(),
                   k_findLowPoints<T, decltype(layout)>{c.views(layout), c.slots().TargetClass});
        });
    c.checkDeviceError();
    c.msg(2, "Low Point search done!");
}

} // namespace vx::VX_BACKEND_NS
