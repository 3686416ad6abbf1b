// The host half of the water search: from the per-cell sums of the points to the cells of water
// bodies. Cells are few beside the points (a typical cell holds some sixteen of them), so the
// bodies are traced on the host.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vx {

/// Least share of a water cell's points that are ground: nothing stands on water but a boat or a
/// bird now and then.
constexpr double kWaterGroundShare = 0.9;

/// Fewest cells of a water body: its sparseness is read over some 160 points' worth of typical
/// ground, where the chance gaps of a few cells cannot pass for it.
constexpr std::size_t kLeastWaterCells = 10;

/// The per-cell sums of k_waterCellSums on the host; lowest is a height (0 in a cell without
/// ground, which is never a water cell).
struct WaterCells {
    int nx = 0, ny = 0;
    double cellArea = 1;
    std::vector<int> points, ground, single;
    std::vector<unsigned long long> brightness;
    std::vector<float> lowest;
};

/// The limits of classifyWater (see there), the area in the cloud's squared unit.
struct WaterRule {
    double darkRatio, sparseRatio, singleShare, minArea, relief;
};

struct WaterFound {
    bool contrast = false;      ///< the ground's intensities differ: the test can read them
    double medianIntensity = 0; ///< of the ground points
    double typicalCell = 0;     ///< points in a typical cell (median over the points)
    std::size_t bodies = 0, cells = 0;
    std::vector<uint8_t> water; ///< 1 for a cell of a water body
};

/// The median of the values counted by a histogram whose bin i holds the value i; contrast is
/// false when every value counted is the same one (or none is counted).
inline double histogramMedian(const std::vector<int>& histogram, bool& contrast)
{
    long long total = 0;
    int used = 0;
    for (int h : histogram) {
        total += h;
        used += h > 0 ? 1 : 0;
    }
    contrast = used > 1;
    long long seen = 0;
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        seen += histogram[i];
        if (2 * seen >= total && total > 0)
            return static_cast<double>(i);
    }
    return 0;
}

/// The number of points in the cell of the median point: what a point's surroundings typically
/// hold, whatever the share of the plan that is empty or sparse.
inline double typicalCellCount(std::vector<int> points)
{
    std::sort(points.begin(), points.end());
    long long total = 0;
    for (int p : points)
        total += p;
    long long seen = 0;
    for (int p : points) {
        seen += p;
        if (2 * seen >= total)
            return p;
    }
    return 0;
}

namespace detail {

/// The 5th to 95th percentile span of heights (reordered).
inline double middleSpan(std::vector<float>& h)
{
    std::sort(h.begin(), h.end());
    const double last = static_cast<double>(h.size() - 1);
    return h[static_cast<std::size_t>(std::ceil(0.95 * last))] -
           h[static_cast<std::size_t>(std::floor(0.05 * last))];
}

} // namespace detail

/// The cells of water bodies (see classifyWater).
inline WaterFound findWaterBodies(const WaterCells& g, const std::vector<int>& histogram,
                                  const WaterRule& rule)
{
    WaterFound out;
    out.medianIntensity = histogramMedian(histogram, out.contrast);
    out.typicalCell = typicalCellCount(g.points);
    const std::size_t cells = g.points.size();
    out.water.assign(cells, 0);
    if (!out.contrast)
        return out;
    std::vector<uint8_t> candidate(cells, 0);
    for (std::size_t c = 0; c < cells; ++c) {
        const double ground = g.ground[c];
        candidate[c] = ground > 0 && ground >= kWaterGroundShare * g.points[c] &&
                       g.single[c] >= rule.singleShare * ground &&
                       static_cast<double>(g.brightness[c]) < rule.darkRatio * out.medianIntensity * ground;
    }
    // Bodies: water cells that touch, diagonals included, traced from each unvisited one.
    std::vector<uint8_t> seen(cells, 0);
    std::vector<int> body, stack;
    std::vector<float> lows;
    for (std::size_t start = 0; start < cells; ++start) {
        if (!candidate[start] || seen[start])
            continue;
        body.clear();
        stack.assign(1, static_cast<int>(start));
        seen[start] = 1;
        while (!stack.empty()) {
            const int c = stack.back();
            stack.pop_back();
            body.push_back(c);
            const int cx = c % g.nx, cy = c / g.nx;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int x = cx + dx, y = cy + dy;
                    if (x < 0 || y < 0 || x >= g.nx || y >= g.ny)
                        continue;
                    const int d = y * g.nx + x;
                    if (candidate[d] && !seen[d]) {
                        seen[d] = 1;
                        stack.push_back(d);
                    }
                }
        }
        long long points = 0;
        lows.clear();
        for (int c : body) {
            points += g.points[c];
            lows.push_back(g.lowest[c]);
        }
        const double area = static_cast<double>(body.size()) * g.cellArea;
        const double perCell = static_cast<double>(points) / static_cast<double>(body.size());
        if (body.size() < kLeastWaterCells || area < rule.minArea ||
            !(perCell < rule.sparseRatio * out.typicalCell) || detail::middleSpan(lows) > rule.relief)
            continue;
        for (int c : body)
            out.water[static_cast<std::size_t>(c)] = 1;
        ++out.bodies;
        out.cells += body.size();
    }
    return out;
}

} // namespace vx
