// Driver of the class reset; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Launch.h"
#include "steps/common/InPlaceLaunch.h"
#include "steps/common/StepDrivers.h"
#include "steps/ground/kernels.h"

#include <cstdint>
#include <cstring>
#include <iostream>

namespace vx::VX_BACKEND_NS {

/// The reset's announcement has always shown the low 32 bits of the range's double bit pattern
/// where the range was meant to be, and no line end; callers parse it as it is.
inline void printResetLine(double range, int optionalClass)
{
    uint64_t bits = 0;
    std::memcpy(&bits, &range, sizeof bits);
    const int32_t low = static_cast<int32_t>(static_cast<uint32_t>(bits & 0xffffffffu));
    std::cout << "Range: " << low << ", Class: " << optionalClass << std::flush;
}

template <class T> void runResetClasses(StepContext<T>& c)
{
    printResetLine(static_cast<double>(c.par().ResetOptionalRange), c.par().ResetOptionalClass);
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    // With a range the reset reads the classes it writes (the optional class of its neighbours).
    const bool readsNeighbours = c.par().ResetOptionalRange != 0;
    if (c.requireGrid())
        c.visit([&](auto layout) {
            const auto kernel =
                k_resetClasses<T, decltype(layout)>{c.views(layout), c.slots().TargetClass,
                                                    c.par().ResetOptionalRange, c.par().ResetOptionalClass};
            if (readsNeighbours)
                launchInPlace(c, cfg, c.pointCount(), kernel);
            else
                launch(cfg, c.pointCount(), kernel);
        });
    c.checkDeviceError();
    c.msg(2, "Classes Reset done!");
}

} // namespace vx::VX_BACKEND_NS
