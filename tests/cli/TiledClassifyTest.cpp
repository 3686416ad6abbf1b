// Classification beyond one file in memory: a folder of neighbouring tiles classified with
// buffers from each other, resumed runs, a file larger than the memory budget cut into tiles,
// and the same folder spread over two MPI ranks.
#include "CliTestSupport.h"

#include <las/LasFile.h>
#include <las/RecordStream.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <tuple>
#include <unistd.h>

namespace fs = std::filesystem;
using clitest::run;
using clitest::scratch;

namespace {

/// Writes a town scene and its truth; returns the scene's path.
std::string makeScene(const std::string& name, int points, double density, int seed)
{
    const auto r = run({"scene", "-o", name + ".las", "--truth", name + "-truth.las", "--kind", "town",
                        "--points", std::to_string(points), "--density", std::to_string(density), "--seed",
                        std::to_string(seed), "-q"});
    EXPECT_EQ(r.status, 0) << r.err;
    return (scratch() / (name + ".las")).string();
}

/// Cuts `scene` into nx x ny tiles of equal plan size, files NAME-i-j.las of `folder`, each record
/// as it is in the scene; returns the tile edges along x and y.
std::pair<std::vector<double>, std::vector<double>> cutIntoTiles(const std::string& scene,
                                                                 const fs::path& folder, int nx, int ny)
{
    fs::create_directories(folder);
    vx::las::RecordReader probe(scene);
    const auto h = probe.header();
    std::vector<double> ex, ey;
    for (int i = 0; i <= nx; ++i)
        ex.push_back(h.minBound[0] + (h.maxBound[0] - h.minBound[0]) * i / nx);
    for (int j = 0; j <= ny; ++j)
        ey.push_back(h.minBound[1] + (h.maxBound[1] - h.minBound[1]) * j / ny);
    for (int i = 0; i < nx; ++i)
        for (int j = 0; j < ny; ++j) {
            vx::las::RecordReader in(scene);
            vx::las::RecordWriter out(
                (folder / ("tile-" + std::to_string(i) + "-" + std::to_string(j) + ".las")).string(),
                in.preamble());
            std::vector<uint8_t> rec(in.recordLength());
            while (in.read(rec.data(), 1) == 1) {
                int32_t raw[2];
                std::memcpy(raw, rec.data(), sizeof raw);
                const double x = raw[0] * h.scale[0] + h.offset[0], y = raw[1] * h.scale[1] + h.offset[1];
                const bool inX = x >= ex[i] && (x < ex[i + 1] || i == nx - 1);
                const bool inY = y >= ey[j] && (y < ey[j + 1] || j == ny - 1);
                if (inX && inY)
                    out.write(rec.data(), 1);
            }
            out.finish();
        }
    return {ex, ey};
}

struct Point {
    int32_t x, y, z;
    int cls;
    bool operator<(const Point& o) const { return std::tie(x, y, z) < std::tie(o.x, o.y, o.z); }
};

std::vector<Point> pointsOf(const std::string& path)
{
    const auto f = vx::las::LasFile::read(path);
    std::vector<Point> out(f.size());
    for (std::size_t i = 0; i < f.size(); ++i)
        out[i] = {f.rawX(i), f.rawY(i), f.rawZ(i), f.classification(i)};
    return out;
}

std::vector<Point> pointsOfFolder(const fs::path& folder)
{
    std::vector<Point> all;
    for (const auto& e : fs::directory_iterator(folder))
        if (e.path().extension() == ".las") {
            const auto p = pointsOf(e.path().string());
            all.insert(all.end(), p.begin(), p.end());
        }
    std::sort(all.begin(), all.end());
    return all;
}

std::string bytesOf(const fs::path& path)
{
    return clitest::readText(path);
}

} // namespace

