// The two passes of the steps that judge every point and then mark the points judged: a verdict
// byte a point, the judging kernel, the marking kernel; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/Marks.h"
#include "steps/common/OrderedCoordinates.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vx::VX_BACKEND_NS {

/// Launches over every point the judging kernel that judge(layout, views, verdict) makes, then
/// gives newClass to the points whose verdict is 1. Judging before marking keeps the verdicts
/// free of the order in which points are judged. Returns how many were marked, or -1 with the
/// message "ERROR! <search> aborted - too little memory!" when the verdicts find no memory.
template <class T, class MakeJudge>
long long judgeAndMark(StepContext<T>& c, const char* search, int newClass, MakeJudge&& judge)
{
    const int n = c.pointCount();
    Buffer<uint8_t> verdict(c.backend(), static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!verdict) {
        c.msg(0, std::string("ERROR! ") + search + " aborted - too little memory!");
        return -1;
    }
    c.visit([&](auto layout) {
        using L = decltype(layout);
        orderedXyz(c, layout);
        const auto views = c.views(layout);
        const LaunchConfig cfg = c.launchConfig(n);
        launch(cfg, n, judge(layout, views, verdict.data()));
        c.checkDeviceError();
        launch(cfg, n, k_markVerdicts<T, L>{views, verdict.data(), newClass});
        c.checkDeviceError();
    });
    return static_cast<long long>(countIf(verdict.data(), n, IsMarked{}));
}

} // namespace vx::VX_BACKEND_NS
