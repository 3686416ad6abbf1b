// vexaro scene: writes a synthetic scene and its truth without classifying it.
#include "Args.h"
#include "Commands.h"
#include "FileChecks.h"
#include "Format.h"
#include "ParameterTable.h"
#include "scene/Scene.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <iostream>

namespace vx::app {

namespace {

constexpr double kMostDensity = 1000.0;
constexpr long long kLeastPoints = 10, kMostPoints = 50000000;

double density(ArgList& args, const std::string& option)
{
    const std::string text = args.value(option);
    char* end = nullptr;
    errno = 0;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || errno == ERANGE || !std::isfinite(v) || v <= 0 || v > kMostDensity)
        throw UsageError("option '" + option +
                         "' takes pulses per square metre, a number above 0 and up to " +
                         fixed(kMostDensity, 0) + ", not '" + text + "'");
    return v;
}

} // namespace

int sceneCommand(const Arguments& arguments)
{
    ArgList args(arguments, "scene");
    vx::scene::SceneOptions options;
    std::string inputPath, truthPath;
    bool quiet = false;
    while (!args.done()) {
        const std::string t = args.next();
        if (t == "-h" || t == "--help") {
            std::cout << helpText("scene");
            return 0;
        }
        if (t == "-o" || t == "--output")
            inputPath = args.value(t);
        else if (t == "--truth")
            truthPath = args.value(t);
        else if (t == "--kind") {
            const std::string name = args.value(t);
            if (!vx::scene::parseSceneKind(name, options.kind))
                throw UsageError(
                    "--kind takes town, hall, terraces, forest, mountain-forest, bridges or river, not '" +
                    name + "'");
        } else if (t == "--units") {
            const std::string name = args.value(t);
            if (!vx::scene::parseSceneUnits(name, options.units))
                throw UsageError("--units takes metres, feet or us-feet, not '" + name + "'");
        } else if (t == "--density")
            options.density = density(args, t);
        else if (t == "--points")
            options.targetPoints = static_cast<std::size_t>(args.integer(t, kLeastPoints, kMostPoints));
        else if (t == "--seed")
            options.seed = static_cast<uint64_t>(args.integer(t, 0, LLONG_MAX));
        else if (t == "--stray")
            options.strayReturns = true;
        else if (t == "-q" || t == "--quiet")
            quiet = true;
        else if (isOption(t))
            args.unknownOption(t);
        else
            args.unexpected(t);
    }
    if (inputPath.empty())
        throw UsageError("scene needs an output file: -o INPUT.las (see 'vexaro scene --help')");
    if (truthPath == inputPath || (!truthPath.empty() && sameFile(truthPath, inputPath)))
        throw UsageError("--truth must name another file than -o");
    requireWritableFile(inputPath, "output");
    if (!truthPath.empty())
        requireWritableFile(truthPath, "truth");

    const auto scene = vx::scene::generateScene(options);
    vx::scene::writeSceneLas(scene, inputPath, truthPath);
    if (!quiet) {
        const char* unit = options.units == vx::scene::SceneUnits::Metres ? " m" : " ft";
        std::cout << vx::scene::sceneKindName(scene.kind)
                  << " scene: " << grouped(static_cast<long long>(scene.points.size())) << " points, side "
                  << fixed(scene.side, 1) << unit << ", " << fixed(options.density, 2)
                  << " pulses per square metre, units " << vx::scene::sceneUnitsName(scene.units) << ", seed "
                  << options.seed << "\n"
                  << "Truth (class, points, share):\n"
                  << vx::scene::describeTruth(scene);
    }
    return 0;
}

} // namespace vx::app
