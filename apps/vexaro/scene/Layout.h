// Where the buildings, trees, shrubs and grass of the demo scene stand, with a bucket index for
// the pulse simulation.
#pragma once

#include "scene/Objects.h"
#include "scene/Random.h"
#include "scene/Terrain.h"

#include <vector>

namespace vx::scene {

/// Square buckets listing the objects that reach into them.
class BucketIndex {
public:
    void reset(double side, double bucket);
    void add(int id, double cx, double cy, double radius);
    const std::vector<int>& at(double x, double y) const;

private:
    double bucket_ = 10.0;
    int cells_ = 1;
    std::vector<std::vector<int>> lists_;
};

struct Layout {
    double side = 0;
    Terrain terrain;
    std::vector<Building> buildings;
    std::vector<Crown> crowns; ///< trees and shrubs
    std::vector<GrassPatch> grass;
    BucketIndex buildingIndex, crownIndex, grassIndex;
    int treesTouchingBuildings = 0;

    Layout(Random& rng, double side);
};

} // namespace vx::scene
