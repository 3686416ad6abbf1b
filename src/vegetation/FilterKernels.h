// The vegetation filter and the two passes that spread its classes, written once for both
// layouts. One thread per position of the sorted index; each writes only its own point.
#pragma once

#include "vegetation/VegetationCommon.h"

namespace vx {

/// k_filterPlants: an admitted point becomes vegetation of its height tier when its
/// neighbourhood is chaotic enough (or full of non-last returns), some ground lies within the
/// range in plan and no building point lies within the range.
template <class T, class Points, class Index, class Groups> struct FilterPlants {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int self = itg.pointIndex(i);
        if (!allowed.admits(pts.cls(self)))
            return;
        const T px = pts.x(self), py = pts.y(self), pz = pts.z(self);
        const T nx = pts.nx(self), ny = pts.ny(self), nz = pts.nz(self);
        const T nLength = sqrtOf<T>(nx * nx + ny * ny + nz * nz);
        const T d = -(nx * px + ny * py + nz * pz);
        const T range2 = p.VegetationRange * p.VegetationRange;

        T h = initialGroundHeight(grid);
        // Counts the ground points met just below, above or at the point's height, and is at the
        // same time the class that counts as ground: after each such point the next class up is
        // taken for ground by the neighbours visited later. Kept on purpose; results rely on it.
        int ground = p.groundClass;
        bool groundSeen = false, buildingSeen = false;
        int ghosts = 0, allowedVoters = 0, chaotic = 0;

        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int j, int cell) {
            const T qx = pts.x(q), qy = pts.y(q), qz = pts.z(q);
            const T dz = pz - qz;
            const T plan2 = planSquared(px - qx, py - qy);
            const int cls = pts.cls(q);
            if (plan2 < range2 && cls == ground) {
                groundSeen = true;
                if (absOf(dz) < h)
                    h = absOf(dz);
            }
            if (!(plan2 + dz * dz < range2))
                return;

            T planeDist = T(0), cosine = T(0);
            if (nLength != T(0)) {
                planeDist = absOf(nx * qx + ny * qy + nz * qz + d) / nLength;
                const T mx = pts.nx(q), my = pts.ny(q), mz = pts.nz(q);
                if (!(mx == T(0) && my == T(0) && mz == T(0)))
                    cosine = absOf(nx * mx + ny * my + nz * mz) /
                             (nLength * sqrtOf<T>(mx * mx + my * my + mz * mz));
            }
            if (pts.lastReturn(q) == 0)
                ++ghosts;
            if (allowed.admits(cls))
                ++allowedVoters;
            if (cls == p.ChaosClass)
                ++chaotic;
            else if (planeDist >= p.VegetationDfG && cosine < T(p.VegetationMaxCos))
                ++chaotic;
            if (cls == ground && dz < p.VegetationLowLimit)
                ++ground;
            if (cls == p.BuildingClass)
                buildingSeen = true;
            reportForeignEntry(itg.group(j), cell);
        });

        const float chaosShare = voteShare(chaotic, allowedVoters);
        const float ghostShare = voteShare(ghosts, allowedVoters);
        const bool chaoticPlace =
            static_cast<double>(chaosShare) >= static_cast<double>(p.VegetationProcOfChaos) &&
            static_cast<double>(ghostShare) >= 0.5 * static_cast<double>(p.VegetationProcOfGhosts);
        if ((chaoticPlace || ghostShare > p.VegetationProcOfGhosts) && !buildingSeen && groundSeen)
            pts.setCls(self, vegetationTier(h, p));
    }
};
template <class T> using k_filterPlants = FilterPlants<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_filterPlantsSoA = FilterPlants<T, SoaPoints, SoaIndex, SoaGroups>;

