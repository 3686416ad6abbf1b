// Kernels between the points and a terrain raster: the lowest admitted point of every cell, and
// the ground test of every admitted point against the finished surface.
#pragma once

#include "grid/Layouts.h"
#include "steps/common/Raster.h"
#include "steps/terrain/SurfaceKernels.h"
#include "store/PointViews.h"

#include <cmath>

namespace vx {

/// Lowers each cell to the height of its lowest admitted point (cells start at kNoHeight).
template <class T, class L> struct k_lowestPerCell {
    PointsOf<T, L> pts;
    AllowedClasses allowed;
    RasterGrid grid;
    int* lowest;
    VX_HD void operator()(int p) const
    {
        if (!allowed.admits(pts.cls(p)))
            return;
        const float x = static_cast<float>(pts.x(p)), y = static_cast<float>(pts.y(p));
        atomicMinOf(lowest + grid.cellOf(x, y), orderedBits(static_cast<float>(pts.z(p))));
    }
};

/// Heights of the ordered-integer raster; kNoHeight becomes empty.
struct k_decodeLowest {
    const int* lowest;
    float* out;
    VX_HD void operator()(int i) const
    {
        out[i] = lowest[i] == kNoHeight ? emptyHeight() : fromOrderedBits(lowest[i]);
    }
};

/// Surface height at a plan position: bilinear between the cell centres, held flat beyond the
/// outer centres.
VX_HD inline float surfaceAt(const float* s, const RasterGrid& g, float x, float y, float& slope)
{
    float u = (x - g.x0) / g.cell - 0.5f, v = (y - g.y0) / g.cell - 0.5f;
    u = u < 0 ? 0 : (u > static_cast<float>(g.nx - 1) ? static_cast<float>(g.nx - 1) : u);
    v = v < 0 ? 0 : (v > static_cast<float>(g.ny - 1) ? static_cast<float>(g.ny - 1) : v);
    const int u0 = static_cast<int>(u), v0 = static_cast<int>(v);
    const int u1 = u0 + 1 < g.nx ? u0 + 1 : u0, v1 = v0 + 1 < g.ny ? v0 + 1 : v0;
    const float fu = u - static_cast<float>(u0), fv = v - static_cast<float>(v0);
    const float a = s[v0 * g.nx + u0], b = s[v0 * g.nx + u1];
    const float c = s[v1 * g.nx + u0], d = s[v1 * g.nx + u1];
    // The steepest rise of the surrounding cells, from the differences across the four cells.
    const float gx = (u1 > u0) ? ((b - a) + (d - c)) * 0.5f / g.cell : 0.0f;
    const float gy = (v1 > v0) ? ((c - a) + (d - b)) * 0.5f / g.cell : 0.0f;
    slope = sqrtf(gx * gx + gy * gy);
    return (a * (1 - fu) + b * fu) * (1 - fv) + (c * (1 - fu) + d * fu) * fv;
}

/// Gives groundClass to every admitted point within distance + gradientFactor x slope of the
/// surface, above or below it: on steep ground the surface between cell centres is less sure.
template <class T, class L> struct k_groundNearSurface {
    PointsOf<T, L> pts;
    AllowedClasses allowed;
    RasterGrid grid;
    const float* surface;
    float distance, gradientFactor;
    int groundClass;
    VX_HD void operator()(int p) const
    {
        if (!allowed.admits(pts.cls(p)))
            return;
        float slope = 0;
        const float s =
            surfaceAt(surface, grid, static_cast<float>(pts.x(p)), static_cast<float>(pts.y(p)), slope);
        const float dz = static_cast<float>(pts.z(p)) - s;
        const float limit = distance + gradientFactor * slope;
        if (dz <= limit && dz >= -limit)
            pts.setCls(p, groundClass);
    }
};

/// Gives deckClass to every admitted point of a bridge deck: in a cell that `deck` marks, no
/// higher than `distance` above the cell's lowest point (the deck's surface; what stands on the
/// deck is left to the later steps).
template <class T, class L> struct k_deckPoints {
    PointsOf<T, L> pts;
    AllowedClasses allowed;
    RasterGrid grid;
    const float* lowest;
    const unsigned char* deck;
    float distance;
    int deckClass;
    VX_HD void operator()(int p) const
    {
        if (!allowed.admits(pts.cls(p)))
            return;
        const int c = grid.cellOf(static_cast<float>(pts.x(p)), static_cast<float>(pts.y(p)));
        if (deck[c] && static_cast<float>(pts.z(p)) - lowest[c] <= distance)
            pts.setCls(p, deckClass);
    }
};

/// Marks the bridge decks: cells of raised strips that are still objects after the climb and the
/// walls, but that the climb gave back once the strips were let in too.
struct k_markDecks {
    const unsigned char* strip;
    const unsigned char* object;     ///< after the climb that leaves the strips out
    const unsigned char* freeObject; ///< after the climb that lets them in
    unsigned char* deck;
    VX_HD void operator()(int i) const { deck[i] = strip[i] && object[i] && !freeObject[i]; }
};

} // namespace vx
