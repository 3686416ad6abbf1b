// The data profile on generated files of known spacing, units and noise.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "DataProfile.h"
#include "ProfileTestFiles.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <ctime>

using namespace vx::app;
using profiletest::addPoint;
using profiletest::gridFile;

namespace {

bool hasWarning(const DataProfile& p, const std::string& part)
{
    for (const auto& w : p.warnings)
        if (w.find(part) != std::string::npos)
            return true;
    return false;
}

} // namespace

TEST(DataProfile, RegularGridDensityAndSpacing)
{
    // 200 x 200 points 0.5 m apart: 4 pts/m², spacing 0.5 m, area 99.5² m².
    const auto f = gridFile(200, 0.5);
    const DataProfile p = profileLas(f, LengthUnit::Metre);
    EXPECT_EQ(p.points, 40000u);
    EXPECT_EQ(p.lastReturns, 40000u);
    EXPECT_NEAR(p.density, 4.0, 0.4);
    EXPECT_NEAR(p.lastDensity, 4.0, 0.4);
    EXPECT_NEAR(p.spacing, 0.5, 0.05);
    EXPECT_NEAR(p.occupiedArea, 99.5 * 99.5, 0.1 * 99.5 * 99.5);
    EXPECT_DOUBLE_EQ(p.returnsPerPulse, 1.0);
    EXPECT_DOUBLE_EQ(p.minX, 500000);
    EXPECT_DOUBLE_EQ(p.maxY, 5000000 + 99.5);
    EXPECT_EQ(p.unitSource, "--units");
    EXPECT_EQ(p.isolatedPoints, 0u);
    EXPECT_TRUE(p.warnings.empty()) << p.warnings.front();
}

TEST(DataProfile, DensityHoldsForOtherSpacings)
{
    for (double spacing : {0.2, 1.0, 2.0}) {
        SCOPED_TRACE(spacing);
        const DataProfile p = profileLas(gridFile(120, spacing), LengthUnit::Metre);
        EXPECT_NEAR(p.density * spacing * spacing, 1.0, 0.1);
        EXPECT_NEAR(p.spacing / spacing, 1.0, 0.1);
    }
}

TEST(DataProfile, LastReturnsAndReturnsPerPulse)
{
    // Three returns per pulse, pulses 1 m apart.
    const DataProfile p = profileLas(gridFile(100, 1.0, 3), LengthUnit::Metre);
    EXPECT_EQ(p.points, 30000u);
    EXPECT_EQ(p.lastReturns, 10000u);
    EXPECT_DOUBLE_EQ(p.returnsPerPulse, 3.0);
    EXPECT_NEAR(p.density, 3.0, 0.3);
    EXPECT_NEAR(p.lastDensity, 1.0, 0.1);
    EXPECT_NEAR(p.lastSpacing, 1.0, 0.1);
}

TEST(DataProfile, FeetAreConvertedToMetres)
{
    // 1 point per square foot is 10.76 per square metre.
    const DataProfile ft = profileLas(gridFile(100, 1.0), LengthUnit::Foot);
    EXPECT_NEAR(ft.density, 1 / (0.3048 * 0.3048), 1.0);
    EXPECT_NEAR(ft.spacing, 0.3048, 0.03);
    EXPECT_DOUBLE_EQ(ft.metresPerUnit, 0.3048);
    EXPECT_EQ(ft.horizontalUnit, LengthUnit::Foot);
    EXPECT_EQ(ft.verticalUnit, LengthUnit::Foot);
    const DataProfile us = profileLas(gridFile(100, 1.0), LengthUnit::UsFoot);
    EXPECT_NEAR(us.metresPerUnit, 0.3048006096, 1e-9);
}

TEST(DataProfile, UnitsComeFromTheFileUnlessOverridden)
{
    const auto f = profiletest::withVlr(gridFile(50, 1.0), "LASF_Projection", 34735,
                                        profiletest::geoKeys({{1024, 1}, {3076, 9002}}));
    const DataProfile fromFile = profileLas(f, LengthUnit::Unknown);
    EXPECT_EQ(fromFile.horizontalUnit, LengthUnit::Foot);
    EXPECT_EQ(fromFile.unitSource, "GeoTIFF keys");
    EXPECT_NEAR(fromFile.density, 1 / (0.3048 * 0.3048), 1.0);
    const DataProfile overridden = profileLas(f, LengthUnit::Metre);
    EXPECT_EQ(overridden.horizontalUnit, LengthUnit::Metre);
    EXPECT_EQ(overridden.unitSource, "--units");
    EXPECT_NEAR(overridden.density, 1.0, 0.1);
}

