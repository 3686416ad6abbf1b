// Reading point records in batches: the first bytes of the file are checked as LasFile checks a
// whole file, then records are read with bounded buffers, directly for LAS or through LASzip.
#include "LazCodec.h"
#include "las/RecordStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace vx::las {

namespace {

/// Every header fits this many bytes (its size is a 16-bit field).
constexpr std::size_t kHeaderWindow = 1 << 16;

/// Reads n bytes at offset, or fewer at the end of the file.
std::size_t readAt(int fd, uint8_t* out, std::size_t n, uint64_t offset, const std::string& path)
{
    return detail::readBytes(fd, out, n, static_cast<int64_t>(offset), path);
}

/// "named .las", or "has no extension", for a message.
std::string shownExtension(const std::string& path)
{
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] != '.')
        return "its name has no extension";
    return "named " + path.substr(dot);
}

/// The uncompressed preamble of a LAZ file's first bytes: LASzip's VLR dropped, the bits cleared.
std::vector<uint8_t> uncompressedPreamble(const std::vector<uint8_t>& raw, const LasHeader& h,
                                          const std::vector<LasVlr>& vlrs)
{
    std::vector<uint8_t> out(raw.begin(), raw.begin() + h.headerSize);
    uint32_t kept = 0;
    uint64_t end = h.headerSize;
    for (const LasVlr& v : vlrs) {
        if (v.extended)
            continue;
        const uint64_t start = v.payloadOffset - detail::kVlrHeader;
        end = v.payloadOffset + v.payloadSize;
        if (v.userId == detail::kLaszipUserId)
            continue;
        out.insert(out.end(), raw.begin() + static_cast<std::ptrdiff_t>(start),
                   raw.begin() + static_cast<std::ptrdiff_t>(end));
        ++kept;
    }
    // Bytes between the VLRs and the points (LAS 1.0's start signature among them) stay.
    out.insert(out.end(), raw.begin() + static_cast<std::ptrdiff_t>(end),
               raw.begin() + static_cast<std::ptrdiff_t>(h.offsetToPointData));
    out[detail::kPointFormat] = h.pointFormat;
    detail::store<uint32_t>(out.data() + detail::kVlrCount, kept);
    detail::store<uint32_t>(out.data() + detail::kOffsetToPoints, static_cast<uint32_t>(out.size()));
    return out;
}

/// LASzip's chunk table, where the compressor has one, must lie inside the file: the offset to it
/// is the first thing after the point offset, and the table holds its chunk count. LASzip would
/// otherwise decode with a broken table or read past the end.
void checkChunkTable(int fd, const std::string& path, const std::vector<uint8_t>& raw, const LasHeader& h,
                     const std::vector<LasVlr>& vlrs, uint64_t fileSize)
{
    const auto laszip = std::find_if(vlrs.begin(), vlrs.end(),
                                     [](const LasVlr& v) { return v.userId == detail::kLaszipUserId; });
    if (laszip->payloadSize < 2)
        detail::fail(path, "the LASzip VLR is too short (" + std::to_string(laszip->payloadSize) + " bytes)");
    constexpr uint16_t kPointwise = 1;
    if (detail::load<uint16_t>(raw.data() + laszip->payloadOffset) == kPointwise)
        return;
    uint8_t field[8];
    if (readAt(fd, field, 8, h.offsetToPointData, path) != 8)
        detail::fail(path, "the LAZ data ends before the offset of its chunk table");
    const int64_t table = detail::load<int64_t>(field);
    if (table == -1) // written by a streaming writer: LASzip finds the offset at the end of the file
        return;
    if (table < static_cast<int64_t>(h.offsetToPointData) + 8 || static_cast<uint64_t>(table) > fileSize ||
        fileSize - static_cast<uint64_t>(table) < 8)
        detail::fail(path, "the chunk table offset (" + std::to_string(table) +
                               ") points outside the LAZ data (" + std::to_string(h.offsetToPointData + 8) +
                               " to " + std::to_string(fileSize) +
                               " bytes); the file is truncated or corrupt");
    uint8_t tableHeader[8];
    if (readAt(fd, tableHeader, 8, static_cast<uint64_t>(table), path) != 8)
        detail::fail(path, "the LAZ chunk table is cut short");
    const uint32_t chunks = detail::load<uint32_t>(tableHeader + 4);
    if (chunks > fileSize - static_cast<uint64_t>(table))
        detail::fail(path, "the LAZ chunk table claims " + std::to_string(chunks) +
                               " chunks, more than the file could hold; the file is corrupt");
}

} // namespace

