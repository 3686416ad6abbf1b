// Driver of the low-point correction; compiled once per backend.
#pragma once

#include "core/ClassifierCore.h"
#include "steps/common/StepDrivers.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "steps/ground/GroundModelKernels.h"

#include <thrust/count.h>
#include <thrust/iterator/counting_iterator.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace vx::VX_BACKEND_NS {

/// Cells whose model normal is still exactly zero.
template <class T> long long countCellsWithoutGround(ClassifierCore<T>& c)
{
    const int cells = c.groupCount;
    if (cells < 1)
        return 0;
    if (!c.soa)
        return countIf(c.stepStates.template get<GroundModelState<T>>().groundModel.data(), cells, NoGroundGroups<T>{});
    return static_cast<long long>(thrust::count_if(policy(), thrust::counting_iterator<int>(0),
                                                   thrust::counting_iterator<int>(cells),
                                                   NoGroundGroupsSoA{c.stepStates.template get<GroundModelState<T>>().groundModelSoA.view()}));
}

/// A fresh model, all zeros: the per-cell kernels run with the points' launch size, so cells
/// beyond it are never gathered and must read as cells without ground rather than as garbage.
template <class T> void allocateGroundModel(ClassifierCore<T>& c)
{
    const std::size_t cells = static_cast<std::size_t>(c.groupCount);
    const Backend b = c.backend();
    if (!c.soa) {
        c.stepStates.template get<GroundModelState<T>>().groundModel.allocate(b, cells);
        const std::vector<VX_GroundModel<T>> zeros(cells, VX_GroundModel<T>{});
        c.stepStates.template get<GroundModelState<T>>().groundModel.upload(zeros.data(), cells);
        return;
    }
    const std::vector<float> zeros(cells, 0.f);
    const std::unique_ptr<bool[]> noGround(new bool[cells > 0 ? cells : 1]());
    DeviceGroundModelSoA& m = c.stepStates.template get<GroundModelState<T>>().groundModelSoA;
    for (Buffer<float>* a : {&m.x, &m.y, &m.z, &m.nx, &m.ny, &m.nz}) {
        a->allocate(b, cells);
        a->upload(zeros.data(), cells);
    }
    m.hasGround.allocate(b, cells);
    m.hasGround.upload(noGround.get(), cells);
}

template <class T, class Model, class Points, class Index, class Groups>
void correctLowPoints(ClassifierCore<T>& c, const LaunchConfig& cfg, Model model, Points pts, Index itg,
                      Groups groups)
{
    const int cells = c.groupCount;
    c.msg(4, "Gathering ground info:", c.slots.GroundClass);
    c.msg(4, "Groups:", cells);
    // The per-cell kernels deliberately keep the points' launch size.
    launch(cfg, cells,
           GatherGroundInfo<T, Points, Index, Groups, Model>{pts, itg, groups, c.gridParameters, cells, model,
                                                             c.slots.GroundClass});
    c.checkDeviceError();

    long long previous = countCellsWithoutGround(c);
    c.msg(4, "Info spread", previous);
    while (previous != 0) {
        launch(cfg, cells, GroundInfoSpread<T, Model>{model, c.gridParameters, cells});
        c.checkDeviceError();
        const long long now = countCellsWithoutGround(c);
        c.msg(4, "Info spread: ", now);
        c.msg(4, "Groups: ", cells);
        if (now == previous)
            break;
        previous = now;
    }

    c.msg(4, "Filtering low points: ", cfg.blocks);
    launch(cfg, c.pointCount,
           FilterLowPoints<T, Points, Index, Groups, Model>{
               pts, itg, groups, c.gridParameters, model, c.pointCount, c.par.LowPointFilteringRange,
               c.slots.ReferenceClass, c.slots.GroundClass, c.slots.TargetClass});
    c.checkDeviceError();
}

template <class T> void runLowPointCorrection(ClassifierCore<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount);
    // A new call replaces the model of the previous one; freeing it first also lets the memory
    // check below count the space it held.
    c.stepStates.template get<GroundModelState<T>>().reset();
    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    const std::size_t need = static_cast<std::size_t>(c.groupCount) * sizeof(VX_GroundModel<T>);
    if (!(need < freeBytes)) {
        c.msg(0, "ERROR! Low point correction aborted - too little memory!");
        return;
    }
    if (!c.requireGrid())
        return;
    allocateGroundModel(c);
    if (c.soa)
        correctLowPoints<T>(c, cfg, SoaGroundModel{c.stepStates.template get<GroundModelState<T>>().groundModelSoA.view()}, c.soaPoints(), c.soaIndex(),
                            c.soaGroups());
    else
        correctLowPoints<T>(c, cfg, AosGroundModel<T>{c.stepStates.template get<GroundModelState<T>>().groundModel.data()}, c.aosPoints(), c.aosIndex(),
                            c.aosGroups());
}

} // namespace vx::VX_BACKEND_NS
