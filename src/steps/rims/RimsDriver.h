// Driver of the ground-rim step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/HeightAboveGroundState.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"
#include "steps/rims/kernels.h"

#include <cstddef>
#include <cstdint>

namespace vx::VX_BACKEND_NS {

template <class T> void runRims(StepContext<T>& c)
{
    const int n = c.pointCount();
    const int groundClass = c.slots().GroundClass;
    c.msg(4, "Ground rims, class", groundClass);
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return;
    }
    const auto& p = c.par();
    if (!c.requireGrid() ||
        !planarGridCovers(c, static_cast<double>(p.RimRange), "Ground rim search", "RimRange"))
        return;
    const auto& heights = c.template state<HeightAboveGroundState>();
    if (!heights.heldFor(c.cloudGeneration(), static_cast<std::size_t>(n))) {
        c.msg(0, "ERROR! No heights above ground for this cloud; run computeHeightAboveGround first");
        return;
    }
    const RimParams<T> par{p.RimRange, p.RimDistance, p.RimHeight, groundClass};
    c.msg(4, "Rim range, distance, height:",
          toText(par.range) + " " + toText(par.distance) + " " + toText(par.height));
    Buffer<uint8_t> verdict(c.backend(), static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!verdict) {
        c.msg(0, "ERROR! Ground rim search aborted - too little memory!");
        return;
    }
    c.visit([&](auto layout) {
        using L = decltype(layout);
        orderedXyz(c, layout);
        const auto views = c.views(layout);
        const LaunchConfig cfg = c.launchConfig(n);
        launch(cfg, n, k_judgeRims<T, L>{views, heights.heights.data(), verdict.data(), par});
        c.checkDeviceError();
        launch(cfg, n, k_markVerdicts<T, L>{views, verdict.data(), groundClass});
        c.checkDeviceError();
    });
    c.msg(2, "Ground rim points:", countIf(verdict.data(), n, IsMarked{}));
    c.msg(2, "Ground rim search done!");
}

} // namespace vx::VX_BACKEND_NS
