// Driver of the ground-bump step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/bumps/kernels.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"

#include <cstddef>
#include <cstdint>

namespace vx::VX_BACKEND_NS {

template <class T> void runBumps(StepContext<T>& c)
{
    const int n = c.pointCount();
    const int groundClass = c.slots().GroundClass, bumpClass = c.slots().TargetClass;
    c.msg(4, "Ground bumps, classes", toText(groundClass) + " " + toText(bumpClass));
    // Nothing on the backend: the cloud (not empty, the facade sees to that) was never uploaded
    // by a decomposition, which the engine's own check passes over in silence.
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return;
    }
    const auto& p = c.par();
    if (!c.requireGrid() ||
        !planarGridCovers(c, static_cast<double>(p.BumpRange), "Ground bump search", "BumpRange"))
        return;
    const BumpParams<T> par{p.BumpRange, p.BumpHeight, p.BumpScatterMultiple, groundClass};
    c.msg(4, "Bump range, height, scatter multiple:",
          toText(par.range) + " " + toText(par.height) + " " + toText(par.multiple));
    Buffer<uint8_t> verdict(c.backend(), static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!verdict) {
        c.msg(0, "ERROR! Ground bump search aborted - too little memory!");
        return;
    }
    c.visit([&](auto layout) {
        using L = decltype(layout);
        orderedXyz(c, layout);
        const auto views = c.views(layout);
        const LaunchConfig cfg = c.launchConfig(n);
        launch(cfg, n, k_judgeBumps<T, L>{views, verdict.data(), par});
        c.checkDeviceError();
        launch(cfg, n, k_markVerdicts<T, L>{views, verdict.data(), bumpClass});
        c.checkDeviceError();
    });
    c.msg(2, "Ground bumps:", countIf(verdict.data(), n, IsMarked{}));
    c.msg(2, "Ground bump search done!");
}

} // namespace vx::VX_BACKEND_NS
