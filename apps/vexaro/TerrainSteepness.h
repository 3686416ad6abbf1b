// How steep the terrain of a cloud is, measured cheaply before classification, from the surface
// of the lowest points over coarse cells. Coarse cells hold ground almost everywhere, even under
// trees and beside buildings. A cell's slope along an axis counts only where the surface keeps
// rising (or falling) through it, on both sides: a wall or a terrace step is a jump beside flat
// cells, a roof or a crown a bump with a rise on one side and a fall on the other, and neither
// counts. So the figure follows slopes of the terrain rather than the objects on it.
#pragma once

#include "las/LasFile.h"

namespace vx::app {

/// The 95th percentile, over cells of `cell` file units that have all four edge neighbours, of
/// the cell's slope (vertical over horizontal file units): along each axis, the smaller of the
/// rises to the two neighbours where both go the same way, 0 where they do not; the two axes
/// combine as a gradient. 0 when no cell has four neighbours. A high percentile rather than the
/// median: a valley whose steep sides are a tenth of the tile needs the steep rules too.
double terrainSteepness(const vx::las::LasFile& file, double cell);

} // namespace vx::app
