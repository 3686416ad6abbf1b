// Classifying beyond one file in memory: folders of neighbouring tiles (each with a buffer from
// its neighbours, spread over the ranks of an MPI job) and single files larger than the memory
// budget (cut into buffered tiles, written back in their own order).
#pragma once

#include "TileRun.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vx::app {

struct TiledOptions {
    std::vector<std::string> inputs; ///< files, folders or patterns as given
    std::string output;              ///< the output folder (folders) or file (one large file)
    double bufferMetres = -1;        ///< width of the buffer ring; below 0: the steps' reach
    bool resume = false;             ///< skip tiles whose output exists
    uint64_t memory = 0;             ///< budget in bytes; 0: defaultMemoryBudget()
};

/// Classifies every file the inputs name into the output folder, one output a file of the same
/// name; returns the exit status (1 when a tile failed; the other tiles are still done).
int classifyFolder(const TiledOptions& options, TileSettings tiles);

/// Classifies one file cut into buffered tiles that fit the memory budget and writes the output
/// file with every record in its input order; returns the exit status.
int classifyLargeFile(const TiledOptions& options, TileSettings tiles, uint64_t points);

} // namespace vx::app
