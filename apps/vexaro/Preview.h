// The preview picture of a classified cloud: a top view coloured by class, a cross-section
// strip through the middle, and a legend.
#pragma once

#include "Image.h"

#include <string>
#include <vector>

namespace vx::app {

struct PreviewPoint {
    double x, y, z;
    int cls;
};

/// Draws the picture; the top view's longer side is `size` pixels.
Image renderPreview(const std::vector<PreviewPoint>& points, const std::string& title, int size = 800);

/// Renders and writes a PNG; throws std::runtime_error when the file cannot be written.
void writePreview(const std::string& path, const std::vector<PreviewPoint>& points, const std::string& title);

/// The preview of a LAS file's points and classes; throws vexaro::LasError or
/// std::runtime_error.
void writeLasPreview(const std::string& lasPath, const std::string& pngPath, const std::string& title);

} // namespace vx::app
