// The step parameters of Vexaro, each declared once. Every entry of VEXARO_PARAMETERS gives:
//   Name    the parameter; Vexaro<T> has set_<Name> and get_<Name>
//   Field   the value set_<Name> writes: Name itself, except for GroundGrowthMaxCosinusPar2,
//           whose setter writes the plane-distance limit of the ground growth; the cosine
//           limit it is named after keeps its default
//   Kind    Length, Height (T: float or double, the precision), FloatLength (T, set as float),
//           Cosine, Ratio, Index (float in both precisions), Count, Class (int)
//   Default the library's default
//   Unit    "m" or "" (a pure number)
//   Min Max the values the steps can work with; a step refuses to run with a value outside
//           them, or with a value that is not finite
//   Group   heading under which the tool lists it
//   Steps   the processing steps that read it (bits of vexaro::ParameterStep)
//   Reach   for a search range of the ground, building and vegetation steps: how far they look,
//           per unit of the value (0: not a search range); the grid columns follow it
//   Help    one line
#pragma once

// X(Name, Field, Kind, Default, Unit, Min, Max, Group, Steps, Reach, Help)
#define VEXARO_PARAMETERS(X)                                                                                 \
    X(NNSearchRange_NormalVectors, NNSearchRange_NormalVectors, FloatLength, 1.5, "m", 0, 1000, "normals",   \
      Normals, 0, "search radius of the normal vectors")                                                     \
    X(Inner_NormalVectors, Inner_NormalVectors, Count, 1000, "", 0, 2147483647, "normals", Normals, 0,       \
      "a cell's points are sampled down to about this many")                                                 \
    X(MinimalNumberOfNN, MinimalNumberOfNN, Count, 3, "", 0, 2147483647, "normals", Normals, 0,              \
      "fewest neighbours for a normal")                                                                      \
    X(ResetOptionalRange, ResetOptionalRange, Length, 0, "m", 0, 1000, "reset", Reset, 1,                    \
      "class resets only near ResetOptionalClass points within this range; 0: off")                          \
    X(ResetOptionalClass, ResetOptionalClass, Class, 0, "", -2147483648.0, 2147483647, "reset", Reset, 0,    \
      "class that ResetOptionalRange looks for")                                                             \
    X(SeedSearchMaxHindeks, SeedSearchMaxHindeks, Index, 0.001, "", -1000, 1000, "ground", GroundSeeds, 0,   \
      "largest height index of a ground seed")                                                               \
    X(GroundGrowthIterations, GroundGrowthIterations, Count, 50, "", -2147483648.0, 2147483647, "ground",    \
      GroundGrowth, 0, "most ground growth iterations; 0 or less: none")                                     \
    X(GroundGrowthDistanceFromPlane, GroundGrowthDistanceFromPlane, Length, 0.05, "m", 0, 1000, "ground",    \
      GroundGrowth, 0, "largest distance from a ground point's plane")                                       \
    X(GroundGrowthMaxCosinusPar2, GroundGrowthDistanceFromPlane, Cosine, 0.11, "", -1, 1, "ground",          \
      GroundGrowth, 0, "sets GroundGrowthDistanceFromPlane, as the library wires it")                        \
    X(GroundGrowthMinCosinus, GroundGrowthMinCosinus, Cosine, 0.99, "", -1, 1, "ground", GroundGrowth, 0,    \
      "least cosine between neighbouring ground normals")                                                    \
    X(GroundGrowthRange, GroundGrowthRange, Length, 1.5, "m", 0, 1000, "ground", GroundGrowth, 1,            \
      "search radius of the ground growth")                                                                  \
    X(GroundGrowthRangeLowest, GroundGrowthRangeLowest, Length, 0.5, "m", -1000, 1000, "ground",             \
      GroundGrowth, 0, "plan radius of the above-plane test; 0 or less: off")                                \
    X(GroundGrowthMaxHeightDifference, GroundGrowthMaxHeightDifference, Height, 0.3, "m", -1000, 1000,       \
      "ground", GroundGrowth, 0, "largest rise above the ground neighbour")                                  \
    X(LowPointFilteringRange, LowPointFilteringRange, Height, 1.0, "m", -1000, 1000, "ground",               \
      LowPointCorrection, 0, "depth below the ground that confirms a low point")                             \
    X(BuildingRange, BuildingRange, Length, 1.5, "m", 0, 1000, "building", BuildingSeeds, 1,                 \
      "search radius of the building seeds")                                                                 \
    X(BuildingGroundRange, BuildingGroundRange, Length, 2.0, "m", 0, 1000, "building", BuildingSeeds, 1,     \
      "no ground point within this plan radius of a seed")                                                   \
    X(BuildingDfPBuilding, BuildingDfPBuilding, Length, 0.2, "m", 0, 1000, "building", BuildingSeeds, 0,     \
      "largest distance from the roof plane")                                                                \
    X(BuildingMinCosBuilding, BuildingMinCosBuilding, Cosine, 0.9, "", -1, 1, "building", BuildingSeeds, 0,  \
      "least cosine between roof normals")                                                                   \
    X(BuildingMinNoN, BuildingMinNoN, Count, 5, "", 0, 2147483647, "building", BuildingSeeds, 0,             \
      "fewest neighbours of a seed")                                                                         \
    X(BuildingProcOfBP, BuildingProcOfBP, Ratio, 0.5, "", -1000, 1000, "building", BuildingSeeds, 0,         \
      "least share of neighbours on the roof plane")                                                         \
    X(BuildingProcOfGhosts, BuildingProcOfGhosts, Ratio, 0.2, "", -1000, 1000, "building",                   \
      BuildingSeeds | BuildingGrowth, 0, "largest share of non-last returns")                                \
    X(BuildingMinHeight, BuildingMinHeight, Height, 1.8, "m", -1000, 1000, "building",                       \
      BuildingSeeds | BuildingGrowth, 0, "least height above the ground")                                    \
    X(Building2Iterations, Building2Iterations, Count, 10, "", -2147483648.0, 2147483647, "building",        \
      BuildingGrowth, 0, "building growth iterations; 0 or less: none")                                      \
    X(Building2Range, Building2Range, Length, 1.5, "m", 0, 1000, "building", BuildingGrowth, 1,              \
      "search radius of the building growth")                                                                \
    X(Building2DistFPlane, Building2DistFPlane, Length, 0.4, "m", 0, 1000, "building", BuildingGrowth, 0,    \
      "largest distance from the roof plane when growing")                                                   \
    X(Building3Iterations, Building3Iterations, Count, 3, "", -2147483648.0, 2147483647, "building", NoStep, \
      0, "stored, read by no step")                                                                          \
    X(Building3GroundRange, Building3GroundRange, Length, 1.0, "m", 0, 1000, "building", BuildingGrowth, 2,  \
      "plan radius of the ground test when closing")                                                         \
    X(Building3DetailsHeight, Building3DetailsHeight, Height, 0.4, "m", -1000, 1000, "building",             \
      BuildingGrowth, 0, "roof details up to this height join")                                              \
    X(VegetationIterations, VegetationIterations, Count, 10, "", -2147483648.0, 2147483647, "vegetation",    \
      Vegetation, 0, "iterations of the two spreading passes")                                               \
    X(VegetationRange, VegetationRange, Length, 2.0, "m", 0, 1000, "vegetation", Vegetation, 1,              \
      "search radius of the vegetation step")                                                                \
    X(VegetationDfG, VegetationDfG, Length, 0.3, "m", 0, 1000, "vegetation", Vegetation, 0,                  \
      "plane distance that makes a neighbour chaotic")                                                       \
    X(VegetationMaxCos, VegetationMaxCos, Cosine, 0.9, "", -1, 1, "vegetation", Vegetation, 0,               \
      "normal cosine below which a neighbour is chaotic")                                                    \
    X(VegetationProcOfChaos, VegetationProcOfChaos, Ratio, 0.5, "", -1000, 1000, "vegetation", Vegetation,   \
      0, "least share of chaotic neighbours")                                                                \
    X(VegetationProcOfGhosts, VegetationProcOfGhosts, Ratio, 0.5, "", -1000, 1000, "vegetation", Vegetation, \
      0, "share of non-last returns that marks vegetation")                                                  \
    X(VegetationProcOfOrder, VegetationProcOfOrder, Ratio, 0.5, "", -1000, 1000, "vegetation", Vegetation,   \
      0, "largest share of planar points")                                                                   \
    X(VegetationProcOfPlant, VegetationProcOfPlant, Ratio, 0.5, "", -1000, 1000, "vegetation", Vegetation,   \
      0, "least share of vegetation neighbours")                                                             \
    X(VegetationLowLimit, VegetationLowLimit, Height, 0.4, "m", -1000, 1000, "vegetation",                   \
      Vegetation | HeightAboveGround, 0, "low/medium vegetation limit above the ground")                     \
    X(VegetationHighLimit, VegetationHighLimit, Height, 2.0, "m", -1000, 1000, "vegetation",                 \
      Vegetation | HeightAboveGround, 0, "medium/high vegetation limit above the ground")                    \
    X(VegetationRatio, VegetationRatio, Ratio, 0.5, "", -1000, 1000, "vegetation", Vegetation, 0,            \
      "weight of the vegetation plane against the ground plane")                                             \
    X(TerrainCellSize, TerrainCellSize, Length, 1.0, "m", 0.001, 1000, "terrain", TerrainGround, 0,          \
      "cell edge of the terrain surface")                                                                    \
    X(TerrainWindow, TerrainWindow, Length, 40.0, "m", 0, 10000, "terrain", TerrainGround, 0,                \
      "half-width of the widest opening; objects up to twice as wide are cut")                               \
    X(TerrainSlope, TerrainSlope, Ratio, 0.3, "", 0, 100, "terrain", TerrainGround, 0,                       \
      "steepest terrain slope (rise per run) that the openings keep")                                        \
    X(TerrainClimb, TerrainClimb, Ratio, 0.0, "", 0, 100, "terrain", TerrainGround, 0,                       \
      "slope (rise per run) between neighbouring cells that joins an object to the terrain; 0: off")         \
    X(TerrainClimbMaxRise, TerrainClimbMaxRise, Height, 0.0, "m", 0, 1000, "terrain", TerrainGround, 0,      \
      "largest rise between neighbouring cells that the climb takes, however wide the cells; 0: no limit")   \
    X(TerrainObjectMaxRise, TerrainObjectMaxRise, Height, 0.0, "m", 0, 10000, "terrain", TerrainGround, 0,   \
      "objects whose surface climbs further than this (with TerrainClimb) are terrain; 0: off")              \
    X(TerrainWallHeight, TerrainWallHeight, Height, 0.0, "m", 0, 1000, "terrain", TerrainGround, 0,          \
      "a surface walled by drops this high is an object; a wide cut one walled nowhere is terrain; 0: off")  \
    X(TerrainBridgeWidth, TerrainBridgeWidth, Length, 0.0, "m", 0, 1000, "terrain", TerrainGround, 0,        \
      "widest raised strip (a bridge deck) that the climb leaves cut; needs TerrainWallHeight; 0: off")      \
    X(TerrainStepHeight, TerrainStepHeight, Height, 0.3, "m", 0, 1000, "terrain", TerrainGround, 0,          \
      "drop of one opening that marks an object, besides the slope's")                                       \
    X(TerrainGroundDistance, TerrainGroundDistance, Height, 0.5, "m", 0, 1000, "terrain", TerrainGround, 0,  \
      "largest distance of a ground point from the terrain surface")                                         \
    X(TerrainGradientFactor, TerrainGradientFactor, Height, 1.25, "m", 0, 1000, "terrain", TerrainGround, 0, \
      "extra distance per unit of the surface's slope (rise per run)")                                       \
    X(NoiseRange, NoiseRange, Length, 2.0, "m", 0.001, 1000, "noise", Noise, 1,                              \
      "search radius of the isolation test of the noise step")                                               \
    X(NoiseMinNeighbours, NoiseMinNeighbours, Count, 2, "", 0, 2147483647, "noise", Noise, 0,                \
      "fewer other points within NoiseRange make a point isolated noise; 0: off")                            \
    X(NoiseHeightGap, NoiseHeightGap, Height, 10.0, "m", 0.001, 100000, "noise", Noise, 0,                   \
      "empty height band that parts a far-off group from the rest of its columns")                           \
    X(NoiseGroupPoints, NoiseGroupPoints, Count, 5, "", 0, 1000, "noise", Noise, 0,                          \
      "largest far-off group that is noise; 0: off")                                                         \
    X(NoisePitDepth, NoisePitDepth, Height, 0.0, "m", 0, 1000, "noise", Noise, 0,                            \
      "a point this far below the plane fitted closely through its others within NoiseRange is low; 0: off") \
    X(NoisePitGroup, NoisePitGroup, Count, 1, "", 1, 1000, "noise", Noise, 0,                                \
      "most returns sunk together that the pit test takes, the point included")                              \
    X(HeightAboveGroundCellSize, HeightAboveGroundCellSize, Length, 1.0, "m", 0.01, 1000,                    \
      "height above ground", HeightAboveGround, 0, "cell edge of the ground surface raster")                 \
    X(NearGroundDistance, NearGroundDistance, Height, 0.5, "m", 0, 1000, "height above ground",              \
      HeightAboveGround, 0,                                                                                  \
      "largest height above or below the ground surface that classifyNearGround takes; "                     \
      "classifyRaisedPoints takes the points above it")                                                      \
    X(RaisedPointsMaxHeight, RaisedPointsMaxHeight, Height, 0.0, "m", 0, 100000, "height above ground",      \
      HeightAboveGround, 0, "highest point above the ground that classifyRaisedPoints takes; 0: no limit")   \
    X(SteepGroundRange, SteepGroundRange, Length, 1.5, "m", 0.001, 1000, "steep ground", SteepGround, 1,     \
      "plan radius of the ground sought above and below a point; radius of its surface test")                \
    X(SteepGroundGap, SteepGroundGap, Height, 0.5, "m", 0, 1000, "steep ground", SteepGround, 0,             \
      "ground lies more than this above and more than this below a point on a steep face")                   \
    X(SteepGroundRelief, SteepGroundRelief, Height, 5.0, "m", 0, 100000, "steep ground", SteepGround, 0,     \
      "least height span of the ground within SteepGroundRange around a point on a steep face")              \
    X(SteepGroundMinPoints, SteepGroundMinPoints, Count, 10, "", 3, 100000, "steep ground", SteepGround, 0,  \
      "fewest points within SteepGroundRange, the point included, that make a surface")                      \
    X(SteepGroundVariation, SteepGroundVariation, Ratio, 0.05, "", 0, 1, "steep ground", SteepGround, 0,     \
      "largest share of the smallest principal variance of a surface in the sum of the three")               \
    X(BumpRange, BumpRange, Length, 3.0, "m", 0.001, 1000, "ground bumps", Bumps, 0,                         \
      "plan radius of the ground whose plane a ground point is judged against")                              \
    X(BumpHeight, BumpHeight, Height, 0.3, "m", 0, 1000, "ground bumps", Bumps, 0,                           \
      "least height above the plane of the ground around that makes a bump")                                 \
    X(BumpScatterMultiple, BumpScatterMultiple, Ratio, 3.0, "", 0, 1000, "ground bumps", Bumps, 0,           \
      "least height above that plane in multiples of the ground's RMS scatter about it")                     \
    X(RimRange, RimRange, Length, 3.0, "m", 0.001, 1000, "ground rims", Rims, 0,                             \
      "plan radius of the ground whose plane a raised point is judged against")                              \
    X(RimDistance, RimDistance, Height, 0.15, "m", 0, 1000, "ground rims", Rims, 0,                          \
      "largest distance of a rim point from the plane of the ground beside it, depth below the point of "    \
      "the ground that plane is fitted to, and that ground's largest RMS distance from it")                  \
    X(RimHeight, RimHeight, Height, 0.3, "m", 0, 1000, "ground rims", Rims, 0,                               \
      "least height above ground of a point the rim search judges")                                          \
    X(EchoRange, EchoRange, Length, 1.5, "m", 0.001, 1000, "roofs by echoes", RoofEchoes, 1,                 \
      "plan radius of the neighbourhood that the echo test of a roof point reads")                           \
    X(EchoMinHeight, EchoMinHeight, Height, 2.0, "m", 0, 1000, "roofs by echoes", RoofEchoes, 0,             \
      "least height above ground of a roof point and of the neighbours it counts")                           \
    X(EchoMinPoints, EchoMinPoints, Count, 4, "", 3, 100000, "roofs by echoes", RoofEchoes, 0,               \
      "fewest raised points in the neighbourhood, the point itself included")                                \
    X(EchoSingleShare, EchoSingleShare, Ratio, 0.75, "", 0, 1, "roofs by echoes", RoofEchoes, 0,             \
      "least share of single-return pulses among the raised neighbours of a roof point; 0: echoes not read") \
    X(EchoRoughness, EchoRoughness, Height, 0.5, "m", 0, 1000, "roofs by echoes", RoofEchoes, 0,             \
      "largest RMS distance of the raised neighbours from their best-fitting plane")                         \
    X(EchoGrowthShare, EchoGrowthShare, Ratio, 0.5, "", 0, 1, "roofs by echoes", RoofEchoes, 0,              \
      "least share of building points among the raised neighbours of a point the roof growth takes")         \
    X(WaterCellSize, WaterCellSize, Length, 2.0, "m", 0.001, 1000, "water", Water, 0,                        \
      "edge of the square cells whose points the water search counts")                                       \
    X(WaterDarkRatio, WaterDarkRatio, Ratio, 0.5, "", 0, 1, "water", Water, 0,                               \
      "a water cell's ground returns average below this share of the median intensity of all ground")        \
    X(WaterSparseRatio, WaterSparseRatio, Ratio, 0.5, "", 0, 1, "water", Water, 0,                           \
      "a water body holds fewer points a cell than this share of the points of a typical cell")              \
    X(WaterSingleShare, WaterSingleShare, Ratio, 0.9, "", 0, 1, "water", Water, 0,                           \
      "least share of single-return pulses among a water cell's ground points")                              \
    X(WaterMinSize, WaterMinSize, Length, 10.0, "m", 0, 100000, "water", Water, 0,                           \
      "least area of a water body, as the side of a square of that area")                                    \
    X(WaterRelief, WaterRelief, Height, 1.0, "m", 0, 1000, "water", Water, 0,                                \
      "largest height span of a water body (5th to 95th percentile of its cells' lowest ground)")

