// The default command (`vexaro classify IN -o OUT`, no settings) on generated scenes of every
// kind and density, judged against their truth, and on the shared sample files: what the data
// profile, the presets and the added steps must keep reaching.
#include "CliTestSupport.h"
#include "SceneRuns.h"

#include "Evaluation.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using clitest::classesOf;
using clitest::classifyScene;
using clitest::run;
using clitest::SceneCase;
using clitest::scratch;

namespace {

class SceneKinds : public ::testing::TestWithParam<SceneCase> {};

TEST_P(SceneKinds, DefaultCommandFindsGroundBuildingsAndVegetation)
{
    // Ground meets its target on every kind; buildings and vegetation are held at what they
    // reach on every kind (the targets 0.90 and 0.85 are SceneTargets below).
    const auto e = classifyScene(GetParam());
    EXPECT_LT(e.totalError, 0.05) << "ground total error";
    if (GetParam().buildings) {
        EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.85) << "building F1";
    }
    EXPECT_GE(e.f1(vx::app::kVegetationCategory), 0.70) << "vegetation F1";
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, SceneKinds,
    ::testing::Values(SceneCase{"town", "1", "30000", true}, SceneCase{"town", "10", "60000", true},
                      SceneCase{"town", "30", "60000", true}, SceneCase{"hall", "10", "60000", true},
                      SceneCase{"terraces", "10", "60000", true}, SceneCase{"forest", "10", "60000", false}),
    [](const auto& info) { return std::string(info.param.kind) + "_" + info.param.density; });

/// The targets: building F1 0.90 where buildings exist, vegetation F1 0.85, tiers right for 85 %
/// of the vegetation.
void expectTargets(const vx::app::Evaluation& e, bool buildings)
{
    if (buildings) {
        EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.90) << "building F1";
    }
    EXPECT_GE(e.f1(vx::app::kVegetationCategory), 0.85) << "vegetation F1";
    EXPECT_GE(e.tierAccuracy, 0.85) << "tiers";
}

class SceneTargets : public ::testing::TestWithParam<SceneCase> {};

TEST_P(SceneTargets, BuildingsAndVegetationReachTheirTargets)
{
    expectTargets(classifyScene(GetParam()), GetParam().buildings);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, SceneTargets,
    ::testing::Values(SceneCase{"town", "1", "30000", true}, SceneCase{"town", "10", "60000", true},
                      SceneCase{"hall", "10", "60000", true}, SceneCase{"forest", "10", "60000", false},
                      SceneCase{"forest", "1", "30000", false}),
    [](const auto& info) { return std::string(info.param.kind) + "_" + info.param.density; });

class SceneTargetsNotMet : public ::testing::TestWithParam<SceneCase> {};

TEST_P(SceneTargetsNotMet, DISABLED_BuildingsAndVegetationReachTheirTargets)
{
    // Not met yet (scenes of 60,000 points, seed 1): town at 30 pts/m2 reaches tiers 0.76 and
    // terraces vegetation F1 0.83 and tiers 0.71: their grass returns lie within the ground
    // distance of the bare earth.
    expectTargets(classifyScene(GetParam()), GetParam().buildings);
}

INSTANTIATE_TEST_SUITE_P(Scenes, SceneTargetsNotMet,
                         ::testing::Values(SceneCase{"town", "30", "60000", true},
                                           SceneCase{"terraces", "10", "60000", true}),
                         [](const auto& info) {
                             return std::string(info.param.kind) + "_" + info.param.density;
                         });

TEST(SceneKinds, SparseTownKeepsItsGroundAndFindsItsRoofs)
{
    // At 0.2 pulses per square metre a house holds a handful of returns: the ground is still
    // found, and the roofs by their single echoes and the growth over their ridges and eaves
    // (the building steps alone reach F1 0.3 here).
    const auto e = classifyScene({"town", "0.2", "15000", true});
    EXPECT_LT(e.totalError, 0.05);
    EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.90) << "building F1";
}

