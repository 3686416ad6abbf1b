// `vexaro classify` and `vexaro demo` end to end. They run the whole classification pipeline, so
// they need every library step (normals to vegetation); a build whose steps are still stubs
// fails them.
#include "CliTestSupport.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <set>
#include <sstream>

using clitest::lineStartingWith;
using clitest::readText;
using clitest::run;
using clitest::sample;
namespace fs = std::filesystem;

namespace {

const char* kSteps[] = {"load",
                        "reset classes",
                        "noise",
                        "normal vectors",
                        "terrain ground",
                        "building seeds",
                        "building growth",
                        "vegetation",
                        "roofs by echoes",
                        "height above ground",
                        "final classes",
                        "save"};

/// The steps of --preset none: the library's own ground steps.
const char* kLibrarySteps[] = {"load",
                               "reset classes",
                               "normal vectors",
                               "low points",
                               "ground seeds",
                               "ground growth",
                               "low-point correction",
                               "building seeds",
                               "building growth",
                               "vegetation",
                               "final classes",
                               "save"};

std::size_t countLines(const std::string& text)
{
    std::size_t n = 0;
    for (char c : text)
        n += c == '\n';
    return n;
}

} // namespace

TEST(ClassifyPipeline, WritesTheInputWithOnlyTheClassesChanged)
{
    const std::string in = sample("warsaw_small.las");
    const auto r = run({"classify", in, "-o", "out.las"});
    ASSERT_EQ(r.status, 0) << r.err;
    // One progress line per step, numbered, with time and point count.
    for (int k = 0; k < 12; ++k) {
        std::ostringstream prefix;
        prefix << '[' << (k + 1 < 10 ? " " : "") << k + 1 << "/12] " << kSteps[k];
        const std::string line = lineStartingWith(r.err, prefix.str());
        EXPECT_NE(line, "") << prefix.str() << "\n" << r.err;
        EXPECT_NE(line.find(" s   3,000 points"), std::string::npos) << line;
    }
    // The profile and the preset come before the work.
    EXPECT_EQ(lineStartingWith(r.out, "Profile"), "Profile");
    // warsaw_small is flat (median slope 0.03).
    EXPECT_NE(r.err.find("preset flat (auto, terrain slope "), std::string::npos) << r.err;
    EXPECT_EQ(lineStartingWith(r.out, "Classes of out.las"), "Classes of out.las");
    EXPECT_EQ(lineStartingWith(r.out, "         total"), "         total                            3,000");
    EXPECT_EQ(r.out.find("Time: "), std::string::npos) << "library messages must stay off the terminal";

    const auto input = vx::las::LasFile::read(in);
    const auto output = vx::las::LasFile::read((clitest::scratch() / "out.las").string());
    ASSERT_EQ(output.size(), input.size());
    std::set<int> classes;
    for (std::size_t i = 0; i < input.size(); ++i) {
        ASSERT_EQ(output.rawX(i), input.rawX(i));
        ASSERT_EQ(output.rawY(i), input.rawY(i));
        ASSERT_EQ(output.rawZ(i), input.rawZ(i));
        ASSERT_EQ(output.intensity(i), input.intensity(i));
        ASSERT_EQ(output.returnNumber(i), input.returnNumber(i));
        classes.insert(output.classification(i));
    }
    for (int c : classes)
        EXPECT_TRUE(c >= 1 && c <= 7) << c;
    EXPECT_TRUE(classes.count(2)) << "some ground is found";
}

TEST(ClassifyPipeline, PresetNoneRunsTheLibraryGroundSteps)
{
    const auto r = run({"classify", sample("warsaw_small.las"), "-o", "out.las", "--preset", "none"});
    ASSERT_EQ(r.status, 0) << r.err;
    for (int k = 0; k < 12; ++k) {
        std::ostringstream prefix;
        prefix << '[' << (k + 1 < 10 ? " " : "") << k + 1 << "/12] " << kLibrarySteps[k];
        EXPECT_NE(lineStartingWith(r.err, prefix.str()), "") << prefix.str() << "\n" << r.err;
    }
    EXPECT_EQ(lineStartingWith(r.out, "Profile"), "");
}

