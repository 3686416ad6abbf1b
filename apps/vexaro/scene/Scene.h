// The synthetic scenes: an airborne laser scan of a landscape (a town on rolling terrain, a large
// hall, a terraced hillside or a forest) with the true class of every point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vx::scene {

/// True classes, ASPRS codes.
enum TruthClass : uint8_t {
    kGround = 2,
    kLowVegetation = 3,
    kMediumVegetation = 4,
    kHighVegetation = 5,
    kBuilding = 6,
    kLowNoise = 7,
    kWater = 9,
    kBridgeDeck = 17,
    kHighNoise = 18,
};

/// Height limits (metres above the bare earth) between the vegetation tiers, the library's
/// defaults for VegetationLowLimit and VegetationHighLimit.
constexpr double kLowVegetationLimit = 0.4;
constexpr double kHighVegetationLimit = 2.0;
/// Grass returns lower than this above the bare earth are ground in the truth.
constexpr double kGrassGroundLimit = 0.15;

/// The landscapes the generator draws.
enum class SceneKind {
    Town,           ///< rolling terrain with a ridge and a ditch; houses, blocks, trees, shrubs, grass
    Hall,           ///< gentle ground with one 80 m x 60 m flat-roofed hall, a few houses and trees
    Terraces,       ///< a hillside of 30-degree slopes and flat terraces with 1-2 m steps between them
    Forest,         ///< closed canopy over an understorey: the ground is seen through gaps only
    MountainForest, ///< the forest on a 22-31 degree mountainside cut by a gully
    Bridges,        ///< the town cut by a channel 5-8 m deep (a road, or water giving no returns)
                    ///< that one or two road bridges cross
    River,          ///< the bridges' town whose channel always holds a river that returns a weak
                    ///< echo for about a quarter of the pulses
};

/// The length unit of a scene's coordinates, horizontal and vertical alike.
enum class SceneUnits {
    Metres,
    Feet,         ///< the international foot, 0.3048 m
    UsSurveyFeet, ///< the US survey foot, 1200/3937 m
};

/// Metres in one unit.
double unitLength(SceneUnits units);
/// "town", "hall", "terraces", "forest", "mountain-forest", "bridges", "river"; "metres", "feet",
/// "us-feet".
const char* sceneKindName(SceneKind kind);
const char* sceneUnitsName(SceneUnits units);
/// The kind or units named so (sceneKindName, and "flat" for the town); false for other names.
bool parseSceneKind(const std::string& name, SceneKind& kind);
bool parseSceneUnits(const std::string& name, SceneUnits& units);

struct SceneOptions {
    uint64_t seed = 1;
    std::size_t targetPoints = 300000;
    double density = 10.0; ///< pulses per square metre on open ground, about (0.2 to 30 and beyond)
    SceneKind kind = SceneKind::Town;
    /// The same landscape (same points for the same seed) in feet: every coordinate divided by
    /// the foot's length, and a coordinate system in feet in the LAS files.
    SceneUnits units = SceneUnits::Metres;
    /// Adds a few isolated returns 200 to 1500 m above the ground (single ones and one tight
    /// cluster; truth kHighNoise) and a few 5 to 50 m below it (truth kLowNoise).
    bool strayReturns = false;
};

struct ScenePoint {
    double x, y, z; ///< scene coordinates in the scene's units (add the origin for the file's)
    double gpsTime; ///< adjusted standard GPS time, seconds
    uint16_t intensity;
    uint8_t returnNumber, numberOfReturns;
    uint8_t truth; ///< TruthClass
};

/// Every length of a scene is in its units: metres, or feet for a scene drawn in feet.
struct Scene {
    SceneKind kind = SceneKind::Town;
    SceneUnits units = SceneUnits::Metres;
    double side = 0;                                ///< the scene is the square [0, side)²
    double originX = 500000.0, originY = 5000000.0; ///< added to x and y in the LAS files
    double pulseSpacing = 0;                        ///< distance between pulses
    int buildings = 0, bridges = 0, trees = 0, shrubs = 0, treesTouchingBuildings = 0;
    std::vector<ScenePoint> points;
};

/// The least side of a hall scene, metres.
constexpr double kHallSceneSide = 150.0;

/// The scene for a seed and a target size; the same options give the same points, bit for bit,
/// on every machine. The point count comes within about 3% of the target, with two exceptions:
/// a scene has at least 100 pulses, and a hall scene is at least kHallSceneSide wide so that
/// the hall fits, whatever the target.
Scene generateScene(const SceneOptions& options);

/// One line per class: count and share of the truth.
std::string describeTruth(const Scene& scene);

/// The scene's coordinate system as OGC WKT (version 1): UTM zone 33N on WGS 84 in metres, or
/// the same projection in the scene's feet with heights in feet (a compound system).
std::string sceneWkt(SceneUnits units);

/// Writes the scene twice as LAS 1.4 point format 6, scale 0.01 of the scene's unit, with the
/// coordinate system as an OGC WKT VLR: `inputPath` with every point of class 1 (what a
/// classifier gets) and `truthPath` with the true classes. An empty path skips that file.
/// Throws vexaro::LasError when a file cannot be written.
void writeSceneLas(const Scene& scene, const std::string& inputPath, const std::string& truthPath);

} // namespace vx::scene
