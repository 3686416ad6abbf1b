// Driver of the class reset; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "steps/common/EngineViews.h"
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

template <class T> void runResetClasses(ClassifierCore<T>& c)
{
    printResetLine(static_cast<double>(c.par.ResetOptionalRange), c.par.ResetOptionalClass);
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    if (c.requireGrid()) {
        if (c.soa)
            launch(cfg, c.pointCount,
                   k_resetClassesSoA<T>{soaViews(c), c.slots.TargetClass, c.par.ResetOptionalRange,
                                        c.par.ResetOptionalClass});
        else
            launch(cfg, c.pointCount,
                   k_resetClasses<T>{aosViews(c), c.slots.TargetClass, c.par.ResetOptionalRange,
                                     c.par.ResetOptionalClass});
    }
    c.checkDeviceError();
    c.msg(2, "Classes Reset done!");
}

} // namespace vx::VX_BACKEND_NS
