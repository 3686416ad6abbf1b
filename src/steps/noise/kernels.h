// Kernels of the noise step, written once for both layouts: a judging pass that writes a verdict
// per point, then a pass that gives the classes. Judging never reads a class the step changes,
// so the verdicts do not depend on the order in which points are judged.
#pragma once

#include "grid/PointKernel.h"
#include "steps/common/PlaneFit.h"

#include <cstdint>

namespace vx {

/// What the judging pass says of a point.
enum NoiseVerdict : uint8_t { NoiseKept = 0, NoiseLow = 1, NoiseHigh = 2 };

template <class T> struct NoiseParams {
    T range;           ///< radius of the isolation test
    int minNeighbours; ///< fewer other admitted points within range: isolated
    T gap;             ///< empty height band that parts a far-off group from the bulk
    int groupPoints;   ///< largest far-off group that is noise (0: no far-off test)
    T pitDepth;        ///< depth below the fitted plane of the others that makes a pit (0: no pit test)
    int pitGroup;      ///< most returns sunk together that the pit test takes, the point included
};

/// A pit lies deeper below the plane than this many times the others' scatter about it: bare
/// ground, slopes and gentle hollows fit their plane closely; valleys, cones, canopies and walls
/// scatter by a large share of their depth.
constexpr double kPitScatterMultiple = 4.0;

/// Judges the admitted point at sorted position i against the admitted points of its own and the
/// adjacent columns (its column block), the point itself included in the height counts:
/// - far-off above: the chain of heights reached from the point's height downwards in steps
///   shorter than gap ends at a height lo with an empty band of at least gap beneath it; at most
///   groupPoints points lie at or above lo, and more than that lie below the band;
/// - far-off below: the same upwards, ending at hi, with the counts taken below and above;
/// - isolated: fewer than minNeighbours other points within range in 3D; low when more of the
///   block lies above it than below, high otherwise (also when the block holds nothing else).
/// - pit (pitDepth > 0): at least kPlaneLeastPoints others lie within range in plan, the least
///   squares plane through them passes above the point by more than pitDepth (and at most
///   range; deeper, isolation decides) and by more than
///   kPitScatterMultiple times their scatter about it, and each of them lies at least half that
///   depth above the point along the plane's tilt; always low. A return sunk below smooth
///   ground by less than range has ground neighbours within range and is not isolated. With
///   pitGroup > 1, up to pitGroup - 1 others may lie that low (returns sunk together): the
///   plane is then fitted without them, and the tests read that plane.
/// Far-off verdicts come first, the pit test last. Non-admitted points are neither judged nor
/// counted. Each far-off
/// walk adds at least one point to its side per pass over the block and stops once the side
/// holds more than groupPoints, so a point costs at most 2 groupPoints + 3 passes.
template <class T, class Points, class Index, class Groups>
struct JudgeNoise : NeighbourhoodKernel<T, Points, Index, Groups> {
    uint8_t* verdict; ///< by point index
    NoiseParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        verdict[p] = judge(i, p);
    }

    VX_HD uint8_t judge(int i, int p) const
    {
        if (this->ownPoint(i) < 0)
            return NoiseKept;
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T range2 = par.range * par.range;
        int close = 0, above = 0, below = 0;
        // Once the point has its neighbours and both sides hold a group's worth, no test below can
        // judge it noise: the visit ends there.
        const int enough = par.groupPoints > 0 ? par.groupPoints : 0;
        this->forEachNeighbourOfWhile(i, [&](int q) {
            if (q == p || !this->allowed.admits(this->pts.cls(q)))
                return true;
            const T qz = this->pts.z(q);
            if (qz > pz)
                ++above;
            else if (qz < pz)
                ++below;
            if (squaredDistance<T>(px - T(this->pts.x(q)), py - T(this->pts.y(q)), pz - qz) < range2)
                ++close;
            return !(close >= par.minNeighbours && above >= enough && below >= enough);
        });
        if (par.groupPoints > 0) {
            // The cheap bound first: the point's own side holds at least everything beyond it.
            if (above < par.groupPoints && farOffAbove(i, pz))
                return NoiseHigh;
            if (below < par.groupPoints && farOffBelow(i, pz))
                return NoiseLow;
        }
        if (close < par.minNeighbours)
            return above > below ? NoiseLow : NoiseHigh;
        if (par.pitDepth > 0 && pit(i, px, py, pz))
            return NoiseLow;
        return NoiseKept;
    }

