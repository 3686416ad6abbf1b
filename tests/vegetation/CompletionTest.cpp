// The completion of the vegetation step: signed heights under vegetation, the mean ground plane,
// and the choice between ground and low vegetation for points left on the plane class.
#include "vegetation/VegetationTestSupport.h"

using namespace vxtest;
using namespace vegtest;

namespace {

constexpr int kPlane = 10; // the plane class the building steps leave

class VegetationCompletion : public SettingTest {};

/// A last-return point 0.25 m above a ground point whose normal points up: neither the filter
/// nor the passes take it; the completion puts it under the mean ground plane's low band.
template <class T> void lowPointAboveGroundBecomesLow(const Setting& s)
{
    std::vector<VX_Point<T>> pts{point<T>(0, 0, 0, kGround, 1, 0, 0, 1),
                                 point<T>(0, 0, T(0.25), 1, 1, 0, 0, 1)};
    EXPECT_EQ(runStep<T>(s, pts, allowTable({1})), (std::vector<int>{kGround, kLow}));
    // A building point in plan range keeps it.
    pts.push_back(point<T>(1, 0, 3, 6));
    EXPECT_EQ(runStep<T>(s, pts, allowTable({1})), (std::vector<int>{kGround, 1, 6}));
}

/// A point on the plane class between a ground point (normal down, so the first completion pass
/// leaves it) and a low-vegetation point below it. Squared plane distances: 1/64 from the
/// ground plane, 1/16 from the vegetation plane.
template <class T> std::vector<VX_Point<T>> planePointBetweenSurfaces()
{
    return {point<T>(0, 0, T(0.125), kPlane, 1, 0, 0, 1), point<T>(1, 0, 0, kGround, 1, 0, 0, -1),
            point<T>(-1, 0, T(-0.125), kLow, 1, 0, 0, 1)};
}

template <class T> void ratioDecidesBetweenGroundAndLowVegetation(const Setting& s)
{
    const auto table = allowTable({1, kPlane});
    const auto withRatio = [](float r) { return [r](Vexaro<T>& v) { v.set_VegetationRatio(r); }; };
    const auto scene = planePointBetweenSurfaces<T>();
    EXPECT_EQ(runStep<T>(s, scene, table, withRatio(0.5f))[0], kGround);
    EXPECT_EQ(runStep<T>(s, scene, table, withRatio(1.f))[0], kGround);
    // Ratio x 1/16 equal to 1/64 is enough.
    EXPECT_EQ(runStep<T>(s, scene, table, withRatio(0.25f))[0], kLow);
    EXPECT_EQ(runStep<T>(s, scene, table, withRatio(0.125f))[0], kLow);
    EXPECT_EQ(runStep<T>(s, scene, table, withRatio(0.f))[0], kLow);
}

} // namespace

TEST_P(VegetationCompletion, LowPointAboveTheGroundPlaneBecomesLowVegetation)
{
    lowPointAboveGroundBecomesLow<float>(GetParam());
    lowPointAboveGroundBecomesLow<double>(GetParam());
}

TEST_P(VegetationCompletion, RatioDecidesBetweenGroundAndLowVegetation)
{
    ratioDecidesBetweenGroundAndLowVegetation<float>(GetParam());
    ratioDecidesBetweenGroundAndLowVegetation<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Settings, VegetationCompletion, ::testing::ValuesIn(allSettings()), settingName);

