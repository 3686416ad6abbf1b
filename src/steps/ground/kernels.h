// Kernels of the class reset, the low-point search and the ground seeds, written once for both
// layouts. Ground growth is in GrowthKernels.h, the low-point correction in GroundModelKernels.h.
#pragma once

#include "grid/PointKernel.h"

namespace vx {

/// Gives newClass to admitted points, unconditionally when range is 0, otherwise only when a
/// point of optionalClass lies strictly within range in the surrounding cells.
template <class T, class Points, class Index, class Groups>
struct ResetClasses : NeighbourhoodKernel<T, Points, Index, Groups> {
    int newClass;
    T range;
    int optionalClass;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0)
            return;
        if (range == T(0)) {
            this->pts.setCls(p, newClass);
            return;
        }
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T range2 = range * range;
        bool matched = false;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const T d2 =
                squaredDistance<T>(px - T(this->pts.x(q)), py - T(this->pts.y(q)), pz - T(this->pts.z(q)));
            if (d2 < range2 && this->classSeen(q, j, i) == optionalClass)
                matched = true;
        });
        if (matched)
            this->pts.setCls(p, newClass);
    }
};
template <class T, class L> using k_resetClasses = OnLayout<ResetClasses, T, L>;

/// Gives lowClass to admitted points whose normal is exactly the zero vector: the normal step
/// found no usable neighbourhood for them, so they are taken for isolated noise below the
/// surface. (0, 0, -0.0) compares equal to zero and counts as well.
template <class T, class Points, class Index, class Groups>
struct FindLowPoints : NeighbourhoodKernel<T, Points, Index, Groups> {
    int lowClass;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0)
            return;
        if (this->pts.nx(p) == 0 && this->pts.ny(p) == 0 && this->pts.nz(p) == 0)
            this->pts.setCls(p, lowClass);
    }
};
template <class T, class L> using k_findLowPoints = OnLayout<FindLowPoints, T, L>;

/// Gives groundClass to admitted last returns whose height index is at most maxHindeks; a height
/// index that is not a number never makes a seed.
template <class T, class Points, class Index, class Groups>
struct FindGroundSeeds : NeighbourhoodKernel<T, Points, Index, Groups> {
    float maxHindeks;
    int groundClass;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0)
            return;
        if (this->pts.lastReturn(p) != 1)
            return;
        const float h = this->pts.heightIndex(p);
        if (!(h <= maxHindeks))
            return; // also refuses NaN
        this->pts.setCls(p, groundClass);
    }
};
template <class T, class L> using k_findGroundSeeds = OnLayout<FindGroundSeeds, T, L>;

} // namespace vx
