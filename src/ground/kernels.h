// Kernels of the ground steps, written once for both layouts.
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

} // namespace vx
