// The rules of the three growth passes, each isolated from the others by its parameters: the
// update's plane and under-roof rules, its unsquared starting minimum and its ghost test; the
// completion's height limit, ground test and stricter ghost test; the closing's ground
// clearance, plane and detail rules. The building point B stands at the origin with an upward
// normal unless a case says otherwise.
#include "building/BuildingTestSupport.h"

#include <functional>

using namespace bldtest;
using vxtest::SettingTest;

namespace {

template <class T> using Tune = std::function<void(Vexaro<T>&)>;

template <class T>
Classes grown(const Setting& s, std::vector<VX_Point<T>> pts, const Tune<T>& tune, double cell = 2.0)
{
    Vexaro<T> v;
    load(v, s, pts, cell);
    tune(v);
    grow(v);
    return vxtest::classes(v);
}

/// Only the update runs, with one gated iteration before the ungated one.
template <class T> void updateOnly(Vexaro<T>& v)
{
    onlyUpdate(v);
    v.set_Building2Iterations(1);
}

/// Only the completion can take points: the update finds no plane close enough and the
/// closing's radii are empty.
template <class T> void completionOnly(Vexaro<T>& v)
{
    v.set_Building2DistFPlane(T(0));
    v.set_Building3GroundRange(T(0));
}

} // namespace

class BuildingGrowthRules : public SettingTest {};

TEST_P(BuildingGrowthRules, UpdateTakesPointsOnTheRoofPlaneOnly)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> tune = updateOnly<T>;
        const auto B = up<T>(0, 0, 5, kBuilding);
        // 0.3 off the plane: 0.09 < 0.4²; 0.5 off: 0.25 is not.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 5.3, kSource)}, tune),
                  (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 5.5, kSource)}, tune), (Classes{kBuilding, kSource}));
        // Off the plane and below the roof point: a plain source point stays.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 4, kSource)}, tune), (Classes{kBuilding, kSource}));
        // Non-last returns never join the update.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 5, kSource, 0)}, tune), (Classes{kBuilding, kSource}));
    });
}

TEST_P(BuildingGrowthRules, CandidateBelowTheNearestRoofPointJoinsOffThePlane)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> tune = updateOnly<T>;
        const auto B = up<T>(0, 0, 5, kBuilding);
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 4, kCandidate)}, tune),
                  (Classes{kBuilding, kBuilding}));
        // Above the roof point it is released instead.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 6, kCandidate)}, tune),
                  (Classes{kBuilding, kSource}));
        // Ground nearer in plan than the roof point is in 3D keeps it out.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 4, kCandidate), up<T>(0.5, 0.5, 3, kGround)}, tune),
                  (Classes{kBuilding, kSource, kGround}));
        // Without gated iterations the candidate is released before any update sees it.
        const Tune<T> noIterations = [](Vexaro<T>& v) {
            onlyUpdate(v);
            v.set_Building2Iterations(0);
        };
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 4, kCandidate)}, noIterations),
                  (Classes{kBuilding, kSource}));
        // The under-roof rule reads the candidate's own table entry.
        const Tune<T> candidatesNotAdmitted = [](Vexaro<T>& v) {
            updateOnly(v);
            auto table = vxtest::allowTable({kSource, kCompanion, kMark});
            v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
        };
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 4, kCandidate)}, candidatesNotAdmitted),
                  (Classes{kBuilding, kSource}));
    });
}

