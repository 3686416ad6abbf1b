#include "Preview.h"

#include "BitmapFont.h"
#include "Format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

namespace vx::app {

namespace {

constexpr Rgb kWhite{255, 255, 255}, kInk{40, 40, 40}, kEmpty{238, 238, 238};
constexpr int kMargin = 12, kLabel = 22, kSectionMin = 120, kSectionMax = 300;

struct Bounds {
    double minX = std::numeric_limits<double>::max(), minY = minX, minZ = minX;
    double maxX = std::numeric_limits<double>::lowest(), maxY = maxX, maxZ = maxX;
    void add(const PreviewPoint& p)
    {
        minX = std::min(minX, p.x), maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y), maxY = std::max(maxY, p.y);
        minZ = std::min(minZ, p.z), maxZ = std::max(maxZ, p.z);
    }
};

Rgb shade(Rgb c, double t)
{
    const double f = 0.55 + 0.45 * std::clamp(t, 0.0, 1.0);
    return {static_cast<uint8_t>(c.r * f), static_cast<uint8_t>(c.g * f), static_cast<uint8_t>(c.b * f)};
}

} // namespace

Image renderPreview(const std::vector<PreviewPoint>& points, const std::string& title, int size)
{
    Bounds b;
    for (const auto& p : points)
        b.add(p);
    if (points.empty())
        b = Bounds{0, 0, 0, 1, 1, 1};
    const double extX = std::max(b.maxX - b.minX, 1e-6), extY = std::max(b.maxY - b.minY, 1e-6);
    const double extZ = std::max(b.maxZ - b.minZ, 1e-6);
    const double scale = size / std::max(extX, extY); // pixels per unit
    const int topW = static_cast<int>(extX * scale) + 1, topH = static_cast<int>(extY * scale) + 1;

    // Cross-section: a band across the middle in y, drawn at the top view's x scale; heights are
    // stretched when the relief would be too flat to read.
    const double spacing = std::sqrt(extX * extY / std::max<std::size_t>(points.size(), 1));
    const double midY = (b.minY + b.maxY) * 0.5, band = std::max(2.0 * spacing, extY / 400.0);
    const double zScale = std::clamp(scale, kSectionMin / extZ, kSectionMax / extZ);
    const int sectionH = static_cast<int>(extZ * zScale) + 1;

    std::map<int, std::size_t> histogram;
    for (const auto& p : points)
        ++histogram[p.cls];
    const double total = static_cast<double>(std::max<std::size_t>(points.size(), 1));
    std::vector<std::pair<int, std::string>> legend;
    int legendWidth = 260;
    for (const auto& [cls, count] : histogram) {
        legend.emplace_back(cls, std::to_string(cls) + " " + className(cls) + " " +
                                     fixed(100.0 * count / total, 1) + "%");
        legendWidth = std::max(legendWidth, 20 + textWidth(legend.back().second, 2) + kMargin);
    }

    const int width = kMargin + std::max(topW, 200) + kMargin + legendWidth;
    const int height = kMargin + kLabel + topH + kMargin + kLabel + sectionH + kMargin;
    Image img(width, height, kWhite);
    const int topX = kMargin, topY = kMargin + kLabel;
    const int secX = kMargin, secY = topY + topH + kMargin + kLabel;

    img.text(topX, kMargin, "TOP VIEW  " + title, 2, kInk);
    img.fill(topX, topY, topW, topH, kEmpty);

    // Top view: the highest point of each pixel, in squares large enough to close the gaps
    // between neighbouring points.
    const int splat = std::max(1, static_cast<int>(std::ceil(1.6 * spacing * scale)));
    std::vector<double> zbuf(static_cast<std::size_t>(topW) * topH, std::numeric_limits<double>::lowest());
    for (const auto& p : points) {
        const int cx = static_cast<int>((p.x - b.minX) * scale),
                  cy = static_cast<int>((b.maxY - p.y) * scale);
        const Rgb colour = shade(classColour(p.cls), (p.z - b.minZ) / extZ);
        for (int y = cy; y < cy + splat && y < topH; ++y)
            for (int x = cx; x < cx + splat && x < topW; ++x) {
                double& z = zbuf[static_cast<std::size_t>(y) * topW + x];
                if (p.z > z)
                    z = p.z, img.set(topX + x, topY + y, colour);
            }
    }
    // Where the section cuts the top view.
    const int cutY = topY + static_cast<int>((b.maxY - midY) * scale);
    for (int x = 0; x < topW; x += 8)
        img.fill(topX + x, cutY, 4, 1, kInk);
    img.frame(topX - 1, topY - 1, topW + 2, topH + 2, kInk);

    img.text(secX, secY - kLabel + 2, "CROSS-SECTION AT Y " + fixed(midY, 1) + ", BAND " + fixed(2 * band, 1),
             2, kInk);
    img.fill(secX, secY, topW, sectionH, kEmpty);
    for (const auto& p : points) {
        if (std::fabs(p.y - midY) > band)
            continue;
        const int x = static_cast<int>((p.x - b.minX) * scale), y = static_cast<int>((b.maxZ - p.z) * zScale);
        img.fill(secX + x, secY + y, 2, 2, classColour(p.cls));
    }
    img.frame(secX - 1, secY - 1, topW + 2, sectionH + 2, kInk);

    // Legend: one line per class present, with its share.
    const int legendX = kMargin + std::max(topW, 200) + kMargin;
    int y = topY;
    img.text(legendX, y, "CLASSES", 2, kInk);
    y += 26;
    for (const auto& [cls, line] : legend) {
        img.fill(legendX, y, 14, 14, classColour(cls));
        img.frame(legendX, y, 14, 14, kInk);
        img.text(legendX + 20, y, line, 2, kInk);
        y += 22;
    }
    y += 10;
    img.text(legendX, y, grouped(static_cast<long long>(points.size())) + " POINTS", 2, kInk);
    img.text(legendX, y + 22, "HEIGHT " + fixed(b.minZ, 1) + " TO " + fixed(b.maxZ, 1), 2, kInk);
    return img;
}

void writePreview(const std::string& path, const std::vector<PreviewPoint>& points, const std::string& title)
{
    writePng(path, renderPreview(points, title));
}

} // namespace vx::app
