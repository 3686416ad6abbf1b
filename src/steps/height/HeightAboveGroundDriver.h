// Drivers of the height above ground and of the tiering by it; compiled once per backend.
//
// The ground surface is a raster over the plan extent of the ground points; points beyond it read
// the surface at its edge. A cell's value is the
// mean height of its ground points: the ground steps have already removed low outliers, and on
// sloping ground the mean is the surface at the points' mean position (close to the cell's
// centre), where the minimum would sit below the surface by up to half the cell's rise; a plane
// through the neighbouring cells' means then moves each mean to the cell's centre. Cells
// without ground are filled ring by ring from their neighbours; whatever the rings have not
// reached after a bounded number of passes takes the value of the nearest filled cell (jump
// flooding, a logarithmic number of passes); relaxation passes then smooth the filled cells onto
// the surface spanned by the cells with ground. Each point reads the raster bilinearly.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "steps/common/HeightAboveGroundState.h"
#include "steps/common/StepDrivers.h"
#include "steps/height/kernels.h"

#include <thrust/iterator/counting_iterator.h>
#include <thrust/transform_reduce.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <sstream>
#include <string>
#include <utility>

namespace vx::VX_BACKEND_NS {

/// Most cells of a ground raster; a larger one is refused rather than allocated.
constexpr double kMaxHagRasterCells = 200e6;
/// Rings filled from the neighbours before the nearest-value fill takes the rest.
constexpr int kHagFillRings = 16;
/// Relaxation passes over the filled cells: four per square of the rings it took to fill them
/// (the passes a hole needs grow with the square of its width), at most this many.
constexpr int kHagRelaxPasses = 256;

inline std::string hagNumber(double x)
{
    std::ostringstream s;
    s.precision(6);
    s << x;
    return s.str();
}

template <class T, class L> PlanBounds<T> planBounds(StepContext<T>& c, L layout, int groundClass)
{
    const T big = std::numeric_limits<T>::max();
    const PlanBounds<T> none{big, big, -big, -big, 0};
    return thrust::transform_reduce(
        policy(), thrust::counting_iterator<int>(0), thrust::counting_iterator<int>(c.pointCount()),
        PointPlanBounds<T, PointsOf<T, L>>{c.points(layout), groundClass, big}, none, MergePlanBounds<T>{});
}

/// Fills every cell of value (cells with ground marked in known) as the header describes.
template <class T>
void fillRaster(StepContext<T>& c, Buffer<T>& value, Buffer<T>& spare, Buffer<int>& seedA, Buffer<int>& seedB,
                const unsigned char* known, const HagRaster<T>& r, const LaunchConfig& cfg)
{
    const int cells = r.cells();
    long long empty = countIf(value.data(), cells, IsNaN<T>{});
    const long long emptyAtStart = empty;
    c.msg(4, "Raster cells without ground:", empty);
    int rings = 0;
    for (; rings < kHagFillRings && empty > 0; ++rings) {
        launch(cfg, cells, FillFromNeighbours<T>{value.data(), spare.data(), r.cellsX, r.cellsY});
        c.checkDeviceError();
        std::swap(value, spare);
        empty = countIf(value.data(), cells, IsNaN<T>{});
    }
    if (empty > 0) {
        c.msg(4, "Cells beyond the filled rings:", empty);
        launch(cfg, cells, SeedCells<T>{value.data(), seedA.data(), cells});
        int largest = 1;
        while (largest < (r.cellsX > r.cellsY ? r.cellsX : r.cellsY) / 2)
            largest *= 2;
        // Halving steps down to 1, then one more pass of 1 that mends the rare wrong choices.
        for (int step = largest, extra = 1; step >= 1; step = step > 1 ? step / 2 : extra--) {
            launch(cfg, cells, JumpFlood{seedA.data(), seedB.data(), r.cellsX, r.cellsY, step});
            c.checkDeviceError();
            std::swap(seedA, seedB);
        }
        launch(cfg, cells, TakeSeedValue<T>{seedA.data(), value.data(), cells});
        c.checkDeviceError();
    }
    if (emptyAtStart == 0)
        return;
    const int passes = std::min(kHagRelaxPasses, 4 * (rings + 1) * (rings + 1));
    c.msg(4, "Relaxation passes:", passes);
    for (int pass = 0; pass < passes; ++pass) {
        launch(cfg, cells, RelaxFilledCells<T>{value.data(), spare.data(), known, r.cellsX, r.cellsY});
        c.checkDeviceError();
        std::swap(value, spare);
    }
}

template <class T, class L> void computeHeights(StepContext<T>& c, HeightAboveGroundState& state, L layout)
{
    const int n = c.pointCount();
    const int groundClass = c.slots().GroundClass;
    const auto pts = c.points(layout);
    const LaunchConfig byPoint = c.launchConfig(n);
    const float nanF = std::numeric_limits<float>::quiet_NaN();
    state.heights.allocate(c.backend(), static_cast<std::size_t>(n));

    const PlanBounds<T> b = planBounds(c, layout, groundClass);
    if (b.ground == 0) {
        c.msg(0, "ERROR! No ground points of class " + std::to_string(groundClass) +
                     "; every height above ground is NaN");
        launch(byPoint, n,
               HeightOverSurface<T, PointsOf<T, L>>{pts, HagRaster<T>{}, nullptr, state.heights.data(), n,
                                                    nanF});
        c.checkDeviceError();
        return;
    }

    const double cell = static_cast<double>(c.par().HeightAboveGroundCellSize);
    const double extentX = static_cast<double>(b.maxX) - static_cast<double>(b.minX);
    const double extentY = static_cast<double>(b.maxY) - static_cast<double>(b.minY);
    // The last cell of a row also takes the points on its far edge (cellOf clamps), so an extent
    // of whole cells gets no column of its own for the points on the far boundary.
    const double cellsX = std::max(1.0, std::ceil(extentX / cell)),
                 cellsY = std::max(1.0, std::ceil(extentY / cell));
    if (!(cellsX * cellsY <= kMaxHagRasterCells)) {
        c.msg(0, "ERROR! Height above ground raster too large, heights not computed:",
              "extent " + hagNumber(extentX) + " x " + hagNumber(extentY) + " at cell size " +
                  hagNumber(cell) + " needs " + hagNumber(cellsX * cellsY) + " cells (at most " +
                  hagNumber(kMaxHagRasterCells) + "); raise HeightAboveGroundCellSize");
        state.heights.reset();
        return;
    }
    HagRaster<T> r;
    r.minX = b.minX, r.minY = b.minY, r.cell = static_cast<T>(cell);
    r.cellsX = static_cast<int>(cellsX), r.cellsY = static_cast<int>(cellsY);
    const int cells = r.cells();

    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    const double need = static_cast<double>(cells) * (4.0 * sizeof(T) + 2.0 * sizeof(int) + 1.0) +
                        static_cast<double>(n) * 2.0 * sizeof(int);
    if (!(need < static_cast<double>(freeBytes))) {
        c.msg(0, "ERROR! Height above ground aborted - too little memory! Bytes needed:", need);
        state.heights.reset();
        return;
    }
    c.msg(4, "Ground raster cells X:", r.cellsX);
    c.msg(4, "Ground raster cells Y:", r.cellsY);
    c.msg(4, "Ground points:", b.ground);

    const Backend be = c.backend();
    Buffer<int> keys(be, n), ids(be, n), first(be, cells), last(be, cells);
    Buffer<T> value(be, cells), spare(be, cells);
    Buffer<unsigned char> known(be, cells);
    launch(byPoint, n, GroundCellKeys<T, PointsOf<T, L>>{pts, r, groundClass, keys.data(), ids.data(), n});
    c.checkDeviceError();
    sortByKey(keys.data(), ids.data(), n);
    const LaunchConfig byCell = c.launchConfig(cells);
    launch(byCell, cells, ClearCellRuns{first.data(), last.data(), cells});
    launch(byPoint, n, CellRunLimits{keys.data(), n, cells, first.data(), last.data()});
    {
        Buffer<T> offsetX(be, cells), offsetY(be, cells);
        launch(byCell, cells,
               CellMeanHeight<T, PointsOf<T, L>>{pts, r, ids.data(), first.data(), last.data(), value.data(),
                                                 offsetX.data(), offsetY.data(), known.data(),
                                                 std::numeric_limits<T>::quiet_NaN()});
        c.checkDeviceError();
        keys.reset(), ids.reset();
        launch(byCell, cells,
               CentreCellHeights<T>{value.data(), spare.data(), offsetX.data(), offsetY.data(), known.data(),
                                    r.cellsX, r.cellsY, r.cell});
        c.checkDeviceError();
        std::swap(value, spare);
    }

    fillRaster(c, value, spare, first, last, known.data(), r, byCell);

    launch(byPoint, n,
           HeightOverSurface<T, PointsOf<T, L>>{pts, r, value.data(), state.heights.data(), n, nanF});
    c.checkDeviceError();
}

template <class T> void runHeightAboveGround(StepContext<T>& c)
{
    auto& state = c.template state<HeightAboveGroundState>();
    state.reset();
    const int n = c.pointCount();
    c.msg(4, "Height above ground of class", c.slots().GroundClass);
    if (n > 0)
        c.visit([&](auto layout) { computeHeights(c, state, layout); });
    if (n > 0 && !state.heights)
        return; // refused: no heights for this cloud
    downloadInto(state.host, state.heights, static_cast<std::size_t>(n));
    state.cloud = c.cloudGeneration();
    state.computed = true;
    c.msg(2, "Height above ground done!");
}

/// The heights of the cloud the context holds, or null after saying that there are none.
template <class T> const HeightAboveGroundState* heldHeights(StepContext<T>& c)
{
    const auto& state = c.template state<HeightAboveGroundState>();
    if (state.heldFor(c.cloudGeneration(), static_cast<std::size_t>(c.pointCount())))
        return &state;
    c.msg(0, "ERROR! No heights above ground for this cloud; run computeHeightAboveGround first");
    return nullptr;
}

template <class T> void runHeightTiers(StepContext<T>& c)
{
    const HeightAboveGroundState* state = heldHeights(c);
    if (!state)
        return;
    const int n = c.pointCount();
    c.msg(4, "Tiers below", c.par().VegetationLowLimit);
    c.msg(4, "Tiers from", c.par().VegetationHighLimit);
    const auto& s = c.slots();
    c.visit([&](auto layout) {
        using Points = PointsOf<T, decltype(layout)>;
        launch(c.launchConfig(n), n,
               TierByHeight<T, Points>{{c.points(layout), c.allowed(), state->heights.data(), n},
                                       c.par().VegetationLowLimit,
                                       c.par().VegetationHighLimit,
                                       s.TargetClass,
                                       s.TargetClass2,
                                       s.TargetClass3});
    });
    c.checkDeviceError();
    c.msg(2, "Height tiers done!");
}

/// Gives newClass to the admitted points within NearGroundDistance of the ground, or, with
/// raised, farther above it and no higher than RaisedPointsMaxHeight where that is set.
template <class T> void nearGroundPass(StepContext<T>& c, int newClass, bool raised)
{
    const HeightAboveGroundState* state = heldHeights(c);
    if (!state)
        return;
    const int n = c.pointCount();
    c.msg(4, raised ? "Raised above" : "Ground within", c.par().NearGroundDistance);
    c.visit([&](auto layout) {
        using Points = PointsOf<T, decltype(layout)>;
        launch(c.launchConfig(n), n,
               NearGround<T, Points>{{c.points(layout), c.allowed(), state->heights.data(), n},
                                     c.par().NearGroundDistance,
                                     newClass,
                                     raised,
                                     c.par().RaisedPointsMaxHeight});
    });
    c.checkDeviceError();
    c.msg(2, raised ? "Raised points done!" : "Near ground done!");
}

template <class T> void runNearGround(StepContext<T>& c)
{
    nearGroundPass(c, c.slots().GroundClass, false);
}

template <class T> void runRaisedPoints(StepContext<T>& c)
{
    nearGroundPass(c, c.slots().TargetClass, true);
}

} // namespace vx::VX_BACKEND_NS
