// Files of every version and point format, made by the codec itself and assembled independently
// byte by byte, decode to the values put in and write back unchanged.
#include "LasTestImage.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

using vx::las::LasFile;
using vx::las::NewPoint;

namespace {

uint64_t u64At(const std::vector<uint8_t>& b, std::size_t at)
{
    uint64_t v = 0;
    for (int k = 7; k >= 0; --k)
        v = (v << 8) | b[at + k];
    return v;
}

uint32_t u32At(const std::vector<uint8_t>& b, std::size_t at)
{
    return static_cast<uint32_t>(u64At(b, at) & 0xFFFFFFFFu);
}

std::vector<NewPoint> newPoints(int format, int n)
{
    std::vector<NewPoint> pts;
    const int maxReturns = format >= 6 ? 15 : 7;
    for (int i = 0; i < n; ++i) {
        NewPoint p;
        p.x = 1000 + i * 1.2345;
        p.y = 2000 - i * 0.7771;
        p.z = 10 + (i % 9) * 0.5003;
        p.intensity = static_cast<uint16_t>(i * 4099);
        p.numberOfReturns = 1 + i % maxReturns;
        p.returnNumber = 1 + (i * 5) % p.numberOfReturns;
        p.classification = (i * 11) % (format >= 6 ? 256 : 32);
        p.gpsTime = 3.25e8 + i * 0.125;
        pts.push_back(p);
    }
    return pts;
}

} // namespace

TEST(LasGeneratedFiles, CreatedFilesOfEveryVersionAndFormatRoundTrip)
{
    const double scale[3] = {0.01, 0.01, 0.001}, offset[3] = {1000, 2000, 0};
    for (int minor = 0; minor <= 4; ++minor) {
        for (int format = 0; format <= 10; ++format) {
            SCOPED_TRACE("LAS 1." + std::to_string(minor) + " format " + std::to_string(format));
            LasFile f = LasFile::create(minor, format, scale, offset);
            const auto pts = newPoints(format, 40);
            for (const auto& p : pts)
                f.addPoint(p);
            ASSERT_EQ(f.size(), pts.size());
            EXPECT_EQ(f.header().pointCount, pts.size());
            EXPECT_EQ(f.header().recordLength, lastest::recordSize(format));

            const std::string path = lastest::tempPath("created.las");
            f.write(path);
            const auto bytes = lastest::fileBytes(path);
            std::remove(path.c_str());
            EXPECT_TRUE(bytes == f.bytes());

            const LasFile back = LasFile::fromMemory(bytes, "created.las");
            EXPECT_TRUE(back.bytes() == bytes);
            const auto& h = back.header();
            EXPECT_EQ(h.versionMinor, minor);
            EXPECT_EQ(h.pointFormat, format);
            EXPECT_EQ(h.pointCount, pts.size());
            const std::size_t headerSize = minor == 4 ? 375 : minor == 3 ? 235 : 227;
            EXPECT_EQ(h.headerSize, headerSize);
            EXPECT_EQ(h.offsetToPointData, headerSize + (minor == 0 ? 2 : 0));
            if (minor == 0) {
                EXPECT_EQ(bytes[headerSize], 0xDD);
                EXPECT_EQ(bytes[headerSize + 1], 0xCC);
            }

            // Counts: 1.4 repeats them in the legacy fields only for formats 0-5.
            const bool legacy = minor < 4 || format < 6;
            EXPECT_EQ(u32At(bytes, 107), legacy ? pts.size() : 0u);
            uint64_t byReturn[15] = {};
            for (const auto& p : pts)
                ++byReturn[p.returnNumber - 1];
            for (int r = 0; r < 5; ++r)
                EXPECT_EQ(u32At(bytes, 111 + 4 * r), legacy ? byReturn[r] : 0u);
            if (minor == 4) {
                EXPECT_EQ(u64At(bytes, 247), pts.size());
                for (int r = 0; r < 15; ++r)
                    EXPECT_EQ(u64At(bytes, 255 + 8 * r), byReturn[r]) << "return " << r + 1;
            }

            double lo[3] = {1e300, 1e300, 1e300}, hi[3] = {-1e300, -1e300, -1e300};
            for (std::size_t i = 0; i < pts.size(); ++i) {
                const double given[3] = {pts[i].x, pts[i].y, pts[i].z};
                const double got[3] = {back.x(i), back.y(i), back.z(i)};
                for (int a = 0; a < 3; ++a) {
                    EXPECT_NEAR(got[a], given[a], scale[a] * 0.5 + 1e-9);
                    lo[a] = std::min(lo[a], got[a]);
                    hi[a] = std::max(hi[a], got[a]);
                }
                EXPECT_EQ(back.rawX(i), std::lround((pts[i].x - offset[0]) / scale[0]));
                EXPECT_EQ(back.intensity(i), pts[i].intensity);
                EXPECT_EQ(back.returnNumber(i), pts[i].returnNumber);
                EXPECT_EQ(back.numberOfReturns(i), pts[i].numberOfReturns);
                EXPECT_EQ(back.classification(i), pts[i].classification);
                const bool hasTime = format == 1 || format >= 3;
                EXPECT_EQ(back.gpsTime(i), hasTime ? pts[i].gpsTime : 0.0);
            }
            for (int a = 0; a < 3; ++a) {
                EXPECT_EQ(h.minBound[a], lo[a]);
                EXPECT_EQ(h.maxBound[a], hi[a]);
            }
        }
    }
}

