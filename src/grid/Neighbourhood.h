// The one neighbourhood visit of the library: a point's own cell and the cells touching it,
// clipped at the grid border, x offsets outermost and z innermost, each ascending.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"

namespace vx {

struct Visit {
    /// Sampling divisor D: every max(1, count / D)-th entry of a cell; 0 visits every entry.
    int divisor = 0;
    /// Leave out the point's own cell (the 26 surrounding cells only).
    bool skipOwnCell = false;
};

/// Squared distance as every step forms it: the y term, then x, then z.
template <class T> VX_HD inline T squaredDistance(T dx, T dy, T dz)
{
    return dy * dy + dx * dx + dz * dz;
}

struct CellCoords {
    int x, y, z;
};

template <class Grid> VX_HD inline CellCoords cellCoords(const Grid& grid, int g)
{
    int yz = grid.cellsY * grid.cellsZ;
    int r = g % yz;
    return {g / yz, r / grid.cellsZ, r % grid.cellsZ};
}

/// Calls visit(q, j, cell) for each visited entry j of the sorted index array, q its point.
template <class Index, class Groups, class Grid, class Visitor>
VX_HD inline void forEachNeighbour(const Index& itg, const Groups& groups, const Grid& grid, int g,
                                   const Visit& how, Visitor&& visit)
{
    const CellCoords c = cellCoords(grid, g);
    const int dx0 = c.x == 0 ? 0 : -1, dx1 = c.x == grid.cellsX - 1 ? 0 : 1;
    const int dy0 = c.y == 0 ? 0 : -1, dy1 = c.y == grid.cellsY - 1 ? 0 : 1;
    const int dz0 = c.z == 0 ? 0 : -1, dz1 = c.z == grid.cellsZ - 1 ? 0 : 1;
    for (int dx = dx0; dx <= dx1; ++dx) {
        for (int dy = dy0; dy <= dy1; ++dy) {
            for (int dz = dz0; dz <= dz1; ++dz) {
                if (how.skipOwnCell && dx == 0 && dy == 0 && dz == 0)
                    continue;
                const int n = g + (dx * grid.cellsY + dy) * grid.cellsZ + dz;
                const int count = groups.count(n);
                int step = 1;
                if (how.divisor > 0) {
                    if (count < 1)
                        continue;
                    step = count / how.divisor;
                    if (step < 1)
                        step = 1;
                }
                const int end = groups.end(n);
                for (int j = groups.start(n); j < end; j += step)
                    visit(itg.pointIndex(j), j, n);
            }
        }
    }
}

/// forEachNeighbour for a visitor that returns whether to go on: the visit ends at the first
/// false, in the same order up to there.
template <class Index, class Groups, class Grid, class Visitor>
VX_HD inline void forEachNeighbourWhile(const Index& itg, const Groups& groups, const Grid& grid, int g,
                                        Visitor&& visit)
{
    const CellCoords c = cellCoords(grid, g);
    const int dx0 = c.x == 0 ? 0 : -1, dx1 = c.x == grid.cellsX - 1 ? 0 : 1;
    const int dy0 = c.y == 0 ? 0 : -1, dy1 = c.y == grid.cellsY - 1 ? 0 : 1;
    const int dz0 = c.z == 0 ? 0 : -1, dz1 = c.z == grid.cellsZ - 1 ? 0 : 1;
    for (int dx = dx0; dx <= dx1; ++dx)
        for (int dy = dy0; dy <= dy1; ++dy)
            for (int dz = dz0; dz <= dz1; ++dz) {
                const int n = g + (dx * grid.cellsY + dy) * grid.cellsZ + dz;
                const int end = groups.end(n);
                for (int j = groups.start(n); j < end; ++j)
                    if (!visit(itg.pointIndex(j)))
                        return;
            }
}

/// Visits the entries of cell g alone, every max(1, count / divisor)-th one.
template <class Index, class Groups, class Visitor>
VX_HD inline void forEachInCell(const Index& itg, const Groups& groups, int g, int divisor, Visitor&& visit)
{
    int step = divisor > 0 ? groups.count(g) / divisor : 1;
    if (step < 1)
        step = 1;
    const int end = groups.end(g);
    for (int j = groups.start(g); j < end; j += step)
        visit(itg.pointIndex(j), j);
}

/// Calls visit(n) for the cells of the same z layer at x and y offsets -1..1 around cell g,
/// clipped at the border, g itself left out.
template <class Grid, class Visitor>
VX_HD inline void forEachPlanarNeighbourCell(const Grid& grid, int g, Visitor&& visit)
{
    const CellCoords c = cellCoords(grid, g);
    for (int dx = -1; dx <= 1; ++dx) {
        for (int dy = -1; dy <= 1; ++dy) {
            if (dx == 0 && dy == 0)
                continue;
            const int ax = c.x + dx, by = c.y + dy;
            if (ax < 0 || ax >= grid.cellsX || by < 0 || by >= grid.cellsY)
                continue;
            visit((ax * grid.cellsY + by) * grid.cellsZ + c.z);
        }
    }
}

} // namespace vx
