// Length units read from OGC WKT and GeoTIFF key payloads, from the records of a file, and from
// the --units option.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "CoordinateUnits.h"
#include "ParameterTable.h"
#include "ProfileTestFiles.h"

#include <gtest/gtest.h>

using namespace vx::app;
using profiletest::geoKeys;
using profiletest::textPayload;

namespace {

const char* kUtmWkt1 =
    R"w(PROJCS["WGS 84 / UTM zone 42N",GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],)w"
    R"w(PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],PROJECTION["Transverse_Mercator"],)w"
    R"w(PARAMETER["false_easting",500000],UNIT["metre",1,AUTHORITY["EPSG","9001"]],AXIS["Easting",EAST]])w";

const char* kStatePlaneEsri =
    R"w(PROJCS["NAD_1983_StatePlane_New_York_Long_Island_FIPS_3104_Feet",GEOGCS["GCS_North_American_1983",)w"
    R"w(DATUM["D_North_American_1983",SPHEROID["GRS_1980",6378137.0,298.257222101]],PRIMEM["Greenwich",0.0],)w"
    R"w(UNIT["Degree",0.0174532925199433]],PROJECTION["Lambert_Conformal_Conic"],)w"
    R"w(PARAMETER["False_Easting",984250.0],UNIT["Foot_US",0.3048006096012192]])w";

// A WKT2 projected CRS: the conversion's parameters carry metres, the axes international feet.
const char* kWkt2Feet =
    R"w(PROJCRS["Some grid (ft)",BASEGEOGCRS["NAD83",DATUM["North American Datum 1983",)w"
    R"w(ELLIPSOID["GRS 1980",6378137,298.257222101,LENGTHUNIT["metre",1]]],)w"
    R"w(ANGLEUNIT["degree",0.0174532925199433]],CONVERSION["zone",METHOD["Transverse Mercator"],)w"
    R"w(PARAMETER["False easting",500000,LENGTHUNIT["metre",1]]],CS[Cartesian,2],)w"
    R"w(AXIS["easting (X)",east,ORDER[1],LENGTHUNIT["foot",0.3048]],)w"
    R"w(AXIS["northing (Y)",north,ORDER[2],LENGTHUNIT["foot",0.3048]]])w";

const char* kCompoundWkt1 =
    R"w(COMPD_CS["L93 + NGF-IGN69",PROJCS["RGF93 / Lambert-93",GEOGCS["RGF93",DATUM["RGF93",)w"
    R"w(SPHEROID["GRS 1980",6378137,298.257222101]],PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],)w"
    R"w(PROJECTION["Lambert_Conformal_Conic_2SP"],UNIT["metre",1]],)w"
    R"w(VERT_CS["NAVD88 height (ftUS)",VERT_DATUM["North American Vertical Datum 1988",2005],)w"
    R"w(UNIT["US survey foot",0.304800609601219],AXIS["Up",UP]]])w";

const char* kGeographicWkt1 =
    R"w(GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],PRIMEM["Greenwich",0],)w"
    R"w(UNIT["degree",0.0174532925199433]])w";

} // namespace

TEST(CoordinateUnits, UnitNamesAndFactors)
{
    EXPECT_EQ(unitFromNameAndFactor("metre", 1), LengthUnit::Metre);
    EXPECT_EQ(unitFromNameAndFactor("Meter", 0), LengthUnit::Metre);
    EXPECT_EQ(unitFromNameAndFactor("Foot_US", 0), LengthUnit::UsFoot);
    EXPECT_EQ(unitFromNameAndFactor("US survey foot", 0), LengthUnit::UsFoot);
    EXPECT_EQ(unitFromNameAndFactor("foot", 0), LengthUnit::Foot);
    EXPECT_EQ(unitFromNameAndFactor("Foot (International)", 0), LengthUnit::Foot);
    // The factor decides over a misleading name.
    EXPECT_EQ(unitFromNameAndFactor("foot", 0.3048006096), LengthUnit::UsFoot);
    EXPECT_EQ(unitFromNameAndFactor("unnamed", 0.3048), LengthUnit::Foot);
    EXPECT_EQ(unitFromNameAndFactor("kilometre", 1000), LengthUnit::Unknown);
    EXPECT_DOUBLE_EQ(metresPer(LengthUnit::Foot), 0.3048);
    EXPECT_NEAR(metresPer(LengthUnit::UsFoot), 0.3048006096, 1e-10);
    EXPECT_DOUBLE_EQ(metresPer(LengthUnit::Unknown), 1.0);
}

