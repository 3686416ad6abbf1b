// Kernels of the ground-bump step, written once for both layouts: a judging pass that says which
// admitted points stand above the plane of the ground around them, then a pass that gives them
// the bump class. Judging reads the ground class, which only the marking pass changes, so the
// verdicts do not depend on the order in which points are judged.
#pragma once

#include "grid/PointKernel.h"
#include "steps/common/Marks.h"
#include "steps/common/PlaneFit.h"

#include <cstdint>

namespace vx {

template <class T> struct BumpParams {
    T range;        ///< plan radius of the ground the plane is fitted to
    T height;       ///< least height above that plane
    float multiple; ///< least height above the plane in multiples of the ground's RMS scatter about it
    int groundClass;
};

/// The judging pass reads about this many entries of each column (every k-th of a fuller one): a
/// plane and its scatter need a few dozen ground points, and a dense column holds hundreds.
constexpr int kBumpColumnSample = 12;

/// An admitted point is a bump when the other points of the ground class within range in plan,
/// of those the columns' sample holds (at least kPlaneLeastPoints, not lying on a line), fit a plane that the
/// point stands above by more than `height` and by more than `multiple` times their RMS scatter about it. A
/// car, a low wall or a shrub that the terrain surface's allowance took in stands out of a smooth ground
/// around it; on rough or curved ground the scatter, and with it the limit, grows.
template <class T, class Points, class Index, class Groups>
struct JudgeBumps : NeighbourhoodKernel<T, Points, Index, Groups> {
    uint8_t* verdict; ///< by point index, 1 for a bump
    BumpParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        verdict[p] = judge(i, p) ? 1 : 0;
    }

    VX_HD bool judge(int i, int p) const
    {
        if (this->ownPoint(i) < 0)
            return false;
        const double px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const double range2 = double(par.range) * double(par.range);
        PlaneSums sums;
        this->forEachNeighbourOf(i, Visit{kBumpColumnSample, false}, [&](int q, int j, int) {
            if (q == p || this->pts.cls(q) != par.groundClass)
                return;
            const double dx = double(this->xOf(q, j)) - px, dy = double(this->yOf(q, j)) - py;
            if (!(dx * dx + dy * dy < range2))
                return;
            sums.add(dx, dy, double(this->zOf(q, j)) - pz);
        });
        Plane plane;
        if (sums.n < kPlaneLeastPoints || !fitPlane(sums, plane))
            return false;
        // The plane passes at height a relative to the point: the point stands -a above it.
        const double above = -plane.a;
        const double limit = double(par.multiple) * double(par.multiple) * plane.sse / double(sums.n);
        return above > double(par.height) && above * above > limit;
    }
};
template <class T, class L> using k_judgeBumps = OnLayout<JudgeBumps, T, L>;

} // namespace vx
