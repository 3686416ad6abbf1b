// The completion of the vegetation step: low points under vegetation take the tier of their
// signed height, and points left on the plane between ground and low vegetation go to the
// nearer of the two surfaces. Written once for both layouts.
#pragma once

#include "steps/vegetation/VegetationCommon.h"

#include <climits>

namespace vx {

/// k_completePlants: h is the signed height above the first ground point in plan range that is
/// nearer in height than the height so far; once negative it stays. With vegetation above the
/// point, its tier follows h (a point at or below the ground keeps its class). Otherwise a point
/// under the mean ground plane, at most the low limit above ground and with no building in plan
/// range, becomes low vegetation.
template <class T, class Points, class Index, class Groups>
struct CompletePlants : NeighbourhoodKernel<T, Points, Index, Groups> {
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        const int self = this->ownPoint(i);
        if (self < 0)
            return;
        const T px = this->pts.x(self), py = this->pts.y(self), pz = this->pts.z(self);
        const T range2 = p.VegetationRange * p.VegetationRange;

        T h = initialGroundHeight(this->grid);
        // The mean ground position and normal are kept in single precision.
        float sumX = 0.f, sumY = 0.f, sumZ = 0.f, sumNx = 0.f, sumNy = 0.f, sumNz = 0.f;
        int groundCount = 0;
        bool groundSeen = false, buildingSeen = false, vegetationAbove = false;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const T qx = this->xOf(q, j), qy = this->yOf(q, j), qz = this->zOf(q, j);
            if (!(planSquared(px - qx, py - qy) < range2))
                return;
            const int cls = this->classSeen(q, j, i);
            if (cls == p.groundClass) {
                const T dz = pz - qz;
                if (absOf(dz) < h)
                    h = dz;
                sumX = static_cast<float>(sumX + qx);
                sumY = static_cast<float>(sumY + qy);
                sumZ = static_cast<float>(sumZ + qz);
                sumNx = static_cast<float>(sumNx + T(this->pts.nx(q)));
                sumNy = static_cast<float>(sumNy + T(this->pts.ny(q)));
                sumNz = static_cast<float>(sumNz + T(this->pts.nz(q)));
                ++groundCount;
                groundSeen = true;
            }
            if (cls == p.BuildingClass)
                buildingSeen = true;
            if (isVegetation(cls, p) && qz - pz > T(0))
                vegetationAbove = true;
        });

        if (vegetationAbove) {
            if (h > T(0) && h <= p.VegetationLowLimit)
                this->pts.setCls(self, p.lowVegetationClass);
            else if (h > p.VegetationHighLimit)
                this->pts.setCls(self, p.highVegetationClass);
            else if (h > p.VegetationLowLimit)
                this->pts.setCls(self, p.mediumVegetationClass);
            return;
        }
        if (!groundSeen || buildingSeen)
            return;
        const float n = static_cast<float>(groundCount);
        const float gx = sumX / n, gy = sumY / n, gz = sumZ / n;
        const float gnx = sumNx / n, gny = sumNy / n, gnz = sumNz / n;
        const T side = T(gnx) * (T(gx) - px) + T(gny) * (T(gy) - py) + T(gnz) * (T(gz) - pz);
        if (side < T(0) && h <= p.VegetationLowLimit)
            this->pts.setCls(self, p.lowVegetationClass);
    }
};
template <class T, class L> using k_completePlants = OnLayout<CompletePlants, T, L>;

/// The nearest point of one class seen so far. A strictly smaller squared distance replaces it,
/// so of two equally near points the first in traversal order is kept.
template <class T> struct NearestPoint {
    T best;
    int improvements;
    T x, y, z, nx, ny, nz;

    template <class Points> VX_HD void offer(T d2, const Points& pts, int q)
    {
        if (!(d2 < best))
            return;
        best = d2;
        ++improvements;
        x = pts.x(q), y = pts.y(q), z = pts.z(q);
        nx = pts.nx(q), ny = pts.ny(q), nz = pts.nz(q);
    }
    /// Squared distance of (px, py, pz) from the tangent plane of the kept point; NaN for a
    /// zero normal.
    VX_HD T planeDistance2(T px, T py, T pz) const
    {
        return squaredOverNormal(dot3(nx, ny, nz, px - x, py - y, pz - z), nx, ny, nz);
    }
};

/// Sampling that visits every entry but leaves out cells whose count is below 1.
constexpr int kEveryEntryOfOccupiedCells = INT_MAX;

/// k_completePlantsPhase2: a point still on the building plane class, at most the low limit
/// above the ground, with ground and low vegetation in plan range, goes to low vegetation when
/// ratio x (its squared distance from the nearest low-vegetation plane) is at most its squared
/// distance from the nearest ground plane, or the ratio is 0; otherwise it becomes ground.
/// SkipEmptyCells: the per-field form passes over cells whose count is below 1.
template <class T, class Points, class Index, class Groups, bool SkipEmptyCells>
struct CompletePlantsPhase2 : NeighbourhoodKernel<T, Points, Index, Groups> {
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        const int self = this->ownPoint(i);
        if (self < 0)
            return;
        const int own = this->pts.cls(self);
        const T px = this->pts.x(self), py = this->pts.y(self), pz = this->pts.z(self);
        const T range2 = p.VegetationRange * p.VegetationRange;

        T h = initialGroundHeight(this->grid);
        bool groundSeen = false;
        NearestPoint<T> ground{range2, 0, T(0), T(0), T(0), T(0), T(0), T(0)};
        NearestPoint<T> lowVegetation{range2, 0, T(0), T(0), T(0), T(0), T(0), T(0)};
        const Visit how{SkipEmptyCells ? kEveryEntryOfOccupiedCells : 0, false};
        this->forEachNeighbourOf(i, how, [&](int q, int j, int) {
            const T dz = pz - T(this->zOf(q, j));
            const T plan2 = planSquared(px - T(this->xOf(q, j)), py - T(this->yOf(q, j)));
            const T d2 = plan2 + dz * dz;
            if (!(plan2 < range2))
                return;
            const int cls = this->classSeen(q, j, i);
            if (cls == p.groundClass) {
                ground.offer(d2, this->pts, q);
                if (dz < h)
                    h = dz;
                groundSeen = true;
            }
            if (cls == p.lowVegetationClass)
                lowVegetation.offer(d2, this->pts, q);
        });

        if (!(h < p.VegetationLowLimit && groundSeen && ground.improvements > 0 &&
              lowVegetation.improvements > 0 && own == p.NeighbourPlaneClass))
            return;
        const T dG2 = ground.planeDistance2(px, py, pz);
        const T dL2 = lowVegetation.planeDistance2(px, py, pz);
        if (T(p.VegetationRatio) * dL2 <= dG2 || p.VegetationRatio == 0.f)
            this->pts.setCls(self, p.lowVegetationClass);
        else
            this->pts.setCls(self, p.groundClass);
    }
};
template <class T, class L>
using k_completePlantsPhase2 = CompletePlantsPhase2<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>, L::fields>;

} // namespace vx
