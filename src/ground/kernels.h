// Kernels of the class reset, the low-point search and the ground seeds, written once for both
// layouts. Ground growth is in GrowthKernels.h, the low-point correction in GroundModelKernels.h.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "grid/Neighbourhood.h"

namespace vx {

/// Gives newClass to admitted points, unconditionally when range is 0, otherwise only when a
/// point of optionalClass lies strictly within range in the surrounding cells.
template <class T, class Points, class Index, class Groups> struct ResetClasses {
    Points pts;
    Index itg;
    Groups groups;
    VX_DecompositionGridParameters<T> grid;
    int count;
    AllowedClasses allowed;
    int newClass;
    T range;
    int optionalClass;

    VX_HD void operator()(int i) const
    {
        const int p = itg.pointIndex(i);
        if (!allowed.admits(pts.cls(p))) return;
        if (range == T(0)) {
            pts.setCls(p, newClass);
            return;
        }
        const T px = pts.x(p), py = pts.y(p), pz = pts.z(p);
        const T range2 = range * range;
        bool matched = false;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T d2 = squaredDistance<T>(px - T(pts.x(q)), py - T(pts.y(q)), pz - T(pts.z(q)));
            if (d2 < range2 && pts.cls(q) == optionalClass) matched = true;
        });
        if (matched) pts.setCls(p, newClass);
    }
};
template <class T> using k_resetClasses = ResetClasses<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_resetClassesSoA = ResetClasses<T, SoaPoints, SoaIndex, SoaGroups>;

/// Gives lowClass to admitted points whose normal is exactly the zero vector: the normal step
/// found no usable neighbourhood for them, so they are taken for isolated noise below the
/// surface. (0, 0, -0.0) compares equal to zero and counts as well.
template <class T, class Points, class Index, class Groups> struct FindLowPoints {
    Points pts;
    Index itg;
    Groups groups; ///< not read: the test needs no neighbourhood
    VX_DecompositionGridParameters<T> grid;
    AllowedClasses allowed;
    int count;
    int lowClass;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        if (!allowed.admits(pts.cls(p)))
            return;
        if (pts.nx(p) == 0 && pts.ny(p) == 0 && pts.nz(p) == 0)
            pts.setCls(p, lowClass);
    }
};
template <class T> using k_findLowPoints = FindLowPoints<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_findLowPointsSoA = FindLowPoints<T, SoaPoints, SoaIndex, SoaGroups>;

/// Gives groundClass to admitted last returns whose height index is at most maxHindeks; a height
/// index that is not a number never makes a seed.
template <class T, class Points, class Index, class Groups> struct FindGroundSeeds {
    Points pts;
    Index itg;
    Groups groups; ///< not read
    VX_DecompositionGridParameters<T> grid;
    AllowedClasses allowed;
    int count;
    float maxHindeks;
    int groundClass;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        if (!allowed.admits(pts.cls(p)))
            return;
        if (pts.lastReturn(p) != 1)
            return;
        const float h = pts.heightIndex(p);
        if (!(h <= maxHindeks))
            return; // also refuses NaN
        pts.setCls(p, groundClass);
    }
};
template <class T> using k_findGroundSeeds = FindGroundSeeds<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_findGroundSeedsSoA = FindGroundSeeds<T, SoaPoints, SoaIndex, SoaGroups>;

} // namespace vx
