// The building seed filter: which points become seeds, which candidates, and which never change.
//
// Most cases use one probe point on a flat roof at height 5 with six neighbours on the same
// plane. A ground point 2.5 m from the probe in plan lies within the ground range of every
// neighbour but not of the probe, so the neighbours never change themselves and the probe's
// counts do not depend on the order in which points are visited.
#include "building/BuildingTestSupport.h"

using namespace bldtest;
using vxtest::SettingTest;

namespace {

constexpr int kProbe = 0;

template <class T> std::vector<VX_Point<T>> stableRoof(int neighbourClass = kSource, int probeClass = kSource)
{
    std::vector<VX_Point<T>> pts{up<T>(0, 0, 5, probeClass)};
    for (double x : {0.75, 1.25})
        for (double y : {-0.5, 0.0, 0.5})
            pts.push_back(up<T>(x, y, 5, neighbourClass));
    pts.push_back(up<T>(2.5, 0, 0, kGround));
    return pts;
}

/// The classes the cloud had, with the probe's replaced.
template <class T> Classes withProbe(const std::vector<VX_Point<T>>& pts, int probeClass)
{
    Classes out;
    for (const auto& p : pts)
        out.push_back(p.classification);
    out[kProbe] = probeClass;
    return out;
}

template <class T>
Classes seedsOf(const Setting& s, std::vector<VX_Point<T>> pts, void (*tune)(Vexaro<T>&) = nullptr)
{
    Vexaro<T> v;
    load(v, s, pts, 3.0);
    if (tune)
        tune(v);
    findSeeds(v);
    return vxtest::classes(v);
}

} // namespace

class BuildingSeeds : public SettingTest {};

TEST_P(BuildingSeeds, ProbeOnASharedPlaneBecomesASeed)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const auto pts = stableRoof<T>();
        EXPECT_EQ(seedsOf<T>(GetParam(), pts), withProbe(pts, kBuilding));
    });
}

TEST_P(BuildingSeeds, ZeroRangeChangesNothing)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const auto pts = stableRoof<T>();
        EXPECT_EQ(seedsOf<T>(GetParam(), pts, [](Vexaro<T>& v) { v.set_BuildingRange(T(0)); }),
                  withProbe(pts, kSource));
    });
}

TEST_P(BuildingSeeds, UnadmittedNonLastReturnAndZeroNormalPointsNeverChange)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        auto unadmitted = stableRoof<T>(kSource, 4);
        EXPECT_EQ(seedsOf<T>(GetParam(), unadmitted), withProbe(unadmitted, 4));

        auto ghost = stableRoof<T>();
        ghost[kProbe].lastReturn = 0;
        EXPECT_EQ(seedsOf<T>(GetParam(), ghost), withProbe(ghost, kSource));

        auto flat = stableRoof<T>();
        flat[kProbe].nz = T(0);
        EXPECT_EQ(seedsOf<T>(GetParam(), flat), withProbe(flat, kSource));
    });
}

TEST_P(BuildingSeeds, GroundDirectlyBelowBlocksSeedAndCandidate)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        for (double groundZ : {0.0, 2.5}) {
            auto pts = stableRoof<T>();
            pts.push_back(up<T>(0, 0, groundZ, kGround));
            EXPECT_EQ(seedsOf<T>(GetParam(), pts, nullptr), withProbe(pts, kSource)) << groundZ;
            // Not a candidate either when it could not be a seed.
            EXPECT_EQ(seedsOf<T>(GetParam(), pts, [](Vexaro<T>& v) { v.set_BuildingMinNoN(100); }),
                      withProbe(pts, kSource));
        }
    });
}

