// Kernels of the water search: the sums of each raster cell over its points, the histogram of
// the ground's intensities, and the class of the ground points in the cells of water bodies.
#pragma once

#include "grid/Layouts.h"
#include "steps/common/Raster.h"
#include "store/PointViews.h"

#include <cstdint>

namespace vx {

/// Per-cell sums of the water test (see classifyWater), one array each so that many threads add
/// to a cell with one atomic operation.
struct WaterCellSums {
    int* points;                    ///< every point
    int* ground;                    ///< points of the ground class
    int* single;                    ///< ground points from single-return pulses
    unsigned long long* brightness; ///< sum of the ground points' intensities
    int* lowest;                    ///< lowest ground point, as ordered bits (kNoHeight: none)
};

/// Intensities take 16 bits: one histogram bin each.
constexpr int kIntensityLevels = 65536;

template <class T, class L> struct k_waterCellSums {
    PointsOf<T, L> pts;
    RasterGrid grid;
    int groundClass;
    const uint16_t* intensity; ///< by point index
    const uint8_t* returns;    ///< number of returns of the point's pulse, by point index
    WaterCellSums sums;
    int* histogram; ///< kIntensityLevels bins of the ground's intensities

    VX_HD void operator()(int p) const
    {
        const int c = grid.cellOf(static_cast<float>(pts.x(p)), static_cast<float>(pts.y(p)));
        atomicAddTo(sums.points + c, 1);
        if (pts.cls(p) != groundClass)
            return;
        atomicAddTo(sums.ground + c, 1);
        if (returns[p] <= 1)
            atomicAddTo(sums.single + c, 1);
        atomicAddTo(sums.brightness + c, static_cast<unsigned long long>(intensity[p]));
        atomicAddTo(histogram + intensity[p], 1);
        atomicMinOf(sums.lowest + c, orderedBits(static_cast<float>(pts.z(p))));
    }
};

/// Gives waterClass to the ground points of the cells marked 1.
template <class T, class L> struct k_markWater {
    PointsOf<T, L> pts;
    RasterGrid grid;
    int groundClass, waterClass;
    const uint8_t* water; ///< by cell

    VX_HD void operator()(int p) const
    {
        if (pts.cls(p) != groundClass)
            return;
        if (water[grid.cellOf(static_cast<float>(pts.x(p)), static_cast<float>(pts.y(p)))] == 1)
            pts.setCls(p, waterClass);
    }
};

} // namespace vx
