// Kernels that read the classes they write give, when run in rounds as on the device, exactly
// the classes of one host thread's ascending pass: the tool's pipeline on sample files and a
// generated forest (where vegetation spreads from point to point), both layouts, the rounds on
// one and on two host threads against the plain pass on one.
#include "common/Probe.h"
#include "common/TestSupport.h"

#include "Pipeline.h"
#include "WrittenScene.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace vx::app;

std::string forestScene()
{
    static const std::string path = [] {
        vx::scene::SceneOptions options;
        options.kind = vx::scene::SceneKind::Forest;
        options.density = 4;
        options.targetPoints = 30000;
        return pipelinetest::writtenScene("in-place-rounds", "forest", options);
    }();
    return path;
}

std::vector<int> classify(const std::string& file, bool soa, bool rounds, int threads)
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setHostThreads(threads);
    v.set_SoA(soa);
    v.setMessageLevel(0);
    v.setFacadeMessageLevel(0);
    vxtest::engine(v).roundsOnHost = rounds;
    vxtest::CaptureStdout quiet;
    runPipeline(v, file, PipelineOptions{}, nullptr);
    return currentClasses(v);
}

void expectSameClasses(const std::string& file)
{
    for (bool soa : {true, false}) {
        const auto pass = classify(file, soa, false, 1);
        for (int threads : {1, 2}) {
            const auto rounds = classify(file, soa, true, threads);
            ASSERT_EQ(pass.size(), rounds.size());
            std::size_t differ = 0;
            for (std::size_t i = 0; i < pass.size(); ++i)
                differ += pass[i] != rounds[i];
            EXPECT_EQ(differ, 0u) << file << (soa ? " SoA, " : " AoS, ") << threads << " threads";
        }
    }
}

} // namespace

TEST(InPlaceRounds, SameClassesAsOneHostThreadOnSampleFiles)
{
    for (const char* name : {"warsaw_small.las", "ign_hd_corse.las"})
        expectSameClasses(vxtest::dataFile(name));
}

TEST(InPlaceRounds, SameClassesAsOneHostThreadInAForest)
{
    expectSameClasses(forestScene());
}
