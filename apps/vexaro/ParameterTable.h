// The names accepted by `--set Name=value` and `--params FILE`: the library's parameters
// (VEXARO_PARAMETERS, each a setter without "set_"), a few run settings, and the pipeline's own
// sizes. One table maps each name to what it sets.
#pragma once

#include "Pipeline.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace vx::app {

/// A mistake on the command line or in a parameter file; main prints it and exits with 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class ValueKind { Real, Integer };

struct ParameterInfo {
    const char* name;
    ValueKind kind;
    const char* group; ///< "normals", "ground", ..., "run", "pipeline"
    std::string help;  ///< one line; defaults are the library's unless it says otherwise
};

/// Every accepted name, in table order.
std::vector<ParameterInfo> parameterInfos();

/// A parsed, checked `Name = value`.
struct Setting {
    std::string name;
    double value = 0;
};

/// Checks a name and its value text. `origin` prefixes error messages ("--set X=1",
/// "params.txt:3"). Throws UsageError naming the closest known name for an unknown one.
Setting parseSetting(const std::string& name, const std::string& valueText, const std::string& origin);

/// Splits "Name=value" (blanks around either part allowed) and parses it.
Setting parseAssignment(const std::string& text, const std::string& origin);

/// The known name nearest to `name` (ignoring case), or "" when none is near.
std::string closestParameterName(const std::string& name);

/// Applies the settings in order to the classifier and the pipeline options.
template <class T>
void applySettings(const std::vector<Setting>& settings, Vexaro<T>& v, PipelineOptions& options);

/// The table as help text, grouped.
std::string parameterHelp();

} // namespace vx::app
