// The synthetic demo scene: an airborne laser scan of rolling terrain with buildings, trees,
// shrubs, grass and a few low noise points, with the true class of every point.
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
};

/// Height limits (metres above the bare earth) between the vegetation tiers, the library's
/// defaults for VegetationLowLimit and VegetationHighLimit.
constexpr double kLowVegetationLimit = 0.4;
constexpr double kHighVegetationLimit = 2.0;
/// Grass returns lower than this above the bare earth are ground in the truth.
constexpr double kGrassGroundLimit = 0.15;

struct SceneOptions {
    uint64_t seed = 1;
    std::size_t targetPoints = 300000;
    double density = 10.0; ///< pulses per square metre on open ground, about
};

struct ScenePoint {
    double x, y, z; ///< metres, scene coordinates (add the scene's origin for the file's)
    double gpsTime; ///< adjusted standard GPS time, seconds
    uint16_t intensity;
    uint8_t returnNumber, numberOfReturns;
    uint8_t truth; ///< TruthClass
};

struct Scene {
    double side = 0;                                ///< the scene is the square [0, side)²
    double originX = 500000.0, originY = 5000000.0; ///< added to x and y in the LAS files
    double pulseSpacing = 0;                        ///< metres between pulses
    int buildings = 0, trees = 0, shrubs = 0, treesTouchingBuildings = 0;
    std::vector<ScenePoint> points;
};

/// The scene for a seed and a target size; the same options give the same points, bit for bit,
/// on every machine. The point count comes within about 2% of the target.
Scene generateScene(const SceneOptions& options);

/// One line per class: count and share of the truth.
std::string describeTruth(const Scene& scene);

/// Writes the scene twice as LAS 1.4 point format 6, scale 0.01: `inputPath` with every point of
/// class 1 (what a classifier gets) and `truthPath` with the true classes. An empty path skips
/// that file. Throws vexaro::LasError when a file cannot be written.
void writeSceneLas(const Scene& scene, const std::string& inputPath, const std::string& truthPath);

} // namespace vx::scene
