// How steep the terrain of a cloud is, measured cheaply before classification: the median slope
// of the surface of the lowest points over coarse cells. Coarse cells hold ground almost
// everywhere, even under trees and beside buildings, and the median ignores the few cells at
// walls, so the figure follows the terrain rather than the objects on it.
#pragma once

#include "las/LasFile.h"

namespace vx::app {

/// Median, over cells of `cell` file units that have all four edge neighbours, of the steepest
/// rise (vertical over horizontal file units) from the cell's lowest point to theirs; 0 when no
/// cell has four neighbours.
double terrainSteepness(const vx::las::LasFile& file, double cell);

} // namespace vx::app
