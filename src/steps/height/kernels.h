// Kernels of the height above ground: the plan extent of the cloud, the mean ground height of
// each raster cell (from the point links sorted by cell), the filling of cells without ground,
// the bilinear reading of the raster under each point and the tiering by height.
#pragma once

#include "exec/Hd.h"
#include "grid/Layouts.h"

#include <cmath>

namespace vx {

/// Placement of the ground raster: cell (i, j) covers [minX + i cell, minX + (i + 1) cell) in x
/// and the same in y; its value stands for the surface at the cell's centre.
template <class T> struct HagRaster {
    T minX = 0, minY = 0, cell = 1;
    int cellsX = 1, cellsY = 1;

    VX_HD int cells() const { return cellsX * cellsY; }
    VX_HD static int clampTo(int v, int lo, int hi) { return v < lo ? lo : (v > hi ? hi : v); }
    VX_HD int cellOf(T x, T y) const
    {
        const int i = clampTo(static_cast<int>(::floor((x - minX) / cell)), 0, cellsX - 1);
        const int j = clampTo(static_cast<int>(::floor((y - minY) / cell)), 0, cellsY - 1);
        return j * cellsX + i;
    }
    /// Lower of the two cell centres around t (a coordinate in cells from the first centre) and
    /// the weight of the upper one; outside the outermost centres the nearest pair extrapolates
    /// linearly, so a plane is read back exactly up to the raster's edge. Beyond the edge the
    /// surface keeps the edge's value: the raster spans the ground, and a point far outside it
    /// (a stray return) must not read a slope extrapolated over kilometres.
    VX_HD static void bracket(T t, int cells, int& lower, T& weight)
    {
        if (cells < 2) {
            lower = 0;
            weight = T(0);
            return;
        }
        const T edge = T(cells) - T(0.5);
        t = t < T(-0.5) ? T(-0.5) : (t > edge ? edge : t);
        lower = clampTo(static_cast<int>(::floor(t)), 0, cells - 2);
        weight = t - T(lower);
    }
    /// The surface at (x, y), bilinear between the four cell centres around it.
    VX_HD T surfaceAt(const T* value, T x, T y) const
    {
        int i = 0, j = 0;
        T fx = 0, fy = 0;
        bracket((x - minX) / cell - T(0.5), cellsX, i, fx);
        bracket((y - minY) / cell - T(0.5), cellsY, j, fy);
        const int i1 = cellsX > 1 ? i + 1 : i, j1 = cellsY > 1 ? j + 1 : j;
        const T v00 = value[j * cellsX + i], v10 = value[j * cellsX + i1];
        const T v01 = value[j1 * cellsX + i], v11 = value[j1 * cellsX + i1];
        return (T(1) - fy) * ((T(1) - fx) * v00 + fx * v10) + fy * ((T(1) - fx) * v01 + fx * v11);
    }
};

/// Plan extent of the ground points and how many they are.
template <class T> struct PlanBounds {
    T minX, minY, maxX, maxY;
    long long ground;
};

/// The plan extent of a ground point; an empty extent (from +big to -big) for any other point.
template <class T, class Points> struct PointPlanBounds {
    Points pts;
    int groundClass;
    T big;
    VX_HD PlanBounds<T> operator()(int i) const
    {
        if (pts.cls(i) != groundClass)
            return {big, big, -big, -big, 0};
        const T x = static_cast<T>(pts.x(i)), y = static_cast<T>(pts.y(i));
        return {x, y, x, y, 1};
    }
};

template <class T> struct MergePlanBounds {
    VX_HD PlanBounds<T> operator()(const PlanBounds<T>& a, const PlanBounds<T>& b) const
    {
        return {a.minX < b.minX ? a.minX : b.minX, a.minY < b.minY ? a.minY : b.minY,
                a.maxX > b.maxX ? a.maxX : b.maxX, a.maxY > b.maxY ? a.maxY : b.maxY, a.ground + b.ground};
    }
};

/// Per point: its link (the point's index) and its key, the raster cell of a ground point or
/// the cell count for any other point, so that sorting by key gathers each cell's ground.
template <class T, class Points> struct GroundCellKeys {
    Points pts;
    HagRaster<T> raster;
    int groundClass;
    int* keys;
    int* ids;
    int count;
    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        ids[i] = i;
        keys[i] = pts.cls(i) == groundClass
                      ? raster.cellOf(static_cast<T>(pts.x(i)), static_cast<T>(pts.y(i)))
                      : raster.cells();
    }
};

struct ClearCellRuns {
    int* first;
    int* last;
    int cells;
    VX_HD void operator()(int c) const
    {
        if (c < cells)
            first[c] = last[c] = 0;
    }
};

/// Per sorted position: where each cell's run of ground links starts and ends.
struct CellRunLimits {
    const int* keys;
    int count;
    int cells;
    int* first;
    int* last;
    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        const int k = keys[i];
        if (k >= cells)
            return;
        if (i == 0 || keys[i - 1] != k)
            first[k] = i;
        if (i == count - 1 || keys[i + 1] != k)
            last[k] = i + 1;
    }
};

