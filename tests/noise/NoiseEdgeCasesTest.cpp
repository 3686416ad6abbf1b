// Noise step: what it refuses and the degenerate clouds it meets, and results that do not depend
// on the threads or the backend that judge the points.
#include "noise/NoiseScene.h"

#include <algorithm>
#include <functional>
#include <limits>

using namespace vxtest;
using namespace noisetest;

namespace {

class NoiseEdges : public SettingTest {};

/// The lines the step printed, the timing lines left out.
Lines withoutTiming(const CaptureStdout& out)
{
    Lines kept;
    for (const std::string& line : out.lines())
        if (line.rfind("Time: ", 0) != 0)
            kept.push_back(line);
    return kept;
}

bool hasLineStartingWith(const CaptureStdout& out, const std::string& start)
{
    for (const std::string& line : out.lines())
        if (line.rfind(start, 0) == 0)
            return true;
    ADD_FAILURE() << "no line starts with: " << start << "\n" << out.text();
    return false;
}

template <class T> void degenerateClouds(const Setting& s)
{
    {
        Vexaro<T> v;
        configure(v, s);
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        EXPECT_EQ(out.lines(), Lines{"ERROR! Data not loaded! "});
    }
    {
        Vexaro<T> v;
        configure(v, s);
        VX_Point<T> none{};
        v.loadDirectData(&none, 0);
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        const Lines lines = withoutTiming(out);
        EXPECT_NE(std::find(lines.begin(), lines.end(), "Noise search skipped: the cloud holds no points "),
                  lines.end());
        EXPECT_EQ(v.pointCount(), 0);
    }
    {
        // One point has no neighbour and nothing around it: isolated, and high for want of a bulk.
        Vexaro<T> v;
        load(v, s, {point<T>(T(3), T(4), T(5), kInput)});
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        EXPECT_EQ(classes(v), std::vector<int>{kHighNoise});
    }
}

template <class T> void refusesAGridItCannotUse(const Setting& s)
{
    const Scene<T> scene = townBlock<T>();
    const std::vector<int> before(scene.points.size(), kInput);
    {
        Vexaro<T> v;
        configure(v, s);
        v.loadDirectData(const_cast<VX_Point<T>*>(scene.points.data()),
                         static_cast<int>(scene.points.size()));
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        const Lines lines = withoutTiming(out);
        EXPECT_NE(
            std::find(lines.begin(), lines.end(),
                      "ERROR! No grid decomposition for the current layout; run a decomposition first "),
            lines.end())
            << ::testing::PrintToString(lines);
        EXPECT_EQ(classes(v), before);
    }
    {
        Vexaro<T> v;
        configure(v, s);
        v.loadDirectData(const_cast<VX_Point<T>*>(scene.points.data()),
                         static_cast<int>(scene.points.size()));
        {
            CaptureStdout quiet;
            v.regularGridDecomposition3Dcube(5.0);
        }
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        EXPECT_TRUE(hasLineStartingWith(
            out,
            "ERROR! Noise search needs a planar grid (regularGridDecomposition2D); step not run. Layers: "));
        EXPECT_EQ(classes(v), before);
    }
    {
        Vexaro<T> v;
        load(v, s, scene.points, 1.5);
        CaptureStdout out;
        v.classifyNoise(kLowNoise, kHighNoise);
        EXPECT_TRUE(hasLineStartingWith(
            out, "ERROR! Grid columns narrower than NoiseRange; step not run. Columns: 1.5 x 1.5"));
        EXPECT_EQ(classes(v), before);
    }
}

/// Runs the step after `set` and expects the one refusal line and unchanged classes.
template <class T>
void expectRefused(const Setting& s, const std::function<void(Vexaro<T>&)>& set, const std::string& line)
{
    const Scene<T> scene = townBlock<T>();
    Vexaro<T> v;
    load(v, s, scene.points);
    set(v);
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    EXPECT_EQ(out.lines(), Lines{"ERROR! Parameter out of range, step not run: " + line});
    EXPECT_EQ(classes(v), std::vector<int>(scene.points.size(), kInput));
}

template <class T> void refusesParametersOutOfRange(const Setting& s)
{
    using V = Vexaro<T>;
    expectRefused<T>(
        s, [](V& v) { v.set_NoiseRange(T(0)); }, "NoiseRange = 0 (valid 0.001 to 1000)");
    expectRefused<T>(
        s, [](V& v) { v.set_NoiseHeightGap(std::numeric_limits<T>::infinity()); },
        "NoiseHeightGap = inf (valid 0.001 to 100000)");
    expectRefused<T>(
        s, [](V& v) { v.set_NoiseMinNeighbours(-1); }, "NoiseMinNeighbours = -1 (valid 0 to 2147483647)");
    expectRefused<T>(
        s, [](V& v) { v.set_NoiseGroupPoints(1001); }, "NoiseGroupPoints = 1001 (valid 0 to 1000)");
    // Another step's value out of range does not stop this one.
    const Scene<T> scene = townBlock<T>();
    V v;
    load(v, s, scene.points);
    v.set_VegetationRange(T(-1));
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    EXPECT_EQ(classes(v), scene.expectedClasses());
}

template <class T> std::vector<int> townBlockClasses(const Setting& s, int hostThreads)
{
    const Scene<T> scene = townBlock<T>();
    Vexaro<T> v;
    load(v, s, scene.points);
    v.setHostThreads(hostThreads);
    v.set_Threads(64); // many blocks, so that the host threads share the points
    CaptureStdout out;
    v.classifyNoise(kLowNoise, kHighNoise);
    return classes(v);
}

} // namespace

TEST_P(NoiseEdges, DegenerateClouds)
{
    degenerateClouds<float>(GetParam());
    degenerateClouds<double>(GetParam());
}

TEST_P(NoiseEdges, RefusesAGridItCannotUse)
{
    refusesAGridItCannotUse<float>(GetParam());
    refusesAGridItCannotUse<double>(GetParam());
}

TEST_P(NoiseEdges, RefusesParametersOutOfRange)
{
    refusesParametersOutOfRange<float>(GetParam());
    refusesParametersOutOfRange<double>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Layouts, NoiseEdges, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);

// Verdicts are taken before any class changes, so the order of the threads plays no part.
TEST(NoiseThreads, ResultsDoNotDependOnTheHostThreads)
{
    for (bool soa : {false, true}) {
        const Setting s{"cpu", soa};
        EXPECT_EQ(townBlockClasses<float>(s, 1), townBlockClasses<float>(s, 4));
        EXPECT_EQ(townBlockClasses<double>(s, 1), townBlockClasses<double>(s, 4));
        EXPECT_EQ(townBlockClasses<float>(s, 4), townBlock<float>().expectedClasses());
    }
}

TEST(NoiseBackends, HostAndCudaAgree)
{
    if (!cudaAvailable())
        GTEST_SKIP() << "no CUDA device";
    for (bool soa : {false, true}) {
        EXPECT_EQ(townBlockClasses<float>({"cpu", soa}, 1), townBlockClasses<float>({"cuda", soa}, 1));
        EXPECT_EQ(townBlockClasses<double>({"cpu", soa}, 1), townBlockClasses<double>({"cuda", soa}, 1));
    }
}
