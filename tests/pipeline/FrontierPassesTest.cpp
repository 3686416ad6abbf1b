// Iterative steps that judge only the frontier of the last pass's changes give exactly the
// classes of full passes: the tool's pipeline (adaptive and with the library's ground steps) on
// the sample files and a generated scene, both layouts, CPU backend with one host thread.
#include "common/Probe.h"
#include "common/TestSupport.h"

#include "Pipeline.h"
#include "WrittenScene.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace vx::app;

std::string generatedScene()
{
    static const std::string path = [] {
        vx::scene::SceneOptions options;
        options.seed = 2;
        options.targetPoints = 60000;
        return pipelinetest::writtenScene("frontier-passes", "scene", options);
    }();
    return path;
}

std::vector<int> classify(const std::string& file, bool soa, bool adaptive, bool fullPasses)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setHostThreads(1);
    v.set_SoA(soa);
    v.setMessageLevel(0);
    v.setFacadeMessageLevel(0);
    vxtest::engine(v).fullPasses = fullPasses;
    PipelineOptions options;
    options.terrainGround = adaptive;
    vxtest::CaptureStdout quiet;
    runPipeline(v, file, options, nullptr);
    return currentClasses(v);
}

void expectSameClasses(const std::string& file)
{
    for (bool soa : {true, false})
        for (bool adaptive : {true, false}) {
            const auto full = classify(file, soa, adaptive, true);
            const auto frontier = classify(file, soa, adaptive, false);
            ASSERT_EQ(full.size(), frontier.size());
            std::size_t differ = 0;
            for (std::size_t i = 0; i < full.size(); ++i)
                differ += full[i] != frontier[i];
            EXPECT_EQ(differ, 0u) << file << (soa ? " SoA" : " AoS")
                                  << (adaptive ? " adaptive" : " library ground");
        }
}

} // namespace

TEST(FrontierPasses, SameClassesAsFullPassesOnTheSampleFiles)
{
    for (const char* name : {"warsaw_small.las", "sample_c.las", "ign_hd_buildings_870000_6618000.las"})
        expectSameClasses(vxtest::dataFile(name));
}

TEST(FrontierPasses, SameClassesAsFullPassesOnAGeneratedScene)
{
    expectSameClasses(generatedScene());
}
