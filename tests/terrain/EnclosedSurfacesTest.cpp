// Walls tell roofs from terrain: a roof wider than any window is cut from the terrain, while
// terraces, slopes, plateaus cut off by the edge of the data and hills that rise further than a
// roof stay terrain, and a terrace level that the window cut is given back; on the raster and
// through the terrain step.
#include "steps/terrain/EnclosedSurfaces.h"
#include "terrain/TerrainStepRun.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

namespace {

using terraintest::classify;
using terraintest::point;

constexpr int kSide = 60;
const vx::EnclosureRule kRule{1.25f, 2.5f, 15.0f};

/// A kSide x kSide raster of 1 m cells at the height z(x, y) (NaN: no point).
std::vector<float> raster(const std::function<float(int, int)>& z)
{
    std::vector<float> r(kSide * kSide);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            r[static_cast<std::size_t>(y * kSide + x)] = z(x, y);
    return r;
}

bool inside(int x, int y, int lo, int hi)
{
    return x >= lo && x < hi && y >= lo && y < hi;
}

/// Marks the raster; returns the flags.
std::vector<unsigned char> marked(const std::vector<float>& r, std::size_t* count = nullptr)
{
    std::vector<unsigned char> object(r.size(), 0);
    const std::size_t n = vx::markEnclosedSurfaces(r, kSide, kSide, kRule, object);
    if (count)
        *count = n;
    return object;
}

TEST(EnclosedSurfaces, ARoofThatWallsEncloseIsCutAndNothingElse)
{
    // A roof 40 cells wide, 8 m up, with a gentle pitch, in flat ground.
    const auto r = raster([](int x, int y) {
        return inside(x, y, 10, 50) ? 8.0f + 0.1f * static_cast<float>(x - 10)
                                    : 0.01f * static_cast<float>(x % 3);
    });
    std::size_t count = 0;
    const auto object = marked(r, &count);
    EXPECT_EQ(count, 40u * 40u);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
            ASSERT_EQ(object[static_cast<std::size_t>(y * kSide + x)], inside(x, y, 10, 50) ? 1 : 0)
                << x << " " << y;
}

TEST(EnclosedSurfaces, ATallerPartOfTheBuildingAndAMissingWallAreTolerated)
{
    // The roof at 8 m holds a tower at 14 m on a few of its edges, and one metre of its outline
    // meets a loading ramp that reaches 6.5 m (a step of 1.5 m, no wall).
    const auto r = raster([](int x, int y) {
        if (inside(x, y, 10, 50))
            return x >= 45 && y >= 20 && y < 26 ? 14.0f : 8.0f;
        if (x >= 50 && x < 53 && y == 30)
            return 6.5f - 2.0f * static_cast<float>(x - 50);
        return 0.0f;
    });
    const auto object = marked(r);
    EXPECT_EQ(object[static_cast<std::size_t>(30 * kSide + 30)], 1);
    EXPECT_EQ(object[static_cast<std::size_t>(22 * kSide + 47)], 1) << "the tower is enclosed too";
    EXPECT_EQ(object[0], 0);
}

TEST(EnclosedSurfaces, TerracesSlopesAndValleysStayTerrain)
{
    // Terraces of 2 m steps rising to the edge of the data, a slope of 45 degrees, a valley.
    for (const auto& z : std::vector<std::function<float(int, int)>>{
             [](int x, int) { return 2.0f * static_cast<float>(x / 10); },
             [](int x, int) { return static_cast<float>(x); },
             [](int x, int y) {
                 return std::fabs(static_cast<float>(x - 30)) + 0.2f * static_cast<float>(y);
             }}) {
        std::size_t count = 0;
        marked(raster(z), &count);
        EXPECT_EQ(count, 0u);
    }
}

TEST(EnclosedSurfaces, APlateauCutOffByTheEdgeOfTheDataStays)
{
    // Raised 5 m over the two thirds of the raster beyond x = 20: its only wall is one side, the
    // other three run into the unseen.
    std::size_t count = 0;
    marked(raster([](int x, int) { return x >= 20 ? 5.0f : 0.0f; }), &count);
    EXPECT_EQ(count, 0u);
}

TEST(EnclosedSurfaces, AHillRisingFurtherThanARoofStays)
{
    // Cliffs of 3 m all round, then 20 m more of gentle rise to a summit.
    const auto hill = raster([](int x, int y) {
        if (!inside(x, y, 10, 50))
            return 0.0f;
        const float d = std::fmin(std::fmin(static_cast<float>(x - 10), static_cast<float>(49 - x)),
                                  std::fmin(static_cast<float>(y - 10), static_cast<float>(49 - y)));
        return 3.0f + d;
    });
    std::size_t count = 0;
    marked(hill, &count);
    EXPECT_EQ(count, 0u);
    // The same without a limit on the span is a (very) tall roof.
    std::vector<unsigned char> object(hill.size(), 0);
    EXPECT_GT(vx::markEnclosedSurfaces(hill, kSide, kSide, vx::EnclosureRule{1.25f, 2.5f, 0.0f}, object), 0u);
}

TEST(EnclosedSurfaces, EmptyCellsAndMismatchedSizesAreHandled)
{
    // A roof whose outline is half empty cells is not taken on the half that shows.
    const auto r = raster([](int x, int y) {
        if (inside(x, y, 10, 50))
            return 8.0f;
        return x < 35 ? NAN : 0.0f;
    });
    std::size_t count = 0;
    marked(r, &count);
    EXPECT_EQ(count, 0u);
    std::vector<unsigned char> object(3, 0);
    EXPECT_EQ(vx::markEnclosedSurfaces(r, kSide, kSide, kRule, object), 0u);
    EXPECT_EQ(vx::markEnclosedSurfaces({}, 0, 0, kRule, object), 0u);
}

TEST(UnwalledObjects, ATerraceLevelIsGivenBackAndNothingWalledOrSmall)
{
    // Cut by hand: a terrace level (rows 20-59 beyond a bank of 0.6 m steps from 2 m up), a roof
    // 8 m up, and a car 1.5 m up, on level ground.
    std::vector<float> r(kSide * kSide, 0.0f);
    std::vector<unsigned char> object(r.size(), 0);
    auto at = [](int x, int y) { return static_cast<std::size_t>(y * kSide + x); };
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            if (y >= 17 && y < 20)
                r[at(x, y)] = 0.6f * static_cast<float>(y - 16); // the bank, terrain
            else if (y >= 20) {
                r[at(x, y)] = 2.0f;
                object[at(x, y)] = 1;
            }
        }
    for (int y = 2; y < 12; ++y)
        for (int x = 2; x < 12; ++x)
            r[at(x, y)] = 8.0f, object[at(x, y)] = 1;
    for (int y = 2; y < 4; ++y)
        for (int x = 30; x < 34; ++x)
            r[at(x, y)] = 1.5f, object[at(x, y)] = 1;
    const std::size_t released = vx::releaseUnwalledObjects(r, kSide, kSide, kRule, object);
    EXPECT_EQ(released, 40u * kSide);
    EXPECT_EQ(object[at(30, 40)], 0) << "terrace";
    EXPECT_EQ(object[at(5, 5)], 1) << "roof";
    EXPECT_EQ(object[at(31, 2)], 1) << "car";
    std::vector<unsigned char> wrong(3, 0);
    EXPECT_EQ(vx::releaseUnwalledObjects(r, kSide, kSide, kRule, wrong), 0u);
}

