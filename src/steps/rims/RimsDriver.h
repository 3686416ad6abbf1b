// Driver of the ground-rim step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "steps/common/HeightAboveGroundState.h"
#include "steps/common/JudgeAndMark.h"
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
    const long long marked = judgeAndMark(
        c, "Ground rim search", groundClass, [&](auto layout, const auto& views, uint8_t* verdict) {
            return k_judgeRims<T, decltype(layout)>{views, heights.heights.data(), verdict, par};
        });
    if (marked < 0)
        return;
    c.msg(2, "Ground rim points:", marked);
    c.msg(2, "Ground rim search done!");
}

} // namespace vx::VX_BACKEND_NS
