#include "core/ClassifierCore.h"
#include "core/DecompositionDrivers.h"

#include <cmath>
#include <limits>

namespace vx {

long long cellsAlong(double extent, double edge)
{
    double cells = std::trunc(extent / edge + 1.0);
    if (!(cells >= 1.0) || cells > static_cast<double>(std::numeric_limits<int32_t>::max()))
        return -1;
    return static_cast<long long>(cells);
}

namespace {
// Past this many +0.5 steps the edges double instead, so a huge extent still ends the loop.
constexpr int kLinearGrowthSteps = 100;
} // namespace

template <class T> GridFit fitGrid(ClassifierCore<T>& c, double sx, double sy, double sz)
{
    const auto& g = c.grid.parameters;
    const double ex = static_cast<double>(static_cast<T>(g.maxX - g.minX));
    const double ey = static_cast<double>(static_cast<T>(g.maxY - g.minY));
    const double ez = static_cast<double>(static_cast<T>(g.maxZ - g.minZ));
    GridFit fit{};
    for (int iteration = 0;; ++iteration) {
        const long long cx = cellsAlong(ex, sx), cy = cellsAlong(ey, sy);
        if (sz == 0.0)
            sz = ez + 100.0; // planar request: one layer, taller than the cloud
        const long long cz = cellsAlong(ez, sz);
        // A count past int32 is treated like a grid that does not fit, never wrapped.
        long long groups = -1;
        if (cx > 0 && cy > 0 && cz > 0 && cx * cy <= std::numeric_limits<int32_t>::max() &&
            cx * cy * cz <= std::numeric_limits<int32_t>::max())
            groups = cx * cy * cz;

        std::size_t freeBytes = 0, totalBytes = 0;
        c.memoryInfo(freeBytes, totalBytes);
        const double needed =
            groups < 0 ? std::numeric_limits<double>::infinity()
                       : static_cast<double>(c.store.count) * 8.0 + static_cast<double>(groups) * 12.0;
        c.msg(4, "Free memory", static_cast<double>(freeBytes) / 1e9);
        c.msg(4, "Theoretical memory", needed / 1e9);
        c.msg(4, "Free memory", static_cast<double>(freeBytes) / 1e9);

        const bool fits = needed <= 0.8 * static_cast<double>(freeBytes);
        // One cell on every axis cannot shrink further: go ahead and let the allocation decide.
        const bool minimal = groups == 1;
        if (fits || minimal) {
            fit = {sx,
                   sy,
                   sz,
                   static_cast<int>(cx),
                   static_cast<int>(cy),
                   static_cast<int>(cz),
                   static_cast<int>(groups)};
            return fit;
        }
        if (iteration < kLinearGrowthSteps) {
            sx += 0.5;
            c.msg(1, "Not enough memory, increasing groups size: ", sx);
            sy += 0.5;
            sz += 0.5;
        } else {
            sx *= 2.0;
            c.msg(1, "Not enough memory, increasing groups size: ", sx);
            sy *= 2.0;
            sz *= 2.0;
        }
    }
}

template GridFit fitGrid<float>(ClassifierCore<float>&, double, double, double);
template GridFit fitGrid<double>(ClassifierCore<double>&, double, double, double);

} // namespace vx
