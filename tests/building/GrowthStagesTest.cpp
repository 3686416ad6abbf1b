// The building growth as a whole: the order of its stages, the release of the candidates, its
// messages, and seeds plus growth on a small house.
#include "building/BuildingTestSupport.h"

#include <algorithm>

using namespace bldtest;
using vxtest::SettingTest;

namespace {

/// Three roof points at x = 0, 0.5, 1, a row of source points at x = 2 .. 7 on the same plane,
/// one metre apart, and a lone candidate far away.
template <class T> std::vector<VX_Point<T>> roofAndRow()
{
    std::vector<VX_Point<T>> pts;
    for (double x : {0.0, 0.5, 1.0})
        pts.push_back(up<T>(x, 0, 5, kBuilding));
    for (int x = 2; x <= 7; ++x)
        pts.push_back(up<T>(x, 0, 5, kSource));
    pts.push_back(up<T>(20, 0, 5, kCandidate));
    return pts;
}

/// Classes of roofAndRow when the row is building up to x = last.
Classes rowBuiltUpTo(int last)
{
    Classes out(3, kBuilding);
    for (int x = 2; x <= 7; ++x)
        out.push_back(x <= last ? kBuilding : kSource);
    out.push_back(kSource);
    return out;
}

bool hasTemporaryMarks(const Classes& classes)
{
    return std::any_of(classes.begin(), classes.end(), [](int c) { return c == kMark || c == kCandidate; });
}

} // namespace

class BuildingGrowthStages : public SettingTest {};

// Each gated iteration, the ungated update, the completion and the closing take exactly one more
// metre of the row: marks become building only after their launch.
TEST_P(BuildingGrowthStages, EveryStageAdvancesOneNeighbourhood)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        for (int iterations : {0, 1, 2}) {
            Vexaro<T> v;
            load(v, GetParam(), roofAndRow<T>(), 2.0);
            v.set_Building2Iterations(iterations);
            grow(v);
            const Classes got = vxtest::classes(v);
            EXPECT_EQ(got, rowBuiltUpTo(4 + iterations)) << iterations;
            EXPECT_FALSE(hasTemporaryMarks(got));
        }
    });
}

TEST_P(BuildingGrowthStages, NoIterationsStillReleasesCandidatesAndRunsTheLaterStages)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        for (int iterations : {0, -3}) {
            Vexaro<T> v;
            load(v, GetParam(), roofAndRow<T>(), 2.0);
            v.set_Building2Iterations(iterations);
            grow(v);
            // Ungated update to 2, completion to 3, closing to 4; the far candidate is released.
            EXPECT_EQ(vxtest::classes(v), rowBuiltUpTo(4)) << iterations;
        }
    });
}

TEST_P(BuildingGrowthStages, PrintsIterationsDetailsHeightAndTheEnd)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        Vexaro<T> v;
        load(v, GetParam(), roofAndRow<T>(), 2.0, defaultTable(), 3);
        v.set_Building2Iterations(2);
        {
            vxtest::CaptureStdout out;
            v.performIterativeBuildingGrowth(kBuilding, kGround, kSource, kCompanion);
            const Lines lines = out.lines();
            ASSERT_FALSE(lines.empty());
            // The building steps print no mode line in the field layout.
            EXPECT_EQ(lines.front(), GetParam().soa ? "Threads:  256" : "AOS ");
            EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1", "Building growth iteration 1",
                                               "Building growth iteration 2", "Details Height:  0.4",
                                               "Building growth ended! "}));
        }
        v.setMessageLevel(2);
        v.set_Building3DetailsHeight(T(0.25));
        {
            vxtest::CaptureStdout out;
            v.performIterativeBuildingGrowth(kBuilding, kGround, kSource, kCompanion);
            EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1", "Building growth iteration 1",
                                               "Building growth iteration 2", "Building growth ended! "}));
        }
        v.setMessageLevel(3);
        v.set_Building2Iterations(0);
        {
            vxtest::CaptureStdout out;
            v.performIterativeBuildingGrowth(kBuilding, kGround, kSource, kCompanion);
            EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1", "Details Height:  0.25",
                                               "Building growth ended! "}));
        }
        v.setMessageLevel(0);
        {
            vxtest::CaptureStdout out;
            v.performIterativeBuildingGrowth(kBuilding, kGround, kSource, kCompanion);
            EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1"}));
        }
    });
}

// A flat 6 x 6 m roof 4 m above ground that surrounds it: seeds form in the middle, where no
// ground lies within 2 m in plan, and the growth takes the rest of the roof and nothing else.
TEST_P(BuildingGrowthStages, SeedsAndGrowthTakeAWholeFlatRoof)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        std::vector<VX_Point<T>> pts;
        Classes expected;
        for (int i = -12; i <= 12; ++i) {
            for (int j = -12; j <= 12; ++j) {
                const double x = 0.5 * i, y = 0.5 * j;
                const bool roof = std::max(std::abs(i), std::abs(j)) <= 6;
                pts.push_back(up<T>(x, y, roof ? 4 : 0, roof ? kSource : kGround));
                expected.push_back(roof ? kBuilding : kGround);
            }
        }
        Vexaro<T> v;
        load(v, GetParam(), pts, 2.0);
        findSeeds(v);
        const Classes seeded = vxtest::classes(v);
        EXPECT_EQ(seeded[12 * 25 + 12], kBuilding); // the middle of the roof
        EXPECT_EQ(std::count(seeded.begin(), seeded.end(), kGround),
                  std::count(expected.begin(), expected.end(), kGround));
        grow(v);
        EXPECT_EQ(vxtest::classes(v), expected);
    });
}

INSTANTIATE_TEST_SUITE_P(Settings, BuildingGrowthStages, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
