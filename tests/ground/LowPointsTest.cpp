// Low-point search: exactly zero normals of admitted points get the low class.
#include "ground/GroundTestSupport.h"

#include <limits>

using namespace vxtest;
using namespace groundtest;

namespace {

class LowPoints : public SettingTest {};

template <class T> void zeroNormalsOfAdmittedPointsOnly(const Setting& s)
{
    const T tiny = std::numeric_limits<float>::denorm_min(); // survives the float per-field copy
    const T negZero = -T(0);
    Vexaro<T> v;
    load<T>(v, s,
            {point<T>(0, 0, 0, 1, 1, 0, 0, 0),       // zero normal
             point<T>(1, 0, 0, 1, 0, 0, 0, negZero), // (0, 0, -0.0) is zero too
             point<T>(2, 0, 0, 1, 1, tiny, 0, 0),    // any non-zero component is not
             point<T>(3, 0, 0, 1, 1, 0, -tiny, 0), point<T>(4, 0, 0, 1, 1, 0, 0, 1),
             point<T>(5, 0, 0, 9, 1, 0, 0, 0),  // not admitted
             point<T>(6, 0, 0, 2, 1, 0, 0, 0)}, // the ground class argument plays no part
            10.0);
    allow(v, {1, 2});
    CaptureStdout out;
    v.gatherLowPoints(7, 2);
    EXPECT_EQ(classes(v), (std::vector<int>{7, 7, 1, 1, 1, 9, 7}));
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, 7);
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 2);
}

template <class T> void messages(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {point<T>(0, 0, 0), point<T>(1, 0, 0)}, 10.0, false, 4);
    {
        CaptureStdout out;
        v.gatherLowPoints(7, 2);
        EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1", "Filtering Low Points 7",
                                           "Low Point search done! "}));
    }
    v.setMessageLevel(2);
    {
        CaptureStdout out;
        v.gatherLowPoints(8, 2);
        EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1", "Low Point search done! "}));
    }
    v.setMessageLevel(1);
    {
        CaptureStdout out;
        v.gatherLowPoints(8, 2);
        EXPECT_EQ(driverLines(out), (Lines{"Threads:  256", "Blocks:  1"}));
    }
}

} // namespace

TEST_P(LowPoints, ZeroNormalsOfAdmittedPointsGetTheLowClass)
{
    zeroNormalsOfAdmittedPointsOnly<float>(GetParam());
    zeroNormalsOfAdmittedPointsOnly<double>(GetParam());
}

TEST_P(LowPoints, Messages)
{
    messages<float>(GetParam());
    messages<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, LowPoints, ::testing::ValuesIn(vxtest::allSettings()), vxtest::settingName);
