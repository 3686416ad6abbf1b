// Byte-level vocabulary of the codec: little-endian loads and stores at unaligned offsets, the
// header field offsets, and the error helper. Internal to src/io/las.
#pragma once

#include "las/LasFile.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace vx::las::detail {

// Public header block offsets.
constexpr std::size_t kVersionMajor = 24, kVersionMinor = 25;
constexpr std::size_t kSystemId = 26, kSoftware = 58;
constexpr std::size_t kCreationDay = 90, kCreationYear = 92;
constexpr std::size_t kHeaderSize = 94, kOffsetToPoints = 96, kVlrCount = 100;
constexpr std::size_t kPointFormat = 104, kRecordLength = 105;
constexpr std::size_t kLegacyCount = 107, kLegacyByReturn = 111;
constexpr std::size_t kScale = 131, kOffset = 155, kBounds = 179; // bounds: max x, min x, max y, ...
constexpr std::size_t kWaveformStart = 227, kEvlrStart = 235, kEvlrCount = 243;
constexpr std::size_t kCount64 = 247, kByReturn64 = 255;
constexpr std::size_t kGlobalEncoding = 6;

constexpr std::size_t kVlrHeader = 54, kEvlrHeader = 60;
constexpr std::size_t kLegacyHeaderSize = 227;

/// The smallest header a LAS 1.minor file may have.
inline std::size_t minimumHeaderSize(int minor)
{
    return minor >= 4 ? 375 : minor == 3 ? 235 : 227;
}

template <class U> inline U load(const uint8_t* p)
{
    U v;
    std::memcpy(&v, p, sizeof v);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    uint8_t b[sizeof v];
    std::memcpy(b, &v, sizeof v);
    for (std::size_t k = 0; k < sizeof v / 2; ++k)
        std::swap(b[k], b[sizeof v - 1 - k]);
    std::memcpy(&v, b, sizeof v);
#endif
    return v;
}

template <class U> inline void store(uint8_t* p, U v)
{
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    uint8_t b[sizeof v];
    std::memcpy(b, &v, sizeof v);
    for (std::size_t k = 0; k < sizeof v / 2; ++k)
        std::swap(b[k], b[sizeof v - 1 - k]);
    std::memcpy(&v, b, sizeof v);
#endif
    std::memcpy(p, &v, sizeof v);
}

/// A NUL-padded text field of n bytes, which need not be terminated when full.
inline std::string text(const uint8_t* p, std::size_t n)
{
    std::size_t len = 0;
    while (len < n && p[len] != 0)
        ++len;
    return std::string(reinterpret_cast<const char*>(p), len);
}

/// Throws vexaro::LasError "<name>: <problem>".
[[noreturn]] void fail(const std::string& name, const std::string& problem);

/// Offset of the GPS time in a record of the format, or 0 when the format has none.
inline std::size_t gpsTimeOffset(uint8_t format)
{
    if (format >= 6)
        return 22;
    return (format == 1 || format >= 3) ? 20 : 0;
}

/// Decodes and checks the public header block: size, signature, version, header size, point format,
/// compression and record length. The header's own fields only; the layout comes next.
LasHeader parseHeader(const std::vector<uint8_t>& bytes, const std::string& name);

/// Walks the VLRs and EVLRs and checks that they, the point offset and the point records lie
/// inside the file; refuses LASzip data. Returns the directory entries in file order.
std::vector<LasVlr> checkLayout(const std::vector<uint8_t>& bytes, const LasHeader& h,
                                const std::string& name);

} // namespace vx::las::detail
