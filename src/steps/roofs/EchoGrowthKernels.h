// Kernels of the growth by echoes, written once for both layouts: a judging pass that writes a
// verdict per point from the classes of the last pass, then a pass that gives the classes. Roofs
// grow over raised single-return points, canopy over raised points of pulses with several
// returns: a roof stops the pulse, a canopy lets part of it through.
#pragma once

#include "grid/PointKernel.h"

#include <cstdint>

namespace vx {

/// What one growth counts and takes.
template <class T> struct EchoGrowthParams {
    T range;            ///< plan radius of the neighbourhood
    T minHeight;        ///< least height above ground of a raised point
    float share;        ///< least share of grown-class points among the raised neighbours
    bool severalEchoes; ///< takes points of pulses with several returns (else single returns)
    int classes[3];     ///< the classes that grow (the same one three times for a single class)

    VX_HD bool grown(int cls) const { return cls == classes[0] || cls == classes[1] || cls == classes[2]; }
};

/// One pass of growth over the points the tests left: the admitted point at sorted position i,
/// raised (height above ground at least minHeight) and from a pulse with the echoes the growth
/// takes, joins when, of the other raised points within range in plan, whatever their class, at
/// least share are of the growing classes. A roof's ridge or eaves, whose neighbourhood spans
/// two planes or the wall, is surrounded by roof; a crown the vegetation step left, where few
/// ground returns come through, by canopy. Writes a verdict per point from the classes of the
/// last pass, so the result does not depend on the order of the points.
template <class T, class Points, class Index, class Groups>
struct JudgeEchoGrowth : NeighbourhoodKernel<T, Points, Index, Groups> {
    const float* height;    ///< height above ground, by point index
    const uint8_t* returns; ///< number of returns of the point's pulse, by point index
    uint8_t* verdict;       ///< 1: joins, by point index
    EchoGrowthParams<T> par;

    VX_HD bool raised(int q) const { return height[q] >= static_cast<float>(par.minHeight); }

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        verdict[p] = judge(i, p) ? 1 : 0;
    }

    VX_HD bool judge(int i, int p) const
    {
        if (this->ownPoint(i) < 0 || par.grown(this->pts.cls(p)) || !raised(p) ||
            (returns[p] > 1) != par.severalEchoes)
            return false;
        const T px = this->pts.x(p), py = this->pts.y(p);
        const T range2 = par.range * par.range;
        int count = 0, grown = 0;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            if (q == p || !raised(q))
                return;
            if (planSquared<T>(T(this->xOf(q, j)) - px, T(this->yOf(q, j)) - py) > range2)
                return;
            ++count;
            if (par.grown(this->pts.cls(q)))
                ++grown;
        });
        return count > 0 && static_cast<float>(grown) >= par.share * static_cast<float>(count);
    }
};
template <class T, class L> using k_judgeEchoGrowth = OnLayout<JudgeEchoGrowth, T, L>;

/// Gives the points that joined their class: the class below low, between low and high, or
/// from high on of their height above ground (one class three times gives that class).
template <class T, class Points, class Index, class Groups>
struct MarkGrown : NeighbourhoodKernel<T, Points, Index, Groups> {
    const uint8_t* verdict;
    const float* height;
    T low, high;
    int classes[3];

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        if (verdict[p] != 1)
            return;
        const T h = static_cast<T>(height[p]);
        this->pts.setCls(p, h < low ? classes[0] : (h < high ? classes[1] : classes[2]));
    }
};
template <class T, class L> using k_markGrown = OnLayout<MarkGrown, T, L>;

} // namespace vx
