// The first vegetation filter: what lets a point in, what keeps it out, and the ground class
// that moves up by one inside a thread.
#include "vegetation/VegetationTestSupport.h"

#include <algorithm>
#include <string>

using namespace vxtest;
using namespace vegtest;

namespace {

class VegetationFilter : public SettingTest {};

/// Only the filter runs: no iterations; the completion leaves the classified point alone since
/// its new class is not admitted.
template <class T> void noIterations(Vexaro<T>& v)
{
    v.set_VegetationIterations(0);
}

/// A non-last-return point one metre above a ground point, both in one cell; the point alone
/// votes, so its share of non-last returns is 1.
template <class T> std::vector<VX_Point<T>> groundAndGhost()
{
    return {point<T>(0, 0, 0, kGround), point<T>(0, 0, 1, 1, 0, 0, 0, 1)};
}

template <class T> void buildingWithinRangeBlocks(const Setting& s)
{
    const auto table = allowTable({1});
    EXPECT_EQ(runStep<T>(s, groundAndGhost<T>(), table, noIterations<T>),
              (std::vector<int>{kGround, kMedium}));

    auto blocked = groundAndGhost<T>();
    blocked.push_back(point<T>(1, 0, 1, 6));
    EXPECT_EQ(runStep<T>(s, blocked, table, noIterations<T>), (std::vector<int>{kGround, 1, 6}));

    // A building point beyond the range (2.5 m in plan) does not block.
    auto farBuilding = groundAndGhost<T>();
    farBuilding.push_back(point<T>(T(2.5), 0, 1, 6));
    EXPECT_EQ(runStep<T>(s, farBuilding, table, noIterations<T>), (std::vector<int>{kGround, kMedium, 6}));
}

template <class T> void noGroundInPlanRangeBlocks(const Setting& s)
{
    const auto table = allowTable({1});
    // Exactly the range away in plan is outside: the test is strict.
    std::vector<VX_Point<T>> atRange{point<T>(2, 0, 1, kGround), point<T>(0, 0, 1, 1, 0, 0, 0, 1)};
    EXPECT_EQ(runStep<T>(s, atRange, table, noIterations<T>), (std::vector<int>{kGround, 1}));
    std::vector<VX_Point<T>> farAway{point<T>(T(2.5), 0, 0, kGround), point<T>(0, 0, 1, 1, 0, 0, 0, 1)};
    EXPECT_EQ(runStep<T>(s, farAway, table, noIterations<T>), (std::vector<int>{kGround, 1}));
    // Ground counts in plan only: five metres straight below is seen and gives the height.
    std::vector<VX_Point<T>> below{point<T>(0, 0, -4, kGround), point<T>(0, 0, 1, 1, 0, 0, 0, 1)};
    EXPECT_EQ(runStep<T>(s, below, table, noIterations<T>), (std::vector<int>{kGround, kHigh}));
}

template <class T> void groundClassGrowsByOne(const Setting& s)
{
    const auto table = allowTable({1});
    const StepClasses k{20, 21, 22, kGround, 0};
    const VX_Point<T> ghost = point<T>(0, 0, 1, 1, 0, 0, 0, 1);
    // Ground 1.5 m above the point is met first: it gives h = 1.5 and moves the ground class to
    // 3, so the ground point 0.1 m below is no longer ground and the point stays medium.
    std::vector<VX_Point<T>> aboveFirst{point<T>(0, 0, T(2.5), kGround), point<T>(0, 0, T(0.9), kGround),
                                        ghost};
    EXPECT_EQ(runStep<T>(s, aboveFirst, table, noIterations<T>, k), (std::vector<int>{kGround, kGround, 21}));
    // The other way round the near ground point is met first and the point is low.
    std::vector<VX_Point<T>> belowFirst{point<T>(0, 0, T(0.9), kGround), point<T>(0, 0, T(2.5), kGround),
                                        ghost};
    EXPECT_EQ(runStep<T>(s, belowFirst, table, noIterations<T>, k), (std::vector<int>{kGround, kGround, 20}));
    // After the move, a point of class 3 counts as ground.
    std::vector<VX_Point<T>> nextClass{point<T>(0, 0, T(2.5), kGround), point<T>(0, 0, T(0.9), 3), ghost};
    EXPECT_EQ(runStep<T>(s, nextClass, table, noIterations<T>, k), (std::vector<int>{kGround, 3, 20}));
    // Before it, it does not.
    std::vector<VX_Point<T>> nextClassFirst{point<T>(0, 0, T(0.9), 3), point<T>(0, 0, T(2.5), kGround),
                                            ghost};
    EXPECT_EQ(runStep<T>(s, nextClassFirst, table, noIterations<T>, k), (std::vector<int>{3, kGround, 21}));
}

template <class T> void chaosNeighboursLetAPointIn(const Setting& s)
{
    const auto table = allowTable({1});
    // The point and a companion on its plane vote; a non-last-return neighbour on the plane too.
    auto scene = [](int neighbourClass) {
        return std::vector<VX_Point<T>>{
            point<T>(0, 0, 0, kGround, 1, 0, 0, 1), point<T>(0, 0, 1, 1, 1, 0, 0, 1),
            point<T>(T(0.5), 0, 1, 1, 1, 0, 0, 1), point<T>(0, T(0.5), 1, neighbourClass, 0, 0, 0, 1)};
    };
    // As a chaos point it makes the share 1/2 and the non-last-return share 1/2: the point is in.
    const auto in = runStep<T>(s, scene(11), table, noIterations<T>);
    EXPECT_EQ(in[1], kMedium);
    // As a plain point on the plane nothing is chaotic and 1/3 non-last returns is too few.
    const auto out = runStep<T>(s, scene(1), table, noIterations<T>);
    EXPECT_EQ(out[1], 1);
}

} // namespace