TEST_P(BuildingSeeds, PointBelowAGroundPointOfItsCellsIsNeverASeed)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        // Out of the ground range in plan, so only the height decides.
        auto above = stableRoof<T>();
        above.push_back(up<T>(-2.5, 0, 8, kGround)); // 3 m above the probe: gap -3, |gap| > 1.8
        EXPECT_EQ(seedsOf<T>(GetParam(), above), withProbe(above, kSource));
        EXPECT_EQ(seedsOf<T>(GetParam(), above, [](Vexaro<T>& v) { v.set_BuildingMinNoN(100); }),
                  withProbe(above, kSource));

        auto level = stableRoof<T>();
        level.push_back(up<T>(-2.5, 0, 5, kGround)); // gap 0
        EXPECT_EQ(seedsOf<T>(GetParam(), level, [](Vexaro<T>& v) { v.set_BuildingMinHeight(T(-1)); }),
                  withProbe(level, kSource));

        // The highest ground point decides: 2 m below the probe is not high enough for 2.5 m.
        auto low = stableRoof<T>();
        low.push_back(up<T>(-2.5, 0, 3, kGround));
        EXPECT_EQ(seedsOf<T>(GetParam(), low), withProbe(low, kBuilding));
        EXPECT_EQ(seedsOf<T>(GetParam(), low, [](Vexaro<T>& v) { v.set_BuildingMinHeight(T(2.5)); }),
                  withProbe(low, kSource));
    });
}

TEST_P(BuildingSeeds, ZeroShareThresholdPassesTheShareTests)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        // Companions only: nobody agrees, everybody is on the plane.
        const auto companions = stableRoof<T>(kCompanion, kCompanion);
        EXPECT_EQ(seedsOf<T>(GetParam(), companions), withProbe(companions, kCandidate));
        EXPECT_EQ(seedsOf<T>(GetParam(), companions, [](Vexaro<T>& v) { v.set_BuildingProcOfBP(0.f); }),
                  withProbe(companions, kBuilding));

        // Neighbours off the plane: only the probe is on it (1 of 7), not enough for a candidate.
        auto offPlane = stableRoof<T>(kCompanion, kCompanion);
        for (int i = 1; i <= 6; ++i)
            offPlane[i].z = T(5.5);
        EXPECT_EQ(seedsOf<T>(GetParam(), offPlane), withProbe(offPlane, kCompanion));
        EXPECT_EQ(seedsOf<T>(GetParam(), offPlane, [](Vexaro<T>& v) { v.set_BuildingProcOfBP(0.f); }),
                  withProbe(offPlane, kBuilding));
    });
}

TEST_P(BuildingSeeds, ThePointItselfVotesAndAgrees)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const std::vector<VX_Point<T>> lone{up<T>(0, 0, 5, kSource), up<T>(2.5, 0, 0, kGround)};
        EXPECT_EQ(seedsOf<T>(GetParam(), lone, [](Vexaro<T>& v) { v.set_BuildingMinNoN(1); }),
                  withProbe(lone, kBuilding));
        // One voter is too few for a seed; on its own plane it is a candidate.
        EXPECT_EQ(seedsOf<T>(GetParam(), lone), withProbe(lone, kCandidate));
        EXPECT_EQ(seedsOf<T>(GetParam(), lone, [](Vexaro<T>& v) { v.set_BuildingProcOfBP(1.f); }),
                  withProbe(lone, kCandidate));
    });
}

TEST_P(BuildingSeeds, TooFewVotersOrTooManyGhostsGiveACandidate)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        const auto pts = stableRoof<T>();
        EXPECT_EQ(seedsOf<T>(GetParam(), pts, [](Vexaro<T>& v) { v.set_BuildingMinNoN(7); }),
                  withProbe(pts, kBuilding));
        EXPECT_EQ(seedsOf<T>(GetParam(), pts, [](Vexaro<T>& v) { v.set_BuildingMinNoN(8); }),
                  withProbe(pts, kCandidate));

        auto oneGhost = stableRoof<T>();
        oneGhost[1].lastReturn = 0; // 1 of 7
        EXPECT_EQ(seedsOf<T>(GetParam(), oneGhost), withProbe(oneGhost, kBuilding));
        auto twoGhosts = oneGhost;
        twoGhosts[2].lastReturn = 0; // 2 of 7 > 0.2; 5 of 7 still on the plane
        EXPECT_EQ(seedsOf<T>(GetParam(), twoGhosts), withProbe(twoGhosts, kCandidate));
    });
}

