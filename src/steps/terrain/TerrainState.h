// What the terrain-surface ground step keeps on the engine: its last surface, for the steps
// that measure heights above it.
#pragma once

#include "exec/Buffer.h"
#include "steps/common/Raster.h"

namespace vx {

/// Largest raster the step builds: beyond it the extent is refused rather than allocated.
constexpr long long kMaxTerrainCells = 100'000'000;
/// Most openings of one run; wider windows grow by more than one cell per opening.
constexpr int kMostOpenings = 256;

struct TerrainState {
    RasterGrid grid;
    Buffer<float> surface; ///< on the backend of the run that made it
};

} // namespace vx
