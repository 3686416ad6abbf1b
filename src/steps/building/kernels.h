// Kernels of the building steps, written once for both layouts: the seed filter that finds the
// first roof points, and the three growth passes that spread them over whole roofs and the
// details hanging on them. Growth passes mark what they accept with markClass; the driver's
// remap turns the marks into the building class after each launch.
#pragma once

#include "core/Parameters.h"
#include "grid/Frontier.h"
#include "grid/PointKernel.h"

namespace vx {

/// Accepted by a growth pass in the running launch; remapped to the building class right after.
constexpr int kBuildingMark = 250;
/// Shares a plane with its neighbours but is not yet a seed; the growth resolves it.
constexpr int kBuildingCandidate = 251;

/// The settings of the seed filter, in the kernel's parameter order.
template <class T> struct BuildingSeedParams {
    T range;            ///< 3D radius of the voting neighbours
    T groundRange;      ///< plan radius within which no ground point may lie
    T dfPBuilding;      ///< largest distance of a neighbour from the tangent plane
    float minCos;       ///< smallest cosine between the two normals
    int minNoN;         ///< smallest number of voters of a seed
    float procOfBP;     ///< smallest share of agreeing (seed) or on-plane (candidate) voters
    float procOfGhosts; ///< largest share of non-last-return voters of a seed
    T minHeight;        ///< smallest height above the highest ground point of the cells
    int buildingClass;
    int groundClass;
    int sourceClass;    ///< votes with the plane and the normal test
    int companionClass; ///< votes with the plane test only
};

template <class T> BuildingSeedParams<T> buildingSeedParams(const Parameters<T>& p, const ClassSlots& s)
{
    return {p.BuildingRange,  p.BuildingGroundRange, p.BuildingDfPBuilding,  p.BuildingMinCosBuilding,
            p.BuildingMinNoN, p.BuildingProcOfBP,    p.BuildingProcOfGhosts, p.BuildingMinHeight,
            s.TargetClass,    s.GroundClass,         s.NeighbourPlaneClass,  s.NeighbourDistanceClass};
}

/// A point becomes a seed when it stands on a flat surface its neighbours share, clearly above
/// the highest ground of its cells, with no ground close by in plan and few non-last returns;
/// one that only shares the plane becomes a candidate. WriteUnchanged: the record form writes
/// the class it read back for every other point, the per-field form leaves them untouched.
template <class T, class Points, class Index, class Groups, bool WriteUnchanged>
struct InitialBuildingFilter : NeighbourhoodKernel<T, Points, Index, Groups> {
    BuildingSeedParams<T> par;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0)
            return;
        const int cls = this->pts.cls(p);
        if (this->pts.lastReturn(p) == 0)
            return;
        const T nx = this->pts.nx(p), ny = this->pts.ny(p), nz = this->pts.nz(p);
        const T norm = lengthOf(nx, ny, nz);
        if (norm == T(0))
            return;
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T d = -(nx * px) - ny * py - nz * pz;
        const T range2 = par.range * par.range;
        const T groundRange2 = par.groundRange * par.groundRange;

        T highestGroundGap = T(10) * this->grid.sizeZ;
        bool groundNearby = false;
        int voters = 0, agreeing = 0, onPlane = 0, ghosts = 0;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const T qx = this->xOf(q, j), qy = this->yOf(q, j), qz = this->zOf(q, j);
            const T dx = px - qx, dy = py - qy, dz = pz - qz;
            const T plan2 = planSquared(dx, dy);
            const int qc = this->classSeen(q, j, i);
            // Every ground point of the cells counts here, at any distance and of any class entry.
            if (qc == par.groundClass) {
                if (dz < highestGroundGap)
                    highestGroundGap = dz;
                if (plan2 < groundRange2)
                    groundNearby = true;
            }
            if (!(plan2 + dz * dz < range2))
                return;
            if (!this->allowed.admits(qc))
                return;
            const bool lastReturn = this->pts.lastReturn(q) != 0;
            const T planeDist = absOf((dot3(nx, ny, nz, qx, qy, qz) + d) / norm);
            if (qc == par.sourceClass) {
                const T mx = this->pts.nx(q), my = this->pts.ny(q), mz = this->pts.nz(q);
                const T cosine = normalCosine(nx, ny, nz, norm, mx, my, mz);
                if (planeDist < par.dfPBuilding && cosine >= T(par.minCos) && lastReturn)
                    ++agreeing;
            }
            if ((qc == par.sourceClass || qc == par.companionClass) && planeDist < par.dfPBuilding &&
                lastReturn)
                ++onPlane;
            ++voters;
            if (!lastReturn)
                ++ghosts;
        });
        if (voters < 1)
            return;

        const double agreeShare = double(agreeing) / double(voters);
        const double ghostShare = double(ghosts) / double(voters);
        const double planeShare = double(onPlane) / double(voters);
        const bool highEnough = highestGroundGap > T(0) && absOf(highestGroundGap) > par.minHeight;
        if (agreeShare >= double(par.procOfBP) && !groundNearby && ghostShare <= double(par.procOfGhosts) &&
            highEnough && voters >= par.minNoN)
            this->pts.setCls(p, par.buildingClass);
        else if (planeShare >= double(par.procOfBP) && !groundNearby && highEnough)
            this->pts.setCls(p, kBuildingCandidate);
        else if (WriteUnchanged)
            this->pts.setCls(p, cls);
    }
};
template <class T, class L>
using k_initialBuildingFilter = InitialBuildingFilter<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>, !L::fields>;

