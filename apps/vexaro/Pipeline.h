// The recommended classification pipeline: every library call, its class numbers, the
// allowed-input-classes table of each stage and the grid sizes, in one place. docs/pipeline.md
// explains each choice.
#pragma once

#include <Vexaro.h>

#include <functional>
#include <string>
#include <vector>

namespace vx::app {

/// Class numbers of the pipeline. Final classes are ASPRS codes; 10, 11 and 12 are the shape
/// classes of the normal step, which live only inside the run.
namespace cls {
constexpr int kUnclassified = 1;
constexpr int kGround = 2;
constexpr int kLowVegetation = 3;
constexpr int kMediumVegetation = 4;
constexpr int kHighVegetation = 5;
constexpr int kBuilding = 6;
constexpr int kLowPoint = 7;
constexpr int kWater = 9;
constexpr int kBridgeDeck = 17;
constexpr int kPlanar = 10;  ///< the library's default NeighbourPlaneClass: roofs and ground
constexpr int kScatter = 11; ///< the library's fixed ChaosClass: what the vegetation step calls chaotic
constexpr int kLinear = 12;
constexpr int kGrowthMark = 250;    ///< written and removed by the growth steps
constexpr int kCandidateMark = 251; ///< building candidates between the two building steps
constexpr int kHighNoiseMark = 252; ///< high noise until the final classes give it its class
} // namespace cls

/// Settings of the pipeline itself (the library's parameters are set on the object).
struct PipelineOptions {
    /// Edge of the cubic cells of the normal step; 0 leaves it to the library, which then takes
    /// NNSearchRange_NormalVectors.
    double normalCellSize = 0;
    /// Edge of the square columns in which the height index judges "low" for the ground seeds.
    /// Larger than the largest building, so that every column holds some ground.
    double seedCellSize = 30;
    /// Edge of the square columns of the ground, building and vegetation steps; 0 leaves it to
    /// the library's rangeGridCellSize(), the farthest those steps look with their parameters
    /// (2.0 with the library's defaults: VegetationRange, BuildingGroundRange and twice
    /// Building3GroundRange).
    double gridCellSize = 0;
    /// Neighbours of this class vote for a roof plane with the plane test only.
    int buildingCompanionClass = cls::kLinear;
    /// Where the normal vectors are written (BASENAME.txt); empty: not written.
    std::string normalsBaseName;
    /// Where the classified cloud is written; empty: not written.
    std::string output;
    /// Noise first (classifyNoise), ground from the terrain surface (classifyTerrainGround)
    /// instead of seeds and growth, and vegetation tiers by the height above ground; false: the
    /// steps of the library alone.
    bool terrainGround = true;
    /// Class of the noise above its surroundings: 7 like the low noise, or 18 ("high noise").
    int highNoiseClass = cls::kLowPoint;
    /// Class of the bridge decks that the terrain step finds (17, "bridge deck"); 0 leaves them
    /// to the later steps.
    int bridgeDeckClass = cls::kBridgeDeck;
    /// Class of the ground on water (classifyWater: dark, sparse, single and level returns); 0
    /// leaves it ground.
    int waterClass = cls::kWater;
    /// Write each point's height above the final ground into output as the extra-bytes
    /// dimension HeightAboveGround (computed just before saving when the run has none).
    bool writeHeightAboveGround = false;
    /// Plan and height gaps (file units) that part a cloud into pieces classified on their own
    /// (see CloudParts.h); 0: the cloud is classified whole.
    double partPlanGap = 0, partHeightGap = 0;
    /// Replace the library's defaults listed by recommendedParameters() before the first step.
    bool recommendedParameters = true;
    /// The save step takes the classes (and heights) from v and clears v before it reads the
    /// input again to write it, so that the library's arrays and the file are never held at
    /// once; v holds no cloud afterwards and runPipeline's result keeps the classes. Without a
    /// normals file only: with one, the library writes the file from the cloud it holds.
    bool releaseBeforeSave = false;
};

/// A library parameter that the pipeline sets differently from the library's default, for
/// airborne scans of about 5 to 20 points per square metre in metres.
struct RecommendedParameter {
    const char* name; ///< the setter's name without "set_"
    double library;   ///< the library's default
    double value;     ///< what the pipeline uses
    const char* reason;
};
const std::vector<RecommendedParameter>& recommendedParameters();

/// Sets every recommended parameter that still holds the library's default on v. A value the
/// caller has already changed stays as it is, so settings made before the pipeline win (a
/// setting equal to the library's default cannot be told apart and is replaced).
template <class T> void applyRecommendedParameters(Vexaro<T>& v);

/// One finished step, for progress lines.
struct StepReport {
    int index = 0, steps = 0;
    std::string name;
    double seconds = 0;
    int points = 0;         ///< points held by the classifier
    std::string classLabel; ///< what the step produces ("ground", ...), or empty
    long classPoints = 0;   ///< points of those classes after the step
};
using ProgressFn = std::function<void(const StepReport&)>;

/// Loads `input` into v and classifies it: ground 2, low vegetation 3, medium 4, high 5,
/// building 6, low points 7, everything else 1; writes options.output when not empty and returns
/// the classes in file order. The caller sets layout, backend and parameters on v first. Throws
/// vexaro::LasError for an unreadable file and std::runtime_error when nothing could be loaded.
template <class T>
std::vector<int> runPipeline(Vexaro<T>& v, const std::string& input, const PipelineOptions& options,
                             const ProgressFn& progress);

/// What a cloud brings beside its points, one a point: the number of returns of the point's pulse
/// and the intensity of its return.
struct PulseValues {
    std::vector<int> returnCounts, intensities;
};

/// runPipeline on points given rather than a file (a part of one; see CloudParts.h), with their
/// pulse values; writes nothing, whatever options.output says.
template <class T>
void runPipelineOnPoints(Vexaro<T>& v, std::vector<VX_Point<T>>& points, const PulseValues& pulses,
                         const PipelineOptions& options, const ProgressFn& progress);

/// The column edge used for the later steps (options.gridCellSize or v's rangeGridCellSize()).
template <class T> double gridCellSizeFor(const PipelineOptions& options, const Vexaro<T>& v);

/// Classes of every point of v, in file order.
template <class T> std::vector<int> currentClasses(Vexaro<T>& v);

} // namespace vx::app