TEST(DataProfile, UnknownUnitsAreReadAsMetresWithAWarning)
{
    const DataProfile p = profileLas(gridFile(100, 0.5), LengthUnit::Unknown);
    EXPECT_EQ(p.horizontalUnit, LengthUnit::Unknown);
    EXPECT_EQ(p.unitSource, "none");
    EXPECT_DOUBLE_EQ(p.metresPerUnit, 1.0);
    EXPECT_NEAR(p.density, 4.0, 0.4);
    EXPECT_FALSE(p.unitsLookLikeFeet);
    ASSERT_EQ(p.warnings.size(), 1u);
    EXPECT_NE(p.warnings[0].find("no length unit"), std::string::npos);
    EXPECT_NE(p.warnings[0].find("--units"), std::string::npos);
}

TEST(DataProfile, AnUnusualUnitOfTheFileIsNamedInTheWarning)
{
    const char* km =
        R"w(PROJCS["grid in km",GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],)w"
        R"w(PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]],UNIT["kilometre",1000]])w";
    const auto f =
        profiletest::withVlr(gridFile(30, 1.0), "LASF_Projection", 2112, profiletest::textPayload(km));
    const DataProfile p = profileLas(f, LengthUnit::Unknown);
    EXPECT_EQ(p.horizontalUnit, LengthUnit::Unknown);
    EXPECT_TRUE(hasWarning(p, "coordinate system (WKT) has a length unit other than metre or foot"));
}

TEST(DataProfile, UnknownUnitsThatLookLikeFeet)
{
    // Sparse (1.5 units apart) over about 200 units of relief.
    const DataProfile sparseSteep = profileLas(gridFile(100, 1.5, 1, 2.0), LengthUnit::Unknown);
    EXPECT_TRUE(sparseSteep.unitsLookLikeFeet);
    EXPECT_TRUE(hasWarning(sparseSteep, "look like feet"));
    // Heights above any land surface in metres.
    EXPECT_FALSE(profileLas(gridFile(50, 0.5, 1, 2.0), LengthUnit::Unknown).unitsLookLikeFeet);
    auto mountain = profiletest::emptyFile();
    for (int i = 0; i < 50; ++i)
        for (int j = 0; j < 50; ++j)
            addPoint(mountain, 500000 + i * 0.5, 5000000 + j * 0.5, 12000 + i * 0.1);
    const DataProfile m = profileLas(mountain, LengthUnit::Unknown);
    EXPECT_TRUE(m.unitsLookLikeFeet);
    EXPECT_TRUE(hasWarning(m, "above any land surface"));
    // Known units are never second-guessed.
    EXPECT_FALSE(profileLas(mountain, LengthUnit::Metre).unitsLookLikeFeet);
    // Sparse but flat is not enough.
    EXPECT_FALSE(profileLas(gridFile(100, 1.5), LengthUnit::Unknown).unitsLookLikeFeet);
}

TEST(DataProfile, AStrayPointFarAwayChangesNeitherAreaNorDensity)
{
    auto f = gridFile(200, 0.5);
    const DataProfile clean = profileLas(f, LengthUnit::Metre);
    addPoint(f, 500000 + 1.0e6, 5000000 + 1.0e6, 10); // 1414 km away
    const auto start = std::chrono::steady_clock::now();
    const DataProfile stray = profileLas(f, LengthUnit::Metre);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_NEAR(stray.occupiedArea, clean.occupiedArea, 0.01 * clean.occupiedArea);
    EXPECT_NEAR(stray.density, clean.density, 0.01 * clean.density);
    EXPECT_DOUBLE_EQ(stray.maxX, 500000 + 1.0e6);
    EXPECT_EQ(stray.isolatedPoints, clean.isolatedPoints + 1);
    // A grid by bounding box would hold 8e12 cells; the hash holds the occupied ones only.
    EXPECT_LT(seconds, 2.0);
}

TEST(DataProfile, NoiseSuspicion)
{
    auto f = gridFile(100, 1.0);
    addPoint(f, 500050.3, 5000050.3, 400);  // a bird, far above
    addPoint(f, 500020.7, 5000020.7, -300); // a multipath point, far below
    addPoint(f, 500060.2, 5000060.2, 10.0); // inside the cloud: not suspect
    const DataProfile p = profileLas(f, LengthUnit::Metre);
    EXPECT_EQ(p.isolatedPoints, 2u);
    EXPECT_DOUBLE_EQ(p.heightP01, 10.0);
    EXPECT_DOUBLE_EQ(p.heightP99, 10.0);
    EXPECT_FALSE(hasWarning(p, "noisy"));

    // Isolation alone, inside the height range: a sparse scatter around a dense patch.
    auto scattered = gridFile(100, 0.5);
    for (int k = 0; k < 300; ++k)
        addPoint(scattered, 500000 + 200 + (k % 20) * 40.0, 5000000 + (k / 20) * 40.0, 10);
    const DataProfile s = profileLas(scattered, LengthUnit::Metre);
    EXPECT_EQ(s.isolatedPoints, 300u);
    EXPECT_TRUE(hasWarning(s, "noisy"));
}

