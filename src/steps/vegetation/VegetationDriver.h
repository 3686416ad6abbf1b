// Driver of the vegetation step; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Launch.h"
#include "steps/common/EngineViews.h"
#include "steps/vegetation/kernels.h"

#include <iostream>

namespace vx::VX_BACKEND_NS {

/// The filter, the two spreading passes and the completion over one layout's views.
/// SoaForm picks the per-field rules where they differ (the completion's skipping of empty cells).
template <bool SoaForm, class T, class Points, class Index, class Groups>
void runVegetationPasses(ClassifierCore<T>& c, const LaunchConfig& cfg, bool ready,
                         const NeighbourhoodKernel<T, Points, Index, Groups>& views)
{
    const VegetationParams<T> p = vegetationParams(c.par, c.slots);
    const int n = c.pointCount;

    if (ready)
        launch(cfg, n, FilterPlants<T, Points, Index, Groups>{views, p});
    c.checkDeviceError();

    const int iterations = c.par.VegetationIterations;
    if (iterations > 0) {
        for (int i = 1; i <= iterations; ++i) {
            if (ready)
                launch(cfg, n, IteratePlants<T, Points, Index, Groups>{views, p});
            c.checkDeviceError();
            c.msg(2, "Vegetation Iteration: ", i);
        }
    }
    if (iterations >= 1) {
        for (int i = 1; i <= iterations; ++i) {
            if (ready)
                launch(cfg, n, IteratePlantsSecond<T, Points, Index, Groups>{views, p});
            c.checkDeviceError();
            c.msg(2, "Vegetation Iteration: ", i);
        }
    }

    if (ready)
        launch(cfg, n, CompletePlants<T, Points, Index, Groups>{views, p});
    c.checkDeviceError();
    c.msg(2, "Ratio", c.par.VegetationRatio);
    if (ready)
        launch(cfg, n, CompletePlantsPhase2<T, Points, Index, Groups, SoaForm>{views, p});
    c.checkDeviceError();
    c.msg(2, "Vegetation complete!");
}

template <class T> void runVegetation(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    // The parameter lines print whatever the message level, values separated by single blanks.
    std::cout << c.par.VegetationRange << ' ' << c.par.VegetationDfG << ' ' << c.par.VegetationMaxCos << ' '
              << c.par.VegetationProcOfChaos << ' ' << c.par.VegetationProcOfGhosts << '\n'
              << std::flush;
    std::cout << c.slots.GroundClass << ' ' << c.slots.BuildingClass << ' ' << c.slots.ChaosClass << '\n'
              << std::flush;
    const bool ready = c.requireGrid();
    if (c.soa)
        runVegetationPasses<true>(c, cfg, ready, soaViews(c));
    else
        runVegetationPasses<false>(c, cfg, ready, aosViews(c));
}

} // namespace vx::VX_BACKEND_NS
