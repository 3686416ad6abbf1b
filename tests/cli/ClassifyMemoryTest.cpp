// The memory of `vexaro classify`: the whole pipeline (float, per-field layout, CPU backend) keeps
// its peak resident size under 150 bytes a point, the process's own code and libraries included.
#include "CliTestSupport.h"
#include "scene/Scene.h"

#include <gtest/gtest.h>

#include <las/LasFile.h>

#include <sys/resource.h>

#include <string>

TEST(ClassifyMemory, PeakResidentSizeStaysUnder150BytesAPoint)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer's shadow memory is not the tool's";
#endif
    // Made here rather than by `vexaro scene`: every child process counts for the peak below.
    vx::scene::SceneOptions options;
    options.targetPoints = 300000;
    const std::string input = (clitest::scratch() / "scene.las").string();
    vx::scene::writeSceneLas(vx::scene::generateScene(options), input, "");
    const double points = static_cast<double>(vx::las::LasFile::read(input).size());

    // The budget is the host backend's: a CUDA context alone maps more than the whole cloud.
    const auto r = clitest::run(
        {"classify", input, "-o", "out.las", "-q", "--backend", "cpu", "--set", "HostThreads=2"});
    ASSERT_EQ(r.status, 0) << r.err;
    rusage usage{};
    ASSERT_EQ(getrusage(RUSAGE_CHILDREN, &usage), 0);
    const double bytesPerPoint = static_cast<double>(usage.ru_maxrss) * 1024.0 / points;
    EXPECT_LT(bytesPerPoint, 150.0) << "peak resident size " << usage.ru_maxrss << " KiB for " << points
                                    << " points";
}
