// What the vegetation step prints, at each message level, and that its fifth argument changes
// nothing.
#include "vegetation/MixedScene.h"
#include "vegetation/VegetationTestSupport.h"

#include <string>
#include <vector>

using namespace vxtest;
using namespace vegtest;

namespace {

class VegetationOutput : public SettingTest {};

/// The lines of one vegetation step after the decomposition, with the two timing lines checked
/// for their form and removed.
template <class T>
std::vector<std::string> stepLines(const Setting& s, int level, const std::function<void(Vexaro<T>&)>& tune,
                                   StepClasses k = {})
{
    Vexaro<T> v;
    configure(v, s, level);
    std::vector<VX_Point<T>> pts{point<T>(0, 0, 0, 2), point<T>(1, 0, 1, 1, 0), point<T>(0, 1, 1, 0)};
    v.loadDirectData(pts.data(), 3);
    if (tune)
        tune(v);
    {
        CaptureStdout quiet;
        v.regularGridDecomposition3Dcube(100.0);
    }
    CaptureStdout out;
    v.performVegetationClassification(k.low, k.medium, k.high, k.ground, k.ignored);
    std::vector<std::string> lines = out.lines();
    for (const std::string unit : {" s", " ms"}) {
        auto it = std::find_if(lines.begin(), lines.end(),
                               [](const std::string& l) { return l.rfind("Time: ", 0) == 0; });
        EXPECT_NE(it, lines.end());
        if (it == lines.end())
            break;
        EXPECT_EQ(it->substr(it->size() - unit.size()), unit) << *it;
        lines.erase(it);
    }
    return lines;
}

template <class T> void defaultLinesAtLevelTwo(const Setting& s)
{
    const auto lines = stepLines<T>(s, 2, [](Vexaro<T>& v) { v.set_VegetationIterations(2); });
    std::vector<std::string> expected;
    if (!s.soa)
        expected.push_back("AOS ");
    for (const char* l :
         {"Threads:  256", "Blocks:  1", "2 0.3 0.9 0.5 0.5", "2 6 11", "Vegetation Iteration:  1",
          "Vegetation Iteration:  2", "Vegetation Iteration:  1", "Vegetation Iteration:  2", "Ratio 0.5",
          "Vegetation complete! ", "Syncing Cuda to Host  3", "Groups  1"})
        expected.push_back(l);
    if (s.soa)
        expected.push_back("Soa sync "), expected.push_back("Copy ");
    EXPECT_EQ(lines, expected);
}

template <class T> void levelZeroKeepsOnlyTheAlwaysLines(const Setting& s)
{
    const auto lines = stepLines<T>(s, 0, {});
    std::vector<std::string> expected;
    if (!s.soa)
        expected.push_back("AOS ");
    for (const char* l : {"Threads:  256", "Blocks:  1", "2 0.3 0.9 0.5 0.5", "2 6 11"})
        expected.push_back(l);
    if (s.soa)
        expected.push_back("Soa sync "), expected.push_back("Copy ");
    EXPECT_EQ(lines, expected);
}

template <class T> void parameterLinesShowTheSetValues(const Setting& s)
{
    const auto lines = stepLines<T>(
        s, 2,
        [](Vexaro<T>& v) {
            v.set_VegetationRange(T(1.5));
            v.set_VegetationDfG(T(0.25));
            v.set_VegetationMaxCos(0.75f);
            v.set_VegetationProcOfChaos(0.125f);
            v.set_VegetationProcOfGhosts(0.375f);
            v.set_VegetationRatio(0.25f);
            v.set_VegetationIterations(0);
            v.set_Threads(2);
        },
        StepClasses{3, 4, 5, 7, 0});
    std::vector<std::string> expected;
    if (!s.soa)
        expected.push_back("AOS ");
    for (const char* l : {"Threads:  2", "Blocks:  2", "1.5 0.25 0.75 0.125 0.375", "7 6 11", "Ratio 0.25",
                          "Vegetation complete! ", "Syncing Cuda to Host  3", "Groups  1"})
        expected.push_back(l);
    if (s.soa)
        expected.push_back("Soa sync "), expected.push_back("Copy ");
    EXPECT_EQ(lines, expected);
}

template <class T> void fifthArgumentHasNoEffect(const Setting& s)
{
    const std::vector<VX_Point<T>> scene = mixedScene<T>();
    const std::vector<int> table = allowTable({0, 1, 10});
    const auto tune = [](Vexaro<T>& v) { v.set_VegetationProcOfChaos(0.f); };
    const std::vector<int> reference = runStep<T>(s, scene, table, tune, StepClasses{3, 4, 5, 2, 0}, 2.0);
    EXPECT_GT(countVegetation(reference), 0u) << "the scene must give vegetation to compare";
    for (int ignored : {7, -5, 12345, 3}) {
        EXPECT_EQ(runStep<T>(s, scene, table, tune, StepClasses{3, 4, 5, 2, ignored}, 2.0), reference)
            << ignored;
        EXPECT_EQ(stepLines<T>(s, 4, {}, StepClasses{3, 4, 5, 2, ignored}), stepLines<T>(s, 4, {}))
            << ignored;
    }
}

} // namespace

TEST_P(VegetationOutput, DefaultLinesAtLevelTwo)
{
    defaultLinesAtLevelTwo<float>(GetParam());
    defaultLinesAtLevelTwo<double>(GetParam());
}

TEST_P(VegetationOutput, LevelZeroKeepsOnlyTheLaunchAndParameterLines)
{
    levelZeroKeepsOnlyTheAlwaysLines<float>(GetParam());
    levelZeroKeepsOnlyTheAlwaysLines<double>(GetParam());
}

TEST_P(VegetationOutput, ParameterLinesShowTheSetValuesAndNoIterationLinesWithoutIterations)
{
    parameterLinesShowTheSetValues<float>(GetParam());
    parameterLinesShowTheSetValues<double>(GetParam());
}

TEST_P(VegetationOutput, FifthArgumentHasNoEffect)
{
    fifthArgumentHasNoEffect<float>(GetParam());
    fifthArgumentHasNoEffect<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Settings, VegetationOutput, ::testing::ValuesIn(allSettings()), settingName);
