#include "api/FileNames.h"
#include "common/TestSupport.h"
#include "io/ExchangeFiles.h"

using namespace vxtest;

TEST(Loading, CoordinatesAreCentredOnTheBoundingBox)
{
    const auto path = scratchPath("centre.las");
    makeLas(2, 1, {lasPoint(100, 10, 1), lasPoint(150, 15, 2), lasPoint(200, 20, 5)}).write(path);
    Vexaro<double> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(path);
    auto p = points(v);
    ASSERT_EQ(p.size(), 3u);
    EXPECT_DOUBLE_EQ(p[0].x, -50.0);
    EXPECT_DOUBLE_EQ(p[1].x, 0.0);
    EXPECT_DOUBLE_EQ(p[2].x, 50.0);
    EXPECT_DOUBLE_EQ(p[1].y, 0.0);
    EXPECT_DOUBLE_EQ(p[0].z, -2.0);
    EXPECT_DOUBLE_EQ(p[2].z, 2.0);
    EXPECT_TRUE(vxtest::engine(v).dataLoaded);
}

TEST(Loading, LastReturnFlagComparesReturnNumberWithNumberOfReturns)
{
    const auto path = scratchPath("returns.las");
    makeLas(4, 6,
            {lasPoint(0, 0, 0, 1, 1, 1), lasPoint(1, 0, 0, 1, 1, 2), lasPoint(2, 0, 0, 1, 2, 2),
             lasPoint(3, 0, 0, 1, 2, 3)})
        .write(path);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(path);
    auto p = points(v);
    ASSERT_EQ(p.size(), 4u);
    EXPECT_EQ(p[0].lastReturn, 1);
    EXPECT_EQ(p[1].lastReturn, 0);
    EXPECT_EQ(p[2].lastReturn, 1);
    EXPECT_EQ(p[3].lastReturn, 0);
}

TEST(Loading, ClassesComeFromTheFile)
{
    const auto path = scratchPath("classes.las");
    makeLas(2, 3, {lasPoint(0, 0, 0, 2), lasPoint(1, 1, 1, 6), lasPoint(2, 2, 2, 31)}).write(path);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(path);
    EXPECT_EQ(classes(v), (std::vector<int>{2, 6, 31}));
}

TEST(Loading, MessagesByFacadeLevel)
{
    const auto path = scratchPath("messages.las");
    makeLas(2, 0, {lasPoint(0, 0, 0), lasPoint(100, 20, 4)}).write(path);
    Vexaro<float> v;
    v.setFacadeMessageLevel(4);
    CaptureStdout out;
    v.loadLASFile(path);
    EXPECT_EQ(out.text(),
              "Reading file: " + path +
                  "\nHeader Loaded \nPoints Loaded! \nConverting LAS points into internal format  2\n"
                  "Offset X:  50\nOffset Y:  10\nOffset Z:  2\nSyncing LAS data \n");
    Vexaro<float> quiet;
    quiet.setFacadeMessageLevel(3);
    out.clear();
    quiet.loadLASFile(path);
    EXPECT_EQ(out.text().find("Offset"), std::string::npos);
}

TEST(Loading, ProgressLineEveryMillionPoints)
{
    const auto path = scratchPath("large.las");
    {
        const double s[3] = {0.01, 0.01, 0.01}, o[3] = {0, 0, 0};
        auto f = vx::las::LasFile::create(2, 0, s, o);
        f.reserve(2500000);
        for (int i = 0; i < 2500000; ++i)
            f.addPoint(lasPoint(i % 1000, i / 1000, 0));
        f.write(path);
    }
    Vexaro<float> v;
    v.setFacadeMessageLevel(2);
    CaptureStdout out;
    v.loadLASFile(path);
    EXPECT_EQ(out.text(), "Reading file: " + path +
                              "\nHeader Loaded \nLoading point ...  1000000\nLoading point ...  2000000\n"
                              "Points Loaded! \n");
    EXPECT_EQ(v.pointCount(), 2500000);
    std::remove(path.c_str());
}

TEST(Loading, MissingFileIsSilentAndKeepsTheCloud)
{
    std::vector<VX_Point<float>> pts{point<float>(1, 2, 3, 4)};
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadDirectData(pts.data(), 1);
    CaptureStdout out;
    v.loadLASFile(scratchPath("does-not-exist.las"));
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(classes(v), (std::vector<int>{4}));
}

TEST(Loading, UnreadableFileThrowsAndKeepsTheCloud)
{
    const auto path = scratchPath("truncated.las");
    auto bytes = makeLas(2, 1, {lasPoint(0, 0, 0), lasPoint(1, 1, 1), lasPoint(2, 2, 2)}).bytes();
    bytes.resize(bytes.size() - 10); // the last record is cut short
    {
        std::FILE* f = std::fopen(path.c_str(), "wb");
        std::fwrite(bytes.data(), 1, bytes.size(), f);
        std::fclose(f);
    }
    std::vector<VX_Point<float>> pts{point<float>(1, 2, 3, 4), point<float>(5, 6, 7, 8)};
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadDirectData(pts.data(), 2);
    EXPECT_THROW(v.loadLASFile(path), vexaro::LasError);
    EXPECT_EQ(classes(v), (std::vector<int>{4, 8}));
    EXPECT_TRUE(vxtest::engine(v).dataLoaded);
}

TEST(Loading, DirectDataIsTakenAsItIsAndQuietly)
{
    std::vector<VX_Point<double>> pts{point<double>(100, 200, 300, 3, 0, 0.5, 0.5, 0.7, 0.25f)};
    Vexaro<double> v;
    v.setFacadeMessageLevel(4);
    CaptureStdout out;
    v.loadDirectData(pts.data(), 1);
    EXPECT_EQ(out.text(), "");
    auto p = points(v);
    EXPECT_EQ(p[0].x, 100.0);
    EXPECT_EQ(p[0].nz, 0.7);
    EXPECT_EQ(p[0].heightIndex, 0.25f);
    EXPECT_EQ(p[0].lastReturn, 0);
    pts[0].classification = 9; // the engine holds its own copy
    EXPECT_EQ(classes(v), (std::vector<int>{3}));
}

TEST(Loading, StemRules)
{
    EXPECT_EQ(vx::io::lasStem("C:/data/tile.las"), "tile");
    EXPECT_EQ(vx::io::lasStem("C:\\data\\tile.las"), "C:\\data\\tile");
    EXPECT_EQ(vx::io::lasStem("tile.las"), "tile");
    EXPECT_EQ(vx::io::lasStem("a.b/tile"), "tile");
    EXPECT_EQ(vx::io::lasStem("dir/tile.v2.las"), "tile.v2");
}

TEST(Loading, SampleFilesLoadWithTheirCounts)
{
    struct Sample {
        const char* name;
        int points;
    };
    for (const Sample s : {Sample{"warsaw_small.las", 3000}, Sample{"sample_c.las", 14408}}) {
        Vexaro<float> v;
        v.setFacadeMessageLevel(0);
        v.loadLASFile(dataFile(s.name));
        EXPECT_EQ(v.pointCount(), s.points) << s.name;
    }
}
