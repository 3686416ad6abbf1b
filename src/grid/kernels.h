// Kernels of the grid decomposition, shared by both layouts.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"

namespace vx {

/// k_initializeIndexToGroup / kInitializeIndexToGroupSoA: entry i = {i, 0}.
template <class Index> struct InitializeIndexToGroup {
    Index itg;
    VX_HD void operator()(int i) const { itg.set(i, i, 0); }
};

/// The cell of a point, truncating each quotient toward zero. A float quotient that rounds up
/// to the cell count is kept in the last cell instead of addressing a cell past the grid.
template <class T> VX_HD inline int cellOf(const VX_DecompositionGridParameters<T>& g, T x, T y, T z)
{
    int ix = static_cast<int>((x - g.minX) / g.sizeX);
    int iy = static_cast<int>((y - g.minY) / g.sizeY);
    int iz = static_cast<int>((z - g.minZ) / g.sizeZ);
    ix = ix < 0 ? 0 : (ix >= g.cellsX ? g.cellsX - 1 : ix);
    iy = iy < 0 ? 0 : (iy >= g.cellsY ? g.cellsY - 1 : iy);
    iz = iz < 0 ? 0 : (iz >= g.cellsZ ? g.cellsZ - 1 : iz);
    return (ix * g.cellsY + iy) * g.cellsZ + iz;
}

/// k_getGroupIndex / kGetGroupIndexSoA: entry i = {i, cell of point i}.
template <class T, class Points, class Index> struct GetGroupIndex {
    Points pts;
    Index itg;
    VX_DecompositionGridParameters<T> grid;
    VX_HD void operator()(int i) const
    {
        itg.set(
            i, i,
            cellOf<T>(grid, static_cast<T>(pts.x(i)), static_cast<T>(pts.y(i)), static_cast<T>(pts.z(i))));
    }
};

/// k_initializeDecGroups / kInitializeDecGroups: every cell empty. The per-field form marks the
/// count -1 too; the final count pass overwrites it.
template <class Groups> struct InitializeDecGroups {
    Groups groups;
    int countMark;
    VX_HD void operator()(int c) const
    {
        groups.setStart(c, -1);
        groups.setEnd(c, -1);
        groups.setCount(c, countMark);
    }
};

/// k_gatherGroupsParameters / kGatherGroupsParametersSoa: run boundaries of the sorted array.
/// Every boundary is written by exactly one thread.
template <class Index, class Groups> struct GatherGroupsParameters {
    Index itg;
    Groups groups;
    int n;
    VX_HD void operator()(int i) const
    {
        const int g = itg.group(i);
        if (i == 0) {
            groups.setStart(g, 0);
            if (n > 1) {
                const int next = itg.group(1);
                if (next != g) {
                    groups.setEnd(g, 1);
                    groups.setStart(next, 1);
                }
            } else {
                groups.setEnd(g, 1); // a one-point cloud: its only run ends after it
            }
        } else if (i == n - 1) {
            groups.setEnd(g, i + 1);
        } else {
            const int next = itg.group(i + 1);
            if (next != g) {
                groups.setEnd(g, i + 1);
                groups.setStart(next, i + 1);
            }
        }
    }
};

/// k_getGroupsNumber / kGetGroupsNumber: count = end - start.
template <class Groups> struct GetGroupsNumber {
    Groups groups;
    VX_HD void operator()(int c) const { groups.setCount(c, groups.end(c) - groups.start(c)); }
};

struct CompareITG {
    VX_HD bool operator()(const VX_IndexToGroup& a, const VX_IndexToGroup& b) const
    {
        return a.group < b.group;
    }
};

template <class T, int Axis> struct CompareCoordinate {
    VX_HD bool operator()(const VX_Point<T>& a, const VX_Point<T>& b) const
    {
        if (Axis == 0)
            return a.x < b.x;
        if (Axis == 1)
            return a.y < b.y;
        return a.z < b.z;
    }
};
template <class T> using compare_X_value = CompareCoordinate<T, 0>;
template <class T> using compare_Y_value = CompareCoordinate<T, 1>;
template <class T> using compare_Z_value = CompareCoordinate<T, 2>;

struct FloatLess {
    VX_HD bool operator()(float a, float b) const { return a < b; }
};

} // namespace vx
