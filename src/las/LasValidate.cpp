// Checking the file's layout against its size before anything is read from it: every directory
// entry and every point record a header promises must lie inside the bytes, so that a lying
// header can cause neither an out-of-bounds read nor an allocation of its own making.
#include "LasLayout.h"

namespace vx::las::detail {

namespace {

std::string ordinal(uint64_t k, uint64_t count)
{
    return std::to_string(k + 1) + " of " + std::to_string(count);
}

/// "(user id record id)" for a message; bytes that are not printable ASCII show as '?'.
std::string entryName(const LasVlr& v)
{
    std::string id = v.userId;
    for (char& c : id)
        if (c < 0x20 || c > 0x7e)
            c = '?';
    return " (" + id + " " + std::to_string(v.recordId) + ")";
}

LasVlr vlrAt(const uint8_t* p, bool extended)
{
    LasVlr v;
    v.userId = text(p + 2, 16);
    v.recordId = load<uint16_t>(p + 18);
    v.payloadSize = extended ? load<uint64_t>(p + 20) : load<uint16_t>(p + 20);
    v.description = text(p + (extended ? 28 : 22), 32);
    v.extended = extended;
    return v;
}

void walkVlrs(const uint8_t* data, uint64_t size, const LasHeader& h, const std::string& name,
              std::vector<LasVlr>& out)
{
    const bool offsetInside = h.offsetToPointData <= size;
    // VLRs belong before the points; a file cut short ends them earlier.
    const uint64_t limit = offsetInside ? h.offsetToPointData : size;
    const std::string where = offsetInside
                                  ? "the offset to point data (" + std::to_string(h.offsetToPointData) + ")"
                                  : "the end of the file (" + std::to_string(size) + " bytes)";
    uint64_t pos = h.headerSize;
    for (uint64_t k = 0; k < h.vlrCount; ++k) {
        if (limit < pos || limit - pos < kVlrHeader)
            fail(name, "VLR " + ordinal(k, h.vlrCount) + " runs past " + where);
        LasVlr v = vlrAt(data + pos, false);
        pos += kVlrHeader;
        v.payloadOffset = pos;
        if (limit - pos < v.payloadSize)
            fail(name, "VLR " + ordinal(k, h.vlrCount) + entryName(v) + " runs past " + where);
        pos += v.payloadSize;
        out.push_back(std::move(v));
    }
}

void checkEvlrStart(uint64_t size, const LasHeader& h, const std::string& name)
{
    if (h.evlrStart > size)
        fail(name, "start of the first EVLR (" + std::to_string(h.evlrStart) +
                       ") is past the end of the file (" + std::to_string(size) + " bytes)");
    if (h.evlrStart < h.offsetToPointData)
        fail(name, "start of the first EVLR (" + std::to_string(h.evlrStart) +
                       ") lies before the point data (offset " + std::to_string(h.offsetToPointData) + ")");
}

void walkEvlrs(const uint8_t* data, uint64_t size, const LasHeader& h, const std::string& name,
               std::vector<LasVlr>& out)
{
    uint64_t pos = h.evlrStart;
    for (uint64_t k = 0; k < h.evlrCount; ++k) {
        if (size - pos < kEvlrHeader)
            fail(name, "EVLR " + ordinal(k, h.evlrCount) + " runs past the end of the file (" +
                           std::to_string(size) + " bytes)");
        LasVlr v = vlrAt(data + pos, true);
        pos += kEvlrHeader;
        v.payloadOffset = pos;
        if (size - pos < v.payloadSize)
            fail(name, "EVLR " + ordinal(k, h.evlrCount) + entryName(v) + " runs past the end of the file (" +
                           std::to_string(size) + " bytes)");
        pos += v.payloadSize;
        out.push_back(std::move(v));
    }
}

} // namespace

std::vector<LasVlr> checkLayout(const uint8_t* data, uint64_t held, uint64_t size, const LasHeader& h,
                                const std::string& name, PointData points)
{
    if (h.offsetToPointData < h.headerSize)
        fail(name, "offset to point data (" + std::to_string(h.offsetToPointData) +
                       ") lies inside the header (" + std::to_string(h.headerSize) + " bytes)");

    std::vector<LasVlr> entries;
    walkVlrs(data, size, h, name, entries);
    bool laszipVlr = false;
    for (const LasVlr& v : entries)
        laszipVlr = laszipVlr || v.userId == kLaszipUserId;
    const bool compressed = points == PointData::Compressed;
    if (laszipVlr && !compressed)
        failCompressed(name);
    if (compressed && !laszipVlr)
        fail(name, "the point format is marked LAZ-compressed but the file has no LASzip VLR (\"" +
                       std::string(kLaszipUserId) + "\")");
    if (h.offsetToPointData > size)
        fail(name, "offset to point data (" + std::to_string(h.offsetToPointData) +
                       ") is past the end of the file (" + std::to_string(size) + " bytes)");
    if (h.evlrCount > 0) {
        checkEvlrStart(size, h, name);
        if (held == size)
            walkEvlrs(data, size, h, name, entries);
    }
    if (points != PointData::Records)
        return entries;

    // Points end where the EVLRs begin; the 1.3 waveform block after them is not ours to bound.
    const uint64_t end = h.evlrCount > 0 ? h.evlrStart : size;
    const uint64_t available = (end - h.offsetToPointData) / h.recordLength;
    if (h.pointCount > available)
        fail(name, "header declares " + std::to_string(h.pointCount) + " points but the file holds only " +
                       std::to_string(available));
    return entries;
}

} // namespace vx::las::detail