TEST(LasGeneratedFiles, AssembledFilesWithExtraBytesVlrsAndEvlrsRoundTrip)
{
    for (int minor = 0; minor <= 4; ++minor) {
        for (int format = 0; format <= 10; ++format) {
            SCOPED_TRACE("LAS 1." + std::to_string(minor) + " format " + std::to_string(format));
            lastest::ImageLayout layout;
            layout.minor = minor;
            layout.format = format;
            layout.extraBytes = 5;
            layout.headerPadding = 3;
            layout.gapBeforePoints = 4;
            layout.vlrs = {
                {"LASF_Projection", 34735, "GeoTIFF keys", {1, 0, 1, 0, 0, 0, 0, 0}},
                {"SIXTEEN_CHARS_ID", 7, "a description that fills all 32", std::vector<uint8_t>(100, 9)}};
            if (minor == 4)
                layout.evlrs = {{"LASF_Projection", 2112, "WKT", std::vector<uint8_t>(70000, 'w')},
                                {"vexaro", 1, "", {}}};
            layout.points = lastest::samplePoints(format, 25);
            const auto bytes = lastest::buildImage(layout);

            const std::string path = lastest::tempPath("assembled.las");
            lastest::writeBytes(path, bytes);
            const LasFile f = LasFile::read(path);
            std::remove(path.c_str());
            EXPECT_TRUE(f.bytes() == bytes);
            ASSERT_EQ(f.size(), layout.points.size());
            EXPECT_EQ(f.header().recordLength, lastest::recordSize(format) + 5);
            EXPECT_EQ(f.header().creationDay, 45);
            EXPECT_EQ(f.header().creationYear, 2021);
            EXPECT_STREQ(f.header().systemId, "SYSTEM IDENTIFIER FILLING ALL 32");
            EXPECT_STREQ(f.header().software, "lastest");

            ASSERT_EQ(f.vlrs().size(), layout.vlrs.size() + layout.evlrs.size());
            EXPECT_EQ(f.vlrs()[0].userId, "LASF_Projection");
            EXPECT_EQ(f.vlrs()[0].recordId, 34735);
            EXPECT_EQ(f.vlrs()[0].description, "GeoTIFF keys");
            EXPECT_EQ(f.vlrs()[0].payloadSize, 8u);
            EXPECT_EQ(f.vlrs()[1].userId, "SIXTEEN_CHARS_ID");
            EXPECT_EQ(f.vlrs()[1].description, "a description that fills all 32");
            EXPECT_FALSE(f.vlrs()[1].extended);
            if (minor == 4) {
                EXPECT_EQ(f.header().evlrCount, 2u);
                EXPECT_TRUE(f.vlrs()[2].extended);
                EXPECT_EQ(f.vlrs()[2].recordId, 2112);
                EXPECT_EQ(f.vlrs()[2].payloadSize, 70000u);
                EXPECT_EQ(f.vlrs()[3].userId, "vexaro");
            }

            for (std::size_t i = 0; i < f.size(); ++i) {
                const auto& p = layout.points[i];
                ASSERT_EQ(f.rawX(i), p.x);
                ASSERT_EQ(f.rawY(i), p.y);
                ASSERT_EQ(f.rawZ(i), p.z);
                ASSERT_DOUBLE_EQ(f.x(i), p.x * 0.01 + 500000);
                ASSERT_DOUBLE_EQ(f.y(i), p.y * 0.01 + 5000000);
                ASSERT_EQ(f.intensity(i), p.intensity);
                ASSERT_EQ(f.returnNumber(i), p.returnNumber);
                ASSERT_EQ(f.numberOfReturns(i), p.numberOfReturns);
                ASSERT_EQ(f.classification(i), p.classification);
                if (lastest::gpsOffset(format)) {
                    ASSERT_EQ(f.gpsTime(i), p.gpsTime);
                }
            }
            const std::string out = lastest::tempPath("assembled-copy.las");
            f.write(out);
            EXPECT_TRUE(lastest::fileBytes(out) == bytes);
            std::remove(out.c_str());
        }
    }
}

TEST(LasGeneratedFiles, Las10WithoutStartSignatureStillReads)
{
    lastest::ImageLayout layout;
    layout.minor = 0;
    layout.format = 1;
    layout.startSignature = false;
    layout.points = lastest::samplePoints(1, 3);
    const LasFile f = LasFile::fromMemory(lastest::buildImage(layout), "nosig.las");
    ASSERT_EQ(f.size(), 3u);
    EXPECT_EQ(f.rawY(2), layout.points[2].y);
}

