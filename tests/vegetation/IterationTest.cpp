// The two passes that spread vegetation: their height without ground, who votes, the class
// compared with the chaos count, and the plant vote that needs three equal classes.
#include "vegetation/MixedScene.h"
#include "vegetation/VegetationTestSupport.h"

using namespace vxtest;
using namespace vegtest;

namespace {

class VegetationIterations : public SettingTest {};

/// A non-last-return point of the initial class beside a vegetation point, no ground anywhere.
template <class T> std::vector<VX_Point<T>> initialBesideVegetation(T gap, int vegetationClass)
{
    return {point<T>(0, 0, 0, 0, 0), point<T>(gap, 0, 0, vegetationClass, 1)};
}

template <class T> void withoutGroundTheHeightIsTenCells(const Setting& s)
{
    const auto table = allowTable({0});
    const auto spread = [](Vexaro<T>& v) { v.set_VegetationProcOfChaos(0.f); };
    const auto filterOnly = [](Vexaro<T>& v) {
        v.set_VegetationProcOfChaos(0.f);
        v.set_VegetationIterations(0);
    };
    // The filter needs ground, so only the iterated passes classify; h = 10 x 100 m: high.
    EXPECT_EQ(runStep<T>(s, initialBesideVegetation<T>(1, kMedium), table, filterOnly),
              (std::vector<int>{0, kMedium}));
    EXPECT_EQ(runStep<T>(s, initialBesideVegetation<T>(1, kMedium), table, spread),
              (std::vector<int>{kHigh, kMedium}));
    // The height really is ten cell edges: 10 x 0.15 m is medium, 10 x 0.03 m is low.
    EXPECT_EQ(runStep<T>(s, initialBesideVegetation<T>(T(0.01), kHigh), table, spread, {}, 0.15),
              (std::vector<int>{kMedium, kHigh}));
    EXPECT_EQ(runStep<T>(s, initialBesideVegetation<T>(T(0.01), kHigh), table, spread, {}, 0.03),
              (std::vector<int>{kLow, kHigh}));
}

template <class T> void distinctClassesStopTheSecondPass(const Setting& s)
{
    const auto table = allowTable({0});
    // Chaos share 0 stays below 0.5, so the first pass leaves the point; only the second can act.
    const auto scene = initialBesideVegetation<T>(1, 5);
    EXPECT_EQ(runStep<T>(s, scene, table, {}, StepClasses{5, 5, 5, kGround, 0}), (std::vector<int>{5, 5}));
    EXPECT_EQ(runStep<T>(s, scene, table, {}, StepClasses{3, 4, 5, kGround, 0}), (std::vector<int>{0, 5}));
}

} // namespace

TEST_P(VegetationIterations, WithoutGroundTheIteratedPassesUseTenCellHeights)
{
    withoutGroundTheHeightIsTenCells<float>(GetParam());
    withoutGroundTheHeightIsTenCells<double>(GetParam());
}

TEST_P(VegetationIterations, DistinctVegetationClassesMakeTheSecondPassChangeNothing)
{
    distinctClassesStopTheSecondPass<float>(GetParam());
    distinctClassesStopTheSecondPass<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Settings, VegetationIterations, ::testing::ValuesIn(allSettings()), settingName);

