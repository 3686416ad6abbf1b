// Broken or unsupported inputs are refused with a LasError that names the file and the problem,
// both when read from disk and from memory.
#include "LasTestImage.h"
#include "las/LasFile.h"

#include <gtest/gtest.h>

#include <cstdio>

using vx::las::LasFile;

namespace {

lastest::ImageLayout validLayout(int minor = 2, int format = 3)
{
    lastest::ImageLayout layout;
    layout.minor = minor;
    layout.format = format;
    layout.vlrs = {{"LASF_Projection", 34735, "keys", std::vector<uint8_t>(16, 1)}};
    layout.points = lastest::samplePoints(format, 10);
    return layout;
}

/// Reads the bytes from a file and from memory; both must fail with `keyword` and the name.
void expectRefused(const std::vector<uint8_t>& bytes, const std::string& keyword)
{
    const std::string path = lastest::tempPath("broken.las");
    lastest::writeBytes(path, bytes);
    try {
        LasFile::read(path);
        ADD_FAILURE() << "read() accepted a file that should fail with \"" << keyword << "\"";
    } catch (const vexaro::LasError& e) {
        const std::string what = e.what();
        EXPECT_EQ(what.rfind(path + ": ", 0), 0u) << what;
        EXPECT_NE(what.find(keyword), std::string::npos) << what;
    }
    std::remove(path.c_str());
    try {
        LasFile::fromMemory(bytes, "memory.las");
        ADD_FAILURE() << "fromMemory() accepted bytes that should fail with \"" << keyword << "\"";
    } catch (const vexaro::LasError& e) {
        EXPECT_NE(std::string(e.what()).find("memory.las: "), std::string::npos) << e.what();
        EXPECT_NE(std::string(e.what()).find(keyword), std::string::npos) << e.what();
    }
}

} // namespace

TEST(LasValidation, ValidImageIsAccepted)
{
    EXPECT_EQ(LasFile::fromMemory(lastest::buildImage(validLayout()), "ok.las").size(), 10u);
}

TEST(LasValidation, MissingFileNamesTheFile)
{
    const std::string path = lastest::tempPath("does-not-exist.las");
    try {
        LasFile::read(path);
        FAIL() << "expected LasError";
    } catch (const vexaro::LasError& e) {
        EXPECT_EQ(std::string(e.what()), path + ": cannot open the file (No such file or directory)");
    }
}

TEST(LasValidation, DirectoryIsRefused)
{
    try {
        LasFile::read(::testing::TempDir());
        FAIL() << "expected LasError";
    } catch (const vexaro::LasError& e) {
        EXPECT_NE(std::string(e.what()).find("directory"), std::string::npos) << e.what();
    }
}

TEST(LasValidation, EmptyAndShortFilesAreTooShortForAHeader)
{
    expectRefused({}, "too short for a LAS header (0 bytes");
    auto bytes = lastest::buildImage(validLayout());
    bytes.resize(200);
    expectRefused(bytes, "too short for a LAS header (200 bytes");
}

TEST(LasValidation, WrongSignatureIsNotALasFile)
{
    auto bytes = lastest::buildImage(validLayout());
    bytes[0] = 'P';
    bytes[1] = 'K';
    bytes[2] = 3;
    bytes[3] = 4;
    expectRefused(bytes, "not a LAS file (signature \"PK\\x03\\x04\" instead of \"LASF\")");
    expectRefused(std::vector<uint8_t>{'h', 'e', 'l', 'l', 'o'}, "not a LAS file");
}

TEST(LasValidation, UnknownVersionsAreRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    bytes[25] = 5;
    expectRefused(bytes, "unsupported LAS version 1.5");
    bytes[24] = 2;
    bytes[25] = 0;
    expectRefused(bytes, "unsupported LAS version 2.0");
}

TEST(LasValidation, UnknownPointFormatIsRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    bytes[104] = 11;
    expectRefused(bytes, "unknown point format 11");
}

TEST(LasValidation, LazDataInAFileNamedLasIsRefusedByFormatBitsOrVlr)
{
    const std::string message = "LAZ-compressed";
    auto bytes = lastest::buildImage(validLayout());
    bytes[104] = 0x83;
    expectRefused(bytes, message);
    bytes[104] = 0x43;
    expectRefused(bytes, message);

    auto layout = validLayout();
    layout.vlrs.push_back({"laszip encoded", 22204, "by laszip", std::vector<uint8_t>(46, 0)});
    expectRefused(lastest::buildImage(layout), message);
}

TEST(LasValidation, LazWithFewerBytesThanPromisedIsReportedAsLaz)
{
    auto bytes = lastest::buildImage(validLayout());
    bytes[104] = 0x83;
    bytes.resize(bytes.size() - 100); // compressed points take less room
    expectRefused(bytes, "LAZ-compressed");
}

