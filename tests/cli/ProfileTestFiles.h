// Small LAS files for the profile tests: regular grids of known spacing, and coordinate system
// records spliced into a created file.
#pragma once

#include "las/LasFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace profiletest {

/// An empty LAS 1.4 format 6 file with 1 mm resolution around (500000, 5000000, 0).
inline vx::las::LasFile emptyFile()
{
    const double scale[3] = {0.001, 0.001, 0.001}, offset[3] = {500000, 5000000, 0};
    return vx::las::LasFile::create(4, 6, scale, offset);
}

/// `side` x `side` pulses `spacing` apart from (500000, 5000000), each of `returns` returns
/// stacked 1 unit apart below z = 10 + slope * column.
inline vx::las::LasFile gridFile(int side, double spacing, int returns = 1, double slope = 0)
{
    auto f = emptyFile();
    f.reserve(static_cast<std::size_t>(side) * side * returns);
    for (int i = 0; i < side; ++i)
        for (int j = 0; j < side; ++j)
            for (int r = 1; r <= returns; ++r) {
                vx::las::NewPoint p;
                p.x = 500000 + i * spacing;
                p.y = 5000000 + j * spacing;
                p.z = 10 + slope * i - (r - 1);
                p.returnNumber = r;
                p.numberOfReturns = returns;
                f.addPoint(p);
            }
    return f;
}

inline void addPoint(vx::las::LasFile& f, double x, double y, double z)
{
    vx::las::NewPoint p;
    p.x = x, p.y = y, p.z = z;
    f.addPoint(p);
}

/// The file with one VLR more, placed after the header, read back through the codec.
inline vx::las::LasFile withVlr(const vx::las::LasFile& f, const std::string& userId, uint16_t recordId,
                                const std::vector<uint8_t>& payload)
{
    std::vector<uint8_t> b = f.bytes();
    std::vector<uint8_t> vlr(54, 0);
    for (std::size_t k = 0; k < userId.size() && k < 16; ++k)
        vlr[2 + k] = static_cast<uint8_t>(userId[k]);
    vlr[18] = static_cast<uint8_t>(recordId & 0xFF);
    vlr[19] = static_cast<uint8_t>(recordId >> 8);
    vlr[20] = static_cast<uint8_t>(payload.size() & 0xFF);
    vlr[21] = static_cast<uint8_t>(payload.size() >> 8);
    vlr.insert(vlr.end(), payload.begin(), payload.end());
    const std::size_t at = f.header().offsetToPointData;
    b.insert(b.begin() + static_cast<std::ptrdiff_t>(at), vlr.begin(), vlr.end());
    auto putU32 = [&](std::size_t pos, uint32_t v) {
        for (int k = 0; k < 4; ++k)
            b[pos + k] = static_cast<uint8_t>(v >> (8 * k));
    };
    putU32(96, static_cast<uint32_t>(at + vlr.size()));
    putU32(100, f.header().vlrCount + 1);
    return vx::las::LasFile::fromMemory(std::move(b), f.name());
}

inline std::vector<uint8_t> textPayload(const std::string& text)
{
    std::vector<uint8_t> p(text.begin(), text.end());
    p.push_back(0);
    return p;
}

/// A GeoKeyDirectoryTag payload holding the (key, value) pairs as inline shorts.
inline std::vector<uint8_t> geoKeys(const std::vector<std::pair<uint16_t, uint16_t>>& keys)
{
    std::vector<uint16_t> words = {1, 1, 0, static_cast<uint16_t>(keys.size())};
    for (const auto& [id, value] : keys)
        words.insert(words.end(), {id, 0, 1, value});
    std::vector<uint8_t> p;
    for (uint16_t w : words) {
        p.push_back(static_cast<uint8_t>(w & 0xFF));
        p.push_back(static_cast<uint8_t>(w >> 8));
    }
    return p;
}

} // namespace profiletest
