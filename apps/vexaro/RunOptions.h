// The options shared by `classify` and `demo`, and the run of the pipeline they configure.
#pragma once

#include "Args.h"
#include "Console.h"
#include "CoordinateUnits.h"
#include "ParameterTable.h"
#include "Pipeline.h"
#include "Presets.h"

#include <string>
#include <vector>

namespace vx::app {

struct RunOptions {
    std::vector<Setting> settings; ///< from --set, in order; they override the parameter file
    std::string paramsFile;
    std::string backend = "auto";
    bool soa = true;
    bool doublePrecision = false;
    std::string logPath;
    bool quiet = false, verbose = false;
    LengthUnit units = LengthUnit::Unknown; ///< --units: overrides the file's coordinate system
    int cudaDevice = -1;         ///< CUDA device to use when several exist (one a rank); below 0: the default
    std::string preset = "auto"; ///< a name of presets(), or "none": the library's defaults and the
                                 ///< recommended values only
};

/// Takes `token` (and its value) when it is one of the shared options; false otherwise.
bool parseRunOption(ArgList& args, const std::string& token, RunOptions& run);

/// The parameter file's settings followed by the --set ones.
std::vector<Setting> collectSettings(const RunOptions& run);

/// The help lines of the shared options.
const char* runOptionsHelp();

struct RunResult {
    std::vector<int> classes; ///< final class of every point, in file order
    std::string backend;      ///< "cpu" or "cuda"
    double seconds = 0;       ///< whole pipeline
};

/// Classifies `input` with the pipeline in the run's precision, layout and backend; the library's
/// messages go where the run says. Throws std::runtime_error (or vexaro::LasError) on failure.
RunResult runClassification(const RunOptions& run, const std::vector<Setting>& settings,
                            PipelineOptions pipeline, const std::string& input, LibraryOutput& libraryOutput,
                            Reporter& reporter);

} // namespace vx::app