/// The terrain step on 300 m x 240 m of flat ground at 1 m spacing with a 160 m x 120 m hall 9 m
/// high, four times the window across; the number of roof points that become ground and of
/// ground points that do not.
template <class T> std::pair<int, int> wideHall(bool soa, float wallHeight)
{
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 300; ++i)
        for (int j = 0; j < 240; ++j) {
            const double x = i + 0.25, y = j + 0.5;
            const bool roof = x > 70 && x < 230 && y > 60 && y < 180;
            pts.push_back(
                point<T>(x, y, roof ? 9.0 + 0.02 * std::sin(i * 0.3) : 0.02 * std::sin(i * 1.7 + j)));
        }
    const auto out = classify<T>(pts, soa, [wallHeight](Vexaro<T>& v) {
        v.set_TerrainWindow(T(40));
        v.set_TerrainWallHeight(T(wallHeight));
    });
    int roofGround = 0, bareLost = 0;
    for (std::size_t k = 0; k < pts.size(); ++k) {
        const bool roof = pts[k].z > 5;
        roofGround += roof && out[k] == 2;
        bareLost += !roof && out[k] != 2;
    }
    return {roofGround, bareLost};
}

TEST(TerrainGround, AHallWiderThanTheWindowIsCutByItsWalls)
{
    for (bool soa : {true, false}) {
        const auto f = wideHall<float>(soa, 2.5f);
        EXPECT_EQ(f.first, 0);
        EXPECT_EQ(f.second, 0);
        const auto d = wideHall<double>(soa, 2.5f);
        EXPECT_EQ(d.first, 0);
        EXPECT_EQ(d.second, 0);
    }
    // Without the wall test the window cuts only the rim, and the roof is taken for terrain.
    EXPECT_GT(wideHall<float>(true, 0.0f).first, 10000);
}

/// The terrain step, with the general preset's values, on 150 m x 60 m at 1 m spacing: level
/// ground and a terrace level 2 m up and 38 m across, with banks of 45 degrees. The number of points that
/// do not become ground.
int terraceLost(float wallHeight)
{
    std::vector<VX_Point<float>> pts;
    for (int i = 0; i < 150; ++i)
        for (int j = 0; j < 60; ++j) {
            const double x = i + 0.5;
            const double z = x < 60 || x > 102 ? 0.0 : (x < 62 ? x - 60 : (x > 100 ? 102 - x : 2.0));
            pts.push_back(point<float>(x, j + 0.5, z + 0.02 * std::sin(i * 1.7 + j)));
        }
    const auto out = classify<float>(pts, true, [wallHeight](Vexaro<float>& v) {
        v.set_TerrainWindow(40.0f);
        v.set_TerrainSlope(0.5f);
        v.set_TerrainClimb(0.8f);
        v.set_TerrainClimbMaxRise(0.5f);
        v.set_TerrainWallHeight(wallHeight);
    });
    int lost = 0;
    for (int c : out)
        lost += c != 2;
    return lost;
}

TEST(TerrainGround, ATerraceLevelBeyondASteepBankIsGround)
{
    // The banks rise 1 m a cell, more than the climb takes, and the window cuts the level; no
    // wall bounds it, so it is terrain.
    EXPECT_EQ(terraceLost(2.5f), 0);
    EXPECT_GT(terraceLost(0.0f), 1000);
}

} // namespace
