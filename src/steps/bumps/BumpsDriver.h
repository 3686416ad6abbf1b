// Driver of the ground-bump step; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "steps/bumps/kernels.h"
#include "steps/common/JudgeAndMark.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"

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
    const long long marked = judgeAndMark(c, "Ground bump search", bumpClass,
                                          [&](auto layout, const auto& views, uint8_t* verdict) {
                                              return k_judgeBumps<T, decltype(layout)>{views, verdict, par};
                                          });
    if (marked < 0)
        return;
    c.msg(2, "Ground bumps:", marked);
    c.msg(2, "Ground bump search done!");
}

} // namespace vx::VX_BACKEND_NS
