// Kernels of the iterative ground growth: a point is tested against the tangent plane of its
// nearest ground neighbour and, when it fits, marked so that the remap makes it ground.
#pragma once

#include "grid/PointKernel.h"

namespace vx {

/// The settings of one growth pass, in the order the driver hands them over.
template <class T> struct GrowthParams {
    T distanceFromPlane;
    float minCosinus;
    T range;
    T maxHeightDifference;
    T rangeLowest; ///< plan radius of the above-plane test; 0 or less turns it off
    float maxCosinusPar2;
    int groundClass;
    int markClass;     ///< accepted in this pass; the remap turns it into groundClass
    bool averagePlane; ///< plane from the mean of all ground neighbours in range
};

/// Quantities of point p relative to the plane through X with normal N.
template <class T> struct PlaneTerms {
    T e;       ///< squared distance from the plane
    T c;       ///< |cos| between N and the normal of p (NaN when either is zero)
    T dz;      ///< z of p minus z of X
    T g;       ///< cosine between N and the direction from X to p (NaN when p is X)
    T gFields; ///< the per-field pass's cosine, the z difference standing in for the x one
};

template <class T>
VX_HD inline PlaneTerms<T> planeTerms(const T p[3], const T np[3], const T X[3], const T N[3])
{
    const T vx = p[0] - X[0], vy = p[1] - X[1], vz = p[2] - X[2];
    const T nn = dot3(N[0], N[1], N[2], N[0], N[1], N[2]);
    const T lenN = sqrtOf(nn);
    const T s = dot3(N[0], N[1], N[2], vx, vy, vz);
    PlaneTerms<T> t;
    t.e = s * s / nn;
    t.c = normalCosine(N[0], N[1], N[2], lenN, np[0], np[1], np[2]);
    t.dz = vz;
    t.g = s / (lengthOf(vx, vy, vz) * lenN);
    // The per-field pass has always measured this direction with dz in place of dx; its results
    // depend on it, so it stays.
    t.gFields = dot3(N[0], N[1], N[2], vz, vy, vz) / (lenN * lengthOf(vz, vy, vz));
    return t;
}

/// Collects, over the ground neighbours offered to it, the plane of point p: the nearest ground
/// point strictly within range (or the mean of all of them when averaging), and whether a ground
/// point close to p in plan has p below its tangent plane.
template <class T> struct GroundPlaneSearch {
    T p[3];
    T range2;
    T rangeLowest;
    T rangeLowest2;
    T best; ///< starts as the grid's x extent, unsquared, and is compared with squared distances
    bool average;
    int nearest = -1;
    int n = 0;
    T sum[6] = {0, 0, 0, 0, 0, 0};
    bool notAbove = true;

    VX_HD GroundPlaneSearch(T px, T py, T pz, const GrowthParams<T>& par, T xExtent)
        : p{px, py, pz}, range2(par.range * par.range), rangeLowest(par.rangeLowest),
          rangeLowest2(par.rangeLowest * par.rangeLowest), best(xExtent), average(par.averagePlane)
    {
    }

    template <class Points> VX_HD void offer(const Points& pts, int q)
    {
        const T qx = pts.x(q), qy = pts.y(q), qz = pts.z(q);
        const T dx = qx - p[0], dy = qy - p[1], dz = qz - p[2];
        const T h2 = planSquared(dx, dy);
        const T d2 = h2 + dz * dz;
        if (rangeLowest > T(0) && notAbove && h2 <= rangeLowest2) {
            const T s = dot3<T>(pts.nx(q), pts.ny(q), pts.nz(q), dx, dy, dz);
            if (s < T(0))
                notAbove = false;
        }
        if (d2 < range2 && d2 < best) {
            if (average) {
                sum[0] += qx, sum[1] += qy, sum[2] += qz;
                sum[3] += pts.nx(q), sum[4] += pts.ny(q), sum[5] += pts.nz(q);
                ++n;
            } else {
                best = d2;
                nearest = q;
            }
        }
    }

    VX_HD bool found() const { return average ? n > 0 : nearest >= 0; }

    /// The plane point X and normal N; only after found().
    template <class Points> VX_HD void plane(const Points& pts, T X[3], T N[3]) const
    {
        if (average) {
            for (int k = 0; k < 3; ++k)
                X[k] = sum[k] / T(n), N[k] = sum[3 + k] / T(n);
            return;
        }
        X[0] = pts.x(nearest), X[1] = pts.y(nearest), X[2] = pts.z(nearest);
        N[0] = pts.nx(nearest), N[1] = pts.ny(nearest), N[2] = pts.nz(nearest);
    }

    /// The terms of p, whose own normal is that of point self, against the plane; only after
    /// found().
    template <class Points> VX_HD PlaneTerms<T> terms(const Points& pts, int self) const
    {
        T X[3], N[3];
        plane(pts, X, N);
        const T np[3] = {T(pts.nx(self)), T(pts.ny(self)), T(pts.nz(self))};
        return planeTerms(p, np, X, N);
    }
};

/// Rules of the first growth pass. Both forms take admitted last returns only: a first return is
/// neither grown nor marked. The record form (k_growGround) lets every related neighbour
/// (admitted, ground or marked) clear `lowest` and leaves a rejected point unchanged. The per-field
/// form (k_growGroundIntSoA) looks at ground neighbours only (for `lowest` too) and gives a point
/// rejected against a ground neighbour in range its class + 1000, so that the second per-field
/// pass leaves it alone.
enum class FirstPassRules { Records, Fields };

template <class T, class Points, class Index, class Groups, FirstPassRules Rules>
struct GrowGround : NeighbourhoodKernel<T, Points, Index, Groups> {
    GrowthParams<T> par;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0)
            return;
        const int cls = this->pts.cls(p);
        if (this->pts.lastReturn(p) != 1)
            return;
        const T P[3] = {T(this->pts.x(p)), T(this->pts.y(p)), T(this->pts.z(p))};
        GroundPlaneSearch<T> search(P[0], P[1], P[2], par, this->grid.maxX - this->grid.minX);
        bool lowest = true;
        // Dense cells are sampled only for long ranges, about 1000 entries a cell.
        const Visit how{par.range > T(5.0) ? 1000 : 0, false};
        this->forEachNeighbourOf(i, how, [&](int q, int, int) {
            const int qc = this->pts.cls(q);
            if (Rules == FirstPassRules::Records) {
                const bool related =
                    this->allowed.entry(qc) > 0 || qc == par.groundClass || qc == par.markClass;
                if (related && T(this->pts.z(q)) < P[2])
                    lowest = false;
                if (qc != par.groundClass)
                    return;
            } else {
                if (qc != par.groundClass)
                    return;
                if (T(this->pts.z(q)) < P[2])
                    lowest = false;
            }
            search.offer(this->pts, q);
        });
        if (!search.found())
            return;
        const PlaneTerms<T> t = search.terms(this->pts, p);
        const T minCos = T(par.minCosinus);
        const bool cosineFits = t.c >= minCos;
        const bool fits = (cosineFits && (t.e < par.distanceFromPlane * par.distanceFromPlane || lowest)) ||
                          ((t.c < minCos || t.c != t.c) && lowest);
        const bool accepted =
            search.notAbove && fits && t.dz < par.maxHeightDifference && t.g < T(par.maxCosinusPar2);
        if (accepted)
            this->pts.setCls(p, par.markClass);
        else if (Rules == FirstPassRules::Fields)
            this->pts.setCls(p, cls + 1000);
    }
};
/// The first growth pass of layout L: the record rules, or the per-field ones (k_growGroundIntSoA).
template <class T, class L>
using k_growGround = GrowGround<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>,
                                L::fields ? FirstPassRules::Fields : FirstPassRules::Records>;