/// Per cell: the mean height of its ground points, summed in file order in double, and where
/// their mean position lies from the cell's centre; NaN and not known when the cell holds none.
template <class T, class Points> struct CellMeanHeight {
    Points pts;
    HagRaster<T> raster;
    const int* ids;
    const int* first;
    const int* last;
    T* value;
    T* offsetX;
    T* offsetY;
    unsigned char* known;
    T nan;
    VX_HD void operator()(int c) const
    {
        if (c >= raster.cells())
            return;
        double sx = 0, sy = 0, sz = 0;
        for (int k = first[c]; k < last[c]; ++k) {
            const int p = ids[k];
            sx += static_cast<double>(pts.x(p));
            sy += static_cast<double>(pts.y(p));
            sz += static_cast<double>(pts.z(p));
        }
        const int n = last[c] - first[c];
        known[c] = n > 0 ? 1 : 0;
        value[c] = n > 0 ? static_cast<T>(sz / n) : nan;
        const double cx = static_cast<double>(raster.minX) + (c % raster.cellsX + 0.5) * raster.cell;
        const double cy = static_cast<double>(raster.minY) + (c / raster.cellsX + 0.5) * raster.cell;
        offsetX[c] = n > 0 ? static_cast<T>(sx / n - cx) : T(0);
        offsetY[c] = n > 0 ? static_cast<T>(sy / n - cy) : T(0);
    }
};

/// Moves each cell's mean height from its ground points' mean position to the cell's centre: a
/// plane fitted (least squares) through the mean positions and heights of the cells with ground
/// among the cell and its eight neighbours is read at the centre. On a plane this is exact however
/// the ground was sampled; a cell whose neighbourhood spans no plane (fewer than three cells, or
/// all on a line) keeps its mean.
template <class T> struct CentreCellHeights {
    const T* src;
    T* dst;
    const T* offsetX;
    const T* offsetY;
    const unsigned char* known;
    int cellsX, cellsY;
    T cell;
    VX_HD void operator()(int c) const
    {
        if (c >= cellsX * cellsY)
            return;
        dst[c] = src[c];
        if (!known[c])
            return;
        const int cx = c % cellsX, cy = c / cellsX;
        double n = 0, sx = 0, sy = 0, sz = 0, sxx = 0, sxy = 0, syy = 0, sxz = 0, syz = 0;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const int x = cx + dx, y = cy + dy;
                if (x < 0 || y < 0 || x >= cellsX || y >= cellsY || !known[y * cellsX + x])
                    continue;
                const int m = y * cellsX + x;
                const double px = dx * static_cast<double>(cell) + static_cast<double>(offsetX[m]);
                const double py = dy * static_cast<double>(cell) + static_cast<double>(offsetY[m]);
                const double z = static_cast<double>(src[m]);
                n += 1, sx += px, sy += py, sz += z;
                sxx += px * px, sxy += px * py, syy += py * py, sxz += px * z, syz += py * z;
            }
        if (n < 3)
            return;
        const double mx = sx / n, my = sy / n, mz = sz / n;
        const double cxx = sxx / n - mx * mx, cxy = sxy / n - mx * my, cyy = syy / n - my * my;
        const double cxz = sxz / n - mx * mz, cyz = syz / n - my * mz;
        const double det = cxx * cyy - cxy * cxy;
        const double scale = cxx + cyy;
        if (!(scale > 0) || !(det > 1e-6 * scale * scale))
            return;
        const double b = (cxz * cyy - cyz * cxy) / det, g = (cyz * cxx - cxz * cxy) / det;
        dst[c] = static_cast<T>(mz - b * mx - g * my);
    }
};

template <class T> struct IsNaN {
    VX_HD bool operator()(T v) const { return v != v; }
};

/// One ring of filling: an empty cell takes the mean of those of its eight neighbours that hold
/// a value in src; cells with a value keep it. Reads src only, so the result does not depend on
/// the order in which cells run.
template <class T> struct FillFromNeighbours {
    const T* src;
    T* dst;
    int cellsX, cellsY;
    VX_HD void operator()(int c) const
    {
        if (c >= cellsX * cellsY)
            return;
        const T v = src[c];
        if (v == v) {
            dst[c] = v;
            return;
        }
        const int cx = c % cellsX, cy = c / cellsX;
        T sum = 0;
        int n = 0;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const int x = cx + dx, y = cy + dy;
                if ((dx == 0 && dy == 0) || x < 0 || y < 0 || x >= cellsX || y >= cellsY)
                    continue;
                const T w = src[y * cellsX + x];
                if (w == w) {
                    sum += w;
                    ++n;
                }
            }
        dst[c] = n > 0 ? sum / T(n) : v;
    }
};

/// Seeds of the far fill: each cell with a value is its own seed, the others have none (-1).
template <class T> struct SeedCells {
    const T* value;
    int* seed;
    int cells;
    VX_HD void operator()(int c) const
    {
        if (c < cells)
            seed[c] = value[c] == value[c] ? c : -1;
    }
};

