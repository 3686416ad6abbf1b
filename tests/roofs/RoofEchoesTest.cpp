// Roofs by echoes: a flat roof of single-return pulses becomes building; canopy with several
// returns, a rough single-return heap and a low single-return patch do not; the step refuses
// without heights, without return counts, on single-return data (unless EchoSingleShare is 0,
// when the plane alone decides) and on a grid it cannot use.
#include "common/TestSupport.h"
#include "roofs/EchoScenePoints.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace vxtest;

namespace {

class RoofEchoes : public SettingTest {};

constexpr int kInput = 1, kGroundClass = 2, kBuildingClass = 6;

enum class Part { Ground, Roof, Canopy, Heap, LowPatch };

template <class T> using EchoScene = echotest::EchoScenePoints<T, Part>;

/// Flat ground (class 2, one return) over 40 m x 40 m at 1 m spacing, and four raised objects of
/// class 1 at 1 m spacing: a flat roof 6 m up (one return a pulse), a canopy as smooth as the roof
/// 5 m up but of pulses with three returns, a heap of single returns alternating between 3 m and
/// 8 m up (no plane comes near it), and a flat patch
/// 1 m up of single returns.
template <class T> EchoScene<T> echoScene(int roofReturns = 1)
{
    EchoScene<T> s;
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (int i = 0; i <= 40; ++i)
        for (int j = 0; j <= 40; ++j)
            s.add(i, j, 0.01 * u(rng), kGroundClass, 1, Part::Ground);
    for (double x = 3.5; x < 13; x += 1)
        for (double y = 3.5; y < 13; y += 1)
            s.add(x, y, 6.0 + 0.02 * u(rng), kInput, roofReturns, Part::Roof);
    for (double x = 23.5; x < 33; x += 1)
        for (double y = 3.5; y < 13; y += 1)
            s.add(x, y, 5.0 + 0.02 * u(rng), kInput, 3, Part::Canopy);
    for (double x = 3.5; x < 13; x += 1)
        for (double y = 23.5; y < 33; y += 1)
            s.add(x, y, ((static_cast<int>(x) + static_cast<int>(y)) % 2 ? 8.0 : 3.0) + 0.1 * u(rng), kInput,
                  1, Part::Heap);
    for (double x = 23.5; x < 33; x += 1)
        for (double y = 23.5; y < 33; y += 1)
            s.add(x, y, 1.0 + 0.02 * u(rng), kInput, 1, Part::LowPatch);
    return s;
}

template <class T> void load(Vexaro<T>& v, const Setting& s, EchoScene<T>& scene, bool withReturns = true)
{
    configure(v, s);
    v.loadDirectData(scene.points.data(), static_cast<int>(scene.points.size()));
    if (withReturns)
        v.loadReturnCountsFromBuffer(scene.returns.data(), static_cast<int>(scene.returns.size()));
    const auto table = allowTable({kInput});
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
}

/// Loads, decomposes into 2 m columns, computes the heights and runs the step; the lines printed.
template <class T>
std::vector<std::string> runStep(Vexaro<T>& v, const Setting& s, EchoScene<T>& scene, bool withReturns = true,
                                 bool withHeights = true, double column = 2.0)
{
    load(v, s, scene, withReturns);
    v.setMessageLevel(1);
    CaptureStdout out;
    v.regularGridDecomposition2D(T(column), T(column));
    if (withHeights)
        v.computeHeightAboveGround(kGroundClass);
    v.classifyRoofsByEchoes(kBuildingClass);
    return out.lines();
}

template <class T> void roofsAndOnlyRoofs(const Setting& s)
{
    auto scene = echoScene<T>();
    Vexaro<T> v;
    runStep(v, s, scene);
    const auto cls = classes(v);
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const Part p = scene.part[i];
        const int want = p == Part::Roof ? kBuildingClass : p == Part::Ground ? kGroundClass : kInput;
        ASSERT_EQ(cls[i], want) << "point " << i << " part " << static_cast<int>(p);
    }
}

TEST_P(RoofEchoes, FlatSingleReturnRoofBecomesBuildingAndNothingElse)
{
    roofsAndOnlyRoofs<float>(GetParam());
    roofsAndOnlyRoofs<double>(GetParam());
}

TEST_P(RoofEchoes, RoofOfSeveralReturnsStaysWhatItWas)
{
    auto scene = echoScene<float>(2);
    Vexaro<float> v;
    runStep(v, GetParam(), scene);
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 0);
}

