// The growths by echoes. Roofs: the unclassified rim of a roof joins it, pass after pass, while a
// rim point of a pulse with several returns, a canopy beside the roof and a raised patch away
// from any roof stay as they were. Vegetation: the unclassified rim of a canopy of several
// returns joins it with the tier of its height, while a rim point of a single-return pulse stays.
// Both: the verdicts do not depend on the threads, and single-return data is refused; an absurd
// share is refused.
#include "common/TestSupport.h"
#include "roofs/EchoScenePoints.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

using namespace vxtest;

namespace {

class EchoGrowth : public SettingTest {};

constexpr int kInput = 1, kGroundClass = 2, kLow = 3, kMedium = 4, kHigh = 5, kBuildingClass = 6;

enum class Part {
    Ground,
    RoofCore,  ///< building already
    RoofRim,   ///< class 1, single returns: joins the roof
    RimEcho,   ///< class 1 on the roof's rim, two returns: stays
    Canopy,    ///< class 1, three returns, beside the roof: stays
    Patch,     ///< class 1, single returns, away from everything: stays
    CrownCore, ///< high vegetation already
    CrownRim,  ///< class 1, three returns: joins as high vegetation
    RimSingle, ///< class 1 on the crown's rim, single return: stays
    ShrubCore, ///< medium vegetation already
    ShrubRim,  ///< class 1, two returns, 1 m up: joins as medium vegetation
};

struct EchoScene : echotest::EchoScenePoints<float, Part> {
    /// Ground (class 2, one return) over 40 m x 40 m at 1 m spacing.
    EchoScene()
    {
        for (int i = 0; i <= 40; ++i)
            for (int j = 0; j <= 40; ++j)
                add(i, j, 0.0, kGroundClass, 1, Part::Ground);
    }
    /// 10 x 10 points 1 m apart from (x0, y0) at height z: a core of 8 x 8 of class `core` and a
    /// rim of class 1 whose middle point of the south side comes from a pulse of `oddReturns`.
    void block(double x0, double y0, double z, int core, int returns, int oddReturns, Part corePart,
               Part rimPart, Part oddPart)
    {
        for (int i = 0; i < 10; ++i)
            for (int j = 0; j < 10; ++j) {
                const bool rim = i == 0 || j == 0 || i == 9 || j == 9, odd = i == 5 && j == 0;
                add(x0 + i, y0 + j, z, rim ? kInput : core, odd ? oddReturns : returns,
                    odd   ? oddPart
                    : rim ? rimPart
                          : corePart);
            }
    }
};

/// A roof 6 m up of single returns, with one rim point of two returns; 2 m east of it a canopy
/// 5 m up of three returns (class 1); and far from both a raised patch of single returns.
EchoScene roofScene()
{
    EchoScene s;
    s.block(3.5, 3.5, 6.0, kBuildingClass, 1, 2, Part::RoofCore, Part::RoofRim, Part::RimEcho);
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j)
            s.add(14.5 + i, 3.5 + j, 5.0, kInput, 3, Part::Canopy);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            s.add(28.5 + i, 28.5 + j, 4.0, kInput, 1, Part::Patch);
    return s;
}

/// A crown 6 m up of three returns, with one rim point of a single return; a shrub 1 m up of two
/// returns; and 2 m east of the crown a class-1 roof of single returns 5 m up.
EchoScene canopyScene()
{
    EchoScene s;
    s.block(3.5, 3.5, 6.0, kHigh, 3, 1, Part::CrownCore, Part::CrownRim, Part::RimSingle);
    s.block(3.5, 23.5, 1.0, kMedium, 2, 2, Part::ShrubCore, Part::ShrubRim, Part::ShrubRim);
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j)
            s.add(14.5 + i, 3.5 + j, 5.0, kInput, 1, Part::Patch);
    return s;
}

using Growth = std::function<void(Vexaro<float>&)>;
const Growth growRoofs = [](Vexaro<float>& v) { v.growRoofsByEchoes(kBuildingClass); };
const Growth growVegetation = [](Vexaro<float>& v) { v.growVegetationByEchoes(kLow, kMedium, kHigh); };

