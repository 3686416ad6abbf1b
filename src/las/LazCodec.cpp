// LASzip's C API turned into record batches. Without LASzip every entry point refuses.
#include "LazCodec.h"

namespace vx::las::detail {

#ifndef VEXARO_HAVE_LAZ

bool lazBuiltIn()
{
    return false;
}

struct LazDecoder::State {};
struct LazEncoder::State {};

LazDecoder::LazDecoder(const std::string& path, const LasHeader&)
{
    failNoLaz(path);
}
LazDecoder::~LazDecoder() = default;
void LazDecoder::read(uint8_t*, std::size_t) {}

LazEncoder::LazEncoder(const std::string&, const std::string& name, const std::vector<uint8_t>&,
                       const LasHeader&, const std::vector<LasVlr>&)
{
    failNoLaz(name);
}
LazEncoder::~LazEncoder() = default;
void LazEncoder::write(const uint8_t*, std::size_t) {}
void LazEncoder::finish(const RecordTally&) {}

#else

} // namespace vx::las::detail

#include <laszip/laszip_api.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace vx::las::detail {

namespace {

std::string laszipError(laszip_POINTER zip)
{
    laszip_CHAR* text = nullptr;
    if (zip && laszip_get_error(zip, &text) == 0 && text && *text)
        return text;
    return "no reason given";
}

/// One LASzip handle, destroyed on every way out.
struct Handle {
    laszip_POINTER zip = nullptr;
    bool reading = false, writing = false;
    Handle()
    {
        if (laszip_create(&zip) != 0 || !zip)
            throw vexaro::LasError("LASzip cannot create a codec handle");
    }
    ~Handle()
    {
        if (reading)
            laszip_close_reader(zip);
        if (writing)
            laszip_close_writer(zip);
        laszip_destroy(zip);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
};

bool hasGpsTime(uint8_t f)
{
    return f == 1 || f >= 3;
}
bool hasRgb(uint8_t f)
{
    return f == 2 || f == 3 || f == 5 || f == 7 || f == 8 || f == 10;
}
bool hasNir(uint8_t f)
{
    return f == 8 || f == 10;
}
bool hasWavePacket(uint8_t f)
{
    return f == 4 || f == 5 || f == 9 || f == 10;
}

/// The LAS record of LASzip's decoded point: the items in record order.
void recordFromPoint(const laszip_point& p, const LasHeader& h, uint8_t* r)
{
    const uint8_t f = h.pointFormat;
    std::size_t at;
    if (f < 6) {
        // LASzip's point item of formats 0-5 is the record's first 20 bytes as they are.
        std::memcpy(r, &p.X, 20);
        at = 20;
    } else {
        store<int32_t>(r, p.X);
        store<int32_t>(r + 4, p.Y);
        store<int32_t>(r + 8, p.Z);
        store<uint16_t>(r + 12, p.intensity);
        r[14] = static_cast<uint8_t>(p.extended_return_number | (p.extended_number_of_returns << 4));
        r[15] = static_cast<uint8_t>(p.extended_classification_flags | (p.extended_scanner_channel << 4) |
                                     (p.scan_direction_flag << 6) | (p.edge_of_flight_line << 7));
        r[16] = p.extended_classification;
        r[17] = p.user_data;
        store<int16_t>(r + 18, p.extended_scan_angle);
        store<uint16_t>(r + 20, p.point_source_ID);
        at = 22;
    }
    if (hasGpsTime(f)) {
        store<double>(r + at, p.gps_time);
        at += 8;
    }
    if (hasRgb(f)) {
        for (int c = 0; c < (hasNir(f) ? 4 : 3); ++c, at += 2)
            store<uint16_t>(r + at, p.rgb[c]);
    }
    if (hasWavePacket(f)) {
        std::memcpy(r + at, p.wave_packet, 29);
        at += 29;
    }
    if (h.recordLength > at)
        std::memcpy(r + at, p.extra_bytes, h.recordLength - at);
}

/// LASzip's point for a LAS record; formats 6-10 fill the legacy fields as LASzip's own raw reader
/// does, which its writer checks.
void pointFromRecord(const uint8_t* r, const LasHeader& h, laszip_point& p)
{
    const uint8_t f = h.pointFormat;
    std::size_t at;
    if (f < 6) {
        std::memcpy(&p.X, r, 20);
        at = 20;
    } else {
        p.X = load<int32_t>(r);
        p.Y = load<int32_t>(r + 4);
        p.Z = load<int32_t>(r + 8);
        p.intensity = load<uint16_t>(r + 12);
        const int rn = r[14] & 0x0F, nr = r[14] >> 4, flags = r[15] & 0x0F, cls = r[16];
        p.extended_return_number = static_cast<uint8_t>(rn);
        p.extended_number_of_returns = static_cast<uint8_t>(nr);
        p.extended_classification_flags = static_cast<uint8_t>(flags);
        p.extended_scanner_channel = static_cast<uint8_t>((r[15] >> 4) & 3);
        p.scan_direction_flag = static_cast<uint8_t>((r[15] >> 6) & 1);
        p.edge_of_flight_line = static_cast<uint8_t>(r[15] >> 7);
        p.extended_classification = static_cast<uint8_t>(cls);
        p.user_data = r[17];
        p.extended_scan_angle = load<int16_t>(r + 18);
        p.point_source_ID = load<uint16_t>(r + 20);
        if (nr > 7) {
            p.return_number = static_cast<uint8_t>(rn > 6 ? (rn >= nr ? 7 : 6) : rn);
            p.number_of_returns = 7;
        } else {
            p.return_number = static_cast<uint8_t>(rn & 7);
            p.number_of_returns = static_cast<uint8_t>(nr);
        }
        p.classification = static_cast<uint8_t>(cls < 32 ? cls : 0);
        p.synthetic_flag = static_cast<uint8_t>(flags & 1);
        p.keypoint_flag = static_cast<uint8_t>((flags >> 1) & 1);
        p.withheld_flag = static_cast<uint8_t>((flags >> 2) & 1);
        const double rank = std::round(0.006 * p.extended_scan_angle);
        p.scan_angle_rank = static_cast<laszip_I8>(std::clamp(rank, -128.0, 127.0));
        p.extended_point_type = 1;
        at = 22;
    }
    if (hasGpsTime(f)) {
        p.gps_time = load<double>(r + at);
        at += 8;
    }
    if (hasRgb(f)) {
        for (int c = 0; c < (hasNir(f) ? 4 : 3); ++c, at += 2)
            p.rgb[c] = load<uint16_t>(r + at);
    }
    if (hasWavePacket(f)) {
        std::memcpy(p.wave_packet, r + at, 29);
        at += 29;
    }
    if (h.recordLength > at)
        std::memcpy(p.extra_bytes, r + at, h.recordLength - at);
}

/// Throws unless LASzip's point holds the extra bytes that records of the header carry after the
/// format's standard fields.
void requireExtraBytesRoom(const laszip_point* point, const LasHeader& h, const std::string& name)
{
    const std::size_t standard = formatRecordSize(h.pointFormat);
    if (h.recordLength > standard && (point->extra_bytes == nullptr ||
                                      point->num_extra_bytes != static_cast<int>(h.recordLength - standard)))
        fail(name, "LASzip offers no room for the " + std::to_string(h.recordLength - standard) +
                       " extra bytes of each record");
}

} // namespace

bool lazBuiltIn()
{
    return true;
}

struct LazDecoder::State {
    std::string path;
    LasHeader header;
    Handle handle;
    laszip_point* point = nullptr;
    uint64_t decoded = 0;
};

LazDecoder::LazDecoder(const std::string& path, const LasHeader& h) : state_(std::make_unique<State>())
{
    State& s = *state_;
    s.path = path;
    s.header = h;
    laszip_BOOL compressed = 0;
    if (laszip_open_reader(s.handle.zip, path.c_str(), &compressed) != 0)
        fail(path, "LASzip cannot read the file: " + laszipError(s.handle.zip));
    s.handle.reading = true;
    laszip_header* lh = nullptr;
    if (laszip_get_header_pointer(s.handle.zip, &lh) != 0 ||
        laszip_get_point_pointer(s.handle.zip, &s.point) != 0)
        fail(path, "LASzip cannot read the file: " + laszipError(s.handle.zip));
    if ((lh->point_data_format & 0x3F) != h.pointFormat || lh->point_data_record_length != h.recordLength)
        fail(path, "LASzip decodes point format " + std::to_string(lh->point_data_format & 0x3F) + " of " +
                       std::to_string(lh->point_data_record_length) + " bytes where the header says format " +
                       std::to_string(h.pointFormat) + " of " + std::to_string(h.recordLength) + " bytes");
    requireExtraBytesRoom(s.point, h, path);
}

LazDecoder::~LazDecoder() = default;

void LazDecoder::read(uint8_t* out, std::size_t n)
{
    State& s = *state_;
    for (std::size_t i = 0; i < n; ++i) {
        if (laszip_read_point(s.handle.zip) != 0)
            fail(s.path, "the LAZ data is truncated or corrupt at point " + std::to_string(s.decoded + 1) +
                             " of " + std::to_string(s.header.pointCount) +
                             " (LASzip: " + laszipError(s.handle.zip) + ")");
        recordFromPoint(*s.point, s.header, out + i * s.header.recordLength);
        ++s.decoded;
    }
}

struct LazEncoder::State {
    std::string target, name;
    LasHeader header;
    Handle handle;
    laszip_point* point = nullptr;
};

LazEncoder::LazEncoder(const std::string& target, const std::string& name,
                       const std::vector<uint8_t>& preamble, const LasHeader& h,
                       const std::vector<LasVlr>& vlrs)
    : state_(std::make_unique<State>())
{
    State& s = *state_;
    s.target = target;
    s.name = name;
    s.header = h;
    const uint8_t* b = preamble.data();
    laszip_header lh{};
    lh.file_source_ID = load<uint16_t>(b + 4);
    lh.global_encoding = load<uint16_t>(b + kGlobalEncoding);
    lh.project_ID_GUID_data_1 = load<uint32_t>(b + 8);
    lh.project_ID_GUID_data_2 = load<uint16_t>(b + 12);
    lh.project_ID_GUID_data_3 = load<uint16_t>(b + 14);
    std::memcpy(lh.project_ID_GUID_data_4, b + 16, 8);
    lh.version_major = h.versionMajor;
    lh.version_minor = h.versionMinor;
    std::memcpy(lh.system_identifier, b + kSystemId, 32);
    std::memcpy(lh.generating_software, b + kSoftware, 32);
    lh.file_creation_day = h.creationDay;
    lh.file_creation_year = h.creationYear;
    lh.header_size = h.headerSize;
    lh.offset_to_point_data = h.offsetToPointData;
    lh.number_of_variable_length_records = h.vlrCount;
    lh.point_data_format = h.pointFormat;
    lh.point_data_record_length = h.recordLength;
    lh.x_scale_factor = h.scale[0];
    lh.y_scale_factor = h.scale[1];
    lh.z_scale_factor = h.scale[2];
    lh.x_offset = h.offset[0];
    lh.y_offset = h.offset[1];
    lh.z_offset = h.offset[2];
    // Counts and bounds are stored when the records are all written.
    const std::size_t standardHeader = minimumHeaderSize(h.versionMinor);
    std::vector<uint8_t> inHeader(b + standardHeader, b + h.headerSize);
    lh.user_data_in_header_size = static_cast<laszip_U32>(inHeader.size());
    lh.user_data_in_header = inHeader.empty() ? nullptr : inHeader.data();

    std::vector<laszip_vlr> entries(vlrs.size());
    uint64_t vlrEnd = h.headerSize;
    for (std::size_t k = 0; k < vlrs.size(); ++k) {
        const uint8_t* v = b + vlrs[k].payloadOffset - kVlrHeader;
        laszip_vlr& e = entries[k];
        e.reserved = load<uint16_t>(v);
        std::memcpy(e.user_id, v + 2, 16);
        e.record_id = load<uint16_t>(v + 18);
        e.record_length_after_header = load<uint16_t>(v + 20);
        std::memcpy(e.description, v + 22, 32);
        e.data = e.record_length_after_header ? const_cast<uint8_t*>(v + kVlrHeader) : nullptr;
        vlrEnd = vlrs[k].payloadOffset + vlrs[k].payloadSize;
    }
    lh.vlrs = entries.empty() ? nullptr : entries.data();
    std::vector<uint8_t> afterHeader(b + vlrEnd, b + h.offsetToPointData);
    lh.user_data_after_header_size = static_cast<laszip_U32>(afterHeader.size());
    lh.user_data_after_header = afterHeader.empty() ? nullptr : afterHeader.data();

    if (laszip_set_header(s.handle.zip, &lh) != 0)
        fail(name, "LASzip refuses the header: " + laszipError(s.handle.zip));
    // The header says which software made the points, which LASzip only compresses.
    if (laszip_preserve_generating_software(s.handle.zip, 1) != 0)
        fail(name, "LASzip refuses the header: " + laszipError(s.handle.zip));
    if (laszip_open_writer(s.handle.zip, target.c_str(), 1) != 0)
        fail(name, "LASzip cannot write the file: " + laszipError(s.handle.zip));
    s.handle.writing = true;
    if (laszip_get_point_pointer(s.handle.zip, &s.point) != 0)
        fail(name, "LASzip cannot write the file: " + laszipError(s.handle.zip));
    requireExtraBytesRoom(s.point, h, name);
}

LazEncoder::~LazEncoder() = default;

void LazEncoder::write(const uint8_t* records, std::size_t n)
{
    State& s = *state_;
    for (std::size_t i = 0; i < n; ++i) {
        pointFromRecord(records + i * s.header.recordLength, s.header, *s.point);
        if (laszip_write_point(s.handle.zip) != 0)
            fail(s.name, "LASzip cannot write a point: " + laszipError(s.handle.zip));
    }
}

void LazEncoder::finish(const RecordTally& tally)
{
    State& s = *state_;
    s.handle.writing = false;
    if (laszip_close_writer(s.handle.zip) != 0)
        fail(s.name, "LASzip cannot complete the file: " + laszipError(s.handle.zip));
    // LASzip writes the header before the points; their counts and bounds go in afterwards.
    const int fd = ::open(s.target.c_str(), O_RDWR | O_CLOEXEC);
    if (fd < 0)
        fail(s.name, std::string("cannot write the file (") + std::strerror(errno) + ")");
    std::vector<uint8_t> head(s.header.headerSize);
    const bool read = ::pread(fd, head.data(), head.size(), 0) == static_cast<ssize_t>(head.size());
    if (read)
        tally.store(head.data(), s.header);
    const bool written =
        read && ::pwrite(fd, head.data(), head.size(), 0) == static_cast<ssize_t>(head.size());
    const int error = errno;
    const bool closed = ::close(fd) == 0;
    if (!written || !closed)
        fail(s.name, std::string("cannot write the file (") + std::strerror(written ? errno : error) + ")");
}

#endif

} // namespace vx::las::detail
