// The terrain slope of the data profile: slopes of the terrain count, walls, terrace steps and
// roofs do not; and the preset that "auto" takes from it and from the returns per pulse.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "Presets.h"
#include "ProfileTestFiles.h"
#include "TerrainSteepness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

using namespace vx::app;

namespace {

/// Single returns 1 m apart over 200 m x 200 m at the height `z(x, y)` (metres from the corner).
vx::las::LasFile surface(const std::function<double(double, double)>& z)
{
    auto f = profiletest::emptyFile();
    for (int i = 0; i < 200; ++i)
        for (int j = 0; j < 200; ++j)
            profiletest::addPoint(f, 500000 + i, 5000000 + j, z(i, j));
    return f;
}

constexpr double kCell = 5.0;

} // namespace

TEST(TerrainSteepness, FollowsASlopeInAnyDirection)
{
    EXPECT_NEAR(terrainSteepness(surface([](double x, double) { return 0.3 * x; }), kCell), 0.3, 0.01);
    // Rising 0.3 along both axes: 0.42 along the fall line.
    EXPECT_NEAR(terrainSteepness(surface([](double x, double y) { return 0.3 * (x + y); }), kCell), 0.42,
                0.01);
    EXPECT_NEAR(terrainSteepness(surface([](double, double y) { return 100 - 0.6 * y; }), kCell), 0.6, 0.01);
}

TEST(TerrainSteepness, WallsAndTerraceStepsAreNotSlopes)
{
    // Blocks 20 m wide and 12 m tall over a quarter of level ground: at every block edge the
    // lowest points jump by 12 m from one cell to the next, a rise of 2.4 per run.
    const auto blocks = surface([](double x, double y) {
        return (static_cast<int>(x) % 40 < 20 && static_cast<int>(y) % 40 < 20) ? 12.0 : 0.0;
    });
    EXPECT_LT(terrainSteepness(blocks, kCell), 0.01);
    // Level terraces with a 1.5 m step every 12 m.
    const auto terraces = surface([](double x, double) { return 1.5 * std::floor(x / 12); });
    EXPECT_LT(terrainSteepness(terraces, kCell), 0.05);
    // Gable roofs 10 m wide: a rise and a fall on either side of each ridge.
    const auto gables = surface([](double x, double) {
        const double along = std::fmod(x, 10.0);
        return 0.6 * std::min(along, 10.0 - along);
    });
    EXPECT_LT(terrainSteepness(gables, kCell), 0.01);
}

TEST(TerrainSteepness, ASteepValleySideOverATenthOfTheTerrainCounts)
{
    // Level but for the last 30 m of 200, rising at 0.6: the median is level, the rules must not
    // be.
    const auto valley = surface([](double x, double) { return x < 170 ? 0.0 : 0.6 * (x - 170); });
    EXPECT_GT(terrainSteepness(valley, kCell), 0.5);
}

TEST(TerrainSteepness, FewOrNoCellsGiveZero)
{
    auto few = profiletest::emptyFile();
    EXPECT_EQ(terrainSteepness(few, kCell), 0);
    profiletest::addPoint(few, 500000, 5000000, 3);
    EXPECT_EQ(terrainSteepness(few, kCell), 0);
    EXPECT_EQ(terrainSteepness(few, 0), 0);
}

TEST(AutoPreset, ReadsTheSlopeAndTheCanopy)
{
    DataScale scale;
    scale.spacing = scale.lastSpacing = 0.5;
    auto pick = [&](double slope, double returns) {
        scale.terrainSlope = slope;
        scale.returnsPerPulse = returns;
        return std::string(presetFor(scale).name);
    };
    EXPECT_EQ(pick(0.05, 1.1), "flat");
    EXPECT_EQ(pick(0.3, 1.1), "general");
    EXPECT_EQ(pick(0.4, 1.1), "general");
    EXPECT_EQ(pick(0.5, 1.1), "mountain");
    // Under a closed canopy the flat preset's slope limit cuts ground between the few ground
    // returns; steep terrain still takes the mountain preset.
    EXPECT_EQ(pick(0.05, 1.7), "forest");
    EXPECT_EQ(pick(0.5, 1.7), "mountain");
    // Files without return numbers read as one return per pulse.
    EXPECT_EQ(pick(0.05, 0), "flat");
}

#endif
