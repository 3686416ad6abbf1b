// Driver of the iterative ground growth; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "steps/common/EngineViews.h"
#include "steps/ground/GrowthKernels.h"
#include "steps/common/RemapClass.h"

namespace vx::VX_BACKEND_NS {

/// Points of class cls over the whole cloud, in raw storage order.
template <class T> long long countGrownClass(ClassifierCore<T>& c, int cls)
{
    if (c.soa)
        return countIf(c.deviceSoA.classification.data(), c.pointCount, IntEquals{cls});
    return countIf(c.devicePoints.data(), c.pointCount, PointClassIs<T>{cls});
}

/// One growth pass and the remap of its marks: the record kernel, or the two per-field kernels
/// one after the other.
template <class T>
void growGroundOnce(ClassifierCore<T>& c, const LaunchConfig& cfg, const GrowthParams<T>& par)
{
    const int n = c.pointCount;
    if (c.soa) {
        mem::profilerStart(c.backend());
        launch(cfg, n, k_growGroundIntSoA<T>{soaViews(c), par});
        mem::profilerStop(c.backend());
        c.checkDeviceError();
        mem::profilerStart(c.backend());
        launch(cfg, n, k_growGroundSoA<T>{soaViews(c), par});
        mem::profilerStop(c.backend());
        c.checkDeviceError();
        launch(cfg, n, k_remapClassSoA{c.soaPoints(), par.markClass, par.groundClass});
    } else {
        launch(cfg, n, k_growGround<T>{aosViews(c), par});
        c.checkDeviceError();
        launch(cfg, n, k_remapClass<T>{c.aosPoints(), par.markClass, par.groundClass});
    }
    c.checkDeviceError();
}

template <class T> void runGroundGrowth(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    const bool ready = c.requireGrid();
    // The class grown is the one the call names: it is what counts as ground in the plane search,
    // what the marks become, and what is counted.
    const int groundClass = c.slots.TargetClass;
    const GrowthParams<T> par{c.par.GroundGrowthDistanceFromPlane,
                              c.par.GroundGrowthMinCosinus,
                              c.par.GroundGrowthRange,
                              c.par.GroundGrowthMaxHeightDifference,
                              c.par.GroundGrowthRangeLowest,
                              c.par.GroundGrowthMaxCosinusPar2,
                              groundClass,
                              250,
                              false};
    long long previous = ready ? countGrownClass(c, groundClass) : 0;
    if (c.par.GroundGrowthIterations < 1)
        return;
    for (int k = 1;; ++k) {
        if (ready)
            growGroundOnce(c, cfg, par);
        const long long now = ready ? countGrownClass(c, groundClass) : 0;
        const long long difference = now - previous;
        c.msg(2, "Iteration: ", k);
        c.msg(2, "Ground points difference: ", difference);
        if (difference == 0 || k >= c.par.GroundGrowthIterations)
            break;
        previous = now;
    }
}

} // namespace vx::VX_BACKEND_NS
