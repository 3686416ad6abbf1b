#include "Pipeline.h"

#include <las/LasFile.h>

#include <algorithm>
#include <chrono>
#include <initializer_list>
#include <stdexcept>
#include <vector>

namespace vx::app {

namespace {

/// Allowed-input-classes table admitting exactly the listed classes. 256 entries cover every
/// LAS class and the library's temporary marks 250 and 251.
std::vector<int> admit(std::initializer_list<int> classes)
{
    std::vector<int> table(256, 0);
    for (int c : classes)
        table[static_cast<std::size_t>(c)] = 1;
    return table;
}

template <class T> void setAllowed(Vexaro<T>& v, std::vector<int> table)
{
    v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
}

/// Runs the steps one after another and reports each with the count of what it produced.
template <class T> class StepRunner {
public:
    StepRunner(Vexaro<T>& v, int steps, const ProgressFn& progress)
        : v_(v), steps_(steps), progress_(progress)
    {
    }

    template <class F>
    void run(const std::string& name, const std::string& label, std::initializer_list<int> produced, F&& work)
    {
        const auto start = std::chrono::steady_clock::now();
        const int before = v_.pointCount();
        work();
        StepReport r;
        r.index = ++done_;
        r.steps = steps_;
        r.name = name;
        r.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        // A step that releases the cloud (the save) reports the points it had.
        r.points = v_.pointCount() > 0 ? v_.pointCount() : before;
        r.classLabel = label;
        if (produced.size() > 0) {
            for (int c : currentClasses(v_))
                if (std::find(produced.begin(), produced.end(), c) != produced.end())
                    ++r.classPoints;
        }
        if (progress_)
            progress_(r);
    }

private:
    Vexaro<T>& v_;
    int steps_, done_ = 0;
    const ProgressFn& progress_;
};

} // namespace

template <class T> std::vector<int> currentClasses(Vexaro<T>& v)
{
    const int n = v.pointCount();
    std::vector<short> buffer(static_cast<std::size_t>(n));
    if (n > 0)
        v.saveClassesToBuffer(buffer.data(), n);
    return std::vector<int>(buffer.begin(), buffer.end());
}

template <class T> double gridCellSizeFor(const PipelineOptions& options, const Vexaro<T>& v)
{
    return options.gridCellSize > 0 ? options.gridCellSize : v.rangeGridCellSize();
}

const std::vector<RecommendedParameter>& recommendedParameters()
{
    static const std::vector<RecommendedParameter> table = {
        {"GroundGrowthRangeLowest", 0.5, 0.0,
         "with a few centimetres of noise almost every ground point lies a little above the tangent "
         "plane of some ground point within 0.5 m; the above-plane test then leaves 13-20 % of the "
         "bare earth unfound, most of it later taken for low vegetation"},
        {"GroundGrowthDistanceFromPlane", 0.05, 0.1,
         "0.05 m is about two and a half times the noise of a good scan; 0.1 m grows the remaining "
         "rough ground without taking objects (the height difference limit still applies)"},
        {"VegetationRange", 2.0, 1.0,
         "the height above ground of a plant point is its least height difference to a ground point "
         "within this plan radius; 2 m reaches ground beside a shrub at the shrub's own level and "
         "puts medium shrubs in the low tier"},
    };
    return table;
}

namespace {

/// Replaces `current` with `value` when it still holds the library's default.
template <class V, class Set> void recommend(V current, double library, double value, Set set)
{
    if (current == static_cast<V>(library))
        set(static_cast<V>(value));
}

double libraryDefault(const char* name)
{
    for (const auto& p : vexaro::parameterInfos)
        if (std::string(p.name) == name)
            return p.defaultValue;
    throw std::logic_error(std::string("no library parameter ") + name);
}

double recommendedValue(const char* name)
{
    for (const auto& r : recommendedParameters())
        if (std::string(r.name) == name)
            return r.value;
    throw std::logic_error(std::string("no recommended value for ") + name);
}

} // namespace

template <class T> void applyRecommendedParameters(Vexaro<T>& v)
{
    recommend(v.get_GroundGrowthRangeLowest(), libraryDefault("GroundGrowthRangeLowest"),
              recommendedValue("GroundGrowthRangeLowest"), [&](T x) { v.set_GroundGrowthRangeLowest(x); });
    recommend(v.get_GroundGrowthDistanceFromPlane(), libraryDefault("GroundGrowthDistanceFromPlane"),
              recommendedValue("GroundGrowthDistanceFromPlane"),
              [&](T x) { v.set_GroundGrowthDistanceFromPlane(x); });
    recommend(v.get_VegetationRange(), libraryDefault("VegetationRange"), recommendedValue("VegetationRange"),
              [&](T x) { v.set_VegetationRange(x); });
}

namespace {

/// The steps between loading and saving, on the cloud v holds.
template <class T> void classifySteps(Vexaro<T>& v, const PipelineOptions& options, StepRunner<T>& step)
{
    using namespace cls;
    // Start from nothing: whatever classes the file carried are replaced. The reset visits the
    // points through a grid, any grid; one of few large columns is the cheapest.
    step.run("reset classes", "unclassified", {kUnclassified}, [&] {
        setAllowed(v, std::vector<int>(256, 1));
        v.regularGridDecomposition2D(1000.0, 1000.0);
        v.resetPointCloudClasses(kUnclassified);
    });

    // Stray returns first, so that they never become ground, roofs or trees. The step looks
    // through columns as wide as its search. High noise carries a mark of its own until the
    // final classes, so that the steps between tell it from low points whatever class it gets.
    if (options.terrainGround) {
        step.run("noise", "noise", {kLowPoint, kHighNoiseMark}, [&] {
            const double range = v.get_NoiseRange();
            v.regularGridDecomposition2D(range, range);
            setAllowed(v, admit({kUnclassified}));
            v.classifyNoise(kLowPoint, kHighNoiseMark);
        });
    }

    step.run("normal vectors", "planar", {kPlanar}, [&] {
        setAllowed(v, admit({kUnclassified}));
        // Without a size of its own the library takes the search range as the cube edge.
        if (options.normalCellSize > 0)
            v.set_NormalVectorDecompositionSize(options.normalCellSize);
        v.calculateNormalVectors(kPlanar, kScatter, kLinear);
        if (!options.normalsBaseName.empty())
            v.saveNormalVectors(options.normalsBaseName);
    });

    // Points whose neighbourhood was too thin for a normal are low-point candidates; they stay
    // out of the ground steps until the low-point correction has judged them. The seed columns
    // are wider than any building, so their lowest points lie on the ground.
    const auto groundCandidates = admit({kUnclassified, kPlanar, kScatter, kLinear});
    if (options.terrainGround) {
        step.run("terrain ground", "ground", {kGround}, [&] {
            setAllowed(v, groundCandidates);
            v.classifyTerrainGround(kGround, options.bridgeDeckClass > 0 ? options.bridgeDeckClass : -1);
            // Noise lying on the terrain is ground: the few ground returns under a dense canopy
            // read as a far-off group below it, while a stray or sunk return lies well off the
            // surface.
            v.computeHeightAboveGround(kGround);
            setAllowed(v, admit({kLowPoint, kHighNoiseMark}));
            v.classifyNearGround(kGround);
            // A low point stands below its surroundings; one that the ground shows standing
            // above it is a lone return within a crown or beside a wall, read against what
            // rises over it, and the later steps judge it with the others.
            const double raisedCeiling = v.get_RaisedPointsMaxHeight();
            v.set_RaisedPointsMaxHeight(0);
            setAllowed(v, admit({kLowPoint}));
            v.classifyRaisedPoints(kUnclassified);
            // A lone return above its surroundings but lower than a tree or a house is a return
            // off a wall, a wire or a twig; birds and haze fly higher.
            v.set_RaisedPointsMaxHeight(raisedCeiling);
            if (raisedCeiling > 0) {
                setAllowed(v, admit({kHighNoiseMark}));
                v.classifyRaisedPoints(kUnclassified);
            }
            // Cars, low walls and shrubs that the surface's allowance took in stand out of the
            // plane of the ground around them; the later steps judge them with the rest. The
            // step looks through columns as wide as its search.
            const double bumpRange = v.get_BumpRange();
            v.regularGridDecomposition2D(bumpRange, bumpRange);
            setAllowed(v, admit({kGround}));
            v.classifyGroundBumps(kGround, kUnclassified);
            if (options.gridCellSize > 0)
                v.regularGridDecomposition2D(options.gridCellSize, options.gridCellSize);
            else
                v.regularGridDecomposition2DFromRanges();
            // Cliffs and steep banks: their faces rise too steeply for the terrain's cells, whose
            // surface follows the lowest point of each.
            setAllowed(v, groundCandidates);
            v.classifySteepGround(kGround);
        });
    } else {
        step.run("low points", "low points", {kLowPoint}, [&] {
            v.regularGridDecomposition2D(options.seedCellSize, options.seedCellSize);
            setAllowed(v, admit({kUnclassified}));
            v.gatherLowPoints(kLowPoint, kGround);
        });
        step.run("ground seeds", "ground", {kGround}, [&] {
            setAllowed(v, groundCandidates);
            v.calculateHeightIndex(kGround); // the argument has no effect on the result
            v.findGroundSeed(kGround);
        });

        // Everything after the seeds works in one grid of columns as wide as the farthest search.
        step.run("ground growth", "ground", {kGround}, [&] {
            if (options.gridCellSize > 0)
                v.regularGridDecomposition2D(options.gridCellSize, options.gridCellSize);
            else
                v.regularGridDecomposition2DFromRanges();
            setAllowed(v, groundCandidates);
            v.performIterativeGroundGrowth(kGround);
        });
        step.run("low-point correction", "low points", {kLowPoint},
                 [&] { v.performLowPointCorrection(kGround, kLowPoint, kUnclassified); });
    }

    // Building points themselves stay out: an admitted building point would be marked again in
    // every growth pass and, marked, stop counting as building for the points after it.
    const int companion = options.buildingCompanionClass;
    step.run("building seeds", "building", {kBuilding}, [&] {
        setAllowed(v, admit({kUnclassified, kPlanar, kScatter, kLinear, kCandidateMark}));
        v.findBuildingSeed(kBuilding, kGround, kPlanar, companion);
    });
    step.run("building growth", "building", {kBuilding},
             [&] { v.performIterativeBuildingGrowth(kBuilding, kGround, kPlanar, companion); });

    step.run("vegetation", "vegetation", {kLowVegetation, kMediumVegetation, kHighVegetation}, [&] {
        setAllowed(v, admit({kUnclassified, kPlanar, kScatter, kLinear}));
        v.performVegetationClassification(kLowVegetation, kMediumVegetation, kHighVegetation, kGround, 0);
    });

    // Raised points on surfaces that return one echo a pulse are roofs, whatever the steps before
    // made of them: sparse data gives the building steps too few points a roof, and canopy
    // returns several echoes. The heights are those of the final ground: no step after the
    // ground steps admits ground points.
    if (options.terrainGround) {
        step.run("roofs by echoes", "building", {kBuilding}, [&] {
            v.computeHeightAboveGround(kGround);
            setAllowed(v, admit({kUnclassified, kPlanar, kScatter, kLinear, kLowVegetation, kMediumVegetation,
                                 kHighVegetation}));
            v.classifyRoofsByEchoes(kBuilding);
            // Ridges, edges and eaves that fit no single plane join the roofs around them; points
            // the vegetation step took stay out, crowns beside a roof among them.
            setAllowed(v, admit({kUnclassified, kPlanar, kScatter, kLinear}));
            v.growRoofsByEchoes(kBuilding);
        });
    }

    // The tiers follow the height above the final ground, interpolated under every point, rather
    // than the nearest ground point within reach.
    if (options.terrainGround) {
        step.run("height above ground", "vegetation", {kLowVegetation, kMediumVegetation, kHighVegetation},
                 [&] {
                     // Crowns the vegetation step left, where few returns reach the ground,
                     // join the canopy around them.
                     setAllowed(v, admit({kUnclassified, kPlanar, kScatter, kLinear}));
                     v.growVegetationByEchoes(kLowVegetation, kMediumVegetation, kHighVegetation);
                     setAllowed(v, admit({kLowVegetation, kMediumVegetation, kHighVegetation}));
                     v.classifyByHeightAboveGround(kLowVegetation, kMediumVegetation, kHighVegetation);
                 });
    }

    // Shape classes that no step claimed are plain unclassified points in the output; high noise
    // takes its class. Water is judged on the final ground, whose returns it is, once no later
    // step needs that ground under the points beside it.
    step.run("final classes", "unclassified", {kUnclassified}, [&] {
        if (options.terrainGround) {
            // The upper edge of a terrace or a bank continues the ground beside it at its own
            // height, where the surface of cells, following the lowest point of each, runs below
            // it. Buildings stay out: a roof may meet a hillside at its own height.
            const double rimRange = v.get_RimRange();
            v.regularGridDecomposition2D(rimRange, rimRange);
            setAllowed(v,
                       admit({kUnclassified, kPlanar, kScatter, kLinear, kLowVegetation, kMediumVegetation}));
            v.classifyGroundRims(kGround);
        }
        if (options.terrainGround && options.waterClass > 0)
            v.classifyWater(kGround, options.waterClass);
        setAllowed(v, admit({kPlanar, kScatter, kLinear, kGrowthMark, kCandidateMark}));
        v.resetPointCloudClasses(kUnclassified);
        setAllowed(v, admit({kHighNoiseMark}));
        v.resetPointCloudClasses(options.highNoiseClass);
    });
}

} // namespace

namespace {

/// The points of `file` as loadLASFile gives them to the engine (coordinates centred on the
/// header's bounding box, classes and last-return flags of the records, no normals), and their
/// pulse values. The same centring gives the same classes.
template <class T>
void pointsOfFile(const vx::las::LasFile& file, std::vector<VX_Point<T>>& points, PulseValues& pulses)
{
    const auto& h = file.header();
    const std::size_t n = std::min<std::size_t>(h.pointCount, file.size());
    double offset[3];
    for (int a = 0; a < 3; ++a)
        offset[a] = (h.maxBound[a] - h.minBound[a]) * 0.5;
    points.assign(n, VX_Point<T>{});
    pulses.returnCounts.resize(n);
    pulses.intensities.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        auto& p = points[i];
        p.x = static_cast<T>((file.x(i) - h.minBound[0]) - offset[0]);
        p.y = static_cast<T>((file.y(i) - h.minBound[1]) - offset[1]);
        p.z = static_cast<T>((file.z(i) - h.minBound[2]) - offset[2]);
        p.classification = file.classification(i);
        p.lastReturn = file.returnNumber(i) == file.numberOfReturns(i) ? 1 : 0;
        pulses.returnCounts[i] = file.numberOfReturns(i);
        pulses.intensities[i] = file.intensity(i);
    }
}

/// Loads the points and their pulse values into v.
template <class T>
void loadPointsWithPulses(Vexaro<T>& v, std::vector<VX_Point<T>>& points, const PulseValues& pulses)
{
    const int n = static_cast<int>(points.size());
    v.loadDirectData(points.data(), n);
    if (n > 0 && v.pointCount() == n) {
        v.loadReturnCountsFromBuffer(pulses.returnCounts.data(),
                                     static_cast<int>(pulses.returnCounts.size()));
        v.loadIntensitiesFromBuffer(pulses.intensities.data(), static_cast<int>(pulses.intensities.size()));
    }
}

/// Loads the points of `input` into v. The file's bytes are released before the engine takes its
/// copy of the points, and nothing of the file stays held while the steps run.
template <class T> void loadPoints(Vexaro<T>& v, const std::string& input)
{
    std::vector<VX_Point<T>> points;
    PulseValues pulses;
    pointsOfFile(vx::las::LasFile::read(input), points, pulses);
    loadPointsWithPulses(v, points, pulses);
}

/// Writes `input` again as options.output with the classes of v, byte for byte what saveLASFile
/// writes after loadLASFile (creation year included); with options.writeHeightAboveGround, the
/// heights v holds as the extra-bytes dimension HeightAboveGround. Returns the classes; with
/// options.releaseBeforeSave, clears v before the file is read.
template <class T>
std::vector<int> saveClasses(Vexaro<T>& v, const std::string& input, const PipelineOptions& options)
{
    const int n = v.pointCount();
    std::vector<short> classes(static_cast<std::size_t>(n));
    v.saveClassesToBuffer(classes.data(), n);
    std::vector<float> heights;
    if (options.writeHeightAboveGround) {
        heights.resize(static_cast<std::size_t>(n));
        v.saveHeightAboveGroundToBuffer(heights.data(), n);
    }
    if (options.releaseBeforeSave)
        v.clearAllMemory();
    auto file = vx::las::LasFile::read(input);
    if (file.size() != static_cast<std::size_t>(n))
        throw std::runtime_error("'" + input + "' changed while it was classified (" + std::to_string(n) +
                                 " points loaded, " + std::to_string(file.size()) + " now); '" +
                                 options.output + "' is not written");
    for (std::size_t i = 0; i < classes.size(); ++i)
        file.setClassification(i, static_cast<uint16_t>(classes[i]));
    file.setCreationYear(2015); // the year saveLASFile stamps
    if (options.writeHeightAboveGround)
        file.withExtraFloat("HeightAboveGround", "height above the ground surface", heights)
            .write(options.output);
    else
        file.write(options.output);
    return std::vector<int>(classes.begin(), classes.end());
}

} // namespace

