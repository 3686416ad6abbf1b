// Kernels of the ground-rim step, written once for both layouts: a judging pass that says which
// raised points continue the ground beside them at their own height, then the marking pass of
// the verdicts. Judging reads the ground class, which only the marking pass changes, so the
// verdicts do not depend on the order in which points are judged.
#pragma once

#include "grid/PointKernel.h"
#include "steps/common/Marks.h"
#include "steps/common/PlaneFit.h"

#include <cstdint>

namespace vx {

template <class T> struct RimParams {
    T range;    ///< plan radius of the ground the plane is fitted to
    T distance; ///< largest distance from that plane, depth of the ground read and its largest scatter
    T height;   ///< least height above ground of a point judged
    int groundClass;
};

/// The judging pass reads about this many entries of each column (every k-th of a fuller one),
/// as the bump search does: a plane needs a few dozen ground points.
constexpr int kRimColumnSample = 12;

/// The higher ground must spread across as well as along: its smaller principal variance in plan
/// is at least this share of the larger. A band of it (a crest, the top of a wall) fits planes
/// that tilt freely about the band.
constexpr double kRimLeastSpread = 0.1;

/// An admitted point standing more than `height` above the ground surface is a rim point when
/// the ground points within range in plan that lie no lower than `distance` below it (of those
/// the columns' sample holds, at least kPlaneLeastPoints, spread in plan) fit a plane with an RMS
/// scatter of at most `distance` that passes within `distance` of it. The upper level of a
/// terrace or the top of a bank continues at the point's height beside it, and the surface of
/// cells, which follows the lowest point of each, runs below it where a cell straddles the step.
/// A shrub or a crown has no ground at its own height beside it; on a slope, the ground uphill
/// fits the slope's plane, which passes under the plant.
template <class T, class Points, class Index, class Groups>
struct JudgeRims : NeighbourhoodKernel<T, Points, Index, Groups> {
    const float* heights; ///< height above ground, by point index
    uint8_t* verdict;     ///< by point index, 1 for a rim point
    RimParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        verdict[p] = judge(i, p) ? 1 : 0;
    }

    VX_HD bool judge(int i, int p) const
    {
        if (this->ownPoint(i) < 0 || !(double(heights[p]) > double(par.height)))
            return false;
        const double px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const double range2 = double(par.range) * double(par.range);
        const double floor = -double(par.distance);
        PlaneSums sums;
        this->forEachNeighbourOf(i, Visit{kRimColumnSample, false}, [&](int q, int j, int) {
            if (q == p || this->pts.cls(q) != par.groundClass)
                return;
            const double dx = double(this->xOf(q, j)) - px, dy = double(this->yOf(q, j)) - py;
            const double dz = double(this->zOf(q, j)) - pz;
            if (!(dx * dx + dy * dy < range2) || !(dz >= floor))
                return;
            sums.add(dx, dy, dz);
        });
        Plane plane;
        if (sums.n < kPlaneLeastPoints || !spreadInPlan(sums) || !fitPlane(sums, plane))
            return false;
        const double d = double(par.distance);
        // The plane passes at height a relative to the point.
        return plane.sse <= d * d * double(sums.n) && plane.a <= d && plane.a >= -d;
    }

    /// The principal variances of the plan offsets, compared.
    VX_HD static bool spreadInPlan(const PlaneSums& s)
    {
        const double n = s.n, mx = s.sx / n, my = s.sy / n;
        const double cxx = s.sxx / n - mx * mx, cyy = s.syy / n - my * my, cxy = s.sxy / n - mx * my;
        const double half = 0.5 * (cxx + cyy), diff = 0.5 * (cxx - cyy);
        const double root = ::sqrt(diff * diff + cxy * cxy);
        const double larger = half + root, smaller = half - root;
        return larger > 0 && smaller >= kRimLeastSpread * larger;
    }
};
template <class T, class L> using k_judgeRims = OnLayout<JudgeRims, T, L>;

} // namespace vx
