// A square-celled raster over the plan extent of a cloud, the plan extent itself, and the
// order-preserving integer form of a height that lets many threads take a per-cell minimum with
// one atomic operation.
#pragma once

#include "exec/Hd.h"
#include "grid/Layouts.h"
#include "store/PointViews.h"

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

/// Plan extent of the admitted points.
struct PlanBox {
    float minX, minY, maxX, maxY;
    VX_HD bool empty() const { return minX > maxX; }
};

template <class T, class L> struct k_admittedBox {
    PointsOf<T, L> pts;
    AllowedClasses allowed;
    VX_HD PlanBox operator()(int p) const
    {
        if (!allowed.admits(pts.cls(p)))
            return {1, 1, 0, 0};
        const float x = static_cast<float>(pts.x(p)), y = static_cast<float>(pts.y(p));
        return {x, y, x, y};
    }
};

struct PlanBoxUnion {
    VX_HD PlanBox operator()(const PlanBox& a, const PlanBox& b) const
    {
        if (a.empty())
            return b;
        if (b.empty())
            return a;
        return {a.minX < b.minX ? a.minX : b.minX, a.minY < b.minY ? a.minY : b.minY,
                a.maxX > b.maxX ? a.maxX : b.maxX, a.maxY > b.maxY ? a.maxY : b.maxY};
    }
};

/// The raster of cells of edge `cell` whose corner cell starts at the box's corner and whose last
/// cells hold its far edges; false, with g untouched, where it would have more than mostCells
/// cells.
inline bool rasterOver(const PlanBox& box, double cell, double mostCells, RasterGrid& g)
{
    const double w = (static_cast<double>(box.maxX) - box.minX) / cell + 1.0;
    const double h = (static_cast<double>(box.maxY) - box.minY) / cell + 1.0;
    if (!(w * h <= mostCells))
        return false;
    g.x0 = box.minX;
    g.y0 = box.minY;
    g.cell = static_cast<float>(cell);
    g.nx = static_cast<int>(w);
    g.ny = static_cast<int>(h);
    return true;
}

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

/// *a += v atomically.
VX_HD inline void atomicAddTo(int* a, int v)
{
#ifdef __CUDA_ARCH__
    atomicAdd(a, v);
#else
    __atomic_fetch_add(a, v, __ATOMIC_RELAXED);
#endif
}

VX_HD inline void atomicAddTo(unsigned long long* a, unsigned long long v)
{
#ifdef __CUDA_ARCH__
    atomicAdd(a, v);
#else
    __atomic_fetch_add(a, v, __ATOMIC_RELAXED);
#endif
}

} // namespace vx
