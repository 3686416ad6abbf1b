// How noisy the sensor's returns from hard surfaces are, measured before classification: the
// scatter of the lowest last returns of small cells about the plane that fits them. Bare ground
// and roofs dominate such cells, and a plane takes out their slope, so what is left is the
// sensor's ranging noise and the misfit of overlapping strips; grass and low plants raise a few
// cells, which the median ignores.
#pragma once

#include "las/LasFile.h"

namespace vx::app {

/// Median, over cells of `cell` file units, of the RMS distance of the last returns lying
/// within `band` above the cell's lowest last return from their least-squares plane, in file
/// height units. Cells with fewer than five such returns do not count; 0 when fewer than 20
/// cells count (the noise is then unknown).
double groundNoise(const vx::las::LasFile& file, double cell, double band);

} // namespace vx::app
