// Driver of the normal vectors; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "exec/Memory.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/StepDrivers.h"
#include "steps/features/Means.h"
#include "steps/features/kernels.h"

#include <cstddef>
#include <iostream>

namespace vx::VX_BACKEND_NS {

/// The step's start line names the records layout.
inline const char* startMessage(Records)
{
    return "Normal Computation started AOS";
}
inline const char* startMessage(Fields)
{
    return "Normal Computation started";
}

/// Both phases over one layout, each launch bracketed by the profiler and followed by the
/// device check.
template <class T, class L>
void runNormalPhases(StepContext<T>& c, const LaunchConfig& cfg, bool ready, L layout,
                     const MeanBuffers<T>& buffers)
{
    const auto pts = c.points(layout);
    const auto itg = c.index(layout);
    const auto groups = c.groups(layout);
    const auto means = buffers.view(layout);
    const auto xyz = ready ? orderedXyz(c, layout) : OrderedXyz<typename PointsOf<T, L>::Real>{};
    const auto& par = c.par();
    mem::profilerStart(c.backend());
    if (ready)
        launch(cfg, c.pointCount(),
               k_NVPCASVD_calculateMean<T, L>{pts, itg, groups, xyz, c.gridParameters(), means,
                                              c.pointCount(), par.Inner_NormalVectors,
                                              par.NNSearchRange_NormalVectors, par.MinimalNumberOfNN});
    mem::profilerStop(c.backend());
    c.checkDeviceError();

    c.msg(3, "Normal Computation phase 2");
    mem::profilerStart(c.backend());
    if (ready)
        launch(cfg, c.pointCount(),
               K_NVPCASVD_calculateNormals<T, L>{
                   pts, itg, groups, xyz, c.gridParameters(), means, c.allowed(), c.pointCount(),
                   par.Inner_NormalVectors, par.NNSearchRange_NormalVectors, par.MinimalNumberOfNN,
                   c.slots().TargetClass, c.slots().TargetClass2, c.slots().TargetClass3});
    mem::profilerStop(c.backend());
    c.checkDeviceError();
}

template <class T> void runNormals(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    const std::size_t points = c.pointCount() > 0 ? static_cast<std::size_t>(c.pointCount()) : 0;

    // Measured against the 12 bytes of a float record in both precisions. The warning does not
    // stop the step: an allocation that really fails shows up at the next device check.
    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    if (points * 12 >= freeBytes)
        c.msg(0, "ERROR! Not enough memory, normal vector computation terminated");

    MeanBuffers<T> means;
    c.visit([&](auto layout) { means.allocate(layout, c.backend(), points); });
    c.checkDeviceError();

    std::size_t heap = 0, stack = 0;
    mem::limits(c.backend(), heap, stack);
    std::cout << "Heap: " << heap << " Stack: " << stack << '\n' << std::flush;

    c.msg(2, c.visit([](auto layout) { return startMessage(layout); }));
    std::cout << cfg.threads << ' ' << cfg.blocks << ' ' << c.pointCount() << ' '
              << c.par().Inner_NormalVectors << ' ' << c.par().NNSearchRange_NormalVectors << ' '
              << c.par().MinimalNumberOfNN << '\n'
              << std::flush;

    const bool ready = c.requireGrid();
    c.visit([&](auto layout) { runNormalPhases(c, cfg, ready, layout, means); });

    c.msg(2, "Normal Computation complete!");
    means.reset();
    // The cubes are the normals' own: the steps after them decompose again.
    c.visit([&](auto layout) { c.orderedBuffer(layout).reset(); });
}

} // namespace vx::VX_BACKEND_NS
