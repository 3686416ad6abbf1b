// The vegetation filter and the two passes that spread its classes, written once for both
// layouts. One thread per position of the sorted index; each writes only its own point.
#pragma once

#include "steps/vegetation/VegetationCommon.h"

namespace vx {

/// k_filterPlants: an admitted point becomes vegetation of its height tier when its
/// neighbourhood is chaotic enough (or full of non-last returns), some ground lies within the
/// range in plan and no building point lies within the range.
template <class T, class Points, class Index, class Groups>
struct FilterPlants : NeighbourhoodKernel<T, Points, Index, Groups> {
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        const int self = this->ownPoint(i);
        if (self < 0)
            return;
        const T px = this->pts.x(self), py = this->pts.y(self), pz = this->pts.z(self);
        const T nx = this->pts.nx(self), ny = this->pts.ny(self), nz = this->pts.nz(self);
        const T nLength = lengthOf(nx, ny, nz);
        const T d = -(nx * px + ny * py + nz * pz);
        const T range2 = p.VegetationRange * p.VegetationRange;

        T h = initialGroundHeight(this->grid);
        // Counts the ground points met just below, above or at the point's height, and is at the
        // same time the class that counts as ground: after each such point the next class up is
        // taken for ground by the neighbours visited later. Kept on purpose; results rely on it.
        int ground = p.groundClass;
        bool groundSeen = false, buildingSeen = false;
        int ghosts = 0, allowedVoters = 0, chaotic = 0;

        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int cell) {
            const T qx = this->xOf(q, j), qy = this->yOf(q, j), qz = this->zOf(q, j);
            const T dz = pz - qz;
            const T plan2 = planSquared(px - qx, py - qy);
            const int cls = this->classSeen(q, j, i);
            if (plan2 < range2 && cls == ground) {
                groundSeen = true;
                if (absOf(dz) < h)
                    h = absOf(dz);
            }
            if (!(plan2 + dz * dz < range2))
                return;

            T planeDist = T(0), cosine = T(0);
            if (nLength != T(0)) {
                planeDist = absOf(dot3(nx, ny, nz, qx, qy, qz) + d) / nLength;
                const T mx = this->pts.nx(q), my = this->pts.ny(q), mz = this->pts.nz(q);
                if (!(mx == T(0) && my == T(0) && mz == T(0)))
                    cosine = normalCosine(nx, ny, nz, nLength, mx, my, mz);
            }
            if (this->pts.lastReturn(q) == 0)
                ++ghosts;
            if (this->allowed.admits(cls))
                ++allowedVoters;
            if (cls == p.ChaosClass)
                ++chaotic;
            else if (planeDist >= p.VegetationDfG && cosine < T(p.VegetationMaxCos))
                ++chaotic;
            if (cls == ground && dz < p.VegetationLowLimit)
                ++ground;
            if (cls == p.BuildingClass)
                buildingSeen = true;
            reportForeignEntry(this->itg.group(j), cell);
        });

        const float chaosShare = voteShare(chaotic, allowedVoters);
        const float ghostShare = voteShare(ghosts, allowedVoters);
        const bool chaoticPlace =
            static_cast<double>(chaosShare) >= static_cast<double>(p.VegetationProcOfChaos) &&
            static_cast<double>(ghostShare) >= 0.5 * static_cast<double>(p.VegetationProcOfGhosts);
        if ((chaoticPlace || ghostShare > p.VegetationProcOfGhosts) && !buildingSeen && groundSeen)
            this->pts.setCls(self, vegetationTier(h, p));
    }
};
template <class T, class L> using k_filterPlants = OnLayout<FilterPlants, T, L>;

/// k_iteratePlants: a point of the initial class beside vegetation, in a neighbourhood with
/// enough chaos and non-last returns, takes the tier of its height. Every neighbour in range
/// votes (the table is read at the point's own class), and the point's class must equal the
/// number of chaos neighbours as well as the initial class; both rules are kept as they stand.
template <class T, class Points, class Index, class Groups>
struct IteratePlants : NeighbourhoodKernel<T, Points, Index, Groups> {
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        const int self = this->ownPoint(i);
        if (self < 0)
            return;
        const int own = this->pts.cls(self);

        T h = initialGroundHeight(this->grid);
        int ghosts = 0, chaoticNeighbours = 0, voters = 0;
        bool vegetationSeen = false;
        forEachVoterLoweringGround(*this, i, self, p, h, [&](int q, int cls) {
            if (this->pts.lastReturn(q) == 0)
                ++ghosts;
            if (cls == p.ChaosClass)
                ++chaoticNeighbours;
            if (isVegetation(cls, p))
                vegetationSeen = true;
            if (this->allowed.entry(own) != 0)
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
        this->pts.setCls(self, vegetationTier(h, p));
    }
};
template <class T, class L> using k_iteratePlants = OnLayout<IteratePlants, T, L>;

/// k_IteratePlantsSecond: a non-last-return point that is not mostly a plane source takes the
/// tier of its height when plant neighbours vote for it or it still has the initial class. A
/// neighbour votes as a plant only when its class equals all three vegetation classes at once,
/// so with three distinct classes the pass classifies nothing; kept as it stands.
template <class T, class Points, class Index, class Groups>
struct IteratePlantsSecond : NeighbourhoodKernel<T, Points, Index, Groups> {
    VegetationParams<T> p;

    VX_HD void operator()(int i) const
    {
        const int self = this->ownPoint(i);
        if (self < 0)
            return;
        const int own = this->pts.cls(self);
        const bool ghost = this->pts.lastReturn(self) == 0;
        const bool source = own == p.NeighbourPlaneClass;

        T h = initialGroundHeight(this->grid);
        int ghostVotes = 0, orderVotes = 0, allowedVoters = 0, plantVotes = 0;
        bool vegetationSeen = false;
        forEachVoterLoweringGround(*this, i, self, p, h, [&](int q, int cls) {
            if (ghost)
                ++ghostVotes;
            if (source)
                ++orderVotes;
            if (this->allowed.admits(cls))
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
        this->pts.setCls(self, vegetationTier(h, p));
    }
};
template <class T, class L> using k_IteratePlantsSecond = OnLayout<IteratePlantsSecond, T, L>;

} // namespace vx