// The C++ type of each kind: VEXARO_PARAMETER_TYPE_<Kind> is what the engine stores and get_
// returns, VEXARO_PARAMETER_ARG_<Kind> what set_ takes. T is the precision of Vexaro<T>.
#define VEXARO_PARAMETER_TYPE_Length T
#define VEXARO_PARAMETER_TYPE_Height T
#define VEXARO_PARAMETER_TYPE_FloatLength T
#define VEXARO_PARAMETER_TYPE_Cosine float
#define VEXARO_PARAMETER_TYPE_Ratio float
#define VEXARO_PARAMETER_TYPE_Index float
#define VEXARO_PARAMETER_TYPE_Count int32_t
#define VEXARO_PARAMETER_TYPE_Class int32_t
#define VEXARO_PARAMETER_ARG_Length T
#define VEXARO_PARAMETER_ARG_Height T
#define VEXARO_PARAMETER_ARG_FloatLength float
#define VEXARO_PARAMETER_ARG_Cosine float
#define VEXARO_PARAMETER_ARG_Ratio float
#define VEXARO_PARAMETER_ARG_Index float
#define VEXARO_PARAMETER_ARG_Count int
#define VEXARO_PARAMETER_ARG_Class int

#include <cstdint>

namespace vexaro {

/// The processing steps, as bits of a parameter's Steps column.
enum ParameterStep : unsigned {
    NoStep = 0,
    Normals = 1u << 0,            ///< calculateNormalVectors
    Reset = 1u << 1,              ///< resetPointCloudClasses
    GroundSeeds = 1u << 2,        ///< findGroundSeed
    GroundGrowth = 1u << 3,       ///< performIterativeGroundGrowth
    LowPointCorrection = 1u << 4, ///< performLowPointCorrection
    BuildingSeeds = 1u << 5,      ///< findBuildingSeed
    BuildingGrowth = 1u << 6,     ///< performIterativeBuildingGrowth
    Vegetation = 1u << 7,         ///< performVegetationClassification
    TerrainGround = 1u << 8,      ///< classifyTerrainGround
    Noise = 1u << 9,              ///< classifyNoise
    HeightAboveGround = 1u << 10, ///< computeHeightAboveGround, classifyByHeightAboveGround,
                                  ///< classifyNearGround, classifyRaisedPoints
    RoofEchoes = 1u << 11,        ///< classifyRoofsByEchoes, growRoofsByEchoes
    SteepGround = 1u << 12,       ///< classifySteepGround
    Bumps = 1u << 13,             ///< classifyGroundBumps
    Water = 1u << 14,             ///< classifyWater
    Rims = 1u << 15,              ///< classifyGroundRims
};

enum class ParameterKind { Length, Height, FloatLength, Cosine, Ratio, Index, Count, Class };

/// One entry of VEXARO_PARAMETERS as data.
struct ParameterInfo {
    const char* name;
    const char* field;
    ParameterKind kind;
    double defaultValue;
    const char* unit;
    double min, max;
    const char* group;
    unsigned steps;
    double reach;
    const char* help;
};

#define VEXARO_PARAMETER_INFO(Name, Field, Kind, Default, Unit, Min, Max, Group, Steps, Reach, Help)         \
    ParameterInfo{#Name, #Field, ParameterKind::Kind, Default, Unit, Min, Max, Group, Steps, Reach, Help},
/// Every parameter, in declaration order.
inline constexpr ParameterInfo parameterInfos[] = {VEXARO_PARAMETERS(VEXARO_PARAMETER_INFO)};
#undef VEXARO_PARAMETER_INFO
inline constexpr int parameterCount = static_cast<int>(sizeof(parameterInfos) / sizeof(parameterInfos[0]));

/// True for the kinds held as int.
constexpr bool isWholeNumber(ParameterKind k)
{
    return k == ParameterKind::Count || k == ParameterKind::Class;
}

} // namespace vexaro
