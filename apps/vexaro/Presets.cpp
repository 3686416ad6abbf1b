#include "Presets.h"

#include "ParameterTable.h"

#include <algorithm>
#include <sstream>

namespace vx::app {

/// Terrain slope (the 95th percentile, see terrainSteepness) above which "auto" takes the
/// mountain preset: a twentieth of the terrain rises more than 0.45 per run, near the 0.5 that
/// the general preset keeps. Towns and forests on rolling ground stay under 0.4, terraces and
/// valleys with 30-degree sides reach 0.5 and more.
constexpr double kSteepTerrain = 0.45;
/// Terrain slope below which "auto" takes the flat preset: 95 % of the terrain stays within the
/// 0.25 that preset keeps.
constexpr double kFlatTerrain = 0.25;
/// Returns per pulse from which "auto" takes the forest preset where the terrain is not steep:
/// every second pulse or more meets a canopy before the ground. Towns with trees give 1.0-1.4.
/// Under such a canopy few returns reach the ground, and the flat preset's low slope limit would
/// cut ground that lies a few cells from the next ground return.
constexpr double kClosedCanopy = 1.5;

/// Returns per pulse under which the data count as single-return: fewer than 1 % of the points
/// are non-last returns, where any canopy that a multi-return sensor sees gives several times more.
constexpr double kSingleReturns = 1.0 / 0.99;

/// Ground distance: noise widths above the lowest return that are still ground, and the
/// bounds, in metres. 0.15 m is above four noise widths of every sample file but the cliff
/// (0.012-0.040 m) and takes little grass; the cap keeps the distance under low plants and
/// kerbs on noisy data.
constexpr double kNoiseMultiple = 4.0;
constexpr double kLeastGroundDistance = 0.15;
constexpr double kMostGroundDistance = 0.5;

const std::vector<Preset>& presets()
{
    static const std::vector<Preset> table = {
        {"general", "any landscape that is not steep: towns, farmland, forest", 40.0, 0.5, 0.8, 0.5,
         "the general values: halls up to 80 m are cut from the terrain, and slopes up to about 27 degrees "
         "stay ground; hilltops and terraces that the wide window cuts join the terrain again where they "
         "rise from it by less than 0.5 m a cell, which no wall does"},
        {"flat", "plains, farmland, gentle towns", 40.0, 0.25, 0.8, 0.5,
         "gentle ground: a low slope limit also cuts cars, hedges and low sheds"},
        {"city", "dense towns with large halls and flat roofs", 60.0, 0.4, 0.8, 0.5,
         "the widest window cuts buildings up to 120 m across; slopes up to about 22 degrees stay ground"},
        {"forest", "closed canopy, few ground returns", 40.0, 0.6, 0.8, 0.5,
         "the canopy is cut wherever a few returns reach the ground; slopes up to about 31 degrees stay "
         "ground"},
        {"mountain", "steep slopes, ridges and terraces", 25.0, 1.0, 0.8, 1.2,
         "slopes up to 45 degrees stay ground; narrower windows keep ridges and summits that wider ones "
         "would cut, at the cost of buildings wider than 50 m; the climb rejoins steep faces of any "
         "height, by at most 1.2 m a cell: all it climbs between 1 m cells, diagonals included, while the "
         "wider cells of sparse data would let it step from the ground onto the shrubs and crowns of a "
         "forest on the slope"},
    };
    return table;
}

const Preset& presetFor(const DataScale& scale)
{
    if (scale.terrainSlope > kSteepTerrain)
        return presetNamed("mountain");
    if (scale.returnsPerPulse >= kClosedCanopy)
        return presetNamed("forest");
    return presetNamed(scale.terrainSlope < kFlatTerrain ? "flat" : "general");
}

const Preset& presetNamed(const std::string& name)
{
    // "auto" is a choice between presets, made from the data, not a preset of its own.
    for (const auto& p : presets())
        if (name == p.name)
            return p;
    std::string names;
    for (const auto& p : presets())
        names += std::string(names.empty() ? "" : ", ") + p.name;
    throw UsageError("unknown preset '" + name + "' (known: auto, " + names + ", none)");
}

namespace {

/// Keeps a spacing inside what the rules can use: beyond 10 m nothing is judged anyway.
double usable(double spacing, double fallback)
{
    if (!(spacing > 0))
        spacing = fallback;
    return std::clamp(spacing, 0.05, 10.0);
}

} // namespace

std::vector<DerivedParameter> deriveParameters(const Preset& preset, const DataScale& scale)
{
    const double all = usable(scale.spacing, 0.3);
    const double last = std::max(all, usable(scale.lastSpacing, all));
    const double h = scale.metresPerUnit > 0 ? scale.metresPerUnit : 1.0;
    const double v = scale.metresPerVerticalUnit > 0 ? scale.metresPerVerticalUnit : h;
    std::vector<DerivedParameter> out;
    auto length = [&](const char* name, double metres, const std::string& rule) {
        out.push_back({name, metres / h, rule});
    };
    auto height = [&](const char* name, double metres, const std::string& rule) {
        out.push_back({name, metres / v, rule});
    };

    length("TerrainCellSize", std::max(1.0, 1.5 * last), "max(1 m, 1.5 l): most cells hold a last return");
    length("TerrainWindow", preset.terrainWindow, "preset");
    out.push_back({"TerrainSlope", preset.terrainSlope * v / h, "preset (rise per run)"});
    out.push_back({"TerrainClimb", preset.terrainClimb * v / h, "preset (rise per run; 0: off)"});
    height("TerrainClimbMaxRise", preset.climbMaxRise, "preset (metres; 0: no limit)");
    height("TerrainObjectMaxRise", 15.0,
           "15 m: a roof rises from its eaves by a few metres and ends at a wall; a hill, headland or "
           "slope that the window cuts climbs on further");
    height("TerrainWallHeight", 2.5,
           "2.5 m: a roof ends in walls at least a storey high all round; terrain ends in rises, "
           "slopes and steps, so a hall wider than any window is still cut");
    length("TerrainBridgeWidth", 40.0,
           "40 m: wider than road and rail bridges; a strip that narrow whose edges fall at once by a wall's "
           "height more than the climb takes is a deck over a road or river, which the climb leaves cut");
    height("TerrainStepHeight", 0.3, "0.3 m: above the roughness of bare ground");
    const double groundDistance =
        std::clamp(kNoiseMultiple * scale.groundNoise, kLeastGroundDistance, kMostGroundDistance);
    height("TerrainGroundDistance", groundDistance,
           "4 x the ground noise, within 0.15-0.5 m: a ground return lies up to two noise widths below "
           "and above the mean, and the surface follows the lowest; grass, cars and hedges lie above");

    length("BumpRange", std::max(3.0, 3.0 * last),
           "3 x last-return spacing, at least 3 m: some 28 last returns, enough for a plane and its scatter");
    height("BumpHeight", 2.0 * groundDistance,
           "2 x the ground distance: a ground return lies within it of the surface, a bump beyond");
    length("RimRange", std::max(3.0, 3.0 * last), "BumpRange: the ground beside a point, enough for a plane");
    height("RimDistance", groundDistance,
           "the ground distance: a return of the ground beside a point lies that near its plane");
    height("RimHeight", 2.0 * groundDistance,
           "BumpHeight: a point lower than that above the surface is the surface's own");
    height("TerrainGradientFactor", 1.25,
           "1.25 m per unit of slope: the surface between cell centres is less sure where it is steep");

    length("NoiseRange", std::max(2.0, 4.0 * all),
           "4 x spacing, at least 2 m: a point with fewer than two others that near is isolated");
    height("NoiseHeightGap", 10.0, "10 m: no tree or building has an empty band that tall within it");
    height(
        "NoisePitDepth", 0.5,
        "0.5 m: the widest ground distance; ground fitted that closely by its neighbours' plane never lies "
        "so far below it, a return sunk by multipath does");
    out.push_back({"NoisePitGroup", 5.0,
                   "5, the far-off test's group: multipath returns come in small groups, each of which has "
                   "the others beside it"});
    height("RaisedPointsMaxHeight", 10.0,
           "10 m, the noise step's height gap: a lone return above its surroundings but lower than that "
           "over the ground is a return off a wall, a wire or a twig, which the later steps judge; the "
           "pipeline takes it for noise no more, while birds and haze fly higher");
    height("NearGroundDistance", 0.5,
           "0.5 m, the pit depth: noise no farther from the final ground is a ground return that the noise "
           "step set aside, such as one of the few under a dense canopy");
    // Fixed lengths, not scaled by the spacing: the rule is for faces steeper than the 60 degrees
    // that 5 m over two ranges make, and sparse data, whose ball then holds too few points, has no
    // face to read.
    length("SteepGroundRange", 1.5,
           "1.5 m: with the relief, faces steeper than about 60 degrees, which no terrain cell follows");
    height("SteepGroundGap", 0.5,
           "0.5 m, the widest ground distance: ground clearly above and clearly below");
    height("SteepGroundRelief", 5.0,
           "5 m: higher than garden and retaining walls, the faces of cliffs and banks");
    length("WaterCellSize", 4.0 * all,
           "4 x spacing: some 16 points in a cell of typical density, few enough to tell a sparse cell");
    length("WaterMinSize", 10.0,
           "10 m: a body of water of 100 m^2 at least, wider than a puddle, a dark roof or a patch of wet "
           "ground");
    height("WaterRelief", 1.0, "1 m: waves and the noise of sparse returns; a still surface is level");
    length("HeightAboveGroundCellSize", std::max(1.0, 1.5 * last), "1.5 x last-return spacing, at least 1 m");

    const double normal = std::max(1.5, 2.5 * all);
    length("NNSearchRange_NormalVectors", normal, "2.5 x spacing, at least 1.5 m: about 20 neighbours");
    length("BuildingRange", std::max(1.5, 2.5 * all), "2.5 x spacing, at least 1.5 m");
    length("Building2Range", std::max(1.5, 2.5 * all), "2.5 x spacing, at least 1.5 m");
    length("BuildingGroundRange", std::max(2.0, 3.0 * last), "3 x last-return spacing, at least 2 m");
    length("Building3GroundRange", std::max(1.0, 1.5 * last), "1.5 x last-return spacing, at least 1 m");
    length("VegetationRange", std::max(1.0, 2.0 * last), "2 x last-return spacing, at least 1 m");
    const double echoRange = std::max(1.5, 1.6 * all);
    length("EchoRange", echoRange, "1.6 x spacing, at least 1.5 m: a handful of roof points");
    height("EchoMinHeight", 2.0, "2 m above ground: the lowest sheds");
    height("EchoRoughness", std::max(0.5, 0.3 * echoRange),
           "0.3 x EchoRange, at least 0.5 m: a gable of 45 degrees straddled at its ridge lies "
           "0.27 x the radius (RMS) from one plane, crowns lie further; roof planes and their edges pass");
    // The building and vegetation steps' own tolerances: the library's values, which are metres,
    // in the file's unit.
    height("BuildingDfPBuilding", 0.2, "0.2 m from a seed's plane (the library's value, in the file's unit)");
    height("BuildingMinHeight", 1.8, "1.8 m above the ground (the library's value, in the file's unit)");
    height("Building2DistFPlane", 0.4, "0.4 m from the roof plane (the library's value, in the file's unit)");
    height("Building3DetailsHeight", 0.4, "0.4 m (the library's value, in the file's unit)");
    height("VegetationDfG", 0.3, "0.3 m (the library's value, in the file's unit)");
    height("VegetationLowLimit", 0.4, "0.4 m above ground");
    height("VegetationHighLimit", 2.0, "2 m above ground");
    // Single-return data (older sensors, files converted from text, image matching) mark no
    // point as a non-last return, so a canopy never reaches the vegetation step's share of them
    // and every tree would stay unclassified; its shape (chaotic neighbours) is then the only sign.
    // Likewise no roof stands out by its single echoes, and the plane test of the roofs by echoes
    // decides alone.
    if (scale.returnsPerPulse > 0 && scale.returnsPerPulse < kSingleReturns) {
        out.push_back(
            {"VegetationProcOfGhosts", 0.0,
             "0 for single-return data (under 1 % non-last returns): trees are told by their shape"});
        out.push_back(
            {"EchoSingleShare", 0.0, "0 for single-return data: roofs by echoes judges by the plane alone"});
    }
    return out;
}

std::string derivationRules()
{
    std::ostringstream s;
    s << "Presets (--preset; auto takes mountain where the terrain slope exceeds " << kSteepTerrain
      << ", forest where pulses give " << kClosedCanopy << " returns or more, flat where the slope is under "
      << kFlatTerrain << ", general elsewhere):\n";
    for (const auto& p : presets())
        s << "  " << p.name << ": " << p.description << "; TerrainWindow " << p.terrainWindow
          << " m, TerrainSlope " << p.terrainSlope << ", TerrainClimb " << p.terrainClimb
          << ", TerrainClimbMaxRise " << p.climbMaxRise << " m\n      " << p.reason << '\n';
    s << "\nParameters derived from the data (spacing of all returns s, of last returns l, in metres;\n"
         "converted to the file's unit; --set and --params win):\n";
    for (const auto& r : deriveParameters(presets().front(), DataScale{}))
        s << "  " << r.name << ": " << r.rule << '\n';
    return s.str();
}

} // namespace vx::app
