// LAS -> LAZ -> LAS through LASzip: the point records come back byte for byte, for legacy and
// LAS 1.4 formats and records with extra bytes; the header's counts, bounds and VLRs follow.
#include "RecordTestFiles.h"
#include "las/RecordStream.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

using vx::las::LasFile;
using vx::las::RecordReader;

namespace {

struct Case {
    uint8_t minor, format;
    bool extraFloat;
};

/// Random bytes in every field of every record past the coordinates and the return byte (which
/// the header's bounds and histograms follow): flags, classes, scan angles, user data, source ids,
/// times, colours, wave packets and extra bytes all have to survive compression.
LasFile scrambled(const LasFile& f)
{
    std::vector<uint8_t> bytes = f.bytes();
    std::mt19937 rng(f.header().pointFormat + 100u);
    const std::size_t start = f.header().offsetToPointData, length = f.header().recordLength;
    for (std::size_t i = 0; i < f.size(); ++i)
        for (std::size_t k = 15; k < length; ++k)
            bytes[start + i * length + k] = static_cast<uint8_t>(rng());
    return LasFile::fromMemory(bytes, "scrambled");
}

LasFile caseFile(const Case& c, std::size_t n)
{
    LasFile f = laztest::makeFile(c.minor, c.format, n, 11 + c.format);
    if (c.extraFloat) {
        std::vector<float> values(n);
        for (std::size_t i = 0; i < n; ++i)
            values[i] = 0.25f * static_cast<float>(i % 97);
        f = f.withExtraFloat("HeightAboveGround", "height above the ground", values);
    }
    return scrambled(f);
}

void expectSameHeader(const vx::las::LasHeader& a, const vx::las::LasHeader& b)
{
    EXPECT_EQ(a.pointFormat, b.pointFormat);
    EXPECT_EQ(a.recordLength, b.recordLength);
    EXPECT_EQ(a.pointCount, b.pointCount);
    EXPECT_EQ(a.versionMinor, b.versionMinor);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(a.scale[k], b.scale[k]);
        EXPECT_EQ(a.offset[k], b.offset[k]);
        EXPECT_EQ(a.minBound[k], b.minBound[k]);
        EXPECT_EQ(a.maxBound[k], b.maxBound[k]);
    }
}

} // namespace

TEST(LazRoundTrip, RecordsComeBackByteForByte)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("roundtrip");
    for (const Case c : {Case{2, 1, false}, Case{2, 3, false}, Case{4, 6, false}, Case{2, 3, true},
                         Case{4, 6, true}, Case{0, 0, false}, Case{4, 8, false}}) {
        SCOPED_TRACE("LAS 1." + std::to_string(c.minor) + " format " + std::to_string(c.format) +
                     (c.extraFloat ? " with an extra float" : ""));
        const LasFile las = caseFile(c, 3000);
        const std::string laz = folder + "/f.laz", back = folder + "/back.las";
        las.write(laz);
        EXPECT_EQ(laztest::folderEntries(folder), std::vector<std::string>{"f.laz"});
        const LasFile decoded = LasFile::read(laz);
        EXPECT_EQ(laztest::records(decoded), laztest::records(las));
        expectSameHeader(decoded.header(), las.header());
        ASSERT_EQ(decoded.vlrs().size(), las.vlrs().size());
        for (std::size_t k = 0; k < las.vlrs().size(); ++k) {
            EXPECT_EQ(decoded.vlrs()[k].userId, las.vlrs()[k].userId);
            EXPECT_EQ(decoded.vlrPayload(k), las.vlrPayload(k));
        }
        // Back to LAS: the very bytes of the original.
        decoded.write(back);
        EXPECT_EQ(laztest::fileBytes(back), las.bytes());
        // The file on disk is LAZ: compression bit set and smaller than the records.
        const auto bytes = laztest::fileBytes(laz);
        ASSERT_GT(bytes.size(), 105u);
        EXPECT_EQ(bytes[104] & 0x80, 0x80);
        EXPECT_LT(bytes.size(), las.bytes().size());
        std::remove(laz.c_str());
        std::remove(back.c_str());
    }
}

TEST(LazRoundTrip, ReaderBatchesAndPreambleMatchLasFile)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("lazbatches");
    const LasFile las = caseFile({4, 6, true}, 1001);
    const std::string laz = folder + "/b.LAZ"; // the extension in any case
    las.write(laz);
    RecordReader reader(laz);
    EXPECT_TRUE(reader.compressed());
    EXPECT_EQ(reader.recordLength(), las.header().recordLength);
    expectSameHeader(reader.header(), las.header());
    std::vector<uint8_t> file = reader.preamble();
    std::vector<uint8_t> batch(7 * reader.recordLength());
    std::size_t batches = 0;
    while (std::size_t got = reader.read(batch.data(), 7)) {
        file.insert(file.end(), batch.begin(),
                    batch.begin() + static_cast<std::ptrdiff_t>(got * reader.recordLength()));
        ++batches;
    }
    EXPECT_EQ(batches, 143u); // 1001 = 143 * 7
    EXPECT_EQ(reader.read(batch.data(), 7), 0u);
    EXPECT_EQ(file, las.bytes());
    EXPECT_EQ(LasFile::fromMemory(file, "joined").size(), 1001u);
}

TEST(LazRoundTrip, RecordWriterStreamsLazInBatches)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("lazwriter");
    const LasFile las = caseFile({2, 3, false}, 500);
    const std::string laz = folder + "/w.laz";
    {
        vx::las::RecordWriter writer(laz, laztest::makeFile(2, 3, 0).bytes());
        const auto recs = laztest::records(las);
        for (std::size_t i = 0; i < 500; i += 100)
            writer.write(recs.data() + i * las.header().recordLength, 100);
        EXPECT_FALSE(laztest::exists(laz));
        writer.finish();
    }
    EXPECT_EQ(LasFile::read(laz).bytes(), las.bytes());
}

TEST(LazRoundTrip, LazNameHoldingUncompressedLasIsReadAsLas)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("plainlaz");
    const LasFile las = caseFile({2, 1, false}, 40);
    const std::string path = folder + "/plain.laz";
    laztest::putBytes(path, las.bytes());
    EXPECT_EQ(LasFile::read(path).bytes(), las.bytes());
    RecordReader reader(path);
    EXPECT_FALSE(reader.compressed());
}

TEST(LazRoundTrip, SizeOfAGeneratedFile)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("ratio");
    const LasFile las = laztest::makeFile(2, 1, 100000);
    las.write(folder + "/r.laz");
    const double ratio = double(laztest::fileBytes(folder + "/r.laz").size()) / double(las.bytes().size());
    std::printf("LAZ/LAS size ratio, 100000 random format-1 points: %.3f\n", ratio);
    EXPECT_LT(ratio, 1.0);
}