template <class T>
std::vector<int> runPipeline(Vexaro<T>& v, const std::string& input, const PipelineOptions& options,
                             const ProgressFn& progress)
{
    using namespace cls;
    const int steps = 11 + (options.output.empty() ? 0 : 1);
    StepRunner<T> step(v, steps, progress);
    // The normals file takes coordinates and intensities from the library's copy of the file, which
    // then stays held throughout. Otherwise the tool hands the points over and reads the file again
    // to write it, so that the run holds no copy of the file's bytes.
    const bool libraryKeepsFile = !options.normalsBaseName.empty();

    if (options.recommendedParameters)
        applyRecommendedParameters(v);
    step.run("load", "", {}, [&] {
        if (libraryKeepsFile)
            v.loadLASFile(input);
        else
            loadPoints(v, input);
    });
    if (v.pointCount() < 2)
        throw std::runtime_error("'" + input + "' holds fewer than two points; nothing to classify");
    classifySteps(v, options, step);

    if (options.output.empty())
        return currentClasses(v);
    std::vector<int> classes;
    step.run("save", "", {}, [&] {
        if (options.writeHeightAboveGround) // no earlier step computes them: heights of the final ground
            v.computeHeightAboveGround(kGround);
        if (libraryKeepsFile)
            v.saveLASFile(options.output, options.writeHeightAboveGround);
        else
            classes = saveClasses(v, input, options);
    });
    return libraryKeepsFile ? currentClasses(v) : classes;
}

