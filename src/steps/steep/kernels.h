// Kernels of the steep-ground step, written once for both layouts: a judging pass that says which
// admitted points lie on a steep face of the ground, then a pass that gives them the ground class.
// Judging reads the ground class, which only the marking pass changes, so a pass's verdicts do not
// depend on the order in which points are judged.
#pragma once

#include "grid/PointKernel.h"
#include "steps/common/Eigen3.h"
#include "steps/common/Marks.h"
#include "steps/common/PlaneFit.h"

#include <cmath>
#include <cstdint>

namespace vx {

template <class T> struct SteepGroundParams {
    T range;         ///< plan radius of the ground search; radius of the ball the surface test reads
    T gap;           ///< ground lies more than this above and below a point on a face
    T relief;        ///< least height span of the ground within range
    int minPoints;   ///< fewest points in the ball, the point itself included, that make a surface
    float variation; ///< largest share of the smallest principal variance in the sum of the three
    int groundClass;
};

/// Per column: the lowest and highest point of the ground class in it (+inf and -inf without
/// one), so that a point whose block of columns spans too little ground skips its walk.
template <class T, class Points, class Index, class Groups> struct ColumnGroundSpan {
    Points pts;
    Index itg;
    Groups groups;
    int cellCount;
    int groundClass;
    T* lowest;
    T* highest;

    VX_HD void operator()(int c) const
    {
        if (c >= cellCount)
            return;
        T lo = T(INFINITY), hi = T(-INFINITY);
        forEachInCell(itg, groups, c, 0, [&](int q, int) {
            if (pts.cls(q) != groundClass)
                return;
            const T z = pts.z(q);
            lo = z < lo ? z : lo;
            hi = z > hi ? z : hi;
        });
        lowest[c] = lo;
        highest[c] = hi;
    }
};
template <class T, class L> using k_columnGroundSpan = OnLayout<ColumnGroundSpan, T, L>;

/// What the surface test found for a point; kept across passes, since the ball it reads (the
/// admitted and the ground points) loses no point when an admitted one becomes ground.
enum SteepShape : uint8_t { ShapeUnknown = 0, ShapeRough = 1, ShapeSurface = 2 };

/// An admitted point joins the ground when:
/// - within range in plan, ground points lie more than gap above it and more than gap below it,
///   and the ground there spans more than relief in height: the point lies on a face between the
///   ground at its foot and the ground at its top, steeper than the terrain surface of cells can
///   follow;
/// - the admitted and ground points within range in 3D, the point itself included, number at
///   least minPoints and lie on a surface: the smallest variance of their principal components is
///   at most `variation` of the three together. Rock and earth faces are such surfaces; the crowns
///   of trees growing out of a face scatter in every direction.
/// Each pass reads the ground of the passes before, so a face is taken from its foot and its top
/// inwards.
template <class T, class Points, class Index, class Groups>
struct JudgeSteepGround : NeighbourhoodKernel<T, Points, Index, Groups> {
    uint8_t* shape;   ///< by point index, SteepShape
    uint8_t* join;    ///< by point index, 1 where the point joins the ground in this pass
    const T* lowest;  ///< by column, the lowest ground point (ColumnGroundSpan)
    const T* highest; ///< by column, the highest ground point
    SteepGroundParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        join[p] = judge(i, p) ? 1 : 0;
    }

    VX_HD bool judge(int i, int p) const
    {
        if (this->ownPoint(i) < 0)
            return false;
        const double px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        if (!blockMayHold(i, pz))
            return false;
        const double range2 = double(par.range) * double(par.range);
        bool any = false;
        double top = 0, foot = 0;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            if (this->pts.cls(q) != par.groundClass)
                return;
            const double dx = double(this->xOf(q, j)) - px, dy = double(this->yOf(q, j)) - py;
            if (!(dx * dx + dy * dy < range2))
                return;
            const double dz = double(this->zOf(q, j)) - pz;
            if (!any || dz > top)
                top = dz;
            if (!any || dz < foot)
                foot = dz;
            any = true;
        });
        if (!any || !(top > double(par.gap)) || !(-foot > double(par.gap)) ||
            !(top - foot > double(par.relief)))
            return false;
        if (shape[p] == ShapeUnknown)
            shape[p] = surface(i, px, py, pz) ? ShapeSurface : ShapeRough;
        return shape[p] == ShapeSurface;
    }

    /// False when the ground of the point's block of columns, which holds every ground point
    /// within range, cannot lie above and below the point and span the relief; most points end
    /// here without a walk.
    VX_HD bool blockMayHold(int i, double pz) const
    {
        const CellCoords c = cellCoords(this->grid, this->itg.group(i));
        double lo = INFINITY, hi = -INFINITY;
        for (int x = c.x > 0 ? c.x - 1 : 0; x <= c.x + 1 && x < this->grid.cellsX; ++x)
            for (int y = c.y > 0 ? c.y - 1 : 0; y <= c.y + 1 && y < this->grid.cellsY; ++y) {
                const int g = (x * this->grid.cellsY + y) * this->grid.cellsZ + c.z;
                lo = double(lowest[g]) < lo ? double(lowest[g]) : lo;
                hi = double(highest[g]) > hi ? double(highest[g]) : hi;
            }
        return hi - pz > double(par.gap) && pz - lo > double(par.gap) && hi - lo > double(par.relief);
    }

    /// The surface test. Sums are taken relative to the point and in double precision, so that
    /// the variances of a centimetre-thin face keep their digits far from the origin.
    VX_HD bool surface(int i, double px, double py, double pz) const
    {
        const double range2 = double(par.range) * double(par.range);
        PlaneSums sums;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const int cls = this->pts.cls(q);
            if (cls != par.groundClass && !this->allowed.admits(cls))
                return;
            const double dx = double(this->xOf(q, j)) - px, dy = double(this->yOf(q, j)) - py;
            const double dz = double(this->zOf(q, j)) - pz;
            if (dx * dx + dy * dy + dz * dz < range2)
                sums.add(dx, dy, dz);
        });
        if (sums.n < par.minPoints)
            return false;
        const double n = sums.n, mx = sums.sx / n, my = sums.sy / n, mz = sums.sz / n;
        const double cov[3][3] = {{sums.sxx / n - mx * mx, sums.sxy / n - mx * my, sums.sxz / n - mx * mz},
                                  {sums.sxy / n - mx * my, sums.syy / n - my * my, sums.syz / n - my * mz},
                                  {sums.sxz / n - mx * mz, sums.syz / n - my * mz, sums.szz / n - mz * mz}};
        double l[3];
        symmetricEigenvalues(cov, l);
        const double total = l[0] + l[1] + l[2];
        return total > 0 && l[2] <= double(par.variation) * total;
    }
};
template <class T, class L> using k_judgeSteepGround = OnLayout<JudgeSteepGround, T, L>;

} // namespace vx
