// Building a new file in memory: a bare header for the chosen version and format, then point
// records appended one by one with the header's counts, bounds and histograms kept current.
#include "LasLayout.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <sstream>

namespace vx::las {

using detail::store;

namespace {

const char* const kNewFileName = "new LAS file";

std::string shown(double v)
{
    std::ostringstream s;
    s.precision(15);
    s << v;
    return s.str();
}

void putText(uint8_t* p, const char* s, std::size_t n)
{
    for (std::size_t k = 0; k < n && s[k]; ++k)
        p[k] = static_cast<uint8_t>(s[k]);
}

} // namespace

LasFile LasFile::create(uint8_t versionMinor, uint8_t pointFormat, const double scale[3],
                        const double offset[3])
{
    if (versionMinor > 4)
        detail::fail(kNewFileName, "unsupported LAS version 1." + std::to_string(versionMinor) +
                                       " (versions 1.0 to 1.4 can be written)");
    if (pointFormat > 10)
        detail::fail(kNewFileName,
                     "unknown point format " + std::to_string(pointFormat) + " (formats 0 to 10 exist)");
    for (int a = 0; a < 3; ++a)
        if (!std::isfinite(scale[a]) || scale[a] == 0 || !std::isfinite(offset[a]))
            detail::fail(kNewFileName, "scale factors must be finite and non-zero, offsets finite");

    const std::size_t headerSize = detail::minimumHeaderSize(versionMinor);
    // LAS 1.0 puts a two-byte start signature before the points, inside the point offset.
    const std::size_t start = headerSize + (versionMinor == 0 ? 2 : 0);
    LasFile f;
    f.name_ = kNewFileName;
    f.created_ = true;
    f.bytes_.assign(start, 0);
    uint8_t* b = f.bytes_.data();
    std::memcpy(b, "LASF", 4);
    // Formats 6-10 require a WKT coordinate system flag in 1.4.
    if (versionMinor >= 4 && pointFormat >= 6)
        store<uint16_t>(b + detail::kGlobalEncoding, 0x10);
    b[detail::kVersionMajor] = 1;
    b[detail::kVersionMinor] = versionMinor;
    putText(b + detail::kSystemId, "OTHER", 32);
    putText(b + detail::kSoftware, "Vexaro", 32);
    store<uint16_t>(b + detail::kHeaderSize, static_cast<uint16_t>(headerSize));
    store<uint32_t>(b + detail::kOffsetToPoints, static_cast<uint32_t>(start));
    b[detail::kPointFormat] = pointFormat;
    store<uint16_t>(b + detail::kRecordLength, formatRecordSize(pointFormat));
    for (int a = 0; a < 3; ++a) {
        store<double>(b + detail::kScale + 8 * a, scale[a]);
        store<double>(b + detail::kOffset + 8 * a, offset[a]);
    }
    if (versionMinor == 0) {
        b[start - 2] = 0xDD;
        b[start - 1] = 0xCC;
    }
    f.header_ = detail::parseHeader(f.bytes_, f.name_);
    f.pointStart_ = start;
    f.stride_ = f.header_.recordLength;
    f.wideFormat_ = pointFormat >= 6;
    return f;
}

void LasFile::addVlr(const std::string& userId, uint16_t recordId, const std::string& description,
                     const std::vector<uint8_t>& payload)
{
    if (!created_)
        detail::fail(name_, "VLRs can only be added to a file made by LasFile::create()");
    if (userId.size() > 16 || description.size() > 32)
        detail::fail(name_, "a VLR's user id holds at most 16 bytes and its description 32 ('" + userId +
                                "', '" + description + "')");
    if (payload.size() > std::numeric_limits<uint16_t>::max())
        detail::fail(name_, "a VLR holds at most 65535 bytes, not " + std::to_string(payload.size()));
    if (static_cast<uint64_t>(pointStart_) + detail::kVlrHeader + payload.size() >
        std::numeric_limits<uint32_t>::max())
        detail::fail(name_, "the VLRs do not fit before the points");

    std::vector<uint8_t> entry(detail::kVlrHeader + payload.size(), 0);
    putText(entry.data() + 2, userId.c_str(), 16);
    store<uint16_t>(entry.data() + 18, recordId);
    store<uint16_t>(entry.data() + 20, static_cast<uint16_t>(payload.size()));
    putText(entry.data() + 22, description.c_str(), 32);
    std::copy(payload.begin(), payload.end(), entry.begin() + detail::kVlrHeader);
    // The VLRs end where LAS 1.0's start signature or the points begin.
    const std::size_t end = pointStart_ - (header_.versionMinor == 0 ? 2 : 0);
    bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(end), entry.begin(), entry.end());

