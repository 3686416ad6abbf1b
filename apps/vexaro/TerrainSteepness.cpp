#include "TerrainSteepness.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vx::app {

namespace {

std::int64_t keyOf(std::int64_t cx, std::int64_t cy)
{
    return cx * 4000000007LL + cy;
}

} // namespace

double terrainSteepness(const vx::las::LasFile& file, double cell)
{
    if (!(cell > 0) || file.size() == 0)
        return 0;
    std::unordered_map<std::int64_t, double> lowest;
    lowest.reserve(file.size() / 16 + 16);
    std::vector<std::pair<std::int64_t, std::int64_t>> cells;
    for (std::size_t i = 0; i < file.size(); ++i) {
        const double x = file.x(i), y = file.y(i), z = file.z(i);
        if (!std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
            continue;
        const auto cx = static_cast<std::int64_t>(std::floor(x / cell));
        const auto cy = static_cast<std::int64_t>(std::floor(y / cell));
        auto [it, fresh] = lowest.try_emplace(keyOf(cx, cy), z);
        if (fresh)
            cells.emplace_back(cx, cy);
        else if (z < it->second)
            it->second = z;
    }
    // Along one axis: the smaller of the two rises where the surface goes the same way on both
    // sides of the cell, 0 at a jump, a ridge or a hollow.
    auto along = [&](double z, double before, double after) {
        const double up = after - z, down = z - before;
        return up * down > 0 ? std::min(std::fabs(up), std::fabs(down)) / cell : 0.0;
    };
    std::vector<double> slopes;
    for (const auto& [cx, cy] : cells) {
        const double z = lowest[keyOf(cx, cy)];
        double neighbour[4];
        bool complete = true;
        int k = 0;
        for (const auto& [dx, dy] : {std::pair{-1, 0}, {1, 0}, {0, -1}, {0, 1}}) {
            const auto it = lowest.find(keyOf(cx + dx, cy + dy));
            if (it == lowest.end()) {
                complete = false;
                break;
            }
            neighbour[k++] = it->second;
        }
        if (complete)
            slopes.push_back(
                std::hypot(along(z, neighbour[0], neighbour[1]), along(z, neighbour[2], neighbour[3])));
    }
    if (slopes.empty())
        return 0;
    auto at = slopes.begin() + static_cast<std::ptrdiff_t>(slopes.size() * 19 / 20);
    std::nth_element(slopes.begin(), at, slopes.end());
    return *at;
}

} // namespace vx::app
