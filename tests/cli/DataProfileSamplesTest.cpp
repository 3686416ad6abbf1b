// The data profile of the shared sample files against what their README states: units from their
// coordinate system records, densities near the stated ones.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "DataProfile.h"
#include "common/TestSupport.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

using namespace vx::app;

namespace {

struct Expected {
    const char* file;
    double density;    ///< pts/m² the README states (per unit² where the unit is unknown)
    const char* units; ///< unit source
    std::size_t points;
};

DataProfile profileOf(const std::string& name, LengthUnit units = LengthUnit::Unknown)
{
    return profileLas(vx::las::LasFile::read(vxtest::dataFile(name)), units);
}

} // namespace

TEST(DataProfileSamples, DensitiesAndUnitsMatchTheReadme)
{
    // The stated densities are rounded figures over the whole extent; the profile measures over
    // the occupied area, so it may read somewhat higher where the extent holds empty ground.
    const Expected all[] = {{"ign_hd_0382_6565_decimated_cropped.las", 0.3, "WKT", 218731},
                            {"sample_c.las", 4, "none", 14408},
                            {"warsaw_small.las", 3, "none", 3000},
                            {"ign_hd_corse.las", 14, "WKT", 30392},
                            {"ign_hd_buildings_870000_6618000.las", 11, "WKT", 70840},
                            {"hexbin_crop.las", 1, "WKT", 38367}};
    for (const Expected& e : all) {
        SCOPED_TRACE(e.file);
        const DataProfile p = profileOf(e.file);
        EXPECT_EQ(p.points, e.points);
        EXPECT_EQ(p.unitSource, e.units);
        EXPECT_GT(p.density, 0.6 * e.density);
        EXPECT_LT(p.density, 1.6 * e.density);
        EXPECT_GT(p.lastDensity, 0);
        EXPECT_LE(p.lastDensity, p.density);
        EXPECT_GE(p.returnsPerPulse, 1.0);
        EXPECT_LE(p.heightP01, p.heightP99);
        EXPECT_GE(p.heightP01, p.minZ);
        EXPECT_LE(p.heightP99, p.maxZ);
        // Real survey tiles: few suspects, never most of the file.
        EXPECT_LT(p.isolatedPoints, p.points / 20);
        if (std::string(e.units) == "WKT") {
            EXPECT_EQ(p.horizontalUnit, LengthUnit::Metre);
            EXPECT_EQ(p.verticalUnit, LengthUnit::Metre);
            EXPECT_FALSE(p.geographic);
        } else {
            EXPECT_EQ(p.horizontalUnit, LengthUnit::Unknown);
        }
    }
}

TEST(DataProfileSamples, OccupiedAreaLiesWithinTheBounds)
{
    // warsaw_small (33 x 33 m) and sample_c (83 x 75 units) are cropped to polygons that cover
    // about half to three quarters of their bounding boxes; ign_hd_0382 (750 x 1000 m) lies on a
    // coast where the sea returns nothing.
    for (const char* name : {"warsaw_small.las", "sample_c.las", "ign_hd_0382_6565_decimated_cropped.las"}) {
        SCOPED_TRACE(name);
        const DataProfile p = profileOf(name);
        const double box = (p.maxX - p.minX) * (p.maxY - p.minY);
        EXPECT_LT(p.occupiedArea, box);
        EXPECT_GT(p.occupiedArea, 0.35 * box);
        // The density is the points over that area.
        EXPECT_NEAR(p.density * p.occupiedArea, static_cast<double>(p.points), 1e-6 * p.points);
    }
}

TEST(DataProfileSamples, WarningsOfTheSamples)
{
    // Units named by the file: no unit warning.
    EXPECT_TRUE(profileOf("ign_hd_corse.las").warnings.empty());
    // warsaw_small's WKT record is empty: unknown units, read as metres.
    const DataProfile w = profileOf("warsaw_small.las");
    ASSERT_EQ(w.warnings.size(), 1u);
    EXPECT_NE(w.warnings[0].find("no length unit"), std::string::npos);
    // Confirming the unit silences it.
    EXPECT_TRUE(profileOf("warsaw_small.las", LengthUnit::Metre).warnings.empty());
}

TEST(DataProfileSamples, HexbinHeightsAreMountainTerrain)
{
    // About 3,100 m above sea level.
    const DataProfile p = profileOf("hexbin_crop.las");
    EXPECT_GT(p.heightP01, 2900);
    EXPECT_LT(p.heightP99, 3400);
}

#endif
