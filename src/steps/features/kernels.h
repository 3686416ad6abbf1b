// Kernels of the point features, written once for both layouts: the two phases of the normal
// vectors (neighbourhood mean, then principal components) and the height index within a cell.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "grid/Neighbourhood.h"
#include "grid/OrderedXyz.h"
#include "grid/PointKernel.h"
#include "steps/common/Eigen3.h"
#include "steps/features/Means.h"

namespace vx {

/// Height towards which every normal is turned.
constexpr double kNormalViewHeight = 10000.0;
/// Eigenvalues of the squared covariance above this count towards the neighbourhood's rank.
constexpr double kRankThreshold = 1e-10;

/// Phase 1: the mean of the neighbours within range (a neighbour exactly at the range counts).
/// Too few neighbours leave the undivided sum in the record and a zero normal.
template <class T, class Points, class Index, class Groups, class Means> struct NormalMean {
    Points pts;
    Index itg;
    Groups groups;
    OrderedXyz<typename Points::Real> xyz;
    VX_DecompositionGridParameters<T> grid;
    Means means;
    int count;
    int divisor;
    T range;
    int minimalNN;

    VX_HD void operator()(int i) const
    {
        using M = typename Means::Real;
        const int p = itg.pointIndex(i);
        const T px = xyz.x(i), py = xyz.y(i), pz = xyz.z(i);
        const T range2 = range * range;
        M sx = 0, sy = 0, sz = 0;
        int n = 0;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{divisor, false}, [&](int, int j, int) {
            const auto qx = xyz.x(j), qy = xyz.y(j), qz = xyz.z(j);
            if (squaredDistance<T>(px - T(qx), py - T(qy), pz - T(qz)) <= range2) {
                sx += M(qx);
                sy += M(qy);
                sz += M(qz);
                ++n;
            }
        });
        if (n < minimalNN) {
            means.set(i, sx, sy, sz);
            pts.setNormal(p, T(0), T(0), T(0));
            return;
        }
        if (n == 0) {
            means.set(i, M(0), M(0), M(0));
            return;
        }
        means.set(i, M(T(sx) / T(n)), M(T(sy) / T(n)), M(T(sz) / T(n)));
    }
};

/// Phase 2: covariance of the neighbours strictly within range about the phase-1 mean, its
/// principal components, the normal turned towards the view height, and the shape class of
/// admitted points.
template <class T, class Points, class Index, class Groups, class Means> struct NormalVector {
    Points pts;
    Index itg;
    Groups groups;
    OrderedXyz<typename Points::Real> xyz;
    VX_DecompositionGridParameters<T> grid;
    Means means;
    AllowedClasses allowed;
    int count;
    int divisor;
    T range;
    int minimalNN;
    int planarClass;
    int scatterClass;
    int linearClass;

    VX_HD void operator()(int i) const
    {
        const int p = itg.pointIndex(i);
        const T px = xyz.x(i), py = xyz.y(i), pz = xyz.z(i);
        const T mx = means.x(i), my = means.y(i), mz = means.z(i);
        const T range2 = range * range;
        double sxx = 0, sxy = 0, sxz = 0, syy = 0, syz = 0, szz = 0;
        int n = 0;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{divisor, false}, [&](int, int j, int) {
            const T qx = xyz.x(j), qy = xyz.y(j), qz = xyz.z(j);
            if (!(squaredDistance<T>(px - qx, py - qy, pz - qz) < range2))
                return;
            const T dx = mx - qx, dy = my - qy, dz = mz - qz;
            sxx += double(dx * dx);
            sxy += double(dx * dy);
            sxz += double(dx * dz);
            syy += double(dy * dy);
            syz += double(dy * dz);
            szz += double(dz * dz);
            ++n;
        });
        if (n <= minimalNN) {
            pts.setNormal(p, T(0), T(0), T(0));
            return;
        }
        const double dn = n;
        const double s[3][3] = {
            {sxx / dn, sxy / dn, sxz / dn}, {sxy / dn, syy / dn, syz / dn}, {sxz / dn, syz / dn, szz / dn}};
        Vec3d nrm{0.0, 0.0, 0.0};
        double l[3];
        if (!normalFromCovariance(s, nrm, l)) {
            pts.setNormal(p, T(0), T(0), T(0));
            return;
        }
        if (nrm.z * (kNormalViewHeight - double(pz)) < 0.0)
            nrm = {-nrm.x, -nrm.y, -nrm.z};
        pts.setNormal(p, T(nrm.x), T(nrm.y), T(nrm.z));

        if (!allowed.admits(pts.cls(p)))
            return;
        // The singular values of the covariance; a zero s1 makes every ratio NaN, which passes
        // no test.
        const double s1 = 100.0 * ::sqrt(l[0]), s2 = 100.0 * ::sqrt(l[1]), s3 = 100.0 * ::sqrt(l[2]);
        if (s3 / s1 >= 0.1)
            pts.setCls(p, scatterClass);
        else if ((s1 - s2) / s1 >= 0.6)
            pts.setCls(p, linearClass);
        else if ((s1 - s3) / s1 >= 0.9)
            pts.setCls(p, planarClass);
    }
};

/// The mean array of a layout.
template <class T, class L> using MeansOf = std::conditional_t<L::fields, SoaMeans, AosMeans<T>>;
template <class T, class L>
using k_NVPCASVD_calculateMean = NormalMean<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>, MeansOf<T, L>>;
template <class T, class L>
using K_NVPCASVD_calculateNormals = NormalVector<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>, MeansOf<T, L>>;

/// Marks points that are not admitted, or whose cell has no height span.
constexpr float kNoHeightIndex = 1.01f;

/// Relative height of a point between the lowest and highest admitted points of a sample of its
/// own cell. Points below the sampled minimum get 0; there is no upper clamp, since a point left
/// out of the sample may lie above the sampled maximum.
template <class T, class Points, class Index, class Groups> struct HeightIndex {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    int count;
    VX_DecompositionGridParameters<T> grid;
    int referenceClass; ///< carried for callers that pass it; it does not change the result
    int divisor;

    VX_HD void operator()(int i) const
    {
        const int p = itg.pointIndex(i);
        if (!(allowed.entry(pts.cls(p)) > 0)) {
            pts.setHeightIndex(p, kNoHeightIndex);
            return;
        }
        T zmin = grid.maxZ, zmax = grid.minZ;
        forEachInCell(itg, groups, itg.group(i), divisor, [&](int q, int) {
            if (allowed.entry(pts.cls(q)) == 0)
                return;
            const T qz = pts.z(q);
            if (qz < zmin)
                zmin = qz;
            if (qz > zmax)
                zmax = qz;
        });
        const T span = zmax - zmin;
        if (span == T(0)) {
            pts.setHeightIndex(p, kNoHeightIndex);
            return;
        }
        T h = (T(pts.z(p)) - zmin) / span;
        if (h < T(0))
            h = T(0);
        pts.setHeightIndex(p, static_cast<float>(h));
    }
};

template <class T, class L> using k_calculateHeightIndex = OnLayout<HeightIndex, T, L>;

} // namespace vx