/// The settings of the three growth passes, read once by the driver.
template <class T> struct BuildingGrowthParams {
    T range2D;          ///< Building2Range: plan and 3D radius of the update, plan radius of the completion
    T distFPlane;       ///< Building2DistFPlane
    float procOfGhosts; ///< BuildingProcOfGhosts
    T minHeight;        ///< BuildingMinHeight
    T groundRange3;     ///< Building3GroundRange
    T detailsHeight;    ///< Building3DetailsHeight
    int groundClass;
    int buildingClass;
    int sourceClass;
    int companionClass; ///< handed to the update, which does not use it
    int markClass;
};

template <class T> BuildingGrowthParams<T> buildingGrowthParams(const Parameters<T>& p, const ClassSlots& s)
{
    return {p.Building2Range,       p.Building2DistFPlane,    p.BuildingProcOfGhosts, p.BuildingMinHeight,
            p.Building3GroundRange, p.Building3DetailsHeight, s.GroundClass,          s.TargetClass,
            s.NeighbourPlaneClass,  s.NeighbourDistanceClass, kBuildingMark};
}

/// Growth along the roof: a point joins when it lies on the tangent plane of its nearest building
/// point and ground is farther away than that point; a candidate below the nearest roof point
/// joins even off the plane. With useGhostTest a ghost share above the limit keeps it out.
/// With a frontier (active, by cell) only the points of active cells are judged: the others
/// would be judged as in the pass before, which left them out.
template <class T, class Points, class Index, class Groups>
struct UpdateBuilding : NeighbourhoodKernel<T, Points, Index, Groups> {
    BuildingGrowthParams<T> par;
    bool useGhostTest;
    const uint8_t* active = nullptr;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0 || !inFrontier(active, this->itg, i) || this->pts.lastReturn(p) == 0)
            return;
        const int cls = this->pts.cls(p);
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T range2 = par.range2D * par.range2D;
        // The starting minima are a length, compared with squared distances as they stand.
        const T start = T(10) * this->grid.sizeX;
        T nearestGround2 = start, nearestBuildingPlan2 = start, nearestBuilding2 = start;
        int nearest = -1, voters = 0, ghosts = 0;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const T dx = px - T(this->xOf(q, j)), dy = py - T(this->yOf(q, j)), dz = pz - T(this->zOf(q, j));
            const T plan2 = planSquared(dx, dy);
            const T d2 = plan2 + dz * dz;
            const int qc = this->classSeen(q, j, i);
            if (plan2 < range2) {
                if (qc == par.groundClass && plan2 < nearestGround2)
                    nearestGround2 = plan2;
                if (qc == par.buildingClass && plan2 < nearestBuildingPlan2)
                    nearestBuildingPlan2 = plan2;
            }
            if (d2 < range2 && (this->allowed.admits(qc) || qc == par.buildingClass)) {
                ++voters;
                if (this->pts.lastReturn(q) == 0)
                    ++ghosts;
                if (qc == par.buildingClass && d2 < nearestBuilding2) {
                    nearestBuilding2 = d2;
                    nearest = q;
                }
            }
        });
        if (nearest < 0)
            return;

        const bool groundFarther = nearestGround2 > nearestBuilding2;
        // Joins when the ghost share equals the limit; only a larger share keeps the point out.
        const bool ghostBlocked = useGhostTest && double(ghosts) / double(voters) > double(par.procOfGhosts);
        const T bz = this->pts.z(nearest);
        const T dist2 = this->tangentPlaneDistance2(nearest, px, py, pz);
        if (dist2 < par.distFPlane * par.distFPlane && groundFarther && !ghostBlocked)
            this->pts.setCls(p, par.markClass);
        if (nearestBuildingPlan2 < range2 && pz - bz < T(0) && groundFarther && cls == kBuildingCandidate &&
            !ghostBlocked)
            this->pts.setCls(p, par.markClass);
    }
};
template <class T, class L> using k_updateBuilding = OnLayout<UpdateBuilding, T, L>;