TEST(SceneKinds, HillyTownAndTerracesKeepTheirGround)
{
    // Hilltops and terrace steps that the wide window cuts join the terrain again where they rise
    // from it by less than half a metre a cell; without that, 30 and 22 per cent ground error.
    {
        const auto e = classifyScene({"town", "15", "60000", true}, {"--seed", "3"});
        EXPECT_LT(e.totalError, 0.05) << "town";
        EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.90) << "town";
    }
    {
        const auto e = classifyScene({"terraces", "4", "60000", true}, {"--seed", "3"});
        EXPECT_LT(e.totalError, 0.05) << "terraces";
        EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.85) << "terraces";
    }
}

TEST(SceneKinds, SparseTerracesKeepTheirRims)
{
    // At 0.2 pulses per square metre the terrain's cells are 3.3 m, and a cell straddling a
    // terrace step takes the lower level's height: the upper level's edge stood 0.4-2 m above
    // the surface and became vegetation (type I error 4.5 %, total 5.7 %). It continues the
    // ground beside it at its own height, and the rim search gives it back.
    const auto e = classifyScene({"terraces", "0.2", "30000", true});
    EXPECT_LT(e.totalError, 0.05);
    EXPECT_LT(e.typeI, 0.03) << "upper edges of the terraces";
}

TEST(SceneKinds, LandBeyondARiverThatBridgesCrossIsGround)
{
    // Seed 22 lays the river across a corner of the scene: the land beyond it is narrower than
    // the window, stands 10-17 m above the water behind banks steeper than the climb, and only
    // the bridge decks, which the climb leaves out, join it to the rest. Cut by the openings, its
    // ground became roofs (type I error 11.6 %).
    const auto e = classifyScene({"river", "1", "30000", true}, {"--seed", "22"});
    EXPECT_LT(e.typeI, 0.02) << "the land beyond the river";
    EXPECT_LT(e.totalError, 0.06);
}

TEST(SceneKinds, TerracesOnMostlyLevelGroundTakeTheMountainPreset)
{
    // Seeds 2 and 5 lay the 30-degree slopes over a fifth and a tenth of the scene: the median
    // cell is level, and the flat or general preset's slope limit cuts the slopes into buildings
    // (building F1 0.72 and 0.16).
    for (const auto& [density, seed] : {std::pair{"4", "2"}, {"6", "5"}}) {
        SCOPED_TRACE(seed);
        const auto e = classifyScene({"terraces", density, "60000", true}, {"--seed", seed});
        EXPECT_LT(e.totalError, 0.05);
        EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.90) << "building F1";
    }
}

TEST(SceneKinds, SparseForestTakesTheForestPreset)
{
    // 0.2 pulses per square metre under a closed canopy: few ground returns, and the flat
    // preset's slope limit cuts the ground between them (17 % of it).
    const auto e = classifyScene({"forest", "0.2", "20000", false}, {"--seed", "2"});
    EXPECT_LT(e.totalError, 0.05);
    EXPECT_LT(e.typeI, 0.08) << "ground cut under the canopy";
    expectTargets(e, false);
    const auto r = run({"classify", "in.las", "-o", "out.las"});
    EXPECT_NE(r.err.find("preset forest (auto"), std::string::npos) << r.err;
}

TEST(SceneKinds, SparseMountainForestKeepsTheClimbOnTheGround)
{
    // A closed canopy on a 22-31 degree mountainside at 0.2 pulses per square metre: terrain
    // cells of 3.3 m, whose lowest returns are often shrubs and crowns. A climb of 0.8 of such a
    // cell steps from the ground onto them (9.2 % ground total error); the mountain preset
    // climbs at most 1.2 m a cell.
    const auto e = classifyScene({"mountain-forest", "0.2", "20000", false});
    EXPECT_LT(e.totalError, 0.05);
    EXPECT_LT(e.typeII, 0.02) << "canopy taken as ground";
    expectTargets(e, false);
    const auto r = run({"classify", "in.las", "-o", "out.las"});
    EXPECT_NE(r.err.find("preset mountain (auto"), std::string::npos) << r.err;
}

