// Where the buildings, trees, shrubs and grass of a generated scene stand, with a bucket index for
// the pulse simulation.
#pragma once

#include "scene/Objects.h"
#include "scene/Random.h"
#include "scene/Terrain.h"

#include <cmath>
#include <limits>
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
    /// The bridges' channel holds still water, which gives no returns (a road otherwise).
    bool waterInChannel = false;
    /// The river's level surface (the river kind; NaN for none): the channel's ground below it
    /// is under water, which returns a weak single echo for kWaterEchoShare of the pulses, as a
    /// real surface does that reflects most of the beam away and absorbs much of the rest.
    double waterLevel = std::numeric_limits<double>::quiet_NaN();
    /// Whether (x, y), with bare earth at height `ground`, lies under the river.
    bool underWater(double x, double y, double ground) const
    {
        return ground < waterLevel && std::fabs(terrain.channel().distance(x, y)) < terrain.channelHalfTop();
    }

    /// Draws the landscape of the kind on a square of the given side (metres) from rng.
    Layout(Random& rng, double side, SceneKind kind = SceneKind::Town);

private:
    void drawTown(Random& rng);
    void drawHall(Random& rng);
    void drawTerraces(Random& rng);
    void drawForest(Random& rng);
    /// Clears the channel of buildings and plants, then lays one or two bridges across it.
    void drawBridges(Random& rng);
    /// Houses drawn by drawHouse, apart from the buildings already placed and, when `flatWithin`
    /// is positive, only where the ground under the footprint varies by less than that.
    void placeHouses(Random& rng, int count, double flatWithin);
    /// Single trees of every size, shrubs and meadows, off the buildings.
    void scatterPlants(Random& rng, double areaPerTree, double areaPerShrub, double areaPerMeadow);
    void buildIndexes();
};

// Drawing helpers shared by the kinds of layout.

/// area / perObject rounded, at least `least`.
int countFor(double area, double perObject, int least);
/// A building of the given size (halved sides capped at maxHalf), direction, roof and eave
/// height drawn from rng.
Building shapeBuilding(Random& rng, double length, double width, double eaveLow, double eaveHigh,
                       double maxHalf);
/// An ordinary house: 7 to 11 m by 6 to 9 m, eaves 3 to 7 m high.
Building drawHouse(Random& rng);
Crown drawTree(Random& rng, double x, double y, double lowest, double highest);
Crown drawShrub(Random& rng, double x, double y);
/// True when a crown of radius r at (x, y) would reach into a building's footprint.
bool hitsBuilding(const std::vector<Building>& buildings, double x, double y, double r);
/// The lowest terrain height under the footprint's corners and centre.
double lowestUnder(const Terrain& terrain, const Building& b);

} // namespace vx::scene
