// Driver of the noise step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"
#include "steps/noise/kernels.h"

#include <cstddef>
#include <cstdint>

namespace vx::VX_BACKEND_NS {

template <class T> void runNoise(StepContext<T>& c)
{
    const int n = c.pointCount();
    const int lowClass = c.slots().TargetClass, highClass = c.slots().TargetClass2;
    const LaunchConfig cfg = c.launchConfig(n);
    c.msg(4, "Filtering Noise Points", toText(lowClass) + " " + toText(highClass));
    // Nothing on the backend: the cloud (not empty, the facade sees to that) was never uploaded
    // by a decomposition, which the engine's own check passes over in silence.
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return;
    }
    if (!c.requireGrid() ||
        !planarGridCovers(c, static_cast<double>(c.par().NoiseRange), "Noise search", "NoiseRange"))
        return;
    const NoiseParams<T> par{c.par().NoiseRange,       c.par().NoiseMinNeighbours, c.par().NoiseHeightGap,
                             c.par().NoiseGroupPoints, c.par().NoisePitDepth,      c.par().NoisePitGroup};
    c.msg(4, "Noise range, neighbours, gap, group:",
          toText(par.range) + " " + toText(par.minNeighbours) + " " + toText(par.gap) + " " +
              toText(par.groupPoints));
    if (par.pitDepth > 0)
        c.msg(4, "Noise pit depth:", toText(par.pitDepth));
    Buffer<uint8_t> verdict(c.backend(), static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!verdict) {
        c.msg(0, "ERROR! Noise search aborted - too little memory!");
        return;
    }
    c.visit([&](auto layout) {
        using L = decltype(layout);
        orderedXyz(c, layout);
        const auto views = c.views(layout);
        launch(cfg, n, k_judgeNoise<T, L>{views, verdict.data(), par});
        c.checkDeviceError();
        launch(cfg, n, k_markNoise<T, L>{views, verdict.data(), lowClass, highClass});
        c.checkDeviceError();
    });
    c.msg(2, "Low noise points:", countIf(verdict.data(), n, IsNoiseVerdict{NoiseLow}));
    c.msg(2, "High noise points:", countIf(verdict.data(), n, IsNoiseVerdict{NoiseHigh}));
    c.msg(2, "Noise search done!");
}

} // namespace vx::VX_BACKEND_NS