TEST(DataProfile, LowDensityIsWarned)
{
    const DataProfile p = profileLas(gridFile(150, 5.0), LengthUnit::Metre); // 0.04 pts/m²
    EXPECT_NEAR(p.lastDensity, 0.04, 0.004);
    EXPECT_TRUE(hasWarning(p, "below 0.1 pts/m²"));
    // 0.25 pts/m² is enough.
    EXPECT_FALSE(hasWarning(profileLas(gridFile(60, 2.0), LengthUnit::Metre), "below 0.1"));
}

TEST(DataProfile, GeographicCoordinatesAreWarned)
{
    const char* wgs84 = R"w(GEOGCS["WGS 84",DATUM["WGS_1984",SPHEROID["WGS 84",6378137,298.257223563]],)w"
                        R"w(PRIMEM["Greenwich",0],UNIT["degree",0.0174532925199433]])w";
    const auto f =
        profiletest::withVlr(gridFile(30, 1.0), "LASF_Projection", 2112, profiletest::textPayload(wgs84));
    const DataProfile p = profileLas(f, LengthUnit::Unknown);
    EXPECT_TRUE(p.geographic);
    EXPECT_TRUE(hasWarning(p, "geographic"));
    EXPECT_FALSE(hasWarning(p, "no length unit"));
    // Degrees cannot be set against heights in metres: no point counts as isolated.
    EXPECT_EQ(p.isolatedPoints, 0u);
    EXPECT_FALSE(hasWarning(p, "noisy"));
    EXPECT_NE(formatProfile(p).find("degrees (geographic, WKT)"), std::string::npos);
}

TEST(DataProfile, EmptyAndOnePointFilesWarnInsteadOfFailing)
{
    const DataProfile empty = profileLas(profiletest::emptyFile(), LengthUnit::Metre);
    EXPECT_EQ(empty.points, 0u);
    EXPECT_TRUE(hasWarning(empty, "no points"));
    EXPECT_NE(formatProfile(empty).find("Points           none"), std::string::npos);

    auto one = profiletest::emptyFile();
    addPoint(one, 500000, 5000000, 5);
    const DataProfile p = profileLas(one, LengthUnit::Metre);
    EXPECT_EQ(p.points, 1u);
    EXPECT_EQ(p.density, 0.0);
    EXPECT_TRUE(hasWarning(p, "too few points"));
    EXPECT_NE(formatProfile(p).find("n/a (too few points)"), std::string::npos);

    // Many points on one spot have no area either.
    auto spot = profiletest::emptyFile();
    for (int k = 0; k < 100; ++k)
        addPoint(spot, 500000, 5000000, 5 + k * 0.01);
    EXPECT_TRUE(hasWarning(profileLas(spot, LengthUnit::Metre), "too few points"));
}

TEST(DataProfile, FormattedBlock)
{
    const DataProfile p = profileLas(gridFile(100, 1.0, 2), LengthUnit::Metre);
    const std::string text = formatProfile(p);
    EXPECT_EQ(text.rfind("Profile\n", 0), 0u);
    EXPECT_NE(text.find("  Units            metre horizontal and vertical (--units)\n"), std::string::npos);
    EXPECT_NE(text.find("  Returns/pulse    2.00\n"), std::string::npos);
    EXPECT_NE(text.find("  Last returns     10,000, 1.0"), std::string::npos);
    const std::string unknown = formatProfile(profileLas(gridFile(100, 1.0), LengthUnit::Unknown));
    EXPECT_NE(unknown.find("pts/unit²"), std::string::npos);
    EXPECT_NE(unknown.find("unknown (read as metres)"), std::string::npos);
    // The grid's intensities are all 0: the water step has nothing to read.
    EXPECT_NE(text.find("  Intensities      all the same: no water is searched"), std::string::npos) << text;
    auto lit = gridFile(20, 1.0);
    vx::las::NewPoint bright;
    bright.x = 500000.5, bright.y = 5000000.5, bright.z = 10, bright.intensity = 900;
    lit.addPoint(bright);
    EXPECT_NE(formatProfile(profileLas(lit, LengthUnit::Metre)).find("  Intensities      recorded\n"),
              std::string::npos);
}

TEST(DataProfile, AMillionPointsProfileQuickly)
{
    auto f = profiletest::emptyFile();
    f.reserve(1000000);
    for (int i = 0; i < 1000; ++i)
        for (int j = 0; j < 1000; ++j)
            addPoint(f, 500000 + i * 0.4 + (j % 7) * 0.03, 5000000 + j * 0.4 + (i % 5) * 0.05,
                     10 + std::sin(i * 0.01) * 5);
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t cpuStart = std::clock();
    const DataProfile p = profileLas(f, LengthUnit::Metre);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    RecordProperty("profile_seconds", std::to_string(seconds));
    RecordProperty("profile_cpu_seconds", std::to_string(double(std::clock() - cpuStart) / CLOCKS_PER_SEC));
    EXPECT_NEAR(p.density, 6.25, 0.6);
    // Well under a second on one core; the bound leaves room for a loaded test machine.
    EXPECT_LT(seconds, 3.0);
}

#endif
