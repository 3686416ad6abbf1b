// Kernels of the building steps, written once for both layouts: the seed filter that finds the
// first roof points, and the three growth passes that spread them over whole roofs and the
// details hanging on them. Growth passes mark what they accept with markClass; the driver's
// remap turns the marks into the building class after each launch.
#pragma once

#include "core/Parameters.h"
#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "grid/Neighbourhood.h"

#include <cmath>

namespace vx {

/// Accepted by a growth pass in the running launch; remapped to the building class right after.
constexpr int kBuildingMark = 250;
/// Shares a plane with its neighbours but is not yet a seed; the growth resolves it.
constexpr int kBuildingCandidate = 251;

/// Squared distance of P from the tangent plane through B with normal m. NaN for a zero normal,
/// which then fails every comparison.
template <class T> VX_HD inline T planeDistance2(T mx, T my, T mz, T px, T py, T pz, T bx, T by, T bz)
{
    const T s = mx * px + my * py + mz * pz - mx * bx - my * by - mz * bz;
    return s * s / (mx * mx + my * my + mz * mz);
}

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
struct InitialBuildingFilter {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    BuildingSeedParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        const int cls = pts.cls(p);
        if (!allowed.admits(cls))
            return;
        if (pts.lastReturn(p) == 0)
            return;
        const T nx = pts.nx(p), ny = pts.ny(p), nz = pts.nz(p);
        const T norm = static_cast<T>(::sqrt(nx * nx + ny * ny + nz * nz));
        if (norm == T(0))
            return;
        const T px = pts.x(p), py = pts.y(p), pz = pts.z(p);
        const T d = -(nx * px) - ny * py - nz * pz;
        const T range2 = par.range * par.range;
        const T groundRange2 = par.groundRange * par.groundRange;

        T highestGroundGap = T(10) * grid.sizeZ;
        bool groundNearby = false;
        int voters = 0, agreeing = 0, onPlane = 0, ghosts = 0;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T qx = pts.x(q), qy = pts.y(q), qz = pts.z(q);
            const T dx = px - qx, dy = py - qy, dz = pz - qz;
            const T plan2 = dx * dx + dy * dy;
            const int qc = pts.cls(q);
            // Every ground point of the cells counts here, at any distance and of any class entry.
            if (qc == par.groundClass) {
                if (dz < highestGroundGap)
                    highestGroundGap = dz;
                if (plan2 < groundRange2)
                    groundNearby = true;
            }
            if (!(plan2 + dz * dz < range2))
                return;
            if (!allowed.admits(qc))
                return;
            const bool lastReturn = pts.lastReturn(q) != 0;
            const T planeDist = static_cast<T>(::fabs((nx * qx + ny * qy + nz * qz + d) / norm));
            if (qc == par.sourceClass) {
                const T mx = pts.nx(q), my = pts.ny(q), mz = pts.nz(q);
                const T cosine = static_cast<T>(::fabs(nx * mx + ny * my + nz * mz)) /
                                 (static_cast<T>(::sqrt(mx * mx + my * my + mz * mz)) * norm);
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
        const bool highEnough =
            highestGroundGap > T(0) && static_cast<T>(::fabs(highestGroundGap)) > par.minHeight;
        if (agreeShare >= double(par.procOfBP) && !groundNearby && ghostShare <= double(par.procOfGhosts) &&
            highEnough && voters >= par.minNoN)
            pts.setCls(p, par.buildingClass);
        else if (planeShare >= double(par.procOfBP) && !groundNearby && highEnough)
            pts.setCls(p, kBuildingCandidate);
        else if (WriteUnchanged)
            pts.setCls(p, cls);
    }
};
template <class T>
using k_initialBuildingFilter = InitialBuildingFilter<T, AosPoints<T>, AosIndex, AosGroups, true>;
template <class T>
using k_initialBuildingFilterSoA = InitialBuildingFilter<T, SoaPoints, SoaIndex, SoaGroups, false>;

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
template <class T, class Points, class Index, class Groups> struct UpdateBuilding {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    BuildingGrowthParams<T> par;
    bool useGhostTest;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        const int cls = pts.cls(p);
        if (!allowed.admits(cls) || pts.lastReturn(p) == 0)
            return;
        const T px = pts.x(p), py = pts.y(p), pz = pts.z(p);
        const T range2 = par.range2D * par.range2D;
        // The starting minima are a length, compared with squared distances as they stand.
        const T start = T(10) * grid.sizeX;
        T nearestGround2 = start, nearestBuildingPlan2 = start, nearestBuilding2 = start;
        int nearest = -1, voters = 0, ghosts = 0;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T dx = px - T(pts.x(q)), dy = py - T(pts.y(q)), dz = pz - T(pts.z(q));
            const T plan2 = dx * dx + dy * dy;
            const T d2 = plan2 + dz * dz;
            const int qc = pts.cls(q);
            if (plan2 < range2) {
                if (qc == par.groundClass && plan2 < nearestGround2)
                    nearestGround2 = plan2;
                if (qc == par.buildingClass && plan2 < nearestBuildingPlan2)
                    nearestBuildingPlan2 = plan2;
            }
            if (d2 < range2 && (allowed.admits(qc) || qc == par.buildingClass)) {
                ++voters;
                if (pts.lastReturn(q) == 0)
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
        const T bz = pts.z(nearest);
        const T dist2 = planeDistance2<T>(pts.nx(nearest), pts.ny(nearest), pts.nz(nearest), px, py, pz,
                                          pts.x(nearest), pts.y(nearest), bz);
        if (dist2 < par.distFPlane * par.distFPlane && groundFarther && !ghostBlocked)
            pts.setCls(p, par.markClass);
        if (nearestBuildingPlan2 < range2 && pz - bz < T(0) && groundFarther && cls == kBuildingCandidate &&
            !ghostBlocked)
            pts.setCls(p, par.markClass);
    }
};
template <class T> using k_updateBuilding = UpdateBuilding<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_updateBuildingSoA = UpdateBuilding<T, SoaPoints, SoaIndex, SoaGroups>;

/// Completion: a point joins when a building point stands within the plan radius, the point is
/// below it or less than the height limit above it, no ground is close in plan and the ghost
/// share is below the limit.
template <class T, class Points, class Index, class Groups> struct CompleteBuilding {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    BuildingGrowthParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        const int cls = pts.cls(p);
        if (!allowed.admits(cls) || pts.lastReturn(p) == 0)
            return;
        const T px = pts.x(p), py = pts.y(p), pz = pts.z(p);
        const T range2 = par.range2D * par.range2D;
        const T groundRange2 = par.groundRange3 * par.groundRange3;
        T buildingGap = T(10) * grid.sizeX; ///< height above the highest building point in range
        bool buildingSeen = false, groundNearby = false;
        int voters = 0, ghosts = 0;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T dx = px - T(pts.x(q)), dy = py - T(pts.y(q));
            const T plan2 = dx * dx + dy * dy;
            if (!(plan2 < range2))
                return;
            const int qc = pts.cls(q);
            if (!(allowed.admits(qc) || qc == par.buildingClass || qc == par.groundClass))
                return;
            if (qc == par.buildingClass) {
                const T gap = pz - T(pts.z(q));
                if (gap < buildingGap)
                    buildingGap = gap;
                buildingSeen = true;
            }
            ++voters;
            if (pts.lastReturn(q) == 0)
                ++ghosts;
            if (qc == par.groundClass && plan2 < groundRange2)
                groundNearby = true;
        });
        const T heightLimit = cls == par.sourceClass ? par.minHeight * T(1.5) : par.minHeight;
        // Joins only below the ghost limit, unlike the update.
        if (buildingSeen && !groundNearby && buildingGap < heightLimit &&
            double(ghosts) / double(voters) < double(par.procOfGhosts))
            pts.setCls(p, par.markClass);
    }
};
template <class T> using k_completeBuilding = CompleteBuilding<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_completeBuildingSoA = CompleteBuilding<T, SoaPoints, SoaIndex, SoaGroups>;