template <class T>
void runPipelineOnPoints(Vexaro<T>& v, std::vector<VX_Point<T>>& points, const PulseValues& pulses,
                         const PipelineOptions& options, const ProgressFn& progress)
{
    StepRunner<T> step(v, 11, progress);
    if (options.recommendedParameters)
        applyRecommendedParameters(v);
    step.run("load", "", {}, [&] { loadPointsWithPulses(v, points, pulses); });
    if (v.pointCount() < 2)
        throw std::runtime_error("a part of fewer than two points; nothing to classify");
    classifySteps(v, options, step);
}

template std::vector<int> runPipeline<float>(Vexaro<float>&, const std::string&, const PipelineOptions&,
                                             const ProgressFn&);
template std::vector<int> runPipeline<double>(Vexaro<double>&, const std::string&, const PipelineOptions&,
                                              const ProgressFn&);
template void runPipelineOnPoints<float>(Vexaro<float>&, std::vector<VX_Point<float>>&, const PulseValues&,
                                         const PipelineOptions&, const ProgressFn&);
template void runPipelineOnPoints<double>(Vexaro<double>&, std::vector<VX_Point<double>>&, const PulseValues&,
                                          const PipelineOptions&, const ProgressFn&);
template void applyRecommendedParameters<float>(Vexaro<float>&);
template void applyRecommendedParameters<double>(Vexaro<double>&);
template std::vector<int> currentClasses<float>(Vexaro<float>&);
template double gridCellSizeFor<float>(const PipelineOptions&, const Vexaro<float>&);
template double gridCellSizeFor<double>(const PipelineOptions&, const Vexaro<double>&);
template std::vector<int> currentClasses<double>(Vexaro<double>&);

} // namespace vx::app
