// Iterative ground growth through the public call: the counting loop, its messages and the
// plane rules that both layouts share.
#include "ground/GroundTestSupport.h"

using namespace vxtest;
using namespace groundtest;

namespace {

class GroundGrowth : public SettingTest {};

/// Ten flat points one unit apart, the first one ground: each pass grows exactly one more.
template <class T> std::vector<VX_Point<T>> row(int groundClass = 2)
{
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 10; ++i)
        pts.push_back(up<T>(T(i), 0, 0, i == 0 ? groundClass : 1));
    return pts;
}

template <class T> Lines grow(Vexaro<T>& v, int groundClass)
{
    CaptureStdout out;
    v.performIterativeGroundGrowth(groundClass);
    return driverLines(out);
}

template <class T> void growsUntilNothingChanges(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, row<T>(), 2.0, false, 2);
    allow(v, {1});
    EXPECT_EQ(grow(v, 2), loopLines({1, 1, 1, 1, 1, 1, 1, 1, 1, 0}));
    EXPECT_EQ(classes(v), std::vector<int>(10, 2));
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, 2);
}

template <class T> void stopsAtTheIterationLimit(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, row<T>(), 2.0, false, 2);
    allow(v, {1});
    v.set_GroundGrowthIterations(3);
    EXPECT_EQ(grow(v, 2), loopLines({1, 1, 1}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 2, 2, 1, 1, 1, 1, 1, 1}));
    v.setMessageLevel(1);
    EXPECT_EQ(grow(v, 2), (Lines{"Threads:  256", "Blocks:  1"}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 2, 2, 2, 2, 2, 1, 1, 1}));
}

template <class T> void withoutGroundOneIterationAddsNothing(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, row<T>(1), 2.0, false, 2);
    EXPECT_EQ(grow(v, 2), loopLines({0}));
    EXPECT_EQ(classes(v), std::vector<int>(10, 1));
}

template <class T> void zeroIterationsRunNoPass(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, row<T>(), 2.0, false, 4);
    v.set_GroundGrowthIterations(0);
    EXPECT_EQ(grow(v, 2), (Lines{"Threads:  256", "Blocks:  1"}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
    v.set_GroundGrowthIterations(-4);
    EXPECT_EQ(grow(v, 2), (Lines{"Threads:  256", "Blocks:  1"}));
}

template <class T> void grownClassIsTheCallsArgument(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, row<T>(2), 2.0, false, 2);
    allow(v, {1});
    // GroundClass keeps its 2, but the call grows class 5: the class 2 point is no ground for it.
    EXPECT_EQ(grow(v, 5), loopLines({0}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 2);

    Vexaro<T> w;
    load<T>(w, s, row<T>(5), 2.0, false, 2);
    allow(w, {1});
    EXPECT_EQ(grow(w, 5), loopLines({1, 1, 1, 1, 1, 1, 1, 1, 1, 0}));
    EXPECT_EQ(classes(w), std::vector<int>(10, 5));
}

template <class T> void neighbourExactlyAtTheRangeIsNotUsed(const Setting& s)
{
    Vexaro<T> v;
    // The class 9 point widens the grid so that its x extent does not bound the search.
    load<T>(v, s, {up<T>(0, 0, 0, 2), up<T>(T(1.5), 0, 0, 1), up<T>(0, T(1.25), 0, 1), up<T>(5, 5, 0, 9)},
            2.0, false, 2);
    allow(v, {1});
    EXPECT_EQ(grow(v, 2), loopLines({1, 0}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 2, 9}));
}

template <class T> void pointOnThePlanePointIsNeverAccepted(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {up<T>(0, 0, 0, 2), up<T>(0, 0, 0, 1), up<T>(3, 3, 3, 9)}, 10.0, false, 2);
    allow(v, {1});
    EXPECT_EQ(grow(v, 2), loopLines({0}));
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 9}));
}

template <class T> std::vector<int> aboveThePlaneOfACloseGroundPoint(const Setting& s, T rangeLowest)
{
    // The candidate is 0.45 from the ground point in plan and 0.04 above its tangent plane.
    Vexaro<T> v;
    load<T>(v, s, {up<T>(0, 0, 0, 2), up<T>(T(0.45), 0, T(0.04), 1)}, 2.0);
    allow(v, {1});
    v.set_GroundGrowthRangeLowest(rangeLowest);
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    return classes(v);
}

template <class T> void aboveThePlaneTestAndItsSwitch(const Setting& s)
{
    EXPECT_EQ(aboveThePlaneOfACloseGroundPoint<T>(s, T(0.5)), (std::vector<int>{2, 1}));
    EXPECT_EQ(aboveThePlaneOfACloseGroundPoint<T>(s, T(0)), (std::vector<int>{2, 2}));
    EXPECT_EQ(aboveThePlaneOfACloseGroundPoint<T>(s, T(-1)), (std::vector<int>{2, 2}));
    EXPECT_EQ(aboveThePlaneOfACloseGroundPoint<T>(s, T(0.4)), (std::vector<int>{2, 2})); // too far in plan
}

