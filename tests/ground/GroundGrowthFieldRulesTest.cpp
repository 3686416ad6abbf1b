// Where the per-field growth has rules of its own: through the public call on both layouts,
// and its two passes called entry by entry on the host backend.
#include "core/StepContext.h"
#include "ground/GroundTestSupport.h"
#include "steps/common/RemapClass.h"
#include "steps/ground/GrowthKernels.h"

using namespace vxtest;
using namespace groundtest;

namespace {

class GroundGrowthLayouts : public SettingTest {};

template <class T> Lines grow(Vexaro<T>& v)
{
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    return driverLines(out);
}

template <class T> void lowerAdmittedNeighbour(const Setting& s)
{
    // As in the lowest-point case, but the lowest point is admitted: in the record form it is
    // related and takes `lowest` from both candidates; the per-field form only asks ground points.
    Vexaro<T> v;
    load<T>(v, s,
            {up<T>(1, 0, 0, 2), point<T>(0, 0, T(-0.2), 1, 1, 1, 0, 0),
             point<T>(0, T(0.5), T(-0.2), 1, 1, 0, 0, 0), up<T>(-1, 0, T(-0.5), 1)},
            2.0, false, 2);
    allow(v, {1});
    if (s.soa) {
        EXPECT_EQ(grow(v), loopLines({2, 1, 0}));
        EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 2, 2}));
    } else {
        EXPECT_EQ(grow(v), loopLines({0}));
        EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 1, 1}));
    }
}

template <class T> void notTheLastReturn(const Setting& s)
{
    Vexaro<T> v;
    load<T>(v, s, {up<T>(0, 0, 0, 2), up<T>(1, 0, 0, 1, 0), up<T>(5, 5, 0, 9)}, 2.0);
    allow(v, {1});
    CaptureStdout out;
    v.performIterativeGroundGrowth(2);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 9}));
}

template <class T> void admittedGround(const Setting& s)
{
    // Admitted ground is re-tested. Its nearest ground point is itself, so it is rejected; the
    // per-field form marks it + 1000, which hides it from the entries after it in the same pass,
    // and the remap gives it back its class.
    std::vector<VX_Point<T>> row;
    for (int i = 0; i < 4; ++i)
        row.push_back(up<T>(T(i), 0, 0, i == 0 ? 2 : 1));
    Vexaro<T> v;
    load<T>(v, s, row, 2.0, false, 2);
    allow(v, {1, 2});
    if (s.soa) {
        EXPECT_EQ(grow(v), loopLines({0}));
        EXPECT_EQ(classes(v), (std::vector<int>{2, 1, 1, 1}));
    } else {
        EXPECT_EQ(grow(v), loopLines({1, 1, 1, 0}));
        EXPECT_EQ(classes(v), (std::vector<int>{2, 2, 2, 2}));
    }
    // A candidate ahead of the ground point in the pass still sees it.
    Vexaro<T> w;
    load<T>(w, s, {up<T>(1, 0, 0, 1), up<T>(0, 0, 0, 2), up<T>(5, 5, 0, 9)}, 2.0, false, 2);
    allow(w, {1, 2});
    EXPECT_EQ(grow(w), loopLines({1, 0}));
    EXPECT_EQ(classes(w), (std::vector<int>{2, 2, 9}));
}

