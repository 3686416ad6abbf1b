#include "common/TestSupport.h"

#include <algorithm>
#include <cmath>
#include <regex>

using namespace vxtest;

namespace {

std::vector<VX_Point<float>> smallCloud()
{
    std::vector<VX_Point<float>> pts;
    for (int i = 0; i < 10; ++i)
        pts.push_back(point<float>(float(i), float(i % 3), 0.f, 1));
    return pts;
}

} // namespace

TEST(StepWrapper, NormalsBeforeLoadingRefuse)
{
    Vexaro<float> v;
    CaptureStdout out;
    v.calculateNormalVectors(1, 2, 3);
    EXPECT_EQ(out.text(), "ERROR! Data not loaded! \n");
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, 0); // nothing stored
}

TEST(StepWrapper, NullDirectDataUnloadsTheCloud)
{
    Vexaro<float> v;
    auto pts = smallCloud();
    v.loadDirectData(pts.data(), 10);
    EXPECT_TRUE(vxtest::engine(v).dataLoaded);
    v.loadDirectData(nullptr, 0);
    EXPECT_FALSE(vxtest::engine(v).dataLoaded);
    CaptureStdout out;
    v.calculateNormalVectors(1, 2, 3);
    EXPECT_EQ(out.text(), "ERROR! Data not loaded! \n");
}

TEST(StepWrapper, ModeLineAndBothTimingLinesForAQuickStep)
{
    for (bool soa : {true, false}) {
        Vexaro<float> v;
        v.setComputeBackend("cpu");
        v.set_SoA(soa);
        v.setMessageLevel(0);
        v.setHostThreads(1);
        auto pts = smallCloud();
        v.loadDirectData(pts.data(), 10);
        {
            CaptureStdout quiet;
            v.regularGridDecomposition3Dcube(100.0);
        }
        const FakeClock clock(12345678); // 1234.5678 ms a step
        CaptureStdout out;
        v.resetPointCloudClasses(2);
        const std::string expected =
            std::string(soa ? "SOA \n" : "AOS \n") +
            "Range: 0, Class: 0Threads:  256\nBlocks:  1\nTime: 1 s\nTime: 1234 ms\n" +
            (soa ? "Soa sync \nCopy \n" : "");
        EXPECT_EQ(out.text(), expected);
    }
}

TEST(StepWrapper, BuildingStepsPrintNoModeLineInTheFieldLayout)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(0);
    auto pts = smallCloud();
    v.loadDirectData(pts.data(), 10);
    {
        CaptureStdout quiet;
        v.regularGridDecomposition3Dcube(100.0);
    }
    v.setHostThreads(1);
    const FakeClock clock(20000); // 2 ms a step
    for (int step = 0; step < 3; ++step) {
        CaptureStdout out;
        if (step == 0)
            v.findBuildingSeed(6, 2, 10, 1);
        if (step == 1)
            v.performIterativeBuildingGrowth(6, 2, 10, 1);
        if (step == 2)
            v.performVegetationClassification(3, 4, 5, 2, 0);
        const std::vector<std::string> lines = out.lines();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "SOA "), 0);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "AOS "), 0);
        const auto secs = std::find(lines.begin(), lines.end(), "Time: 0 s");
        ASSERT_NE(secs, lines.end());
        ASSERT_NE(secs + 1, lines.end());
        EXPECT_EQ(*(secs + 1), "Time: 2 ms");
    }
}

TEST(StepWrapper, ArgumentsAreStoredInTheClassSlots)
{
    Vexaro<double> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(0);
    v.setFacadeMessageLevel(0);
    CaptureStdout out;
    v.gatherLowPoints(7, 3);
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, 7);
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 3);
    v.performLowPointCorrection(2, 7, 1);
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 2);
    EXPECT_EQ(vxtest::engine(v).slots.ReferenceClass, 7);
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, 1);
    v.findBuildingSeed(6, 2, 10, 12);
    EXPECT_EQ(vxtest::engine(v).slots.NeighbourPlaneClass, 10);
    EXPECT_EQ(vxtest::engine(v).slots.NeighbourDistanceClass, 12);
    v.performVegetationClassification(3, 4, 5, 9, 77);
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, 3);
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass2, 4);
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass3, 5);
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, 9);
    v.calculateHeightIndex(13);
    EXPECT_EQ(vxtest::engine(v).slots.ReferenceClass, 13);
}

TEST(StepWrapper, GroundCorrectionDoesNothingAtAll)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    auto pts = smallCloud();
    v.loadDirectData(pts.data(), 10);
    auto before = classes(v);
    auto slots = vxtest::engine(v).slots;
    CaptureStdout out;
    v.performGroundCorrection(5);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(classes(v), before);
    EXPECT_EQ(vxtest::engine(v).slots.TargetClass, slots.TargetClass);
    EXPECT_EQ(vxtest::engine(v).slots.GroundClass, slots.GroundClass);
}

TEST(StepWrapper, ACopySharesTheEngine)
{
    Vexaro<float> a;
    a.setComputeBackend("cpu");
    a.setMessageLevel(0);
    a.set_SoA(false);
    auto pts = smallCloud();
    a.loadDirectData(pts.data(), 10);
    a.regularGridDecomposition3Dcube(100.0);
    Vexaro<float> b(a);
    CaptureStdout out;
    b.resetPointCloudClasses(5);
    for (int c : classes(a))
        EXPECT_EQ(c, 5);
    Vexaro<float> c;
    c = b;
    c.setMessageLevel(4);
    EXPECT_EQ(vxtest::engine(a).msg.threshold, 4);
}

TEST(StepWrapper, ClearAllMemoryReleasesAndAnnounces)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(1);
    auto pts = smallCloud();
    v.loadDirectData(pts.data(), 10);
    std::vector<int> table(256, 1);
    v.set_AllowedInputClasses(table.data(), 256);
    {
        CaptureStdout quiet;
        v.regularGridDecomposition3Dcube(100.0);
    }
    CaptureStdout out;
    v.clearAllMemory();
    EXPECT_EQ(out.text(), "Clearing Memories! \n");
    EXPECT_TRUE(vxtest::engine(v).store.deviceRecords.empty());
    EXPECT_TRUE(vxtest::engine(v).allowedClasses.empty());
    EXPECT_EQ(vxtest::engine(v).store.count, 0);
    EXPECT_EQ(v.pointCount(), 0);
}

TEST(StepWrapper, NonFiniteCoordinatesAreRefusedAndTheCloudKept)
{
    Vexaro<float> v;
    auto pts = smallCloud();
    v.loadDirectData(pts.data(), 10);
    auto bad = smallCloud();
    bad[3].y = std::nanf("");
    CaptureStdout out;
    v.loadDirectData(bad.data(), 10);
    EXPECT_EQ(out.text(), "ERROR! Non-finite coordinate, cloud not loaded. Point: 3\n");
    EXPECT_EQ(points(v)[3].y, pts[3].y);
    EXPECT_TRUE(vxtest::engine(v).dataLoaded);
}
