// The length units of a LAS file's coordinates, read from its coordinate system records (OGC WKT,
// GeoTIFF keys) or given on the command line with --units.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vx::las {
class LasFile;
}

namespace vx::app {

enum class LengthUnit { Metre, Foot, UsFoot, Unknown };

/// What a file's coordinate system says about its units.
struct CoordinateUnits {
    LengthUnit horizontal = LengthUnit::Unknown;
    LengthUnit vertical = LengthUnit::Unknown;
    bool geographic = false;     ///< horizontal coordinates are angles (a geographic CS only)
    std::string source = "none"; ///< "WKT", "GeoTIFF keys", "--units" or "none"
};

/// Metres in one unit: 1, 0.3048, 1200/3937; 1 for Unknown.
double metresPer(LengthUnit unit);
/// "metre", "foot", "US survey foot", "unknown".
const char* unitName(LengthUnit unit);

/// "metres"/"meters"/"metre"/"meter"/"m", "feet"/"foot"/"ft", "us-feet"/"us-foot"/"us-ft"/"ftUS"
/// (case ignored); throws UsageError otherwise.
LengthUnit parseUnits(const std::string& text);

/// A unit from its WKT name and factor to metres (factor <= 0: not given): the factor decides
/// when it is one of the three, else the name.
LengthUnit unitFromNameAndFactor(const std::string& name, double factor);

/// Units of an OGC WKT (1 or 2) coordinate system: the unit of the projected CS is horizontal,
/// that of the vertical CS vertical; a geographic CS alone marks the file geographic. Without a
/// vertical CS the vertical unit follows the horizontal one. The source is "WKT" when the text
/// names a unit (known or not) or a geographic CS; malformed text gives Unknown units, source none.
CoordinateUnits unitsFromWkt(const std::string& wkt);

/// Units of a GeoKeyDirectoryTag payload (LASF_Projection 34735): ProjLinearUnitsGeoKey and
/// VerticalUnitsGeoKey, else a well-known metric ProjectedCSTypeGeoKey, else a geographic model
/// type. A payload too short for its key count gives Unknown units.
CoordinateUnits unitsFromGeoKeys(const std::vector<uint8_t>& payload);

/// The file's units: the WKT record (VLR or EVLR) when it gives a known horizontal unit or a
/// geographic CS, else the GeoTIFF keys when they do, else a WKT naming another unit (Unknown,
/// source "WKT"), else none.
CoordinateUnits unitsOfFile(const vx::las::LasFile& file);

} // namespace vx::app
