// Driver of the iterative ground growth; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "steps/common/RemapClass.h"
#include "steps/common/StepDrivers.h"
#include "steps/ground/GrowthKernels.h"

namespace vx::VX_BACKEND_NS {

/// Points of class cls among the first n, in raw storage order.
template <class T> long long countClass(AosPoints<T> pts, int n, int cls)
{
    return countIf(pts.p, n, PointClassIs<T>{cls});
}
inline long long countClass(SoaPoints pts, int n, int cls)
{
    return countIf(pts.s.classification, n, IntEquals{cls});
}

/// Points of class cls over the whole cloud.
template <class T> long long countGrownClass(StepContext<T>& c, int cls)
{
    return c.visit([&](auto layout) { return countClass(c.points(layout), c.pointCount(), cls); });
}

/// One growth iteration and the remap of its marks: the passes of the layout, each launch
/// bracketed by the profiler and checked.
template <class T> void growGroundOnce(StepContext<T>& c, const LaunchConfig& cfg, const GrowthParams<T>& par)
{
    const int n = c.pointCount();
    c.visit([&](auto layout) {
        using L = decltype(layout);
        GrowthPasses<T, L>::run(c, layout, par, [&](const auto& kernel) {
            mem::profilerStart(c.backend());
            launch(cfg, n, kernel);
            mem::profilerStop(c.backend());
            c.checkDeviceError();
        });
        launch(cfg, n, k_remapClass<T, L>{c.points(layout), par.markClass, par.groundClass});
    });
    c.checkDeviceError();
}

template <class T> void runGroundGrowth(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    const bool ready = c.requireGrid();
    // The class grown is the one the call names: it is what counts as ground in the plane search,
    // what the marks become, and what is counted.
    const int groundClass = c.slots().TargetClass;
    const GrowthParams<T> par{c.par().GroundGrowthDistanceFromPlane,
                              c.par().GroundGrowthMinCosinus,
                              c.par().GroundGrowthRange,
                              c.par().GroundGrowthMaxHeightDifference,
                              c.par().GroundGrowthRangeLowest,
                              c.par().GroundGrowthMaxCosinusPar2,
                              groundClass,
                              250,
                              false};
    long long previous = ready ? countGrownClass(c, groundClass) : 0;
    if (c.par().GroundGrowthIterations < 1)
        return;
    for (int k = 1;; ++k) {
        if (ready)
            growGroundOnce(c, cfg, par);
        const long long now = ready ? countGrownClass(c, groundClass) : 0;
        const long long difference = now - previous;
        c.msg(2, "Iteration: ", k);
        c.msg(2, "Ground points difference: ", difference);
        if (difference == 0 || k >= c.par().GroundGrowthIterations)
            break;
        previous = now;
    }
}

} // namespace vx::VX_BACKEND_NS
