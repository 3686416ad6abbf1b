// The pipeline reads and writes the LAS file itself unless a normals file is asked for, when the
// library's loadLASFile and saveLASFile do: both ways give the same file, byte for byte.
#include "common/TestSupport.h"

#include "Pipeline.h"
#include "scene/Scene.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vx::app;

std::filesystem::path folder()
{
    static const auto path = [] {
        const auto p = std::filesystem::path(VEXARO_BINARY_DIR) / "pipeline-file";
        std::filesystem::create_directories(p);
        return p;
    }();
    return path;
}

std::string sceneFile(const std::string& name, std::size_t points, uint64_t seed)
{
    vx::scene::SceneOptions options;
    options.seed = seed;
    options.targetPoints = points;
    const std::string out = (folder() / name).string();
    vx::scene::writeSceneLas(vx::scene::generateScene(options), out, "");
    return out;
}

std::vector<char> bytesOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

template <class T> void configureQuietly(Vexaro<T>& v)
{
    v.setComputeBackend("cpu");
    v.setHostThreads(1);
    v.setMessageLevel(0);
    v.setFacadeMessageLevel(0);
}

template <class T>
void runQuietly(const std::string& input, const PipelineOptions& options,
                const ProgressFn& progress = nullptr)
{
    Vexaro<T> v;
    configureQuietly(v);
    vxtest::CaptureStdout quiet;
    runPipeline(v, input, options, progress);
}

/// The output of the pipeline without and with a normals file (the library's own load and save).
/// `tag` names the files of one test: ctest runs the tests side by side.
template <class T> void expectSameFileBothWays(const std::string& tag, bool heightAboveGround)
{
    const std::string input = sceneFile(tag + ".las", 6000, 3);
    PipelineOptions tool;
    tool.output = (folder() / (tag + "-by-tool.las")).string();
    tool.writeHeightAboveGround = heightAboveGround;
    PipelineOptions library = tool;
    library.output = (folder() / (tag + "-by-library.las")).string();
    library.normalsBaseName = (folder() / (tag + "-normals")).string();
    runQuietly<T>(input, tool);
    runQuietly<T>(input, library);
    const auto a = bytesOf(tool.output), b = bytesOf(library.output);
    ASSERT_FALSE(a.empty());
    EXPECT_TRUE(a == b) << "the tool's file differs from saveLASFile's";
}

} // namespace

TEST(PipelineFile, ToolWritesWhatTheLibraryWrites)
{
    expectSameFileBothWays<float>("plain", false);
}

TEST(PipelineFile, ToolWritesWhatTheLibraryWritesWithHeights)
{
    expectSameFileBothWays<float>("heights", true);
}

TEST(PipelineFile, ToolWritesWhatTheLibraryWritesInDoublePrecision)
{
    expectSameFileBothWays<double>("double", false);
}

TEST(PipelineFile, InputChangedDuringTheRunIsRefused)
{
    const std::string input = sceneFile("changing.las", 3000, 4);
    const std::string smaller = sceneFile("smaller.las", 1000, 5);
    PipelineOptions options;
    options.output = (folder() / "changed-out.las").string();
    std::filesystem::remove(options.output);
    // After the last step and before the save, another file takes the input's place.
    const ProgressFn swap = [&](const StepReport& r) {
        if (r.name == "final classes")
            std::filesystem::copy_file(smaller, input, std::filesystem::copy_options::overwrite_existing);
    };
    try {
        runQuietly<float>(input, options, swap);
        FAIL() << "a changed input was written";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("changed while it was classified"), std::string::npos)
            << e.what();
        EXPECT_NE(std::string(e.what()).find(input), std::string::npos) << e.what();
    }
    EXPECT_FALSE(std::filesystem::exists(options.output));
}

TEST(PipelineFile, ReleasingTheCloudBeforeTheSaveChangesNeitherFileNorClasses)
{
    const std::string input = sceneFile("release.las", 4000, 6);
    PipelineOptions keep;
    keep.output = (folder() / "release-kept.las").string();
    PipelineOptions release = keep;
    release.output = (folder() / "release-released.las").string();
    release.releaseBeforeSave = true;
    Vexaro<float> kept, released;
    configureQuietly(kept);
    configureQuietly(released);
    std::vector<int> savedPoints;
    const ProgressFn onSave = [&](const StepReport& r) {
        if (r.name == "save")
            savedPoints.push_back(r.points);
    };
    std::vector<int> keptClasses, releasedClasses;
    {
        vxtest::CaptureStdout quiet;
        keptClasses = runPipeline(kept, input, keep, onSave);
        releasedClasses = runPipeline(released, input, release, onSave);
    }
    const int n = static_cast<int>(keptClasses.size());
    ASSERT_GT(n, 1000); // the scene has about the points asked for
    EXPECT_EQ(keptClasses, currentClasses(kept));
    EXPECT_EQ(releasedClasses, keptClasses);
    EXPECT_EQ(released.pointCount(), 0);
    EXPECT_EQ(kept.pointCount(), n);
    EXPECT_EQ(savedPoints, (std::vector<int>{n, n}));
    EXPECT_TRUE(bytesOf(keep.output) == bytesOf(release.output));
}