TEST(LasGeneratedFiles, Las14CountComesFromTheWideFieldUnlessItIsZero)
{
    lastest::ImageLayout layout;
    layout.minor = 4;
    layout.format = 1;
    layout.points = lastest::samplePoints(1, 6);
    layout.legacyCountIn14 = true;
    auto bytes = lastest::buildImage(layout);
    EXPECT_EQ(LasFile::fromMemory(bytes, "both.las").size(), 6u);

    lastest::putU64(bytes, 247, 0); // writer that filled only the legacy count
    EXPECT_EQ(LasFile::fromMemory(bytes, "legacy.las").size(), 6u);

    lastest::putU64(bytes, 247, 4);
    lastest::putU32(bytes, 107, 6); // conflict: the 64-bit field wins
    EXPECT_EQ(LasFile::fromMemory(bytes, "conflict.las").size(), 4u);
}

TEST(LasGeneratedFiles, CoordinatesRoundToTheNearestRawValue)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 100};
    LasFile f = LasFile::create(2, 0, scale, offset);
    f.addPoint({1.234, 1.236, 100.004999});
    f.addPoint({-1.234, -1.236, 99.995001});
    EXPECT_EQ(f.rawX(0), 123);
    EXPECT_EQ(f.rawY(0), 124);
    EXPECT_EQ(f.rawZ(0), 0);
    EXPECT_EQ(f.rawX(1), -123);
    EXPECT_EQ(f.rawY(1), -124);
    EXPECT_EQ(f.rawZ(1), 0);
}

TEST(LasGeneratedFiles, AddPointRefusesValuesItsFieldsCannotHold)
{
    const double scale[3] = {0.001, 0.001, 0.001}, offset[3] = {0, 0, 0};
    LasFile f = LasFile::create(4, 3, scale, offset);
    NewPoint far;
    far.x = 3.0e6; // 3e9 raw units
    try {
        f.addPoint(far);
        FAIL() << "expected LasError";
    } catch (const vexaro::LasError& e) {
        EXPECT_NE(std::string(e.what()).find("coordinate x = 3000000 does not fit"), std::string::npos)
            << e.what();
    }
    NewPoint nan;
    nan.z = std::nan("");
    EXPECT_THROW(f.addPoint(nan), vexaro::LasError);
    NewPoint returns;
    returns.returnNumber = 8;
    EXPECT_THROW(f.addPoint(returns), vexaro::LasError);
    NewPoint cls;
    cls.classification = 32;
    EXPECT_THROW(f.addPoint(cls), vexaro::LasError);
    EXPECT_EQ(f.size(), 0u);
    EXPECT_EQ(f.header().pointCount, 0u);

    LasFile wide = LasFile::create(4, 6, scale, offset);
    cls.classification = 200;
    cls.returnNumber = 15;
    cls.numberOfReturns = 15;
    EXPECT_NO_THROW(wide.addPoint(cls));
    EXPECT_EQ(wide.classification(0), 200);
    EXPECT_EQ(wide.returnNumber(0), 15);
}

TEST(LasGeneratedFiles, CreateRefusesUnknownVersionsFormatsAndZeroScales)
{
    const double scale[3] = {0.01, 0.01, 0.01}, zero[3] = {0.01, 0, 0.01}, offset[3] = {0, 0, 0};
    EXPECT_THROW(LasFile::create(5, 0, scale, offset), vexaro::LasError);
    EXPECT_THROW(LasFile::create(2, 11, scale, offset), vexaro::LasError);
    EXPECT_THROW(LasFile::create(2, 0, zero, offset), vexaro::LasError);
}

TEST(LasGeneratedFiles, PointsCanOnlyBeAddedToCreatedFiles)
{
    lastest::ImageLayout layout;
    layout.points = lastest::samplePoints(3, 2);
    LasFile f = LasFile::fromMemory(lastest::buildImage(layout), "read.las");
    EXPECT_THROW(f.addPoint(NewPoint{}), vexaro::LasError);
}

TEST(LasGeneratedFiles, EmptyCreatedFileRoundTrips)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
    const LasFile f = LasFile::create(2, 0, scale, offset);
    const LasFile back = LasFile::fromMemory(f.bytes(), "empty.las");
    EXPECT_EQ(back.size(), 0u);
    EXPECT_TRUE(back.bytes() == f.bytes());
}

TEST(LasGeneratedFiles, WriteFailureNamesTheFile)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
    const LasFile f = LasFile::create(2, 0, scale, offset);
    const std::string path = "/nonexistent-folder-of-vexaro/out.las";
    try {
        f.write(path);
        FAIL() << "expected LasError";
    } catch (const vexaro::LasError& e) {
        EXPECT_NE(std::string(e.what()).find(path + ": cannot create the file"), std::string::npos)
            << e.what();
    }
}