    pointStart_ += entry.size();
    ++header_.vlrCount;
    header_.offsetToPointData = static_cast<uint32_t>(pointStart_);
    store<uint32_t>(bytes_.data() + detail::kVlrCount, header_.vlrCount);
    store<uint32_t>(bytes_.data() + detail::kOffsetToPoints, header_.offsetToPointData);
    LasVlr v;
    v.userId = userId;
    v.recordId = recordId;
    v.description = description;
    v.payloadSize = payload.size();
    vlrs_.push_back(v);
}

void LasFile::reserve(std::size_t points)
{
    if (created_)
        bytes_.reserve(pointStart_ + points * stride_);
}

void LasFile::addPoint(const NewPoint& p)
{
    if (!created_)
        detail::fail(name_, "points can only be added to a file made by LasFile::create()");
    const int top = wideFormat_ ? 15 : 7;
    if (p.returnNumber < 0 || p.returnNumber > top || p.numberOfReturns < 0 || p.numberOfReturns > top)
        detail::fail(name_, "return " + std::to_string(p.returnNumber) + " of " +
                                std::to_string(p.numberOfReturns) +
                                " does not fit the return fields of point format " +
                                std::to_string(header_.pointFormat) + " (0 to " + std::to_string(top) + ")");
    checkClassFits(p.classification);
    if (header_.versionMinor < 4 && count_ >= std::numeric_limits<uint32_t>::max())
        detail::fail(name_, "a LAS 1." + std::to_string(header_.versionMinor) + " file holds at most " +
                                std::to_string(std::numeric_limits<uint32_t>::max()) + " points");

    const double given[3] = {p.x, p.y, p.z};
    int32_t raw[3];
    double stored[3];
    for (int a = 0; a < 3; ++a) {
        const double q = std::round((given[a] - header_.offset[a]) / header_.scale[a]);
        if (!(q >= std::numeric_limits<int32_t>::min() && q <= std::numeric_limits<int32_t>::max()))
            detail::fail(name_, std::string("coordinate ") + "xyz"[a] + " = " + shown(given[a]) +
                                    " does not fit a 32-bit record with scale " + shown(header_.scale[a]) +
                                    " and offset " + shown(header_.offset[a]) +
                                    "; choose another offset or scale");
        raw[a] = static_cast<int32_t>(q);
        stored[a] = raw[a] * header_.scale[a] + header_.offset[a];
    }

    const std::size_t at = bytes_.size();
    bytes_.resize(at + stride_, 0);
    uint8_t* r = bytes_.data() + at;
    for (int a = 0; a < 3; ++a)
        store<int32_t>(r + 4 * a, raw[a]);
    store<uint16_t>(r + 12, p.intensity);
    if (wideFormat_) {
        r[14] = static_cast<uint8_t>(p.returnNumber | (p.numberOfReturns << 4));
        r[16] = static_cast<uint8_t>(p.classification);
    } else {
        r[14] = static_cast<uint8_t>(p.returnNumber | (p.numberOfReturns << 3));
        r[15] = static_cast<uint8_t>(p.classification);
    }
    if (const std::size_t t = detail::gpsTimeOffset(header_.pointFormat))
        store<double>(r + t, p.gpsTime);

    for (int a = 0; a < 3; ++a) {
        if (count_ == 0 || stored[a] < header_.minBound[a])
            header_.minBound[a] = stored[a];
        if (count_ == 0 || stored[a] > header_.maxBound[a])
            header_.maxBound[a] = stored[a];
    }
    ++count_;
    header_.pointCount = count_;
    uint8_t* b = bytes_.data();
    const int rn = p.returnNumber;
    if (rn >= 1 && rn <= 5) {
        uint8_t* slot = b + detail::kLegacyByReturn + 4 * (rn - 1);
        store<uint32_t>(slot, detail::load<uint32_t>(slot) + 1);
    }
    if (header_.versionMinor >= 4 && rn >= 1) {
        uint8_t* slot = b + detail::kByReturn64 + 8 * (rn - 1);
        store<uint64_t>(slot, detail::load<uint64_t>(slot) + 1);
    }
    storeCountsAndBounds();
}

void LasFile::storeCountsAndBounds()
{
    uint8_t* b = bytes_.data();
    const bool v14 = header_.versionMinor >= 4;
    // 1.4 repeats the count in the legacy fields only where a 1.3 reader could use it.
    const bool legacy = (!v14 || header_.pointFormat < 6) && count_ <= std::numeric_limits<uint32_t>::max();
    store<uint32_t>(b + detail::kLegacyCount, legacy ? static_cast<uint32_t>(count_) : 0);
    if (!legacy)
        std::memset(b + detail::kLegacyByReturn, 0, 20);
    if (v14)
        store<uint64_t>(b + detail::kCount64, count_);
    for (int a = 0; a < 3; ++a) {
        store<double>(b + detail::kBounds + 16 * a, header_.maxBound[a]);
        store<double>(b + detail::kBounds + 16 * a + 8, header_.minBound[a]);
    }
}

} // namespace vx::las