/// A cloud in the per-field layout on the host, with its passes called entry by entry. A far
/// unrelated point is added last so that the grid's x extent does not bound the search.
template <class T> struct FieldPasses {
    Vexaro<T> v;
    int given;
    FieldPasses(std::vector<VX_Point<T>> pts, double cell) : given(static_cast<int>(pts.size()))
    {
        pts.push_back(up<T>(5, 5, 0, 9));
        load<T>(v, Setting{"cpu", true}, pts, cell);
    }
    void allow(std::initializer_list<int> admitted) { groundtest::allow(v, admitted); }
    ClassifierCore<T>& c() { return vxtest::engine(v); }
    vx::GrowthParams<T> params()
    {
        const auto& p = c().par;
        return {p.GroundGrowthDistanceFromPlane,
                p.GroundGrowthMinCosinus,
                p.GroundGrowthRange,
                p.GroundGrowthMaxHeightDifference,
                p.GroundGrowthRangeLowest,
                p.GroundGrowthMaxCosinusPar2,
                2,
                250,
                false};
    }
    template <class F> void run(const F& f)
    {
        for (int i = 0; i < c().store.count; ++i)
            f(i);
    }
    void first()
    {
        run(vx::k_growGround<T, vx::Fields>{vx::StepContext<T>(c()).views(vx::Fields{}), params()});
    }
    void second() { run(vx::k_growGroundSoA<T>{vx::StepContext<T>(c()).views(vx::Fields{}), params()}); }
    void remap() { run(vx::k_remapClass<T, vx::Fields>{c().store.points(vx::Fields{}), 250, 2}); }
    std::vector<int> cls()
    {
        const int* p = c().store.deviceFields.classification.data();
        return std::vector<int>(p, p + given);
    }
    void setCls(int i, int k) { c().store.deviceFields.classification.data()[i] = k; }
    void setLastReturn(int i, int k) { c().store.deviceFields.lastReturn.data()[i] = k; }
};

template <class T> void firstPassMarks()
{
    // Ground; a non-last return that would fit (skipped: neither grown nor marked); a point too far
    // above the plane; one without ground in range.
    FieldPasses<T> f({up<T>(0, 0, 0, 2), up<T>(1, 0, 0, 1, 0), up<T>(0, 1, T(0.2), 1), up<T>(5, 5, 0, 1)},
                     10.0);
    f.allow({1});
    f.first();
    EXPECT_EQ(f.cls(), (std::vector<int>{2, 1, 1001, 1}));
    f.second(); // 1001 and first returns are left alone; the last point has nothing outside its own cell
    EXPECT_EQ(f.cls(), (std::vector<int>{2, 1, 1001, 1}));
    f.remap();
    EXPECT_EQ(f.cls(), (std::vector<int>{2, 1, 1, 1}));
}

template <class T> void secondPassDirectionCosine()
{
    // Ground at the origin, candidates one cell away along x and along y, 0.04 above its plane.
    // The true direction cosine is 0.04 for both; the second pass's formula, with dz in the x
    // slot, gives 0.707 along x and 0.04 along y.
    FieldPasses<T> f({up<T>(0, 0, 0, 2), up<T>(1, 0, T(0.04), 1), up<T>(0, 1, T(0.04), 1)}, 1.0);
    f.allow({1});
    f.second();
    EXPECT_EQ(f.cls(), (std::vector<int>{2, 1, 250}));
    FieldPasses<T> g({up<T>(0, 0, 0, 2), up<T>(1, 0, T(0.04), 1), up<T>(0, 1, T(0.04), 1)}, 1.0);
    g.allow({1});
    g.first();
    EXPECT_EQ(g.cls(), (std::vector<int>{2, 250, 250}));
}

template <class T> void secondPassSkipsTheOwnCell()
{
    FieldPasses<T> f({up<T>(0, 0, 0, 2), up<T>(T(0.5), 0, 0, 1)}, 1.0);
    f.second();
    EXPECT_EQ(f.cls(), (std::vector<int>{2, 1}));
}

template <class T> void secondPassLowestByAnyClass(bool withLowerPoint)
{
    // The candidate lies below ground one cell away, its normal across the plane, so it fits only
    // as the lowest point; any lower point in the surrounding cells, of any class, prevents that.
    std::vector<VX_Point<T>> pts{up<T>(T(1.5), T(0.5), 0, 2),
                                 point<T>(T(0.5), T(0.5), T(-0.2), 1, 1, 1, 0, 0)};
    if (withLowerPoint)
        pts.push_back(up<T>(T(0.5), T(1.5), T(-0.5), 9));
    FieldPasses<T> f(pts, 1.0);
    f.second();
    EXPECT_EQ(f.cls()[1], withLowerPoint ? 1 : 250);
}

