// Header counts and bounds gathered from point records, for writers that stream the records and
// fill the header once they are all known.
#include "LasLayout.h"

#include <limits>

namespace vx::las::detail {

void RecordTally::add(const LasHeader& h, const uint8_t* records, std::size_t n)
{
    const bool wide = h.pointFormat >= 6;
    for (std::size_t i = 0; i < n; ++i) {
        const uint8_t* r = records + i * h.recordLength;
        for (int a = 0; a < 3; ++a) {
            const double v = load<int32_t>(r + 4 * a) * h.scale[a] + h.offset[a];
            if (count == 0 || v < minBound[a])
                minBound[a] = v;
            if (count == 0 || v > maxBound[a])
                maxBound[a] = v;
        }
        const int rn = wide ? (r[14] & 0x0F) : (r[14] & 0x07);
        if (rn >= 1)
            ++byReturn[rn - 1];
        ++count;
    }
}

void RecordTally::store(uint8_t* b, const LasHeader& h) const
{
    const bool v14 = h.versionMinor >= 4;
    // 1.4 repeats the count in the legacy fields only where a 1.3 reader could use it.
    const bool legacy = (!v14 || h.pointFormat < 6) && count <= std::numeric_limits<uint32_t>::max();
    detail::store<uint32_t>(b + kLegacyCount, legacy ? static_cast<uint32_t>(count) : 0);
    for (int k = 0; k < 5; ++k) {
        const bool fits = legacy && byReturn[k] <= std::numeric_limits<uint32_t>::max();
        detail::store<uint32_t>(b + kLegacyByReturn + 4 * k, fits ? static_cast<uint32_t>(byReturn[k]) : 0);
    }
    if (v14) {
        detail::store<uint64_t>(b + kCount64, count);
        for (int k = 0; k < 15; ++k)
            detail::store<uint64_t>(b + kByReturn64 + 8 * k, byReturn[k]);
    }
    for (int a = 0; a < 3; ++a) {
        detail::store<double>(b + kBounds + 16 * a, maxBound[a]);
        detail::store<double>(b + kBounds + 16 * a + 8, minBound[a]);
    }
}

} // namespace vx::las::detail
