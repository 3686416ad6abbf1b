// Class and creation-year patches: the field limits of each format, the neighbouring flag bits,
// and nothing else in the file.
#include "LasTestImage.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

using vx::las::LasFile;

namespace {

LasFile imageOf(int minor, int format, int n = 16)
{
    lastest::ImageLayout layout;
    layout.minor = minor;
    layout.format = format;
    layout.points = lastest::samplePoints(format, n);
    return LasFile::fromMemory(lastest::buildImage(layout), "classes.las");
}

std::string refusal(LasFile& f, int cls)
{
    try {
        f.setClassification(0, cls);
    } catch (const vexaro::LasError& e) {
        return e.what();
    }
    return "";
}

/// Every class from 0 to `highest` fits the field of `format` and reads back; one past it and a
/// negative class are refused with the message that names the format.
void expectClassField(int lasMinor, int format, int highest)
{
    SCOPED_TRACE(format);
    LasFile f = imageOf(lasMinor, format);
    for (int c : {highest, highest / 2, 0}) {
        f.setClassification(0, c);
        EXPECT_EQ(f.classification(0), c);
    }
    for (int c : {highest + 1, -1})
        EXPECT_EQ(refusal(f, c), "classes.las: class " + std::to_string(c) +
                                     " does not fit the classification field of point format " +
                                     std::to_string(format));
}

} // namespace

TEST(LasClassification, FormatsZeroToFiveHoldClassesZeroToThirtyOne)
{
    for (int format = 0; format <= 5; ++format)
        expectClassField(2, format, 31);
}

TEST(LasClassification, FormatsSixToTenHoldTheWholeByte)
{
    for (int format = 6; format <= 10; ++format)
        expectClassField(4, format, 255);
}

TEST(LasClassification, ClassThreeHundredInFormatThreeGivesTheDocumentedMessage)
{
    LasFile f = imageOf(2, 3);
    EXPECT_EQ(refusal(f, 300),
              "classes.las: class 300 does not fit the classification field of point format 3");
    EXPECT_EQ(f.bytes(), imageOf(2, 3).bytes()); // a refused class changes nothing
}

TEST(LasClassification, FlagBitsBesideTheClassAreKept)
{
    for (int format : {1, 3, 6, 7}) {
        SCOPED_TRACE(format);
        LasFile f = imageOf(format >= 6 ? 4 : 2, format);
        const auto before = f.bytes();
        const std::size_t start = f.header().offsetToPointData, stride = f.header().recordLength;
        for (std::size_t i = 0; i < f.size(); ++i)
            f.setClassification(i, (f.classification(i) + 5) % 31);
        const auto& after = f.bytes();
        for (std::size_t i = 0; i < f.size(); ++i) {
            const std::size_t r = start + i * stride;
            for (std::size_t k = 0; k < stride; ++k) {
                const uint8_t changed = before[r + k] ^ after[r + k];
                if (static_cast<int>(k) == lastest::classOffset(format))
                    ASSERT_EQ(changed & ~lastest::classMask(format), 0) << "record " << i;
                else
                    ASSERT_EQ(changed, 0) << "record " << i << " byte " << k;
            }
        }
        // Synthetic, key-point and withheld flags of formats 0-5 sit above the 5 class bits.
        if (format < 6) {
            for (std::size_t i = 0; i < f.size(); ++i)
                EXPECT_EQ(after[start + i * stride + 15] >> 5, i % 8);
        }
    }
}

TEST(LasClassification, IndexPastTheLastPointIsRefused)
{
    LasFile f = imageOf(2, 3, 4);
    try {
        f.setClassification(4, 2);
        FAIL() << "expected LasError";
    } catch (const vexaro::LasError& e) {
        EXPECT_EQ(std::string(e.what()), "classes.las: point 4 does not exist (the file holds 4 points)");
    }
}

TEST(LasClassification, CreationYearPatchesOnlyBytes92And93)
{
    LasFile f = imageOf(1, 2);
    auto expected = f.bytes();
    f.setCreationYear(2015);
    expected[92] = 2015 & 0xFF;
    expected[93] = 2015 >> 8;
    EXPECT_EQ(f.bytes(), expected);
    EXPECT_EQ(f.header().creationYear, 2015);
    EXPECT_EQ(f.header().creationDay, 45);
}