template <class T> void lowestPointIsAcceptedWhateverItsNormal(const Setting& s, int otherClass)
{
    Vexaro<T> v;
    // Below the ground point: one candidate with a normal across the plane, one without a normal.
    // The last point is lower still but neither admitted nor ground, so it is not related.
    load<T>(v, s,
            {up<T>(1, 0, 0, 2), point<T>(0, 0, T(-0.2), 1, 1, 1, 0, 0),
             point<T>(0, T(0.5), T(-0.2), 1, 1, 0, 0, 0), up<T>(-1, 0, T(-0.5), otherClass)},
            2.0);
    allow(v, {1});
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 2, otherClass}));
}

template <class T> void narrowGridBoundsTheSearch(const Setting& s)
{
    // The x extent (0.5) bounds the squared distance of the nearest ground point.
    Vexaro<T> v;
    load<T>(v, s, {up<T>(0, 0, 0, 2), up<T>(0, 1, 0, 1), up<T>(T(0.5), 0, 0, 1)}, 2.0);
    allow(v, {1});
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 2}));
    Vexaro<T> wide;
    load<T>(wide, s, {up<T>(0, 0, 0, 2), up<T>(0, 1, 0, 1), up<T>(T(0.5), 0, 0, 1), up<T>(3, 0, 0, 9)}, 2.0);
    allow(wide, {1});
    wide.performIterativeGroundGrowth(2);
    EXPECT_EQ(classes(wide), (std::vector<int>{2, 2, 2, 9}));
}

/// One cell of 2001 entries: the candidate last, the ground point at position groundAt, filler
/// (class 9, unrelated) elsewhere. Ranges above 5 visit every second entry only.
template <class T> int sampledCell(const Setting& s, int groundAt, T range)
{
    std::vector<VX_Point<T>> pts(2001, up<T>(4, 4, 4, 9));
    pts[groundAt] = up<T>(1, 0, 0, 2);
    pts[2000] = up<T>(0, 0, 0, 1);
    Vexaro<T> v;
    load<T>(v, s, pts, 20.0);
    allow(v, {1});
    v.set_GroundGrowthRange(range);
    v.set_GroundGrowthIterations(1);
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    return classes(v)[2000];
}

template <class T> void longRangesSampleDenseCells(const Setting& s)
{
    EXPECT_EQ(sampledCell<T>(s, 1999, T(6)), 1);
    EXPECT_EQ(sampledCell<T>(s, 1998, T(6)), 2);
    EXPECT_EQ(sampledCell<T>(s, 1999, T(5)), 2);
}

template <class T> void otherClassesNeverChange(const Setting& s)
{
    Vexaro<T> v;
    auto pts = row<T>();
    pts[3].classification = 6; // not admitted: a gap the growth cannot cross
    pts.push_back(up<T>(1, 1, 0, 9));
    load<T>(v, s, pts, 2.0);
    allow(v, {1});
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 2, 6, 1, 1, 1, 1, 1, 1, 9}));
}

} // namespace

#define VX_BOTH_PRECISIONS(name)                                                                             \
    name<float>(GetParam());                                                                                 \
    name<double>(GetParam())

TEST_P(GroundGrowth, GrowsUntilTheCountStopsChanging)
{
    VX_BOTH_PRECISIONS(growsUntilNothingChanges);
}
TEST_P(GroundGrowth, StopsAtTheIterationLimit)
{
    VX_BOTH_PRECISIONS(stopsAtTheIterationLimit);
}
TEST_P(GroundGrowth, WithoutGroundTheLoopEndsAfterIterationOne)
{
    VX_BOTH_PRECISIONS(withoutGroundOneIterationAddsNothing);
}
TEST_P(GroundGrowth, ZeroIterationsRunNoPassAndPrintNothing)
{
    VX_BOTH_PRECISIONS(zeroIterationsRunNoPass);
}
TEST_P(GroundGrowth, TheCallsClassIsTheGroundGrown)
{
    VX_BOTH_PRECISIONS(grownClassIsTheCallsArgument);
}
TEST_P(GroundGrowth, GroundExactlyAtTheRangeIsNotUsed)
{
    VX_BOTH_PRECISIONS(neighbourExactlyAtTheRangeIsNotUsed);
}
TEST_P(GroundGrowth, APointOnThePlanePointIsNeverAccepted)
{
    VX_BOTH_PRECISIONS(pointOnThePlanePointIsNeverAccepted);
}
TEST_P(GroundGrowth, AboveThePlaneTestAndItsSwitch)
{
    VX_BOTH_PRECISIONS(aboveThePlaneTestAndItsSwitch);
}
TEST_P(GroundGrowth, ANarrowGridBoundsTheSearch)
{
    VX_BOTH_PRECISIONS(narrowGridBoundsTheSearch);
}
TEST_P(GroundGrowth, LongRangesSampleDenseCells)
{
    VX_BOTH_PRECISIONS(longRangesSampleDenseCells);
}
TEST_P(GroundGrowth, OtherClassesNeverChange)
{
    VX_BOTH_PRECISIONS(otherClassesNeverChange);
}

TEST_P(GroundGrowth, TheLowestPointIsAcceptedWhateverItsNormal)
{
    lowestPointIsAcceptedWhateverItsNormal<float>(GetParam(), 9);
    lowestPointIsAcceptedWhateverItsNormal<double>(GetParam(), 9);
}

INSTANTIATE_TEST_SUITE_P(Layouts, GroundGrowth, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
