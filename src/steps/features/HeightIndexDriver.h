// Driver of the height index; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "steps/common/StepDrivers.h"
#include "steps/features/kernels.h"

namespace vx::VX_BACKEND_NS {

/// Cells larger than this many points are sampled when their height span is taken.
constexpr int kHeightIndexSampling = 1000;

template <class T> void runHeightIndex(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    if (c.requireGrid())
        c.visit([&](auto layout) {
            launch(cfg, c.pointCount(),
                   k_calculateHeightIndex<T, decltype(layout)>{
                       c.points(layout), c.index(layout), c.groups(layout), c.allowed(), c.pointCount(),
                       c.gridParameters(), c.slots().ReferenceClass, kHeightIndexSampling});
        });
    c.checkDeviceError();
}

} // namespace vx::VX_BACKEND_NS
