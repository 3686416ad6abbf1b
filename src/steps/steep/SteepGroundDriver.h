// Driver of the steep-ground step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/OrderedCoordinates.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"
#include "steps/steep/kernels.h"

#include <cstddef>
#include <cstdint>

namespace vx::VX_BACKEND_NS {

/// Takes faces into the ground pass after pass until no point joins (see JudgeSteepGround). Each
/// pass adds a rim of at most the range; the cap keeps a pathological cloud from running on.
template <class T> void runSteepGround(StepContext<T>& c)
{
    constexpr int kMostPasses = 100;
    const int n = c.pointCount();
    const int groundClass = c.slots().TargetClass;
    c.msg(4, "Steep ground, class", groundClass);
    // Nothing on the backend: the cloud (not empty, the facade sees to that) was never uploaded
    // by a decomposition, which the engine's own check passes over in silence.
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return;
    }
    const auto& p = c.par();
    if (!c.requireGrid() || !planarGridCovers(c, static_cast<double>(p.SteepGroundRange),
                                              "Steep ground search", "SteepGroundRange"))
        return;
    const SteepGroundParams<T> par{p.SteepGroundRange,     p.SteepGroundGap,       p.SteepGroundRelief,
                                   p.SteepGroundMinPoints, p.SteepGroundVariation, groundClass};
    c.msg(4, "Steep ground range, gap, relief, points, variation:",
          toText(par.range) + " " + toText(par.gap) + " " + toText(par.relief) + " " + toText(par.minPoints) +
              " " + toText(par.variation));
    const Backend be = c.backend();
    const auto& g = c.gridParameters();
    const int cells = g.cellsX * g.cellsY * g.cellsZ;
    Buffer<uint8_t> shape(be, static_cast<std::size_t>(n)), join(be, static_cast<std::size_t>(n));
    Buffer<T> lowest(be, static_cast<std::size_t>(cells)), highest(be, static_cast<std::size_t>(cells));
    c.checkDeviceError();
    if (!shape || !join || !lowest || !highest) {
        c.msg(0, "ERROR! Steep ground search aborted - too little memory!");
        return;
    }
    fillWith(shape.data(), n, uint8_t(ShapeUnknown));
    std::size_t joined = 0;
    c.visit([&](auto layout) {
        using L = decltype(layout);
        orderedXyz(c, layout);
        const auto views = c.views(layout);
        const LaunchConfig cfg = c.launchConfig(n);
        for (int pass = 0; pass < kMostPasses; ++pass) {
            launch(c.launchConfig(cells), cells,
                   k_columnGroundSpan<T, L>{views.pts, views.itg, views.groups, cells, groundClass,
                                            lowest.data(), highest.data()});
            c.checkDeviceError();
            launch(cfg, n,
                   k_judgeSteepGround<T, L>{views, shape.data(), join.data(), lowest.data(), highest.data(),
                                            par});
            c.checkDeviceError();
            const auto grown = countIf(join.data(), n, IsMarked{});
            if (grown == 0)
                break;
            launch(cfg, n, k_markVerdicts<T, L>{views, join.data(), groundClass});
            c.checkDeviceError();
            joined += static_cast<std::size_t>(grown);
        }
    });
    c.msg(2, "Steep ground points:", joined);
    c.msg(2, "Steep ground search done!");
}

} // namespace vx::VX_BACKEND_NS
