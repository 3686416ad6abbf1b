#include "common/TestSupport.h"

#include "exec/Backend.h"

using namespace vxtest;

TEST(Devices, HostBackendPresentsOneDevice)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    auto devices = v.getAvailableDevices();
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices.begin()->first, 0);
    EXPECT_EQ(devices.begin()->second, vx::hostProcessorName());
    EXPECT_EQ(v.computeBackend(), "cpu");
}

TEST(Devices, DeviceIndexPastTheEndWarnsAndKeepsTheDevice)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    const std::string name = v.setCudaDevice(1);
    EXPECT_EQ(out.text(), "WARNING! Cuda device unchanged! There is no device of index:  1\n");
    EXPECT_EQ(name, vx::hostProcessorName());
    EXPECT_EQ(vxtest::engine(v).deviceIndex, 0);
}

TEST(Devices, NegativeDeviceIndexIsRefusedLikeAMissingOne)
{
    Vexaro<double> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    v.setCudaDevice(-1);
    EXPECT_EQ(out.text(), "WARNING! Cuda device unchanged! There is no device of index:  -1\n");
    EXPECT_EQ(vxtest::engine(v).deviceIndex, 0);
}

TEST(Devices, SettingDeviceZeroAnnouncesIt)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    const std::string name = v.setCudaDevice(0);
    EXPECT_EQ(out.text(), "New Cuda device set :  " + name + "\n");
}

TEST(Devices, CudaInfoHasNoRegistryOnThisPlatform)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CudaInfo info = v.getCudaInfo();
    EXPECT_EQ(info.deviceFound, 1);
    EXPECT_EQ(info.deviceName, vx::hostProcessorName());
    EXPECT_FALSE(info.tdrKeyFound);
    EXPECT_FALSE(info.tdrLevelFound);
}

TEST(Devices, UnknownBackendNameThrows)
{
    Vexaro<float> v;
    EXPECT_THROW(v.setComputeBackend("gpu"), std::invalid_argument);
    if (!cudaAvailable()) {
        EXPECT_THROW(v.setComputeBackend("cuda"), std::runtime_error);
    }
}

TEST(LaunchConfiguration, BlocksAreCountOverThreadsPlusOne)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    auto cfg = vxtest::engine(v).launchConfig(1000000);
    EXPECT_EQ(cfg.threads, 256);
    EXPECT_EQ(cfg.blocks, 3907);
    EXPECT_EQ(out.text(), "Threads:  256\nBlocks:  3907\n");
    out.clear();
    cfg = vxtest::engine(v).launchConfig(512);
    EXPECT_EQ(cfg.blocks, 3);
    EXPECT_EQ(out.text(), "Threads:  256\nBlocks:  3\n");
}

TEST(LaunchConfiguration, ThreadsAreCappedAtTheDeviceMaximum)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    v.set_Threads(1024);
    EXPECT_EQ(vxtest::engine(v).launchConfig(10).threads, 1024);
    v.set_Threads(2048);
    EXPECT_EQ(vxtest::engine(v).launchConfig(10).threads, 1024);
}

TEST(LaunchConfiguration, ZeroOrNegativeThreadsRunOneThreadPerBlock)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    v.set_Threads(0);
    auto cfg = vxtest::engine(v).launchConfig(10);
    EXPECT_EQ(cfg.threads, 1);
    EXPECT_EQ(cfg.blocks, 11);
    v.set_Threads(-5);
    EXPECT_EQ(vxtest::engine(v).launchConfig(10).threads, 1);
}

TEST(LaunchConfiguration, MessagesPrintAtEveryLevel)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(0);
    CaptureStdout out;
    vxtest::engine(v).launchConfig(1);
    EXPECT_EQ(out.text(), "Threads:  256\nBlocks:  1\n");
}

TEST(DeviceErrorCheck, NoErrorReturnsZeroSilently)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    CaptureStdout out;
    EXPECT_EQ(vxtest::engine(v).checkDeviceError(), 0);
    EXPECT_EQ(out.text(), "");
}

TEST(DeviceErrorCheck, ReplacedHandlerReceivesTheCode)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    int seen = 0;
    v.setDeviceErrorHandler([&](int code) { seen = code; });
    vxtest::engine(v).pendingError = 700;
    CaptureStdout out;
    EXPECT_EQ(vxtest::engine(v).checkDeviceError(), 700);
    EXPECT_EQ(seen, 700);
    EXPECT_EQ(out.text(), "ERROR! CUDA returned code:  700\n");
}

TEST(DeviceErrorCheck, ErrorMessageIsGatedAtLevelOne)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(0);
    v.setDeviceErrorHandler([](int) {});
    vxtest::engine(v).pendingError = 2;
    CaptureStdout out;
    vxtest::engine(v).checkDeviceError();
    EXPECT_EQ(out.text(), "");
}

TEST(DeviceErrorCheckDeathTest, DefaultHandlerEndsTheProcessWithStatusZero)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            Vexaro<float> v;
            v.setComputeBackend("cpu");
            vxtest::engine(v).pendingError = 77;
            vxtest::engine(v).checkDeviceError();
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(DeviceErrorCheck, AStepCarriesOnAndStillPrintsItsTiming)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(1);
    v.set_SoA(false);
    std::vector<VX_Point<float>> pts{point<float>(0, 0, 0), point<float>(1, 1, 1)};
    v.loadDirectData(pts.data(), 2);
    {
        CaptureStdout quiet;
        v.regularGridDecomposition3Dcube(10.0);
    }
    int calls = 0;
    v.setHostThreads(1);
    v.setDeviceErrorHandler([&](int) { ++calls; });
    const FakeClock clock(25000000); // 2.5 s a step
    CaptureStdout out;
    vxtest::engine(v).pendingError = 3;
    v.resetPointCloudClasses(4);
    const std::string text = out.text();
    EXPECT_GE(calls, 1);
    EXPECT_NE(text.find("ERROR! CUDA returned code:  3\nTime: 2 s\nTime: 2500 ms\n"), std::string::npos)
        << text;
}
