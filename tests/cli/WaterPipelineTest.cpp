// The default command finds water: the river of a generated scene and the sea of the Corsican
// sample become class 9, and the land of every scene kind and sample file stays what it was.
#include "CliTestSupport.h"
#include "SceneRuns.h"

#include "Evaluation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

using clitest::classesOf;
using clitest::run;
using clitest::scratch;

namespace {

constexpr int kGround = 2, kWater = 9;

/// Of the points whose reference class is `reference`, the share classified as `got`.
double shareOf(const std::vector<int>& truth, const std::vector<int>& classes, int reference, int got)
{
    std::size_t all = 0, hit = 0;
    for (std::size_t i = 0; i < truth.size() && i < classes.size(); ++i)
        if (truth[i] == reference) {
            ++all;
            hit += classes[i] == got;
        }
    return all ? static_cast<double>(hit) / static_cast<double>(all) : 0.0;
}

std::size_t countOf(const std::vector<int>& classes, int cls)
{
    std::size_t n = 0;
    for (int c : classes)
        n += c == cls;
    return n;
}

TEST(SceneKinds, TheRiverIsWater)
{
    // A quarter of the pulses over the river return a dark echo; the shores, where a cell holds
    // bank and water, stay ground.
    const auto e = clitest::classifyScene({"river", "4", "60000", true});
    EXPECT_LT(e.totalError, 0.05);
    EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.90);
    const auto truth = classesOf((scratch() / "truth.las").string());
    const auto out = classesOf((scratch() / "out.las").string());
    EXPECT_GT(countOf(truth, kWater), 1000u);
    EXPECT_GE(shareOf(truth, out, kWater, kWater), 0.80) << "water found";
    EXPECT_LE(shareOf(truth, out, kGround, kWater), 0.01) << "ground taken for water";

    // WaterClass=0 leaves the water ground.
    const auto r = run({"classify", "in.las", "-o", "out0.las", "-q", "--set", "WaterClass=0"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto kept = classesOf((scratch() / "out0.las").string());
    EXPECT_EQ(countOf(kept, kWater), 0u);
    EXPECT_GE(shareOf(truth, kept, kWater, kGround), 0.80);
}

TEST(SceneKinds, LandIsNotWater)
{
    // Roofs are as dense as the land, shadows under crowns give several returns and dark
    // patches are small: no kind without water gets any.
    for (const clitest::SceneCase& c :
         {clitest::SceneCase{"town", "4", "40000", true}, clitest::SceneCase{"hall", "10", "60000", true},
          clitest::SceneCase{"forest", "1", "30000", false},
          clitest::SceneCase{"bridges", "4", "40000", true}}) {
        clitest::classifyScene(c);
        EXPECT_EQ(countOf(classesOf((scratch() / "out.las").string()), kWater), 0u) << c.kind;
    }
}

TEST(SampleFiles, TheSeaOfTheCoastIsWater)
{
    // Without the water step 94 % of ign_hd_corse's sea ended as ground (total error 25 %).
    const std::string name = "ign_hd_corse.las";
    const auto r = run({"classify", clitest::sample(name), "-o", "out.las", "-q"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto reference = classesOf(clitest::sample(name));
    const auto out = classesOf((scratch() / "out.las").string());
    EXPECT_GE(shareOf(reference, out, kWater, kWater), 0.60) << "sea found";
    EXPECT_LE(shareOf(reference, out, kGround, kWater), 0.01) << "ground taken for water";
    EXPECT_LT(vx::app::evaluate(reference, out).totalError, 0.20);
}

TEST(SampleFiles, LandOfTheOtherSamplesIsNotWater)
{
    // The decimated IGN tile's coastal flats, dark and sparse at sea level, are the only land
    // taken for water.
    for (const char* name :
         {"warsaw_small.las", "hexbin_crop.las", "sample_c.las", "ign_hd_buildings_870000_6618000.las",
          "ign_hd_0382_6565_decimated_cropped.las"}) {
        const auto r = run({"classify", clitest::sample(name), "-o", "out.las", "-q"});
        ASSERT_EQ(r.status, 0) << r.err;
        const auto reference = classesOf(clitest::sample(name));
        const auto out = classesOf((scratch() / "out.las").string());
        EXPECT_LE(shareOf(reference, out, kGround, kWater), 0.005) << name;
        if (std::string(name).rfind("ign_hd_0382", 0) != 0) {
            EXPECT_EQ(countOf(out, kWater), 0u) << name;
        }
    }
}

} // namespace