namespace {

/// A point at 1 m, the given ground points, and a vegetation point above it.
template <class T> HostCloud<T> underVegetation(std::vector<T> groundHeights)
{
    std::vector<VX_Point<T>> pts;
    for (T z : groundHeights)
        pts.push_back(point<T>(0, 0, z, kGround));
    pts.push_back(point<T>(T(0.5), 0, 3, kMedium));
    pts.push_back(point<T>(0, 0, 1, 1));
    HostCloud<T> c = oneCell<T>(pts);
    c.table = allowTable({1});
    return c;
}

template <class T> int completedClass(const HostCloud<T>& c, bool soa)
{
    return runPass<vx::CompletePlants>(c, soa, defaultParams<T>()).back();
}

template <class T> void signedHeightUnderVegetation(bool soa)
{
    EXPECT_EQ(completedClass(underVegetation<T>({0}), soa), kMedium);    // h = 1
    EXPECT_EQ(completedClass(underVegetation<T>({T(0.75)}), soa), kLow); // h = 0.25
    EXPECT_EQ(completedClass(underVegetation<T>({-2}), soa), kHigh);     // h = 3
    EXPECT_EQ(completedClass(underVegetation<T>({T(1.25)}), soa), 1);    // h = -0.25, not |h|
    EXPECT_EQ(completedClass(underVegetation<T>({1}), soa), 1);          // h = 0
    // Once negative the height stays, even with a nearer ground point later.
    EXPECT_EQ(completedClass(underVegetation<T>({T(1.25), T(0.875)}), soa), 1);
    EXPECT_EQ(completedClass(underVegetation<T>({T(0.875), T(1.25)}), soa), kLow);
    // Vegetation below the point does not count as above it.
    HostCloud<T> below = underVegetation<T>({0});
    below.points[1].z = T(0.5);
    EXPECT_EQ(completedClass(below, soa), 1);
}

template <class T> void meanGroundPlaneDecidesWithoutVegetation(bool soa)
{
    auto run = [soa](std::vector<VX_Point<T>> pts) {
        HostCloud<T> c = oneCell<T>(pts);
        c.table = allowTable({1});
        return runPass<vx::CompletePlants>(c, soa, defaultParams<T>()).back();
    };
    const VX_Point<T> up = point<T>(0, 0, 0, kGround, 1, 0, 0, 1);
    EXPECT_EQ(run({up, point<T>(0, 0, T(0.25), 1)}), kLow);
    EXPECT_EQ(run({up, point<T>(0, 0, T(0.5), 1)}), 1);   // above the low limit
    EXPECT_EQ(run({up, point<T>(0, 0, T(-0.25), 1)}), 1); // under the ground plane's back
    // The mean of two ground points at 0 and 0.5 m lies at 0.25 m, above a point at 0.125 m.
    const VX_Point<T> left = point<T>(-1, 0, 0, kGround, 1, 0, 0, 1);
    const VX_Point<T> right = point<T>(1, 0, T(0.5), kGround, 1, 0, 0, 1);
    EXPECT_EQ(run({left, point<T>(0, 0, T(0.125), 1)}), kLow);
    EXPECT_EQ(run({left, right, point<T>(0, 0, T(0.125), 1)}), 1);
    // No ground in plan range: nothing.
    EXPECT_EQ(run({point<T>(T(2.5), 0, 0, kGround, 1, 0, 0, 1), point<T>(0, 0, T(0.25), 1)}), 1);
}

template <class T> vx::VegetationParams<T> withRatio(float r)
{
    auto p = defaultParams<T>();
    p.VegetationRatio = r;
    return p;
}

template <class T> int phase2Class(std::vector<VX_Point<T>> pts, bool soa, float ratio = 0.5f)
{
    HostCloud<T> c = oneCell<T>(pts);
    c.table = allowTable({1, kPlane});
    return runPass<vegtest::Phase2Of>(c, soa, withRatio<T>(ratio))[0];
}

template <class T> void phase2Rules(bool soa)
{
    const auto base = planePointBetweenSurfaces<T>();
    EXPECT_EQ(phase2Class(base, soa, 0.5f), kGround);
    EXPECT_EQ(phase2Class(base, soa, 0.25f), kLow);
    EXPECT_EQ(phase2Class(base, soa, 0.f), kLow);
    // Only the plane class is decided.
    auto other = base;
    other[0].classification = 1;
    EXPECT_EQ(phase2Class(other, soa, 0.f), 1);
    // Not within the low limit above the ground.
    auto high = base;
    high[0].z = T(0.5);
    EXPECT_EQ(phase2Class(high, soa, 0.f), kPlane);
    // No low vegetation in plan range.
    auto lonely = base;
    lonely[2].x = T(-2.5);
    EXPECT_EQ(phase2Class(lonely, soa, 0.f), kPlane);
    // A zero ground normal makes the ground distance NaN: ground unless the ratio is 0.
    auto flat = base;
    flat[1].nz = T(0);
    EXPECT_EQ(phase2Class(flat, soa, 0.5f), kGround);
    EXPECT_EQ(phase2Class(flat, soa, 0.f), kLow);
}

template <class T> void phase2KeepsTheFirstOfEquallyNearGroundPoints(bool soa)
{
    // Two ground points at the same distance; the one with a sideways normal puts the point a
    // full metre from its plane.
    const VX_Point<T> p = point<T>(0, 0, T(0.125), kPlane, 1, 0, 0, 1);
    const VX_Point<T> upward = point<T>(1, 0, 0, kGround, 1, 0, 0, 1);
    const VX_Point<T> sideways = point<T>(-1, 0, 0, kGround, 1, 1, 0, 0);
    const VX_Point<T> low = point<T>(0, 1, T(-0.125), kLow, 1, 0, 0, 1);
    EXPECT_EQ(phase2Class<T>({p, upward, sideways, low}, soa), kGround);
    EXPECT_EQ(phase2Class<T>({p, sideways, upward, low}, soa), kLow);
}

template <class T> void perFieldPhase2SkipsCellsWithoutCount()
{
    // The ground point sits in a run whose count says 0: the per-field form passes the cell over.
    HostCloud<T> c;
    c.points = planePointBetweenSurfaces<T>();
    c.index = {{0, 0}, {2, 0}, {1, 1}};
    c.cells = {{0, 2, 2}, {2, 3, 0}};
    c.grid.cellsX = 2, c.grid.cellsY = 1, c.grid.cellsZ = 1;
    c.grid.sizeX = c.grid.sizeY = c.grid.sizeZ = T(4);
    c.table = allowTable({kPlane});
    EXPECT_EQ(runPass<vegtest::Phase2Of>(c, false, withRatio<T>(0.f))[0], kLow);
    EXPECT_EQ(runPass<vegtest::Phase2Of>(c, true, withRatio<T>(0.f))[0], kPlane);
}

} // namespace

