// The payloads of VLRs and EVLRs come back as written, wherever the entry lies in the file.
#include "LasTestImage.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

using vx::las::LasFile;

TEST(LasVlrPayload, VlrAndEvlrPayloadsComeBackAsWritten)
{
    lastest::ImageLayout layout;
    layout.minor = 4;
    layout.format = 6;
    layout.headerPadding = 3;
    std::vector<uint8_t> distinct(300);
    for (std::size_t k = 0; k < distinct.size(); ++k)
        distinct[k] = static_cast<uint8_t>(k * 7 + 1);
    layout.vlrs = {{"LASF_Projection", 34735, "GeoTIFF keys", {1, 0, 1, 0, 0, 0, 0, 0}},
                   {"empty", 1, "", {}},
                   {"distinct", 2, "", distinct}};
    layout.evlrs = {{"LASF_Projection", 2112, "WKT", {'P', 'R', 'O', 'J', 'C', 'S', 0}}};
    layout.points = lastest::samplePoints(6, 3);
    const LasFile f = LasFile::fromMemory(lastest::buildImage(layout), "payloads.las");

    ASSERT_EQ(f.vlrs().size(), 4u);
    EXPECT_EQ(f.vlrPayload(0), layout.vlrs[0].payload);
    EXPECT_TRUE(f.vlrPayload(1).empty());
    EXPECT_EQ(f.vlrPayload(2), distinct);
    EXPECT_EQ(f.vlrPayload(3), layout.evlrs[0].payload);
    EXPECT_TRUE(f.vlrs()[3].extended);
    EXPECT_THROW(f.vlrPayload(4), std::out_of_range);
}