TEST(LasValidation, RecordLengthBelowTheFormatSizeIsRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU16(bytes, 105, 33);
    expectRefused(bytes, "point record length 33 is smaller than the 34 bytes of point format 3");
    lastest::putU16(bytes, 105, 0);
    expectRefused(bytes, "point record length 0");
}

TEST(LasValidation, HeaderSizeBelowTheVersionMinimumIsRefused)
{
    auto bytes = lastest::buildImage(validLayout(4, 6));
    lastest::putU16(bytes, 94, 227);
    expectRefused(bytes, "header size 227 is smaller than the 375 bytes of a LAS 1.4 header");
    auto v13 = lastest::buildImage(validLayout(3, 1));
    lastest::putU16(v13, 94, 234);
    expectRefused(v13, "header size 234 is smaller than the 235 bytes");
}

TEST(LasValidation, HeaderSizePastTheEndIsRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU16(bytes, 94, 60000);
    expectRefused(bytes, "header size 60000 runs past the end of the file");
}

TEST(LasValidation, PointOffsetInsideTheHeaderIsRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU32(bytes, 96, 100);
    expectRefused(bytes, "offset to point data (100) lies inside the header");
}

TEST(LasValidation, VlrsRunningPastThePointOffsetAreRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU32(bytes, 100, 2); // a second VLR that is not there
    expectRefused(bytes, "VLR 2 of 2 runs past the offset to point data");

    auto longPayload = lastest::buildImage(validLayout());
    lastest::putU16(longPayload, 227 + 20, 17); // one byte more than the VLR holds
    expectRefused(longPayload, "VLR 1 of 1 (LASF_Projection 34735) runs past the offset to point data");

    auto huge = lastest::buildImage(validLayout());
    lastest::putU32(huge, 100, 0xFFFFFFFFu); // a lying count must not be trusted with memory
    expectRefused(huge, "VLR 2 of 4294967295 runs past");
}

TEST(LasValidation, VlrsRunningPastTheEndOfTheFileAreRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU32(bytes, 96, 0x7FFFFFFF);
    lastest::putU32(bytes, 100, 1000);
    expectRefused(bytes, "runs past the end of the file");
}

TEST(LasValidation, PointOffsetPastTheEndIsRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU32(bytes, 96, static_cast<uint32_t>(bytes.size() + 1));
    expectRefused(bytes, "offset to point data (" + std::to_string(bytes.size() + 1) +
                             ") is past the end of the file");
}

TEST(LasValidation, MorePointsThanTheFileHoldsAreRefused)
{
    auto bytes = lastest::buildImage(validLayout());
    lastest::putU32(bytes, 107, 11);
    expectRefused(bytes, "header declares 11 points but the file holds only 10");
    lastest::putU32(bytes, 107, 0xFFFFFFFFu);
    expectRefused(bytes, "header declares 4294967295 points but the file holds only 10");

    auto cut = lastest::buildImage(validLayout());
    cut.resize(cut.size() - 1);
    expectRefused(cut, "header declares 10 points but the file holds only 9");

    auto wide = lastest::buildImage(validLayout(4, 6));
    lastest::putU64(wide, 247, 1ull << 62);
    expectRefused(wide, "header declares 4611686018427387904 points but the file holds only 10");
}

TEST(LasValidation, PointsOverlappingTheEvlrsAreRefused)
{
    auto layout = validLayout(4, 6);
    layout.evlrs = {{"LASF_Projection", 2112, "WKT", std::vector<uint8_t>(200, 'w')}};
    auto bytes = lastest::buildImage(layout);
    lastest::putU64(bytes, 247, 11); // the eleventh record would sit on the EVLR
    expectRefused(bytes, "header declares 11 points but the file holds only 10");
}

TEST(LasValidation, EvlrsPastTheEndAreRefused)
{
    auto layout = validLayout(4, 6);
    layout.evlrs = {{"LASF_Projection", 2112, "WKT", std::vector<uint8_t>(200, 'w')}};
    const auto good = lastest::buildImage(layout);
    const std::size_t evlrStart = good.size() - 260;

    auto cut = good;
    cut.resize(cut.size() - 1);
    expectRefused(cut, "EVLR 1 of 1 (LASF_Projection 2112) runs past the end of the file");

    auto more = good;
    lastest::putU32(more, 243, 2);
    expectRefused(more, "EVLR 2 of 2 runs past the end of the file");

    auto start = good;
    lastest::putU64(start, 235, good.size() + 10);
    expectRefused(start,
                  "start of the first EVLR (" + std::to_string(good.size() + 10) + ") is past the end");

    auto early = good;
    lastest::putU64(early, 235, 300);
    expectRefused(early, "start of the first EVLR (300) lies before the point data");

    auto huge = good;
    lastest::putU64(huge, evlrStart + 20, ~0ull);
    expectRefused(huge, "EVLR 1 of 1 (LASF_Projection 2112) runs past the end of the file");
}
