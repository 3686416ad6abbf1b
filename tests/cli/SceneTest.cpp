// The synthetic demo scene: repeatable for a seed, sized as asked, with every kind of point.
#include "AppUnitTests.h"

#ifdef VEXARO_APP_LINKED

#include "scene/Pulses.h"
#include "scene/Scene.h"

#include <gtest/gtest.h>

#include <map>

using vx::scene::generateScene;
using vx::scene::Scene;
using vx::scene::SceneOptions;

namespace {

Scene make(std::size_t points, uint64_t seed)
{
    SceneOptions o;
    o.targetPoints = points;
    o.seed = seed;
    return generateScene(o);
}

bool samePoints(const Scene& a, const Scene& b)
{
    if (a.points.size() != b.points.size())
        return false;
    for (std::size_t i = 0; i < a.points.size(); ++i) {
        const auto &p = a.points[i], &q = b.points[i];
        if (p.x != q.x || p.y != q.y || p.z != q.z || p.gpsTime != q.gpsTime || p.intensity != q.intensity ||
            p.returnNumber != q.returnNumber || p.numberOfReturns != q.numberOfReturns || p.truth != q.truth)
            return false;
    }
    return true;
}

} // namespace

TEST(Scene, SameSeedSamePoints)
{
    for (std::size_t size : {10000u, 100000u}) {
        EXPECT_TRUE(samePoints(make(size, 3), make(size, 3))) << size;
        EXPECT_FALSE(samePoints(make(size, 3), make(size, 4))) << size;
    }
}

TEST(Scene, SizeFollowsTheTarget)
{
    for (std::size_t size : {10000u, 100000u, 300000u}) {
        const auto s = make(size, 1);
        EXPECT_NEAR(static_cast<double>(s.points.size()), static_cast<double>(size), 0.03 * size) << size;
    }
    // The area grows with the size at about 10 pulses per square metre.
    const auto small = make(10000, 1), large = make(100000, 1);
    EXPECT_NEAR(large.side / small.side, 3.16, 0.05);
    EXPECT_NEAR(small.pulseSpacing, 0.3, 0.05);
}

TEST(Scene, TruthHoldsEveryClassInSensibleShares)
{
    for (uint64_t seed : {1u, 2u}) {
        const auto s = make(100000, seed);
        std::map<int, double> share;
        for (const auto& p : s.points)
            share[p.truth] += 1.0 / s.points.size();
        for (int c : {2, 3, 4, 5, 6, 7})
            EXPECT_GT(share[c], 0.0) << "class " << c << " seed " << seed;
        EXPECT_EQ(share.size(), 6u);
        EXPECT_GT(share[2], 0.45);
        EXPECT_LT(share[2], 0.85);
        EXPECT_GT(share[6], 0.02);
        EXPECT_GT(share[5], 0.05);
        EXPECT_LT(share[7], 0.001);
        EXPECT_GE(s.buildings, 3);
        EXPECT_GT(s.trees, 10);
        EXPECT_GT(s.shrubs, 10);
    }
}

TEST(Scene, TenThousandPointsStillHoldABuildingAndTrees)
{
    for (uint64_t seed = 1; seed <= 6; ++seed) {
        const auto s = make(10000, seed);
        EXPECT_GE(s.buildings, 1) << seed;
        EXPECT_GE(s.trees, 1) << seed;
    }
}

TEST(Scene, ReturnsArePlausible)
{
    const auto s = make(100000, 5);
    std::size_t multi = 0, lastUnderCanopyOnGround = 0;
    double previousTime = 0;
    for (std::size_t i = 0; i < s.points.size(); ++i) {
        const auto& p = s.points[i];
        ASSERT_GE(p.returnNumber, 1);
        ASSERT_LE(p.returnNumber, p.numberOfReturns);
        ASSERT_LE(p.numberOfReturns, 5);
        ASSERT_GE(p.gpsTime, previousTime) << "points come in time order";
        previousTime = p.gpsTime;
        ASSERT_GT(p.intensity, 0);
        if (p.numberOfReturns > 1)
            ++multi;
        if (p.numberOfReturns > 1 && p.returnNumber == p.numberOfReturns && p.truth == 2)
            ++lastUnderCanopyOnGround;
        // Returns of one pulse share the time and come from the top down.
        if (p.returnNumber > 1) {
            const auto& q = s.points[i - 1];
            ASSERT_EQ(q.gpsTime, p.gpsTime);
            ASSERT_EQ(q.returnNumber + 1, p.returnNumber);
            ASSERT_GE(q.z - p.z, 0.7);
        }
        ASSERT_TRUE(p.x >= 0 && p.y >= 0 && p.x < s.side && p.y < s.side);
    }
    EXPECT_GT(multi, s.points.size() / 20);
    EXPECT_GT(lastUnderCanopyOnGround, 100u) << "the ground is seen under the trees";
}

TEST(Scene, VegetationTiersFollowTheLibrarysHeightLimits)
{
    EXPECT_EQ(vx::scene::vegetationTier(0.39), 3);
    EXPECT_EQ(vx::scene::vegetationTier(0.4), 4);
    EXPECT_EQ(vx::scene::vegetationTier(2.0), 4);
    EXPECT_EQ(vx::scene::vegetationTier(2.01), 5);
}

#endif
