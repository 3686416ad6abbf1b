// Ground seeds: admitted last returns whose height index is at most the threshold.
#include "ground/GroundTestSupport.h"

#include <cmath>
#include <limits>

using namespace vxtest;
using namespace groundtest;

namespace {

class GroundSeeds : public SettingTest {};

template <class T> VX_Point<T> withIndex(T x, int cls, int lastReturn, float hi)
{
    return point<T>(x, 0, 0, cls, lastReturn, 0, 0, 1, hi);
}

template <class T> void seedRules(const Setting& s)
{
    const float limit = 0.25f;
    Vexaro<T> v;
    load<T>(v, s,
            {withIndex<T>(0, 1, 1, limit),                                   // equal: a seed
             withIndex<T>(1, 1, 1, std::nextafter(limit, 1.f)),              // just above
             withIndex<T>(2, 1, 0, 0.f),                                     // not the last return
             withIndex<T>(3, 1, 2, 0.f),                                     // the flag must be exactly 1
             withIndex<T>(4, 1, 1, std::numeric_limits<float>::quiet_NaN()), // NaN never
             withIndex<T>(5, 1, 1, -3.f),                                    // below is fine
             withIndex<T>(6, 9, 1, 0.f),                                     // not admitted
             withIndex<T>(7, 5, 1, 0.f),                                     // already ground: stays ground
             withIndex<T>(8, 5, 1, 1.f)},                                    // ground above: untouched
            10.0);
    allow(v, {1, 5});
    v.set_SeedSearchMaxHindeks(limit);
    CaptureStdout out;
    v.findGroundSeed(5);
    EXPECT_EQ(classes(v), (std::vector<int>{5, 1, 1, 1, 1, 5, 9, 5, 5}));
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 5);
}

template <class T> void defaultThreshold(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {withIndex<T>(0, 1, 1, 0.001f), withIndex<T>(1, 1, 1, 0.0011f), withIndex<T>(2, 1, 1, 0.f)},
            10.0);
    CaptureStdout out;
    v.findGroundSeed(2);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 2}));
    // Another class moves the ground class of the following steps along.
    v.findGroundSeed(3);
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 3);
    EXPECT_EQ(classes(v), (std::vector<int>{3, 1, 3}));
}

template <class T> void messages(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {withIndex<T>(0, 1, 1, 0.f), withIndex<T>(1, 1, 1, 0.f)}, 10.0, false, 3);
    {
        CaptureStdout out;
        v.findGroundSeed(2);
        EXPECT_EQ(driverLines(out),
                  (Lines{"Threads:  256", "Blocks:  1", "Filtering ground seed points  0.001"}));
    }
    v.set_SeedSearchMaxHindeks(0.25f);
    v.setMessageLevel(2);
    {
        CaptureStdout out;
        v.findGroundSeed(2);
        EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1"}));
    }
    v.setMessageLevel(4);
    {
        CaptureStdout out;
        v.findGroundSeed(2);
        EXPECT_EQ(driverLines(out),
                  (Lines{"Threads:  256", "Blocks:  1", "Filtering ground seed points  0.25"}));
    }
}

} // namespace

TEST_P(GroundSeeds, AdmittedLastReturnsAtOrBelowTheThreshold)
{
    seedRules<float>(GetParam());
    seedRules<double>(GetParam());
}

TEST_P(GroundSeeds, DefaultThresholdAndAnotherGroundClass)
{
    defaultThreshold<float>(GetParam());
    defaultThreshold<double>(GetParam());
}

TEST_P(GroundSeeds, Messages)
{
    messages<float>(GetParam());
    messages<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, GroundSeeds, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
