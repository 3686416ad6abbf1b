// Builds the scene: a layout sized for the wanted point count, one pass of pulses in scan lines,
// sparse returns from the walls and a few low noise points, all sorted by GPS time like a
// real flight strip.
#include "scene/Layout.h"
#include "scene/Pulses.h"
#include "scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

namespace vx::scene {

namespace {

constexpr double kStartTime = 3.0e8;  // adjusted standard GPS seconds, a date in 2020
constexpr double kPulsePeriod = 1e-5; // 100 kHz
constexpr double kWallDensity = 0.04; // wall returns per square metre of wall and pulse per m²

/// Sparse returns on the four walls of a building.
void addWallPoints(const Layout& layout, const Building& b, double density, Random& rng,
                   std::vector<ScenePoint>& out)
{
    for (int side = 0; side < 4; ++side) {
        // Corners in footprint coordinates, walked around the rectangle.
        const double cs[5] = {-1, 1, 1, -1, -1}, ct[5] = {-1, -1, 1, 1, -1};
        const double s0 = cs[side] * b.halfLength, t0 = ct[side] * b.halfWidth;
        const double s1 = cs[side + 1] * b.halfLength, t1 = ct[side + 1] * b.halfWidth;
        const double length = std::sqrt((s1 - s0) * (s1 - s0) + (t1 - t0) * (t1 - t0));
        const int count = static_cast<int>(length * b.eave * kWallDensity * density + rng.uniform());
        for (int k = 0; k < count; ++k) {
            const double f = rng.uniform();
            // Just outside the wall, so the point belongs to the wall and not to the roof.
            const double s = (s0 + (s1 - s0) * f) * 1.002, t = (t0 + (t1 - t0) * f) * 1.002;
            const double x = b.cx + s * b.ux - t * b.uy, y = b.cy + s * b.uy + t * b.ux;
            const double xi = b.cx + s * 0.99 * b.ux - t * 0.99 * b.uy,
                         yi = b.cy + s * 0.99 * b.uy + t * 0.99 * b.ux;
            const double bottom = layout.terrain.height(x, y) + 0.3, top = b.roofZ(xi, yi) - 0.1;
            if (x < 0 || y < 0 || x >= layout.side || y >= layout.side || top <= bottom)
                continue;
            const double intensity = std::clamp(b.intensity * 0.7 + rng.bell(2000.0), 100.0, 65535.0);
            out.push_back(
                {x, y, rng.uniform(bottom, top), 0.0, static_cast<uint16_t>(intensity), 1, 1, kBuilding});
        }
    }
}

/// Returns per pulse on this layout, measured on a sample of pulses.
double returnsPerPulse(const Layout& layout, uint64_t seed)
{
    Random rng(hashMix(seed, 2));
    PulseSimulator pulses(layout, rng);
    const int samples = 20000;
    long returns = 0;
    for (int k = 0; k < samples; ++k)
        returns += pulses.fire(rng.uniform(0, layout.side), rng.uniform(0, layout.side), 0, nullptr);
    return static_cast<double>(returns) / samples;
}

/// Returns per pulse a kind's landscape gives, about: the first guess of the scene's size.
double expectedReturnsPerPulse(SceneKind kind)
{
    switch (kind) {
    case SceneKind::Town:
    case SceneKind::Bridges:
    case SceneKind::River:
        return 1.3;
    case SceneKind::Hall:
        return 1.15;
    case SceneKind::Terraces:
        return 1.2;
    case SceneKind::Forest:
    case SceneKind::MountainForest:
        return 2.2;
    }
    return 1.3;
}

/// Isolated returns far above the ground (a few single ones and one tight cluster of three to
/// five, as birds or haze give) and a few far below it (multipath), each 1 of 1.
void addStrayReturns(const Layout& layout, uint64_t seed, std::vector<ScenePoint>& out)
{
    Random rng(hashMix(seed, 4));
    const double side = layout.side, last = side * 0.999999;
    auto add = [&](double x, double y, double z, uint8_t truth) {
        x = std::clamp(x, 0.0, last), y = std::clamp(y, 0.0, last);
        const double intensity = rng.uniform(300, 3000);
        out.push_back(
            {x, y, layout.terrain.height(x, y) + z, 0.0, static_cast<uint16_t>(intensity), 1, 1, truth});
    };
    const int singles = 3 + static_cast<int>(rng.uniform() * 2.0);
    for (int k = 0; k < singles; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        add(x, y, rng.uniform(200.0, 1500.0), kHighNoise);
    }
    const int cluster = 3 + static_cast<int>(rng.uniform() * 3.0);
    const double cx = rng.uniform(0, side), cy = rng.uniform(0, side), cz = rng.uniform(200.0, 1450.0);
    for (int k = 0; k < cluster; ++k) {
        const double x = cx + rng.uniform(-0.5, 0.5), y = cy + rng.uniform(-0.5, 0.5);
        add(x, y, cz + rng.uniform(0.0, 2.0), kHighNoise);
    }
    const int low = 3 + static_cast<int>(rng.uniform() * 3.0);
    for (int k = 0; k < low; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        add(x, y, -rng.uniform(5.0, 50.0), kLowNoise);
    }
}

} // namespace

Scene generateScene(const SceneOptions& options)
{
    const double target = static_cast<double>(std::max<std::size_t>(options.targetPoints, 10));
    const double density = options.density > 0 ? options.density : 10.0;
    const SceneKind kind = options.kind;
    const double leastSide = kind == SceneKind::Hall ? kHallSceneSide : 0.0;
    // The side follows from the returns a pulse gives, guessed for the kind; the town corrects
    // for what its drawn layout really gives through the pulse spacing, the other kinds redraw
    // their layout on a side from the measured returns, so that their pulse density is the one
    // asked for.
    double side = std::max(leastSide, std::sqrt(target / (density * expectedReturnsPerPulse(kind))));

    Random layoutRng(options.seed);
    std::optional<Layout> drawn;
    drawn.emplace(layoutRng, side, kind);
    double perPulse = returnsPerPulse(*drawn, options.seed);
    if (kind != SceneKind::Town) {
        const double better = std::max(leastSide, std::sqrt(target / (density * perPulse)));
        if (std::fabs(better / side - 1.0) > 0.02) {
            side = better;
            layoutRng = Random(options.seed);
            drawn.emplace(layoutRng, side, kind);
            perPulse = returnsPerPulse(*drawn, options.seed);
        }
    }
    const Layout& layout = *drawn;

    Scene scene;
    scene.kind = kind;
    scene.units = options.units;
    scene.side = side;
    for (const auto& b : layout.buildings)
        (b.bridge ? scene.bridges : scene.buildings) += 1;
    scene.treesTouchingBuildings = layout.treesTouchingBuildings;
    for (const auto& c : layout.crowns)
        (c.shrub ? scene.shrubs : scene.trees) += 1;

    // Walls and noise first: their counts are known before the pulse spacing is chosen.
    Random extraRng(hashMix(options.seed, 3));
    std::vector<ScenePoint> extras;
    for (const auto& b : layout.buildings)
        if (!b.bridge)
            addWallPoints(layout, b, density, extraRng, extras);
    const int noise = 3 + static_cast<int>(target / 20000.0);
    for (int k = 0; k < noise; ++k) {
        const double x = extraRng.uniform(0, side), y = extraRng.uniform(0, side);
        const double z = layout.terrain.height(x, y) - extraRng.uniform(1.0, 5.0);
        extras.push_back(
            {x, y, z, 0.0, static_cast<uint16_t>(extraRng.uniform(2000, 8000)), 1, 1, kLowNoise});
    }

    const double pulsesWanted = kind == SceneKind::Town
                                    ? (target - static_cast<double>(extras.size())) / perPulse
                                    : density * side * side;
    const int lines = std::max(10, static_cast<int>(std::sqrt(std::max(100.0, pulsesWanted)) + 0.5));
    const double spacing = side / lines;
    scene.pulseSpacing = spacing;

    Random pulseRng(hashMix(options.seed, 1));
    PulseSimulator pulses(layout, pulseRng);
    scene.points.reserve(static_cast<std::size_t>(target * 1.05));
    long pulse = 0;
    for (int row = 0; row < lines; ++row) {
        for (int col = 0; col < lines; ++col, ++pulse) {
            const double x =
                std::clamp((col + 0.5 + pulseRng.uniform(-0.3, 0.3)) * spacing, 0.0, side * 0.999999);
            const double y =
                std::clamp((row + 0.5 + pulseRng.uniform(-0.3, 0.3)) * spacing, 0.0, side * 0.999999);
            pulses.fire(x, y, kStartTime + pulse * kPulsePeriod, &scene.points);
        }
    }

    if (options.strayReturns)
        addStrayReturns(layout, options.seed, extras);
    // Extras take the time of the scan line that passed over them.
    for (auto& p : extras) {
        const double row = std::floor(p.y / spacing);
        p.gpsTime = kStartTime + (row * lines + p.x / spacing) * kPulsePeriod;
        scene.points.push_back(p);
    }
    std::stable_sort(scene.points.begin(), scene.points.end(),
                     [](const ScenePoint& a, const ScenePoint& b) { return a.gpsTime < b.gpsTime; });

    // A scene in feet is the same scene with every length divided by the foot's.
    if (options.units != SceneUnits::Metres) {
        const double foot = unitLength(options.units);
        for (auto& p : scene.points)
            p.x /= foot, p.y /= foot, p.z /= foot;
        scene.side /= foot;
        scene.pulseSpacing /= foot;
        scene.originX /= foot;
        scene.originY /= foot;
    }
    return scene;
}

std::string describeTruth(const Scene& scene)
{
    std::size_t counts[256] = {};
    for (const auto& p : scene.points)
        ++counts[p.truth];
    std::ostringstream text;
    const double total = static_cast<double>(std::max<std::size_t>(scene.points.size(), 1));
    for (int c = 0; c < 256; ++c)
        if (counts[c])
            text << c << ' ' << counts[c] << ' ' << 100.0 * counts[c] / total << "%\n";
    return text.str();
}

} // namespace vx::scene
