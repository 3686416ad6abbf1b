#include "ParameterText.h"

#include <limits>
#include <sstream>

namespace vx::app {

namespace {

std::string number(double x)
{
    std::ostringstream s;
    s.precision(10);
    s << x;
    return s.str();
}

const char* kindText(vexaro::ParameterKind k)
{
    switch (k) {
    case vexaro::ParameterKind::Length:
    case vexaro::ParameterKind::Height:
        return "length (T)";
    case vexaro::ParameterKind::FloatLength:
        return "length (T, set as float)";
    case vexaro::ParameterKind::Cosine:
        return "cosine (float)";
    case vexaro::ParameterKind::Ratio:
        return "proportion (float)";
    case vexaro::ParameterKind::Index:
        return "height index (float)";
    case vexaro::ParameterKind::Count:
        return "count (int)";
    case vexaro::ParameterKind::Class:
        return "class (int)";
    }
    return "";
}

} // namespace

std::string parameterDefaultText(const vexaro::ParameterInfo& p)
{
    const std::string unit = p.unit;
    return number(p.defaultValue) + (unit.empty() ? "" : " " + unit);
}

std::string parameterLimitsText(const vexaro::ParameterInfo& p)
{
    const double lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
    if (p.min <= lowest && p.max >= highest)
        return "any";
    if (p.max >= highest)
        return number(p.min) + " or more";
    return number(p.min) + " to " + number(p.max);
}

std::string parameterStepsText(const vexaro::ParameterInfo& p)
{
    static const std::pair<unsigned, const char*> steps[] = {
        {vexaro::Normals, "calculateNormalVectors"},
        {vexaro::Reset, "resetPointCloudClasses"},
        {vexaro::GroundSeeds, "findGroundSeed"},
        {vexaro::GroundGrowth, "performIterativeGroundGrowth"},
        {vexaro::LowPointCorrection, "performLowPointCorrection"},
        {vexaro::BuildingSeeds, "findBuildingSeed"},
        {vexaro::BuildingGrowth, "performIterativeBuildingGrowth"},
        {vexaro::Vegetation, "performVegetationClassification"},
        {vexaro::TerrainGround, "classifyTerrainGround"},
        {vexaro::Noise, "classifyNoise"},
        {vexaro::HeightAboveGround,
         "computeHeightAboveGround, classifyByHeightAboveGround, classifyNearGround, classifyRaisedPoints"},
        {vexaro::RoofEchoes, "classifyRoofsByEchoes, growRoofsByEchoes, growVegetationByEchoes"},
        {vexaro::SteepGround, "classifySteepGround"},
        {vexaro::Bumps, "classifyGroundBumps"},
        {vexaro::Rims, "classifyGroundRims"},
        {vexaro::Water, "classifyWater"},
    };
    std::string out;
    for (const auto& s : steps)
        if (p.steps & s.first)
            out += (out.empty() ? "" : ", ") + std::string(s.second);
    return out.empty() ? "none" : out;
}

std::string parametersMarkdown()
{
    std::ostringstream out;
    out << "# Parameters\n\n"
        << "Generated from `VEXARO_PARAMETERS` in `include/VexaroParameters.h` by `vexaro params "
           "--markdown`;\na test fails when this file differs from what the declaration gives.\n\n"
        << "`Vexaro<T>` has `set_<Name>` and `get_<Name>` for each. The setters store any value; a "
           "step\nthat reads a parameter refuses to run, with one message line, when the value is "
           "not finite\nor outside the valid values. T is the precision (float or double). A "
           "search range's reach\n(how far the later steps look, per unit) sets the columns of "
           "`regularGridDecomposition2DFromRanges()`.\n"
           "The tool takes each as `--set Name=value` or a line of `--params FILE`.\n";
    std::string group;
    for (const auto& p : vexaro::parameterInfos) {
        if (group != p.group) {
            group = p.group;
            out << "\n## " << group << "\n\n"
                << "| name | kind | default | valid | read by | reach | what it does |\n"
                << "|---|---|---|---|---|---|---|\n";
        }
        out << "| `" << p.name << "` | " << kindText(p.kind) << " | " << parameterDefaultText(p) << " | "
            << parameterLimitsText(p) << " | " << parameterStepsText(p) << " | "
            << (p.reach > 0 ? number(p.reach) : "") << " | " << p.help << " |\n";
    }
    return out.str();
}

} // namespace vx::app
