// What every vegetation pass shares: its parameter block, the height tiers, the vote shares
// and the console line of a broken cell index.
#pragma once

#include "core/Parameters.h"
#include "grid/PointKernel.h"

#include <cstdio>
#include <type_traits>

namespace vx {

/// The parameters and class numbers of the vegetation passes, named as the engine names them.
/// One block serves every pass; a pass reads only the fields its rules mention.
template <class T> struct VegetationParams {
    T VegetationRange;
    T VegetationDfG;
    float VegetationMaxCos;
    float VegetationProcOfChaos;
    float VegetationProcOfGhosts;
    float VegetationProcOfOrder;
    float VegetationProcOfPlant;
    T VegetationLowLimit;
    T VegetationHighLimit;
    float VegetationRatio;
    int groundClass;
    int BuildingClass;
    int ChaosClass;
    int InitialClass;
    int NeighbourPlaneClass;
    int lowVegetationClass;
    int mediumVegetationClass;
    int highVegetationClass;
};
static_assert(std::is_trivially_copyable_v<VegetationParams<float>>);
static_assert(std::is_trivially_copyable_v<VegetationParams<double>>);

/// The block as the engine holds it: parameters, then the class slots (low, medium and high
/// vegetation are the first three target slots, ground the ground slot).
template <class T>
inline VegetationParams<T> vegetationParams(const Parameters<T>& par, const ClassSlots& slots)
{
    VegetationParams<T> p{};
    p.VegetationRange = par.VegetationRange;
    p.VegetationDfG = par.VegetationDfG;
    p.VegetationMaxCos = par.VegetationMaxCos;
    p.VegetationProcOfChaos = par.VegetationProcOfChaos;
    p.VegetationProcOfGhosts = par.VegetationProcOfGhosts;
    p.VegetationProcOfOrder = par.VegetationProcOfOrder;
    p.VegetationProcOfPlant = par.VegetationProcOfPlant;
    p.VegetationLowLimit = par.VegetationLowLimit;
    p.VegetationHighLimit = par.VegetationHighLimit;
    p.VegetationRatio = par.VegetationRatio;
    p.groundClass = slots.GroundClass;
    p.BuildingClass = slots.BuildingClass;
    p.ChaosClass = slots.ChaosClass;
    p.InitialClass = slots.InitialClass;
    p.NeighbourPlaneClass = slots.NeighbourPlaneClass;
    p.lowVegetationClass = slots.TargetClass;
    p.mediumVegetationClass = slots.TargetClass2;
    p.highVegetationClass = slots.TargetClass3;
    return p;
}

/// Height above ground assumed before any ground point is seen: ten cell edges along z, which is
/// normally above the high-vegetation limit.
template <class T> VX_HD inline T initialGroundHeight(const VX_DecompositionGridParameters<T>& grid)
{
    return T(10) * grid.sizeZ;
}

/// Low below the low limit, high above the high limit, medium in between.
template <class T> VX_HD inline int vegetationTier(T h, const VegetationParams<T>& p)
{
    if (h < p.VegetationLowLimit)
        return p.lowVegetationClass;
    if (h > p.VegetationHighLimit)
        return p.highVegetationClass;
    return p.mediumVegetationClass;
}

template <class T> VX_HD inline bool isVegetation(int cls, const VegetationParams<T>& p)
{
    return cls == p.lowVegetationClass || cls == p.mediumVegetationClass || cls == p.highVegetationClass;
}

/// A vote share: the two counts divided in double precision, rounded to float. No voters gives
/// NaN (0 / 0), which fails every comparison, or infinity when the part is not 0.
VX_HD inline float voteShare(int part, int whole)
{
    return static_cast<float>(static_cast<double>(part) / static_cast<double>(whole));
}

/// Visits, as visit(q, cls), the neighbours of point self (at sorted position i of kernel k)
/// within the 3D vegetation range. On the way every ground point within the plan range, in 3D
/// range or not, lowers h to its height gap |dz| when that is smaller.
template <class T, class Kernel, class Visitor>
VX_HD inline void forEachVoterLoweringGround(const Kernel& k, int i, int self, const VegetationParams<T>& p,
                                             T& h, Visitor&& visit)
{
    const T px = k.pts.x(self), py = k.pts.y(self), pz = k.pts.z(self);
    const T range2 = p.VegetationRange * p.VegetationRange;
    k.forEachNeighbourOf(i, Visit{}, [&](int q, int j, int) {
        const T dz = pz - T(k.zOf(q, j));
        const T plan2 = planSquared(px - T(k.xOf(q, j)), py - T(k.yOf(q, j)));
        const int cls = k.classSeen(q, j, i);
        if (plan2 < range2 && cls == p.groundClass && absOf(dz) < h)
            h = absOf(dz);
        if (!(plan2 + dz * dz < range2))
            return;
        visit(q, cls);
    });
}

/// An entry found in a cell run whose own record names another cell means the sorted index and
/// the runs disagree. The pass goes on; the line goes to the console of the device that runs
/// the kernel (C standard output on the host).
VX_HD inline void reportForeignEntry(int recordedCell, int visitedCell)
{
    if (recordedCell != visitedCell)
        printf("ARGH\n");
}

} // namespace vx
