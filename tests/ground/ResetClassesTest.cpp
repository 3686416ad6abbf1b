// Class reset: unconditional and near-class forms, admission, and its announcement line.
#include "common/Probe.h"
#include "ground/GroundTestSupport.h"

using namespace vxtest;
using namespace groundtest;

namespace {

class ResetClasses : public SettingTest {};

template <class T> void rangeZeroResetsEveryAdmittedPoint(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s,
            {point<T>(0, 0, 0, 1), point<T>(50, 0, 0, 2), point<T>(0, 50, 0, 3), point<T>(50, 50, 5, 5),
             point<T>(1, 1, 1, 9)},
            10.0);
    allow(v, {1, 2, 3});
    CaptureStdout out;
    v.resetPointCloudClasses(7);
    EXPECT_EQ(classes(v), (std::vector<int>{7, 7, 7, 5, 9}));
}

template <class T> void withoutTableEveryPointIsReset(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {point<T>(0, 0, 0, 1), point<T>(50, 0, 0, 200), point<T>(0, 50, 0, 3)}, 10.0);
    CaptureStdout out;
    v.resetPointCloudClasses(0);
    EXPECT_EQ(classes(v), (std::vector<int>{0, 0, 0}));
}

template <class T> void ownOptionalClassIsResetWhenRangeIsSet(const Setting& s)
{
    Vexaro<T> v;
    // Every point far from the others: only its own distance 0 can match.
    load<T>(v, s, {point<T>(0, 0, 0, 4), point<T>(5, 0, 0, 1), point<T>(0, 5, 0, 4), point<T>(5, 5, 0, 3)},
            10.0);
    allow(v, {1, 3, 4});
    v.set_ResetOptionalRange(T(1));
    v.set_ResetOptionalClass(4);
    CaptureStdout out;
    v.resetPointCloudClasses(7);
    EXPECT_EQ(classes(v), (std::vector<int>{7, 1, 7, 3}));
}

template <class T> void neighbourExactlyAtTheRangeIsNoMatch(const Setting& s)
{
    Vexaro<T> v;
    // Class 4 (not admitted, so never rewritten) at the origin; class 1 points exactly at the
    // range along x and z, and at squared distances 0.5625 and 0.75.
    load<T>(v, s,
            {point<T>(0, 0, 0, 4), point<T>(1, 0, 0, 1), point<T>(0, T(0.75), 0, 1),
             point<T>(T(0.5), T(0.5), T(0.5), 1), point<T>(0, 0, T(-1), 1)},
            2.0);
    allow(v, {1});
    v.set_ResetOptionalRange(T(1));
    v.set_ResetOptionalClass(4);
    CaptureStdout out;
    v.resetPointCloudClasses(7);
    EXPECT_EQ(classes(v), (std::vector<int>{4, 1, 7, 7, 1}));
}

template <class T> void onlyTheSurroundingCellsAreSearched(const Setting& s)
{
    Vexaro<T> v;
    // Cells of edge 1: the class 4 point lies two cells away, inside the range of 5 but unseen.
    load<T>(v, s, {point<T>(0.5, 0.5, 0.5, 4), point<T>(2.5, 0.5, 0.5, 1), point<T>(1.5, 0.5, 0.5, 1)}, 1.0);
    allow(v, {1});
    v.set_ResetOptionalRange(T(5));
    v.set_ResetOptionalClass(4);
    CaptureStdout out;
    v.resetPointCloudClasses(7);
    EXPECT_EQ(classes(v), (std::vector<int>{4, 1, 7}));
}

template <class T> void laterPointsSeeTheResetOfEarlierOnes(const Setting& s, bool rounds)
{
    Vexaro<T> v;
    // One cell, so the sorted order is the load order: the class 4 point is reset first, and the
    // class 1 point after it no longer finds class 4 within range.
    load<T>(v, s, {point<T>(0, 0, 0, 4), point<T>(T(0.5), 0, 0, 1)}, 10.0);
    allow(v, {1, 4});
    engine(v).roundsOnHost = rounds;
    v.set_ResetOptionalRange(T(0.6));
    v.set_ResetOptionalClass(4);
    CaptureStdout out;
    v.resetPointCloudClasses(7);
    EXPECT_EQ(classes(v), (std::vector<int>{7, 1})) << (rounds ? "in rounds" : "one pass");
}

template <class T> void announcementLineAndMessages(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {point<T>(0, 0, 0, 1), point<T>(1, 0, 0, 1)}, 10.0, false, 2);
    {
        CaptureStdout out;
        v.resetPointCloudClasses(3);
        EXPECT_EQ(driverLines(out),
                  (Lines{"Range: 0, Class: 0Threads:  256", "Blocks:  1", "Classes Reset done! "}));
    }
    {
        // 1.5 as a double is 0x3FF8000000000000: its low 32 bits are 0.
        v.set_ResetOptionalRange(T(1.5));
        v.set_ResetOptionalClass(4);
        CaptureStdout out;
        v.resetPointCloudClasses(3);
        EXPECT_EQ(driverLines(out),
                  (Lines{"Range: 0, Class: 4Threads:  256", "Blocks:  1", "Classes Reset done! "}));
    }
    {
        // 0.1 widened to a double: low 32 bits 0x9999999A (double) or 0xA0000000 (from float).
        v.set_ResetOptionalRange(T(0.1));
        v.set_ResetOptionalClass(-2);
        v.setMessageLevel(1);
        CaptureStdout out;
        v.resetPointCloudClasses(3);
        const std::string low = std::is_same<T, double>::value ? "-1717986918" : "-1610612736";
        EXPECT_EQ(driverLines(out), (Lines{"Range: " + low + ", Class: -2Threads:  256", "Blocks:  1"}));
    }
}

} // namespace

TEST_P(ResetClasses, RangeZeroResetsEveryAdmittedPoint)
{
    rangeZeroResetsEveryAdmittedPoint<float>(GetParam());
    rangeZeroResetsEveryAdmittedPoint<double>(GetParam());
}

TEST_P(ResetClasses, WithoutATableEveryPointIsReset)
{
    withoutTableEveryPointIsReset<float>(GetParam());
    withoutTableEveryPointIsReset<double>(GetParam());
}

TEST_P(ResetClasses, APointOfTheOptionalClassIsItsOwnNeighbour)
{
    ownOptionalClassIsResetWhenRangeIsSet<float>(GetParam());
    ownOptionalClassIsResetWhenRangeIsSet<double>(GetParam());
}

TEST_P(ResetClasses, ANeighbourExactlyAtTheRangeIsNoMatch)
{
    neighbourExactlyAtTheRangeIsNoMatch<float>(GetParam());
    neighbourExactlyAtTheRangeIsNoMatch<double>(GetParam());
}

TEST_P(ResetClasses, OnlyTheSurroundingCellsAreSearched)
{
    onlyTheSurroundingCellsAreSearched<float>(GetParam());
    onlyTheSurroundingCellsAreSearched<double>(GetParam());
}

TEST_P(ResetClasses, LaterPointsSeeTheResetOfEarlierOnesOnEveryBackend)
{
    for (bool rounds : {false, true}) {
        laterPointsSeeTheResetOfEarlierOnes<float>(GetParam(), rounds);
        laterPointsSeeTheResetOfEarlierOnes<double>(GetParam(), rounds);
    }
}

TEST_P(ResetClasses, AnnouncementLineShowsTheLowBitsOfTheRange)
{
    announcementLineAndMessages<float>(GetParam());
    announcementLineAndMessages<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, ResetClasses, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
