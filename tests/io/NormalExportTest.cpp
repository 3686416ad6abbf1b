#include "common/TestSupport.h"
#include "io/ExchangeFiles.h"

#include <filesystem>
#include <fstream>

using namespace vxtest;

namespace {

std::vector<std::string> readLines(const std::string& path)
{
    std::ifstream in(path);
    std::vector<std::string> lines;
    std::string l;
    while (std::getline(in, l))
        lines.push_back(l);
    return lines;
}

} // namespace

TEST(NormalExport, FileCoordinatesWithoutTheOffsetAndTwelveDigits)
{
    const auto in = scratchPath("in.las");
    const double s[3] = {0.01, 0.01, 0.01}, o[3] = {500000, 5000000, 0};
    auto f = vx::las::LasFile::create(2, 1, s, o);
    f.addPoint(lasPoint(500012.34, 5000056.78, 9.10, 1, 1, 1, 77));
    f.write(in);
    Vexaro<double> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    const auto base = scratchPath("normals");
    CaptureStdout captured;
    EXPECT_TRUE(v.saveNormalVectors(base));
    EXPECT_EQ(captured.text(), "SavingNormals " + base + ".txt\n");
    const auto lines = readLines(base + ".txt");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0], "12.34 56.78 9.1 77 0 0 0");
}

TEST(NormalExport, NormalsAreWrittenAsStored)
{
    const auto in = scratchPath("in.las");
    makeLas(2, 0, {lasPoint(1, 2, 3, 1, 1, 1, 5), lasPoint(4, 5, 6, 1, 1, 1, 6)}).write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    // Give the records known normals through the engine's host copy.
    auto& hp = vxtest::engine(v).store.records;
    hp[1].nx = 0.6f, hp[1].ny = 0.f, hp[1].nz = 0.8f;
    const auto base = scratchPath("normals");
    CaptureStdout captured;
    v.saveNormalVectors(base);
    const auto lines = readLines(base + ".txt");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "1 2 3 5 0 0 0");
    EXPECT_EQ(lines[1], "4 5 6 6 0.600000023842 0 0.800000011921");
}

TEST(NormalExport, TxtIsAlwaysAppended)
{
    const auto in = scratchPath("in.las");
    makeLas(2, 0, {lasPoint(1, 2, 3)}).write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    const auto dir = std::filesystem::path(scratchPath("out"));
    std::filesystem::create_directories(dir);
    CaptureStdout captured;
    v.saveNormalVectors((dir / "tile").string());
    v.saveNormalVectors((dir / "tile.txt").string());
    EXPECT_TRUE(std::filesystem::exists(dir / "tile.txt"));
    EXPECT_TRUE(std::filesystem::exists(dir / "tile.txt.txt"));
}

TEST(NormalExport, StopsAtTheShorterOfRecordsAndKeptPoints)
{
    const auto in = scratchPath("in.las");
    makeLas(2, 0, {lasPoint(1, 2, 3), lasPoint(2, 2, 3)}).write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    std::vector<VX_Point<float>> more(5, point<float>(0, 0, 0));
    v.loadDirectData(more.data(), 5);
    const auto base = scratchPath("normals");
    CaptureStdout captured;
    EXPECT_TRUE(v.saveNormalVectors(base));
    EXPECT_EQ(readLines(base + ".txt").size(), 2u);
}

TEST(NormalExport, UnwritableFileStillReturnsTrue)
{
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    CaptureStdout captured;
    EXPECT_TRUE(v.saveNormalVectors("/nonexistent-folder/n"));
    EXPECT_EQ(captured.text(), "SavingNormals /nonexistent-folder/n.txt\n");
}
