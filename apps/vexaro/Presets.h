// Presets of the pipeline and the parameters derived from a cloud's point spacing and units.
//
// Every length the pipeline hands to the library follows from two measures of the data: the
// mean spacing of all returns and of last returns (metres), and the length of the file's unit
// in metres. The rules are written in metres and converted to the file's unit, so a scene in
// feet gets the same parameters, in feet, as the same scene in metres.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vx::app {

/// What the rules read from the data.
struct DataScale {
    double spacing = 0;       ///< mean distance between neighbouring points, all returns, metres
    double lastSpacing = 0;   ///< the same over last returns, metres
    double metresPerUnit = 1; ///< length of the file's horizontal unit in metres
    double metresPerVerticalUnit = 1;
    double terrainSlope = 0; ///< slope that 95 % of the coarse lowest-point surface stays under, rise per run
    double groundNoise = 0;  ///< scatter of the lowest returns about their plane, metres; 0: unknown
    double returnsPerPulse = 0; ///< points per last return; 0: unknown
    std::size_t points = 0;     ///< points of the file; 0: unknown
    double density = 0;         ///< points per m² over the occupied area; 0: unknown
};

/// A named landscape: the values that differ between landscapes, with the reason for each.
struct Preset {
    const char* name;
    const char* description;
    double terrainWindow; ///< metres: half of the widest object cut from the terrain
    double terrainSlope;  ///< steepest terrain slope kept, rise per run
    double terrainClimb;  ///< slope between cells that joins a cut object back to the terrain; 0: off
    double climbMaxRise;  ///< metres: largest rise between cells the climb takes; 0: no limit
    const char* reason;
};

/// The named presets; "auto" chooses one of them from the data.
const std::vector<Preset>& presets();
/// The preset "auto" takes for data of that scale: mountain where the terrain is steep, forest
/// under a closed canopy, flat where the terrain is gentle, general elsewhere.
const Preset& presetFor(const DataScale& scale);
/// The preset of that name; throws UsageError for an unknown name.
const Preset& presetNamed(const std::string& name);

/// One parameter value and the rule that gave it.
struct DerivedParameter {
    std::string name; ///< a library parameter or a pipeline setting of the parameter table
    double value;     ///< in the file's units
    std::string rule;
};

/// The parameters for a cloud of that scale under a preset.
std::vector<DerivedParameter> deriveParameters(const Preset& preset, const DataScale& scale);

/// The rules as text, for --help and the documentation.
std::string derivationRules();

} // namespace vx::app
