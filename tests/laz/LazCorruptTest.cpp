// Broken LAZ input fails with a LasError naming the file and the problem, never a crash or a read
// past the end; failed LAZ writes leave no file behind.
#include "RecordTestFiles.h"
#include "las/RecordStream.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <sys/stat.h>

using laztest::messageOf;
using vx::las::LasFile;
using vx::las::RecordReader;

namespace {

/// Reads every record of the file through RecordReader, 1000 at a time.
void readAllRecords(const std::string& path)
{
    RecordReader reader(path);
    std::vector<uint8_t> buffer(1000 * reader.recordLength());
    while (reader.read(buffer.data(), 1000) > 0) {
    }
}

/// Both readers must refuse the file with a message naming it and holding `keyword`.
void expectRefused(const std::string& path, const std::string& keyword)
{
    for (const std::string& m :
         {messageOf([&] { LasFile::read(path); }), messageOf([&] { readAllRecords(path); })}) {
        EXPECT_EQ(m.rfind(path + ": ", 0), 0u) << m;
        EXPECT_NE(m.find(keyword), std::string::npos) << m;
    }
}

/// A LAZ file of several LASzip chunks (50000 points each).
std::vector<uint8_t> lazBytes(const std::string& folder)
{
    const std::string path = folder + "/source.laz";
    laztest::makeFile(2, 1, 120000).write(path);
    auto bytes = laztest::fileBytes(path);
    std::remove(path.c_str());
    return bytes;
}

uint32_t pointOffset(const std::vector<uint8_t>& b)
{
    uint32_t v;
    std::memcpy(&v, b.data() + 96, 4);
    return v;
}

} // namespace

TEST(LazCorrupt, FileCutInsideAChunk)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("cutlaz");
    auto bytes = lazBytes(folder);
    bytes.resize(bytes.size() * 6 / 10); // in the second of three chunks
    const std::string path = folder + "/cut.laz";
    laztest::putBytes(path, bytes);
    expectRefused(path, "truncated or corrupt");
}

TEST(LazCorrupt, ChunkTableOffsetPastTheEnd)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("chunktable");
    auto bytes = lazBytes(folder);
    const int64_t past = static_cast<int64_t>(bytes.size()) + 4096;
    std::memcpy(bytes.data() + pointOffset(bytes), &past, 8);
    const std::string path = folder + "/table.laz";
    laztest::putBytes(path, bytes);
    expectRefused(path, "chunk table offset (" + std::to_string(past) + ") points outside the LAZ data");
}

TEST(LazCorrupt, ChunkTableLostAndDataCutIsReportedByTheDecoder)
{
    SKIP_WITHOUT_LAZ();
    // An offset of -1 sends LASzip to the end of the file for the table, which is gone: the
    // decoder itself has to notice that the data runs out.
    const std::string folder = laztest::scratchFolder("nochunktable");
    auto bytes = lazBytes(folder);
    const int64_t unknown = -1;
    std::memcpy(bytes.data() + pointOffset(bytes), &unknown, 8);
    bytes.resize(bytes.size() * 6 / 10);
    const std::string path = folder + "/lost.laz";
    laztest::putBytes(path, bytes);
    expectRefused(path, "the LAZ data is truncated or corrupt at point");
}

TEST(LazCorrupt, LazNamedLasIsRefusedWithTheFix)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("misnamed");
    const std::string laz = folder + "/p.laz", las = folder + "/p.las";
    laztest::makeFile(2, 3, 30).write(laz);
    ASSERT_EQ(std::rename(laz.c_str(), las.c_str()), 0);
    expectRefused(las, "is LAZ-compressed but named .las; name it .laz");
}

TEST(LazCorrupt, FailedLazWritesLeaveNoFile)
{
    SKIP_WITHOUT_LAZ();
    const std::string folder = laztest::scratchFolder("lazfail");
    const LasFile las = laztest::makeFile(4, 6, 200);
    // The final name is taken by a folder: the rename fails after all points are compressed.
    const std::string taken = folder + "/taken.laz";
    ASSERT_EQ(::mkdir(taken.c_str(), 0755), 0);
    EXPECT_NE(messageOf([&] { las.write(taken); }).find(taken + ": "), std::string::npos);
    EXPECT_EQ(laztest::folderEntries(folder), std::vector<std::string>{"taken.laz"});
    {
        vx::las::RecordWriter writer(folder + "/dropped.laz", laztest::makeFile(4, 6, 0).bytes());
        writer.write(laztest::records(las).data(), 200);
        EXPECT_EQ(laztest::folderEntries(folder).size(), 2u);
    }
    EXPECT_EQ(laztest::folderEntries(folder), std::vector<std::string>{"taken.laz"});
}

TEST(LazCorrupt, CompressionBitWithoutLaszipVlrIsRefused)
{
    // Checked before LASzip is needed, so with or without LAZ support.
    const std::string folder = laztest::scratchFolder("novlr");
    auto bytes = laztest::makeFile(2, 3, 10).bytes();
    bytes[104] |= 0x80;
    const std::string path = folder + "/bare.laz";
    laztest::putBytes(path, bytes);
    const std::string keyword = "marked LAZ-compressed but the file has no LASzip VLR";
    EXPECT_NE(messageOf([&] { LasFile::read(path); }).find(path + ": the point format is " + keyword),
              std::string::npos);
    EXPECT_NE(messageOf([&] { RecordReader r(path); }).find(keyword), std::string::npos);
}

TEST(LazMissing, WithoutLazSupportLazNamesAreRefusedSayingHowToEnableIt)
{
    if (vx::las::lazAvailable())
        GTEST_SKIP() << "LAZ support is built in; this checks the build without it";
    const std::string folder = laztest::scratchFolder("nolaz");
    const std::string path = folder + "/x.laz";
    const std::string m = messageOf([&] { laztest::makeFile(2, 1, 3).write(path); });
    EXPECT_NE(m.find(path + ": LAZ support is not built in"), std::string::npos) << m;
    EXPECT_NE(m.find("PyPI"), std::string::npos) << m;
    EXPECT_TRUE(laztest::folderEntries(folder).empty());
}
