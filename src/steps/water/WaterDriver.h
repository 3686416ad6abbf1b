// Driver of the water search; compiled once per backend. The points are summed into raster
// cells on the backend; the bodies are traced on the host (WaterBodies.h); the ground points of
// their cells take the water class on the backend.
#pragma once

#include "core/StepContext.h"
#include "exec/Algorithms.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/StepDrivers.h"
#include "steps/water/WaterBodies.h"
#include "steps/water/kernels.h"

#include <thrust/iterator/counting_iterator.h>
#include <thrust/transform_reduce.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vx::VX_BACKEND_NS {

/// Most cells of the water raster: a cloud whose extent at WaterCellSize needs more is refused
/// rather than left to allocate gigabytes.
constexpr double kMostWaterCells = 100'000'000;

/// The sums of every cell over the points (see k_waterCellSums), on the host, and the histogram
/// of the ground's intensities.
template <class T, class L>
bool sumWaterCells(const StepContext<T>& c, L layout, const RasterGrid& g, const Buffer<uint16_t>& intensity,
                   const Buffer<uint8_t>& returns, WaterCells& host, std::vector<int>& histogram)
{
    const Backend be = c.backend();
    const int n = c.pointCount(), cells = g.cells();
    Buffer<int> points(be, cells), ground(be, cells), single(be, cells), lowest(be, cells),
        levels(be, kIntensityLevels);
    Buffer<unsigned long long> brightness(be, cells);
    c.checkDeviceError();
    if (!points || !ground || !single || !lowest || !levels || !brightness)
        return false;
    for (auto* b : {&points, &ground, &single, &levels})
        fillWith(b->data(), static_cast<int>(b->size()), 0);
    fillWith(lowest.data(), cells, kNoHeight);
    fillWith(brightness.data(), cells, 0ull);
    const WaterCellSums sums{points.data(), ground.data(), single.data(), brightness.data(), lowest.data()};
    launch(c.launchConfig(n), n,
           k_waterCellSums<T, L>{c.points(layout), g, c.slots().GroundClass, intensity.data(), returns.data(),
                                 sums, levels.data()});
    c.checkDeviceError();
    host.nx = g.nx;
    host.ny = g.ny;
    host.cellArea = static_cast<double>(g.cell) * static_cast<double>(g.cell);
    downloadInto(host.points, points, cells);
    downloadInto(host.ground, ground, cells);
    downloadInto(host.single, single, cells);
    downloadInto(host.brightness, brightness, cells);
    downloadInto(histogram, levels, kIntensityLevels);
    std::vector<int> bits;
    downloadInto(bits, lowest, cells);
    host.lowest.resize(bits.size());
    for (std::size_t i = 0; i < bits.size(); ++i)
        host.lowest[i] = bits[i] == kNoHeight ? 0.f : fromOrderedBits(bits[i]);
    return true;
}

template <class T> void runWater(StepContext<T>& c)
{
    const int n = c.pointCount();
    const int groundClass = c.slots().GroundClass, waterClass = c.slots().TargetClass;
    c.msg(4, "Water, class", waterClass);
    if (n == 0) {
        c.msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
        return;
    }
    if (!c.requireGrid())
        return;
    const auto& intensities = c.intensities();
    const auto& returnCounts = c.returnCounts();
    if (intensities.size() != static_cast<std::size_t>(n) ||
        returnCounts.size() != static_cast<std::size_t>(n)) {
        c.msg(0, "ERROR! No intensities or return counts for this cloud (load a LAS file, or "
                 "loadIntensitiesFromBuffer and loadReturnCountsFromBuffer); step not run");
        return;
    }
    const auto& p = c.par();
    const double cell = static_cast<double>(p.WaterCellSize);
    const double side = static_cast<double>(p.WaterMinSize);
    const WaterRule rule{p.WaterDarkRatio, p.WaterSparseRatio, p.WaterSingleShare, side * side,
                         static_cast<double>(p.WaterRelief)};
    const Backend be = c.backend();
    Buffer<uint16_t> intensity(be, static_cast<std::size_t>(n));
    Buffer<uint8_t> returns(be, static_cast<std::size_t>(n));
    c.checkDeviceError();
    if (!intensity || !returns) {
        c.msg(0, "ERROR! Water search aborted - too little memory!");
        return;
    }
    intensity.upload(intensities.data(), static_cast<std::size_t>(n));
    returns.upload(returnCounts.data(), static_cast<std::size_t>(n));
    c.visit([&](auto layout) {
        using L = decltype(layout);
        const auto pts = c.points(layout);
        const PlanBox box = thrust::transform_reduce(
            policy(), thrust::counting_iterator<int>(0), thrust::counting_iterator<int>(n),
            k_admittedBox<T, L>{pts, AllowedClasses{}}, PlanBox{1, 1, 0, 0}, PlanBoxUnion{});
        RasterGrid g;
        if (!rasterOver(box, cell, kMostWaterCells, g)) {
            c.msg(0, "ERROR! Water raster too large, step not run:",
                  std::to_string(box.maxX - box.minX) + " x " + std::to_string(box.maxY - box.minY) +
                      " extent at cell size " + std::to_string(cell));
            return;
        }
        WaterCells cells;
        std::vector<int> histogram;
        if (!sumWaterCells(c, layout, g, intensity, returns, cells, histogram)) {
            c.msg(0, "ERROR! Water search aborted - too little memory!");
            return;
        }
        const WaterFound found = findWaterBodies(cells, histogram, rule);
        if (!found.contrast) {
            c.msg(1, "Water search not run: the ground's intensities are all the same, so none is dark");
            return;
        }
        c.msg(3, "Water median ground intensity, points in a typical cell:",
              toText(found.medianIntensity) + " " + toText(found.typicalCell));
        std::size_t points = 0;
        for (std::size_t k = 0; k < found.water.size(); ++k)
            points += found.water[k] ? static_cast<std::size_t>(cells.ground[k]) : 0;
        c.msg(2, "Water bodies, cells, points:",
              toText(found.bodies) + " " + toText(found.cells) + " " + toText(points));
        if (found.bodies == 0)
            return;
        Buffer<uint8_t> water(be, found.water.size());
        c.checkDeviceError();
        if (!water) {
            c.msg(0, "ERROR! Water search aborted - too little memory!");
            return;
        }
        water.upload(found.water.data(), found.water.size());
        launch(c.launchConfig(n), n, k_markWater<T, L>{pts, g, groundClass, waterClass, water.data()});
        c.checkDeviceError();
    });
    c.msg(2, "Water search done!");
}

} // namespace vx::VX_BACKEND_NS
