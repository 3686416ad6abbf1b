// A small generated town with known building points, for the accuracy test of the building steps.
//
// A 90 m x 90 m square of rolling terrain (slope of 5 per cent along x, undulation of +-0.6 m) is
// scanned by vertical pulses at random positions, about 5 per square metre. Eight houses stand
// in a 3 x 3 layout of 30 m slots (the ninth slot is a park): flat, gabled and hipped roofs,
// footprints from 8 x 6 m to 16 x 12 m in random orientations, eaves 3 to 8 m and ridges 1.5 to
// 3.5 m above them. Fourteen trees (crowns of radius 2.5 to 4 m, 2 to 4 m up to 7 to 12 m), five
// of them leaning over a house so that their crowns cover part of its roof, and ten shrubs.
//
// Each pulse returns from the first crown it crosses (when the crown reflects it) and then from
// the roof or the ground below; a pulse that a crown stops there gives a single last return in
// the crown. Crown returns followed by another return are non-last returns. Walls get a few
// points per metre of perimeter, as the slant of a real scan gives them. Coordinates carry
// +-1.5 cm of noise on roofs and ground. Roof and wall points are building in the truth.
#pragma once

#include "common/TestSupport.h"
#include "scene/Objects.h"
#include "scene/Random.h"
#include "scene/Terrain.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace bldtest {

using TownRng = vx::scene::SequenceRandom;
/// The houses are the demo scene's buildings: an oriented footprint with a flat, gabled or
/// hipped roof.
using House = vx::scene::Building;
using Roof = vx::scene::RoofShape;

struct Tree {
    double cx, cy, groundZ, base, top, radius;
    /// Height range of the crown (an ellipsoid) above (x, y); false outside it.
    bool crown(double x, double y, double& zTop, double& zBottom) const
    {
        const double q = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / (radius * radius);
        if (q >= 1.0)
            return false;
        const double mid = groundZ + (top + base) / 2, half = (top - base) / 2 * std::sqrt(1.0 - q);
        zTop = mid + half, zBottom = mid - half;
        return true;
    }
};

struct Town {
    std::vector<VX_Point<double>> points;
    std::vector<bool> building; ///< truth
    std::vector<House> houses;
    std::vector<Tree> trees;
    int treesOverRoofs = 0;
};

inline double townTerrain(double x, double y)
{
    return vx::scene::rollingSlope(x, y, 0.05, 0.6, 11.0, 13.0);
}