/// Loads the scene, decomposes into 2 m columns, computes the heights and runs the growth with
/// class 1 admitted; the lines printed.
std::vector<std::string> grow(Vexaro<float>& v, const Setting& s, EchoScene& scene, const Growth& growth,
                              int threads = 1)
{
    configure(v, s);
    v.setHostThreads(threads);
    v.loadDirectData(scene.points.data(), static_cast<int>(scene.points.size()));
    v.loadReturnCountsFromBuffer(scene.returns.data(), static_cast<int>(scene.returns.size()));
    const auto table = allowTable({kInput});
    v.set_AllowedInputClasses(const_cast<int*>(table.data()), static_cast<int>(table.size()));
    v.setMessageLevel(1);
    CaptureStdout out;
    v.regularGridDecomposition2D(2.f, 2.f);
    v.computeHeightAboveGround(kGroundClass);
    growth(v);
    return out.lines();
}

/// The class each part ends with.
int expected(Part p)
{
    switch (p) {
    case Part::Ground:
        return kGroundClass;
    case Part::RoofCore:
    case Part::RoofRim:
        return kBuildingClass;
    case Part::CrownCore:
    case Part::CrownRim:
        return kHigh;
    case Part::ShrubCore:
    case Part::ShrubRim:
        return kMedium;
    default:
        return kInput;
    }
}

void expectParts(Vexaro<float>& v, const EchoScene& scene)
{
    const auto cls = classes(v);
    ASSERT_EQ(cls.size(), scene.part.size());
    for (std::size_t i = 0; i < cls.size(); ++i)
        ASSERT_EQ(cls[i], expected(scene.part[i]))
            << "point " << i << " part " << static_cast<int>(scene.part[i]);
}

TEST_P(EchoGrowth, TheRimJoinsTheRoofAndNothingElseDoes)
{
    auto scene = roofScene();
    Vexaro<float> v;
    grow(v, GetParam(), scene, growRoofs);
    expectParts(v, scene);
}

TEST_P(EchoGrowth, TheCanopyRimJoinsWithTheTierOfItsHeight)
{
    auto scene = canopyScene();
    Vexaro<float> v;
    grow(v, GetParam(), scene, growVegetation);
    expectParts(v, scene);
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 0);
}

TEST_P(EchoGrowth, VerdictsDoNotDependOnTheThreads)
{
    for (const auto& [scene, growth] : {std::pair{roofScene(), growRoofs}, {canopyScene(), growVegetation}}) {
        auto a = scene, b = scene;
        Vexaro<float> one, two;
        grow(one, GetParam(), a, growth, 1);
        grow(two, GetParam(), b, growth, 2);
        EXPECT_EQ(classes(one), classes(two));
    }
}

TEST_P(EchoGrowth, SingleReturnDataIsLeftAlone)
{
    {
        auto scene = roofScene();
        std::fill(scene.returns.begin(), scene.returns.end(), 1);
        Vexaro<float> v;
        const auto lines = grow(v, GetParam(), scene, growRoofs);
        EXPECT_TRUE(
            anyLineStartsWith(lines, "Roof growth by echoes not run: too few pulses with several returns"));
        const auto cls = classes(v);
        EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 64);
    }
    {
        auto scene = canopyScene();
        std::fill(scene.returns.begin(), scene.returns.end(), 1);
        Vexaro<float> v;
        const auto lines = grow(v, GetParam(), scene, growVegetation);
        EXPECT_TRUE(anyLineStartsWith(
            lines, "Vegetation growth by echoes not run: too few pulses with several returns"));
        const auto cls = classes(v);
        EXPECT_EQ(std::count(cls.begin(), cls.end(), kInput), 36 + 36 + 100);
    }
}

TEST_P(EchoGrowth, AShareAboveOneIsRefused)
{
    auto scene = roofScene();
    Vexaro<float> v;
    v.set_EchoGrowthShare(2.0f);
    grow(v, GetParam(), scene, growRoofs);
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 64);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Layouts, EchoGrowth, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
