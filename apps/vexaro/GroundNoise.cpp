#include "GroundNoise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vx::app {

namespace {

/// Least cells that make the median a measure rather than an accident.
constexpr std::size_t kLeastCells = 20;
/// Least returns a cell needs for a plane and a scatter about it.
constexpr int kLeastReturns = 5;

std::int64_t keyOf(std::int64_t cx, std::int64_t cy)
{
    return cx * 4000000007LL + cy;
}

/// Sums of a least-squares plane z = a x + b y + c over offsets from the cell's corner.
struct PlaneSums {
    int n = 0;
    double x = 0, y = 0, z = 0, xx = 0, xy = 0, yy = 0, xz = 0, yz = 0, zz = 0;
    void add(double px, double py, double pz)
    {
        ++n;
        x += px, y += py, z += pz;
        xx += px * px, xy += px * py, yy += py * py;
        xz += px * pz, yz += py * pz, zz += pz * pz;
    }
    /// RMS distance (vertical) of the points from their plane; negative when no plane fits.
    double rms() const
    {
        const double m = n;
        // Centred moments.
        const double sxx = xx - x * x / m, sxy = xy - x * y / m, syy = yy - y * y / m;
        const double sxz = xz - x * z / m, syz = yz - y * z / m, szz = zz - z * z / m;
        const double det = sxx * syy - sxy * sxy;
        if (!(std::fabs(det) > 1e-12 * (sxx * syy + 1e-30)))
            return -1;
        const double a = (sxz * syy - syz * sxy) / det, b = (syz * sxx - sxz * sxy) / det;
        const double residual = szz - a * sxz - b * syz;
        return std::sqrt(std::max(0.0, residual) / m);
    }
};

bool lastReturnAt(const vx::las::LasFile& file, std::size_t i, double& x, double& y, double& z)
{
    if (file.returnNumber(i) < file.numberOfReturns(i))
        return false;
    x = file.x(i), y = file.y(i), z = file.z(i);
    return std::isfinite(x) && std::isfinite(y) && std::isfinite(z);
}

} // namespace

double groundNoise(const vx::las::LasFile& file, double cell, double band)
{
    if (!(cell > 0) || !(band > 0) || file.size() == 0)
        return 0;
    std::unordered_map<std::int64_t, double> lowest;
    lowest.reserve(file.size() / 8 + 16);
    double x, y, z;
    for (std::size_t i = 0; i < file.size(); ++i) {
        if (!lastReturnAt(file, i, x, y, z))
            continue;
        const auto key = keyOf(static_cast<std::int64_t>(std::floor(x / cell)),
                               static_cast<std::int64_t>(std::floor(y / cell)));
        auto [it, fresh] = lowest.try_emplace(key, z);
        if (!fresh && z < it->second)
            it->second = z;
    }
    std::unordered_map<std::int64_t, PlaneSums> sums;
    sums.reserve(lowest.size());
    for (std::size_t i = 0; i < file.size(); ++i) {
        if (!lastReturnAt(file, i, x, y, z))
            continue;
        const double fx = std::floor(x / cell), fy = std::floor(y / cell);
        const auto key = keyOf(static_cast<std::int64_t>(fx), static_cast<std::int64_t>(fy));
        const double low = lowest[key];
        if (z <= low + band)
            sums[key].add(x - fx * cell, y - fy * cell, z - low);
    }
    std::vector<double> scatter;
    for (const auto& [key, s] : sums) {
        if (s.n < kLeastReturns)
            continue;
        const double r = s.rms();
        if (r >= 0)
            scatter.push_back(r);
    }
    if (scatter.size() < kLeastCells)
        return 0;
    auto mid = scatter.begin() + static_cast<std::ptrdiff_t>(scatter.size() / 2);
    std::nth_element(scatter.begin(), mid, scatter.end());
    return *mid;
}

} // namespace vx::app
