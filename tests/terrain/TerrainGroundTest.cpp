// The terrain-surface ground step on small built scenes: a hall wider than any seed column, a
// slope with a terrace, a headland above a cliff, and the refusals that leave the classes as they were.
#include "terrain/TerrainStepRun.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using terraintest::classify;
using terraintest::point;

/// 200 m x 160 m of flat ground at 1 m spacing with an 80 m x 60 m hall 9 m high in the middle.
template <class T> std::vector<VX_Point<T>> hallScene()
{
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 200; ++i)
        for (int j = 0; j < 160; ++j) {
            const double x = i + 0.25, y = j + 0.5;
            const bool roof = x > 60 && x < 140 && y > 50 && y < 110;
            pts.push_back(point<T>(x, y, roof ? 9.0 : 0.02 * std::sin(i * 1.7 + j)));
        }
    return pts;
}

template <class T> void expectHallRoofIsNotGround(bool soa)
{
    const auto pts = hallScene<T>();
    const auto classes = classify<T>(pts, soa);
    int roofGround = 0, bareLost = 0;
    for (std::size_t k = 0; k < pts.size(); ++k) {
        const bool roof = pts[k].z > 5;
        roofGround += roof && classes[k] == 2;
        bareLost += !roof && classes[k] != 2;
    }
    EXPECT_EQ(roofGround, 0);
    EXPECT_EQ(bareLost, 0);
}

TEST(TerrainGround, HallWiderThanSeedColumnsIsNotGroundAoSFloat)
{
    expectHallRoofIsNotGround<float>(false);
}
TEST(TerrainGround, HallWiderThanSeedColumnsIsNotGroundSoAFloat)
{
    expectHallRoofIsNotGround<float>(true);
}
TEST(TerrainGround, HallWiderThanSeedColumnsIsNotGroundAoSDouble)
{
    expectHallRoofIsNotGround<double>(false);
}
TEST(TerrainGround, HallWiderThanSeedColumnsIsNotGroundSoADouble)
{
    expectHallRoofIsNotGround<double>(true);
}

TEST(TerrainGround, SlopeWithATerraceStaysGroundWithTheClimb)
{
    // A 30-degree ramp, then a 1.5 m step up to a flat terrace 30 m wide, then the ramp again.
    std::vector<VX_Point<float>> pts;
    for (int i = 0; i < 150; ++i)
        for (int j = 0; j < 60; ++j) {
            const double x = i + 0.5;
            double z = x < 60 ? 0.577 * x : (x < 90 ? 0.577 * 60 + 1.5 : 0.577 * (x - 30) + 1.5);
            pts.push_back(point<float>(x, j + 0.5, z));
        }
    const auto classes = classify<float>(pts, true, [](Vexaro<float>& v) {
        v.set_TerrainSlope(1.0f);
        v.set_TerrainClimb(0.8f);
        v.set_TerrainWindow(25.0f);
    });
    int lost = 0;
    for (int c : classes)
        lost += c != 2;
    EXPECT_EQ(lost, 0);
}

/// 160 m x 60 m at 1 m spacing: a beach at 0 m with a headland 20 m wide for x > 130 that
/// stands on cliffs of 12 m and rises on by 0.7 m per metre to the edge of the data at x = 160
/// (33 m), and a flat 40 m x 30 m roof 9 m high on the beach.
std::vector<VX_Point<float>> headlandScene()
{
    std::vector<VX_Point<float>> pts;
    for (int i = 0; i < 160; ++i)
        for (int j = 0; j < 60; ++j) {
            const double x = i + 0.5, y = j + 0.5;
            double z = 0.02 * std::sin(i * 1.7 + j);
            if (x > 130 && y > 20 && y < 40)
                z = 12.0 + 0.7 * (x - 130);
            else if (x > 20 && x < 60 && y > 15 && y < 45)
                z = 9.0;
            pts.push_back(point<float>(x, y, z));
        }
    return pts;
}

void mountainTerrain(Vexaro<float>& v)
{
    v.set_TerrainSlope(1.0f);
    v.set_TerrainClimb(0.8f);
    v.set_TerrainWindow(25.0f);
}

TEST(TerrainGround, AHeadlandRisingFurtherThanTheObjectLimitIsGround)
{
    const auto pts = headlandScene();
    const auto classes = classify<float>(pts, true, [](Vexaro<float>& v) {
        mountainTerrain(v);
        v.set_TerrainObjectMaxRise(15.0f);
    });
    int headlandLost = 0, roofGround = 0, beachLost = 0;
    for (std::size_t k = 0; k < pts.size(); ++k) {
        const bool headland = pts[k].z > 11.5, roof = !headland && pts[k].z > 5;
        headlandLost += headland && classes[k] != 2;
        roofGround += roof && classes[k] == 2;
        beachLost += !headland && !roof && classes[k] != 2;
    }
    EXPECT_EQ(headlandLost, 0);
    EXPECT_EQ(roofGround, 0);
    EXPECT_EQ(beachLost, 0);
}

TEST(TerrainGround, WithoutTheObjectLimitTheWindowCutsTheHeadland)
{
    // The same scene with the limit off: the openings take the headland, narrower than the
    // window and standing on cliffs, for an object; the limit above is what keeps it.
    const auto pts = headlandScene();
    const auto classes = classify<float>(pts, true, mountainTerrain);
    int headland = 0, headlandGround = 0;
    for (std::size_t k = 0; k < pts.size(); ++k)
        if (pts[k].z > 11.5) {
            ++headland;
            headlandGround += classes[k] == 2;
        }
    EXPECT_LT(headlandGround, headland / 2);
}

TEST(TerrainGround, WithoutAGridNothingChanges)
{
    auto pts = hallScene<float>();
    Vexaro<float> v;
    v.setMessageLevel(-1);
    v.setFacadeMessageLevel(-1);
    v.setComputeBackend("cpu");
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    v.classifyTerrainGround(2);
    std::vector<short> out(pts.size());
    v.saveClassesToBuffer(out.data(), static_cast<int>(out.size()));
    for (short c : out)
        ASSERT_EQ(c, 1);
}

TEST(TerrainGround, AbsurdCellSizeIsRefused)
{
    const auto classes =
        classify<float>(hallScene<float>(), true, [](Vexaro<float>& v) { v.set_TerrainCellSize(0.0f); });
    for (int c : classes)
        ASSERT_EQ(c, 1);
}

TEST(TerrainGround, AStrayPointFarAwayRefusesTheRasterInsteadOfAllocatingIt)
{
    auto pts = hallScene<double>();
    pts.push_back(point<double>(1.0e6, 1.0e6, 0.0)); // 1,000 km away: 10^12 cells of 1 m
    const auto classes = classify<double>(pts, true);
    for (int c : classes)
        ASSERT_EQ(c, 1);
}

} // namespace