    /// The pit test (see PlaneFit.h for the sums).
    VX_HD bool pit(int i, T px, T py, T pz) const
    {
        const double range2 = double(par.range) * double(par.range);
        // Calls each admitted other within range in plan with its offsets from the point.
        const auto forEachOther = [&](auto&& take) {
            this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
                if (!this->allowed.admits(this->pts.cls(q)))
                    return;
                const double dx = double(this->xOf(q, j)) - double(px),
                             dy = double(this->yOf(q, j)) - double(py);
                const double dz = double(this->zOf(q, j)) - double(pz);
                const double d2 = dx * dx + dy * dy;
                if (d2 < range2 && !(d2 == 0 && dz == 0))
                    take(dx, dy, dz);
            });
        };
        PlaneSums sums;
        forEachOther([&](double dx, double dy, double dz) { sums.add(dx, dy, dz); });
        Plane plane;
        if (sums.n < kPlaneLeastPoints || !fitPlane(sums, plane))
            return false; // too few others, or they lie on a line or a point: no plane
        // The plane of all the others lies more than the depth above a return sunk alone, and more
        // than half of it above one of a group, which pulls the plane down by less than that
        // where the others outnumber the group twice over. Most points fail here, after one walk.
        if (!(plane.a > (par.pitGroup > 1 ? 0.5 : 1.0) * double(par.pitDepth)))
            return false;
        // The least-squares plane of all the others fits them at least as closely as the plane
        // without the group does: within a quarter of its depth (at most twice a) for the rest, and
        // within about twice its depth for each of the group. A plane of all that scatters more
        // leaves no pit, whichever group is taken out; most points beside walls and under
        // canopies end here.
        if (!(plane.sse < plane.a * plane.a * (0.25 * sums.n + 16.0 * (par.pitGroup - 1))))
            return false;
        // Companions: others less than half the depth above the point along the plane's tilt. A
        // ground return under a canopy has many, the others of its own level beside it, which
        // the canopy's many points outweigh in the fit; a return sunk alone has none, one of a
        // few sunk together the rest of its group.
        PlaneSums companions, rest;
        forEachOther([&](double dx, double dy, double dz) {
            (dz - plane.b * dx - plane.c * dy < 0.5 * plane.a ? companions : rest).add(dx, dy, dz);
        });
        if (companions.n + 1 > par.pitGroup)
            return false;
        // The plane of the others without the group, which pulls it down.
        if (companions.n > 0 && (rest.n < kPlaneLeastPoints || !fitPlane(rest, plane)))
            return false;
        const double a = plane.a, n = rest.n;
        // Deeper than the range, the point has no neighbour left within it, and the isolation
        // test decides; a canopy over a lone ground return lies that far up.
        if (!(a > double(par.pitDepth)) || a > double(companions.n > 0 ? par.gap : par.range))
            return false;
        const double limit = a / kPitScatterMultiple;
        if (!(plane.sse < limit * limit * n))
            return false;
        if (companions.n == 0)
            return true;
        // The group still lies below half the depth of the plane without it, and no other does.
        int low = 0;
        forEachOther(
            [&](double dx, double dy, double dz) { low += dz - plane.b * dx - plane.c * dy < 0.5 * a; });
        return low == companions.n;
    }

    /// Walks down from z; true when the point's side above the first band of at least gap holds
    /// at most groupPoints points and fewer than the block below the band.
    VX_HD bool farOffAbove(int i, T z) const
    {
        T lo = z;
        for (;;) {
            int side = 0, rest = 0;
            bool extends = false;
            T next = lo;
            this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
                if (!this->allowed.admits(this->pts.cls(q)))
                    return;
                const T qz = this->zOf(q, j);
                if (qz >= lo) {
                    ++side;
                    return;
                }
                ++rest;
                if (qz > lo - par.gap && qz < next) {
                    next = qz;
                    extends = true;
                }
            });
            if (side > par.groupPoints)
                return false;
            if (!extends)
                return rest > side;
            lo = next;
        }
    }

    /// Walks up from z; the mirror of farOffAbove.
    VX_HD bool farOffBelow(int i, T z) const
    {
        T hi = z;
        for (;;) {
            int side = 0, rest = 0;
            bool extends = false;
            T next = hi;
            this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
                if (!this->allowed.admits(this->pts.cls(q)))
                    return;
                const T qz = this->zOf(q, j);
                if (qz <= hi) {
                    ++side;
                    return;
                }
                ++rest;
                if (qz < hi + par.gap && qz > next) {
                    next = qz;
                    extends = true;
                }
            });
            if (side > par.groupPoints)
                return false;
            if (!extends)
                return rest > side;
            hi = next;
        }
    }
};
template <class T, class L> using k_judgeNoise = OnLayout<JudgeNoise, T, L>;

/// Gives the classes of the verdicts: lowClass to NoiseLow, highClass to NoiseHigh.
template <class T, class Points, class Index, class Groups>
struct MarkNoise : NeighbourhoodKernel<T, Points, Index, Groups> {
    const uint8_t* verdict;
    int lowClass, highClass;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        if (verdict[p] == NoiseLow)
            this->pts.setCls(p, lowClass);
        else if (verdict[p] == NoiseHigh)
            this->pts.setCls(p, highClass);
    }
};
template <class T, class L> using k_markNoise = OnLayout<MarkNoise, T, L>;

/// Verdicts equal to `of`, for counting.
struct IsNoiseVerdict {
    uint8_t of;
    VX_HD bool operator()(uint8_t v) const { return v == of; }
};

} // namespace vx
