// vexaro scene, as run from the command line: the files it writes, its summary and its errors.
#include "CliTestSupport.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>

using clitest::run;
using clitest::scratch;

namespace {

void expectError(const std::vector<std::string>& args, const std::string& message)
{
    const auto r = run(args);
    EXPECT_EQ(r.status, 2) << message;
    EXPECT_EQ(r.err, "vexaro: error: " + message + "\n");
    EXPECT_EQ(r.out, "");
}

} // namespace

TEST(CliScene, WritesTheSceneAndItsTruth)
{
    const auto r = run({"scene", "-o", "in.las", "--truth", "truth.las", "--kind", "hall", "--points",
                        "20000", "--density", "2", "--stray", "--seed", "4"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out.rfind("hall scene: ", 0), 0u) << r.out;
    EXPECT_NE(r.out.find(", side 150.0 m, 2.00 pulses per square metre, units metres, seed 4\n"),
              std::string::npos)
        << r.out;
    const auto input = vx::las::LasFile::read((scratch() / "in.las").string());
    const auto truth = vx::las::LasFile::read((scratch() / "truth.las").string());
    ASSERT_EQ(input.size(), truth.size());
    std::map<int, std::size_t> classes;
    for (std::size_t i = 0; i < input.size(); ++i) {
        ASSERT_EQ(input.classification(i), 1);
        ++classes[truth.classification(i)];
    }
    for (int c : {2, 6, 7, 18})
        EXPECT_GT(classes[c], 0u) << c;
    // The summary names each class with its count.
    EXPECT_EQ(clitest::lineStartingWith(r.out, "18 ").rfind("18 " + std::to_string(classes[18]) + " ", 0),
              0u);
    EXPECT_EQ(clitest::lineStartingWith(r.out, "6 ").rfind("6 " + std::to_string(classes[6]) + " ", 0), 0u);
}

TEST(CliScene, FeetAndQuiet)
{
    const auto m = run({"scene", "-o", "m.las", "--points", "5000", "-q"});
    ASSERT_EQ(m.status, 0) << m.err;
    EXPECT_EQ(m.out, "");
    const auto f = run({"scene", "-o", "f.las", "--points", "5000", "--units", "us-feet"});
    ASSERT_EQ(f.status, 0) << f.err;
    EXPECT_NE(f.out.find(" ft, "), std::string::npos) << f.out;
    EXPECT_NE(f.out.find("units us-feet"), std::string::npos) << f.out;
    const auto metres = vx::las::LasFile::read((scratch() / "m.las").string());
    const auto feet = vx::las::LasFile::read((scratch() / "f.las").string());
    ASSERT_EQ(metres.size(), feet.size());
    const double foot = 1200.0 / 3937.0;
    for (std::size_t i = 0; i < metres.size(); i += 97) {
        EXPECT_NEAR(feet.x(i) * foot, metres.x(i), 0.01);
        EXPECT_NEAR(feet.z(i) * foot, metres.z(i), 0.01);
    }
    ASSERT_EQ(feet.vlrs().size(), 1u);
    EXPECT_EQ(feet.vlrs()[0].recordId, 2112);
}

TEST(CliScene, Errors)
{
    expectError({"scene"}, "scene needs an output file: -o INPUT.las (see 'vexaro scene --help')");
    expectError({"scene", "-o", "a.las", "--truth", "a.las"}, "--truth must name another file than -o");
    expectError({"scene", "-o", "a.las", "--kind", "castle"},
                "--kind takes town, hall, terraces, forest, mountain-forest, bridges or river, not 'castle'");
    expectError({"scene", "-o", "a.las", "--units", "yards"},
                "--units takes metres, feet or us-feet, not 'yards'");
    for (const std::string d : {"0", "-1", "1001", "abc", "nan", "inf", ""})
        expectError(
            {"scene", "-o", "a.las", "--density", d},
            "option '--density' takes pulses per square metre, a number above 0 and up to 1000, not '" + d +
                "'");
    for (const std::string n : {"9", "50000001", "many"})
        expectError({"scene", "-o", "a.las", "--points", n},
                    "option '--points' takes a whole number from 10 to 50000000, not '" + n + "'");
    expectError({"scene", "-o", "a.las", "--fast"}, "unknown option '--fast' (see 'vexaro scene --help')");
    expectError({"scene", "-o", "a.las", "extra"}, "unexpected argument 'extra' (see 'vexaro scene --help')");
    expectError({"scene", "-o", "a.las", "--stray=yes"}, "option '--stray' takes no value");
    EXPECT_FALSE(std::filesystem::exists(scratch() / "a.las"));
    const auto r = run({"scene", "-o", "no/such/folder/a.las"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err.rfind("vexaro: error: cannot write output 'no/such/folder/a.las'", 0), 0u) << r.err;
}
