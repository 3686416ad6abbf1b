// The check of the search ranges against the cloud they search: a range so wide that every point
// reads a large part of a large cloud runs for hours, and is refused before the work.
#pragma once

#include "Presets.h"

#include <string>

namespace vx::app {

/// Throws UsageError when the columns `column` (file units) of the search `what` make each point
/// read more than a hundred thousand others (its own and the eight adjacent columns, at the
/// scale's density) and the whole run more than a hundred billion. Does nothing without a density.
void checkSearchColumns(double column, const std::string& what, const DataScale& scale);

} // namespace vx::app
