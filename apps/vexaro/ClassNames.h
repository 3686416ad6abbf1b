// Names and display colours of the ASPRS point classes.
#pragma once

#include <cstdint>
#include <string>

namespace vx::app {

/// "Ground", "Building", ... for the ASPRS standard classes; "Reserved" or "User defined" else.
/// `legacy` picks the table of point formats 0 to 5 (8 model key-point, 12 overlap).
std::string className(int cls, bool legacy = false);

struct Rgb {
    uint8_t r, g, b;
};

/// QGIS's default colour of a class; grey for classes without one.
Rgb classColour(int cls);

} // namespace vx::app
