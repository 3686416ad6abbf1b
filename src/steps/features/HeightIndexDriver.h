// Driver of the height index; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "steps/features/kernels.h"

namespace vx::VX_BACKEND_NS {

/// Cells larger than this many points are sampled when their height span is taken.
constexpr int kHeightIndexSampling = 1000;

template <class T> void runHeightIndex(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    if (c.requireGrid()) {
        if (c.soa)
            launch(cfg, c.pointCount,
                   k_calculateHeightIndexSoA<T>{c.soaPoints(), c.soaIndex(), c.soaGroups(), c.allowed(),
                                                c.pointCount, c.gridParameters, c.slots.ReferenceClass,
                                                kHeightIndexSampling});
        else
            launch(cfg, c.pointCount,
                   k_calculateHeightIndex<T>{c.aosPoints(), c.aosIndex(), c.aosGroups(), c.allowed(),
                                             c.pointCount, c.gridParameters, c.slots.ReferenceClass,
                                             kHeightIndexSampling});
    }
    c.checkDeviceError();
}

} // namespace vx::VX_BACKEND_NS
