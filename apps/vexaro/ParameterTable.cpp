#include "ParameterTable.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <type_traits>

namespace vx::app {

namespace {

enum class Limit { None, NonNegative, Positive };

struct Entry {
    ParameterInfo info;
    void (*toFloat)(Vexaro<float>&, double);
    void (*toDouble)(Vexaro<double>&, double);
    void (*toOptions)(PipelineOptions&, double);
    Limit limit;
    double reach = 0; ///< for a search range of the later steps: how far it looks, per unit
};

// A setter of the library, for both precisions; the argument is converted to the setter's type.
#define VX_REAL(Name, Group, Help)                                                                           \
    Entry                                                                                                    \
    {                                                                                                        \
        {#Name, ValueKind::Real, Group, Help}, [](Vexaro<float>& v, double x) { v.set_##Name(x); },          \
            [](Vexaro<double>& v, double x) { v.set_##Name(x); }, nullptr, Limit::None                       \
    }
// A search range of the ground, building or vegetation steps: the grid's columns follow it.
#define VX_RANGE(Name, Group, Help, Reach)                                                                   \
    Entry                                                                                                    \
    {                                                                                                        \
        {#Name, ValueKind::Real, Group, Help}, [](Vexaro<float>& v, double x) { v.set_##Name(x); },          \
            [](Vexaro<double>& v, double x) { v.set_##Name(x); }, nullptr, Limit::None, Reach                \
    }
#define VX_INT(Name, Group, Help)                                                                            \
    Entry                                                                                                    \
    {                                                                                                        \
        {#Name, ValueKind::Integer, Group, Help},                                                            \
            [](Vexaro<float>& v, double x) { v.set_##Name(static_cast<int>(x)); },                           \
            [](Vexaro<double>& v, double x) { v.set_##Name(static_cast<int>(x)); }, nullptr, Limit::None     \
    }

const std::vector<Entry>& table()
{
    static const std::vector<Entry> entries = {
        VX_REAL(NNSearchRange_NormalVectors, "normals", "search radius of the normal vectors (1.5)"),
        VX_INT(Inner_NormalVectors, "normals", "a cell's points are sampled down to about this many (1000)"),
        VX_INT(MinimalNumberOfNN, "normals", "fewest neighbours for a normal (3)"),
        VX_RANGE(ResetOptionalRange, "reset",
                 "class resets only near ResetOptionalClass points within this range (0: off)", 1),
        VX_INT(ResetOptionalClass, "reset", "class that ResetOptionalRange looks for (0)"),
        VX_REAL(SeedSearchMaxHindeks, "ground", "largest height index of a ground seed (0.001)"),
        VX_INT(GroundGrowthIterations, "ground", "most ground growth iterations (50)"),
        VX_REAL(GroundGrowthDistanceFromPlane, "ground",
                "largest distance from a ground point's plane (0.05)"),
        VX_REAL(GroundGrowthMaxCosinusPar2, "ground",
                "sets GroundGrowthDistanceFromPlane, as the library wires it"),
        VX_REAL(GroundGrowthMinCosinus, "ground", "least cosine between neighbouring ground normals (0.99)"),
        VX_RANGE(GroundGrowthRange, "ground", "search radius of the ground growth (1.5)", 1),
        VX_REAL(GroundGrowthRangeLowest, "ground", "plan radius of the above-plane test (0.5; 0: off)"),
        VX_REAL(GroundGrowthMaxHeightDifference, "ground", "largest rise above the ground neighbour (0.3)"),
        VX_REAL(LowPointFilteringRange, "ground", "depth below the ground that confirms a low point (1.0)"),
        VX_RANGE(BuildingRange, "building", "search radius of the building seeds (1.5)", 1),
        VX_RANGE(BuildingGroundRange, "building", "no ground point within this plan radius of a seed (2.0)",
                 1),
        VX_REAL(BuildingDfPBuilding, "building", "largest distance from the roof plane (0.2)"),
        VX_REAL(BuildingMinCosBuilding, "building", "least cosine between roof normals (0.9)"),
        VX_INT(BuildingMinNoN, "building", "fewest neighbours of a seed (5)"),
        VX_REAL(BuildingProcOfBP, "building", "least share of neighbours on the roof plane (0.5)"),
        VX_REAL(BuildingProcOfGhosts, "building", "largest share of non-last returns (0.2)"),
        VX_REAL(BuildingMinHeight, "building", "least height above the ground (1.8)"),
        VX_INT(Building2Iterations, "building", "building growth iterations (10)"),
        VX_RANGE(Building2Range, "building", "search radius of the building growth (1.5)", 1),
        VX_REAL(Building2DistFPlane, "building", "largest distance from the roof plane when growing (0.4)"),
        VX_INT(Building3Iterations, "building", "stored, read by no step (3)"),
        VX_RANGE(Building3GroundRange, "building", "plan radius of the ground test when closing (1.0)", 2),
        VX_REAL(Building3DetailsHeight, "building", "roof details up to this height join (0.4)"),
        VX_INT(VegetationIterations, "vegetation", "iterations of the two spreading passes (10)"),
        VX_RANGE(VegetationRange, "vegetation", "search radius of the vegetation step (2.0)", 1),
        VX_REAL(VegetationDfG, "vegetation", "plane distance that makes a neighbour chaotic (0.3)"),
        VX_REAL(VegetationMaxCos, "vegetation", "normal cosine below which a neighbour is chaotic (0.9)"),
        VX_REAL(VegetationProcOfChaos, "vegetation", "least share of chaotic neighbours (0.5)"),
        VX_REAL(VegetationProcOfGhosts, "vegetation",
                "share of non-last returns that marks vegetation (0.5)"),
        VX_REAL(VegetationProcOfOrder, "vegetation", "largest share of planar points (0.5)"),
        VX_REAL(VegetationProcOfPlant, "vegetation", "least share of vegetation neighbours (0.5)"),
        VX_REAL(VegetationLowLimit, "vegetation", "low/medium vegetation limit, metres above ground (0.4)"),
        VX_REAL(VegetationHighLimit, "vegetation", "medium/high vegetation limit, metres above ground (2.0)"),
        VX_REAL(VegetationRatio, "vegetation",
                "weight of the vegetation plane against the ground plane (0.5)"),
        VX_INT(Threads, "run", "threads per block (256)"),
        Entry{{"HostThreads", ValueKind::Integer, "run", "CPU backend threads (0: every core)"},
              [](Vexaro<float>& v, double x) { v.setHostThreads(static_cast<int>(x)); },
              [](Vexaro<double>& v, double x) { v.setHostThreads(static_cast<int>(x)); },
              nullptr,
              Limit::None},
        Entry{{"MessageLevel", ValueKind::Integer, "run", "detail of the library's messages, 0 to 4 (2)"},
              [](Vexaro<float>& v, double x) { v.setMessageLevel(static_cast<int>(x)); },
              [](Vexaro<double>& v, double x) { v.setMessageLevel(static_cast<int>(x)); },
              nullptr,
              Limit::None},
        Entry{{"FacadeMessageLevel", ValueKind::Integer, "run",
               "detail of the loading and saving messages, 0 to 4 (2)"},
              [](Vexaro<float>& v, double x) { v.setFacadeMessageLevel(static_cast<int>(x)); },
              [](Vexaro<double>& v, double x) { v.setFacadeMessageLevel(static_cast<int>(x)); },
              nullptr,
              Limit::None},
        Entry{{"CudaDevice", ValueKind::Integer, "run", "index of the CUDA device (0)"},
              [](Vexaro<float>& v, double x) { v.setCudaDevice(static_cast<int>(x)); },
              [](Vexaro<double>& v, double x) { v.setCudaDevice(static_cast<int>(x)); },
              nullptr,
              Limit::NonNegative},
        Entry{{"NormalVectorDecompositionSize", ValueKind::Real, "pipeline",
               "cube edge of the normal step's grid (0: NNSearchRange_NormalVectors)"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.normalCellSize = x; },
              Limit::NonNegative},
        Entry{{"SeedCellSize", ValueKind::Real, "pipeline",
               "column edge for the ground seeds; wider than the largest building (30)"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.seedCellSize = x; },
              Limit::Positive},
        Entry{{"GridCellSize", ValueKind::Real, "pipeline",
               "column edge of the ground, building and vegetation steps (0: largest range)"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.gridCellSize = x; },
              Limit::NonNegative},
        Entry{{"BuildingCompanionClass", ValueKind::Integer, "pipeline",
               "shape class voting for roof planes by distance only (12: linear)"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.buildingCompanionClass = static_cast<int>(x); },
              Limit::NonNegative},
    };
    return entries;
}

#undef VX_REAL
#undef VX_INT
#undef VX_RANGE

std::string lower(std::string s)
{
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string trim(const std::string& s)
{
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string::npos)
        return "";
    const auto last = s.find_last_not_of(" \t\r\n");
    return s.substr(first, last - first + 1);
}

std::size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t up = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = up;
        }
    }
    return row[b.size()];
}

const Entry* find(const std::string& name)
{
    for (const auto& e : table())
        if (name == e.info.name)
            return &e;
    return nullptr;
}

} // namespace

std::vector<ParameterInfo> parameterInfos()
{
    std::vector<ParameterInfo> out;
    for (const auto& e : table())
        out.push_back(e.info);
    return out;
}

std::string closestParameterName(const std::string& name)
{
    const std::string wanted = lower(name);
    // A beginning that fits one name only is most likely that name, however short.
    std::string prefixed;
    int prefixes = 0;
    for (const auto& e : table())
        if (!wanted.empty() && lower(e.info.name).rfind(wanted, 0) == 0)
            prefixed = e.info.name, ++prefixes;
    if (prefixes == 1)
        return prefixed;
    std::string best;
    std::size_t bestDistance = std::numeric_limits<std::size_t>::max();
    for (const auto& e : table()) {
        const std::size_t d = editDistance(wanted, lower(e.info.name));
        if (d < bestDistance)
            bestDistance = d, best = e.info.name;
    }
    const std::size_t allowed = std::max<std::size_t>(2, wanted.size() / 4);
    return bestDistance <= allowed ? best : "";
}

Setting parseSetting(const std::string& rawName, const std::string& valueText, const std::string& origin)
{
    const std::string name = trim(rawName);
    const Entry* entry = find(name);
    if (!entry) {
        const std::string near = closestParameterName(name);
        if (!near.empty())
            throw UsageError(origin + ": unknown parameter \"" + name + "\"; did you mean \"" + near + "\"?");
        throw UsageError(origin + ": unknown parameter \"" + name +
                         "\"; 'vexaro classify --help' lists the parameters");
    }
    const std::string text = trim(valueText);
    if (text.empty())
        throw UsageError(origin + ": missing value for " + name);
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || !std::isfinite(value))
        throw UsageError(origin + ": \"" + text + "\" is not a number (" + name +
                         " takes a number such as 1.5)");
    if (entry->info.kind == ValueKind::Integer &&
        (value != std::floor(value) || value < std::numeric_limits<int>::min() ||
         value > std::numeric_limits<int>::max()))
        throw UsageError(origin + ": \"" + text + "\" is not a whole number (" + name +
                         " takes a whole number)");
    if (entry->limit == Limit::NonNegative && value < 0)
        throw UsageError(origin + ": " + name + " must not be negative");
    if (entry->limit == Limit::Positive && value <= 0)
        throw UsageError(origin + ": " + name + " must be greater than 0");
    return {name, value};
}

Setting parseAssignment(const std::string& text, const std::string& origin)
{
    const auto eq = text.find('=');
    if (eq == std::string::npos)
        throw UsageError(origin + ": expected Name=value");
    if (trim(text.substr(0, eq)).empty())
        throw UsageError(origin + ": missing parameter name before '='");
    return parseSetting(text.substr(0, eq), text.substr(eq + 1), origin);
}

template <class T>
void applySettings(const std::vector<Setting>& settings, Vexaro<T>& v, PipelineOptions& options)
{
    for (const auto& s : settings) {
        const Entry* e = find(s.name);
        if (!e)
            continue; // parseSetting admitted only known names
        if (e->reach > 0)
            options.largestSearchRange = std::max(options.largestSearchRange, e->reach * s.value);
        if (e->toOptions) {
            e->toOptions(options, s.value);
        } else if constexpr (std::is_same_v<T, float>) {
            e->toFloat(v, s.value);
        } else {
            e->toDouble(v, s.value);
        }
    }
}

std::string parameterHelp()
{
    std::ostringstream out;
    std::string group;
    for (const auto& e : table()) {
        if (group != e.info.group) {
            group = e.info.group;
            out << "  " << group << ":\n";
        }
        std::string name = e.info.name;
        if (name.size() < 32)
            name.resize(32, ' ');
        out << "    " << name << ' ' << e.info.help << '\n';
    }
    return out.str();
}

template void applySettings<float>(const std::vector<Setting>&, Vexaro<float>&, PipelineOptions&);
template void applySettings<double>(const std::vector<Setting>&, Vexaro<double>&, PipelineOptions&);

} // namespace vx::app