bool lazAvailable()
{
    return detail::lazBuiltIn();
}

struct RecordReader::State {
    std::string path;
    int fd = -1;
    LasHeader header;
    std::vector<uint8_t> preamble;
    bool compressed = false;
    uint64_t next = 0; ///< records read so far
    std::unique_ptr<detail::LazDecoder> laz;

    ~State()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

RecordReader::RecordReader(const std::string& path) : state_(std::make_unique<State>())
{
    State& s = *state_;
    s.path = path;
    uint64_t fileSize = 0;
    s.fd = detail::openForReading(path, fileSize);

    std::vector<uint8_t> raw(static_cast<std::size_t>(std::min<uint64_t>(fileSize, kHeaderWindow)));
    raw.resize(readAt(s.fd, raw.data(), raw.size(), 0, path));
    LasHeader h = detail::parseHeader(raw.data(), raw.size(), path, true);
    s.compressed = detail::compressedFormatByte(raw.data(), raw.size());
    if (s.compressed && !detail::lazName(path))
        detail::fail(path, "the file is LAZ-compressed but " + shownExtension(path) + "; name it .laz");
    // The VLRs lie before the point offset; a file cut short ends them earlier.
    const uint64_t directoryEnd = std::min<uint64_t>(h.offsetToPointData, fileSize);
    if (directoryEnd > raw.size()) {
        const std::size_t held = raw.size();
        raw.resize(static_cast<std::size_t>(directoryEnd));
        raw.resize(held + readAt(s.fd, raw.data() + held, raw.size() - held, held, path));
    }
    const std::vector<LasVlr> vlrs =
        detail::checkLayout(raw.data(), raw.size(), fileSize, h, path,
                            s.compressed ? detail::PointData::Compressed : detail::PointData::Records);

    if (s.compressed) {
        if (!detail::lazBuiltIn())
            detail::failNoLaz(path);
        checkChunkTable(s.fd, path, raw, h, vlrs, fileSize);
        s.preamble = uncompressedPreamble(raw, h, vlrs);
    } else {
        raw.resize(h.offsetToPointData);
        s.preamble = std::move(raw);
    }
    if (h.versionMinor >= 4) {
        detail::store<uint64_t>(s.preamble.data() + detail::kEvlrStart, 0);
        detail::store<uint32_t>(s.preamble.data() + detail::kEvlrCount, 0);
    }
    s.header = detail::parseHeader(s.preamble, path);
    if (s.compressed) {
        ::close(s.fd);
        s.fd = -1;
        s.laz = std::make_unique<detail::LazDecoder>(path, s.header);
    }
}

RecordReader::~RecordReader() = default;

const LasHeader& RecordReader::header() const
{
    return state_->header;
}

const std::vector<uint8_t>& RecordReader::preamble() const
{
    return state_->preamble;
}

std::size_t RecordReader::recordLength() const
{
    return state_->header.recordLength;
}

bool RecordReader::compressed() const
{
    return state_->compressed;
}

std::size_t RecordReader::read(uint8_t* out, std::size_t n)
{
    State& s = *state_;
    const std::size_t k = static_cast<std::size_t>(std::min<uint64_t>(n, s.header.pointCount - s.next));
    if (k == 0)
        return 0;
    const std::size_t length = s.header.recordLength;
    if (s.laz) {
        s.laz->read(out, k);
    } else {
        const uint64_t at = s.header.offsetToPointData + s.next * length;
        const std::size_t got = readAt(s.fd, out, k * length, at, s.path);
        if (got != k * length)
            detail::fail(s.path, "the file ends inside point record " +
                                     std::to_string(s.next + got / length + 1) + " of " +
                                     std::to_string(s.header.pointCount));
    }
    s.next += k;
    return k;
}

} // namespace vx::las
