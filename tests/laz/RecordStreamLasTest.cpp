// Streaming LAS records: batches match the whole-file reader, the preamble plus the records is
// the file, the writer's header counts and bounds match LasFile's, and a writer that fails or is
// abandoned leaves no file behind.
#include "RecordTestFiles.h"
#include "las/RecordStream.h"

#include <Vexaro.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using laztest::messageOf;
using vx::las::LasFile;
using vx::las::RecordReader;
using vx::las::RecordWriter;

namespace {

/// Every record of a reader, read `batch` at a time.
std::vector<uint8_t> readInBatches(RecordReader& r, std::size_t batch)
{
    std::vector<uint8_t> all;
    std::vector<uint8_t> buffer(batch * r.recordLength());
    while (std::size_t got = r.read(buffer.data(), batch))
        all.insert(all.end(), buffer.begin(),
                   buffer.begin() + static_cast<std::ptrdiff_t>(got * r.recordLength()));
    return all;
}

struct Case {
    uint8_t minor, format;
};

} // namespace

TEST(RecordStreamLas, BatchesOfSevenGiveTheRecordsOfLasFile)
{
    const std::string folder = laztest::scratchFolder("batches");
    for (const Case c : {Case{0, 0}, Case{2, 1}, Case{3, 3}, Case{4, 6}, Case{4, 8}}) {
        const LasFile made = laztest::makeFile(c.minor, c.format, 103, c.format + 1u);
        const std::string path = folder + "/f" + std::to_string(c.format) + ".las";
        made.write(path);
        const LasFile whole = LasFile::read(path);
        RecordReader reader(path);
        EXPECT_FALSE(reader.compressed());
        EXPECT_EQ(reader.recordLength(), whole.header().recordLength);
        EXPECT_EQ(reader.header().pointCount, 103u);
        EXPECT_EQ(reader.header().pointFormat, c.format);
        const auto got = readInBatches(reader, 7);
        EXPECT_EQ(got, laztest::records(whole)) << "format " << int(c.format);
        EXPECT_EQ(reader.read(nullptr, 7), 0u);
        // Without EVLRs, the preamble and the records are the file itself.
        std::vector<uint8_t> file = reader.preamble();
        file.insert(file.end(), got.begin(), got.end());
        EXPECT_EQ(file, whole.bytes());
    }
}

TEST(RecordStreamLas, WriterFillsCountsAndBoundsAsLasFileDoes)
{
    const std::string folder = laztest::scratchFolder("writer");
    for (const Case c : {Case{2, 1}, Case{2, 3}, Case{4, 6}, Case{4, 1}}) {
        const LasFile made = laztest::makeFile(c.minor, c.format, 250, 7);
        // The preamble of an empty file: counts and bounds all come from the records written.
        const LasFile empty = laztest::makeFile(c.minor, c.format, 0);
        const std::string path = folder + "/w" + std::to_string(c.format) + ".las";
        RecordWriter writer(path, empty.bytes());
        const auto recs = laztest::records(made);
        const std::size_t length = made.header().recordLength;
        writer.write(recs.data(), 100);
        writer.write(recs.data() + 100 * length, 150);
        writer.finish();
        EXPECT_EQ(laztest::fileBytes(path), made.bytes())
            << "1." << int(c.minor) << " format " << int(c.format);
        EXPECT_EQ(laztest::folderEntries(folder).size(), 1u);
        std::remove(path.c_str());
    }
}

TEST(RecordStreamLas, WriterDroppedBeforeFinishLeavesNothing)
{
    const std::string folder = laztest::scratchFolder("dropped");
    const LasFile made = laztest::makeFile(2, 3, 20);
    {
        RecordWriter writer(folder + "/out.las", laztest::makeFile(2, 3, 0).bytes());
        writer.write(laztest::records(made).data(), 20);
        EXPECT_EQ(laztest::folderEntries(folder).size(), 1u); // the temporary, under another name
        EXPECT_FALSE(laztest::exists(folder + "/out.las"));
    }
    EXPECT_TRUE(laztest::folderEntries(folder).empty());
}

