// The data profile of a LAS file, measured before any classification: units, density and spacing
// over the occupied area, returns per pulse, a robust height range and a noise suspicion, with
// warnings for data the classification rules cannot handle. `vexaro info` and `classify` print it.
#pragma once

#include "CoordinateUnits.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vx::las {
class LasFile;
}

namespace vx::app {

struct DataProfile {
    std::size_t points = 0, lastReturns = 0;
    double minX = 0, maxX = 0, minY = 0, maxY = 0, minZ = 0, maxZ = 0; ///< file units
    double occupiedArea = 0; ///< file units², occupied cells of the all-returns grid (edge cells half)
    double density = 0, lastDensity = 0; ///< points over occupied area, per m² (unit² when unknown)
    double spacing = 0, lastSpacing = 0; ///< 1 / sqrt(density), in metres (units when unknown)
    double returnsPerPulse = 0;          ///< points / last returns (0 without last returns)
    LengthUnit horizontalUnit = LengthUnit::Unknown, verticalUnit = LengthUnit::Unknown;
    std::string unitSource = "none";     ///< "WKT", "GeoTIFF keys", "--units" or "none"
    bool geographic = false;             ///< coordinates in degrees: no length can be derived
    bool unitsLookLikeFeet = false;      ///< unknown units whose figures suggest feet (see profileLas)
    double metresPerUnit = 1;            ///< horizontal; 1 when unknown
    std::size_t isolatedPoints = 0;      ///< far from every neighbour or far outside the height range
    double heightP01 = 0, heightP99 = 0; ///< 1st and 99th percentile of z, file units
    double terrainSlope = 0;  ///< rise per run that 95 % of the coarse lowest-point surface stays under
    double groundNoise = 0;   ///< scatter of the lowest returns, metres (units); 0: unknown
    bool intensities = false; ///< the intensities differ between points (the water step reads them)
    std::vector<std::string> warnings; ///< one sentence each, without "warning:"
};

/// Profiles every point of the file. `unitsOverride` (from --units) replaces the units of the
/// file's coordinate system unless it is Unknown. Costs a few passes over the points with memory
/// proportional to the point count, whatever the extent.
DataProfile profileLas(const vx::las::LasFile& file, LengthUnit unitsOverride);

/// The "Profile" block, a heading and indented lines, each ending in '\n'.
std::string formatProfile(const DataProfile& profile);

} // namespace vx::app
