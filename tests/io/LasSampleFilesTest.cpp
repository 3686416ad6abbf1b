// The sample files: decoded as described, written back byte for byte, and reclassified with no
// change outside the class bits and the creation year.
#include "LasTestImage.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>

using vx::las::LasFile;

namespace {

std::vector<std::string> sampleFiles()
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(VEXARO_DATA_DIR))
        if (entry.path().extension() == ".las")
            files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

TEST(LasSampleFiles, EverySampleWritesBackByteIdentical)
{
    const auto files = sampleFiles();
    ASSERT_FALSE(files.empty()) << "no .las files in " << VEXARO_DATA_DIR;
    for (const auto& path : files) {
        SCOPED_TRACE(path);
        const LasFile f = LasFile::read(path);
        const std::string out = lastest::tempPath("copy.las");
        f.write(out);
        const auto original = lastest::fileBytes(path);
        EXPECT_TRUE(lastest::fileBytes(out) == original);
        EXPECT_TRUE(f.bytes() == original);
        std::remove(out.c_str());
    }
}

TEST(LasSampleFiles, HeadersMatchTheDataDescription)
{
    struct Expected {
        const char* file;
        uint64_t points;
        int minor, format;
    };
    const Expected expected[] = {{"ign_hd_0382_6565_decimated_cropped.las", 218731, 4, 7},
                                 {"sample_c.las", 14408, 2, 3},
                                 {"warsaw_small.las", 3000, 2, 3}};
    for (const auto& e : expected) {
        SCOPED_TRACE(e.file);
        const LasFile f = LasFile::read(std::string(VEXARO_DATA_DIR) + "/" + e.file);
        EXPECT_EQ(f.header().versionMajor, 1);
        EXPECT_EQ(f.header().versionMinor, e.minor);
        EXPECT_EQ(f.header().pointFormat, e.format);
        EXPECT_EQ(f.header().pointCount, e.points);
        EXPECT_EQ(f.size(), e.points);
    }
}

TEST(LasSampleFiles, DecodedPointsLieInsideTheHeaderBounds)
{
    for (const auto& path : sampleFiles()) {
        SCOPED_TRACE(path);
        const LasFile f = LasFile::read(path);
        const auto& h = f.header();
        double lo[3] = {1e300, 1e300, 1e300}, hi[3] = {-1e300, -1e300, -1e300};
        for (std::size_t i = 0; i < f.size(); ++i) {
            const double v[3] = {f.x(i), f.y(i), f.z(i)};
            for (int a = 0; a < 3; ++a) {
                lo[a] = std::min(lo[a], v[a]);
                hi[a] = std::max(hi[a], v[a]);
            }
            ASSERT_GE(f.returnNumber(i), 0);
            ASSERT_LE(f.returnNumber(i), f.numberOfReturns(i)) << "point " << i;
        }
        // The decoded extent is the header's, to within one quantisation step.
        for (int a = 0; a < 3; ++a) {
            EXPECT_NEAR(lo[a], h.minBound[a], h.scale[a]);
            EXPECT_NEAR(hi[a], h.maxBound[a], h.scale[a]);
        }
    }
}

TEST(LasSampleFiles, ReclassifyingChangesOnlyClassBitsAndCreationYear)
{
    for (const auto& path : sampleFiles()) {
        SCOPED_TRACE(path);
        LasFile f = LasFile::read(path);
        const auto original = f.bytes();
        const int format = f.header().pointFormat;
        const int top = format >= 6 ? 256 : 32;
        std::vector<int> wanted(f.size());
        for (std::size_t i = 0; i < f.size(); ++i) {
            wanted[i] = (f.classification(i) + 1 + static_cast<int>(i % 3)) % top;
            f.setClassification(i, wanted[i]);
        }
        f.setCreationYear(2015);
        const std::string out = lastest::tempPath("reclassified.las");
        f.write(out);
        const auto written = lastest::fileBytes(out);
        std::remove(out.c_str());
        ASSERT_EQ(written.size(), original.size());

        const std::size_t start = f.header().offsetToPointData, stride = f.header().recordLength;
        const std::size_t classAt = lastest::classOffset(format);
        const uint8_t mask = lastest::classMask(format);
        std::size_t changedRecords = 0;
        for (std::size_t k = 0; k < written.size(); ++k) {
            if (written[k] == original[k])
                continue;
            if (k == 92 || k == 93)
                continue;
            ASSERT_GE(k, start) << "header or VLR byte " << k << " changed";
            ASSERT_LT(k, start + f.size() * stride) << "byte " << k << " after the points changed";
            ASSERT_EQ((k - start) % stride, classAt) << "byte " << k << " is not a class byte";
            ASSERT_EQ((written[k] ^ original[k]) & ~mask, 0) << "flag bits changed at byte " << k;
            ++changedRecords;
        }
        EXPECT_GT(changedRecords, 0u);
        EXPECT_EQ(written[92] | (written[93] << 8), 2015);

        const LasFile back = LasFile::fromMemory(written, out);
        EXPECT_EQ(back.header().creationYear, 2015);
        for (std::size_t i = 0; i < back.size(); ++i) {
            ASSERT_EQ(back.classification(i), wanted[i]) << "point " << i;
            ASSERT_EQ(back.rawX(i), f.rawX(i));
            ASSERT_EQ(back.intensity(i), f.intensity(i));
            ASSERT_EQ(back.returnNumber(i), f.returnNumber(i));
        }
    }
}

TEST(LasSampleFiles, VlrDirectoryOfTheLas14SampleIsDecoded)
{
    const LasFile f = LasFile::read(std::string(VEXARO_DATA_DIR) + "/ign_hd_0382_6565_decimated_cropped.las");
    EXPECT_EQ(f.vlrs().size(), f.header().vlrCount + f.header().evlrCount);
    for (const auto& v : f.vlrs())
        EXPECT_LE(v.userId.size(), 16u);
}
