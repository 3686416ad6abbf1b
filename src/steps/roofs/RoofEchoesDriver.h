// Driver of the roof test by echoes; compiled once per backend. It reads the heights above
// ground that computeHeightAboveGround keeps and the number of returns of each point's pulse
// that the cloud came with.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/HeightAboveGroundState.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"
#include "steps/roofs/kernels.h"

#include <cstddef>
#include <cstdint>

namespace vx::VX_BACKEND_NS {

/// Least share of the cloud's points that must come from pulses with several returns for echoes
/// to tell roofs from canopy: below it the sensor or the delivery kept one return a pulse, and
/// every tree would pass for a roof.
constexpr double kLeastMultipleReturnShare = 0.01;

template <class T> void runRoofEchoes(StepContext<T>& c)
{
    const int n = c.pointCount();
    const int buildingClass = c.slots().TargetClass;
    c.msg(4, "Roofs by echoes, class", buildingClass);
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return;
    }
    if (!c.requireGrid() ||
        !planarGridCovers(c, static_cast<double>(c.par().EchoRange), "Roof search by echoes", "EchoRange"))
        return;
    const auto& heights = c.template state<HeightAboveGroundState>();
    if (!heights.heldFor(c.cloudGeneration(), static_cast<std::size_t>(n))) {
        c.msg(0, "ERROR! No heights above ground for this cloud; run computeHeightAboveGround first");
        return;
    }
    const std::vector<uint8_t>& returns = c.returnCounts();
    if (returns.size() != static_cast<std::size_t>(n)) {
        c.msg(0, "ERROR! No return counts for this cloud (load a LAS file or loadReturnCountsFromBuffer); "
                 "step not run");
        return;
    }
    std::size_t multiple = 0;
    for (uint8_t r : returns)
        multiple += r > 1 ? 1 : 0;
    if (static_cast<double>(multiple) < kLeastMultipleReturnShare * static_cast<double>(n)) {
        c.msg(1,
              "Roofs by echoes not run: too few pulses with several returns to tell roofs from canopy. "
              "Points of such pulses:",
              multiple);
        return;
    }

    const RoofEchoParams<T> par{c.par().EchoRange,       c.par().EchoMinHeight, c.par().EchoMinPoints,
                                c.par().EchoSingleShare, c.par().EchoRoughness, buildingClass};
    const Backend be = c.backend();
    Buffer<uint8_t> counts(be, static_cast<std::size_t>(n)), verdict(be, static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!counts || !verdict) {
        c.msg(0, "ERROR! Roof search by echoes aborted - too little memory!");
        return;
    }
    counts.upload(returns.data(), static_cast<std::size_t>(n));
    const LaunchConfig cfg = c.launchConfig(n);
    c.visit([&](auto layout) {
        using L = decltype(layout);
        const auto views = c.views(layout);
        launch(cfg, n,
               k_judgeRoofEchoes<T, L>{views, heights.heights.data(), counts.data(), verdict.data(), par});
        c.checkDeviceError();
        launch(cfg, n, k_markRoofs<T, L>{views, verdict.data(), buildingClass});
        c.checkDeviceError();
    });
    c.msg(2, "Roof points by echoes:", countIf(verdict.data(), n, IsRoof{}));
    c.msg(2, "Roof search by echoes done!");
}

} // namespace vx::VX_BACKEND_NS
