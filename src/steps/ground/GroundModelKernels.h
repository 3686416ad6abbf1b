// Kernels of the low-point correction: a ground model per cell (mean ground position and
// normal), filled into cells without ground from their neighbours, and the test that keeps a
// candidate only when it lies clearly below the ground around it.
#pragma once

#include "grid/PointKernel.h"
#include "steps/ground/GroundModel.h"

#include <type_traits>

namespace vx {

/// The model as one array of records.
template <class T> struct AosGroundModel {
    using Real = T;
    VX_GroundModel<T>* m;
    VX_HD T x(int c) const { return m[c].x; }
    VX_HD T y(int c) const { return m[c].y; }
    VX_HD T z(int c) const { return m[c].z; }
    VX_HD T nx(int c) const { return m[c].nx; }
    VX_HD T ny(int c) const { return m[c].ny; }
    VX_HD T nz(int c) const { return m[c].nz; }
    VX_HD bool hasGround(int c) const { return m[c].hasGround; }
    VX_HD void set(int c, T x_, T y_, T z_, T nx_, T ny_, T nz_, bool has) const
    {
        m[c].x = x_, m[c].y = y_, m[c].z = z_;
        m[c].nx = nx_, m[c].ny = ny_, m[c].nz = nz_;
        m[c].hasGround = has;
    }
};

/// The model as seven arrays; float in both precisions, like the per-field points.
struct SoaGroundModel {
    using Real = float;
    vxGroundModelSoA s;
    VX_HD float x(int c) const { return s.x[c]; }
    VX_HD float y(int c) const { return s.y[c]; }
    VX_HD float z(int c) const { return s.z[c]; }
    VX_HD float nx(int c) const { return s.nx[c]; }
    VX_HD float ny(int c) const { return s.ny[c]; }
    VX_HD float nz(int c) const { return s.nz[c]; }
    VX_HD bool hasGround(int c) const { return s.hasGround[c]; }
    VX_HD void set(int c, float x_, float y_, float z_, float nx_, float ny_, float nz_, bool has) const
    {
        s.x[c] = x_, s.y[c] = y_, s.z[c] = z_;
        s.nx[c] = nx_, s.ny[c] = ny_, s.nz[c] = nz_;
        s.hasGround[c] = has;
    }
};

static_assert(std::is_trivially_copyable_v<AosGroundModel<float>>);
static_assert(std::is_trivially_copyable_v<SoaGroundModel>);

/// The model view of a layout.
template <class T, class L>
using GroundModelOf = std::conditional_t<L::fields, SoaGroundModel, AosGroundModel<T>>;

/// Per cell: the mean position and mean normal of the cell's ground points.
template <class T, class Points, class Index, class Groups, class Model> struct GatherGroundInfo {
    Points pts;
    Index itg;
    Groups groups;
    VX_DecompositionGridParameters<T> grid;
    int cellCount;
    Model model;
    int groundClass;

    VX_HD void operator()(int c) const
    {
        using R = typename Model::Real;
        if (c >= cellCount)
            return;
        model.set(c, R(0), R(0), R(0), R(0), R(0), R(0), false);
        if (groups.count(c) == 0)
            return;
        R sum[6] = {0, 0, 0, 0, 0, 0};
        int n = 0;
        forEachInCell(itg, groups, c, 0, [&](int q, int) {
            if (pts.cls(q) != groundClass)
                return;
            sum[0] += R(pts.x(q)), sum[1] += R(pts.y(q)), sum[2] += R(pts.z(q));
            sum[3] += R(pts.nx(q)), sum[4] += R(pts.ny(q)), sum[5] += R(pts.nz(q));
            ++n;
        });
        if (n == 0)
            return;
        const R k = R(n);
        model.set(c, sum[0] / k, sum[1] / k, sum[2] / k, sum[3] / k, sum[4] / k, sum[5] / k, true);
    }
};
template <class T, class L>
using k_gatherGroundInfo = GatherGroundInfo<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>, GroundModelOf<T, L>>;

/// Per cell without ground: the mean height and normal of the planar neighbour cells that have
/// ground, placed at the cell's lower corner. Neighbours completed in the same pass may or may
/// not be seen; the driver repeats the pass until nothing changes.
template <class T, class Model> struct GroundInfoSpread {
    Model model;
    VX_DecompositionGridParameters<T> grid;
    int cellCount;

    VX_HD void operator()(int c) const
    {
        using R = typename Model::Real;
        if (c >= cellCount || model.hasGround(c))
            return;
        R z = model.z(c), nx = model.nx(c), ny = model.ny(c), nz = model.nz(c);
        int n = 0;
        forEachPlanarNeighbourCell(grid, c, [&](int m) {
            if (!model.hasGround(m))
                return;
            z += model.z(m), nx += model.nx(m), ny += model.ny(m), nz += model.nz(m);
            ++n;
        });
        if (n == 0)
            return;
        const CellCoords cc = cellCoords(grid, c);
        const R k = R(n);
        model.set(c, R(grid.minX + T(cc.x) * grid.sizeX), R(grid.minY + T(cc.y) * grid.sizeY), z / k, nx / k,
                  ny / k, nz / k, true);
    }
};
template <class T, class L> using k_groundInfoSpread = GroundInfoSpread<T, GroundModelOf<T, L>>;

/// A candidate keeps its class only when it lies more than range below (against the normal) the
/// tangent plane of every ground point of its own cell and the plane of its cell's model; every
/// other candidate gets replacementClass. A cell without a model (all zeros) always replaces.
template <class T, class Points, class Index, class Groups, class Model> struct FilterLowPoints {
    Points pts;
    Index itg;
    Groups groups;
    VX_DecompositionGridParameters<T> grid;
    Model model;
    int count;
    T range;
    int candidateClass;
    int groundClass;
    int replacementClass;

    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int p = itg.pointIndex(i);
        if (pts.cls(p) != candidateClass)
            return;
        const T px = pts.x(p), py = pts.y(p), pz = pts.z(p);
        const T range2 = range * range;
        const int cell = itg.group(i);
        bool belowEvery = true;
        forEachInCell(itg, groups, cell, 0, [&](int q, int) {
            if (!belowEvery || pts.cls(q) != groundClass)
                return;
            const T nx = pts.nx(q), ny = pts.ny(q), nz = pts.nz(q);
            const T s = dot3(nx, ny, nz, px - T(pts.x(q)), py - T(pts.y(q)), pz - T(pts.z(q)));
            const T e = squaredOverNormal(s, nx, ny, nz);
            if (!(s < T(0) && e > range2))
                belowEvery = false;
        });
        if (!belowEvery) {
            pts.setCls(p, replacementClass);
            return;
        }
        const T nx = model.nx(cell), ny = model.ny(cell), nz = model.nz(cell);
        const T s = dot3(nx, ny, nz, px - T(model.x(cell)), py - T(model.y(cell)), pz - T(model.z(cell)));
        const T e = squaredOverNormal(s, nx, ny, nz);
        if (s >= T(0) || s != s)
            pts.setCls(p, replacementClass);
        else if (e > range2)
            pts.setCls(p, candidateClass);
        else
            pts.setCls(p, replacementClass);
    }
};
template <class T, class L>
using k_filterLowPoints = FilterLowPoints<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>, GroundModelOf<T, L>>;

/// Predicates of the count of cells without ground: all three normal components exactly 0 (the
/// flag is not looked at, so a cell whose ground points all have zero normals counts too).
template <class T> struct NoGroundGroups {
    VX_HD bool operator()(const VX_GroundModel<T>& m) const { return m.nx == 0 && m.ny == 0 && m.nz == 0; }
};
struct NoGroundGroupsSoA {
    vxGroundModelSoA s;
    VX_HD bool operator()(int c) const { return s.nx[c] == 0 && s.ny[c] == 0 && s.nz[c] == 0; }
};

} // namespace vx
