// Driver of the normal vectors; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "steps/features/Means.h"
#include "steps/features/kernels.h"

#include <cstddef>
#include <iostream>

namespace vx::VX_BACKEND_NS {

/// Both phases over one layout, each launch bracketed by the profiler and followed by the
/// device check.
template <class MeanKernel, class NormalKernel, class T, class Points, class Index, class Groups,
          class MeansView>
void runNormalPhases(ClassifierCore<T>& c, const LaunchConfig& cfg, bool ready, Points pts, Index itg,
                     Groups groups, MeansView means)
{
    const auto& par = c.par;
    mem::profilerStart(c.backend());
    if (ready)
        launch(cfg, c.pointCount,
               MeanKernel{pts, itg, groups, c.gridParameters, means, c.pointCount, par.Inner_NormalVectors,
                          par.NNSearchRange_NormalVectors, par.MinimalNumberOfNN});
    mem::profilerStop(c.backend());
    c.checkDeviceError();

    c.msg(3, "Normal Computation phase 2");
    mem::profilerStart(c.backend());
    if (ready)
        launch(cfg, c.pointCount,
               NormalKernel{pts, itg, groups, c.gridParameters, means, c.allowed(), c.pointCount,
                            par.Inner_NormalVectors, par.NNSearchRange_NormalVectors, par.MinimalNumberOfNN,
                            c.slots.TargetClass, c.slots.TargetClass2, c.slots.TargetClass3});
    mem::profilerStop(c.backend());
    c.checkDeviceError();
}

template <class T> void runNormals(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    const std::size_t points = c.pointCount > 0 ? static_cast<std::size_t>(c.pointCount) : 0;

    // Measured against the 12 bytes of a float record in both precisions. The warning does not
    // stop the step: an allocation that really fails shows up at the next device check.
    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    if (points * 12 >= freeBytes)
        c.msg(0, "ERROR! Not enough memory, normal vector computation terminated");

    MeanBuffers<T> means;
    means.allocate(c.backend(), c.soa, points);
    c.checkDeviceError();

    std::size_t heap = 0, stack = 0;
    mem::limits(c.backend(), heap, stack);
    std::cout << "Heap: " << heap << " Stack: " << stack << '\n' << std::flush;

    c.msg(2, c.soa ? "Normal Computation started" : "Normal Computation started AOS");
    std::cout << cfg.threads << ' ' << cfg.blocks << ' ' << c.pointCount << ' ' << c.par.Inner_NormalVectors
              << ' ' << c.par.NNSearchRange_NormalVectors << ' ' << c.par.MinimalNumberOfNN << '\n'
              << std::flush;

    const bool ready = c.requireGrid();
    if (c.soa)
        runNormalPhases<k_NVPCASVD_calculateMeanSoA<T>, K_NVPCASVD_calculateNormalsSoA<T>>(
            c, cfg, ready, c.soaPoints(), c.soaIndex(), c.soaGroups(), means.soa());
    else
        runNormalPhases<k_NVPCASVD_calculateMean<T>, K_NVPCASVD_calculateNormals<T>>(
            c, cfg, ready, c.aosPoints(), c.aosIndex(), c.aosGroups(), means.aos());

    c.msg(2, "Normal Computation complete!");
    means.reset();
}

} // namespace vx::VX_BACKEND_NS
