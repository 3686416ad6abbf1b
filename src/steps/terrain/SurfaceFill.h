// Fills the empty cells of a raster surface from the cells that hold heights: a pyramid of
// half-size rasters carries the known heights over any gap, and a few smoothing passes on each
// level, coarse to fine, bend the filled cells into a smooth surface through their borders.
#pragma once

#include "core/StepContext.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "steps/common/Raster.h"
#include "steps/terrain/SurfaceKernels.h"

#include <vector>

namespace vx::VX_BACKEND_NS {

/// Smoothing passes per pyramid level.
constexpr int kFillSmoothingPasses = 8;

/// Fills every empty cell of s (nx x ny of g); s needs at least one known cell.
template <class T> void fillSurface(const StepContext<T>& c, const RasterGrid& g, Buffer<float>& s)
{
    const Backend backend = c.backend();
    struct Level {
        int nx, ny;
        Buffer<float> heights;
        Buffer<unsigned char> known;
    };
    std::vector<Level> levels;
    levels.push_back({g.nx, g.ny, Buffer<float>(), Buffer<unsigned char>()});
    while (levels.back().nx > 1 || levels.back().ny > 1) {
        const Level& fine = levels.back();
        const int cnx = (fine.nx + 1) / 2, cny = (fine.ny + 1) / 2;
        Buffer<float> coarse(backend, static_cast<std::size_t>(cnx) * cny);
        const float* fineHeights = levels.size() == 1 ? s.data() : fine.heights.data();
        launch(c.launchConfig(cnx * cny), cnx * cny,
               k_halveSurface{fineHeights, fine.nx, fine.ny, coarse.data(), cnx});
        levels.push_back({cnx, cny, std::move(coarse), Buffer<unsigned char>()});
    }
    // Top down: each level's empty cells start from the level above, then smooth.
    for (int k = static_cast<int>(levels.size()) - 2; k >= 0; --k) {
        Level& fine = levels[static_cast<std::size_t>(k)];
        const Level& coarse = levels[static_cast<std::size_t>(k) + 1];
        float* heights = k == 0 ? s.data() : fine.heights.data();
        const int cells = fine.nx * fine.ny;
        Buffer<unsigned char> known(backend, cells);
        launch(c.launchConfig(cells), cells, k_markKnown{heights, known.data()});
        launch(c.launchConfig(cells), cells,
               k_fillFromCoarse{coarse.heights.data(), coarse.nx, coarse.ny, heights, fine.nx});
        Buffer<float> other(backend, cells);
        float* in = heights;
        float* out = other.data();
        for (int pass = 0; pass < kFillSmoothingPasses; ++pass) {
            launch(c.launchConfig(cells), cells, k_smoothFilled{in, out, known.data(), fine.nx, fine.ny});
            float* t = in;
            in = out;
            out = t;
        }
        if (in != heights)
            mem::copy(backend, heights, in, sizeof(float) * cells);
    }
}

} // namespace vx::VX_BACKEND_NS
