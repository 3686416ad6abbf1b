// Driver of the low-point correction; compiled once per backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "steps/common/StepDrivers.h"
#include "steps/ground/GroundModelKernels.h"

#include <thrust/count.h>
#include <thrust/iterator/counting_iterator.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace vx::VX_BACKEND_NS {

/// Cells whose model normal is still exactly zero.
template <class T> long long cellsWithoutGround(const GroundModelState<T>& m, Records, int cells)
{
    return countIf(m.groundModel.data(), cells, NoGroundGroups<T>{});
}
template <class T> long long cellsWithoutGround(const GroundModelState<T>& m, Fields, int cells)
{
    return static_cast<long long>(thrust::count_if(policy(), thrust::counting_iterator<int>(0),
                                                   thrust::counting_iterator<int>(cells),
                                                   NoGroundGroupsSoA{m.groundModelSoA.view()}));
}

/// A fresh model, all zeros: the per-cell kernels run with the points' launch size, so cells
/// beyond it are never gathered and must read as cells without ground rather than as garbage.
template <class T>
AosGroundModel<T> allocateGroundModel(GroundModelState<T>& m, Records, Backend b, std::size_t cells)
{
    m.groundModel.allocate(b, cells);
    const std::vector<VX_GroundModel<T>> zeros(cells, VX_GroundModel<T>{});
    m.groundModel.upload(zeros.data(), cells);
    return {m.groundModel.data()};
}
template <class T>
SoaGroundModel allocateGroundModel(GroundModelState<T>& m, Fields, Backend b, std::size_t cells)
{
    const std::vector<float> zeros(cells, 0.f);
    const std::unique_ptr<bool[]> noGround(new bool[cells > 0 ? cells : 1]());
    DeviceGroundModelSoA& s = m.groundModelSoA;
    for (Buffer<float>* a : {&s.x, &s.y, &s.z, &s.nx, &s.ny, &s.nz}) {
        a->allocate(b, cells);
        a->upload(zeros.data(), cells);
    }
    s.hasGround.allocate(b, cells);
    s.hasGround.upload(noGround.get(), cells);
    return {s.view()};
}

template <class T, class L>
void correctLowPoints(StepContext<T>& c, const LaunchConfig& cfg, GroundModelState<T>& state, L layout)
{
    const int cells = c.groupCount();
    const auto model = allocateGroundModel(state, layout, c.backend(), static_cast<std::size_t>(cells));
    const auto countEmpty = [&] { return cells < 1 ? 0 : cellsWithoutGround(state, layout, cells); };
    c.msg(4, "Gathering ground info:", c.slots().GroundClass);
    c.msg(4, "Groups:", cells);
    // The per-cell kernels deliberately keep the points' launch size.
    launch(cfg, cells,
           k_gatherGroundInfo<T, L>{c.points(layout), c.index(layout), c.groups(layout), c.gridParameters(),
                                    cells, model, c.slots().GroundClass});
    c.checkDeviceError();

    long long previous = countEmpty();
    c.msg(4, "Info spread", previous);
    while (previous != 0) {
        launch(cfg, cells, k_groundInfoSpread<T, L>{model, c.gridParameters(), cells});
        c.checkDeviceError();
        const long long now = countEmpty();
        c.msg(4, "Info spread: ", now);
        c.msg(4, "Groups: ", cells);
        if (now == previous)
            break;
        previous = now;
    }

    c.msg(4, "Filtering low points: ", cfg.blocks);
    launch(cfg, c.pointCount(),
           k_filterLowPoints<T, L>{c.points(layout), c.index(layout), c.groups(layout), c.gridParameters(),
                                   model, c.pointCount(), c.par().LowPointFilteringRange,
                                   c.slots().ReferenceClass, c.slots().GroundClass, c.slots().TargetClass});
    c.checkDeviceError();
}

template <class T> void runLowPointCorrection(StepContext<T>& c)
{
    const LaunchConfig cfg = c.launchConfig(c.pointCount());
    // A new call replaces the model of the previous one; freeing it first also lets the memory
    // check below count the space it held.
    auto& state = c.template state<GroundModelState<T>>();
    state.reset();
    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    const std::size_t need = static_cast<std::size_t>(c.groupCount()) * sizeof(VX_GroundModel<T>);
    if (!(need < freeBytes)) {
        c.msg(0, "ERROR! Low point correction aborted - too little memory!");
        return;
    }
    if (!c.requireGrid())
        return;
    c.visit([&](auto layout) { correctLowPoints(c, cfg, state, layout); });
}

} // namespace vx::VX_BACKEND_NS
