// The engine's views bundled for the per-point neighbourhood kernels, one function a layout:
// a driver writes k_step<T>{aosViews(c), settings...}.
#pragma once

#include "core/ClassifierCore.h"
#include "grid/PointKernel.h"

namespace vx {

template <class T>
NeighbourhoodKernel<T, AosPoints<T>, AosIndex, AosGroups> aosViews(const ClassifierCore<T>& c)
{
    return {c.aosPoints(), c.aosIndex(), c.aosGroups(), c.allowed(), c.gridParameters, c.pointCount};
}

template <class T> NeighbourhoodKernel<T, SoaPoints, SoaIndex, SoaGroups> soaViews(const ClassifierCore<T>& c)
{
    return {c.soaPoints(), c.soaIndex(), c.soaGroups(), c.allowed(), c.gridParameters, c.pointCount};
}

} // namespace vx