/// Cell runs whose end is taken as start + count rather than read, as the second per-field pass
/// has always done.
template <class Groups> struct RunsFromStartAndCount {
    Groups groups;
    VX_HD int start(int c) const { return groups.start(c); }
    VX_HD int count(int c) const { return groups.count(c); }
    VX_HD int end(int c) const { return groups.start(c) + groups.count(c); }
};

/// Second per-field pass (k_growGroundSoA): points the first pass left unchanged, looked at
/// from the 26 surrounding cells only (never their own), every entry. Any lower point clears
/// `lowest`, whatever its class; a lowest point fits without looking at the normals.
template <class T, class Points, class Index, class Groups>
struct GrowGroundFromSurroundingCells : NeighbourhoodKernel<T, Points, Index, Groups> {
    GrowthParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        const int cls = this->pts.cls(p);
        if (cls > 255 || cls == par.markClass)
            return;
        if (!this->allowed.admits(cls) || this->pts.lastReturn(p) != 1)
            return;
        const T P[3] = {T(this->pts.x(p)), T(this->pts.y(p)), T(this->pts.z(p))};
        GroundPlaneSearch<T> search(P[0], P[1], P[2], par, this->grid.maxX - this->grid.minX);
        bool lowest = true;
        // Empty cells (count below 1) give an empty run from start + count, so they are skipped.
        const RunsFromStartAndCount<Groups> runs{this->groups};
        forEachNeighbour(this->itg, runs, this->grid, this->itg.group(i), Visit{0, true},
                         [&](int q, int, int) {
                             if (T(this->pts.z(q)) < P[2])
                                 lowest = false;
                             if (this->pts.cls(q) != par.groundClass)
                                 return;
                             search.offer(this->pts, q);
                         });
        if (!search.found())
            return;
        const PlaneTerms<T> t = search.terms(this->pts, p);
        const bool fits =
            lowest || (t.c >= T(par.minCosinus) && t.e < par.distanceFromPlane * par.distanceFromPlane);
        if (search.notAbove && fits && t.dz < par.maxHeightDifference && t.gFields < T(par.maxCosinusPar2))
            this->pts.setCls(p, par.markClass);
    }
};
template <class T> using k_growGroundSoA = GrowGroundFromSurroundingCells<T, SoaPoints, SoaIndex, SoaGroups>;

/// The passes of one growth iteration in layout L: the first pass, then in the per-field layout
/// the pass over the surrounding cells (k_growGroundSoA) for the points the first left unchanged.
template <class T, class L> struct GrowthPasses {
    template <class Context, class Run>
    static void run(const Context& c, L layout, const GrowthParams<T>& par, Run&& pass)
    {
        pass(k_growGround<T, L>{c.views(layout), par});
        if constexpr (L::fields)
            pass(k_growGroundSoA<T>{c.views(layout), par});
    }
};

} // namespace vx
