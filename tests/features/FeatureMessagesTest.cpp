// The exact lines the normal and height index drivers print.
#include "features/FeatureTestSupport.h"

#include "exec/Memory.h"

#include <algorithm>

using namespace vxtest;

namespace {

/// The lines the step's driver printed: after the mode line, before the timing lines.
std::vector<std::string> driverLines(const std::vector<std::string>& lines, bool soa)
{
    auto first = std::find(lines.begin(), lines.end(), soa ? "SOA " : "AOS ");
    if (first == lines.end())
        return {"<no mode line>"};
    auto last =
        std::find_if(first, lines.end(), [](const std::string& l) { return l.rfind("Time: ", 0) == 0; });
    return {first + 1, last};
}

template <class T> std::vector<VX_Point<T>> tenPoints()
{
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 10; ++i)
        pts.push_back(point<T>(T(0.1 * i), T(0.05 * (i % 3)), T(0.02 * i)));
    return pts;
}

template <class T> std::string heapAndStack(Vexaro<T>& v)
{
    std::size_t heap = 0, stack = 0;
    vx::mem::limits(vxtest::engine(v).backend(), heap, stack);
    return "Heap: " + std::to_string(heap) + " Stack: " + std::to_string(stack);
}

} // namespace

class FeatureMessages : public SettingTest {};

TEST_P(FeatureMessages, NormalDriverLinesByMessageLevel)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        const bool soa = GetParam().soa;
        for (int level : {0, 1, 2, 3, 4}) {
            Vexaro<T> v;
            configure(v, GetParam(), level);
            auto pts = tenPoints<T>();
            v.loadDirectData(pts.data(), 10);
            v.set_NormalVectorDecompositionSize(1.5);
            CaptureStdout out;
            v.calculateNormalVectors(5, 6, 7);
            std::vector<std::string> expected{"Threads:  256", "Blocks:  1", heapAndStack(v)};
            if (level >= 2)
                expected.push_back(soa ? "Normal Computation started " : "Normal Computation started AOS ");
            expected.push_back("256 1 10 1000 1.5 3");
            if (level >= 3)
                expected.push_back("Normal Computation phase 2 ");
            if (level >= 2)
                expected.push_back("Normal Computation complete! ");
            EXPECT_EQ(driverLines(out.lines(), soa), expected) << "level " << level;
        }
    });
}

TEST_P(FeatureMessages, NormalDriverLineCarriesTheSettings)
{
    Vexaro<double> v;
    configure(v, GetParam(), 0);
    std::vector<VX_Point<double>> pts;
    for (int i = 0; i < 600; ++i)
        pts.push_back(point<double>(0.01 * i, 0.02 * (i % 7), 0.0));
    v.loadDirectData(pts.data(), 600);
    v.set_Threads(128);
    v.set_Inner_NormalVectors(40);
    v.set_NNSearchRange_NormalVectors(0.75f);
    v.set_MinimalNumberOfNN(5);
    v.set_NormalVectorDecompositionSize(2.0);
    CaptureStdout out;
    v.calculateNormalVectors(5, 6, 7);
    const auto lines = driverLines(out.lines(), GetParam().soa);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "Threads:  128");
    EXPECT_EQ(lines[1], "Blocks:  5");
    EXPECT_EQ(lines[3], "128 5 600 40 0.75 5");
}

TEST_P(FeatureMessages, LowMemoryIsReportedAndTheComputationGoesOn)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        const bool soa = GetParam().soa;
        Vexaro<T> v;
        configure(v, GetParam(), 0);
        auto pts = tenPoints<T>();
        v.loadDirectData(pts.data(), 10);
        v.set_NormalVectorDecompositionSize(100.0);
        // Enough for the one-cell decomposition (80 + 12 bytes within 80 %), short of the 120
        // bytes of the means.
        vxtest::engine(v).freeMemoryCap = 118;
        CaptureStdout out;
        v.calculateNormalVectors(5, 6, 7);
        const std::vector<std::string> expected{
            "Threads:  256", "Blocks:  1", "ERROR! Not enough memory, normal vector computation terminated ",
            heapAndStack(v), "256 1 10 1000 1.5 3"};
        EXPECT_EQ(driverLines(out.lines(), soa), expected);
        for (const auto& p : points(v))
            EXPECT_NEAR(length(p), 1.0, 1e-6);
    });
}

TEST_P(FeatureMessages, HeightIndexDriverPrintsOnlyTheLaunchShape)
{
    forBothPrecisions([&](auto tag) {
        using T = decltype(tag);
        for (int level : {0, 4}) {
            Vexaro<T> v;
            configure(v, GetParam(), level);
            auto pts = tenPoints<T>();
            v.loadDirectData(pts.data(), 10);
            {
                CaptureStdout quiet;
                v.regularGridDecomposition3Dcube(1.0);
            }
            CaptureStdout out;
            v.calculateHeightIndex(8);
            EXPECT_EQ(driverLines(out.lines(), GetParam().soa),
                      (std::vector<std::string>{"Threads:  256", "Blocks:  1"}));
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Features, FeatureMessages, ::testing::ValuesIn(vxtest::allSettings()),
                         vxtest::settingName);
