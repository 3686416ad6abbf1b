// Surfaces that walls enclose: a roof wider than any opening window keeps its height in the
// middle, so the openings cut only its rim. What still tells it from terrain is its outline:
// wherever the surface ends, it drops by a wall's height. Terrain ends in rises (the next
// roof, the slope above), in gentle steps, or at the edge of the data.
//
// Runs on the host over the lowest-point raster: a union-find labels the surfaces in one linear
// pass, which a grid of data-parallel passes would need as many launches as a surface is cells
// wide to match. The raster is a fraction of the points, and the step already keeps it.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace vx {

/// The test of an enclosed surface, in the raster's height unit.
struct EnclosureRule {
    float join;    ///< neighbouring cells whose lowest points differ by less are one surface
    float wall;    ///< a drop to a neighbouring surface at least this high is a wall
    float maxRise; ///< largest height span of an enclosed surface (a roof); 0: no limit
};

/// Shares of a surface's outline that the test asks for. A wall may be missing where a lower
/// annex, a loading ramp or a tree meets the roof (a tenth of the edges going down); a taller
/// part of the building may rise beside it (a quarter of the edges); and at least half the
/// outline must be seen to drop, so a surface cut off by the edge of the data or by cells
/// without returns is not taken on what little of it shows.
constexpr double kLeastWallShare = 0.9;
constexpr double kMostRiseShare = 0.25;
constexpr double kLeastSeenWallShare = 0.5;

namespace detail {

inline int findRoot(std::vector<int>& parent, int c)
{
    while (parent[static_cast<std::size_t>(c)] != c) {
        int& p = parent[static_cast<std::size_t>(c)];
        p = parent[static_cast<std::size_t>(p)];
        c = p;
    }
    return c;
}

/// Labels the surfaces of the raster among the cells for which member(c) holds: parent[c] is the
/// root of c's surface, edge neighbours whose heights differ by less than join sharing one.
template <class Member>
std::vector<int> labelSurfaces(const std::vector<float>& lowest, int nx, int ny, float join, Member member)
{
    const std::size_t cells = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
    std::vector<int> parent(cells);
    for (std::size_t c = 0; c < cells; ++c)
        parent[c] = static_cast<int>(c);
    auto unite = [&](std::size_t a, std::size_t b) {
        const int ra = findRoot(parent, static_cast<int>(a)), rb = findRoot(parent, static_cast<int>(b));
        if (ra != rb)
            parent[static_cast<std::size_t>(ra < rb ? rb : ra)] = ra < rb ? ra : rb;
    };
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            const std::size_t c = static_cast<std::size_t>(y) * nx + x;
            if (!member(c))
                continue;
            if (x + 1 < nx && member(c + 1) && std::fabs(lowest[c + 1] - lowest[c]) < join)
                unite(c, c + 1);
            if (y + 1 < ny && member(c + nx) && std::fabs(lowest[c + nx] - lowest[c]) < join)
                unite(c, c + nx);
        }
    for (std::size_t c = 0; c < cells; ++c)
        parent[c] = findRoot(parent, static_cast<int>(c));
    return parent;
}

/// Whether the raster's sizes agree and its cells can be numbered by int.
inline bool rasterFits(const std::vector<float>& lowest, int nx, int ny,
                       const std::vector<unsigned char>& object)
{
    const std::size_t cells = static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny);
    return nx > 0 && ny > 0 && lowest.size() == cells && object.size() == cells &&
           cells <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

} // namespace detail

