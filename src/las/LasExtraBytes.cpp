// Adding a float dimension as extra bytes: one 192-byte descriptor in the Extra Bytes VLR and
// four bytes at the end of every point record; the offsets after the records follow.
#include "LasLayout.h"

#include <limits>

namespace vx::las {

using detail::load;
using detail::store;

namespace {

constexpr std::size_t kDescriptorSize = 192;
constexpr std::size_t kDescriptorName = 4, kDescriptorDescription = 160;
constexpr uint8_t kFloatType = 9;

/// Bytes of one extra-bytes dimension of a data type (0: `options` undocumented bytes; 11 to 30:
/// the deprecated pairs and triples of types 1 to 10).
std::size_t dimensionSize(uint8_t type, uint8_t options)
{
    static const std::size_t base[11] = {0, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
    if (type == 0)
        return options;
    if (type <= 10)
        return base[type];
    if (type <= 20)
        return 2 * base[type - 10];
    if (type <= 30)
        return 3 * base[type - 20];
    return 0;
}

std::vector<uint8_t> descriptor(uint8_t type, uint8_t options, const std::string& name,
                                const std::string& description)
{
    std::vector<uint8_t> d(kDescriptorSize, 0);
    d[2] = type;
    d[3] = options;
    for (std::size_t k = 0; k < name.size() && k < 32; ++k)
        d[kDescriptorName + k] = static_cast<uint8_t>(name[k]);
    for (std::size_t k = 0; k < description.size() && k < 32; ++k)
        d[kDescriptorDescription + k] = static_cast<uint8_t>(description[k]);
    return d;
}

struct ExtraBytesRecord {
    bool found = false;
    std::size_t headerAt = 0; ///< offset of the VLR's header
    std::size_t payloadEnd = 0;
    std::size_t described = 0; ///< bytes its descriptors cover
    bool hasNamed = false;     ///< a float dimension of the name exists
    std::size_t namedAt = 0;   ///< its offset inside the record
};

} // namespace

LasFile LasFile::withExtraFloat(const std::string& name, const std::string& description,
                                const std::vector<float>& values) const
{
    if (values.size() != count_)
        detail::fail(name_, "extra dimension " + name + " has " + std::to_string(values.size()) +
                                " values for " + std::to_string(count_) + " points");
    for (const LasVlr& v : vlrs_)
        if (v.extended && v.userId == "LASF_Spec" && v.recordId == 4)
            detail::fail(name_, "extra bytes described by an extended VLR cannot be extended");

    const std::size_t base = formatRecordSize(header_.pointFormat);
    const std::size_t existing = stride_ - base;
    ExtraBytesRecord eb;
    std::size_t at = header_.headerSize;
    for (uint32_t i = 0; i < header_.vlrCount; ++i) {
        const std::size_t length = load<uint16_t>(bytes_.data() + at + 20);
        if (detail::text(bytes_.data() + at + 2, 16) == "LASF_Spec" &&
            load<uint16_t>(bytes_.data() + at + 18) == 4) {
            eb.found = true;
            eb.headerAt = at;
            eb.payloadEnd = at + detail::kVlrHeader + length;
            for (std::size_t d = at + detail::kVlrHeader; d + kDescriptorSize <= eb.payloadEnd;
                 d += kDescriptorSize) {
                const uint8_t type = bytes_[d + 2], options = bytes_[d + 3];
                if (type == kFloatType && detail::text(bytes_.data() + d + kDescriptorName, 32) == name) {
                    eb.hasNamed = true;
                    eb.namedAt = base + eb.described;
                }
                eb.described += dimensionSize(type, options);
            }
        }
        at += detail::kVlrHeader + length;
    }
    const std::size_t vlrEnd = at;

    if (eb.hasNamed && eb.namedAt + 4 <= stride_) {
        std::vector<uint8_t> out = bytes_;
        for (std::size_t i = 0; i < count_; ++i)
            store<float>(out.data() + pointStart_ + i * stride_ + eb.namedAt, values[i]);
        return fromMemory(std::move(out), name_);
    }
    if (eb.described > existing)
        detail::fail(name_, "the extra-bytes descriptors cover " + std::to_string(eb.described) +
                                " bytes but the records hold " + std::to_string(existing));

    std::vector<uint8_t> added;
    for (std::size_t gap = existing - eb.described, k = 0; gap > 0; ++k) {
        const std::size_t part = gap < 255 ? gap : 255;
        const auto d = descriptor(0, static_cast<uint8_t>(part), "undocumented_" + std::to_string(k),
                                  "undocumented extra bytes");
        added.insert(added.end(), d.begin(), d.end());
        gap -= part;
    }
    const auto mine = descriptor(kFloatType, 0, name, description);
    added.insert(added.end(), mine.begin(), mine.end());

    std::vector<uint8_t> vlrHeader;
    std::size_t insertAt = vlrEnd;
    if (eb.found) {
        insertAt = eb.payloadEnd;
        if (eb.payloadEnd - eb.headerAt - detail::kVlrHeader + added.size() >
            std::numeric_limits<uint16_t>::max())
            detail::fail(name_, "the Extra Bytes VLR cannot hold another descriptor");
    } else {
        vlrHeader.assign(detail::kVlrHeader, 0);
        const char user[] = "LASF_Spec", text[] = "Extra Bytes";
        std::memcpy(vlrHeader.data() + 2, user, sizeof user - 1);
        store<uint16_t>(vlrHeader.data() + 18, 4);
        store<uint16_t>(vlrHeader.data() + 20, static_cast<uint16_t>(added.size()));
        std::memcpy(vlrHeader.data() + 22, text, sizeof text - 1);
    }
    const std::size_t grow = vlrHeader.size() + added.size();
    if (stride_ + 4 > std::numeric_limits<uint16_t>::max() ||
        pointStart_ + grow > std::numeric_limits<uint32_t>::max())
        detail::fail(name_, "the point records cannot grow by another dimension");

    const std::size_t pointsEnd = pointStart_ + count_ * stride_;
    std::vector<uint8_t> out;
    out.reserve(bytes_.size() + grow + 4 * count_);
    out.insert(out.end(), bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(insertAt));
    out.insert(out.end(), vlrHeader.begin(), vlrHeader.end());
    out.insert(out.end(), added.begin(), added.end());
    out.insert(out.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(insertAt),
               bytes_.begin() + static_cast<std::ptrdiff_t>(pointStart_));
    for (std::size_t i = 0; i < count_; ++i) {
        const uint8_t* r = record(i);
        out.insert(out.end(), r, r + stride_);
        uint8_t v[4];
        store<float>(v, values[i]);
        out.insert(out.end(), v, v + 4);
    }
    out.insert(out.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(pointsEnd), bytes_.end());

    uint8_t* b = out.data();
    if (eb.found)
        store<uint16_t>(b + eb.headerAt + 20,
                        static_cast<uint16_t>(load<uint16_t>(b + eb.headerAt + 20) + added.size()));
    else
        store<uint32_t>(b + detail::kVlrCount, header_.vlrCount + 1);
    store<uint32_t>(b + detail::kOffsetToPoints, static_cast<uint32_t>(pointStart_ + grow));
    store<uint16_t>(b + detail::kRecordLength, static_cast<uint16_t>(stride_ + 4));
    const uint64_t moved = grow + 4 * count_;
    if (header_.versionMinor >= 3 && load<uint64_t>(b + detail::kWaveformStart) >= pointsEnd)
        store<uint64_t>(b + detail::kWaveformStart, load<uint64_t>(b + detail::kWaveformStart) + moved);
    if (header_.versionMinor >= 4 && header_.evlrCount > 0)
        store<uint64_t>(b + detail::kEvlrStart, header_.evlrStart + moved);
    return fromMemory(std::move(out), name_);
}

} // namespace vx::las
