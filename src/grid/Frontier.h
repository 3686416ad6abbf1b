// The frontier of an iterative step: the cells where a pass changed a class, and the cells whose
// neighbourhood block touches one of them. A point outside that block sees the same neighbours
// with the same classes as in the pass before, so judging it again would give the same answer;
// the next pass judges only the points of active cells.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "grid/Neighbourhood.h"

#include <cstdint>

namespace vx {

/// changed[cell of sorted position i] = 1 where the point there satisfies `marks` (every writer
/// writes the same value, so threads may race).
template <class Index, class Marks> struct MarkCells {
    Index itg;
    Marks marks;
    uint8_t* changed;
    int count;
    VX_HD void operator()(int i) const
    {
        if (i < count && marks(itg.pointIndex(i)))
            changed[itg.group(i)] = 1;
    }
};

/// Point p holds class `cls`.
template <class Points> struct HoldsClass {
    Points pts;
    int cls;
    VX_HD bool operator()(int p) const { return pts.cls(p) == cls; }
};

/// Point p has another class in `latest` than in `before`.
struct ClassChanged {
    const int* latest;
    const int* before;
    VX_HD bool operator()(int p) const { return latest[p] != before[p]; }
};

/// active[g] = 1 when a cell of the block around g (the cells forEachNeighbour visits) changed.
template <class T> struct ActivateAroundChanges {
    VX_DecompositionGridParameters<T> grid;
    const uint8_t* changed;
    uint8_t* active;
    int cells;
    VX_HD void operator()(int g) const
    {
        if (g >= cells)
            return;
        const CellCoords c = cellCoords(grid, g);
        uint8_t any = 0;
        for (int dx = c.x == 0 ? 0 : -1; dx <= (c.x == grid.cellsX - 1 ? 0 : 1) && !any; ++dx)
            for (int dy = c.y == 0 ? 0 : -1; dy <= (c.y == grid.cellsY - 1 ? 0 : 1) && !any; ++dy)
                for (int dz = c.z == 0 ? 0 : -1; dz <= (c.z == grid.cellsZ - 1 ? 0 : 1) && !any; ++dz)
                    any = changed[g + (dx * grid.cellsY + dy) * grid.cellsZ + dz];
        active[g] = any;
    }
};

/// A set flag, for counting changed cells.
struct IsSet {
    VX_HD bool operator()(uint8_t v) const { return v != 0; }
};

/// Point i holds a class of at least `least` (the rejection marks of some steps).
template <class Points> struct ClassAtLeast {
    Points pts;
    int least;
    VX_HD bool operator()(int i) const { return pts.cls(i) >= least; }
};

/// Whether the kernel judges sorted position i: every position without a frontier (null), else
/// those of active cells.
template <class Index> VX_HD inline bool inFrontier(const uint8_t* active, const Index& itg, int i)
{
    return !active || active[itg.group(i)] != 0;
}

} // namespace vx
