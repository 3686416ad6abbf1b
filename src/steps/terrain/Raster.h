// A square-celled raster over the plan extent of a cloud, and the order-preserving integer form
// of a height that lets many threads take a per-cell minimum with one atomic operation.
#pragma once

#include "exec/Hd.h"

#include <climits>
#include <cstring>

namespace vx {

struct RasterGrid {
    float x0 = 0, y0 = 0; ///< corner of cell (0, 0)
    float cell = 1;
    int nx = 0, ny = 0;

    VX_HD int cells() const { return nx * ny; }
    /// Cell of a plan position, clamped into the raster.
    VX_HD int cellOf(float x, float y) const
    {
        int cx = static_cast<int>((x - x0) / cell);
        int cy = static_cast<int>((y - y0) / cell);
        cx = cx < 0 ? 0 : (cx >= nx ? nx - 1 : cx);
        cy = cy < 0 ? 0 : (cy >= ny ? ny - 1 : cy);
        return cy * nx + cx;
    }
};

/// An empty cell of a raster of ordered heights.
constexpr int kNoHeight = INT_MAX;

/// The integer whose order is the order of the float: the bits of a positive float, and the
/// magnitude bits flipped for a negative one.
VX_HD inline int orderedBits(float f)
{
    int i;
    memcpy(&i, &f, sizeof i);
    return i >= 0 ? i : i ^ 0x7fffffff;
}

VX_HD inline float fromOrderedBits(int i)
{
    const int b = i >= 0 ? i : i ^ 0x7fffffff;
    float f;
    memcpy(&f, &b, sizeof f);
    return f;
}

/// *a = min(*a, v) atomically.
VX_HD inline void atomicMinOf(int* a, int v)
{
#ifdef __CUDA_ARCH__
    atomicMin(a, v);
#else
    int seen = __atomic_load_n(a, __ATOMIC_RELAXED);
    while (v < seen && !__atomic_compare_exchange_n(a, &seen, v, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
    }
#endif
}

} // namespace vx