TEST_P(RoofEchoes, RefusesWithoutHeightsOrReturnCounts)
{
    for (bool withReturns : {false, true}) {
        auto scene = echoScene<float>();
        Vexaro<float> v;
        const auto lines = runStep(v, GetParam(), scene, withReturns, !withReturns);
        EXPECT_TRUE(anyLineStartsWith(lines, withReturns ? "ERROR! No heights above ground for this cloud"
                                                         : "ERROR! No return counts for this cloud"));
        const auto cls = classes(v);
        EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 0);
    }
}

TEST_P(RoofEchoes, SingleReturnDataIsLeftAlone)
{
    auto scene = echoScene<float>();
    std::fill(scene.returns.begin(), scene.returns.end(), 1);
    Vexaro<float> v;
    const auto lines = runStep(v, GetParam(), scene);
    EXPECT_TRUE(anyLineStartsWith(lines, "Roofs by echoes not run: too few pulses with several returns"));
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 0);
}

TEST_P(RoofEchoes, WithoutTheSingleShareTheShapeDecidesOnSingleReturnData)
{
    // Every object a single-return pulse: the roof and the canopy, as smooth as the roof, are
    // planes; the heap and the low patch are not roofs.
    auto scene = echoScene<float>();
    std::fill(scene.returns.begin(), scene.returns.end(), 1);
    Vexaro<float> v;
    configure(v, GetParam());
    v.set_EchoSingleShare(0.0f);
    const auto lines = runStep(v, GetParam(), scene);
    EXPECT_FALSE(anyLineStartsWith(lines, "Roofs by echoes not run"));
    const auto cls = classes(v);
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const Part p = scene.part[i];
        const int want = p == Part::Roof || p == Part::Canopy ? kBuildingClass
                         : p == Part::Ground                  ? kGroundClass
                                                              : kInput;
        ASSERT_EQ(cls[i], want) << "point " << i << " part " << static_cast<int>(p);
    }
}

TEST_P(RoofEchoes, RefusesColumnsNarrowerThanItsRange)
{
    auto scene = echoScene<float>();
    Vexaro<float> v;
    const auto lines = runStep(v, GetParam(), scene, true, true, 1.0);
    EXPECT_TRUE(anyLineStartsWith(lines, "ERROR! Grid columns narrower than EchoRange; step not run."));
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 0);
}

TEST_P(RoofEchoes, ReturnCountsOfTheWrongLengthOrRangeAreNotKept)
{
    auto scene = echoScene<float>();
    Vexaro<float> v;
    load(v, GetParam(), scene, false);
    v.setFacadeMessageLevel(0);
    {
        CaptureStdout out;
        v.loadReturnCountsFromBuffer(scene.returns.data(), static_cast<int>(scene.returns.size()) - 1);
        std::vector<int> bad = scene.returns;
        bad[5] = 300;
        v.loadReturnCountsFromBuffer(bad.data(), static_cast<int>(bad.size()));
        EXPECT_EQ(out.lines().size(), 2u) << out.text();
    }
    v.setMessageLevel(1);
    CaptureStdout out;
    v.regularGridDecomposition2D(2.f, 2.f);
    v.computeHeightAboveGround(kGroundClass);
    v.classifyRoofsByEchoes(kBuildingClass);
    EXPECT_TRUE(anyLineStartsWith(out.lines(), "ERROR! No return counts for this cloud"));
}

TEST_P(RoofEchoes, ANewCloudDropsTheReturnCounts)
{
    auto scene = echoScene<float>();
    Vexaro<float> v;
    load(v, GetParam(), scene, true);
    v.loadDirectData(scene.points.data(), static_cast<int>(scene.points.size()));
    v.setMessageLevel(1);
    CaptureStdout out;
    v.regularGridDecomposition2D(2.f, 2.f);
    v.computeHeightAboveGround(kGroundClass);
    v.classifyRoofsByEchoes(kBuildingClass);
    EXPECT_TRUE(anyLineStartsWith(out.lines(), "ERROR! No return counts for this cloud"));
}

TEST_P(RoofEchoes, VerdictsDoNotDependOnTheThreads)
{
    auto scene = echoScene<double>();
    Vexaro<double> one, two;
    runStep(one, GetParam(), scene);
    two.setHostThreads(2);
    load(two, GetParam(), scene);
    two.setHostThreads(2);
    CaptureStdout quiet;
    two.regularGridDecomposition2D(2.0, 2.0);
    two.computeHeightAboveGround(kGroundClass);
    two.classifyRoofsByEchoes(kBuildingClass);
    EXPECT_EQ(classes(one), classes(two));
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Layouts, RoofEchoes, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
