#include "RunOptions.h"

#include "CloudParts.h"

#include "ParamsFile.h"
#include "SearchColumns.h"

#include "DataProfile.h"
#include "Format.h"

#include "las/LasFile.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <memory>

namespace vx::app {

bool parseRunOption(ArgList& args, const std::string& token, RunOptions& run)
{
    if (token == "--set") {
        const std::string text = args.value(token);
        run.settings.push_back(parseAssignment(text, "--set " + text));
    } else if (token == "--params") {
        run.paramsFile = args.value(token);
    } else if (token == "--backend") {
        run.backend = args.value(token);
        if (run.backend != "auto" && run.backend != "cpu" && run.backend != "cuda")
            throw UsageError("--backend takes auto, cpu or cuda, not '" + run.backend + "'");
    } else if (token == "--layout") {
        const std::string layout = args.value(token);
        if (layout != "soa" && layout != "aos")
            throw UsageError("--layout takes soa or aos, not '" + layout + "'");
        run.soa = layout == "soa";
    } else if (token == "--precision") {
        const std::string precision = args.value(token);
        if (precision != "float" && precision != "double")
            throw UsageError("--precision takes float or double, not '" + precision + "'");
        run.doublePrecision = precision == "double";
    } else if (token == "--preset") {
        run.preset = args.value(token);
        if (run.preset != "none" && run.preset != "auto")
            presetNamed(run.preset);
    } else if (token == "--units") {
        run.units = parseUnits(args.value(token));
    } else if (token == "--log") {
        run.logPath = args.value(token);
    } else if (token == "-q" || token == "--quiet") {
        run.quiet = true;
    } else if (token == "-v" || token == "--verbose") {
        run.verbose = true;
    } else {
        return false;
    }
    return true;
}

std::vector<Setting> collectSettings(const RunOptions& run)
{
    std::vector<Setting> all;
    if (!run.paramsFile.empty())
        all = readParamsFile(run.paramsFile);
    all.insert(all.end(), run.settings.begin(), run.settings.end());
    return all;
}

const char* runOptionsHelp()
{
    return "  --set Name=value       set a parameter (repeatable; see the list below)\n"
           "  --params FILE          read parameters from FILE, one 'Name = value' a line, '#' comments;\n"
           "                         --set values override them\n"
           "  --backend B            auto (CUDA when a device is present, else CPU), cpu or cuda\n"
           "  --layout L             soa (default) or aos: the library's memory layout\n"
           "  --precision P          float (default) or double\n"
           "  --preset P             auto (default: a preset chosen from the data), general, flat,\n"
           "                         city, forest, mountain, or none (the library's defaults and the\n"
           "                         ground seeds and growth); see 'vexaro params --presets'\n"
           "  --units U              length unit of the input when its coordinate system does not say:\n"
           "                         metres, feet or us-feet (it wins over the file's own)\n"
           "  --log FILE             write the library's own messages to FILE\n"
           "  -v, --verbose          show the library's own messages on the terminal\n"
           "  -q, --quiet            print nothing but errors\n";
}

namespace {

/// Empty gaps that part a cloud (see CloudParts.h): wider than the widest window of the terrain
/// step and the widest search of any other, and taller than any building.
constexpr double kPartPlanGapMetres = 100.0;
constexpr double kPartHeightGapMetres = 1000.0;

/// Profiles the input, prints the profile (unless quiet) and its warnings, and returns what
/// the parameter rules read.
DataScale measureScale(const std::string& input, const RunOptions& run, Reporter& reporter)
{
    const auto file = vx::las::LasFile::read(input);
    const DataProfile profile = profileLas(file, run.units);
    if (!reporter.quiet())
        std::cout << formatProfile(profile) << std::endl;
    for (const auto& w : profile.warnings)
        if (!reporter.quiet())
            std::cerr << "vexaro: warning: " << w << std::endl;
    DataScale scale;
    scale.spacing = profile.spacing;
    scale.lastSpacing = profile.lastSpacing;
    scale.metresPerUnit = profile.metresPerUnit;
    scale.metresPerVerticalUnit =
        profile.verticalUnit == LengthUnit::Unknown ? profile.metresPerUnit : metresPer(profile.verticalUnit);
    scale.terrainSlope = profile.terrainSlope;
    scale.groundNoise = profile.groundNoise;
    scale.returnsPerPulse = profile.returnsPerPulse;
    scale.points = profile.points;
    scale.density = profile.density;
    return scale;
}

template <class T>
RunResult runAs(const RunOptions& run, const std::vector<Setting>& settings, PipelineOptions pipeline,
                const std::string& input, LibraryOutput& libraryOutput, Reporter& reporter)
{
    RunResult result;
    auto quiet = std::make_unique<LibraryOutput::Redirect>(libraryOutput);
    Vexaro<T> v;
    // A device failure would end the process with status 0; a person should see it failed.
    v.setDeviceErrorHandler([&libraryOutput](int code) {
        libraryOutput.flush();
        std::cerr << "vexaro: error: the compute device reported error code " << code << std::endl;
        std::exit(1);
    });
    try {
        v.setComputeBackend(run.backend);
    } catch (const std::exception& e) {
        throw std::runtime_error("cannot use the " + run.backend + " backend: " + e.what());
    }
    if (run.cudaDevice >= 0 && v.computeBackend() == "cuda") {
        const auto devices = v.getAvailableDevices();
        if (devices.size() > 1)
            v.setCudaDevice(run.cudaDevice % static_cast<int>(devices.size()));
    }
    // The profile goes to the terminal, between the checks of the run and the library's work.
    quiet.reset();
    const DataScale scale = run.preset == "none" ? DataScale{} : measureScale(input, run, reporter);
    // The profile's many small cell records are freed by now; give their pages back before the
    // library loads the cloud, so that they do not add to the run's peak.
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    quiet = std::make_unique<LibraryOutput::Redirect>(libraryOutput);
    v.set_SoA(run.soa);
    // The pipeline's recommended values first, so that every --set / --params value wins, also
    // one equal to the library's default.
    if (pipeline.recommendedParameters)
        applyRecommendedParameters(v);
    pipeline.recommendedParameters = false;
    if (run.preset != "none") {
        const Preset& preset = run.preset == "auto" ? presetFor(scale) : presetNamed(run.preset);
        reporter.note("preset " + std::string(preset.name) +
                      (run.preset == "auto" ? " (auto, terrain slope " + fixed(scale.terrainSlope, 2) + ", " +
                                                  fixed(scale.returnsPerPulse, 2) + " returns per pulse)"
                                            : "") +
                      ": " + preset.description);

        std::vector<Setting> derived;
        for (const auto& d : deriveParameters(preset, scale))
            derived.push_back({d.name, d.value});
        applySettings(derived, v, pipeline);
    } else {
        pipeline.terrainGround = false;
    }
    applySettings(settings, v, pipeline);
    if (pipeline.terrainGround)
        checkSearchColumns(v.get_NoiseRange(), "NoiseRange", scale);
    checkSearchColumns(pipeline.gridCellSize > 0 ? pipeline.gridCellSize : v.rangeGridCellSize(),
                       "the widest search range (the grid's column)", scale);
    result.backend = v.computeBackend();
    reporter.note("backend " + result.backend + ", layout " + (run.soa ? "soa" : "aos") + ", precision " +
                  (run.doublePrecision ? "double" : "float"));

    const auto start = std::chrono::steady_clock::now();
    // Gaps wider than any step looks apart the cloud: 100 m in plan, 1 km in height (in file
    // units; without a profile, as with --preset none, the units are taken for metres).
    pipeline.partPlanGap = kPartPlanGapMetres / scale.metresPerUnit;
    pipeline.partHeightGap = kPartHeightGapMetres / scale.metresPerVerticalUnit;
    result.classes = classifyFile(
        v, input, pipeline, [&reporter](const StepReport& r) { reporter.step(r); },
        [&reporter](const std::string& text) { reporter.note(text); });
    result.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    v.clearAllMemory();
    return result;
}

} // namespace

RunResult runClassification(const RunOptions& run, const std::vector<Setting>& settings,
                            PipelineOptions pipeline, const std::string& input, LibraryOutput& libraryOutput,
                            Reporter& reporter)
{
    if (run.doublePrecision)
        return runAs<double>(run, settings, pipeline, input, libraryOutput, reporter);
    return runAs<float>(run, settings, pipeline, input, libraryOutput, reporter);
}

} // namespace vx::app