/// Closing: a point joins when it lies near the tangent plane of its nearest building point in
/// plan, or when a building point stands less than the details height below it, provided no
/// ground point within the plan radius lies less than 0.4 below it. Last returns are not required.
template <class T, class Points, class Index, class Groups> struct CloseBuilding {
    Points pts;
    Index itg;
    Groups groups;
    AllowedClasses allowed;
    VX_DecompositionGridParameters<T> grid;
    int count;
    BuildingGrowthParams<T> par;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        if (!allowed.admits(pts.cls(p)))
            return;
        const T px = pts.x(p), py = pts.y(p), pz = pts.z(p);
        const T groundRange2 = par.groundRange3 * par.groundRange3;
        T nearestBuildingPlan2 = T(10) * (grid.sizeX * grid.sizeX);
        int nearest = -1;
        bool noLowGround = true, detailFound = false;
        forEachNeighbour(itg, groups, grid, itg.group(i), Visit{}, [&](int q, int, int) {
            const T dx = px - T(pts.x(q)), dy = py - T(pts.y(q));
            const T plan2 = dx * dx + dy * dy;
            const T height = pz - T(pts.z(q));
            const int qc = pts.cls(q);
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
        const T dist2 = planeDistance2<T>(pts.nx(nearest), pts.ny(nearest), pts.nz(nearest), px, py, pz,
                                          pts.x(nearest), pts.y(nearest), pts.z(nearest));
        if (double(dist2) < 0.1 && nearestBuildingPlan2 < T(4) * groundRange2 && noLowGround)
            pts.setCls(p, par.markClass);
        if (detailFound && noLowGround)
            pts.setCls(p, par.markClass);
    }
};
template <class T> using k_closeBuilding = CloseBuilding<T, AosPoints<T>, AosIndex, AosGroups>;
template <class T> using k_closeBuildingSoA = CloseBuilding<T, SoaPoints, SoaIndex, SoaGroups>;

} // namespace vx
