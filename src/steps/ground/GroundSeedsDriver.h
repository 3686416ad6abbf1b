// Driver of the ground seed search; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "steps/common/EngineViews.h"
#include "steps/ground/kernels.h"

namespace vx::VX_BACKEND_NS {

template <class T> void runGroundSeeds(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    c.msg(3, "Filtering ground seed points ", c.par.SeedSearchMaxHindeks);
    if (c.requireGrid()) {
        if (c.soa)
            launch(cfg, c.pointCount,
                   k_findGroundSeedsSoA<T>{soaViews(c), c.par.SeedSearchMaxHindeks, c.slots.GroundClass});
        else
            launch(cfg, c.pointCount,
                   k_findGroundSeeds<T>{aosViews(c), c.par.SeedSearchMaxHindeks, c.slots.GroundClass});
    }
    c.checkDeviceError();
}

} // namespace vx::VX_BACKEND_NS
