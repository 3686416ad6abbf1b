// Kernels on raster surfaces: filling empty cells from their surroundings, minimum and maximum
// filters over square windows, and the object test of the progressive opening. Heights are
// floats; an empty cell holds NaN.
#pragma once

#include "exec/Hd.h"

#include <cstring>

namespace vx {

VX_HD inline bool isEmptyHeight(float v)
{
    return v != v;
}

VX_HD inline float emptyHeight()
{
    const unsigned bits = 0x7fc00000u; // a quiet NaN
    float f;
    memcpy(&f, &bits, sizeof f);
    return f;
}

/// One cell of a raster half as wide and high: the mean of the heights of its (up to) four
/// children, or empty when none of them holds one.
struct k_halveSurface {
    const float* fine;
    int fnx, fny;
    float* coarse;
    int cnx;

    VX_HD void operator()(int i) const
    {
        const int cx = i % cnx, cy = i / cnx;
        float sum = 0;
        int n = 0;
        for (int dy = 0; dy < 2; ++dy)
            for (int dx = 0; dx < 2; ++dx) {
                const int x = 2 * cx + dx, y = 2 * cy + dy;
                if (x >= fnx || y >= fny)
                    continue;
                const float v = fine[y * fnx + x];
                if (!isEmptyHeight(v)) {
                    sum += v;
                    ++n;
                }
            }
        coarse[i] = n > 0 ? sum / static_cast<float>(n) : emptyHeight();
    }
};

/// Marks the cells that hold a height (1) and those to be filled (0).
struct k_markKnown {
    const float* surface;
    unsigned char* known;
    VX_HD void operator()(int i) const { known[i] = isEmptyHeight(surface[i]) ? 0 : 1; }
};

/// Gives every empty cell of the fine raster the bilinear value of the filled coarse raster at
/// its centre.
struct k_fillFromCoarse {
    const float* coarse;
    int cnx, cny;
    float* fine;
    int fnx;

    VX_HD void operator()(int i) const
    {
        if (!isEmptyHeight(fine[i]))
            return;
        const int x = i % fnx, y = i / fnx;
        float u = (static_cast<float>(x) + 0.5f) * 0.5f - 0.5f;
        float v = (static_cast<float>(y) + 0.5f) * 0.5f - 0.5f;
        u = u < 0 ? 0 : (u > static_cast<float>(cnx - 1) ? static_cast<float>(cnx - 1) : u);
        v = v < 0 ? 0 : (v > static_cast<float>(cny - 1) ? static_cast<float>(cny - 1) : v);
        const int u0 = static_cast<int>(u), v0 = static_cast<int>(v);
        const int u1 = u0 + 1 < cnx ? u0 + 1 : u0, v1 = v0 + 1 < cny ? v0 + 1 : v0;
        const float fu = u - static_cast<float>(u0), fv = v - static_cast<float>(v0);
        const float a = coarse[v0 * cnx + u0] * (1 - fu) + coarse[v0 * cnx + u1] * fu;
        const float b = coarse[v1 * cnx + u0] * (1 - fu) + coarse[v1 * cnx + u1] * fu;
        fine[i] = a * (1 - fv) + b * fv;
    }
};

/// One smoothing pass over the filled cells: each takes the mean of its four neighbours inside
/// the raster; cells that held a height keep it. Repeated, the filled cells approach the
/// smooth surface that meets the known heights at its border.
struct k_smoothFilled {
    const float* in;
    float* out;
    const unsigned char* known;
    int nx, ny;

    VX_HD void operator()(int i) const
    {
        if (known[i]) {
            out[i] = in[i];
            return;
        }
        const int x = i % nx, y = i / nx;
        float sum = 0;
        int n = 0;
        if (x > 0)
            sum += in[i - 1], ++n;
        if (x + 1 < nx)
            sum += in[i + 1], ++n;
        if (y > 0)
            sum += in[i - nx], ++n;
        if (y + 1 < ny)
            sum += in[i + nx], ++n;
        out[i] = n > 0 ? sum / static_cast<float>(n) : in[i];
    }
};

/// Minimum (or maximum) over the window [k - r, k + r] of every position k of a line of n
/// values, the window cut at the ends of the line. The line is given by its first element and
/// a stride, so one kernel filters rows (stride 1) and columns (stride nx); one thread runs one
/// line. The running extremes of blocks of 2r + 1 values (g from each block's start, h to each
/// block's end) give every window from two lookups, whatever r is.
struct k_lineExtreme {
    const float* in;
    float* out;
    float* g;
    float* h;
    int lineStride; ///< offset between the first elements of successive lines
    int step;       ///< offset between successive elements of a line
    int n;          ///< elements per line
    int r;
    bool maximum;

    VX_HD float pick(float a, float b) const { return maximum ? (a > b ? a : b) : (a < b ? a : b); }