/// One pass of jump flooding: a cell keeps the nearest seed among its own and those of the
/// cells step cells away in the eight directions (ties: the lower seed index).
struct JumpFlood {
    const int* src;
    int* dst;
    int cellsX, cellsY, step;
    VX_HD long long distance2(int a, int b) const
    {
        const long long dx = a % cellsX - b % cellsX, dy = a / cellsX - b / cellsX;
        return dx * dx + dy * dy;
    }
    VX_HD void operator()(int c) const
    {
        if (c >= cellsX * cellsY)
            return;
        const int cx = c % cellsX, cy = c / cellsX;
        int best = src[c];
        long long bestD = best >= 0 ? distance2(c, best) : -1;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                const int x = cx + dx * step, y = cy + dy * step;
                if (x < 0 || y < 0 || x >= cellsX || y >= cellsY)
                    continue;
                const int s = src[y * cellsX + x];
                if (s < 0)
                    continue;
                const long long d = distance2(c, s);
                if (bestD < 0 || d < bestD || (d == bestD && s < best)) {
                    best = s;
                    bestD = d;
                }
            }
        dst[c] = best;
    }
};

/// An empty cell takes the value of its seed (seeds hold values and are never written).
template <class T> struct TakeSeedValue {
    const int* seed;
    T* value;
    int cells;
    VX_HD void operator()(int c) const
    {
        if (c >= cells || value[c] == value[c] || seed[c] < 0)
            return;
        value[c] = value[seed[c]];
    }
};

/// One relaxation pass over the filled cells: each takes the mean of its opposite neighbour
/// pairs (left-right, down-up and the two diagonals) that lie inside the raster. Pairs make the
/// mean of a plane its centre value even at the raster's edge, so filled cells settle onto the
/// surface that the cells with ground span; cells with ground never change.
template <class T> struct RelaxFilledCells {
    const T* src;
    T* dst;
    const unsigned char* known;
    int cellsX, cellsY;
    VX_HD void operator()(int c) const
    {
        if (c >= cellsX * cellsY)
            return;
        if (known[c]) {
            dst[c] = src[c];
            return;
        }
        const int cx = c % cellsX, cy = c / cellsX;
        const int pairs[4][2] = {{1, 0}, {0, 1}, {1, 1}, {1, -1}};
        T sum = 0;
        int n = 0;
        for (const auto& p : pairs) {
            const int ax = cx + p[0], ay = cy + p[1], bx = cx - p[0], by = cy - p[1];
            if (ax < 0 || ay < 0 || ax >= cellsX || ay >= cellsY || bx < 0 || by < 0 || bx >= cellsX ||
                by >= cellsY)
                continue;
            sum += src[ay * cellsX + ax] + src[by * cellsX + bx];
            n += 2;
        }
        dst[c] = n > 0 ? sum / T(n) : src[c];
    }
};

/// Per point: its height above the raster's surface, or NaN when there is no surface.
template <class T, class Points> struct HeightOverSurface {
    Points pts;
    HagRaster<T> raster;
    const T* surface; ///< null: no ground at all
    float* heights;
    int count;
    float nan;
    VX_HD void operator()(int i) const
    {
        if (i >= count)
            return;
        if (!surface) {
            heights[i] = nan;
            return;
        }
        const T s = raster.surfaceAt(surface, static_cast<T>(pts.x(i)), static_cast<T>(pts.y(i)));
        heights[i] = static_cast<float>(static_cast<T>(pts.z(i)) - s);
    }
};

/// The views of a kernel that acts on the admitted points with a height (NaN: none).
template <class T, class Points> struct ByHeight {
    Points pts;
    AllowedClasses allowed;
    const float* heights;
    int count;
    /// The height of point i in t when it is admitted and has one.
    VX_HD bool admittedHeight(int i, T& t) const
    {
        if (i >= count)
            return false;
        const float h = heights[i];
        if (h != h || !allowed.admits(pts.cls(i)))
            return false;
        t = static_cast<T>(h);
        return true;
    }
};

/// Per admitted point with a height: lowClass below low, mediumClass below high, else highClass.
template <class T, class Points> struct TierByHeight : ByHeight<T, Points> {
    T low, high;
    int lowClass, mediumClass, highClass;
    VX_HD void operator()(int i) const
    {
        T t;
        if (this->admittedHeight(i, t))
            this->pts.setCls(i, t < low ? lowClass : (t < high ? mediumClass : highClass));
    }
};

/// Per admitted point with a height: newClass where it lies within distance of the ground
/// surface, above or below it, or, with `raised`, more than distance above it and, where
/// ceiling is positive, at most ceiling.
template <class T, class Points> struct NearGround : ByHeight<T, Points> {
    T distance;
    int newClass;
    bool raised;
    T ceiling;
    VX_HD void operator()(int i) const
    {
        T t;
        if (!this->admittedHeight(i, t))
            return;
        if (raised ? t > distance && (ceiling <= 0 || t <= ceiling) : t <= distance && t >= -distance)
            this->pts.setCls(i, newClass);
    }
};

} // namespace vx
