// Coordinates in the order of the sorted index. Entry j holds the coordinates of the point at
// sorted position j, so a neighbourhood visit, which walks the cells' runs of positions, reads
// its candidates from consecutive memory instead of from wherever the points lie in the store.
// Coordinates do not change while a grid exists; the copy lives as long as the grid's links.
#pragma once

#include "exec/Hd.h"

namespace vx {

/// x, y and z of sorted position j, interleaved (three values a position).
template <class R> struct OrderedXyz {
    const R* xyz = nullptr;
    VX_HD R x(int j) const { return xyz[3 * j]; }
    VX_HD R y(int j) const { return xyz[3 * j + 1]; }
    VX_HD R z(int j) const { return xyz[3 * j + 2]; }
};

/// Fills out with the coordinates of every sorted position, one thread a position.
template <class Points, class Index> struct k_gatherOrderedXyz {
    Points pts;
    Index itg;
    typename Points::Real* out;
    VX_HD void operator()(int j) const
    {
        const int q = itg.pointIndex(j);
        out[3 * j] = pts.x(q);
        out[3 * j + 1] = pts.y(q);
        out[3 * j + 2] = pts.z(q);
    }
};

} // namespace vx
