#include "CoordinateUnits.h"

#include "ParameterTable.h"
#include "WktTree.h"
#include "las/LasFile.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <initializer_list>

namespace vx::app {

namespace {

constexpr double kFoot = 0.3048;
constexpr double kUsFoot = 1200.0 / 3937.0;

std::string lower(std::string s)
{
    for (char& c : s)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

bool contains(const std::string& s, const char* part)
{
    return s.find(part) != std::string::npos;
}

// ---- WKT ----

bool isOneOf(const std::string& keyword, std::initializer_list<const char*> keywords)
{
    const std::string k = lower(keyword);
    for (const char* w : keywords)
        if (k == w)
            return true;
    return false;
}

/// The first node (depth first, the node itself included) with one of the keywords; the target
/// of a bound CRS and its transformation are not searched: they describe another system.
const WktNode* firstOf(const WktNode& node, std::initializer_list<const char*> keywords)
{
    if (isOneOf(node.keyword, keywords))
        return &node;
    for (const WktNode& c : node.children) {
        if (isOneOf(c.keyword, {"targetcrs", "abridgedtransformation"}))
            continue;
        if (const WktNode* found = firstOf(c, keywords))
            return found;
    }
    return nullptr;
}

/// The length unit of a CRS node: its own UNIT / LENGTHUNIT, else that of its first axis.
LengthUnit unitOfCrs(const WktNode& crs, bool& found)
{
    found = false;
    auto unitOf = [](const WktNode& n, bool& ok) {
        for (const WktNode& c : n.children) {
            if (isOneOf(c.keyword, {"unit", "lengthunit"}) && !c.values.empty()) {
                ok = true;
                const double factor = c.values.size() > 1 ? std::atof(c.values[1].c_str()) : 0.0;
                return unitFromNameAndFactor(c.values[0], factor);
            }
        }
        return LengthUnit::Unknown;
    };
    const LengthUnit own = unitOf(crs, found);
    if (found)
        return own;
    for (const WktNode& c : crs.children)
        if (isOneOf(c.keyword, {"axis"})) {
            const LengthUnit axis = unitOf(c, found);
            if (found)
                return axis;
        }
    return LengthUnit::Unknown;
}

// ---- GeoTIFF keys ----

LengthUnit epsgLinearUnit(unsigned code)
{
    switch (code) {
    case 9001:
        return LengthUnit::Metre;
    case 9002:
        return LengthUnit::Foot;
    case 9003:
        return LengthUnit::UsFoot;
    default:
        return LengthUnit::Unknown;
    }
}

bool within(unsigned code, unsigned first, unsigned last)
{
    return code >= first && code <= last;
}

/// Projected systems in metres that airborne surveys commonly use; other codes stay unknown.
bool metricProjectedCs(unsigned code)
{
    return within(code, 32601, 32660) || within(code, 32701, 32760) ||               // WGS 84 / UTM
           within(code, 32201, 32260) || within(code, 32301, 32360) ||               // WGS 72 / UTM
           within(code, 25828, 25838) || within(code, 26901, 26923) ||               // ETRS89, NAD83 / UTM
           within(code, 26701, 26722) || within(code, 28348, 28358) ||               // NAD27 / UTM, MGA94
           within(code, 7846, 7859) || within(code, 3942, 3950) ||                   // MGA2020, CC zones
           within(code, 27561, 27564) || within(code, 27571, 27574) ||               // NTF Lambert
           within(code, 31466, 31469) || within(code, 2176, 2180) || code == 2154 || // GK, Poland, L93
           code == 27700 || code == 28992 || code == 2056 || code == 21781 ||        // BNG, RD, Swiss
           code == 3035 || code == 3857 || code == 2193; // LAEA, Web Mercator, NZTM
}

/// Vertical systems whose unit the code fixes.
LengthUnit verticalCsUnit(unsigned code)
{
    switch (code) {
    case 5701: // ODN height
    case 5703: // NAVD88 height
    case 5705: // Baltic 1977 height
    case 5711: // AHD height
    case 5714: // MSL height
    case 5720: // NN height
    case 5773: // EGM96 height
    case 5783: // DHHN92 height
    case 3855: // EGM2008 height
        return LengthUnit::Metre;
    case 5702: // NGVD29 height (ftUS)
    case 6360: // NAVD88 height (ftUS)
        return LengthUnit::UsFoot;
    case 8228: // NAVD88 height (ft)
        return LengthUnit::Foot;
    default:
        return LengthUnit::Unknown;
    }
}

constexpr const char* kWktSource = "WKT";
constexpr const char* kGeoKeysSource = "GeoTIFF keys";
/// No WKT is anywhere near this long; a larger payload is not read.
constexpr uint64_t kLongestWkt = 1 << 20;

} // namespace

double metresPer(LengthUnit unit)
{
    switch (unit) {
    case LengthUnit::Foot:
        return kFoot;
    case LengthUnit::UsFoot:
        return kUsFoot;
    default:
        return 1.0;
    }
}

const char* unitName(LengthUnit unit)
{
    switch (unit) {
    case LengthUnit::Metre:
        return "metre";
    case LengthUnit::Foot:
        return "foot";
    case LengthUnit::UsFoot:
        return "US survey foot";
    default:
        return "unknown";
    }
}

LengthUnit parseUnits(const std::string& text)
{
    const std::string t = lower(text);
    for (const char* w : {"metres", "meters", "metre", "meter", "m"})
        if (t == w)
            return LengthUnit::Metre;
    for (const char* w : {"feet", "foot", "ft"})
        if (t == w)
            return LengthUnit::Foot;
    for (const char* w : {"us-feet", "us-foot", "us-ft", "ftus"})
        if (t == w)
            return LengthUnit::UsFoot;
    throw UsageError("unknown unit '" + text + "' for --units (use metres, feet or us-feet)");
}

LengthUnit unitFromNameAndFactor(const std::string& name, double factor)
{
    if (factor > 0) {
        if (std::fabs(factor - 1.0) < 1e-7)
            return LengthUnit::Metre;
        if (std::fabs(factor - kUsFoot) < 1e-7)
            return LengthUnit::UsFoot;
        if (std::fabs(factor - kFoot) < 1e-7)
            return LengthUnit::Foot;
    }
    std::string n = lower(name);
    std::replace(n.begin(), n.end(), '_', ' ');
    std::replace(n.begin(), n.end(), '-', ' ');
    for (const char* w : {"metre", "meter", "metres", "meters", "m"})
        if (n == w)
            return LengthUnit::Metre;
    if (contains(n, "us survey") || contains(n, "foot us") || contains(n, "feet us") ||
        contains(n, "us foot") || contains(n, "us feet") || n == "ftus" || n == "us ft")
        return LengthUnit::UsFoot;
    if (contains(n, "foot") || contains(n, "feet") || n == "ft")
        return LengthUnit::Foot;
    return LengthUnit::Unknown;
}

CoordinateUnits unitsFromWkt(const std::string& wkt)
{
    CoordinateUnits u;
    WktNode root;
    if (!parseWkt(wkt, root))
        return u;
    bool named = false; // a unit is given, known or not
    const WktNode* projected = firstOf(root, {"projcs", "projcrs", "projectedcrs"});
    if (projected) {
        u.horizontal = unitOfCrs(*projected, named);
    } else if (firstOf(root, {"geogcs", "geogcrs", "geographiccrs", "geodcrs", "geodeticcrs"})) {
        // A geodetic CRS alone: latitude and longitude (a geocentric one is no survey's grid).
        u.geographic = true;
    }
    bool verticalNamed = false;
    if (const WktNode* vertical = firstOf(root, {"vert_cs", "vertcrs", "verticalcrs"}))
        u.vertical = unitOfCrs(*vertical, verticalNamed);
    else if (!u.geographic)
        u.vertical = u.horizontal;
    if (named || verticalNamed || u.geographic)
        u.source = kWktSource;
    return u;
}

CoordinateUnits unitsFromGeoKeys(const std::vector<uint8_t>& payload)
{
    CoordinateUnits u;
    auto word = [&](std::size_t k) {
        return static_cast<unsigned>(payload[2 * k] | (payload[2 * k + 1] << 8));
    };
    if (payload.size() < 8)
        return u;
    const std::size_t keys = word(3);
    if (payload.size() < 8 + 8 * keys)
        return u;
    unsigned modelType = 0, projectedCs = 0, linearUnits = 0, verticalCs = 0, verticalUnits = 0;
    for (std::size_t k = 0; k < keys; ++k) {
        const std::size_t at = 4 + 4 * k;
        if (word(at + 1) != 0) // the value lies in another tag: not a short
            continue;
        const unsigned id = word(at), value = word(at + 3);
        if (id == 1024)
            modelType = value;
        else if (id == 3072)
            projectedCs = value;
        else if (id == 3076)
            linearUnits = value;
        else if (id == 4096)
            verticalCs = value;
        else if (id == 4099)
            verticalUnits = value;
    }
    u.horizontal = epsgLinearUnit(linearUnits);
    if (u.horizontal == LengthUnit::Unknown && metricProjectedCs(projectedCs))
        u.horizontal = LengthUnit::Metre;
    if (u.horizontal == LengthUnit::Unknown && modelType == 2 && projectedCs == 0)
        u.geographic = true;
    u.vertical = epsgLinearUnit(verticalUnits);
    if (u.vertical == LengthUnit::Unknown)
        u.vertical = verticalCsUnit(verticalCs);
    if (u.vertical == LengthUnit::Unknown && verticalUnits == 0 && verticalCs == 0)
        u.vertical = u.horizontal;
    if (u.horizontal != LengthUnit::Unknown || u.geographic || u.vertical != LengthUnit::Unknown)
        u.source = kGeoKeysSource;
    return u;
}

CoordinateUnits unitsOfFile(const vx::las::LasFile& file)
{
    const auto& entries = file.vlrs();
    CoordinateUnits unusual; // a WKT that names a unit this tool does not know
    for (std::size_t k = 0; k < entries.size(); ++k) {
        const auto& v = entries[k];
        if (v.userId != "LASF_Projection" || v.recordId != 2112 || v.payloadSize > kLongestWkt)
            continue;
        const auto bytes = file.vlrPayload(k);
        const CoordinateUnits u = unitsFromWkt(std::string(bytes.begin(), bytes.end()));
        if (u.horizontal != LengthUnit::Unknown || u.geographic)
            return u;
        if (u.source != "none" && unusual.source == "none")
            unusual = u;
    }
    for (std::size_t k = 0; k < entries.size(); ++k) {
        const auto& v = entries[k];
        if (v.userId != "LASF_Projection" || v.recordId != 34735 || v.payloadSize > kLongestWkt)
            continue;
        const CoordinateUnits u = unitsFromGeoKeys(file.vlrPayload(k));
        if (u.horizontal != LengthUnit::Unknown || u.geographic)
            return u;
    }
    return unusual;
}

} // namespace vx::app
