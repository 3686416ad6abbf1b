// What the per-point neighbourhood kernels share: the views they read, the thread's own point
// with its admission test, and the small vector arithmetic their rules are written in. The
// helpers keep the operand order of the expressions they stand for, so host and device results
// stay identical to the written-out forms.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "grid/Neighbourhood.h"
#include "grid/OrderedXyz.h"

#include <cmath>

namespace vx {

/// |v| and the square root in the precision of v (the C library's double forms round exactly
/// back to float, and the device has float forms of its own).
template <class T> VX_HD inline T absOf(T v)
{
    return static_cast<T>(::fabs(v));
}
template <class T> VX_HD inline T sqrtOf(T v)
{
    return static_cast<T>(::sqrt(v));
}

/// a . b: the x term, then the y term, then the z term.
template <class T> VX_HD inline T dot3(T ax, T ay, T az, T bx, T by, T bz)
{
    return ax * bx + ay * by + az * bz;
}

/// Length of (x, y, z).
template <class T> VX_HD inline T lengthOf(T x, T y, T z)
{
    return sqrtOf<T>(dot3(x, y, z, x, y, z));
}

/// Squared plan distance: the x term, then the y term.
template <class T> VX_HD inline T planSquared(T dx, T dy)
{
    return dx * dx + dy * dy;
}

/// Squared distance from a plane with normal n of a point whose offset along n is s; NaN for a
/// zero normal, which then fails every comparison.
template <class T> VX_HD inline T squaredOverNormal(T s, T nx, T ny, T nz)
{
    return s * s / dot3(nx, ny, nz, nx, ny, nz);
}

/// Squared distance of P from the tangent plane through B with normal m. NaN for a zero normal.
template <class T> VX_HD inline T planeDistance2(T mx, T my, T mz, T px, T py, T pz, T bx, T by, T bz)
{
    return squaredOverNormal(dot3(mx, my, mz, px, py, pz) - mx * bx - my * by - mz * bz, mx, my, mz);
}

/// |cos| between normal a of length lengthA and normal b: |a . b| / (|b| lengthA).
template <class T> VX_HD inline T normalCosine(T ax, T ay, T az, T lengthA, T bx, T by, T bz)
{
    return absOf(dot3(ax, ay, az, bx, by, bz)) / (lengthOf(bx, by, bz) * lengthA);
}

/// The classes a launch in rounds reads (see launchInPlace): the classes as the launch began and
/// as the previous round left them, by point. Null outside such a launch.
struct InPlaceClasses {
    const int* start = nullptr;
    const int* previous = nullptr;
};

/// The views of a kernel that runs one thread per position of the sorted index: points, index,
/// cell runs, class table, grid and the number of positions. Kernels derive from it and stay
/// trivially copyable aggregates: {{pts, itg, groups, allowed, grid, count}, own fields...}.
template <class T, class Points, class Index, class Groups> struct NeighbourhoodKernel {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    /// The coordinates in sorted order when the step gathered them (see OrderedXyz); without
    /// them the accessors below read the store.
    OrderedXyz<typename Points::Real> ordered{};
    /// Set by a launch in rounds; empty for a plain launch.
    InPlaceClasses inPlace{};

    /// Coordinates of point q at sorted position j, the same values from either source.
    VX_HD typename Points::Real xOf(int q, int j) const { return ordered.xyz ? ordered.x(j) : pts.x(q); }
    VX_HD typename Points::Real yOf(int q, int j) const { return ordered.xyz ? ordered.y(j) : pts.y(q); }
    VX_HD typename Points::Real zOf(int q, int j) const { return ordered.xyz ? ordered.z(j) : pts.z(q); }

    /// The class of neighbour q, at sorted position j, as the thread of position i is to see it:
    /// what one ascending pass over the positions has left there by the time it reaches i. A plain
    /// launch reads the store; a launch in rounds reads a neighbour before i as the previous
    /// round left it and any other as the launch began.
    VX_HD int classSeen(int q, int j, int i) const
    {
        if (!inPlace.start)
            return pts.cls(q);
        return j < i ? inPlace.previous[q] : inPlace.start[q];
    }

    /// The point at sorted position i, or -1 past the end or when its class is not admitted.
    VX_HD int ownPoint(int i) const
    {
        if (i >= count)
            return -1;
        const int p = itg.pointIndex(i);
        return allowed.admits(pts.cls(p)) ? p : -1;
    }

    /// Squared distance of (px, py, pz) from the tangent plane of point q (see planeDistance2).
    VX_HD T tangentPlaneDistance2(int q, T px, T py, T pz) const
    {
        return planeDistance2<T>(pts.nx(q), pts.ny(q), pts.nz(q), px, py, pz, pts.x(q), pts.y(q), pts.z(q));
    }

    /// Visits the block of cells around the cell of sorted position i (see forEachNeighbour).
    template <class Visitor> VX_HD void forEachNeighbourOf(int i, Visit how, Visitor&& visit) const
    {
        forEachNeighbour(itg, groups, grid, itg.group(i), how, visit);
    }

    /// Visits every entry of the block around sorted position i until visit(q) returns false.
    template <class Visitor> VX_HD void forEachNeighbourOfWhile(int i, Visitor&& visit) const
    {
        forEachNeighbourWhile(itg, groups, grid, itg.group(i), visit);
    }
};

/// Kernel K on the views of layout L: kernels are named once, for both layouts.
template <template <class, class, class, class> class K, class T, class L>
using OnLayout = K<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>>;

} // namespace vx
