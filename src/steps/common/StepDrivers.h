// Backend entry points of every processing step. Each driver takes a step context and runs in
// the layout the context visits.
#pragma once

namespace vx {
template <class T> class StepContext;
}

#define VX_DECLARE_STEP(name)                                                                                \
    namespace vx::host {                                                                                     \
    template <class T> void name(vx::StepContext<T>& c);                                                     \
    }                                                                                                        \
    namespace vx::cuda {                                                                                     \
    template <class T> void name(vx::StepContext<T>& c);                                                     \
    }

VX_DECLARE_STEP(runNormals)
VX_DECLARE_STEP(runHeightIndex)
VX_DECLARE_STEP(runResetClasses)
VX_DECLARE_STEP(runLowPoints)
VX_DECLARE_STEP(runGroundSeeds)
VX_DECLARE_STEP(runGroundGrowth)
VX_DECLARE_STEP(runLowPointCorrection)
VX_DECLARE_STEP(runBuildingSeeds)
VX_DECLARE_STEP(runBuildingGrowth)
VX_DECLARE_STEP(runVegetation)
VX_DECLARE_STEP(runTerrainGround)
VX_DECLARE_STEP(runNoise)
VX_DECLARE_STEP(runHeightAboveGround)
VX_DECLARE_STEP(runHeightTiers)
VX_DECLARE_STEP(runNearGround)
VX_DECLARE_STEP(runRaisedPoints)
VX_DECLARE_STEP(runSteepGround)
VX_DECLARE_STEP(runBumps)
VX_DECLARE_STEP(runRims)
VX_DECLARE_STEP(runWater)
VX_DECLARE_STEP(runRoofEchoes)
VX_DECLARE_STEP(runRoofGrowth)
VX_DECLARE_STEP(runVegetationGrowth)

#undef VX_DECLARE_STEP

/// Explicit instantiations of a driver for both precisions, in the backend of this unit.
#define VX_INSTANTIATE_STEP(name)                                                                            \
    template void vx::VX_BACKEND_NS::name<float>(vx::StepContext<float>&);                                   \
    template void vx::VX_BACKEND_NS::name<double>(vx::StepContext<double>&);
