// The layouts of the hall, terraces and forest scenes, and the placement helpers they share.
#include "scene/Layout.h"

#include <algorithm>
#include <cmath>

namespace vx::scene {

double lowestUnder(const Terrain& terrain, const Building& b)
{
    double lowest = terrain.height(b.cx, b.cy);
    for (int sx = -1; sx <= 1; sx += 2)
        for (int sy = -1; sy <= 1; sy += 2) {
            const double x = b.cx + sx * b.halfLength * b.ux - sy * b.halfWidth * b.uy;
            const double y = b.cy + sx * b.halfLength * b.uy + sy * b.halfWidth * b.ux;
            lowest = std::min(lowest, terrain.height(x, y));
        }
    return lowest;
}

namespace {

/// Highest minus lowest terrain height on a 3 x 3 grid over the footprint, its edges included.
double reliefUnder(const Terrain& terrain, const Building& b)
{
    double low = 1e300, high = -1e300;
    for (int i = -1; i <= 1; ++i)
        for (int j = -1; j <= 1; ++j) {
            const double s = i * b.halfLength, t = j * b.halfWidth;
            const double z = terrain.height(b.cx + s * b.ux - t * b.uy, b.cy + s * b.uy + t * b.ux);
            low = std::min(low, z);
            high = std::max(high, z);
        }
    return high - low;
}

} // namespace

void Layout::placeHouses(Random& rng, int count, double flatWithin)
{
    int placed = 0;
    for (int attempt = 0; attempt < count * 100 && placed < count; ++attempt) {
        Building b = drawHouse(rng);
        const double reach = b.radius() + 1.0;
        if (side <= 2.0 * reach)
            continue;
        b.cx = rng.uniform(reach, side - reach);
        b.cy = rng.uniform(reach, side - reach);
        bool apart = true;
        for (const auto& o : buildings) {
            const double dx = o.cx - b.cx, dy = o.cy - b.cy;
            if (std::sqrt(dx * dx + dy * dy) < o.radius() + b.radius() + 4.0)
                apart = false;
        }
        if (!apart || (flatWithin > 0 && reliefUnder(terrain, b) >= flatWithin))
            continue;
        b.baseZ = lowestUnder(terrain, b);
        buildings.push_back(b);
        ++placed;
    }
}

void Layout::scatterPlants(Random& rng, double areaPerTree, double areaPerShrub, double areaPerMeadow)
{
    const double area = side * side;
    auto addCrown = [&](Crown c) {
        if (hitsBuilding(buildings, c.cx, c.cy, c.radius))
            return;
        c.groundZ = terrain.height(c.cx, c.cy);
        crowns.push_back(c);
    };
    const int singles = countFor(area, areaPerTree, 2);
    for (int k = 0; k < singles; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        addCrown(rng.chance(0.4) ? drawTree(rng, x, y, 3.0, 8.0) : drawTree(rng, x, y, 8.0, 22.0));
    }
    const int shrubs = countFor(area, areaPerShrub, 3);
    for (int k = 0; k < shrubs; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        addCrown(drawShrub(rng, x, y));
    }
    const int meadows = countFor(area, areaPerMeadow, 1);
    for (int k = 0; k < meadows; ++k) {
        GrassPatch g;
        g.cx = rng.uniform(0, side), g.cy = rng.uniform(0, side);
        g.radius = std::min(rng.uniform(4.0, 15.0), side / 4.0);
        g.height = rng.uniform(0.1, 0.3);
        grass.push_back(g);
    }
}

void Layout::drawHall(Random& rng)
{
    // One 80 m x 60 m hall with a flat roof 8 to 10 m over the lowest ground under it, somewhere
    // that leaves it whole inside the scene.
    Building hall;
    hall.halfLength = 40.0;
    hall.halfWidth = 30.0;
    rng.direction(hall.ux, hall.uy);
    hall.roof = RoofShape::Flat;
    hall.eave = rng.uniform(8.0, 10.0);
    hall.intensity = static_cast<int>(rng.uniform(8000, 22000));
    const double room = std::max(0.0, side * 0.5 - hall.radius() - 2.0);
    hall.cx = side * 0.5 + rng.uniform(-1.0, 1.0) * room;
    hall.cy = side * 0.5 + rng.uniform(-1.0, 1.0) * room;
    hall.baseZ = lowestUnder(terrain, hall);
    buildings.push_back(hall);

    const double area = side * side;
    placeHouses(rng, countFor(area, 4000.0, 3), 0.0);
    scatterPlants(rng, 600.0, 200.0, 3000.0);
}

void Layout::drawTerraces(Random& rng)
{
    // Houses stand on the terraces only: the ground under them varies by less than 0.4 m.
    const double area = side * side;
    placeHouses(rng, countFor(area, 3000.0, 2), 0.4);
    scatterPlants(rng, 500.0, 250.0, 3000.0);
}

void Layout::drawForest(Random& rng)
{
    // Tall trees on a jittered 6 m grid, one in twelve places left open: broad, dense crowns
    // close over most of the ground and stop a pulse more often than a town's single trees.
    constexpr double kSpacing = 6.0;
    const int cells = std::max(1, static_cast<int>(std::ceil(side / kSpacing)));
    for (int i = 0; i < cells; ++i)
        for (int j = 0; j < cells; ++j) {
            if (rng.chance(1.0 / 12.0))
                continue;
            const double x = (i + 0.5 + rng.uniform(-0.35, 0.35)) * kSpacing;
            const double y = (j + 0.5 + rng.uniform(-0.35, 0.35)) * kSpacing;
            Crown c = drawTree(rng, x, y, 14.0, 28.0);
            c.radius = std::clamp(c.top * rng.uniform(0.17, 0.24), 3.0, 5.5);
            c.density = rng.uniform(0.85, 0.95);
            c.stop = 0.5;
            if (x >= side || y >= side)
                continue;
            c.groundZ = terrain.height(x, y);
            crowns.push_back(c);
        }
    // The understorey: young trees and many shrubs.
    const double area = side * side;
    const int young = countFor(area, 150.0, 1), shrubs = countFor(area, 30.0, 3);
    for (int k = 0; k < young + shrubs; ++k) {
        const double x = rng.uniform(0, side), y = rng.uniform(0, side);
        Crown c = k < young ? drawTree(rng, x, y, 3.0, 8.0) : drawShrub(rng, x, y);
        c.groundZ = terrain.height(x, y);
        crowns.push_back(c);
    }
}

void Layout::drawBridges(Random& rng)
{
    // Nothing stands in the channel or on its banks.
    const SceneLine& channel = terrain.channel();
    const double clear = terrain.channelHalfTop() + 2.0;
    auto inChannel = [&](double x, double y, double reach) {
        return std::fabs(channel.distance(x, y)) < clear + reach;
    };
    buildings.erase(std::remove_if(buildings.begin(), buildings.end(),
                                   [&](const Building& b) { return inChannel(b.cx, b.cy, b.radius()); }),
                    buildings.end());
    crowns.erase(std::remove_if(crowns.begin(), crowns.end(),
                                [&](const Crown& c) { return inChannel(c.cx, c.cy, c.radius); }),
                 crowns.end());
    grass.erase(std::remove_if(grass.begin(), grass.end(),
                               [&](const GrassPatch& g) { return inChannel(g.cx, g.cy, g.radius); }),
                grass.end());

    // Road bridges 8 to 12 m wide straight across, their decks 0.3 m above the road at either end,
    // 1 m beyond the top of each bank, sloping evenly between the two ends; two where the scene
    // is wide enough to hold them 30 m apart.
    const int wanted = side > 120.0 ? 2 : 1;
    std::vector<double> placedAt;
    for (int attempt = 0; attempt < 200 && static_cast<int>(placedAt.size()) < wanted; ++attempt) {
        Building b;
        b.bridge = true;
        b.roof = RoofShape::Flat;
        b.ux = -channel.dy;
        b.uy = channel.dx;
        b.halfLength = terrain.channelHalfTop() + 1.0;
        b.halfWidth = rng.uniform(4.0, 6.0);
        const double along = rng.uniform(-side, side);
        b.cx = channel.px + channel.dx * along;
        b.cy = channel.py + channel.dy * along;
        const double margin = b.halfWidth + 2.0;
        if (b.cx < margin || b.cy < margin || b.cx > side - margin || b.cy > side - margin)
            continue;
        bool apart = true;
        for (double other : placedAt)
            apart = apart && std::fabs(other - along) > 30.0;
        if (!apart)
            continue;
        const double zA = terrain.height(b.cx - b.halfLength * b.ux, b.cy - b.halfLength * b.uy);
        const double zB = terrain.height(b.cx + b.halfLength * b.ux, b.cy + b.halfLength * b.uy);
        b.baseZ = lowestUnder(terrain, b);
        b.tilt = (zB - zA) / (2.0 * b.halfLength);
        b.eave = 0.5 * (zA + zB) + 0.3 - b.baseZ;
        b.intensity = static_cast<int>(rng.uniform(8000, 20000));
        buildings.push_back(b);
        placedAt.push_back(along);
    }
    // Half the channels are rivers, whose water gives no returns, so that nothing is seen under
    // or beside a deck; the others carry a road.
    waterInChannel = rng.chance(0.5);
}

} // namespace vx::scene