/// Completion: a point joins when a building point stands within the plan radius, the point is
/// below it or less than the height limit above it, no ground is close in plan and the ghost
/// share is below the limit.
template <class T, class Points, class Index, class Groups>
struct CompleteBuilding : NeighbourhoodKernel<T, Points, Index, Groups> {
    BuildingGrowthParams<T> par;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0 || this->pts.lastReturn(p) == 0)
            return;
        const int cls = this->pts.cls(p);
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T range2 = par.range2D * par.range2D;
        const T groundRange2 = par.groundRange3 * par.groundRange3;
        T buildingGap = T(10) * this->grid.sizeX; ///< height above the highest building point in range
        bool buildingSeen = false, groundNearby = false;
        int voters = 0, ghosts = 0;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const T dx = px - T(this->xOf(q, j)), dy = py - T(this->yOf(q, j));
            const T plan2 = planSquared(dx, dy);
            if (!(plan2 < range2))
                return;
            const int qc = this->classSeen(q, j, i);
            if (!(this->allowed.admits(qc) || qc == par.buildingClass || qc == par.groundClass))
                return;
            if (qc == par.buildingClass) {
                const T gap = pz - T(this->zOf(q, j));
                if (gap < buildingGap)
                    buildingGap = gap;
                buildingSeen = true;
            }
            ++voters;
            if (this->pts.lastReturn(q) == 0)
                ++ghosts;
            if (qc == par.groundClass && plan2 < groundRange2)
                groundNearby = true;
        });
        const T heightLimit = cls == par.sourceClass ? par.minHeight * T(1.5) : par.minHeight;
        // Joins only below the ghost limit, unlike the update.
        if (buildingSeen && !groundNearby && buildingGap < heightLimit &&
            double(ghosts) / double(voters) < double(par.procOfGhosts))
            this->pts.setCls(p, par.markClass);
    }
};
template <class T, class L> using k_completeBuilding = OnLayout<CompleteBuilding, T, L>;

/// Closing: a point joins when it lies near the tangent plane of its nearest building point in
/// plan, or when a building point stands less than the details height below it, provided no
/// ground point within the plan radius lies less than 0.4 below it. Last returns are not required.
template <class T, class Points, class Index, class Groups>
struct CloseBuilding : NeighbourhoodKernel<T, Points, Index, Groups> {
    BuildingGrowthParams<T> par;

    VX_HD void operator()(int i) const
    {
        const int p = this->ownPoint(i);
        if (p < 0)
            return;
        const T px = this->pts.x(p), py = this->pts.y(p), pz = this->pts.z(p);
        const T groundRange2 = par.groundRange3 * par.groundRange3;
        T nearestBuildingPlan2 = T(10) * (this->grid.sizeX * this->grid.sizeX);
        int nearest = -1;
        bool noLowGround = true, detailFound = false;
        this->forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
            const T dx = px - T(this->xOf(q, j)), dy = py - T(this->yOf(q, j));
            const T plan2 = planSquared(dx, dy);
            const T height = pz - T(this->zOf(q, j));
            const int qc = this->classSeen(q, j, i);
            if (plan2 < groundRange2 && qc == par.groundClass && double(height) < 0.4)
                noLowGround = false;
            if (plan2 < groundRange2 && qc == par.buildingClass && height < par.detailsHeight)
                detailFound = true;
            if (qc == par.buildingClass && plan2 < nearestBuildingPlan2) {
                nearestBuildingPlan2 = plan2;
                nearest = q;
            }
        });
        if (nearest < 0)
            return;
        const T dist2 = this->tangentPlaneDistance2(nearest, px, py, pz);
        if (double(dist2) < 0.1 && nearestBuildingPlan2 < T(4) * groundRange2 && noLowGround)
            this->pts.setCls(p, par.markClass);
        if (detailFound && noLowGround)
            this->pts.setCls(p, par.markClass);
    }
};
template <class T, class L> using k_closeBuilding = OnLayout<CloseBuilding, T, L>;

} // namespace vx