TEST(VegetationCompletionKernels, FirstPassUsesTheSignedHeightUnderVegetation)
{
    for (bool soa : {false, true}) {
        signedHeightUnderVegetation<float>(soa);
        signedHeightUnderVegetation<double>(soa);
    }
}

TEST(VegetationCompletionKernels, FirstPassUsesTheMeanGroundPlaneWithoutVegetation)
{
    for (bool soa : {false, true}) {
        meanGroundPlaneDecidesWithoutVegetation<float>(soa);
        meanGroundPlaneDecidesWithoutVegetation<double>(soa);
    }
}

TEST(VegetationCompletionKernels, SecondPassRules)
{
    for (bool soa : {false, true}) {
        phase2Rules<float>(soa);
        phase2Rules<double>(soa);
    }
}

TEST(VegetationCompletionKernels, SecondPassKeepsTheFirstOfEquallyNearGroundPoints)
{
    for (bool soa : {false, true}) {
        phase2KeepsTheFirstOfEquallyNearGroundPoints<float>(soa);
        phase2KeepsTheFirstOfEquallyNearGroundPoints<double>(soa);
    }
}

TEST(VegetationCompletionKernels, PerFieldSecondPassSkipsCellsWhoseCountIsBelowOne)
{
    perFieldPhase2SkipsCellsWithoutCount<float>();
    perFieldPhase2SkipsCellsWithoutCount<double>();
}
