#include "common/TestSupport.h"
#include "io/ExchangeFiles.h"

#include <cstdio>

using namespace vxtest;

namespace {

template <class T> void reclassify(Vexaro<T>& v, int cls)
{
    v.setComputeBackend("cpu");
    v.setMessageLevel(0);
    CaptureStdout quiet;
    v.regularGridDecomposition3Dcube(1000.0);
    v.resetPointCloudClasses(cls);
}

} // namespace

TEST(Saving, OnlyClassesAndCreationYearChange)
{
    const auto in = scratchPath("in.las"), out = scratchPath("out.las");
    makeLas(
        2, 3,
        {lasPoint(0, 0, 0, 1, 1, 2, 100), lasPoint(5, 1, 2, 1, 2, 2, 200), lasPoint(9, 3, 1, 1, 1, 1, 300)})
        .write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    reclassify(v, 6);
    CaptureStdout captured;
    v.saveLASFile(out);
    const auto a = vx::las::LasFile::read(in), b = vx::las::LasFile::read(out);
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a.rawX(i), b.rawX(i));
        EXPECT_EQ(a.rawY(i), b.rawY(i));
        EXPECT_EQ(a.rawZ(i), b.rawZ(i));
        EXPECT_EQ(a.intensity(i), b.intensity(i));
        EXPECT_EQ(a.returnNumber(i), b.returnNumber(i));
        EXPECT_EQ(a.numberOfReturns(i), b.numberOfReturns(i));
        EXPECT_EQ(b.classification(i), 6);
    }
    EXPECT_EQ(b.header().creationYear, 2015);
    // Byte for byte, only the classification bytes and the year differ.
    const auto& ab = a.bytes();
    const auto& bb = b.bytes();
    ASSERT_EQ(ab.size(), bb.size());
    std::size_t differing = 0;
    for (std::size_t k = 0; k < ab.size(); ++k)
        if (ab[k] != bb[k]) {
            const bool year = k == 92 || k == 93;
            const bool classByte = k >= a.header().offsetToPointData &&
                                   (k - a.header().offsetToPointData) % a.header().recordLength == 15;
            EXPECT_TRUE(year || classByte) << "byte " << k;
            ++differing;
        }
    EXPECT_GT(differing, 0u);
}

TEST(Saving, MessagesAndPointsLinesPrintWhateverTheLevels)
{
    const auto in = scratchPath("in.las"), out = scratchPath("out.las");
    makeLas(2, 0, {lasPoint(0, 0, 0), lasPoint(1, 1, 1)}).write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.setMessageLevel(0);
    v.loadLASFile(in);
    CaptureStdout captured;
    v.saveLASFile(out);
    EXPECT_EQ(captured.text(), "Messages:  0\nPoints:  2 2\nWriting done! \n");
}

TEST(Saving, AMillionPointsPrintOneProgressLine)
{
    const auto in = scratchPath("in.las"), out = scratchPath("out.las");
    {
        const double s[3] = {0.01, 0.01, 0.01}, o[3] = {0, 0, 0};
        auto f = vx::las::LasFile::create(2, 0, s, o);
        f.reserve(1000000);
        for (int i = 0; i < 1000000; ++i)
            f.addPoint(lasPoint(i % 1000, i / 1000, 0));
        f.write(in);
    }
    Vexaro<float> v;
    v.setFacadeMessageLevel(1);
    v.loadLASFile(in);
    CaptureStdout captured;
    v.saveLASFile(out);
    EXPECT_EQ(captured.text(), "Messages:  1\nPoints:  1000000 1000000\nWriting points \nWrtiting points ... "
                               "1000000\nWriting done! \n");
    std::remove(in.c_str());
    std::remove(out.c_str());
}

TEST(Saving, AClassTheFieldCannotHoldStopsTheCopy)
{
    const auto in = scratchPath("in.las"), out = scratchPath("out.las");
    makeLas(2, 3, {lasPoint(0, 0, 0, 1), lasPoint(1, 1, 1, 1)}).write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    reclassify(v, 40); // formats 0 to 5 hold classes up to 31
    CaptureStdout captured;
    v.saveLASFile(out);
    const auto lines = captured.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_NE(lines[2].find("40"), std::string::npos);
    EXPECT_EQ(lines[3], "Writing done! ");
    const auto b = vx::las::LasFile::read(out);
    EXPECT_EQ(b.classification(0), 1);
    EXPECT_EQ(b.classification(1), 1);
}

TEST(Saving, WithoutALasFileTheOutputHasNoPoints)
{
    std::vector<VX_Point<float>> pts{point<float>(0, 0, 0), point<float>(1, 1, 1)};
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadDirectData(pts.data(), 2);
    const auto out = scratchPath("out.las");
    CaptureStdout captured;
    v.saveLASFile(out);
    const auto lines = captured.lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], "Messages:  0");
    EXPECT_EQ(lines[1], "Points:  2 0");
    EXPECT_EQ(lines[3], "WARNING! Number of points differs. Possible lose of data ");
    EXPECT_EQ(vx::las::LasFile::read(out).size(), 0u);
}

TEST(Saving, UnwritableOutputIsSilent)
{
    const auto in = scratchPath("in.las");
    makeLas(2, 0, {lasPoint(0, 0, 0)}).write(in);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadLASFile(in);
    CaptureStdout captured;
    v.saveLASFile("/nonexistent-folder/out.las");
    EXPECT_EQ(captured.text(), "Messages:  0\nPoints:  1 1\n");
}

TEST(Saving, ClassBufferHoldsTheLowSixteenBits)
{
    std::vector<VX_Point<float>> pts{point<float>(0, 0, 0, 70000), point<float>(1, 0, 0, -1),
                                     point<float>(2, 0, 0, 6)};
    Vexaro<float> v;
    v.loadDirectData(pts.data(), 3);
    std::vector<short> buffer(3, 0);
    v.saveClassesToBuffer(buffer.data(), 3);
    EXPECT_EQ(buffer, (std::vector<short>{4464, -1, 6}));
}

TEST(Saving, ClassBufferOfTheWrongSizeIsLeftAlone)
{
    std::vector<VX_Point<float>> pts{point<float>(0, 0, 0, 2), point<float>(1, 0, 0, 2)};
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.loadDirectData(pts.data(), 2);
    std::vector<short> buffer(2, 99);
    CaptureStdout captured;
    v.saveClassesToBuffer(buffer.data(), 1);
    EXPECT_EQ(captured.text(), "Unexpected loss of data, point classes can't be saved \n");
    EXPECT_EQ(buffer, (std::vector<short>{99, 99}));
}

TEST(Saving, FieldLayoutResultsReachTheFile)
{
    const auto in = scratchPath("in.las"), out = scratchPath("out.las");
    makeLas(4, 6, {lasPoint(0, 0, 0), lasPoint(1, 1, 1)}).write(in);
    Vexaro<double> v;
    v.setFacadeMessageLevel(0);
    v.set_SoA(true);
    v.loadLASFile(in);
    reclassify(v, 200);
    CaptureStdout captured;
    v.saveLASFile(out);
    const auto b = vx::las::LasFile::read(out);
    EXPECT_EQ(b.classification(0), 200);
    EXPECT_EQ(b.classification(1), 200);
}