template <class T> void secondPassEntryRules()
{
    const std::vector<VX_Point<T>> pts{up<T>(0, 0, 0, 2), up<T>(0, 1, T(0.04), 1)};
    for (int variant = 0; variant < 5; ++variant) {
        FieldPasses<T> f(pts, 1.0);
        int expected = 250;
        if (variant == 1)
            f.setCls(1, 1001), expected = 1001; // rejected in the first pass
        if (variant == 2)
            f.setCls(1, 256), expected = 256; // any class above 255
        if (variant == 3)
            f.setLastReturn(1, 0), expected = 1; // not the last return
        if (variant == 4)
            f.allow({3}), expected = 1; // not admitted
        f.second();
        EXPECT_EQ(f.cls()[1], expected) << "variant " << variant;
    }
}

template <class T> void secondPassRunEndsAtStartPlusCount()
{
    FieldPasses<T> f({up<T>(0, 0, 0, 2), up<T>(0, 1, T(0.04), 1)}, 1.0);
    const int groundCell = f.c().grid.deviceFields.group.data()[0];
    ASSERT_EQ(f.c().grid.deviceFields.pointIndex.data()[0], 0);
    // A stored end that would make the ground cell's run empty is not read.
    f.c().grid.deviceFields.end.data()[groundCell] = f.c().grid.deviceFields.start.data()[groundCell];
    f.second();
    EXPECT_EQ(f.cls()[1], 250);
}

} // namespace

TEST_P(GroundGrowthLayouts, ALowerAdmittedNeighbourTakesLowestOnlyInTheRecordForm)
{
    lowerAdmittedNeighbour<float>(GetParam());
    lowerAdmittedNeighbour<double>(GetParam());
}

TEST_P(GroundGrowthLayouts, AFirstReturnNeverBecomesGroundInEitherLayout)
{
    notTheLastReturn<float>(GetParam());
    notTheLastReturn<double>(GetParam());
}

TEST_P(GroundGrowthLayouts, AdmittedGroundStaysGround)
{
    // Which entries still see the ground point depends on the pass order, fixed only by one
    // host thread.
    if (GetParam().backend != "cpu")
        GTEST_SKIP() << "outcome depends on the order within a pass";
    admittedGround<float>(GetParam());
    admittedGround<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, GroundGrowthLayouts, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);

TEST(GroundGrowthFieldPasses, FirstPassMarksRejectionsAndSkipsFirstReturns)
{
    firstPassMarks<float>();
    firstPassMarks<double>();
}

TEST(GroundGrowthFieldPasses, SecondPassDirectionCosineAsWritten)
{
    secondPassDirectionCosine<float>();
    secondPassDirectionCosine<double>();
}

TEST(GroundGrowthFieldPasses, SecondPassNeverLooksIntoTheOwnCell)
{
    secondPassSkipsTheOwnCell<float>();
    secondPassSkipsTheOwnCell<double>();
}

TEST(GroundGrowthFieldPasses, SecondPassLowestIsClearedByAnyLowerPoint)
{
    secondPassLowestByAnyClass<float>(false);
    secondPassLowestByAnyClass<float>(true);
    secondPassLowestByAnyClass<double>(false);
    secondPassLowestByAnyClass<double>(true);
}

TEST(GroundGrowthFieldPasses, SecondPassTakesUnmarkedAdmittedLastReturnsOnly)
{
    secondPassEntryRules<float>();
    secondPassEntryRules<double>();
}

TEST(GroundGrowthFieldPasses, SecondPassTakesTheRunEndAsStartPlusCount)
{
    secondPassRunEndsAtStartPlusCount<float>();
    secondPassRunEndsAtStartPlusCount<double>();
}

TEST(GroundGrowthFieldPasses, OnlyTheFieldRemapDropsRejectionMarks)
{
    std::vector<int> cls{250, 1001, 1250, 7, 255};
    vxPointSoA s{};
    s.classification = cls.data();
    for (int i = 0; i < 5; ++i)
        vx::k_remapClass<float, vx::Fields>{vx::SoaPoints{s}, 250, 2}(i);
    EXPECT_EQ(cls, (std::vector<int>{2, 1, 250, 7, 255}));
    std::vector<VX_Point<float>> pts{point<float>(0, 0, 0, 250), point<float>(0, 0, 0, 1001)};
    for (int i = 0; i < 2; ++i)
        vx::k_remapClass<float, vx::Records>{vx::AosPoints<float>{pts.data()}, 250, 2}(i);
    EXPECT_EQ(pts[0].classification, 2);
    EXPECT_EQ(pts[1].classification, 1001);
}
