// VLRs added to a created file: written before the points with the header's count and point
// offset kept right, in every version, whether added before or after points.
#include "las/LasFile.h"

#include <Vexaro.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

using vx::las::LasFile;
using vx::las::NewPoint;

namespace {

uint16_t u16At(const std::vector<uint8_t>& b, std::size_t at)
{
    return static_cast<uint16_t>(b[at] | (b[at + 1] << 8));
}

uint32_t u32At(const std::vector<uint8_t>& b, std::size_t at)
{
    return static_cast<uint32_t>(u16At(b, at)) | (static_cast<uint32_t>(u16At(b, at + 2)) << 16);
}

NewPoint point(int i)
{
    NewPoint p;
    p.x = 100 + i;
    p.y = 200 - i * 0.5;
    p.z = 3 + i * 0.25;
    p.intensity = static_cast<uint16_t>(1000 + i);
    p.classification = 2;
    return p;
}

} // namespace

TEST(LasVlrWrite, AddedVlrsComeBeforeThePointsInEveryVersion)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
    const std::vector<uint8_t> wkt = {'P', 'R', 'O', 'J', 'C', 'S', '[', ']', 0};
    const std::vector<uint8_t> other(300, 7);
    for (int minor = 0; minor <= 4; ++minor) {
        SCOPED_TRACE("LAS 1." + std::to_string(minor));
        LasFile f = LasFile::create(static_cast<uint8_t>(minor), minor == 4 ? 6 : 1, scale, offset);
        f.addPoint(point(0));
        f.addVlr("LASF_Projection", 2112, "OGC WKT", wkt);
        f.addPoint(point(1));
        f.addVlr("SIXTEEN_CHARS_ID", 9, "a description that fills all 32", other);
        f.addPoint(point(2));

        const LasFile back = LasFile::fromMemory(f.bytes(), "vlrs.las");
        const auto& h = back.header();
        const std::size_t headerSize = h.headerSize;
        const std::size_t vlrBytes = 2 * 54 + wkt.size() + other.size();
        EXPECT_EQ(h.vlrCount, 2u);
        EXPECT_EQ(h.offsetToPointData, headerSize + vlrBytes + (minor == 0 ? 2 : 0));
        ASSERT_EQ(back.vlrs().size(), 2u);
        EXPECT_EQ(back.vlrs()[0].userId, "LASF_Projection");
        EXPECT_EQ(back.vlrs()[0].recordId, 2112);
        EXPECT_EQ(back.vlrs()[0].description, "OGC WKT");
        EXPECT_EQ(back.vlrs()[0].payloadSize, wkt.size());
        EXPECT_EQ(back.vlrs()[1].userId, "SIXTEEN_CHARS_ID");
        EXPECT_EQ(back.vlrs()[1].payloadSize, other.size());
        EXPECT_EQ(f.vlrs().size(), 2u);
        // The first payload right after its 54-byte header.
        const auto& bytes = back.bytes();
        EXPECT_EQ(u16At(bytes, headerSize + 18), 2112);
        EXPECT_EQ(std::memcmp(bytes.data() + headerSize + 54, wkt.data(), wkt.size()), 0);
        EXPECT_EQ(u32At(bytes, 100), 2u);
        if (minor == 0) {
            EXPECT_EQ(bytes[h.offsetToPointData - 2], 0xDD);
            EXPECT_EQ(bytes[h.offsetToPointData - 1], 0xCC);
        }
        ASSERT_EQ(back.size(), 3u);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_DOUBLE_EQ(back.x(i), point(static_cast<int>(i)).x);
            EXPECT_DOUBLE_EQ(back.z(i), point(static_cast<int>(i)).z);
            EXPECT_EQ(back.intensity(i), point(static_cast<int>(i)).intensity);
        }
    }
}

TEST(LasVlrWrite, RefusesOversizedFieldsAndReadFiles)
{
    const double scale[3] = {0.01, 0.01, 0.01}, offset[3] = {0, 0, 0};
    LasFile f = LasFile::create(4, 6, scale, offset);
    EXPECT_THROW(f.addVlr("SEVENTEEN_CHARS_X", 1, "", {}), vexaro::LasError);
    EXPECT_THROW(f.addVlr("id", 1, std::string(33, 'd'), {}), vexaro::LasError);
    EXPECT_THROW(f.addVlr("id", 1, "", std::vector<uint8_t>(65536, 0)), vexaro::LasError);
    EXPECT_EQ(f.header().vlrCount, 0u);
    f.addVlr("id", 1, "", std::vector<uint8_t>(65535, 0));
    f.addPoint(point(0));
    LasFile back = LasFile::fromMemory(f.bytes(), "read.las");
    EXPECT_THROW(back.addVlr("id", 1, "", {}), vexaro::LasError);
}
