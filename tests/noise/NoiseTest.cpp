// Noise step: isolated points and small far-off groups get the low or the high noise class;
// trees, roofs, walls and the ground keep theirs.
#include "noise/NoiseScene.h"

#include <string>

using namespace vxtest;
using namespace noisetest;

namespace {

class Noise : public SettingTest {};

template <class T> void marksTheNoiseOfTheTownBlockOnly(const Setting& s)
{
    const Scene<T> scene = townBlock<T>();
    ASSERT_EQ(scene.count(Truth::High), 11);
    ASSERT_EQ(scene.count(Truth::Low), 4);
    Vexaro<T> v;
    load(v, s, scene.points);
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    const std::vector<int> got = classes(v), want = scene.expectedClasses();
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_EQ(got[i], want[i]) << "point " << i << " at " << scene.points[i].x << ", "
                                   << scene.points[i].y << ", " << scene.points[i].z;
}

template <class T> void withoutNoiseNothingIsMarked(const Setting& s)
{
    const Scene<T> scene = townBlock<T>(false);
    Vexaro<T> v;
    load(v, s, scene.points);
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    EXPECT_EQ(classes(v), std::vector<int>(scene.points.size(), kInput));
}

/// A cluster larger than NoiseGroupPoints is no far-off group; one point more allowed makes it one.
template <class T> void groupSizeDecides(const Setting& s)
{
    Scene<T> scene = townBlock<T>(false);
    const std::size_t first = scene.points.size();
    for (int k = 0; k < 6; ++k)
        scene.add(20 + 0.3 * (k % 3), 20 + 0.3 * (k / 3), kGround + 500);
    for (int groupPoints : {5, 6}) {
        Vexaro<T> v;
        load(v, s, scene.points);
        v.set_NoiseGroupPoints(groupPoints);
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        const std::vector<int> got = classes(v);
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_EQ(got[i], i >= first && groupPoints == 6 ? kHighNoise : kInput)
                << groupPoints << " " << i;
    }
}

/// A gap just under NoiseHeightGap chains the group to the ground; the gap itself parts them.
template <class T> void gapDecides(const Setting& s)
{
    Scene<T> scene = townBlock<T>(false);
    const std::size_t first = scene.points.size();
    for (int k = 0; k < 3; ++k) // three returns 0.3 m apart, 8 m over the ground
        scene.add(20 + 0.3 * k, 20, kGround + 8);
    for (double gap : {9.0, 7.0}) {
        Vexaro<T> v;
        load(v, s, scene.points);
        v.set_NoiseHeightGap(T(gap));
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        const std::vector<int> got = classes(v);
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_EQ(got[i], i >= first && gap == 7.0 ? kHighNoise : kInput) << gap << " " << i;
    }
}

template <class T> void zeroSwitchesTheRulesOff(const Setting& s)
{
    const Scene<T> scene = townBlock<T>();
    Vexaro<T> v;
    load(v, s, scene.points);
    v.set_NoiseGroupPoints(0);
    v.set_NoiseMinNeighbours(0);
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    EXPECT_EQ(classes(v), std::vector<int>(scene.points.size(), kInput));
    // Isolation alone still finds the lone returns but not the cluster of four.
    v.set_NoiseMinNeighbours(2);
    v.classifyNoise(kLowNoise, kHighNoise);
    const std::vector<int> got = classes(v);
    int low = 0, high = 0;
    for (int c : got) {
        low += c == kLowNoise;
        high += c == kHighNoise;
    }
    EXPECT_EQ(low, 4);
    EXPECT_EQ(high, 7);
}

/// Points of a class the table does not admit are neither marked nor neighbours.
template <class T> void admittedPointsOnly(const Setting& s)
{
    Scene<T> scene = townBlock<T>();
    // The single return 300 m up is of a class the table leaves out: it stays as it is.
    for (std::size_t i = 0; i < scene.points.size(); ++i)
        if (scene.truth[i] == Truth::High && scene.points[i].z == T(kGround + 300)) {
            scene.points[i].classification = 9;
            scene.truth[i] = Truth::Kept;
        }
    // Two returns 1 m apart, 5 m over open ground: each other's only neighbour. With the second
    // left out, the first is alone.
    const std::size_t pair = scene.points.size();
    scene.add(7, 19, kGround + 5, Truth::High);
    scene.add(7.5, 19.5, kGround + 5.5, Truth::Kept, 9);
    Vexaro<T> v;
    load(v, s, scene.points);
    std::vector<int> table = allowTable({kInput});
    v.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
    v.set_NoiseMinNeighbours(1);
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    EXPECT_EQ(classes(v), scene.expectedClasses());

    // Admitted, the second makes the pair a group of two neighbours that is not isolated.
    Vexaro<T> w;
    load(w, s, scene.points);
    table = allowTable({kInput, 9});
    w.set_AllowedInputClasses(table.data(), static_cast<int>(table.size()));
    w.set_NoiseMinNeighbours(1);
    w.classifyNoise(kLowNoise, kHighNoise);
    const std::vector<int> got = classes(w);
    EXPECT_EQ(got[pair], kInput);
    EXPECT_EQ(got[pair + 1], 9);
}

template <class T> void messages(const Setting& s)
{
    const Scene<T> scene = townBlock<T>();
    Vexaro<T> v;
    load(v, s, scene.points, 2.0, 4);
    {
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        const Lines lines = driverLines(out);
        ASSERT_EQ(lines.size(), 7u);
        EXPECT_EQ(lines[2], "Filtering Noise Points 7 18");
        EXPECT_EQ(lines[3], "Noise range, neighbours, gap, group: 2 2 10 5");
        EXPECT_EQ(lines[4], "Low noise points: 4");
        EXPECT_EQ(lines[5], "High noise points: 11");
        EXPECT_EQ(lines[6], "Noise search done! ");
    }
    v.setMessageLevel(1);
    {
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        for (const std::string& line : driverLines(out))
            EXPECT_EQ(line.find("oise"), std::string::npos) << line;
    }
}

} // namespace

TEST_P(Noise, MarksTheNoiseOfATownBlockAndNothingElse)
{
    marksTheNoiseOfTheTownBlockOnly<float>(GetParam());
    marksTheNoiseOfTheTownBlockOnly<double>(GetParam());
}

TEST_P(Noise, LeavesACleanTownBlockAlone)
{
    withoutNoiseNothingIsMarked<float>(GetParam());
    withoutNoiseNothingIsMarked<double>(GetParam());
}

TEST_P(Noise, GroupSizeDecidesAFarOffGroup)
{
    groupSizeDecides<float>(GetParam());
    groupSizeDecides<double>(GetParam());
}

TEST_P(Noise, HeightGapDecidesAFarOffGroup)
{
    gapDecides<float>(GetParam());
    gapDecides<double>(GetParam());
}

TEST_P(Noise, ZeroSwitchesARuleOff)
{
    zeroSwitchesTheRulesOff<float>(GetParam());
    zeroSwitchesTheRulesOff<double>(GetParam());
}

TEST_P(Noise, JudgesAndCountsAdmittedPointsOnly)
{
    admittedPointsOnly<float>(GetParam());
    admittedPointsOnly<double>(GetParam());
}

TEST_P(Noise, Messages)
{
    messages<float>(GetParam());
    messages<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, Noise, ::testing::ValuesIn(vxtest::allSettings()), vxtest::settingName);
