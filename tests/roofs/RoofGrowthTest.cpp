// Roof growth by echoes: the unclassified rim of a roof joins it, pass after pass, while a rim
// point of a pulse with several returns, a canopy beside the roof and a raised patch away from
// any roof stay as they were;
// the verdicts do not depend on the threads, and single-return data and an absurd share are
// refused.
#include "common/TestSupport.h"

#include <algorithm>
#include <string>
#include <vector>

using namespace vxtest;

namespace {

class RoofGrowth : public SettingTest {};

constexpr int kInput = 1, kGroundClass = 2, kBuildingClass = 6;

enum class Part { Ground, RoofCore, RoofRim, RimEcho, Canopy, Patch };

struct GrowthScene {
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

/// Ground (class 2) over 40 m x 40 m at 1 m spacing; a flat roof 6 m up of 10 x 10 single-return
/// points whose core of 8 x 8 is building already and whose rim is class 1, one rim point in the
/// middle of the south side from a pulse with two returns; 2 m east of it, a canopy 5 m up of
/// 10 x 10 points from pulses with three returns (class 1); and far from both, a raised patch of
/// 5 x 5 single returns (class 1).
GrowthScene growthScene()
{
    GrowthScene s;
    for (int i = 0; i <= 40; ++i)
        for (int j = 0; j <= 40; ++j)
            s.add(i, j, 0.0, kGroundClass, 1, Part::Ground);
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j) {
            const bool rim = i == 0 || j == 0 || i == 9 || j == 9, echo = i == 5 && j == 0;
            s.add(3.5 + i, 3.5 + j, 6.0, rim ? kInput : kBuildingClass, echo ? 2 : 1,
                  echo  ? Part::RimEcho
                  : rim ? Part::RoofRim
                        : Part::RoofCore);
        }
    for (int i = 0; i < 10; ++i)
        for (int j = 0; j < 10; ++j)
            s.add(14.5 + i, 3.5 + j, 5.0, kInput, 3, Part::Canopy);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            s.add(28.5 + i, 28.5 + j, 4.0, kInput, 1, Part::Patch);
    return s;
}

/// Loads the scene, decomposes into 2 m columns, computes the heights and grows the roofs with
/// class 1 admitted; the lines printed.
std::vector<std::string> grow(Vexaro<float>& v, const Setting& s, GrowthScene& scene, int threads = 1)
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
    v.growRoofsByEchoes(kBuildingClass);
    return out.lines();
}

bool printed(const std::vector<std::string>& lines, const std::string& start)
{
    return std::any_of(lines.begin(), lines.end(),
                       [&](const std::string& l) { return l.rfind(start, 0) == 0; });
}

TEST_P(RoofGrowth, TheRimJoinsTheRoofAndNothingElseDoes)
{
    auto scene = growthScene();
    Vexaro<float> v;
    grow(v, GetParam(), scene);
    const auto cls = classes(v);
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const Part p = scene.part[i];
        const int want = p == Part::RoofCore || p == Part::RoofRim ? kBuildingClass
                         : p == Part::Ground                       ? kGroundClass
                                                                   : kInput;
        ASSERT_EQ(cls[i], want) << "point " << i << " part " << static_cast<int>(p);
    }
}

TEST_P(RoofGrowth, VerdictsDoNotDependOnTheThreads)
{
    auto scene = growthScene();
    Vexaro<float> one, two;
    grow(one, GetParam(), scene, 1);
    grow(two, GetParam(), scene, 2);
    EXPECT_EQ(classes(one), classes(two));
}

TEST_P(RoofGrowth, SingleReturnDataIsLeftAlone)
{
    auto scene = growthScene();
    std::fill(scene.returns.begin(), scene.returns.end(), 1);
    Vexaro<float> v;
    const auto lines = grow(v, GetParam(), scene);
    EXPECT_TRUE(printed(lines, "Roof growth by echoes not run: too few pulses with several returns"));
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 64);
}

TEST_P(RoofGrowth, AShareAboveOneIsRefused)
{
    auto scene = growthScene();
    Vexaro<float> v;
    v.set_EchoGrowthShare(2.0f);
    grow(v, GetParam(), scene);
    const auto cls = classes(v);
    EXPECT_EQ(std::count(cls.begin(), cls.end(), kBuildingClass), 64);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Layouts, RoofGrowth, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