TEST(SceneKinds, BridgeDecksAreNotGround)
{
    // A town cut by a channel 5-8 m deep that road bridges cross. The decks meet the road at
    // their ends, and the climb took them for terrain (99 % of their points ground); only the
    // parts over the upper banks, less than a wall's height above the ground under them, stay
    // ground (about a third). The rest are bridge decks (17), not roofs.
    const auto e = classifyScene({"bridges", "4", "60000", true});
    EXPECT_LT(e.totalError, 0.05);
    const auto& other = e.matrix[vx::app::kOtherCategory];
    std::size_t decks = 0;
    for (int c = 0; c < vx::app::kCategories; ++c)
        decks += other[c];
    EXPECT_GT(decks, 1000u);
    EXPECT_LT(other[vx::app::kGroundCategory], decks * 45 / 100) << "deck points taken as ground";
    EXPECT_GT(other[vx::app::kOtherCategory], decks / 2) << "deck points given the deck's class";
    EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.90);
}

TEST(SceneKinds, SingleReturnDataFindTheirTreesAndRoofs)
{
    // A sparse town with every return written as the only return of its pulse, as files
    // converted from text or from older sensors come: no point is a non-last return, and trees
    // and roofs can be told by their shape only (vegetation F1 0.02 with the share of non-last
    // returns asked for, building F1 0.43 with the roofs by echoes not run).
    const auto s = run({"scene", "-o", "echoes.las", "--truth", "truth.las", "--kind", "town", "--density",
                        "0.3", "--points", "20000", "-q"});
    ASSERT_EQ(s.status, 0) << s.err;
    const auto echoes = vx::las::LasFile::read((scratch() / "echoes.las").string());
    auto single = vx::las::LasFile::create(4, 6, echoes.header().scale, echoes.header().offset);
    for (std::size_t i = 0; i < echoes.size(); ++i) {
        vx::las::NewPoint p;
        p.x = echoes.x(i), p.y = echoes.y(i), p.z = echoes.z(i);
        p.intensity = echoes.intensity(i);
        single.addPoint(p);
    }
    single.write((scratch() / "single.las").string());
    const auto r = run({"classify", "single.las", "-o", "out.las", "-q", "--units", "metres"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto e = vx::app::evaluate(classesOf((scratch() / "truth.las").string()),
                                     classesOf((scratch() / "out.las").string()));
    EXPECT_LT(e.totalError, 0.05);
    EXPECT_GE(e.f1(vx::app::kVegetationCategory), 0.85) << "vegetation F1";
    EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.85) << "building F1";
}

TEST(SceneKinds, LoneReturnsOffTallWallsAreNotNoise)
{
    // The hall's 8-10 m walls give a few sparse returns; lone ones read as high noise, above the
    // ground around them. Up to RaisedPointsMaxHeight over the final ground they go back to the
    // later steps (69 building points were noise without), while the scene's own noise stays.
    const auto s = run({"scene", "-o", "in.las", "--truth", "truth.las", "--kind", "hall", "--density", "4",
                        "--points", "60000", "-q"});
    ASSERT_EQ(s.status, 0) << s.err;
    for (const char* ceiling : {"10", "0"}) {
        SCOPED_TRACE(ceiling);
        const auto r = run({"classify", "in.las", "-o", "out.las", "-q", "--set",
                            std::string("RaisedPointsMaxHeight=") + ceiling});
        ASSERT_EQ(r.status, 0) << r.err;
        const auto truth = classesOf((scratch() / "truth.las").string());
        const auto out = classesOf((scratch() / "out.las").string());
        std::size_t wallNoise = 0, noise = 0, noiseKept = 0;
        for (std::size_t k = 0; k < truth.size(); ++k) {
            wallNoise += truth[k] == 6 && out[k] == 7;
            noise += truth[k] == 7;
            noiseKept += truth[k] == 7 && out[k] == 7;
        }
        EXPECT_EQ(noiseKept, noise);
        if (std::string(ceiling) == "10") {
            EXPECT_LT(wallNoise, 10u);
        } else {
            EXPECT_GT(wallNoise, 30u) << "the ceiling is what gives them back";
        }
    }
}

TEST(SceneKinds, StrayReturnsBecomeNoiseNotTrees)
{
    const auto e = classifyScene({"town", "10", "40000", true}, {"--stray"});
    EXPECT_LT(e.totalError, 0.05);
    const auto truth = classesOf((scratch() / "truth.las").string());
    const auto classes = classesOf((scratch() / "out.las").string());
    int stray = 0, marked = 0;
    for (std::size_t i = 0; i < truth.size(); ++i)
        if (truth[i] == 7 || truth[i] == 18) {
            ++stray;
            marked += classes[i] == 7;
        }
    ASSERT_GT(stray, 0);
    // One low return lying just 5 m under a tree's crown can pass for understorey.
    EXPECT_GE(marked, stray * 9 / 10) << "stray returns are noise (class 7 by default)";

    // With the high-noise class of LAS 1.4 the returns above take it and those below stay low
    // points: the steps between tell them apart whatever class the high ones end with.
    const auto r = run({"classify", "in.las", "-o", "out18.las", "-q", "--set", "HighNoiseClass=18"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto classes18 = classesOf((scratch() / "out18.las").string());
    int high = 0, highMarked = 0, low = 0, lowMarked = 0;
    for (std::size_t i = 0; i < truth.size(); ++i) {
        if (truth[i] == 18) {
            ++high;
            highMarked += classes18[i] == 18;
        } else if (truth[i] == 7) {
            ++low;
            lowMarked += classes18[i] == 7;
        }
    }
    ASSERT_GT(high, 0);
    ASSERT_GT(low, 0);
    EXPECT_EQ(highMarked, high);
    EXPECT_GE(lowMarked, low - 1);
}

/// A town at 4 pts/m² written to sunk.las with every `every`-th ground return sunk by depth(k)
/// metres (k counts the sunk groups), and `group` - 1 more returns sunk with it 0.3 m beside it.
/// Returns the truth, with the sunk returns as low noise, and the indices of the sunk returns.
std::pair<std::vector<int>, std::vector<std::size_t>> sunkScene(int every, int group,
                                                                double (*depth)(std::size_t))
{
    const auto s = run({"scene", "-o", "clean.las", "--truth", "truth.las", "--kind", "town", "--density",
                        "4", "--points", "30000", "-q"});
    EXPECT_EQ(s.status, 0) << s.err;
    const auto clean = vx::las::LasFile::read((scratch() / "clean.las").string());
    auto truth = classesOf((scratch() / "truth.las").string());
    auto sunk = vx::las::LasFile::create(4, 6, clean.header().scale, clean.header().offset);
    int ground = 0;
    std::vector<std::size_t> moved;
    std::vector<vx::las::NewPoint> companions;
    for (std::size_t i = 0; i < clean.size(); ++i) {
        vx::las::NewPoint p;
        p.x = clean.x(i), p.y = clean.y(i), p.z = clean.z(i);
        p.intensity = clean.intensity(i);
        p.returnNumber = clean.returnNumber(i), p.numberOfReturns = clean.numberOfReturns(i);
        p.gpsTime = clean.gpsTime(i);
        if (truth[i] == 2 && ++ground % every == 0) {
            p.z -= depth(moved.size() / static_cast<std::size_t>(group));
            truth[i] = 7;
            moved.push_back(i);
            for (int k = 1; k < group; ++k) {
                vx::las::NewPoint c = p;
                c.x += k % 2 ? 0.3 : -0.3;
                c.y += k < 2 ? 0.3 : -0.3;
                c.z += 0.05 * k;
                companions.push_back(c);
                moved.push_back(clean.size() + companions.size() - 1);
            }
        }
        sunk.addPoint(p);
    }
    for (const auto& c : companions) {
        sunk.addPoint(c);
        truth.push_back(7);
    }
    sunk.write((scratch() / "sunk.las").string());
    return {truth, moved};
}

struct SunkOutcome {
    std::size_t marked = 0; ///< sunk returns classified low noise
    double totalError = 1;  ///< ground total error of the whole scene
};

/// Classifies sunk.las with the default command (in metres) and judges it against its truth.
SunkOutcome classifySunk(const std::vector<int>& truth, const std::vector<std::size_t>& moved)
{
    const auto r = run({"classify", "sunk.las", "-o", "out.las", "-q", "--units", "metres"});
    EXPECT_EQ(r.status, 0) << r.err;
    const auto classes = classesOf((scratch() / "out.las").string());
    SunkOutcome out;
    if (classes.size() != truth.size())
        return out;
    for (std::size_t i : moved)
        out.marked += classes[i] == 7;
    out.totalError = vx::app::evaluate(truth, classes).totalError;
    return out;
}

TEST(SceneKinds, ReturnsSunkBelowTheGroundBecomeNoise)
{
    // Multipath returns sunk 0.8-1.8 m: ground lies within the isolation range of each, so only
    // their depth below the plane of the ground around them tells (1 of 73 was noise without it).
    const auto [truth, moved] =
        sunkScene(300, 1, [](std::size_t k) { return 0.8 + 0.5 * static_cast<double>(k % 3); });
    ASSERT_GE(moved.size(), 10u);
    const SunkOutcome out = classifySunk(truth, moved);
    EXPECT_GE(out.marked, moved.size() * 7 / 10) << "sunk returns are low noise";
    EXPECT_LT(out.totalError, 0.05);
}

TEST(SceneKinds, SmallGroupsSunkTogetherBecomeNoise)
{
    // Groups of three returns sunk 2.5-7.5 m: each has two others beside it, so none is
    // isolated; deeper than the isolation range and shallower than the height gap, only the
    // plane of the ground around them, fitted without the group, tells (none was noise without).
    const auto [truth, moved] =
        sunkScene(600, 3, [](std::size_t k) { return 2.5 + 2.5 * static_cast<double>(k % 3); });
    ASSERT_GE(moved.size(), 30u);
    const SunkOutcome out = classifySunk(truth, moved);
    EXPECT_GE(out.marked, moved.size() * 8 / 10) << "sunk groups are low noise";
    EXPECT_LT(out.totalError, 0.05);
}

TEST(SceneKinds, GroundUnderADenseCanopyIsNotNoise)
{
    // Under the forest's canopy a block of columns can hold a few ground returns below an empty
    // band taller than the noise step's gap: a far-off group to that step (3 % of the ground of
    // this scene), ground again once the terrain is known.
    const auto e = classifyScene({"forest", "1", "30000", false});
    const auto truth = classesOf((scratch() / "truth.las").string());
    const auto classes = classesOf((scratch() / "out.las").string());
    std::size_t ground = 0, noise = 0;
    for (std::size_t i = 0; i < truth.size(); ++i)
        if (truth[i] == 2) {
            ++ground;
            noise += classes[i] == 7;
        }
    ASSERT_GT(ground, 1000u);
    EXPECT_LE(noise, ground / 200) << "ground returns left as noise";
    EXPECT_LT(e.typeI, 0.01);
}

TEST(SceneKinds, LoneReturnsInSparseCrownsAreNotNoise)
{
    // At 1 pt/m² a return inside a crown can have fewer than two others within the noise range,
    // and more of its block above it than below: a low point to the noise step (0.8 % of this
    // scene's vegetation), a plant once the ground shows it standing metres above.
    classifyScene({"forest", "1", "30000", false});
    const auto truth = classesOf((scratch() / "truth.las").string());
    const auto classes = classesOf((scratch() / "out.las").string());
    std::size_t vegetation = 0, noise = 0;
    for (std::size_t i = 0; i < truth.size(); ++i)
        if (truth[i] >= 3 && truth[i] <= 5) {
            ++vegetation;
            noise += classes[i] == 7;
        }
    ASSERT_GT(vegetation, 10000u);
    EXPECT_LE(noise, vegetation / 1000) << "vegetation left as noise";
}

/// Share of the points of a generated scene of `kind` that get the same class in feet as in metres.
double feetAgreeWithMetres(const std::string& kind)
{
    for (const char* units : {"metres", "feet"}) {
        const auto s = run({"scene", "-o", std::string(units) + ".las", "--kind", kind, "--density", "10",
                            "--points", "40000", "--units", units, "-q"});
        EXPECT_EQ(s.status, 0) << s.err;
        const auto r = run({"classify", std::string(units) + ".las", "-o",
                            std::string("out-") + units + ".las", "-q", "--set", "HostThreads=1"});
        EXPECT_EQ(r.status, 0) << r.err;
    }
    const auto metres = classesOf((scratch() / "out-metres.las").string());
    const auto feet = classesOf((scratch() / "out-feet.las").string());
    EXPECT_EQ(metres.size(), feet.size());
    if (metres.empty() || metres.size() != feet.size())
        return 0;
    std::size_t same = 0;
    for (std::size_t i = 0; i < metres.size(); ++i)
        same += metres[i] == feet[i];
    return static_cast<double>(same) / static_cast<double>(metres.size());
}

TEST(SceneKinds, FeetGiveTheClassesOfMetres)
{
    EXPECT_GE(feetAgreeWithMetres("town"), 0.995);
}

TEST(SceneKinds, FeetGiveTheClassesOfMetresOnSlopes)
{
    // On 30-degree slopes the ground distance grows with the slope: an allowance read in the
    // file's unit rather than in metres gives feet a third of it (98.5 % agreement).
    EXPECT_GE(feetAgreeWithMetres("terraces"), 0.995);
}

TEST(SceneKinds, FeetGiveTheClassesOfMetresOnWater)
{
    // The water step's cells, least size and relief are lengths too.
    EXPECT_GE(feetAgreeWithMetres("river"), 0.995);
}

TEST(SceneKinds, UnknownUnitsGetAWarning)
{
    // warsaw_small names no unit: the run says that lengths are read as metres.
    const auto r = run({"classify", clitest::sample("warsaw_small.las"), "-o", "out.las"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("vexaro: warning: "), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("--units"), std::string::npos) << r.err;
}

TEST(SampleFiles, GroundOfTheSparseAndTheMountainSamples)
{
    // The decimated IGN tile (0.3 pts/m2) and the mountain sample (steep, 1 pt/m2).
    for (const char* name : {"ign_hd_0382_6565_decimated_cropped.las", "hexbin_crop.las"}) {
        const auto r = run({"classify", clitest::sample(name), "-o", "out.las", "-q"});
        ASSERT_EQ(r.status, 0) << r.err;
        const auto e =
            vx::app::evaluate(classesOf(clitest::sample(name)), classesOf((scratch() / "out.las").string()));
        EXPECT_LT(e.totalError, 0.10) << name;
        // The village's roofs, by their echoes; its gables take a roughness that grows with the
        // neighbourhood sparse data needs (0.844 with 0.5 m).
        if (std::string(name).rfind("ign_", 0) == 0) {
            EXPECT_GE(e.f1(vx::app::kBuildingCategory), 0.85) << name;
        }
    }
}

TEST(SampleFiles, CliffFacesOfTheCoastAreGround)
{
    // The Corsican coast's rock faces rise metres within a cell, far above the lowest point that
    // the terrain surface follows: without the steep-ground step 23 % of its ground is missed.
    const std::string name = "ign_hd_corse.las";
    const auto r = run({"classify", clitest::sample(name), "-o", "out.las", "-q"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto e =
        vx::app::evaluate(classesOf(clitest::sample(name)), classesOf((scratch() / "out.las").string()));
    EXPECT_LT(e.typeI, 0.13);
}

TEST(SampleFiles, SteepTerrainTakesTheMountainPreset)
{
    const auto r = run({"classify", clitest::sample("hexbin_crop.las"), "-o", "out.las"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("preset mountain (auto"), std::string::npos) << r.err;
}

} // namespace