/// Marks object[c] = 1 for every cell of a surface that walls enclose, in a raster of nx x ny
/// cells (row by row, NaN where a cell holds no point). A surface is a set of cells connected
/// through edge neighbours whose heights differ by less than rule.join. Along its outline each
/// edge goes down by a wall (rule.wall or more), down by a step (less), up, or into the unseen
/// (the raster's border or an empty cell). The surface is enclosed when the walls are at least
/// kLeastWallShare of the edges going down, the edges going up at most kMostRiseShare of the
/// seen edges, the walls at least kLeastSeenWallShare of all edges, and its height span at most
/// rule.maxRise. Returns the number of cells newly marked.
inline std::size_t markEnclosedSurfaces(const std::vector<float>& lowest, int nx, int ny,
                                        const EnclosureRule& rule, std::vector<unsigned char>& object)
{
    if (!detail::rasterFits(lowest, nx, ny, object))
        return 0;
    const std::size_t cells = lowest.size();
    auto seen = [&](std::size_t c) { return !std::isnan(lowest[c]); };
    // Every cell points at its surface's root; roots get consecutive slots for their outlines.
    const std::vector<int> parent = detail::labelSurfaces(lowest, nx, ny, rule.join, seen);
    std::vector<int> slot(cells, -1);
    int surfaces = 0;
    for (std::size_t c = 0; c < cells; ++c)
        if (seen(c) && parent[c] == static_cast<int>(c))
            slot[c] = surfaces++;
    auto surfaceOf = [&](std::size_t c) { return seen(c) ? slot[static_cast<std::size_t>(parent[c])] : -1; };

    struct Outline {
        long long walls = 0, steps = 0, rises = 0, unseen = 0;
        float low = INFINITY, high = -INFINITY;
    };
    std::vector<Outline> outline(static_cast<std::size_t>(surfaces));
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            const std::size_t c = static_cast<std::size_t>(y) * nx + x;
            const int own = surfaceOf(c);
            if (own < 0)
                continue;
            Outline& o = outline[static_cast<std::size_t>(own)];
            o.low = std::fmin(o.low, lowest[c]);
            o.high = std::fmax(o.high, lowest[c]);
            const int dx[4] = {1, -1, 0, 0}, dy[4] = {0, 0, 1, -1};
            for (int k = 0; k < 4; ++k) {
                const int u = x + dx[k], v = y + dy[k];
                const std::size_t n = static_cast<std::size_t>(v) * nx + u;
                const int other = u < 0 || v < 0 || u >= nx || v >= ny ? -1 : surfaceOf(n);
                if (other < 0) {
                    ++o.unseen;
                    continue;
                }
                if (other == own)
                    continue;
                const float drop = lowest[c] - lowest[n];
                if (drop >= rule.wall)
                    ++o.walls;
                else if (drop > 0)
                    ++o.steps;
                else
                    ++o.rises;
            }
        }

    std::vector<unsigned char> enclosed(outline.size(), 0);
    for (std::size_t k = 0; k < outline.size(); ++k) {
        const Outline& o = outline[k];
        const double walls = static_cast<double>(o.walls), down = walls + static_cast<double>(o.steps);
        const double seenEdges = down + static_cast<double>(o.rises);
        const double all = seenEdges + static_cast<double>(o.unseen);
        const bool tooTall = rule.maxRise > 0 && o.high - o.low > rule.maxRise;
        enclosed[k] = o.walls > 0 && walls >= kLeastWallShare * down &&
                      static_cast<double>(o.rises) <= kMostRiseShare * seenEdges &&
                      walls >= kLeastSeenWallShare * all && !tooTall;
    }
    std::size_t marked = 0;
    for (std::size_t c = 0; c < cells; ++c) {
        const int own = surfaceOf(c);
        if (own >= 0 && enclosed[static_cast<std::size_t>(own)] && !object[c]) {
            object[c] = 1;
            ++marked;
        }
    }
    return marked;
}

/// Least number of a cut object's cells whose four edge neighbours all belong to it, for the
/// object to be given back to the terrain by its outline (12 m x 12 m at 1 m cells): cars,
/// hedges, sheds, garages and single crowns have fewer, and a flat roof that wide stands higher
/// than a wall; a terrace level that the window cut has many.
constexpr int kLeastInnerCells = 100;

/// Gives back to the terrain (object[c] = 0) every object that the openings cut but whose
/// outline drops by no wall: surfaces of object cells joined as in markEnclosedSurfaces, with at
/// least kLeastInnerCells inner cells, that go down to the terrain somewhere and nowhere by
/// rule.wall or more. A terrace level that a bank steeper than the slope limit parts from the
/// terrain is such an object; a roof is not. Returns the number of cells given back.
inline std::size_t releaseUnwalledObjects(const std::vector<float>& lowest, int nx, int ny,
                                          const EnclosureRule& rule, std::vector<unsigned char>& object)
{
    if (!detail::rasterFits(lowest, nx, ny, object))
        return 0;
    const std::size_t cells = lowest.size();
    auto isObject = [&](std::size_t c) { return !std::isnan(lowest[c]) && object[c] != 0; };
    const std::vector<int> parent = detail::labelSurfaces(lowest, nx, ny, rule.join, isObject);
    // Counts by root cell: inner cells, walls and steps down to the terrain.
    std::vector<int> inner(cells, 0), walls(cells, 0), steps(cells, 0);
    for (int y = 0; y < ny; ++y)
        for (int x = 0; x < nx; ++x) {
            const std::size_t c = static_cast<std::size_t>(y) * nx + x;
            if (!isObject(c))
                continue;
            const std::size_t r = static_cast<std::size_t>(parent[c]);
            int same = 0;
            const int dx[4] = {1, -1, 0, 0}, dy[4] = {0, 0, 1, -1};
            for (int k = 0; k < 4; ++k) {
                const int u = x + dx[k], v = y + dy[k];
                if (u < 0 || v < 0 || u >= nx || v >= ny)
                    continue;
                const std::size_t n = static_cast<std::size_t>(v) * nx + u;
                if (std::isnan(lowest[n]))
                    continue;
                if (isObject(n)) {
                    same += parent[n] == parent[c];
                    continue;
                }
                const float drop = lowest[c] - lowest[n];
                if (drop >= rule.wall)
                    ++walls[r];
                else if (drop > 0)
                    ++steps[r];
            }
            inner[r] += same == 4;
        }
    std::size_t released = 0;
    for (std::size_t c = 0; c < cells; ++c) {
        const std::size_t r = static_cast<std::size_t>(parent[c]);
        if (isObject(c) && inner[r] >= kLeastInnerCells && walls[r] == 0 && steps[r] > 0) {
            object[c] = 0;
            ++released;
        }
    }
    return released;
}

} // namespace vx
