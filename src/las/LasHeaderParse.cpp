// Decoding the public header block, with the checks that decide whether the bytes are a LAS
// file this codec can read at all.
#include "LasLayout.h"

#include <cstdio>

namespace vx::las {

uint16_t formatRecordSize(uint8_t pointFormat)
{
    static const uint16_t sizes[11] = {20, 28, 26, 34, 57, 63, 30, 36, 38, 59, 67};
    return pointFormat <= 10 ? sizes[pointFormat] : 0;
}

namespace detail {

void fail(const std::string& name, const std::string& problem)
{
    throw vexaro::LasError(name + ": " + problem);
}

namespace {

/// The signature as a user would recognise it: printable characters as they are, others as \xNN.
std::string shownSignature(const uint8_t* p)
{
    std::string s;
    for (int k = 0; k < 4; ++k) {
        if (p[k] >= 0x20 && p[k] < 0x7f && p[k] != '"' && p[k] != '\\') {
            s += static_cast<char>(p[k]);
        } else {
            char hex[8];
            std::snprintf(hex, sizeof hex, "\\x%02X", p[k]);
            s += hex;
        }
    }
    return s;
}

} // namespace

void failCompressed(const std::string& name)
{
    fail(name, "the points are LAZ-compressed; LasFile::read and RecordReader decode them from a file "
               "named .laz");
}

LasHeader parseHeader(const uint8_t* b, std::size_t n, const std::string& name, bool allowCompressed)
{
    if (n >= 4 && std::memcmp(b, "LASF", 4) != 0)
        fail(name, "not a LAS file (signature \"" + shownSignature(b) + "\" instead of \"LASF\")");
    if (n < kLegacyHeaderSize)
        fail(name, "file too short for a LAS header (" + std::to_string(n) +
                       " bytes, a header needs at least " + std::to_string(kLegacyHeaderSize) + ")");

    LasHeader h;
    h.versionMajor = b[kVersionMajor];
    h.versionMinor = b[kVersionMinor];
    if (h.versionMajor != 1 || h.versionMinor > 4)
        fail(name, "unsupported LAS version " + std::to_string(h.versionMajor) + "." +
                       std::to_string(h.versionMinor) + " (versions 1.0 to 1.4 can be read)");

    h.headerSize = load<uint16_t>(b + kHeaderSize);
    const std::size_t minimum = minimumHeaderSize(h.versionMinor);
    if (h.headerSize < minimum)
        fail(name, "header size " + std::to_string(h.headerSize) + " is smaller than the " +
                       std::to_string(minimum) + " bytes of a LAS 1." + std::to_string(h.versionMinor) +
                       " header");
    if (h.headerSize > n)
        fail(name, "header size " + std::to_string(h.headerSize) + " runs past the end of the file (" +
                       std::to_string(n) + " bytes)");

    // LASzip marks its files with bit 7 of the format byte; bit 6 was used the same way once.
    const uint8_t formatByte = b[kPointFormat];
    if ((formatByte & 0xC0) && !allowCompressed)
        failCompressed(name);
    h.pointFormat = formatByte & 0x3F;
    if (h.pointFormat > 10)
        fail(name, "unknown point format " + std::to_string(h.pointFormat) + " (formats 0 to 10 exist)");
    h.recordLength = load<uint16_t>(b + kRecordLength);
    if (h.recordLength < formatRecordSize(h.pointFormat))
        fail(name, "point record length " + std::to_string(h.recordLength) + " is smaller than the " +
                       std::to_string(formatRecordSize(h.pointFormat)) + " bytes of point format " +
                       std::to_string(h.pointFormat));

    h.offsetToPointData = load<uint32_t>(b + kOffsetToPoints);
    h.vlrCount = load<uint32_t>(b + kVlrCount);
    h.pointCount = load<uint32_t>(b + kLegacyCount);
    for (int a = 0; a < 3; ++a) {
        h.scale[a] = load<double>(b + kScale + 8 * a);
        h.offset[a] = load<double>(b + kOffset + 8 * a);
        h.maxBound[a] = load<double>(b + kBounds + 16 * a);
        h.minBound[a] = load<double>(b + kBounds + 16 * a + 8);
    }
    // Every coordinate is raw * scale + offset: a zero scale collapses an axis to one value.
    for (int a = 0; a < 3; ++a)
        if (h.scale[a] == 0)
            fail(name, std::string("the ") + "xyz"[a] + " scale factor is zero; every " + "xyz"[a] +
                           " coordinate would be the offset");
    h.creationDay = load<uint16_t>(b + kCreationDay);
    h.creationYear = load<uint16_t>(b + kCreationYear);
    std::memcpy(h.systemId, b + kSystemId, 32);
    std::memcpy(h.software, b + kSoftware, 32);
    h.systemId[32] = h.software[32] = 0;
    if (h.versionMinor >= 4) {
        h.evlrStart = load<uint64_t>(b + kEvlrStart);
        h.evlrCount = load<uint32_t>(b + kEvlrCount);
        // Readers disagree when both counts are set; the 64-bit one is the field 1.4 writers must fill.
        const uint64_t wide = load<uint64_t>(b + kCount64);
        if (wide != 0)
            h.pointCount = wide;
    }
    return h;
}

} // namespace detail
} // namespace vx::las
