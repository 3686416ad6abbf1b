// Drivers of the growth by echoes, of the roofs and of the canopy; compiled once per backend.
#pragma once

#include "steps/roofs/EchoGrowthKernels.h"
#include "steps/roofs/RoofEchoesDriver.h"

#include <cstddef>
#include <cstdint>

namespace vx::VX_BACKEND_NS {

/// Grows the classes of `par` pass after pass until no point joins (see JudgeEchoGrowth),
/// marking by height with low and high; returns the points grown. Each pass adds a rim of at
/// most the range; the cap keeps a pathological cloud from running on.
template <class T>
std::size_t growByEchoes(StepContext<T>& c, const EchoGrowthParams<T>& par, T low, T high, const char* what)
{
    constexpr int kMostPasses = 100;
    const int n = c.pointCount();
    const auto& heights = c.template state<HeightAboveGroundState>();
    const Backend be = c.backend();
    Buffer<uint8_t> counts(be, static_cast<std::size_t>(n)), verdict(be, static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!counts || !verdict) {
        c.msg(0, std::string("ERROR! ") + what + " aborted - too little memory!");
        return 0;
    }
    counts.upload(c.returnCounts().data(), static_cast<std::size_t>(n));
    const LaunchConfig cfg = c.launchConfig(n);
    std::size_t grown = 0;
    c.visit([&](auto layout) {
        using L = decltype(layout);
        orderedXyz(c, layout);
        const auto views = c.views(layout);
        for (int pass = 0; pass < kMostPasses; ++pass) {
            launch(
                cfg, n,
                k_judgeEchoGrowth<T, L>{views, heights.heights.data(), counts.data(), verdict.data(), par});
            c.checkDeviceError();
            const std::size_t joined = countIf(verdict.data(), n, IsMarked{});
            if (joined == 0)
                break;
            launch(cfg, n,
                   k_markGrown<T, L>{views,
                                     verdict.data(),
                                     heights.heights.data(),
                                     low,
                                     high,
                                     {par.classes[0], par.classes[1], par.classes[2]}});
            c.checkDeviceError();
            grown += joined;
        }
    });
    return grown;
}

/// Grows the roofs over the raised single-return points they surround.
template <class T> void runRoofGrowth(StepContext<T>& c)
{
    const int buildingClass = c.slots().TargetClass;
    c.msg(4, "Roof growth by echoes, class", buildingClass);
    if (!echoesUsable(c, "Roof growth by echoes", "Roof growth by echoes"))
        return;
    const auto& p = c.par();
    const EchoGrowthParams<T> par{p.EchoRange,
                                  p.EchoMinHeight,
                                  p.EchoGrowthShare,
                                  false,
                                  {buildingClass, buildingClass, buildingClass}};
    const std::size_t grown = growByEchoes(c, par, T(0), T(0), "Roof growth by echoes");
    c.msg(2, "Roof points grown by echoes:", grown);
    c.msg(2, "Roof growth by echoes done!");
}

/// Grows the canopy over the raised points of pulses with several returns that it surrounds,
/// each point taking the tier of its height.
template <class T> void runVegetationGrowth(StepContext<T>& c)
{
    const auto& s = c.slots();
    c.msg(4, "Vegetation growth by echoes, classes", s.TargetClass);
    if (!echoesUsable(c, "Vegetation growth by echoes", "Vegetation growth by echoes"))
        return;
    const auto& p = c.par();
    const EchoGrowthParams<T> par{p.EchoRange,
                                  p.VegetationLowLimit,
                                  p.EchoGrowthShare,
                                  true,
                                  {s.TargetClass, s.TargetClass2, s.TargetClass3}};
    const std::size_t grown =
        growByEchoes(c, par, p.VegetationLowLimit, p.VegetationHighLimit, "Vegetation growth by echoes");
    c.msg(2, "Vegetation points grown by echoes:", grown);
    c.msg(2, "Vegetation growth by echoes done!");
}

} // namespace vx::VX_BACKEND_NS