// With no ground within range in plan, the nearest-ground minimum stays at 10 x the cell edge,
// a length, and is compared with squared distances as it stands: with cells of 2 a building
// point at squared distance 18 is nearer than "no ground", one at 21.25 is not.
TEST_P(BuildingGrowthRules, MissingGroundCountsAsTenCellEdgesUnsquared)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> tune = [](Vexaro<T>& v) {
            updateOnly(v);
            v.set_Building2Range(T(5));
        };
        const auto P = up<T>(0, 0, 0, kSource);
        EXPECT_EQ(grown<T>(GetParam(), {P, up<T>(3, 3, 0, kBuilding)}, tune),
                  (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(grown<T>(GetParam(), {P, up<T>(3, 3.5, 0, kBuilding)}, tune),
                  (Classes{kSource, kBuilding}));
        // Cells of 3 give 30, farther than 21.25.
        EXPECT_EQ(grown<T>(GetParam(), {P, up<T>(3, 3.5, 0, kBuilding)}, tune, 3.0),
                  (Classes{kBuilding, kBuilding}));
        // Real ground nearer in plan blocks the nearer building point too.
        EXPECT_EQ(grown<T>(GetParam(), {P, up<T>(3, 3, 0, kBuilding), up<T>(0.5, 0, -3, kGround)}, tune),
                  (Classes{kSource, kBuilding, kGround}));
    });
}

// Four voters around the candidate, one of them a non-last return: a share of exactly the limit
// lets the gated update take it.
TEST_P(BuildingGrowthRules, UpdateJoinsWhenTheGhostShareEqualsTheLimit)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const std::vector<VX_Point<T>> pts{up<T>(0, 0, 5, kBuilding), up<T>(0.5, 0, 4, kCandidate),
                                           up<T>(0.5, 0.5, 4, kSource, 0), up<T>(1, 0, 4.5, kSource)};
        auto with = [](float limit) {
            return Tune<T>([limit](Vexaro<T>& v) {
                updateOnly(v);
                v.set_BuildingProcOfGhosts(limit);
            });
        };
        EXPECT_EQ(grown<T>(GetParam(), pts, with(0.25f)), (Classes{kBuilding, kBuilding, kSource, kSource}));
        EXPECT_EQ(grown<T>(GetParam(), pts, with(0.2f)), (Classes{kBuilding, kSource, kSource, kSource}));
    });
}

// The same share of one ghost in four voters keeps a point out of the completion, which takes
// only shares below the limit.
TEST_P(BuildingGrowthRules, CompletionNeedsAGhostShareBelowTheLimit)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const std::vector<VX_Point<T>> pts{up<T>(0, 0, 5, kBuilding), up<T>(1, 0, 5, kSource),
                                           up<T>(1, -0.5, 5, kSource), up<T>(1, 0.5, 5, kSource, 0)};
        auto with = [](float limit) {
            return Tune<T>([limit](Vexaro<T>& v) {
                completionOnly(v);
                v.set_BuildingProcOfGhosts(limit);
            });
        };
        EXPECT_EQ(grown<T>(GetParam(), pts, with(0.25f)), (Classes{kBuilding, kSource, kSource, kSource}));
        EXPECT_EQ(grown<T>(GetParam(), pts, with(0.3f)), (Classes{kBuilding, kBuilding, kBuilding, kSource}));
    });
}

TEST_P(BuildingGrowthRules, CompletionHeightLimitIsHalfAgainForSourcePoints)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> tune = completionOnly<T>;
        const auto B = up<T>(0, 0, 5, kBuilding);
        // 2.6 above the building point: within 1.5 x 1.8 for the source class, not within 1.8.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 7.6, kSource)}, tune),
                  (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 7.6, kCompanion)}, tune),
                  (Classes{kBuilding, kCompanion}));
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 6.5, kCompanion)}, tune),
                  (Classes{kBuilding, kBuilding}));
        // Below the building it always fits; the plan radius has no height limit.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1, 0, 2, kCompanion)}, tune),
                  (Classes{kBuilding, kBuilding}));
        // Out of the plan radius (1.5) nothing is seen.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1.5, 0, 5, kSource)}, tune), (Classes{kBuilding, kSource}));
    });
}