TEST(ClassifyPipeline, UnknownPresetIsAUsageError)
{
    const auto r = run({"classify", sample("warsaw_small.las"), "-o", "out.las", "--preset", "moon"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("unknown preset 'moon'"), std::string::npos) << r.err;
}

TEST(ClassifyPipeline, QuietPrintsNothing)
{
    const auto r = run({"classify", sample("warsaw_small.las"), "-o", "out.las", "-q"});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    EXPECT_TRUE(fs::exists(clitest::scratch() / "out.las"));
}

TEST(ClassifyPipeline, VerboseShowsTheLibraryMessages)
{
    const auto r = run({"classify", sample("warsaw_small.las"), "-o", "out.las", "-v"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("Time: "), std::string::npos);
    EXPECT_NE(r.out.find("Syncing Cuda to Host "), std::string::npos);
}

TEST(ClassifyPipeline, LogTakesTheLibraryMessagesAndParametersReachTheLibrary)
{
    const auto plain = run({"classify", sample("warsaw_small.las"), "-o", "out.las", "--log", "lib.log"});
    EXPECT_EQ(plain.status, 0) << plain.err;
    EXPECT_EQ(plain.out.find("Time: "), std::string::npos);
    const std::string log = readText(clitest::scratch() / "lib.log");
    EXPECT_NE(log.find("Time: "), std::string::npos);
    EXPECT_NE(log.find("Syncing Cuda to Host "), std::string::npos); // message level 2, the default

    // Message level 0 silences the level-2 lines: the setting reached the library.
    const std::string params = clitest::writeText("quiet.txt", "# library messages\nMessageLevel = 0\n");
    const auto quiet = run(
        {"classify", sample("warsaw_small.las"), "-o", "out.las", "--log", "lib0.log", "--params", params});
    EXPECT_EQ(quiet.status, 0) << quiet.err;
    const std::string log0 = readText(clitest::scratch() / "lib0.log");
    EXPECT_NE(log0.find("Time: "), std::string::npos);
    EXPECT_EQ(log0.find("Syncing Cuda to Host "), std::string::npos);
}

TEST(ClassifyPipeline, UserSettingsWinOverTheRecommendedValuesEvenAtTheLibraryDefault)
{
    // The vegetation step prints its range first on a line of its own, whatever the level.
    const auto recommended = run(
        {"classify", sample("warsaw_small.las"), "-o", "out.las", "--log", "rec.log", "--preset", "none"});
    ASSERT_EQ(recommended.status, 0) << recommended.err;
    EXPECT_NE(readText(clitest::scratch() / "rec.log").find("\n1 0.3 0.9 0.5 0.5\n"), std::string::npos);
    const auto user = run({"classify", sample("warsaw_small.las"), "-o", "out.las", "--log", "user.log",
                           "--set", "VegetationRange=2"});
    ASSERT_EQ(user.status, 0) << user.err;
    EXPECT_NE(readText(clitest::scratch() / "user.log").find("\n2 0.3 0.9 0.5 0.5\n"), std::string::npos);
}

TEST(ClassifyPipeline, PreviewAndNormals)
{
    const auto r = run(
        {"classify", sample("warsaw_small.las"), "-o", "out.las", "--preview", "p.png", "--normals", "n"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(readText(clitest::scratch() / "p.png").substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    const std::string normals = readText(clitest::scratch() / "n.txt");
    EXPECT_EQ(countLines(normals), 3000u);
    std::istringstream first(normals.substr(0, normals.find('\n')));
    int fields = 0;
    for (std::string v; first >> v;)
        ++fields;
    EXPECT_EQ(fields, 7);
}

TEST(ClassifyPipeline, HagAddsTheHeightAboveTheFinalGround)
{
    const auto r = run({"classify", sample("warsaw_small.las"), "-o", "hag.las", "-q", "--hag"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto in = vx::las::LasFile::read(sample("warsaw_small.las"));
    const auto out = vx::las::LasFile::read((clitest::scratch() / "hag.las").string());
    ASSERT_EQ(out.size(), in.size());
    ASSERT_EQ(out.header().recordLength, in.header().recordLength + 4);
    bool foundRecord = false;
    for (const auto& vlr : out.vlrs())
        foundRecord = foundRecord || (vlr.userId == "LASF_Spec" && vlr.recordId == 4);
    EXPECT_TRUE(foundRecord);
    // Ground points of the result lie on the surface made of them, within the relief of a cell
    // (the sample has embankments); every height is a number.
    std::vector<double> groundHeights;
    double groundWorst = 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        float h;
        std::memcpy(&h,
                    out.bytes().data() + out.header().offsetToPointData + i * out.header().recordLength +
                        in.header().recordLength,
                    4);
        ASSERT_TRUE(std::isfinite(h)) << "point " << i;
        if (out.classification(i) == 2) {
            groundWorst = std::max(groundWorst, std::abs(double(h)));
            groundHeights.push_back(std::abs(double(h)));
        }
    }
    ASSERT_FALSE(groundHeights.empty());
    std::sort(groundHeights.begin(), groundHeights.end());
    EXPECT_LT(groundHeights[groundHeights.size() / 2], 0.05) << "median";
    EXPECT_LT(groundHeights[groundHeights.size() * 95 / 100], 0.3) << "95th percentile";
    EXPECT_LT(groundWorst, 1.5);
    // Without --hag the records keep their length.
    ASSERT_EQ(run({"classify", sample("warsaw_small.las"), "-o", "plain.las", "-q"}).status, 0);
    EXPECT_EQ(vx::las::LasFile::read((clitest::scratch() / "plain.las").string()).header().recordLength,
              in.header().recordLength);
}

TEST(ClassifyPipeline, EveryLayoutAndPrecision)
{
    for (const std::string layout : {"soa", "aos"})
        for (const std::string precision : {"float", "double"}) {
            const auto r =
                run({"classify", sample("warsaw_small.las"), "-o", "out.las", "-q", "--backend", "cpu",
                     "--layout", layout, "--precision", precision, "--set", "VegetationIterations=1"});
            EXPECT_EQ(r.status, 0) << layout << ' ' << precision << ' ' << r.err;
        }
}

TEST(ClassifyPipeline, DemoReportsAccuracyAndLeavesItsFiles)
{
    const auto r = run({"demo", "--points", "10000", "--out", "d"});
    ASSERT_EQ(r.status, 0) << r.err;
    for (const std::string file : {"scene.las", "truth.las", "classified.las", "preview.png"})
        EXPECT_TRUE(fs::exists(clitest::scratch() / "d" / file)) << file;
    const std::string ground = lineStartingWith(r.out, "  ground total error");
    const std::string building = lineStartingWith(r.out, "  building F1");
    const std::string vegetation = lineStartingWith(r.out, "  vegetation F1");
    EXPECT_NE(ground, "");
    EXPECT_NE(building, "");
    EXPECT_NE(vegetation, "");

    // The demo's figures are those of eval on its files.
    const auto e = run({"eval", "d/truth.las", "d/classified.las"});
    ASSERT_EQ(e.status, 0) << e.err;
    const std::string total = lineStartingWith(e.out, "  total error");
    EXPECT_NE(ground.find(total.substr(total.find_first_not_of(' ', 13))), std::string::npos)
        << ground << "\n"
        << total;
    const std::string scores = e.out.substr(e.out.find("  category"));
    const std::string f1 = lineStartingWith(scores, "  building");
    EXPECT_NE(building.find(f1.substr(f1.rfind("  ") + 2)), std::string::npos) << building << "\n" << f1;
}

TEST(ClassifyPipeline, DemoSceneIsTheSameForASeed)
{
    // One CPU thread: the steps update classes in place, so only a fixed order repeats exactly.
    ASSERT_EQ(run({"demo", "--points", "10000", "--seed", "7", "--out", "a", "-q", "--backend", "cpu",
                   "--set", "HostThreads=1"})
                  .status,
              0);
    ASSERT_EQ(run({"demo", "--points", "10000", "--seed", "7", "--out", "b", "-q", "--backend", "cpu",
                   "--set", "HostThreads=1"})
                  .status,
              0);
    ASSERT_EQ(run({"demo", "--points", "10000", "--seed", "8", "--out", "c", "-q"}).status, 0);
    const auto dir = clitest::scratch();
    EXPECT_EQ(readText(dir / "a" / "scene.las"), readText(dir / "b" / "scene.las"));
    EXPECT_EQ(readText(dir / "a" / "truth.las"), readText(dir / "b" / "truth.las"));
    EXPECT_EQ(readText(dir / "a" / "classified.las"), readText(dir / "b" / "classified.las"));
    EXPECT_NE(readText(dir / "a" / "scene.las"), readText(dir / "c" / "scene.las"));
}
