// Byte-level vocabulary of the codec: little-endian loads and stores at unaligned offsets, the
// header field offsets, and the error helper. Internal to src/las.
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

/// Opens a file to read and tells its size (0 for anything that is not a regular file, whose
/// size is unknown); throws vexaro::LasError naming `path` when it cannot be opened or is a
/// folder. The caller closes the descriptor.
int openForReading(const std::string& path, uint64_t& regularSize);

/// Reads n bytes from the descriptor, at `offset` (pread) or, with a negative offset, where it
/// stands; returns fewer only at the end of the file. Throws vexaro::LasError naming `path` when
/// the system refuses.
std::size_t readBytes(int fd, uint8_t* out, std::size_t n, int64_t offset, const std::string& path);

/// Offset of the GPS time in a record of the format, or 0 when the format has none.
inline std::size_t gpsTimeOffset(uint8_t format)
{
    if (format >= 6)
        return 22;
    return (format == 1 || format >= 3) ? 20 : 0;
}

/// The user id of the VLR in which LASzip describes its compressed items.
constexpr const char* kLaszipUserId = "laszip encoded";

/// Whether the point format byte carries LASzip's compression bits (bit 7, or bit 6 of early
/// versions). `n` bytes are held from the start of the file.
inline bool compressedFormatByte(const uint8_t* b, std::size_t n)
{
    return n > kPointFormat && std::memcmp(b, "LASF", 4) == 0 && (b[kPointFormat] & 0xC0) != 0;
}

/// The message for compressed points where uncompressed ones are expected.
[[noreturn]] void failCompressed(const std::string& name);

/// Decodes and checks the public header block: size, signature, version, header size, point format,
/// compression, record length and scale factors. The header's own fields only; the layout comes
/// next. `n` is the number of bytes held from the start of the file, all of it or at least 65536
/// bytes (a header is never longer). LASzip's compression bits are refused unless allowCompressed.
LasHeader parseHeader(const uint8_t* b, std::size_t n, const std::string& name, bool allowCompressed);
inline LasHeader parseHeader(const std::vector<uint8_t>& bytes, const std::string& name)
{
    return parseHeader(bytes.data(), bytes.size(), name, false);
}

/// What follows the directories of the bytes checked by checkLayout.
enum class PointData {
    Records,    ///< uncompressed records, counted against the file size
    Compressed, ///< LASzip data, which a LASzip VLR must describe
    Absent,     ///< nothing yet: a preamble to write records after
};

/// Walks the VLRs and EVLRs and checks that they, the point offset and, for uncompressed records,
/// the point records lie inside the file; refuses LASzip data unless `points` says it is
/// compressed. `held` bytes of a file of `fileSize` bytes are in
/// memory, at least up to the point offset or the end of the file; the EVLRs are walked only when
/// the whole file is held, otherwise just their start is checked. Returns the directory entries
/// held, in file order.
std::vector<LasVlr> checkLayout(const uint8_t* data, uint64_t held, uint64_t fileSize, const LasHeader& h,
                                const std::string& name, PointData points);
inline std::vector<LasVlr> checkLayout(const std::vector<uint8_t>& bytes, const LasHeader& h,
                                       const std::string& name)
{
    return checkLayout(bytes.data(), bytes.size(), bytes.size(), h, name, PointData::Records);
}

/// Point counts, counts by return and bounds as a header holds them, gathered from records.
struct RecordTally {
    uint64_t count = 0;
    uint64_t byReturn[15] = {};
    double minBound[3] = {0, 0, 0}, maxBound[3] = {0, 0, 0};

    /// Adds n records of the header's format and length.
    void add(const LasHeader& h, const uint8_t* records, std::size_t n);
    /// Stores the tally into the header block `b` of a file of the header's version: the legacy
    /// count and its histogram where the version and format allow, the 64-bit ones in 1.4, bounds.
    void store(uint8_t* b, const LasHeader& h) const;
};

} // namespace vx::las::detail