    VX_HD void operator()(int line) const
    {
        const long long base = static_cast<long long>(line) * lineStride;
        const int w = 2 * r + 1;
        auto at = [&](int k) { return base + static_cast<long long>(k) * step; };
        for (int k = 0; k < n; ++k)
            g[at(k)] = (k % w == 0) ? in[at(k)] : pick(g[at(k - 1)], in[at(k)]);
        for (int k = n - 1; k >= 0; --k)
            h[at(k)] = (k % w == w - 1 || k == n - 1) ? in[at(k)] : pick(h[at(k + 1)], in[at(k)]);
        for (int k = 0; k < n; ++k) {
            const int lo = k - r < 0 ? 0 : k - r;
            const int hi = k + r >= n ? n - 1 : k + r;
            float v;
            if (lo / w != hi / w)
                v = pick(h[at(lo)], g[at(hi)]);
            else if (lo % w == 0)
                v = g[at(hi)];
            else
                v = h[at(lo)];
            out[at(k)] = v;
        }
    }
};

/// Stands for the height of a cell without points in an opening: an erosion ignores +kUnknown,
/// a dilation -kUnknown, so cells without points neither lower nor raise their neighbours.
constexpr float kUnknown = 3.0e38f;

/// Gives the cells without points (empty in `lowest`) the value v.
struct k_unknownAs {
    float* surface;
    const float* lowest;
    float v;
    VX_HD void operator()(int i) const
    {
        if (isEmptyHeight(lowest[i]))
            surface[i] = v;
    }
};

/// Marks as object the cells with points whose surface the last opening lowered by more than
/// limit.
struct k_markObjects {
    const float* before;
    const float* after;
    const float* lowest;
    unsigned char* object;
    float limit;
    VX_HD void operator()(int i) const
    {
        if (!isEmptyHeight(lowest[i]) && before[i] - after[i] > limit)
            object[i] = 1;
    }
};

/// The climb's reach between neighbouring cells: climb per cell edge (times the diagonal for
/// corner neighbours), never more than maxRise.
struct ClimbReach {
    float climb;   ///< height per cell edge
    float maxRise; ///< largest height difference joined, whatever the distance (walls stay)

    VX_HD bool joins(float a, float b, bool diagonal) const
    {
        float reach = diagonal ? climb * 1.41421356f : climb;
        reach = reach < maxRise ? reach : maxRise;
        const float d = a - b;
        return d <= reach && d >= -reach;
    }
};

/// Calls visit(q, diagonal) for the eight neighbours of cell i inside an nx x ny raster, until
/// visit returns true; returns whether one did.
template <class Visitor> VX_HD bool anyRasterNeighbour(int i, int nx, int ny, Visitor&& visit)
{
    const int x = i % nx, y = i / nx;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx) {
            const int qx = x + dx, qy = y + dy;
            if ((dx == 0 && dy == 0) || qx < 0 || qy < 0 || qx >= nx || qy >= ny)
                continue;
            if (visit(qy * nx + qx, dx != 0 && dy != 0))
                return true;
        }
    return false;
}

/// Marks the object cells that lie on a raised level strip: along one of the raster's four axes
/// (rows, columns and both diagonals) the cells through the cell stay within `level` of each
/// other, step by step, until the strip ends, both ways and no more than `widest` across, where
/// the next cell lies at least `drop` lower. A bridge deck is such a strip: a road, level across,
/// whose edges fall at once to the road or water below it, while a slope, however steep, spreads
/// its fall over cells, a terrace ends in a step lower than a wall, and a rock's top is rough.
/// The climb leaves these cells cut, so that a deck meeting the road at its ends stays an
/// object. Cells that hold no point end the strip, and its edge falls to the first cell seen
/// beyond them within the walk: water gives no returns beside and under a deck.
struct k_markRaisedStrips {
    const float* lowest;
    const unsigned char* object;
    unsigned char* strip;
    int nx, ny;
    float level;  ///< largest height difference between neighbouring cells of the strip
    float drop;   ///< least fall from the strip's edge to the next cell
    float cell;   ///< cell edge
    float widest; ///< widest strip, in the raster's length unit

    /// Cells walked from (x, y) along (dx, dy) to the first cell past the strip's edge, or -1
    /// where the walk meets no edge within `steps` cells.
    VX_HD int edgeAlong(int x, int y, int dx, int dy, int steps) const
    {
        float at = lowest[y * nx + x];
        int gap = 0; ///< the first empty cell of the walk, 0 before one
        for (int k = 1; k <= steps; ++k) {
            const int qx = x + k * dx, qy = y + k * dy;
            if (qx < 0 || qy < 0 || qx >= nx || qy >= ny)
                return -1;
            const float h = lowest[qy * nx + qx];
            if (isEmptyHeight(h)) {
                gap = gap ? gap : k;
                continue;
            }
            if (gap)
                return at - h >= drop ? gap : -1;
            if (at - h >= drop)
                return k;
            if (h - at > level || at - h > level)
                return -1;
            at = h;
        }
        return -1;
    }

