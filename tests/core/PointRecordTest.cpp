#include "common/TestSupport.h"

#include <cstddef>
#include <cstring>

using namespace vxtest;

TEST(PointRecord, FloatRecordIs36BytesWithFixedOffsets)
{
    EXPECT_EQ(sizeof(VX_Point<float>), 36u);
    EXPECT_EQ(offsetof(VX_Point<float>, heightIndex), 24u);
    EXPECT_EQ(offsetof(VX_Point<float>, classification), 28u);
    EXPECT_EQ(offsetof(VX_Point<float>, lastReturn), 32u);
}

TEST(PointRecord, DoubleRecordIs64BytesWithFixedOffsets)
{
    EXPECT_EQ(sizeof(VX_Point<double>), 64u);
    EXPECT_EQ(offsetof(VX_Point<double>, nz), 40u);
    EXPECT_EQ(offsetof(VX_Point<double>, heightIndex), 48u);
    EXPECT_EQ(offsetof(VX_Point<double>, classification), 52u);
    EXPECT_EQ(offsetof(VX_Point<double>, lastReturn), 56u);
}

TEST(PointRecord, RawBytesAreReadAtTheDocumentedOffsets)
{
    // A caller that fills records by byte position gets the fields it meant.
    unsigned char raw[2 * 36] = {};
    float x = 1.5f, z = -2.f, h = 0.25f;
    int cls = 6, last = 1;
    std::memcpy(raw + 36 + 0, &x, 4);
    std::memcpy(raw + 36 + 8, &z, 4);
    std::memcpy(raw + 36 + 24, &h, 4);
    std::memcpy(raw + 36 + 28, &cls, 4);
    std::memcpy(raw + 36 + 32, &last, 4);
    VX_Point<float> pts[2];
    std::memcpy(pts, raw, sizeof raw);
    Vexaro<float> v;
    v.setFacadeMessageLevel(0);
    v.setMessageLevel(0);
    v.loadDirectData(pts, 2);
    auto back = points(v);
    ASSERT_EQ(back.size(), 2u);
    EXPECT_EQ(back[1].x, 1.5f);
    EXPECT_EQ(back[1].z, -2.f);
    EXPECT_EQ(back[1].heightIndex, 0.25f);
    EXPECT_EQ(back[1].classification, 6);
    EXPECT_EQ(back[1].lastReturn, 1);
}
