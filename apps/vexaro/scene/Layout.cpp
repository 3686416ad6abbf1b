#include "scene/Layout.h"

#include <algorithm>
#include <cmath>

namespace vx::scene {

void BucketIndex::reset(double side, double bucket)
{
    bucket_ = bucket;
    cells_ = std::max(1, static_cast<int>(std::ceil(side / bucket)));
    lists_.assign(static_cast<std::size_t>(cells_) * cells_, {});
}

void BucketIndex::add(int id, double cx, double cy, double radius)
{
    auto cell = [&](double v) {
        return std::clamp(static_cast<int>(std::floor(v / bucket_)), 0, cells_ - 1);
    };
    for (int i = cell(cx - radius); i <= cell(cx + radius); ++i)
        for (int j = cell(cy - radius); j <= cell(cy + radius); ++j)
            lists_[static_cast<std::size_t>(i) * cells_ + j].push_back(id);
}

const std::vector<int>& BucketIndex::at(double x, double y) const
{
    const int i = std::clamp(static_cast<int>(std::floor(x / bucket_)), 0, cells_ - 1);
    const int j = std::clamp(static_cast<int>(std::floor(y / bucket_)), 0, cells_ - 1);
    return lists_[static_cast<std::size_t>(i) * cells_ + j];
}

namespace {

Building drawBuilding(Random& rng, double maxHalf)
{
    const double kind = rng.uniform();
    double length, width, eaveLow, eaveHigh;
    if (kind < 0.45) { // houses
        length = rng.uniform(7, 11), width = rng.uniform(6, 9), eaveLow = 3, eaveHigh = 7;
    } else if (kind < 0.85) { // blocks
        length = rng.uniform(11, 18), width = rng.uniform(8, 13), eaveLow = 5, eaveHigh = 13;
    } else { // halls and towers
        length = rng.uniform(18, 25), width = rng.uniform(12, 17), eaveLow = 8, eaveHigh = 17;
    }
    return shapeBuilding(rng, length, width, eaveLow, eaveHigh, maxHalf);
}

} // namespace

int countFor(double area, double perObject, int least)
{
    return std::max(least, static_cast<int>(area / perObject + 0.5));
}

Building shapeBuilding(Random& rng, double length, double width, double eaveLow, double eaveHigh,
                       double maxHalf)
{
    Building b;
    b.halfLength = std::min(length * 0.5, maxHalf);
    b.halfWidth = std::min(width * 0.5, b.halfLength);
    rng.direction(b.ux, b.uy);
    const double roof = rng.uniform();
    b.roof = roof < 0.35 ? RoofShape::Flat : roof < 0.7 ? RoofShape::Gabled : RoofShape::Hipped;
    b.eave = rng.uniform(eaveLow, eaveHigh);
    if (b.roof != RoofShape::Flat)
        b.rise = std::min(5.0, b.halfWidth * rng.uniform(0.4, 0.9));
    b.intensity = static_cast<int>(rng.uniform(8000, 22000));
    return b;
}

Building drawHouse(Random& rng)
{
    const double length = rng.uniform(7, 11), width = rng.uniform(6, 9);
    return shapeBuilding(rng, length, width, 3, 7, 12.5);
}

Crown drawTree(Random& rng, double x, double y, double lowest, double highest)
{
    Crown c;
    c.cx = x, c.cy = y;
    c.top = rng.uniform(lowest, highest);
    c.base = c.top * rng.uniform(0.25, 0.55);
    c.radius = std::clamp(c.top * rng.uniform(0.18, 0.32), 1.0, 6.5);
    c.conical = rng.chance(0.35);
    c.density = rng.uniform(0.7, 0.9);
    return c;
}

Crown drawShrub(Random& rng, double x, double y)
{
    Crown c;
    c.cx = x, c.cy = y;
    c.top = rng.uniform(0.5, 2.0);
    c.base = rng.uniform(0.05, 0.2);
    c.radius = rng.uniform(0.5, 1.5);
    c.density = rng.uniform(0.75, 0.9);
    c.stop = 0.5;
    c.shrub = true;
    return c;
}

bool hitsBuilding(const std::vector<Building>& buildings, double x, double y, double r)
{
    for (const auto& b : buildings) {
        double s, t;
        b.local(x, y, s, t);
        if (std::fabs(s) < b.halfLength + r + 0.5 && std::fabs(t) < b.halfWidth + r + 0.5)
            return true;
    }
    return false;
}

Layout::Layout(Random& rng, double sideLength, SceneKind kind)
    : side(sideLength), terrain(rng, sideLength, kind)
{
    switch (kind) {
    case SceneKind::Town:
        drawTown(rng);
        break;
    case SceneKind::Hall:
        drawHall(rng);
        break;
    case SceneKind::Terraces:
        drawTerraces(rng);
        break;
    case SceneKind::Forest:
    case SceneKind::MountainForest:
        drawForest(rng);
        break;
    case SceneKind::Bridges:
        drawTown(rng);
        drawBridges(rng);
        break;
    case SceneKind::River:
        drawTown(rng);
        drawBridges(rng);
        // The river fills its level channel to half the least depth: the banks rise above it
        // everywhere.
        waterLevel = terrain.channelFloor() + 0.5 * terrain.channelDepth();
        break;
    }
    buildIndexes();
}

void Layout::drawTown(Random& rng)
{
    const double area = side * side;
    const double maxHalf = std::min(12.5, side / 6.0);

    // Buildings: apart from each other and off the ditch, sitting on the lowest corner.
    const int wantedBuildings = countFor(area, 1200.0, 1);
    const int attempts = wantedBuildings * 100;
    for (int attempt = 0; attempt < 2 * attempts && static_cast<int>(buildings.size()) < wantedBuildings;
         ++attempt) {
        // A small scene may have no room beside its ditch for a full-size building: after the
        // normal attempts, one small house is placed wherever it fits, over the ditch if need be.
        if (attempt >= attempts && !buildings.empty())
            break;
        Building b = drawBuilding(rng, attempt < attempts ? maxHalf : std::min(maxHalf, 4.0));
        const double reach = b.radius() + 1.0;
        if (side <= 2.0 * reach)
            continue;
        b.cx = rng.uniform(reach, side - reach);
        b.cy = rng.uniform(reach, side - reach);
        // Keep the whole footprint off the ditch: its half extent across the ditch line.
        const SceneLine& ditch = terrain.ditch();
        const double across = std::fabs(b.halfLength * (b.ux * -ditch.dy + b.uy * ditch.dx)) +
                              std::fabs(b.halfWidth * (-b.uy * -ditch.dy + b.ux * ditch.dx));
        const bool offDitch =
            std::fabs(ditch.distance(b.cx, b.cy)) >= terrain.ditchHalfWidth() + across + 1.0;
        if (!offDitch && attempt < attempts)
            continue;
        bool apart = true;
        for (const auto& o : buildings) {
            const double dx = o.cx - b.cx, dy = o.cy - b.cy;
            if (std::sqrt(dx * dx + dy * dy) < o.radius() + b.radius() + 4.0)
                apart = false;
        }
        if (!apart)
            continue;
        double lowest = terrain.height(b.cx, b.cy);
        for (int sx = -1; sx <= 1; sx += 2)
            for (int sy = -1; sy <= 1; sy += 2) {
                const double x = b.cx + sx * b.halfLength * b.ux - sy * b.halfWidth * b.uy;
                const double y = b.cy + sx * b.halfLength * b.uy + sy * b.halfWidth * b.ux;
                lowest = std::min(lowest, terrain.height(x, y));
            }
        b.baseZ = lowest;
        buildings.push_back(b);
    }

    auto addCrown = [&](Crown c) {
        c.groundZ = terrain.height(c.cx, c.cy);
        crowns.push_back(c);
    };

    // Trees leaning over roofs: the crown reaches 0.5 to 1.5 m over one long eave.
    for (const auto& b : buildings) {
        if (!rng.chance(0.35))
            continue;
        Crown c = drawTree(rng, 0, 0, 3.0, 25.0);
        c.top = std::clamp(b.eave + b.rise + rng.uniform(-2.0, 5.0), 3.0, 25.0);
        c.base = c.top * rng.uniform(0.25, 0.45);
        c.radius = std::clamp(c.top * 0.3, 2.0, 6.5);
        const double overlap = rng.uniform(0.5, 1.5);
        const double s = rng.uniform(-b.halfLength, b.halfLength) * 0.8;
        const double t = (rng.chance(0.5) ? 1.0 : -1.0) * (b.halfWidth + c.radius - overlap);
        c.cx = b.cx + s * b.ux - t * b.uy;
        c.cy = b.cy + s * b.uy + t * b.ux;
        if (c.cx < 0 || c.cy < 0 || c.cx > side || c.cy > side)
            continue;
        addCrown(c);
        ++treesTouchingBuildings;
    }

    // Forest patches with an understorey of shrubs.
    const int patches = area < 4000.0 ? 0 : countFor(area, 8000.0, 1);
    for (int p = 0; p < patches; ++p) {
        const double radius = std::min(rng.uniform(12.0, 30.0), side / 3.0);
        const double px = rng.uniform(0, side), py = rng.uniform(0, side);
        const int trees = static_cast<int>(3.14159 * radius * radius / 30.0);
        for (int k = 0; k < trees; ++k) {
            double dx, dy;
            rng.direction(dx, dy);
            const double r = radius * std::sqrt(rng.uniform());
            const double x = px + dx * r, y = py + dy * r;
            const bool shrub = rng.chance(0.3);
            Crown c = shrub ? drawShrub(rng, x, y) : drawTree(rng, x, y, 8.0, 25.0);
            if (x < 0 || y < 0 || x > side || y > side || hitsBuilding(buildings, x, y, c.radius))
                continue;
            addCrown(c);
        }
    }

    // Single trees of every size, and shrubs.
    const int singles = countFor(area, 500.0, 2);
    for (int k = 0; k < singles; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        Crown c = rng.chance(0.4) ? drawTree(rng, x, y, 3.0, 8.0) : drawTree(rng, x, y, 8.0, 22.0);
        if (!hitsBuilding(buildings, x, y, c.radius))
            addCrown(c);
    }
    const int shrubs = countFor(area, 150.0, 3);
    for (int k = 0; k < shrubs; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        Crown c = drawShrub(rng, x, y);
        if (!hitsBuilding(buildings, x, y, c.radius))
            addCrown(c);
    }

    const int meadows = countFor(area, 3000.0, 1);
    for (int k = 0; k < meadows; ++k) {
        GrassPatch g;
        g.cx = rng.uniform(0, side), g.cy = rng.uniform(0, side);
        g.radius = std::min(rng.uniform(4.0, 15.0), side / 4.0);
        g.height = rng.uniform(0.1, 0.3);
        grass.push_back(g);
    }
}

void Layout::buildIndexes()
{
    buildingIndex.reset(side, 10.0);
    crownIndex.reset(side, 10.0);
    grassIndex.reset(side, 10.0);
    for (std::size_t i = 0; i < buildings.size(); ++i)
        buildingIndex.add(static_cast<int>(i), buildings[i].cx, buildings[i].cy, buildings[i].radius());
    for (std::size_t i = 0; i < crowns.size(); ++i)
        crownIndex.add(static_cast<int>(i), crowns[i].cx, crowns[i].cy, crowns[i].radius);
    for (std::size_t i = 0; i < grass.size(); ++i)
        grassIndex.add(static_cast<int>(i), grass[i].cx, grass[i].cy, grass[i].radius);
}

} // namespace vx::scene
