// The tool on LAZ files: read, classified and written compressed, with the same classes as the
// same points in LAS, whole and in tiles.
#include "CliTestSupport.h"

#include <las/LasFile.h>
#include <las/RecordStream.h>

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using clitest::classesOf;
using clitest::run;
using clitest::scratch;

namespace {

/// A scene in LAS and the same in LAZ; returns the LAS path.
std::string sceneInBoth(int points, double density)
{
    const auto r = run({"scene", "-o", "scene.las", "--points", std::to_string(points), "--density",
                        std::to_string(density), "-q"});
    EXPECT_EQ(r.status, 0) << r.err;
    const std::string las = (scratch() / "scene.las").string();
    vx::las::LasFile::read(las).write((scratch() / "scene.laz").string());
    return las;
}

bool compressed(const std::string& path)
{
    return vx::las::RecordReader(path).compressed();
}

} // namespace

TEST(LazCli, ClassifiesLazIntoLazWithTheClassesOfLas)
{
    if (!vx::las::lazAvailable())
        GTEST_SKIP() << "built without LAZ support";
    sceneInBoth(30000, 6);
    auto r = run({"classify", "scene.las", "-o", "out.las", "-q", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run({"classify", "scene.laz", "-o", "out.laz", "-q", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(compressed((scratch() / "out.laz").string()));
    EXPECT_EQ(classesOf((scratch() / "out.laz").string()), classesOf((scratch() / "out.las").string()));
    // info and eval read LAZ too.
    r = run({"info", "out.laz"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("Points          30"), std::string::npos) << r.out;
    r = run({"eval", "out.las", "out.laz"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("(0 of"), std::string::npos) << r.out;
}

TEST(LazCli, LargeLazInTilesEqualsLargeLasInTiles)
{
    if (!vx::las::lazAvailable())
        GTEST_SKIP() << "built without LAZ support";
    sceneInBoth(56000, 2);
    auto r = run({"classify", "scene.las", "-o", "tiled.las", "-q", "--memory", "8M", "--buffer", "30",
                  "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run({"classify", "scene.laz", "-o", "tiled.laz", "-q", "--memory", "8M", "--buffer", "30", "--set",
             "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(compressed((scratch() / "tiled.laz").string()));
    EXPECT_EQ(classesOf((scratch() / "tiled.laz").string()), classesOf((scratch() / "tiled.las").string()));
}