TEST_P(VegetationFilter, BuildingPointWithinRangeBlocksTheFilter)
{
    buildingWithinRangeBlocks<float>(GetParam());
    buildingWithinRangeBlocks<double>(GetParam());
}

TEST_P(VegetationFilter, NoGroundWithinRangeInPlanBlocksTheFilter)
{
    noGroundInPlanRangeBlocks<float>(GetParam());
    noGroundInPlanRangeBlocks<double>(GetParam());
}

TEST_P(VegetationFilter, GroundClassGrowsByOneForLaterNeighbours)
{
    groundClassGrowsByOne<float>(GetParam());
    groundClassGrowsByOne<double>(GetParam());
}

TEST_P(VegetationFilter, ChaosNeighboursLetAPointIn)
{
    chaosNeighboursLetAPointIn<float>(GetParam());
    chaosNeighboursLetAPointIn<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Settings, VegetationFilter, ::testing::ValuesIn(allSettings()), settingName);

namespace {

/// Two cells along x; the second entry lies in the first cell's run but its record names the
/// second cell.
template <class T> HostCloud<T> brokenIndex()
{
    HostCloud<T> c;
    c.points = {point<T>(0, 0, 0, kGround), point<T>(T(0.5), 0, 1, 1, 0, 0, 0, 1),
                point<T>(1, 0, 1, 1, 0, 0, 0, 1)};
    c.index = {{0, 0}, {1, 1}, {2, 1}};
    c.cells = {{0, 2, 2}, {2, 3, 1}};
    c.grid.cellsX = 2, c.grid.cellsY = 1, c.grid.cellsZ = 1;
    c.grid.sizeX = c.grid.sizeY = c.grid.sizeZ = T(4);
    c.table = allowTable({1});
    return c;
}

template <class T> void foreignEntryPrintsAndGoesOn(bool soa)
{
    const HostCloud<T> cloud = brokenIndex<T>();
    fflush(stdout);
    ::testing::internal::CaptureStdout();
    const std::vector<int> classes = runPass<vx::FilterPlants>(cloud, soa, defaultParams<T>());
    fflush(stdout);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    // Both admitted threads visit the first cell and meet the misfiled entry there once.
    EXPECT_EQ(printed, "ARGH\nARGH\n");
    EXPECT_EQ(classes, (std::vector<int>{kGround, kMedium, kMedium}));
}

} // namespace

TEST(VegetationFilterKernel, EntryFiledUnderAnotherCellPrintsArghAndGoesOn)
{
    for (bool soa : {false, true}) {
        foreignEntryPrintsAndGoesOn<float>(soa);
        foreignEntryPrintsAndGoesOn<double>(soa);
    }
}
