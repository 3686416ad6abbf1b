// Vegetation growth by echoes: the unclassified rim of a canopy of several returns joins it with
// the tier of its height, while a rim point of a single-return pulse and a roof beside the canopy
// stay as they were; the verdicts do not depend on the threads, and single-return data is refused.
#include "common/TestSupport.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace vxtest;

namespace {

class VegetationGrowth : public SettingTest {};

constexpr int kInput = 1, kGroundClass = 2, kLow = 3, kMedium = 4, kHigh = 5, kBuildingClass = 6;

enum class Part { Ground, CrownCore, CrownRim, RimSingle, ShrubCore, ShrubRim, Roof };

struct CanopyScene {
    std::vector<VX_Point<float>> points;
    std::vector<int> returns;
    std::vector<Part> part;
    void add(double x, double y, double z, int cls, int count, Part p)
    {
        points.push_back(point<float>(float(x), float(y), float(z), cls));
        returns.push_back(count);
        part.push_back(p);
    }
};

/// Ground (class 2) over 40 m x 40 m at 1 m spacing; a crown 6 m up of 10 x 10 points from
/// pulses with three returns whose core of 8 x 8 is high vegetation already and whose rim is
/// class 1, one rim point from a single-return pulse; a shrub 1 m up built the same way with a
/// medium-vegetation core; and 2 m east of the crown a class-1 roof of single returns 5 m up.
CanopyScene canopyScene()
{
    CanopyScene s;
    for (int i = 0; i <= 40; ++i)
        for (int j = 0; j <= 40; ++j)
            s.add(i, j, 0.0, kGroundClass, 1, Part::Ground);
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j) {
            const bool rim = i == 0 || j == 0 || i == 9 || j == 9, single = i == 5 && j == 0;
            s.add(3.5 + i, 3.5 + j, 6.0, rim ? kInput : kHigh, single ? 1 : 3,
                  single ? Part::RimSingle
                  : rim  ? Part::CrownRim
                         : Part::CrownCore);
            s.add(3.5 + i, 23.5 + j, 1.0, rim ? kInput : kMedium, 2, rim ? Part::ShrubRim : Part::ShrubCore);
        }
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j)
            s.add(14.5 + i, 3.5 + j, 5.0, kInput, 1, Part::Roof);
    return s;
}

std::vector<std::string> grow(Vexaro<float>& v, const Setting& s, CanopyScene& scene, int threads = 1)
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
    v.growVegetationByEchoes(kLow, kMedium, kHigh);
    return out.lines();
}

TEST_P(VegetationGrowth, TheRimJoinsWithTheTierOfItsHeight)
{
    auto scene = canopyScene();
    Vexaro<float> v;
    grow(v, GetParam(), scene);
    const auto cls = classes(v);
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const Part p = scene.part[i];
        int want = kInput;
        if (p == Part::Ground)
            want = kGroundClass;
        else if (p == Part::CrownCore || p == Part::CrownRim)
            want = kHigh;
        else if (p == Part::ShrubCore || p == Part::ShrubRim)
            want = kMedium;
        ASSERT_EQ(cls[i], want) << "point " << i << " part " << static_cast<int>(p);
    }
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 0);
}

TEST_P(VegetationGrowth, VerdictsDoNotDependOnTheThreads)
{
    auto scene = canopyScene();
    Vexaro<float> one, two;
    grow(one, GetParam(), scene, 1);
    grow(two, GetParam(), scene, 2);
    EXPECT_EQ(classes(one), classes(two));
}

TEST_P(VegetationGrowth, SingleReturnDataIsLeftAlone)
{
    auto scene = canopyScene();
    std::fill(scene.returns.begin(), scene.returns.end(), 1);
    Vexaro<float> v;
    const auto lines = grow(v, GetParam(), scene);
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& l) {
        return l.rfind("Vegetation growth by echoes not run: too few pulses with several returns", 0) == 0;
    }));
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kInput), 36 + 36 + 100);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Layouts, VegetationGrowth, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
