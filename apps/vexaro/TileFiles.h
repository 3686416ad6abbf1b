// The files of a tiled run: the inputs a command line names (files, folders, glob patterns),
// their headers, and the neighbours whose points lie within a reach of a tile.
#pragma once

#include <las/LasFile.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vx::app {

/// One input file and what its header says of it.
struct TileFile {
    std::string path;
    vx::las::LasHeader header;
};

/// True for names ending in .las or .laz (any case).
bool isPointFileName(const std::string& path);

/// The files that the arguments name, in order, without repeats: a folder stands for its .las and
/// .laz files (sorted by name, not recursive), a pattern with * ? or [ for the files it matches.
/// Throws std::runtime_error when an argument names nothing or nothing is left.
std::vector<std::string> expandInputs(const std::vector<std::string>& arguments);

/// Reads the header of each file (not its points). A file that cannot be read keeps an empty
/// header (no points, so no tile's neighbour) and the reason in `problems` (one entry a file,
/// empty when it was read).
std::vector<TileFile> readTileHeaders(const std::vector<std::string>& paths,
                                      std::vector<std::string>& problems);

/// Plan rectangle of a tile's bounds widened by reach on every side.
struct PlanRect {
    double minX, minY, maxX, maxY;
    bool holds(double x, double y) const { return x >= minX && x <= maxX && y >= minY && y <= maxY; }
    bool meets(const PlanRect& o) const
    {
        return minX <= o.maxX && o.minX <= maxX && minY <= o.maxY && o.minY <= maxY;
    }
};
PlanRect boundsOf(const vx::las::LasHeader& header, double reach = 0);

/// Indices of the other files whose bounds meet the bounds of files[k] widened by reach.
std::vector<std::size_t> neighboursOf(const std::vector<TileFile>& files, std::size_t k, double reach);

/// Plan coordinates of a point record (X and Y lead every point format).
void recordPlan(const uint8_t* record, const vx::las::LasHeader& header, double& x, double& y);

} // namespace vx::app