// The building point's normal lies in the plane here, so the closing finds no plane through the
// point and, with the point 1 m away in plan, no detail: only the completion can take it.
TEST_P(BuildingGrowthRules, GroundCloseInPlanBlocksTheCompletion)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> tune = [](Vexaro<T>& v) { v.set_Building2DistFPlane(T(0)); };
        const auto B = vxtest::point<T>(T(0), T(0), T(5), kBuilding, 1, T(1), T(0), T(0));
        const auto P = up<T>(1, 0, 5, kSource);
        EXPECT_EQ(grown<T>(GetParam(), {B, P}, tune), (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(grown<T>(GetParam(), {B, P, up<T>(1, 0.5, 4, kGround)}, tune),
                  (Classes{kBuilding, kSource, kGround}));
        // Beyond the ground range (1.0) in plan it does not.
        EXPECT_EQ(grown<T>(GetParam(), {B, P, up<T>(1, 1, 4, kGround)}, tune),
                  (Classes{kBuilding, kBuilding, kGround}));
    });
}

// A non-last return on the roof plane 1 m from the building point: only the closing looks at
// it. Ground within 1 m in plan blocks it unless it lies at least 0.4 below the point.
TEST_P(BuildingGrowthRules, ClosingNeedsGroundAtLeastPointFourBelow)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> defaults = [](Vexaro<T>&) {};
        const auto B = up<T>(0, 0, 0.4, kBuilding);
        const auto P = up<T>(1, 0, 0.4, kSource, 0);
        EXPECT_EQ(grown<T>(GetParam(), {B, P}, defaults), (Classes{kBuilding, kBuilding}));
        const struct {
            double z;
            int expected;
        } cases[] = {{0.0, kBuilding}, {-1.0, kBuilding}, {0.01, kSource}, {0.4, kSource}, {0.9, kSource}};
        for (const auto& c : cases)
            EXPECT_EQ(grown<T>(GetParam(), {B, P, up<T>(1, 0.5, c.z, kGround)}, defaults),
                      (Classes{kBuilding, c.expected, kGround}))
                << c.z;
        // Ground out of the range in plan does not count at any height.
        EXPECT_EQ(grown<T>(GetParam(), {B, P, up<T>(1, 1, 0.4, kGround)}, defaults),
                  (Classes{kBuilding, kBuilding, kGround}));
    });
}

TEST_P(BuildingGrowthRules, ClosingTakesNearPlanePointsWithinTwiceTheGroundRange)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const Tune<T> defaults = [](Vexaro<T>&) {};
        const auto B = up<T>(0, 0, 5, kBuilding);
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1.9, 0, 5, kSource, 0)}, defaults),
                  (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(2.1, 0, 5, kSource, 0)}, defaults),
                  (Classes{kBuilding, kSource}));
        // Squared plane distance 0.09 < 0.1 joins, 0.1225 does not.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1.5, 0, 5.3, kSource, 0)}, defaults),
                  (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(1.5, 0, 5.35, kSource, 0)}, defaults),
                  (Classes{kBuilding, kSource}));
    });
}

TEST_P(BuildingGrowthRules, ClosingTakesDetailsJustAboveTheBuilding)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const auto B = up<T>(0, 0, 5, kBuilding);
        const auto detail = up<T>(0.5, 0, 5.35, kSource, 0); // off the plane, 0.35 above, 0.5 away
        EXPECT_EQ(grown<T>(GetParam(), {B, detail}, [](Vexaro<T>&) {}), (Classes{kBuilding, kBuilding}));
        EXPECT_EQ(
            grown<T>(GetParam(), {B, detail}, [](Vexaro<T>& v) { v.set_Building3DetailsHeight(T(0.3)); }),
            (Classes{kBuilding, kSource}));
        // Unadmitted points never change, whatever stands around them.
        EXPECT_EQ(grown<T>(GetParam(), {B, up<T>(0.5, 0, 5.35, 4, 0)}, [](Vexaro<T>&) {}),
                  (Classes{kBuilding, 4}));
    });
}

INSTANTIATE_TEST_SUITE_P(Settings, BuildingGrowthRules, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
