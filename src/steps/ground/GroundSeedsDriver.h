// Driver of the ground seed search; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "steps/common/StepDrivers.h"
#include "steps/ground/kernels.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runGroundSeeds(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    c.msg(3, "Filtering ground seed points ", c.par().SeedSearchMaxHindeks);
    if (c.requireGrid())
        c.visit([&](auto layout) {
            launch(cfg, c.pointCount(),
                   k_findGroundSeeds<T, decltype(layout)>{c.views(layout), c.par().SeedSearchMaxHindeks,
                                                          c.slots().GroundClass});
        });
    c.checkDeviceError();
}

} // namespace vx::VX_BACKEND_NS
