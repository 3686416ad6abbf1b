#include "common/TestSupport.h"

#include <cmath>

using namespace vxtest;

template <class T> class ParametersTest : public ::testing::Test {
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ParametersTest, Precisions);

TYPED_TEST(ParametersTest, DefaultsAreTheDocumentedValues)
{
    using T = TypeParam;
    Vexaro<T> v;
    const auto& c = vxtest::engine(v);
    EXPECT_EQ(c.threads, 256);
    EXPECT_EQ(c.msg.threshold, 2);
    EXPECT_FALSE(c.dataLoaded);
    EXPECT_EQ(c.deviceIndex, 0);
    EXPECT_TRUE(c.store.fieldsLayout);
    const auto& s = c.slots;
    EXPECT_EQ(s.TargetClass, 0);
    EXPECT_EQ(s.TargetClass2, 0);
    EXPECT_EQ(s.TargetClass3, 0);
    EXPECT_EQ(s.GroundClass, 2);
    EXPECT_EQ(s.ReferenceClass, 8);
    EXPECT_EQ(s.BuildingClass, 6);
    EXPECT_EQ(s.NeighbourPlaneClass, 10);
    EXPECT_EQ(s.ChaosClass, 11);
    EXPECT_EQ(s.InitialClass, 0);
    const auto& p = c.par;
    EXPECT_EQ(p.NNSearchRange_NormalVectors, T(1.5));
    EXPECT_EQ(p.Inner_NormalVectors, 1000);
    EXPECT_EQ(p.MinimalNumberOfNN, 3);
    EXPECT_EQ(p.ResetOptionalRange, T(0));
    EXPECT_EQ(p.ResetOptionalClass, 0);
    EXPECT_EQ(p.SeedSearchMaxHindeks, 0.001f);
    EXPECT_EQ(p.GroundGrowthIterations, 50);
    EXPECT_EQ(p.GroundGrowthDistanceFromPlane, T(0.05));
    EXPECT_EQ(p.GroundGrowthMinCosinus, 0.99f);
    EXPECT_EQ(p.GroundGrowthRange, T(1.5));
    EXPECT_EQ(p.GroundGrowthRangeLowest, T(0.5));
    EXPECT_EQ(p.GroundGrowthMaxCosinusPar2, 0.11f);
    EXPECT_EQ(p.GroundGrowthMaxHeightDifference, T(0.3));
    EXPECT_EQ(p.LowPointFilteringRange, T(1.0));
    EXPECT_EQ(p.BuildingRange, T(1.5));
    EXPECT_EQ(p.BuildingGroundRange, T(2.0));
    EXPECT_EQ(p.BuildingDfPBuilding, T(0.2));
    EXPECT_EQ(p.BuildingMinCosBuilding, 0.9f);
    EXPECT_EQ(p.BuildingMinNoN, 5);
    EXPECT_EQ(p.BuildingProcOfBP, 0.5f);
    EXPECT_EQ(p.BuildingProcOfGhosts, 0.2f);
    EXPECT_EQ(p.BuildingMinHeight, T(1.8));
    EXPECT_EQ(p.Building2Iterations, 10);
    EXPECT_EQ(p.Building2Range, T(1.5));
    EXPECT_EQ(p.Building2DistFPlane, T(0.4));
    EXPECT_EQ(p.Building3Iterations, 3);
    EXPECT_EQ(p.Building3GroundRange, T(1.0));
    EXPECT_EQ(p.Building3DetailsHeight, T(0.4));
    EXPECT_EQ(p.VegetationIterations, 10);
    EXPECT_EQ(p.VegetationRange, T(2.0));
    EXPECT_EQ(p.VegetationDfG, T(0.3));
    EXPECT_EQ(p.VegetationMaxCos, 0.9f);
    EXPECT_EQ(p.VegetationProcOfChaos, 0.5f);
    EXPECT_EQ(p.VegetationProcOfGhosts, 0.5f);
    EXPECT_EQ(p.VegetationProcOfOrder, 0.5f);
    EXPECT_EQ(p.VegetationProcOfPlant, 0.5f);
    EXPECT_EQ(p.VegetationLowLimit, T(0.4));
    EXPECT_EQ(p.VegetationHighLimit, T(2.0));
    EXPECT_EQ(p.VegetationRatio, 0.5f);
}

TYPED_TEST(ParametersTest, SettersWriteTheirFields)
{
    using T = TypeParam;
    Vexaro<T> v;
    v.set_NNSearchRange_NormalVectors(2.25f);
    v.set_Inner_NormalVectors(7);
    v.set_GroundGrowthRange(T(3.5));
    v.set_BuildingMinNoN(9);
    v.set_VegetationRatio(0.25f);
    v.set_Building3Iterations(42);
    v.set_Threads(64);
    const auto& p = vxtest::engine(v).par;
    EXPECT_EQ(p.NNSearchRange_NormalVectors, T(2.25f));
    EXPECT_EQ(p.Inner_NormalVectors, 7);
    EXPECT_EQ(p.GroundGrowthRange, T(3.5));
    EXPECT_EQ(p.BuildingMinNoN, 9);
    EXPECT_EQ(p.VegetationRatio, 0.25f);
    EXPECT_EQ(p.Building3Iterations, 42);
    EXPECT_EQ(vxtest::engine(v).threads, 64);
}

TYPED_TEST(ParametersTest, MaxCosinusPar2SetterWritesThePlaneDistance)
{
    using T = TypeParam;
    Vexaro<T> v;
    v.set_GroundGrowthMaxCosinusPar2(0.3f);
    EXPECT_EQ(vxtest::engine(v).par.GroundGrowthDistanceFromPlane, static_cast<T>(0.3f));
    EXPECT_EQ(vxtest::engine(v).par.GroundGrowthMaxCosinusPar2, 0.11f);
}

TYPED_TEST(ParametersTest, MessageLevelIsClamped)
{
    Vexaro<TypeParam> v;
    v.setMessageLevel(7);
    EXPECT_EQ(vxtest::engine(v).msg.threshold, 4);
    v.setMessageLevel(-3);
    EXPECT_EQ(vxtest::engine(v).msg.threshold, 0);
    v.setMessageLevel(3);
    EXPECT_EQ(vxtest::engine(v).msg.threshold, 3);
}

TYPED_TEST(ParametersTest, SoaFlagIsMirroredInTheEngine)
{
    Vexaro<TypeParam> v;
    v.set_SoA(false);
    EXPECT_FALSE(vxtest::engine(v).store.fieldsLayout);
    v.set_SoA(true);
    EXPECT_TRUE(vxtest::engine(v).store.fieldsLayout);
}
