// Driver of the roof test by echoes; compiled once per backend. It reads the heights above
// ground that computeHeightAboveGround keeps and the number of returns of each point's pulse
// that the cloud came with.
#pragma once

#include "core/StepContext.h"
#include "exec/Buffer.h"
#include "steps/common/HeightAboveGroundState.h"
#include "steps/common/JudgeAndMark.h"
#include "steps/common/PlanarGrid.h"
#include "steps/common/StepDrivers.h"
#include "steps/roofs/kernels.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vx::VX_BACKEND_NS {

/// Least share of the cloud's points that must come from pulses with several returns for echoes
/// to tell roofs from canopy: below it the sensor or the delivery kept one return a pulse, and
/// every tree would pass for a roof.
constexpr double kLeastMultipleReturnShare = 0.01;

/// Whether the echo steps can run on this cloud: a grid wide enough for EchoRange, heights above
/// ground and return counts for it, and enough pulses with several returns, unless
/// EchoSingleShare is 0: then no test reads the echoes and the shape alone decides. Says why not,
/// naming the step as `search` in the grid's message and as `name` in the returns'.
template <class T> bool echoesUsable(const StepContext<T>& c, const char* search, const char* name)
{
    const int n = c.pointCount();
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return false;
    }
    if (!c.requireGrid() || !planarGridCovers(c, static_cast<double>(c.par().EchoRange), search, "EchoRange"))
        return false;
    const auto& heights = c.template state<HeightAboveGroundState>();
    if (!heights.heldFor(c.cloudGeneration(), static_cast<std::size_t>(n))) {
        c.msg(0, "ERROR! No heights above ground for this cloud; run computeHeightAboveGround first");
        return false;
    }
    const std::vector<uint8_t>& returns = c.returnCounts();
    if (returns.size() != static_cast<std::size_t>(n)) {
        c.msg(0, "ERROR! No return counts for this cloud (load a LAS file or loadReturnCountsFromBuffer); "
                 "step not run");
        return false;
    }
    if (!(c.par().EchoSingleShare > 0))
        return true;
    std::size_t multiple = 0;
    for (uint8_t r : returns)
        multiple += r > 1 ? 1 : 0;
    if (static_cast<double>(multiple) < kLeastMultipleReturnShare * static_cast<double>(n)) {
        c.msg(1,
              std::string(name) +
                  " not run: too few pulses with several returns to tell roofs from canopy. Points of such "
                  "pulses:",
              multiple);
        return false;
    }
    return true;
}

template <class T> void runRoofEchoes(StepContext<T>& c)
{
    const int n = c.pointCount();
    const int buildingClass = c.slots().TargetClass;
    c.msg(4, "Roofs by echoes, class", buildingClass);
    if (!echoesUsable(c, "Roof search by echoes", "Roofs by echoes"))
        return;
    const auto& heights = c.template state<HeightAboveGroundState>();
    const std::vector<uint8_t>& returns = c.returnCounts();

    const RoofEchoParams<T> par{c.par().EchoRange,       c.par().EchoMinHeight, c.par().EchoMinPoints,
                                c.par().EchoSingleShare, c.par().EchoRoughness, buildingClass};
    Buffer<uint8_t> counts(c.backend(), static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!counts) {
        c.msg(0, "ERROR! Roof search by echoes aborted - too little memory!");
        return;
    }
    counts.upload(returns.data(), static_cast<std::size_t>(n));
    const long long marked = judgeAndMark(c, "Roof search by echoes", buildingClass,
                                          [&](auto layout, const auto& views, uint8_t* verdict) {
                                              return k_judgeRoofEchoes<T, decltype(layout)>{
                                                  views, heights.heights.data(), counts.data(), verdict, par};
                                          });
    if (marked < 0)
        return;
    c.msg(2, "Roof points by echoes:", marked);
    c.msg(2, "Roof search by echoes done!");
}

} // namespace vx::VX_BACKEND_NS
