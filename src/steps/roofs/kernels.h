// Kernels of the roof test by echoes, written once for both layouts: a judging pass that writes a
// verdict per point, then a pass that gives the class. Judging reads the building class of other
// points but never a class this step gives, so the verdicts do not depend on the order in which
// points are judged.
#pragma once

#include "grid/PointKernel.h"
#include "steps/common/Eigen3.h"
#include "steps/common/Marks.h"

#include <cstdint>

namespace vx {

/// Least vertical part of a roof plane's unit normal: roofs slope by at most 60 degrees.
constexpr double kLeastRoofNormalZ = 0.5;

template <class T> struct RoofEchoParams {
    T range;           ///< plan radius of the neighbourhood
    T minHeight;       ///< least height above ground of a raised point
    int minPoints;     ///< fewest raised points in the neighbourhood, the point included
    float singleShare; ///< least share of single-return pulses among them
    T roughness;       ///< largest RMS distance from their best-fitting plane
    int buildingClass; ///< raised points of this class count as neighbours too
};

/// A roof stops a pulse, so it returns one echo; a canopy lets part of the pulse through to the
/// branches and the ground beneath, so its points mostly come from pulses with several echoes.
/// The admitted point at sorted position i is a roof point when it is raised (height above
/// ground at least minHeight) and the raised points within range in plan, itself included,
/// counting the admitted ones and those of buildingClass:
/// - number at least minPoints;
/// - come from single-return pulses for at least singleShare of them;
/// - lie within roughness (RMS) of their best-fitting plane, which slopes by at most 60 degrees.
/// Points without a height (NaN) are never raised.
template <class T, class Points, class Index, class Groups>
struct JudgeRoofEchoes : NeighbourhoodKernel<T, Points, Index, Groups> {
    const float* height;    ///< height above ground, by point index
    const uint8_t* returns; ///< number of returns of the point's pulse, by point index
    uint8_t* verdict;       ///< 1: roof, by point index
    RoofEchoParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        verdict[p] = judge(i, p) ? 1 : 0;
    }

    VX_HD bool raised(int q) const { return height[q] >= static_cast<float>(par.minHeight); }

    VX_HD bool judge(int i, int p) const
    {
        if (this->ownPoint(i) < 0 || !raised(p))
            return false;
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T range2 = par.range * par.range;
        int count = 0, single = 0;
        // Offsets from the point keep the sums small; double keeps the covariance exact enough
        // for centimetre roughness in both precisions.
        double s[3] = {0, 0, 0}, ss[3][3] = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const int cls = this->pts.cls(q);
            if (!(this->allowed.admits(cls) || cls == par.buildingClass) || !raised(q))
                return;
            const T dx = T(this->xOf(q, j)) - px, dy = T(this->yOf(q, j)) - py;
            if (planSquared<T>(dx, dy) > range2)
                return;
            const double d[3] = {static_cast<double>(dx), static_cast<double>(dy),
                                 static_cast<double>(T(this->zOf(q, j)) - pz)};
            ++count;
            if (returns[q] <= 1)
                ++single;
            for (int a = 0; a < 3; ++a) {
                s[a] += d[a];
                for (int b = 0; b < 3; ++b)
                    ss[a][b] += d[a] * d[b];
            }
        });
        if (count < par.minPoints || static_cast<float>(single) < par.singleShare * static_cast<float>(count))
            return false;
        double cov[3][3];
        for (int a = 0; a < 3; ++a)
            for (int b = 0; b < 3; ++b)
                cov[a][b] = ss[a][b] / count - (s[a] / count) * (s[b] / count);
        double l[3];
        symmetricEigenvalues(cov, l);
        const double rough = static_cast<double>(par.roughness);
        if (l[2] > rough * rough)
            return false;
        // The plane's normal: the eigenvector of the least eigenvalue. A plane steeper than any
        // roof is a wall or a rough heap that a tilted plane happens to fit.
        for (int a = 0; a < 3; ++a)
            cov[a][a] -= l[2];
        const Vec3d normal = normalized(nullVector(cov, true));
        return normal.z >= kLeastRoofNormalZ || normal.z <= -kLeastRoofNormalZ;
    }
};
template <class T, class L> using k_judgeRoofEchoes = OnLayout<JudgeRoofEchoes, T, L>;

} // namespace vx