namespace {

template <class T> vx::VegetationParams<T> spreading(StepClasses k = {})
{
    auto p = defaultParams<T>(k);
    p.VegetationProcOfChaos = 0.f;
    return p;
}

template <class T> void everyNeighbourInRangeVotes(bool soa)
{
    // Two neighbours of a class the table does not admit still vote: 1 non-last return of 4 is
    // below 0.75 x 0.5.
    HostCloud<T> crowd = oneCell<T>(
        {point<T>(0, 0, 0, 0, 0), point<T>(1, 0, 0, kMedium), point<T>(0, 1, 0, 7), point<T>(-1, 0, 0, 7)});
    crowd.table = allowTable({0});
    EXPECT_EQ(runPass<vx::IteratePlants>(crowd, soa, spreading<T>()), (std::vector<int>{0, kMedium, 7, 7}));
    // Without them 1 of 2 is enough.
    HostCloud<T> pair = oneCell<T>(initialBesideVegetation<T>(1, kMedium));
    pair.table = allowTable({0});
    EXPECT_EQ(runPass<vx::IteratePlants>(pair, soa, spreading<T>()), (std::vector<int>{kHigh, kMedium}));
}

template <class T> void classIsComparedWithTheChaosCount(bool soa)
{
    // One chaos neighbour: the initial class 0 differs from the count 1, nothing happens.
    HostCloud<T> c =
        oneCell<T>({point<T>(0, 0, 0, 0, 0), point<T>(1, 0, 0, kMedium), point<T>(0, 1, 0, 11, 0)});
    c.table = allowTable({0});
    EXPECT_EQ(runPass<vx::IteratePlants>(c, soa, spreading<T>()), (std::vector<int>{0, kMedium, 11}));
    // With an initial class of 1 (no setter; the block is filled here) a point of class 1 and
    // one chaos neighbour passes, and with two it does not.
    auto p = spreading<T>();
    p.InitialClass = 1;
    HostCloud<T> one =
        oneCell<T>({point<T>(0, 0, 0, 1, 0), point<T>(1, 0, 0, kMedium), point<T>(0, 1, 0, 11, 0)});
    one.table = allowTable({1});
    EXPECT_EQ(runPass<vx::IteratePlants>(one, soa, p), (std::vector<int>{kHigh, kMedium, 11}));
    HostCloud<T> two = oneCell<T>({point<T>(0, 0, 0, 1, 0), point<T>(1, 0, 0, kMedium),
                                   point<T>(0, 1, 0, 11, 0), point<T>(-1, 0, 0, 11, 0)});
    two.table = allowTable({1});
    EXPECT_EQ(runPass<vx::IteratePlants>(two, soa, p), (std::vector<int>{1, kMedium, 11, 11}));
}

template <class T> void iteratedHeightComesFromGroundInPlan(bool soa)
{
    // Ground 1 m below in plan gives medium (the ground point is a non-last return too, so that
    // 2 of the 3 votes are).
    HostCloud<T> c =
        oneCell<T>({point<T>(0, 0, 1, 0, 0), point<T>(1, 0, 1, kMedium), point<T>(0, 0, 0, kGround, 0)});
    c.table = allowTable({0});
    EXPECT_EQ(runPass<vx::IteratePlants>(c, soa, spreading<T>()),
              (std::vector<int>{kMedium, kMedium, kGround}));
    EXPECT_EQ(
        runPass<vx::IteratePlantsSecond>(c, soa, defaultParams<T>({kMedium, kMedium, kMedium, kGround, 0})),
        (std::vector<int>{kMedium, kMedium, kGround}));
}

template <class T> void secondPassNeedsThreeEqualClasses(bool soa)
{
    HostCloud<T> c = oneCell<T>(initialBesideVegetation<T>(1, 5));
    c.table = allowTable({0, 10});
    EXPECT_EQ(runPass<vx::IteratePlantsSecond>(c, soa, defaultParams<T>({5, 5, 5, kGround, 0})),
              (std::vector<int>{5, 5}));
    EXPECT_EQ(runPass<vx::IteratePlantsSecond>(c, soa, defaultParams<T>({3, 4, 5, kGround, 0})),
              (std::vector<int>{0, 5}));
    EXPECT_EQ(runPass<vx::IteratePlantsSecond>(c, soa, defaultParams<T>({5, 5, 4, kGround, 0})),
              (std::vector<int>{0, 5}));
    // A last-return point gathers no non-last-return votes.
    HostCloud<T> last = oneCell<T>({point<T>(0, 0, 0, 0, 1), point<T>(1, 0, 0, 5)});
    last.table = allowTable({0});
    EXPECT_EQ(runPass<vx::IteratePlantsSecond>(last, soa, defaultParams<T>({5, 5, 5, kGround, 0})),
              (std::vector<int>{0, 5}));
    // A plane source point has every neighbour as an order vote, above the 0.5 share.
    HostCloud<T> source = oneCell<T>({point<T>(0, 0, 0, 10, 0), point<T>(1, 0, 0, 5)});
    source.table = allowTable({10});
    EXPECT_EQ(runPass<vx::IteratePlantsSecond>(source, soa, defaultParams<T>({5, 5, 5, kGround, 0})),
              (std::vector<int>{10, 5}));
}

template <class T> void secondPassLeavesTheSceneWithDistinctClasses(bool soa)
{
    HostCloud<T> c = oneCell<T>(mixedScene<T>(), T(100));
    // Give part of the tree vegetation classes so that plant neighbours exist.
    for (size_t i = 0; i < c.points.size(); ++i)
        if (c.points[i].classification == 1 && i % 3 == 0)
            c.points[i].classification = 3 + int(i % 3 + i / 3) % 3;
    std::vector<int> before;
    for (const auto& q : c.points)
        before.push_back(q.classification);
    c.table = allowTable({0, 1, 10});
    EXPECT_EQ(runPass<vx::IteratePlantsSecond>(c, soa, defaultParams<T>()), before);
}

} // namespace

TEST(VegetationIterationKernels, EveryNeighbourInRangeVotesInTheFirstPass)
{
    for (bool soa : {false, true}) {
        everyNeighbourInRangeVotes<float>(soa);
        everyNeighbourInRangeVotes<double>(soa);
    }
}

TEST(VegetationIterationKernels, FirstPassComparesTheClassWithTheChaosCount)
{
    for (bool soa : {false, true}) {
        classIsComparedWithTheChaosCount<float>(soa);
        classIsComparedWithTheChaosCount<double>(soa);
    }
}

TEST(VegetationIterationKernels, HeightAboveGroundInPlanGivesTheTier)
{
    for (bool soa : {false, true}) {
        iteratedHeightComesFromGroundInPlan<float>(soa);
        iteratedHeightComesFromGroundInPlan<double>(soa);
    }
}

TEST(VegetationIterationKernels, SecondPassNeedsAllThreeVegetationClassesEqual)
{
    for (bool soa : {false, true}) {
        secondPassNeedsThreeEqualClasses<float>(soa);
        secondPassNeedsThreeEqualClasses<double>(soa);
    }
}

TEST(VegetationIterationKernels, SecondPassChangesNothingWithDistinctClasses)
{
    for (bool soa : {false, true}) {
        secondPassLeavesTheSceneWithDistinctClasses<float>(soa);
        secondPassLeavesTheSceneWithDistinctClasses<double>(soa);
    }
}
