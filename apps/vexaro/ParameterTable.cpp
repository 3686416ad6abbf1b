#include "ParameterTable.h"

#include "ParameterText.h"

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
};

// The library's parameters, from their declaration. The tool takes any number for them: the
// library's steps refuse values outside the declared limits.
#define VX_LIBRARY_ENTRY(Name, Field, Kind, Default, Unit, Min, Max, Group, Steps, Reach, Help)              \
    Entry{{#Name, vexaro::isWholeNumber(vexaro::ParameterKind::Kind) ? ValueKind::Integer : ValueKind::Real, \
           Group, libraryHelp(#Name)},                                                                       \
          [](Vexaro<float>& v, double x) {                                                                   \
              using T [[maybe_unused]] = float;                                                              \
              v.set_##Name(static_cast<VEXARO_PARAMETER_ARG_##Kind>(x));                                     \
          },                                                                                                 \
          [](Vexaro<double>& v, double x) {                                                                  \
              using T [[maybe_unused]] = double;                                                             \
              v.set_##Name(static_cast<VEXARO_PARAMETER_ARG_##Kind>(x));                                     \
          },                                                                                                 \
          nullptr,                                                                                           \
          Limit::None},

#define VX_INT(Name, Group, Help)                                                                            \
    Entry                                                                                                    \
    {                                                                                                        \
        {#Name, ValueKind::Integer, Group, Help},                                                            \
            [](Vexaro<float>& v, double x) { v.set_##Name(static_cast<int>(x)); },                           \
            [](Vexaro<double>& v, double x) { v.set_##Name(static_cast<int>(x)); }, nullptr, Limit::None     \
    }

/// A library parameter's line: its help, default and limits.
std::string libraryHelp(const char* name)
{
    for (const auto& p : vexaro::parameterInfos)
        if (std::string(p.name) == name)
            return std::string(p.help) + " (" + parameterDefaultText(p) + "; " + parameterLimitsText(p) + ")";
    return "";
}

const std::vector<Entry>& table()
{
    static const std::vector<Entry> entries = {
        VEXARO_PARAMETERS(VX_LIBRARY_ENTRY) VX_INT(Threads, "run", "threads per block (256)"),
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
        Entry{{"TerrainGroundStep", ValueKind::Integer, "pipeline",
               "1: ground from the terrain surface; 0: from seeds and growth (1)"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.terrainGround = x != 0; },
              Limit::NonNegative},
        Entry{{"HighNoiseClass", ValueKind::Integer, "pipeline",
               "class of noise above its surroundings: 7 (low noise, default) or 18 (high noise)"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.highNoiseClass = static_cast<int>(x); },
              Limit::NonNegative},
        Entry{{"BridgeDeckClass", ValueKind::Integer, "pipeline",
               "class of the bridge decks that the terrain step finds: 17 (bridge deck, default), or 0 to "
               "leave them to the later steps"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.bridgeDeckClass = static_cast<int>(x); },
              Limit::NonNegative},
        Entry{{"WaterClass", ValueKind::Integer, "pipeline",
               "class of the ground on water (dark, sparse, single and level returns): 9 (water, default), "
               "or 0 to leave it ground"},
              nullptr,
              nullptr,
              [](PipelineOptions& o, double x) { o.waterClass = static_cast<int>(x); },
              Limit::NonNegative},
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

#undef VX_LIBRARY_ENTRY
#undef VX_INT

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
