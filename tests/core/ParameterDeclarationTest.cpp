// Every entry of VEXARO_PARAMETERS, in both precisions: its default, its setter and getter, the
// steps' refusal of values they cannot work with, and the grid columns its ranges call for.
#include "common/TestSupport.h"

#include <cmath>
#include <functional>
#include <limits>
#include <string>

using namespace vxtest;

template <class T> class ParameterDeclarationTest : public ::testing::Test {
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ParameterDeclarationTest, Precisions);

TYPED_TEST(ParameterDeclarationTest, DefaultsSettersAndGettersFollowTheDeclaration)
{
    using T = TypeParam;
    int index = 0;
    // Each setter gets a value of its own, distinct from every default; a setter writes its
    // Field, and a parameter whose Field is another keeps its default.
#define VX_CHECK_PARAMETER(Name, Field, Kind, Default, ...)                                                  \
    {                                                                                                        \
        using Stored = VEXARO_PARAMETER_TYPE_##Kind;                                                         \
        using Arg = VEXARO_PARAMETER_ARG_##Kind;                                                             \
        const vexaro::ParameterInfo& info = vexaro::parameterInfos[index++];                                 \
        EXPECT_EQ(std::string(info.name), #Name);                                                            \
        EXPECT_EQ(std::string(info.field), #Field);                                                          \
        EXPECT_EQ(info.defaultValue, static_cast<double>(Default)) << #Name;                                 \
        EXPECT_GE(info.defaultValue, info.min) << #Name;                                                     \
        EXPECT_LE(info.defaultValue, info.max) << #Name;                                                     \
        Vexaro<T> v;                                                                                         \
        EXPECT_EQ(v.get_##Name(), static_cast<Stored>(Default)) << #Name;                                    \
        EXPECT_EQ(vxtest::engine(v).par.Name, static_cast<Stored>(Default)) << #Name;                        \
        const Arg x = static_cast<Arg>(vexaro::isWholeNumber(info.kind) ? 7 + index : 0.375 + index);        \
        v.set_##Name(x);                                                                                     \
        EXPECT_EQ(v.get_##Field(), static_cast<decltype(v.get_##Field())>(x)) << #Name;                      \
        if (std::string(#Field) != #Name) {                                                                  \
            EXPECT_EQ(v.get_##Name(), static_cast<Stored>(Default)) << #Name;                                \
        }                                                                                                    \
    }
    VEXARO_PARAMETERS(VX_CHECK_PARAMETER)
#undef VX_CHECK_PARAMETER
    EXPECT_EQ(index, vexaro::parameterCount);
}

namespace {

template <class T> void loadSmallCloud(Vexaro<T>& v)
{
    v.setComputeBackend("cpu");
    v.setHostThreads(1);
    v.setMessageLevel(0);
    v.setFacadeMessageLevel(0);
    std::vector<VX_Point<T>> pts;
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            pts.push_back(point<T>(T(0.5) * i, T(0.5) * j, T(0.01) * i, 1, 1, 0, 0, 1));
    pts.push_back(point<T>(1, 1, 3, 1));
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    v.regularGridDecomposition2D(2.0, 2.0);
}

/// Runs `step` after `set` and expects the refusal line and unchanged classes.
template <class T>
void expectRefused(const std::function<void(Vexaro<T>&)>& set, const std::function<void(Vexaro<T>&)>& step,
                   const std::string& line)
{
    Vexaro<T> v;
    loadSmallCloud(v);
    const auto before = classes(v);
    set(v);
    CaptureStdout out;
    step(v);
    EXPECT_EQ(out.lines(), std::vector<std::string>{"ERROR! Parameter out of range, step not run: " + line});
    EXPECT_EQ(classes(v), before);
}

} // namespace

TYPED_TEST(ParameterDeclarationTest, StepsRefuseValuesTheyCannotWorkWith)
{
    using T = TypeParam;
    using V = Vexaro<T>;
    const T nan = std::numeric_limits<T>::quiet_NaN();
    // Length
    expectRefused<T>([](V& v) { v.set_GroundGrowthRange(T(-1)); },
                     [](V& v) { v.performIterativeGroundGrowth(2); },
                     "GroundGrowthRange = -1 (valid 0 to 1000)");
    // Height
    expectRefused<T>([&](V& v) { v.set_BuildingMinHeight(nan); },
                     [](V& v) { v.findBuildingSeed(6, 2, 1, 12); },
                     "BuildingMinHeight = nan (valid -1000 to 1000)");
    // FloatLength
    expectRefused<T>([](V& v) { v.set_NNSearchRange_NormalVectors(std::numeric_limits<float>::infinity()); },
                     [](V& v) { v.calculateNormalVectors(10, 11, 12); },
                     "NNSearchRange_NormalVectors = inf (valid 0 to 1000)");
    // Cosine
    expectRefused<T>([](V& v) { v.set_VegetationMaxCos(2.f); },
                     [](V& v) { v.performVegetationClassification(3, 4, 5, 2, 0); },
                     "VegetationMaxCos = 2 (valid -1 to 1)");
    // Ratio
    expectRefused<T>([](V& v) { v.set_BuildingProcOfGhosts(1e9f); },
                     [](V& v) { v.performIterativeBuildingGrowth(6, 2, 1, 12); },
                     "BuildingProcOfGhosts = 1e+09 (valid -1000 to 1000)");
    // Index
    expectRefused<T>([](V& v) { v.set_SeedSearchMaxHindeks(std::numeric_limits<float>::quiet_NaN()); },
                     [](V& v) { v.findGroundSeed(2); }, "SeedSearchMaxHindeks = nan (valid -1000 to 1000)");
    // Count
    expectRefused<T>([](V& v) { v.set_MinimalNumberOfNN(-3); },
                     [](V& v) { v.calculateNormalVectors(10, 11, 12); },
                     "MinimalNumberOfNN = -3 (valid 0 to 2147483647)");
    // Class: every int names a class (one no point has is valid), so none is refused.
    Vexaro<T> v;
    loadSmallCloud(v);
    v.set_ResetOptionalClass(std::numeric_limits<int>::min());
    CaptureStdout out;
    v.resetPointCloudClasses(4);
    EXPECT_EQ(classes(v), std::vector<int>(26, 4));
}

TYPED_TEST(ParameterDeclarationTest, ARefusedValueOfAnotherStepDoesNotStopThisOne)
{
    using T = TypeParam;
    Vexaro<T> v;
    loadSmallCloud(v);
    v.set_VegetationRange(T(-2));
    CaptureStdout out;
    v.resetPointCloudClasses(4);
    EXPECT_EQ(out.text().find("ERROR!"), std::string::npos);
    EXPECT_EQ(classes(v), std::vector<int>(26, 4));
}

TYPED_TEST(ParameterDeclarationTest, GridColumnsFollowTheFarthestReach)
{
    using T = TypeParam;
    Vexaro<T> v;
    EXPECT_EQ(v.rangeGridCellSize(), 2.0); // BuildingGroundRange, VegetationRange, 2 x Building3GroundRange,
                                           // NoiseRange
    v.set_VegetationRange(T(3));
    EXPECT_EQ(v.rangeGridCellSize(), 3.0);
    v.set_Building3GroundRange(T(2.5));
    EXPECT_EQ(v.rangeGridCellSize(), 5.0); // the closing step looks twice as far
    v.set_ResetOptionalRange(T(6));
    EXPECT_EQ(v.rangeGridCellSize(), 6.0);
    v.set_VegetationDfG(T(100)); // not a search range
    EXPECT_EQ(v.rangeGridCellSize(), 6.0);

    Vexaro<T> a, b;
    loadSmallCloud(a);
    loadSmallCloud(b);
    a.set_GroundGrowthRange(T(0.75));
    a.set_BuildingGroundRange(T(0.5));
    a.set_VegetationRange(T(0.5));
    a.set_Building3GroundRange(T(0.25));
    a.set_NoiseRange(T(0.5));
    EXPECT_EQ(a.rangeGridCellSize(), 1.5); // BuildingRange and Building2Range
    a.regularGridDecomposition2DFromRanges();
    b.regularGridDecomposition2D(1.5, 1.5);
    EXPECT_EQ(vxtest::engine(a).grid.groupCount, vxtest::engine(b).grid.groupCount);
    EXPECT_GT(vxtest::engine(a).grid.groupCount, 1);
}