/// k_iteratePlants: a point of the initial class beside vegetation, in a neighbourhood with
/// enough chaos and non-last returns, takes the tier of its height. Every neighbour in range
/// votes (the table is read at the point's own class), and the point's class must equal the
/// number of chaos neighbours as well as the initial class; both rules are kept as they stand.
template <class T, class Points, class Index, class Groups> struct IteratePlants {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int self = itg.pointIndex(i);
        const int own = pts.cls(self);
        if (!allowed.admits(own))
            return;
        const T px = pts.x(self), py = pts.y(self), pz = pts.z(self);
        const T range2 = p.VegetationRange * p.VegetationRange;

        T h = initialGroundHeight(grid);
        int ghosts = 0, chaoticNeighbours = 0, voters = 0;
        bool vegetationSeen = false;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T dz = pz - T(pts.z(q));
            const T plan2 = planSquared(px - T(pts.x(q)), py - T(pts.y(q)));
            const int cls = pts.cls(q);
            if (plan2 < range2 && cls == p.groundClass && absOf(dz) < h)
                h = absOf(dz);
            if (!(plan2 + dz * dz < range2))
                return;
            if (pts.lastReturn(q) == 0)
                ++ghosts;
            if (cls == p.ChaosClass)
                ++chaoticNeighbours;
            if (isVegetation(cls, p))
                vegetationSeen = true;
            if (allowed.entry(own) != 0)
                ++voters;
        });

        if (!(voteShare(chaoticNeighbours, voters) >= p.VegetationProcOfChaos))
            return;
        if (!(static_cast<double>(voteShare(ghosts, voters)) >=
                  0.75 * static_cast<double>(p.VegetationProcOfGhosts) &&
              vegetationSeen))
            return;
        if (!(own == chaoticNeighbours && own == p.InitialClass))
            return;
        pts.setCls(self, vegetationTier(h, p));
    }
};
template <class T> using k_iteratePlants = IteratePlants<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_iteratePlantsSoA = IteratePlants<T, SoaPoints, SoaIndex, SoaGroups>;

/// k_IteratePlantsSecond: a non-last-return point that is not mostly a plane source takes the
/// tier of its height when plant neighbours vote for it or it still has the initial class. A
/// neighbour votes as a plant only when its class equals all three vegetation classes at once,
/// so with three distinct classes the pass classifies nothing; kept as it stands.
template <class T, class Points, class Index, class Groups> struct IteratePlantsSecond {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int self = itg.pointIndex(i);
        const int own = pts.cls(self);
        if (!allowed.admits(own))
            return;
        const T px = pts.x(self), py = pts.y(self), pz = pts.z(self);
        const T range2 = p.VegetationRange * p.VegetationRange;
        const bool ghost = pts.lastReturn(self) == 0;
        const bool source = own == p.NeighbourPlaneClass;

        T h = initialGroundHeight(grid);
        int ghostVotes = 0, orderVotes = 0, allowedVoters = 0, plantVotes = 0;
        bool vegetationSeen = false;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T dz = pz - T(pts.z(q));
            const T plan2 = planSquared(px - T(pts.x(q)), py - T(pts.y(q)));
            const int cls = pts.cls(q);
            if (plan2 < range2 && cls == p.groundClass && absOf(dz) < h)
                h = absOf(dz);
            if (!(plan2 + dz * dz < range2))
                return;
            if (ghost)
                ++ghostVotes;
            if (source)
                ++orderVotes;
            if (allowed.admits(cls))
                ++allowedVoters;
            if (cls == p.lowVegetationClass && cls == p.mediumVegetationClass &&
                cls == p.highVegetationClass) {
                ++plantVotes;
                vegetationSeen = true;
            }
        });

        if (!(voteShare(ghostVotes, allowedVoters) >= p.VegetationProcOfGhosts && vegetationSeen &&
              voteShare(orderVotes, allowedVoters) <= p.VegetationProcOfOrder))
            return;
        if (!(voteShare(plantVotes, allowedVoters) > p.VegetationProcOfPlant || own == p.InitialClass))
            return;
        pts.setCls(self, vegetationTier(h, p));
    }
};
template <class T> using k_IteratePlantsSecond = IteratePlantsSecond<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_IteratePlantsSecondSoA = IteratePlantsSecond<T, SoaPoints, SoaIndex, SoaGroups>;

} // namespace vx
