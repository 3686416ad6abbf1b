// The height above ground written to LAS as an extra-bytes dimension: the Extra Bytes VLR, the
// longer records and the values, read back by the codec and, where installed, by laspy.
#include "common/TestSupport.h"
#include "io/ExchangeFiles.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>

using namespace vxtest;
using vx::las::LasFile;

namespace {

/// Ground on a slope with three points above it, as a LAS 1.2 point format 3 file.
std::string sceneFile(const std::string& name)
{
    std::vector<vx::las::NewPoint> pts = {lasPoint(3, 4, 1.3 + 2.5, 1), lasPoint(8, 2, 1.8 + 0.5, 1),
                                          lasPoint(5, 5, 1.5 + 7.25, 1)};
    for (int y = 0; y <= 20; ++y)
        for (int x = 0; x <= 20; ++x)
            pts.push_back(lasPoint(x * 0.5, y * 0.5, 1.0 + 0.1 * (x * 0.5), 2));
    const std::string path = scratchPath(name);
    makeLas(2, 3, pts).write(path);
    return path;
}

float floatAt(const std::vector<uint8_t>& b, std::size_t at)
{
    float v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

struct Descriptor {
    int type;
    std::string name, description;
};

/// The descriptors of the file's Extra Bytes VLR.
std::vector<Descriptor> descriptors(const LasFile& f)
{
    const auto& b = f.bytes();
    std::size_t at = f.header().headerSize;
    std::vector<Descriptor> out;
    for (uint32_t i = 0; i < f.header().vlrCount; ++i) {
        uint16_t length, id;
        std::memcpy(&id, b.data() + at + 18, 2);
        std::memcpy(&length, b.data() + at + 20, 2);
        const std::string user(reinterpret_cast<const char*>(b.data() + at + 2));
        if (user == "LASF_Spec" && id == 4)
            for (std::size_t d = at + 54; d + 192 <= at + 54 + length; d += 192)
                out.push_back({b[d + 2],
                               std::string(reinterpret_cast<const char*>(b.data() + d + 4)).substr(0, 32),
                               std::string(reinterpret_cast<const char*>(b.data() + d + 160)).substr(0, 32)});
        at += 54 + length;
    }
    return out;
}

template <class T> std::vector<float> writeWithHeights(const std::string& in, const std::string& out)
{
    Vexaro<T> v;
    v.setFacadeMessageLevel(0);
    v.setMessageLevel(0);
    v.setComputeBackend("cpu");
    CaptureStdout quiet;
    v.loadLASFile(in);
    v.computeHeightAboveGround(2);
    std::vector<float> h(static_cast<std::size_t>(v.pointCount()));
    v.saveHeightAboveGroundToBuffer(h.data(), v.pointCount());
    v.saveLASFile(out, true);
    return h;
}

} // namespace

TEST(HeightAboveGroundLas, ExtraBytesDimensionIsWrittenAndReadBack)
{
    const std::string in = sceneFile("in.las"), out = scratchPath("hag.las");
    const auto heights = writeWithHeights<double>(in, out);
    EXPECT_NEAR(heights[0], 2.5, 0.02);
    EXPECT_NEAR(heights[1], 0.5, 0.02);
    EXPECT_NEAR(heights[2], 7.25, 0.02);

    const LasFile a = LasFile::read(in), b = LasFile::read(out);
    ASSERT_EQ(b.size(), a.size());
    EXPECT_EQ(b.header().recordLength, a.header().recordLength + 4);
    EXPECT_EQ(b.header().vlrCount, a.header().vlrCount + 1);
    EXPECT_EQ(b.header().offsetToPointData, a.header().offsetToPointData + 54 + 192);
    ASSERT_EQ(b.vlrs().size(), 1u);
    EXPECT_EQ(b.vlrs()[0].userId, "LASF_Spec");
    EXPECT_EQ(b.vlrs()[0].recordId, 4);
    EXPECT_EQ(b.vlrs()[0].payloadSize, 192u);
    const auto d = descriptors(b);
    ASSERT_EQ(d.size(), 1u);
    EXPECT_EQ(d[0].type, 9);
    EXPECT_EQ(d[0].name, "HeightAboveGround");
    EXPECT_EQ(d[0].description, "height above the ground surface");
    for (std::size_t i = 0; i < b.size(); ++i) {
        EXPECT_EQ(b.rawX(i), a.rawX(i));
        EXPECT_EQ(b.rawZ(i), a.rawZ(i));
        EXPECT_EQ(b.classification(i), a.classification(i));
        const std::size_t at =
            b.header().offsetToPointData + i * b.header().recordLength + a.header().recordLength;
        EXPECT_EQ(floatAt(b.bytes(), at), heights[i]) << "point " << i;
    }

    // The plain save keeps the records as they were.
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.setMessageLevel(0);
    CaptureStdout quiet;
    v.loadLASFile(in);
    v.saveLASFile(scratchPath("plain.las"));
    EXPECT_EQ(LasFile::read(scratchPath("plain.las")).header().recordLength, a.header().recordLength);
}

TEST(HeightAboveGroundLas, ADimensionOfTheSameNameIsRewrittenInPlace)
{
    const std::string in = sceneFile("in.las"), once = scratchPath("once.las"),
                      twice = scratchPath("twice.las");
    writeWithHeights<float>(in, once);
    const auto heights = writeWithHeights<float>(once, twice);
    const LasFile a = LasFile::read(once), b = LasFile::read(twice);
    EXPECT_EQ(b.header().recordLength, a.header().recordLength);
    EXPECT_EQ(descriptors(b).size(), 1u);
    const std::size_t base = a.header().recordLength - 4;
    for (std::size_t i = 0; i < b.size(); ++i)
        EXPECT_EQ(floatAt(b.bytes(), b.header().offsetToPointData + i * b.header().recordLength + base),
                  heights[i]);
}

TEST(HeightAboveGroundLas, AnotherDimensionExtendsTheExtraBytesRecord)
{
    const LasFile a = LasFile::read(sceneFile("in.las"));
    const std::vector<float> first(a.size(), 1.5f), second(a.size(), -2.0f);
    const LasFile b =
        a.withExtraFloat("First", "one", first).withExtraFloat("HeightAboveGround", "two", second);
    EXPECT_EQ(b.header().recordLength, a.header().recordLength + 8);
    EXPECT_EQ(b.header().vlrCount, 1u);
    const auto d = descriptors(b);
    ASSERT_EQ(d.size(), 2u);
    EXPECT_EQ(d[0].name, "First");
    EXPECT_EQ(d[1].name, "HeightAboveGround");
    const std::size_t last = b.header().offsetToPointData + (a.size() - 1) * b.header().recordLength;
    EXPECT_EQ(floatAt(b.bytes(), last + a.header().recordLength), 1.5f);
    EXPECT_EQ(floatAt(b.bytes(), last + a.header().recordLength + 4), -2.0f);
    EXPECT_THROW(a.withExtraFloat("X", "", std::vector<float>(3)), vexaro::LasError);
}

TEST(HeightAboveGroundLas, WithoutHeightsTheDimensionHoldsNaN)
{
    const std::string in = sceneFile("in.las"), out = scratchPath("nan.las");
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    CaptureStdout captured;
    v.loadLASFile(in);
    v.saveLASFile(out, true);
    EXPECT_NE(captured.text().find("ERROR! No heights above ground"), std::string::npos);
    const LasFile b = LasFile::read(out);
    EXPECT_TRUE(std::isnan(floatAt(b.bytes(), b.header().offsetToPointData + b.header().recordLength - 4)));
}

TEST(HeightAboveGroundLas, LaspyReadsTheDimension)
{
    std::string why;
    const std::string python = vxtest::laspyPython(why);
    if (python.empty())
        GTEST_SKIP() << why << "; the extra-bytes file is not cross-checked";
    const std::string in = sceneFile("in.las"), out = scratchPath("hag.las"), dump = scratchPath("hag.txt");
    const auto heights = writeWithHeights<double>(in, out);
    const std::string command = "'" + python +
                                "' -c \"import sys, laspy; f = laspy.read(sys.argv[1]); "
                                "open(sys.argv[2], 'w').write('\\n'.join(repr(float(h)) for h in "
                                "f['HeightAboveGround']))\" '" +
                                out + "' '" + dump + "'";
    ASSERT_EQ(std::system(command.c_str()), 0) << command;
    std::ifstream values(dump);
    std::size_t i = 0;
    for (double h; values >> h; ++i)
        ASSERT_FLOAT_EQ(static_cast<float>(h), heights.at(i)) << "point " << i;
    EXPECT_EQ(i, heights.size());
}
