#include "Image.h"

#include "BitmapFont.h"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace vx::app {

Image::Image(int width, int height, Rgb background) : width_(width), height_(height)
{
    rgb_.resize(static_cast<std::size_t>(width) * height * 3);
    for (std::size_t i = 0; i < rgb_.size(); i += 3) {
        rgb_[i] = background.r;
        rgb_[i + 1] = background.g;
        rgb_[i + 2] = background.b;
    }
}

Rgb Image::at(int x, int y) const
{
    const std::size_t i = (static_cast<std::size_t>(y) * width_ + x) * 3;
    return {rgb_[i], rgb_[i + 1], rgb_[i + 2]};
}

void Image::set(int x, int y, Rgb c)
{
    if (x < 0 || y < 0 || x >= width_ || y >= height_)
        return;
    const std::size_t i = (static_cast<std::size_t>(y) * width_ + x) * 3;
    rgb_[i] = c.r;
    rgb_[i + 1] = c.g;
    rgb_[i + 2] = c.b;
}

void Image::fill(int x, int y, int w, int h, Rgb c)
{
    for (int j = y; j < y + h; ++j)
        for (int i = x; i < x + w; ++i)
            set(i, j, c);
}

void Image::frame(int x, int y, int w, int h, Rgb c)
{
    fill(x, y, w, 1, c);
    fill(x, y + h - 1, w, 1, c);
    fill(x, y, 1, h, c);
    fill(x + w - 1, y, 1, h, c);
}

void Image::text(int x, int y, const std::string& s, int scale, Rgb c)
{
    for (std::size_t k = 0; k < s.size(); ++k) {
        const int left = x + static_cast<int>(k) * (kGlyphWidth + 1) * scale;
        for (int row = 0; row < kGlyphHeight; ++row)
            for (int col = 0; col < kGlyphWidth; ++col)
                if (glyphPixel(s[k], col, row))
                    fill(left + col * scale, y + row * scale, scale, scale, c);
    }
}

namespace {

struct PngFile {
    std::FILE* file = nullptr;
    png_structp png = nullptr;
    png_infop info = nullptr;
    ~PngFile()
    {
        if (png)
            png_destroy_write_struct(&png, info ? &info : nullptr);
        if (file)
            std::fclose(file);
    }
};

} // namespace

void writePng(const std::string& path, const Image& image)
{
    const std::string prefix = "cannot write preview '" + path + "': ";
    PngFile out;
    out.file = std::fopen(path.c_str(), "wb");
    if (!out.file)
        throw std::runtime_error(prefix + std::strerror(errno));
    out.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    if (out.png)
        out.info = png_create_info_struct(out.png);
    if (!out.png || !out.info)
        throw std::runtime_error(prefix + "libpng could not start");
    if (setjmp(png_jmpbuf(out.png)))
        throw std::runtime_error(prefix + "libpng failed while writing");
    png_init_io(out.png, out.file);
    png_set_IHDR(out.png, out.info, static_cast<png_uint_32>(image.width()),
                 static_cast<png_uint_32>(image.height()), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(out.png, out.info);
    const auto& pixels = image.pixels();
    for (int y = 0; y < image.height(); ++y)
        png_write_row(out.png,
                      const_cast<png_bytep>(pixels.data() + static_cast<std::size_t>(y) * image.width() * 3));
    png_write_end(out.png, nullptr);
    if (std::fflush(out.file) != 0)
        throw std::runtime_error(prefix + std::strerror(errno));
}

} // namespace vx::app
