// The "Profile" block that `vexaro info` and `classify` print.
#include "DataProfile.h"

#include "Format.h"

namespace vx::app {

namespace {

/// About three significant figures, without exponent.
std::string figure(double v)
{
    const double a = v < 0 ? -v : v;
    return fixed(v, a >= 100 ? 0 : a >= 10 ? 1 : a >= 1 ? 2 : 3);
}

/// The name of a length in the file's horizontal unit.
std::string lengthLabel(const DataProfile& p)
{
    if (p.geographic)
        return "deg";
    switch (p.horizontalUnit) {
    case LengthUnit::Metre:
        return "m";
    case LengthUnit::Foot:
        return "ft";
    case LengthUnit::UsFoot:
        return "US ft";
    default:
        return "units";
    }
}

std::string heightLabel(const DataProfile& p)
{
    switch (p.verticalUnit) {
    case LengthUnit::Metre:
        return "m";
    case LengthUnit::Foot:
        return "ft";
    case LengthUnit::UsFoot:
        return "US ft";
    default:
        return "units";
    }
}

std::string unitsLine(const DataProfile& p)
{
    if (p.geographic)
        return "degrees (geographic, " + p.unitSource + ")";
    if (p.horizontalUnit == LengthUnit::Unknown)
        return std::string("unknown (read as metres") + (p.unitsLookLikeFeet ? "; they look like feet" : "") +
               ")";
    std::string s = unitName(p.horizontalUnit);
    if (p.verticalUnit == p.horizontalUnit)
        s += " horizontal and vertical";
    else
        s += std::string(" horizontal, ") + unitName(p.verticalUnit) + " vertical";
    return s + " (" + p.unitSource + ")";
}

/// "2.87 pts/m², spacing 0.59 m", or per unit when the unit is unknown.
std::string densityText(const DataProfile& p, double density, double spacing)
{
    if (p.geographic)
        return "n/a (geographic coordinates)";
    if (density <= 0)
        return "n/a (too few points)";
    const bool known = p.horizontalUnit != LengthUnit::Unknown;
    return figure(density) + (known ? " pts/m²" : " pts/unit²") + ", spacing " + figure(spacing) +
           (known ? " m" : " units");
}

} // namespace

std::string formatProfile(const DataProfile& p)
{
    const std::string len = lengthLabel(p);
    std::string s = "Profile\n";
    s += "  Units            " + unitsLine(p) + "\n";
    if (p.points == 0)
        return s + "  Points           none\n";
    s += "  Extent           " + figure(p.maxX - p.minX) + " x " + figure(p.maxY - p.minY) + " " + len +
         ", occupied " + grouped(static_cast<long long>(p.occupiedArea + 0.5)) + " " + len + "²\n";
    s += "  Heights          P01 " + fixed(p.heightP01, 2) + " to P99 " + fixed(p.heightP99, 2) + " " +
         heightLabel(p) + "\n";
    s += "  Density          " + densityText(p, p.density, p.spacing) + "\n";
    s += "  Last returns     " + grouped(static_cast<long long>(p.lastReturns)) + ", " +
         densityText(p, p.lastDensity, p.lastSpacing) + "\n";
    s += "  Returns/pulse    " + (p.lastReturns ? fixed(p.returnsPerPulse, 2) : std::string("n/a")) + "\n";
    s += "  Noise suspicion  " + grouped(static_cast<long long>(p.isolatedPoints)) + " points (" +
         percent(static_cast<double>(p.isolatedPoints) / p.points) + ")\n";
    s += "  Terrain slope    " + fixed(p.terrainSlope, 2) +
         " (rise per run that 95 % of the terrain stays under)\n";
    const bool metres = p.verticalUnit != LengthUnit::Unknown || p.horizontalUnit != LengthUnit::Unknown;
    s += "  Ground noise     " +
         (p.groundNoise > 0 ? fixed(p.groundNoise, 3) + (metres ? " m" : " units") : std::string("unknown")) +
         " (scatter of the lowest returns about their plane)\n";
    s +=
        std::string("  Intensities      ") +
        (p.intensities ? "recorded" : "all the same: no water is searched (it is told by its dark returns)") +
        "\n";
    return s;
}

} // namespace vx::app