TEST(RecordStreamLas, WriterRefusesAMissingFolderAndABadPreamble)
{
    const std::string folder = laztest::scratchFolder("refused");
    const auto preamble = laztest::makeFile(2, 3, 0).bytes();
    const std::string missing = folder + "/no/such/out.las";
    EXPECT_NE(
        messageOf([&] { RecordWriter w(missing, preamble); }).find(missing + ": cannot create the file"),
        std::string::npos);
    auto cut = preamble;
    cut.resize(100);
    EXPECT_NE(messageOf([&] { RecordWriter w(folder + "/a.las", cut); }).find("too short for a LAS header"),
              std::string::npos);
    auto longer = preamble;
    longer.push_back(0);
    EXPECT_NE(messageOf([&] { RecordWriter w(folder + "/b.las", longer); }).find("preamble holds"),
              std::string::npos);
    EXPECT_TRUE(laztest::folderEntries(folder).empty());
}

TEST(RecordStreamLas, FailedWriteToAFolderNameLeavesNoTemporary)
{
    const std::string folder = laztest::scratchFolder("taken");
    const std::string target = folder + "/taken.las";
    ASSERT_EQ(::mkdir(target.c_str(), 0755), 0);
    const LasFile made = laztest::makeFile(2, 1, 10);
    EXPECT_NE(messageOf([&] { made.write(target); }).find(target + ": "), std::string::npos);
    RecordWriter writer(target, laztest::makeFile(2, 1, 0).bytes());
    writer.write(laztest::records(made).data(), 10);
    EXPECT_NE(messageOf([&] { writer.finish(); }).find(target + ": "), std::string::npos);
    EXPECT_EQ(laztest::folderEntries(folder), std::vector<std::string>{"taken.las"});
}

TEST(RecordStreamLas, ReaderRefusesWhatLasFileRefuses)
{
    const std::string folder = laztest::scratchFolder("refuses");
    auto bytes = laztest::makeFile(2, 3, 10).bytes();
    bytes.resize(bytes.size() - 5);
    const std::string path = folder + "/short.las";
    laztest::putBytes(path, bytes);
    const std::string expected = messageOf([&] { LasFile::read(path); });
    EXPECT_NE(expected.find("header declares 10 points but the file holds only 9"), std::string::npos)
        << expected;
    EXPECT_EQ(messageOf([&] { RecordReader r(path); }), expected);

    const std::string missing = folder + "/missing.las";
    EXPECT_EQ(messageOf([&] { RecordReader r(missing); }), messageOf([&] { LasFile::read(missing); }));
}

TEST(RecordStreamLas, ReaderNoticesAFileCutWhileReading)
{
    const std::string folder = laztest::scratchFolder("cut");
    const std::string path = folder + "/cut.las";
    const LasFile made = laztest::makeFile(2, 3, 50);
    made.write(path);
    RecordReader reader(path);
    std::vector<uint8_t> buffer(50 * reader.recordLength());
    EXPECT_EQ(reader.read(buffer.data(), 10), 10u);
    ASSERT_EQ(::truncate(path.c_str(), static_cast<off_t>(made.bytes().size() - 100)), 0);
    const std::string message = messageOf([&] { reader.read(buffer.data(), 40); });
    EXPECT_NE(message.find(path + ": the file ends inside point record"), std::string::npos) << message;
}

TEST(ZeroScale, EveryReaderRefusesItNamingTheAxis)
{
    const std::string folder = laztest::scratchFolder("zeroscale");
    for (int axis = 0; axis < 3; ++axis) {
        auto bytes = laztest::makeFile(2, 1, 5).bytes();
        std::fill(bytes.begin() + 131 + 8 * axis, bytes.begin() + 139 + 8 * axis, uint8_t{0});
        const std::string path = folder + "/zero.las";
        laztest::putBytes(path, bytes);
        const std::string expected = std::string("the ") + "xyz"[axis] + " scale factor is zero";
        EXPECT_NE(messageOf([&] { LasFile::read(path); }).find(path + ": " + expected), std::string::npos);
        EXPECT_NE(messageOf([&] { LasFile::fromMemory(bytes, "m.las"); }).find(expected), std::string::npos);
        EXPECT_NE(messageOf([&] { RecordReader r(path); }).find(expected), std::string::npos);
        EXPECT_NE(messageOf([&] {
                      RecordWriter w(folder + "/out.las",
                                     std::vector<uint8_t>(bytes.begin(), bytes.end() - 5 * 28));
                  }).find(expected),
                  std::string::npos);
    }
}
