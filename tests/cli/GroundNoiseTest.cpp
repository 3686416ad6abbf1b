// The ground noise of the data profile on generated files of known noise, its line in the
// profile, and the ground distance the pipeline derives from it.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "DataProfile.h"
#include "GroundNoise.h"
#include "Presets.h"
#include "ProfileTestFiles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace vx::app;

namespace {

/// 200 x 200 single returns 0.5 m apart on a plane rising 0.2 per metre, with heights scattered
/// by a deterministic sequence of standard deviation `noise` (a sum of two uniform steps).
vx::las::LasFile noisyPlane(double noise)
{
    auto f = profiletest::emptyFile();
    unsigned state = 12345;
    auto uniform = [&state] {
        state = state * 1664525u + 1013904223u;
        return (state >> 8) / 16777216.0 - 0.5;
    };
    // The sum of two uniforms on [-0.5, 0.5] has a standard deviation of 0.408.
    for (int i = 0; i < 200; ++i)
        for (int j = 0; j < 200; ++j)
            profiletest::addPoint(f, 500000 + 0.5 * i, 5000000 + 0.5 * j,
                                  10 + 0.1 * i + noise / 0.408 * (uniform() + uniform()));
    return f;
}

double derivedGroundDistance(double noiseMetres)
{
    DataScale scale;
    scale.spacing = scale.lastSpacing = 0.5;
    scale.groundNoise = noiseMetres;
    for (const auto& d : deriveParameters(presetNamed("general"), scale))
        if (std::string(d.name) == "TerrainGroundDistance")
            return d.value;
    return -1;
}

} // namespace

TEST(GroundNoise, FollowsTheScatterOfTheReturnsAndNotTheSlope)
{
    for (double noise : {0.02, 0.05, 0.1}) {
        SCOPED_TRACE(noise);
        // Cells of 1.5 m hold nine returns; a band of 0.5 m holds nearly all of them up to
        // 0.1 m of noise.
        const double measured = groundNoise(noisyPlane(noise), 1.5, 0.5);
        EXPECT_GT(measured, 0.6 * noise);
        EXPECT_LT(measured, 1.2 * noise);
    }
}

TEST(GroundNoise, TheProfileShowsItWithTheTerrainSlope)
{
    const DataProfile p = profileLas(noisyPlane(0.05), LengthUnit::Metre);
    EXPECT_GT(p.groundNoise, 0.03);
    EXPECT_LT(p.groundNoise, 0.06);
    EXPECT_NEAR(p.terrainSlope, 0.2, 0.05);
    const std::string text = formatProfile(p);
    EXPECT_NE(text.find("  Terrain slope    0.2"), std::string::npos) << text;
    EXPECT_NE(text.find("  Ground noise     0.0"), std::string::npos) << text;
    EXPECT_NE(text.find(" m (scatter of the lowest returns"), std::string::npos) << text;
    auto few = profiletest::emptyFile();
    for (int k = 0; k < 40; ++k)
        profiletest::addPoint(few, 500000 + 0.1 * k, 5000000, 10);
    EXPECT_NE(formatProfile(profileLas(few, LengthUnit::Metre)).find("Ground noise     unknown"),
              std::string::npos);
}

TEST(GroundNoise, UnknownWithTooFewCells)
{
    auto f = profiletest::emptyFile();
    for (int i = 0; i < 40; ++i)
        profiletest::addPoint(f, 500000 + 0.1 * i, 5000000, 10);
    EXPECT_EQ(groundNoise(f, 1.5, 0.5), 0.0);
    EXPECT_EQ(groundNoise(profiletest::emptyFile(), 1.5, 0.5), 0.0);
    EXPECT_EQ(groundNoise(noisyPlane(0.05), 0.0, 0.5), 0.0);
}

TEST(GroundNoise, SetsTheGroundDistanceWithinItsBounds)
{
    EXPECT_DOUBLE_EQ(derivedGroundDistance(0.0), 0.15);   // unknown
    EXPECT_DOUBLE_EQ(derivedGroundDistance(0.02), 0.15);  // a modern sensor
    EXPECT_NEAR(derivedGroundDistance(0.08), 0.32, 1e-9); // four noise widths
    EXPECT_DOUBLE_EQ(derivedGroundDistance(0.3), 0.5);    // capped
}

#endif