inline Town generateTown(uint64_t seed = 20240917)
{
    TownRng r(seed);
    Town town;
    const double side = 90.0;
    const Roof shapes[8] = {Roof::Flat,   Roof::Gabled, Roof::Hipped, Roof::Flat,
                            Roof::Gabled, Roof::Hipped, Roof::Gabled, Roof::Flat};
    for (int k = 0, slot = 0; slot < 9; ++slot) {
        if (slot == 4)
            continue; // the park
        House h;
        h.cx = 15 + 30 * (slot % 3) + r.uniform(-2, 2), h.cy = 15 + 30 * (slot / 3) + r.uniform(-2, 2);
        const double angle = r.uniform(0, 3.14159265358979);
        h.ux = std::cos(angle), h.uy = std::sin(angle);
        h.halfLength = r.uniform(4, 8), h.halfWidth = r.uniform(3, std::fmin(6.0, h.halfLength));
        h.roof = shapes[k++];
        h.eave = r.uniform(3, 8), h.rise = h.roof == Roof::Flat ? 0.0 : r.uniform(1.5, 3.5);
        h.baseZ = 1e9;
        for (int c = 0; c < 4; ++c) {
            const double s = (c & 1 ? 1 : -1) * h.halfLength, t = (c & 2 ? 1 : -1) * h.halfWidth;
            h.baseZ = std::fmin(h.baseZ, townTerrain(h.cx + s * h.ux - t * h.uy, h.cy + s * h.uy + t * h.ux));
        }
        town.houses.push_back(h);
    }
    // Five trees lean over houses 0, 1, 3, 5 and 6; nine stand free, four of them in the park.
    for (int i : {0, 1, 3, 5, 6}) {
        const House& h = town.houses[i];
        const double radius = r.uniform(3, 4), s = r.uniform(-h.halfLength, h.halfLength);
        // The stem stands beside a long wall, so the crown covers the roof's edge.
        const double t = (r.uniform() < 0.5 ? -1 : 1) * (h.halfWidth + radius * 0.6);
        town.trees.push_back({h.cx + s * h.ux - t * h.uy, h.cy + s * h.uy + t * h.ux, 0, r.uniform(2, 3),
                              h.eave + r.uniform(2, 4), radius});
        ++town.treesOverRoofs;
    }
    while (town.trees.size() < 14) {
        const bool park = town.trees.size() < 9;
        const double cx = park ? r.uniform(36, 54) : r.uniform(4, side - 4),
                     cy = park ? r.uniform(36, 54) : r.uniform(4, side - 4);
        bool clear = true;
        for (const House& h : town.houses)
            clear = clear && std::hypot(cx - h.cx, cy - h.cy) > std::hypot(h.halfLength, h.halfWidth) + 5;
        if (clear)
            town.trees.push_back({cx, cy, 0, r.uniform(2, 4), r.uniform(7, 12), r.uniform(2.5, 4)});
    }
    for (Tree& t : town.trees)
        t.groundZ = townTerrain(t.cx, t.cy);
    std::vector<Tree> shrubs;
    while (shrubs.size() < 10) {
        const double cx = r.uniform(3, side - 3), cy = r.uniform(3, side - 3);
        bool clear = true;
        for (const House& h : town.houses)
            clear = clear && std::hypot(cx - h.cx, cy - h.cy) > std::hypot(h.halfLength, h.halfWidth) + 2;
        if (clear)
            shrubs.push_back({cx, cy, townTerrain(cx, cy), 0.2, r.uniform(0.8, 1.8), r.uniform(0.8, 1.5)});
    }

    auto add = [&](double x, double y, double z, int lastReturn, bool isBuilding) {
        town.points.push_back(vxtest::point<double>(x, y, z, 1, lastReturn));
        town.building.push_back(isBuilding);
    };
    const int pulses = int(side * side * 5);
    for (int i = 0; i < pulses; ++i) {
        const double x = r.uniform(0, side), y = r.uniform(0, side);
        const House* roof = nullptr;
        for (const House& h : town.houses)
            if (h.contains(x, y))
                roof = &h;
        double surface = roof ? roof->roofZ(x, y) : townTerrain(x, y);
        // The highest crown over the pulse reflects it first, with a chance of stopping it there.
        double zTop = 0, zBottom = 0, bestTop = -1e9, bestBottom = 0;
        for (const Tree& t : town.trees)
            if (t.crown(x, y, zTop, zBottom) && zTop > bestTop && zTop > surface)
                bestTop = zTop, bestBottom = zBottom;
        for (const Tree& t : shrubs)
            if (t.crown(x, y, zTop, zBottom) && zTop > bestTop && zTop > surface)
                bestTop = zTop, bestBottom = zBottom;
        if (bestTop > -1e9 && r.uniform() < 0.7) {
            const double z = r.uniform(std::fmax(bestBottom, surface + 0.1), bestTop);
            const bool stopped = r.uniform() < 0.25;
            add(x, y, z, stopped ? 1 : 0, false);
            if (stopped)
                continue;
        }
        add(x, y, surface + r.uniform(-0.015, 0.015), 1, roof != nullptr);
    }
    for (const House& h : town.houses) {
        const double perimeter = 4 * (h.halfLength + h.halfWidth);
        for (int i = 0; i < int(perimeter * 1.5); ++i) {
            double u = r.uniform(0, perimeter), s, t;
            const double L = 2 * h.halfLength, W = 2 * h.halfWidth;
            if (u < L)
                s = u - h.halfLength, t = -h.halfWidth;
            else if ((u -= L) < W)
                s = h.halfLength, t = u - h.halfWidth;
            else if ((u -= W) < L)
                s = h.halfLength - u, t = h.halfWidth;
            else
                u -= L, s = -h.halfLength, t = h.halfWidth - u;
            const double x = h.cx + s * h.ux - t * h.uy, y = h.cy + s * h.uy + t * h.ux;
            add(x, y, r.uniform(townTerrain(x, y) + 0.3, h.baseZ + h.eave), 1, true);
        }
    }
    return town;
}

} // namespace bldtest
