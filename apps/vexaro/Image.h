// An RGB raster with the few drawing operations the preview needs, and its PNG writer.
#pragma once

#include "ClassNames.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vx::app {

class Image {
public:
    Image(int width, int height, Rgb background);

    int width() const { return width_; }
    int height() const { return height_; }
    Rgb at(int x, int y) const;
    /// Pixels outside the image are ignored.
    void set(int x, int y, Rgb colour);
    void fill(int x, int y, int w, int h, Rgb colour);
    void frame(int x, int y, int w, int h, Rgb colour);
    /// Draws text with the built-in font, `scale` screen pixels per font pixel; (x, y) is the
    /// top left corner.
    void text(int x, int y, const std::string& s, int scale, Rgb colour);
    const std::vector<uint8_t>& pixels() const { return rgb_; }

private:
    int width_, height_;
    std::vector<uint8_t> rgb_;
};

/// Writes an 8-bit RGB PNG; throws std::runtime_error "cannot write preview 'PATH': ..." when
/// the file cannot be created or written.
void writePng(const std::string& path, const Image& image);

} // namespace vx::app