TEST(CoordinateUnits, ProjectedWkt1InMetres)
{
    const CoordinateUnits u = unitsFromWkt(kUtmWkt1);
    EXPECT_EQ(u.horizontal, LengthUnit::Metre);
    EXPECT_EQ(u.vertical, LengthUnit::Metre) << "without a vertical CS the vertical unit follows";
    EXPECT_FALSE(u.geographic);
    EXPECT_EQ(u.source, "WKT");
}

TEST(CoordinateUnits, EsriWktInUsFeet)
{
    const CoordinateUnits u = unitsFromWkt(kStatePlaneEsri);
    EXPECT_EQ(u.horizontal, LengthUnit::UsFoot);
    EXPECT_EQ(u.vertical, LengthUnit::UsFoot);
}

TEST(CoordinateUnits, Wkt2TakesTheAxisUnitNotTheConversionParameters)
{
    const CoordinateUnits u = unitsFromWkt(kWkt2Feet);
    EXPECT_EQ(u.horizontal, LengthUnit::Foot);
    EXPECT_EQ(u.source, "WKT");
}

TEST(CoordinateUnits, CompoundWktHasItsOwnVerticalUnit)
{
    const CoordinateUnits u = unitsFromWkt(kCompoundWkt1);
    EXPECT_EQ(u.horizontal, LengthUnit::Metre);
    EXPECT_EQ(u.vertical, LengthUnit::UsFoot);
}

TEST(CoordinateUnits, GeographicWktIsMarked)
{
    const CoordinateUnits u = unitsFromWkt(kGeographicWkt1);
    EXPECT_TRUE(u.geographic);
    EXPECT_EQ(u.horizontal, LengthUnit::Unknown);
    EXPECT_EQ(u.source, "WKT");
}

TEST(CoordinateUnits, MalformedOrEmptyWktGivesNothing)
{
    for (const std::string& bad :
         {std::string(""), std::string("''"), std::string("PROJCS[\"x\",UNIT[\"metre\",1]"),
          std::string("PROJCS[\"unterminated,UNIT[\"metre\",1]]"),
          std::string(200, '[') + std::string(200, ']'), std::string("PROJCS[\"x\"] trailing")}) {
        SCOPED_TRACE(bad);
        const CoordinateUnits u = unitsFromWkt(bad);
        EXPECT_EQ(u.horizontal, LengthUnit::Unknown);
        EXPECT_FALSE(u.geographic);
        EXPECT_EQ(u.source, "none");
    }
    // Nesting far past the parser's depth limit is refused, not followed.
    std::string deep;
    for (int k = 0; k < 100000; ++k)
        deep += "A[";
    EXPECT_EQ(unitsFromWkt(deep).source, "none");
}

TEST(CoordinateUnits, GeoKeysLinearUnits)
{
    EXPECT_EQ(unitsFromGeoKeys(geoKeys({{1024, 1}, {3076, 9001}})).horizontal, LengthUnit::Metre);
    EXPECT_EQ(unitsFromGeoKeys(geoKeys({{1024, 1}, {3076, 9002}})).horizontal, LengthUnit::Foot);
    const CoordinateUnits u = unitsFromGeoKeys(geoKeys({{1024, 1}, {3076, 9003}, {4099, 9001}}));
    EXPECT_EQ(u.horizontal, LengthUnit::UsFoot);
    EXPECT_EQ(u.vertical, LengthUnit::Metre);
    EXPECT_EQ(u.source, "GeoTIFF keys");
    // Without a vertical key the vertical unit follows the horizontal one.
    EXPECT_EQ(unitsFromGeoKeys(geoKeys({{3076, 9002}})).vertical, LengthUnit::Foot);
    EXPECT_EQ(unitsFromGeoKeys(geoKeys({{3076, 9001}, {4096, 6360}})).vertical, LengthUnit::UsFoot);
}