TEST(TiledClassify, NineTilesWithBuffersMatchTheMergedScene)
{
    const auto scene = makeScene("scene", 90000, 4, 5);
    const auto [ex, ey] = cutIntoTiles(scene, scratch() / "tiles", 3, 3);
    auto r = run({"classify", scene, "-o", "merged.las", "-q", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run({"classify", "tiles", "-o", "out", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    // A progress line a tile: tiles and points done, the rate and the time left.
    EXPECT_NE(r.err.find("tiles 1/9, "), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(" M points/s, "), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(" s left"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("tiles 9/9"), std::string::npos) << r.err;
    ASSERT_EQ(std::distance(fs::directory_iterator(scratch() / "out"), fs::directory_iterator{}), 9);

    auto merged = pointsOf((scratch() / "merged.las").string());
    std::sort(merged.begin(), merged.end());
    const auto tiled = pointsOfFolder(scratch() / "out");
    ASSERT_EQ(tiled.size(), merged.size());
    auto truth = pointsOf((scratch() / "scene-truth.las").string());
    std::sort(truth.begin(), truth.end());

    // Building points within 15 m of an inner tile edge: roofs the edge cuts.
    const auto h = vx::las::RecordReader(scene).header();
    std::size_t same = 0, all = 0, edgeRoofs = 0, edgeRoofsSame = 0;
    for (std::size_t k = 0; k < merged.size(); ++k) {
        ASSERT_EQ(tiled[k].x, merged[k].x);
        all++;
        same += tiled[k].cls == merged[k].cls;
        const double x = merged[k].x * h.scale[0] + h.offset[0], y = merged[k].y * h.scale[1] + h.offset[1];
        const bool nearEdge = std::min(std::abs(x - ex[1]), std::abs(x - ex[2])) < 15 ||
                              std::min(std::abs(y - ey[1]), std::abs(y - ey[2])) < 15;
        if (nearEdge && truth[k].cls == 6) {
            ++edgeRoofs;
            edgeRoofsSame += tiled[k].cls == merged[k].cls;
        }
    }
    EXPECT_GT(edgeRoofs, 200u);
    EXPECT_GE(static_cast<double>(edgeRoofsSame), 0.99 * static_cast<double>(edgeRoofs));
    EXPECT_GE(static_cast<double>(same), 0.995 * static_cast<double>(all));

    // Without a buffer the roofs the edges cut are judged from their parts.
    r = run({"classify", "tiles", "-o", "bare", "-q", "--buffer", "0", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    const auto bare = pointsOfFolder(scratch() / "bare");
    std::size_t bareSame = 0;
    for (std::size_t k = 0; k < merged.size(); ++k)
        bareSame += bare[k].cls == merged[k].cls;
    EXPECT_LT(bareSame, same);
}

TEST(TiledClassify, ResumeSkipsTilesAlreadyDone)
{
    const auto scene = makeScene("scene", 20000, 4, 2);
    cutIntoTiles(scene, scratch() / "tiles", 2, 1);
    auto r = run({"classify", (scratch() / "tiles").string(), "-o", "out", "-q"});
    ASSERT_EQ(r.status, 0) << r.err;
    // -q silences the progress lines and the summary.
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out, "");
    const fs::path first = scratch() / "out" / "tile-0-0.las", second = scratch() / "out" / "tile-1-0.las";
    const std::string firstBytes = bytesOf(first);
    fs::remove(first);
    clitest::writeText("out/tile-1-0.las", "kept as it is");
    r = run({"classify", (scratch() / "tiles").string(), "-o", "out", "--resume"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(bytesOf(first).size(), firstBytes.size());
    EXPECT_EQ(bytesOf(second), "kept as it is");
    EXPECT_NE(r.out.find("1 already done"), std::string::npos) << r.out;
    // No work files are left beside the outputs.
    EXPECT_EQ(std::distance(fs::directory_iterator(scratch() / "out"), fs::directory_iterator{}), 2);
}

TEST(TiledClassify, FolderErrorsAreClear)
{
    fs::create_directories(scratch() / "empty");
    auto r = run({"classify", "empty", "-o", "out", "-q"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("holds no .las or .laz file"), std::string::npos) << r.err;
    r = run({"classify", "nothing-*.las", "-o", "out", "-q"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("no .las or .laz file matches"), std::string::npos) << r.err;

    // A broken tile fails alone: the others are still classified, and the status says so.
    const auto scene = makeScene("scene", 8000, 4, 3);
    cutIntoTiles(scene, scratch() / "tiles", 2, 1);
    clitest::writeText("tiles/tile-9-9.las", "not a LAS file at all");
    r = run({"classify", "tiles", "-o", "out", "-q"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("tile-9-9.las"), std::string::npos) << r.err;
    EXPECT_TRUE(fs::exists(scratch() / "out" / "tile-0-0.las"));
    EXPECT_TRUE(fs::exists(scratch() / "out" / "tile-1-0.las"));
    EXPECT_FALSE(fs::exists(scratch() / "out" / "tile-9-9.las"));
}

TEST(TiledClassify, LargeFileInTilesKeepsOrderAndClasses)
{
    const auto scene = makeScene("scene", 120000, 2, 4);
    auto r = run({"classify", scene, "-o", "whole.las", "-q", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    r = run(
        {"classify", scene, "-o", "tiled.las", "--memory", "8M", "--buffer", "30", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.err.find("more than a memory budget of 8 MB holds"), std::string::npos) << r.err;
    const auto whole = pointsOf((scratch() / "whole.las").string());
    const auto tiled = pointsOf((scratch() / "tiled.las").string());
    const auto input = pointsOf(scene);
    ASSERT_EQ(tiled.size(), input.size());
    std::size_t same = 0;
    for (std::size_t k = 0; k < input.size(); ++k) {
        ASSERT_EQ(tiled[k].x, input[k].x) << k;
        ASSERT_EQ(tiled[k].y, input[k].y) << k;
        ASSERT_EQ(tiled[k].z, input[k].z) << k;
        same += tiled[k].cls == whole[k].cls;
    }
    EXPECT_GE(static_cast<double>(same), 0.995 * static_cast<double>(input.size()));
    // Only the output is left: no work folder.
    for (const auto& e : fs::directory_iterator(scratch()))
        EXPECT_EQ(e.path().filename().string().rfind(".vexaro-work", 0), std::string::npos) << e.path();
}

TEST(TiledClassify, BudgetTooSmallForTheBufferIsRefused)
{
    const auto scene = makeScene("scene", 60000, 20, 4);
    const auto r = run({"classify", scene, "-o", "out.las", "-q", "--memory", "8M"});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("a memory budget of 8 MB holds about"), std::string::npos) << r.err;
    EXPECT_FALSE(fs::exists(scratch() / "out.las"));
    const auto bad = run({"classify", scene, "-o", "out.las", "--memory", "lots"});
    EXPECT_EQ(bad.status, 2);
    EXPECT_NE(bad.err.find("--memory takes a size"), std::string::npos) << bad.err;
}

#ifdef VEXARO_TOOL_MPI
namespace {

/// The start of a shell command that runs in the scratch folder and launches MPI ranks of the
/// tool: `ranks` is mpirun's program list after its options ("-np 2 TOOL"; TOOL is replaced).
/// The launcher is given a time limit, so a rank left waiting fails the test in minutes with
/// the job's state instead of holding the suite until its own time limit.
std::string mpiCommand(std::string ranks)
{
    const std::string root = ::geteuid() == 0 ? " --allow-run-as-root" : "";
    const std::string tool = "'" + clitest::cliExecutable() + "'";
    for (std::size_t at; (at = ranks.find("TOOL")) != std::string::npos;)
        ranks.replace(at, 4, tool);
    // Open MPI's own start-up allocations outlive MPI_Finalize; leak reports of the ranks would be
    // about the MPI library, and the tool's leaks are checked by every single-process test.
    return "cd '" + scratch().string() +
           "' && ASAN_OPTIONS=\"${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=0\" mpirun --oversubscribe "
           "--timeout 150 --report-state-on-timeout" +
           root + " " + ranks;
}

} // namespace
#endif

TEST(TiledClassify, TwoMpiRanksWriteTheSameBytesAsOneProcess)
{
#ifndef VEXARO_TOOL_MPI
    GTEST_SKIP() << "the tool was built without MPI (Debian: libopenmpi-dev)";
#else
    if (std::system("command -v mpirun >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "mpirun is not on the PATH";
    const auto scene = makeScene("scene", 24000, 4, 6);
    cutIntoTiles(scene, scratch() / "tiles", 2, 2);
    auto r = run({"classify", "tiles", "-o", "one", "-q", "--set", "HostThreads=1"});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::string command =
        mpiCommand("-np 2 TOOL classify tiles -o two --set HostThreads=1 </dev/null >mpi.out 2>mpi.err");
    int status = std::system(command.c_str());
    if (status != 0 && clitest::readText(scratch() / "mpi.err").find("time limit") != std::string::npos) {
        // A job that stalls once in Open MPI's start-up on a loaded machine is tried once more; the
        // state of the stalled job stays in the log, and a second stall fails.
        std::cerr << "the two-rank job reached its time limit; its state:\n"
                  << clitest::readText(scratch() / "mpi.err") << "\nrunning it once more\n";
        fs::remove_all(scratch() / "two");
        status = std::system(command.c_str());
    }
    ASSERT_EQ(status, 0) << clitest::readText(scratch() / "mpi.err");
    const std::string out = clitest::readText(scratch() / "mpi.out");
    EXPECT_NE(out.find("on 2 ranks"), std::string::npos) << out;
    for (const auto& e : fs::directory_iterator(scratch() / "one")) {
        const fs::path twin = scratch() / "two" / e.path().filename();
        ASSERT_TRUE(fs::exists(twin)) << twin;
        EXPECT_TRUE(bytesOf(e.path()) == bytesOf(twin)) << twin;
    }
#endif
}

TEST(TiledClassify, ARankThatCannotStartStopsTheOthers)
{
#ifndef VEXARO_TOOL_MPI
    GTEST_SKIP() << "the tool was built without MPI (Debian: libopenmpi-dev)";
#else
    if (std::system("command -v mpirun >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "mpirun is not on the PATH";
    // One node of a job that cannot see the input folder: its rank fails before any tile while
    // the other has its tiles to do. Both must stop with the failure, not wait for each other,
    // also under a launcher that lets the other ranks run on (as Slurm's srun does by default).
    const auto scene = makeScene("scene", 8000, 4, 3);
    cutIntoTiles(scene, scratch() / "tiles", 2, 1);
    const std::string command =
        mpiCommand("--mca orte_abort_on_non_zero_status 0 -np 1 TOOL classify tiles -o out -q : -np 1 TOOL "
                   "classify 'unseen/*.las' -o out -q </dev/null >mpi.out 2>mpi.err");
    // With that setting mpirun's own status does not tell; each rank's message does.
    std::system(command.c_str());
    std::string err = clitest::readText(scratch() / "mpi.err");
    EXPECT_EQ(err.find("time limit"), std::string::npos) << err;
    EXPECT_NE(err.find("unseen"), std::string::npos) << err;
    EXPECT_NE(err.find("another rank could not start the run"), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(scratch() / "out" / "tile-0-0.las"));

    // One file under several ranks: every rank would write the same output.
    const std::string one = mpiCommand("-np 2 TOOL classify tiles/tile-0-0.las -o whole.las -q </dev/null "
                                       ">mpi.out 2>mpi.err");
    EXPECT_NE(std::system(one.c_str()), 0);
    err = clitest::readText(scratch() / "mpi.err");
    EXPECT_NE(err.find("one file is classified by one process"), std::string::npos) << err;
    EXPECT_FALSE(fs::exists(scratch() / "whole.las"));
#endif
}
