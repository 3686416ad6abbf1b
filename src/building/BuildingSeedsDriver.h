// Driver of the step; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "core/StepDrivers.h"
#include "exec/Launch.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runBuildingSeeds(ClassifierCore<T>& c)
{
    (void)c; // not yet implemented
}

} // namespace vx::VX_BACKEND_NS