TEST_P(BuildingSeeds, NeighboursMustShareNormalAndPlaneToAgree)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        auto tilted = stableRoof<T>(); // cosine 0.8 < 0.9: on the plane, not agreeing
        for (int i = 1; i <= 6; ++i)
            tilted[i].ny = T(0.6), tilted[i].nz = T(0.8);
        EXPECT_EQ(seedsOf<T>(GetParam(), tilted), withProbe(tilted, kCandidate));
        EXPECT_EQ(seedsOf<T>(GetParam(), tilted, [](Vexaro<T>& v) { v.set_BuildingMinCosBuilding(0.75f); }),
                  withProbe(tilted, kBuilding));

        auto lifted = stableRoof<T>(); // 0.25 off the plane: neither agreeing nor on it
        for (int i = 1; i <= 6; ++i)
            lifted[i].z = T(5.25);
        EXPECT_EQ(seedsOf<T>(GetParam(), lifted), withProbe(lifted, kSource));
        EXPECT_EQ(seedsOf<T>(GetParam(), lifted, [](Vexaro<T>& v) { v.set_BuildingDfPBuilding(T(0.3)); }),
                  withProbe(lifted, kBuilding));
    });
}

TEST_P(BuildingSeeds, UnadmittedNeighboursDoNotVote)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        // Only the probe votes: too few for a seed, a candidate on its own plane.
        const auto pts = stableRoof<T>(3);
        EXPECT_EQ(seedsOf<T>(GetParam(), pts), withProbe(pts, kCandidate));
    });
}

TEST_P(BuildingSeeds, WithoutGroundTheHeightIsTenCellEdges)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        // A flat 3 x 3 roof alone: one cell layer of edge 3, so every point stands 30 above "ground".
        std::vector<VX_Point<T>> roof;
        for (int i = 0; i < 9; ++i)
            roof.push_back(up<T>(0.5 * (i % 3), 0.5 * (i / 3), 5, kSource));
        auto tune = [](Vexaro<T>& v) {
            v.set_BuildingMinNoN(1);
            v.set_BuildingProcOfBP(0.f);
        };
        Vexaro<T> v;
        load(v, GetParam(), roof, 3.0);
        tune(v);
        v.set_BuildingMinHeight(T(29.5));
        findSeeds(v);
        EXPECT_EQ(vxtest::classes(v), Classes(9, kBuilding));

        Vexaro<T> w;
        load(w, GetParam(), roof, 3.0);
        tune(w);
        w.set_BuildingMinHeight(T(30));
        findSeeds(w);
        EXPECT_EQ(vxtest::classes(w), Classes(9, kSource));
    });
}

TEST_P(BuildingSeeds, AnnouncesTheSourceClassAndTheLaunch)
{
    forBothPrecisions([&](auto tag) {
        using T = typename decltype(tag)::type;
        Vexaro<T> v;
        load(v, GetParam(), stableRoof<T>(), 3.0, defaultTable(), 2);
        vxtest::CaptureStdout out;
        v.findBuildingSeed(kBuilding, kGround, 7, kCompanion);
        const Lines lines = out.lines();
        ASSERT_GE(lines.size(), 5u);
        // No mode line in the field layout, "AOS " in the record layout.
        const Lines head = GetParam().soa ? Lines{"Threads:  256", "Blocks:  1", "ORDER 7"}
                                          : Lines{"AOS ", "Threads:  256", "Blocks:  1", "ORDER 7"};
        EXPECT_EQ(Lines(lines.begin(), lines.begin() + head.size()), head);
        EXPECT_EQ(lines[head.size()].rfind("Time: ", 0), 0u);
        EXPECT_EQ(lines[head.size() + 1].rfind("Time: ", 0), 0u);
        EXPECT_EQ(vxtest::engine(v).slots.NeighbourPlaneClass, 7);

        // "ORDER" is a level 2 message; the launch lines print at every level.
        v.setMessageLevel(1);
        vxtest::CaptureStdout quiet;
        v.findBuildingSeed(kBuilding, kGround, 7, kCompanion);
        EXPECT_EQ(driverLines(quiet), (Lines{"Threads:  256", "Blocks:  1"}));
    });
}

INSTANTIATE_TEST_SUITE_P(Settings, BuildingSeeds, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
