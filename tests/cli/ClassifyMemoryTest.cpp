// The memory of `vexaro classify`: the whole pipeline (float, per-field layout, CPU backend) keeps
// its peak resident size under 150 bytes a point, the process's own code and libraries included.
#include "CliTestSupport.h"
#include "scene/Scene.h"

#include <gtest/gtest.h>

#include <las/LasFile.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <string>
#include <vector>

extern char** environ;

namespace {

/// Runs the tool with args, its output discarded, and returns its exit status and its own peak
/// resident size in KiB. The peak is that child's alone (wait4), so tools that earlier tests of
/// this process ran, on a CUDA device say, do not count.
std::pair<int, long> runMeasured(const std::vector<std::string>& args)
{
    const std::string tool = clitest::cliExecutable();
    std::vector<std::string> all{tool};
    all.insert(all.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (auto& a : all)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, tool.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0)
        return {-1, 0};
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid)
        return {-1, 0};
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, usage.ru_maxrss};
}

} // namespace

TEST(ClassifyMemory, PeakResidentSizeStaysUnder150BytesAPoint)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "AddressSanitizer's shadow memory is not the tool's";
#endif
    vx::scene::SceneOptions options;
    options.targetPoints = 300000;
    const std::string input = (clitest::scratch() / "scene.las").string();
    const std::string output = (clitest::scratch() / "out.las").string();
    vx::scene::writeSceneLas(vx::scene::generateScene(options), input, "");
    const double points = static_cast<double>(vx::las::LasFile::read(input).size());

    // The budget is the host backend's: a CUDA context alone maps more than the whole cloud.
    const auto [status, peakKiB] =
        runMeasured({"classify", input, "-o", output, "-q", "--backend", "cpu", "--set", "HostThreads=2"});
    ASSERT_EQ(status, 0);
    ASSERT_GT(peakKiB, 1024) << "no peak was measured";
    const double bytesPerPoint = static_cast<double>(peakKiB) * 1024.0 / points;
    EXPECT_LT(bytesPerPoint, 150.0) << "peak resident size " << peakKiB << " KiB for " << points << " points";
}