TEST(CoordinateUnits, GeoKeysWellKnownProjectedCodes)
{
    for (uint16_t code : {32601, 32632, 32660, 32701, 32760, 2154, 25832, 27700})
        EXPECT_EQ(unitsFromGeoKeys(geoKeys({{1024, 1}, {3072, code}})).horizontal, LengthUnit::Metre) << code;
    // NAD83 / New York Long Island (ftUS) is not in the list: unknown, not guessed.
    const CoordinateUnits u = unitsFromGeoKeys(geoKeys({{1024, 1}, {3072, 2263}}));
    EXPECT_EQ(u.horizontal, LengthUnit::Unknown);
    EXPECT_EQ(u.source, "none");
    // The explicit unit key wins over the code.
    EXPECT_EQ(unitsFromGeoKeys(geoKeys({{3072, 32632}, {3076, 9002}})).horizontal, LengthUnit::Foot);
}

TEST(CoordinateUnits, GeoKeysGeographicAndBroken)
{
    const CoordinateUnits g = unitsFromGeoKeys(geoKeys({{1024, 2}, {2048, 4326}}));
    EXPECT_TRUE(g.geographic);
    EXPECT_EQ(g.source, "GeoTIFF keys");
    auto cut = geoKeys({{1024, 1}, {3076, 9001}});
    cut.resize(cut.size() - 2);
    EXPECT_EQ(unitsFromGeoKeys(cut).source, "none");
    EXPECT_EQ(unitsFromGeoKeys({1, 0}).source, "none");
    // A value held in another tag (location != 0) is not a short and is not read.
    auto elsewhere = geoKeys({{3076, 9002}});
    elsewhere[10] = 0xB0; // TIFFTagLocation of the key
    elsewhere[11] = 0x87;
    EXPECT_EQ(unitsFromGeoKeys(elsewhere).horizontal, LengthUnit::Unknown);
}

TEST(CoordinateUnits, OfFileWktFirstThenGeoKeys)
{
    const auto plain = profiletest::gridFile(3, 1.0);
    EXPECT_EQ(unitsOfFile(plain).source, "none");

    const auto keys = profiletest::withVlr(plain, "LASF_Projection", 34735, geoKeys({{3076, 9002}}));
    EXPECT_EQ(unitsOfFile(keys).horizontal, LengthUnit::Foot);
    EXPECT_EQ(unitsOfFile(keys).source, "GeoTIFF keys");

    const auto both = profiletest::withVlr(keys, "LASF_Projection", 2112, textPayload(kUtmWkt1));
    EXPECT_EQ(unitsOfFile(both).horizontal, LengthUnit::Metre);
    EXPECT_EQ(unitsOfFile(both).source, "WKT");

    // An empty WKT record leaves the GeoTIFF keys to decide.
    const auto emptyWkt = profiletest::withVlr(keys, "LASF_Projection", 2112, textPayload("''"));
    EXPECT_EQ(unitsOfFile(emptyWkt).source, "GeoTIFF keys");

    // A WKT in kilometres leaves the unit to the GeoTIFF keys, and is reported when there are none.
    const std::string km =
        R"w(PROJCS["km grid",GEOGCS["x",UNIT["degree",0.0174532925199433]],UNIT["kilometre",1000]])w";
    const auto kmAndKeys = profiletest::withVlr(keys, "LASF_Projection", 2112, textPayload(km));
    EXPECT_EQ(unitsOfFile(kmAndKeys).source, "GeoTIFF keys");
    const auto kmOnly = profiletest::withVlr(plain, "LASF_Projection", 2112, textPayload(km));
    EXPECT_EQ(unitsOfFile(kmOnly).source, "WKT");
    EXPECT_EQ(unitsOfFile(kmOnly).horizontal, LengthUnit::Unknown);

    // Another user's record 2112 is not a coordinate system.
    const auto foreign = profiletest::withVlr(plain, "someone", 2112, textPayload(kUtmWkt1));
    EXPECT_EQ(unitsOfFile(foreign).source, "none");
}

TEST(CoordinateUnits, ParseUnitsOption)
{
    for (const char* t : {"metres", "meters", "m", "Metre"})
        EXPECT_EQ(parseUnits(t), LengthUnit::Metre) << t;
    for (const char* t : {"feet", "ft", "FOOT"})
        EXPECT_EQ(parseUnits(t), LengthUnit::Foot) << t;
    for (const char* t : {"us-feet", "us-ft", "ftUS"})
        EXPECT_EQ(parseUnits(t), LengthUnit::UsFoot) << t;
    for (const char* t : {"", "yards", "metres ", "us feet"})
        EXPECT_THROW(parseUnits(t), UsageError) << t;
}

#endif