    VX_HD void operator()(int i) const
    {
        strip[i] = 0;
        if (!object[i] || isEmptyHeight(lowest[i]))
            return;
        const int x = i % nx, y = i / nx;
        const int axes[4][2] = {{1, 0}, {0, 1}, {1, 1}, {1, -1}};
        for (int a = 0; a < 4; ++a) {
            const int dx = axes[a][0], dy = axes[a][1];
            const float step = dx != 0 && dy != 0 ? cell * 1.41421356f : cell;
            const int steps = static_cast<int>(widest / step) + 1;
            const int ahead = edgeAlong(x, y, dx, dy, steps);
            if (ahead < 0)
                continue;
            const int behind = edgeAlong(x, y, -dx, -dy, steps);
            if (behind >= 0 && static_cast<float>(ahead + behind - 1) * step <= widest) {
                strip[i] = 1;
                return;
            }
        }
    }
};

/// One pass of giving object cells back to the terrain: a cell whose lowest point lies within
/// climb x distance of the lowest point of a terrain neighbour (eight-connected) is terrain, so
/// the terrain climbs slopes and cliffs that have returns on their face, while a roof, whose
/// edge stands a wall's height above the ground beside it, stays an object; so do the cells of
/// raised strips (k_markRaisedStrips) where `strip` is given. Reads one flag array and writes
/// another, so the result does not depend on the order of the cells.
struct k_climbFromTerrain {
    const float* lowest;        ///< empty where the cell holds no point
    const unsigned char* strip; ///< null, or 1 for the cells that the climb leaves cut
    const unsigned char* objectIn;
    unsigned char* objectOut;
    int nx, ny;
    ClimbReach reach;
    int* changed; ///< set to 1 when a cell is given back

    VX_HD void operator()(int i) const
    {
        objectOut[i] = objectIn[i];
        if (!objectIn[i] || isEmptyHeight(lowest[i]) || (strip && strip[i]))
            return;
        const bool climbed = anyRasterNeighbour(i, nx, ny, [&](int q, bool diagonal) {
            return !objectIn[q] && !isEmptyHeight(lowest[q]) && reach.joins(lowest[i], lowest[q], diagonal);
        });
        if (climbed) {
            objectOut[i] = 0;
            *changed = 1;
        }
    }
};

/// One pass of spreading the height span of smooth objects: every object cell takes the lowest
/// and highest heights found so far among the object cells it joins, eight-connected, where the
/// lowest points of the two cells lie within climb x distance, and within maxRise, of each
/// other (the climb's own reach, see k_climbFromTerrain). Repeated until
/// nothing changes, every cell holds the span of the climbable surface it belongs to. Reads one
/// pair of arrays and writes another, so the result does not depend on the order of the cells.
struct k_spreadObjectSpan {
    const float* lowest;
    const unsigned char* object;
    const float* loIn;
    const float* hiIn;
    float* loOut;
    float* hiOut;
    int nx, ny;
    ClimbReach reach;
    int* changed;

    VX_HD void operator()(int i) const
    {
        float lo = loIn[i], hi = hiIn[i];
        if (object[i] && !isEmptyHeight(lowest[i])) {
            anyRasterNeighbour(i, nx, ny, [&](int q, bool diagonal) {
                if (object[q] && !isEmptyHeight(lowest[q]) && reach.joins(lowest[i], lowest[q], diagonal)) {
                    lo = loIn[q] < lo ? loIn[q] : lo;
                    hi = hiIn[q] > hi ? hiIn[q] : hi;
                }
                return false;
            });
            if (lo != loIn[i] || hi != hiIn[i])
                *changed = 1;
        }
        loOut[i] = lo;
        hiOut[i] = hi;
    }
};

/// Gives back to the terrain the object cells whose climbable surface spans more than maxRise
/// in height: a roof rises from its eaves by a few metres before it ends at a wall, while a
/// hill or a headland that the openings cut climbs on and on.
struct k_releaseTallObjects {
    const float* lo;
    const float* hi;
    unsigned char* object;
    float maxRise;
    VX_HD void operator()(int i) const
    {
        if (object[i] && hi[i] - lo[i] > maxRise)
            object[i] = 0;
    }
};

/// The lowest heights of the cells that are not objects; objects and empty cells are empty.
struct k_keepGround {
    const float* lowest;
    const unsigned char* object;
    float* out;
    VX_HD void operator()(int i) const { out[i] = object[i] ? emptyHeight() : lowest[i]; }
};

} // namespace vx
