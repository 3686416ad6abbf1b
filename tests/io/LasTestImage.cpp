#include "LasTestImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace lastest {

namespace {

uint8_t filler(std::size_t pos)
{
    return static_cast<uint8_t>((pos * 31 + 7) & 0xFF);
}

void putBytes(std::vector<uint8_t>& b, std::size_t at, uint64_t v, int n)
{
    for (int k = 0; k < n; ++k)
        b[at + k] = static_cast<uint8_t>(v >> (8 * k));
}

void putText(std::vector<uint8_t>& b, std::size_t at, const std::string& s, std::size_t n)
{
    for (std::size_t k = 0; k < n; ++k)
        b[at + k] = k < s.size() ? static_cast<uint8_t>(s[k]) : 0;
}

int headerSizeOf(int minor)
{
    return minor >= 4 ? 375 : minor == 3 ? 235 : 227;
}

} // namespace

void putU16(std::vector<uint8_t>& b, std::size_t at, uint16_t v)
{
    putBytes(b, at, v, 2);
}
void putU32(std::vector<uint8_t>& b, std::size_t at, uint32_t v)
{
    putBytes(b, at, v, 4);
}
void putU64(std::vector<uint8_t>& b, std::size_t at, uint64_t v)
{
    putBytes(b, at, v, 8);
}
void putF64(std::vector<uint8_t>& b, std::size_t at, double v)
{
    uint64_t bits;
    std::memcpy(&bits, &v, 8);
    putBytes(b, at, bits, 8);
}

int recordSize(int format)
{
    static const int sizes[11] = {20, 28, 26, 34, 57, 63, 30, 36, 38, 59, 67};
    return sizes[format];
}

int gpsOffset(int format)
{
    static const int offsets[11] = {0, 20, 0, 20, 20, 20, 22, 22, 22, 22, 22};
    return offsets[format];
}

int classOffset(int format)
{
    return format >= 6 ? 16 : 15;
}
uint8_t classMask(int format)
{
    return format >= 6 ? 0xFF : 0x1F;
}

std::vector<ImagePoint> samplePoints(int format, int n)
{
    std::vector<ImagePoint> pts;
    const int maxReturns = format >= 6 ? 15 : 7;
    for (int i = 0; i < n; ++i) {
        ImagePoint p;
        p.x = i * 137 - 5000;
        p.y = 100 - i * 251;
        p.z = i * 13 - 7;
        p.intensity = static_cast<uint16_t>((i * 1009) % 65536);
        p.numberOfReturns = 1 + i % maxReturns;
        p.returnNumber = 1 + (i * 3) % p.numberOfReturns;
        p.classification = (i * 7) % (format >= 6 ? 256 : 32);
        p.flags = static_cast<uint8_t>(format >= 6 ? (i * 37) & 0xFF : i % 8);
        p.gpsTime = 1000.5 + i * 0.25;
        pts.push_back(p);
    }
    return pts;
}

std::vector<uint8_t> buildImage(const ImageLayout& s)
{
    const std::size_t headerSize = headerSizeOf(s.minor) + s.headerPadding;
    std::size_t vlrBytes = 0;
    for (const auto& v : s.vlrs)
        vlrBytes += 54 + v.payload.size();
    const std::size_t signature = (s.minor == 0 && s.startSignature) ? 2 : 0;
    const std::size_t offset = headerSize + vlrBytes + signature + s.gapBeforePoints;
    const std::size_t rec = recordSize(s.format) + s.extraBytes;
    const std::size_t n = s.points.size();
    const std::size_t evlrStart = offset + n * rec;
    std::size_t evlrBytes = 0;
    for (const auto& v : s.evlrs)
        evlrBytes += 60 + v.payload.size();

    std::vector<uint8_t> b(evlrStart + evlrBytes);
    for (std::size_t k = 0; k < b.size(); ++k)
        b[k] = filler(k);

    // Public header block.
    putText(b, 0, "LASF", 4);
    putU32(b, 4, s.minor == 0 ? 0 : 7);
    putU16(b, 6, s.minor >= 4 && s.format >= 6 ? 0x11 : s.minor >= 2 ? 0x01 : 0);
    b[24] = 1;
    b[25] = s.minor;
    putText(b, 26, "SYSTEM IDENTIFIER FILLING ALL 32", 32);
    putText(b, 58, "lastest", 32);
    putU16(b, 90, 45);
    putU16(b, 92, 2021);
    putU16(b, 94, static_cast<uint16_t>(headerSize));
    putU32(b, 96, static_cast<uint32_t>(offset));
    putU32(b, 100, static_cast<uint32_t>(s.vlrs.size()));
    b[104] = s.format;
    putU16(b, 105, static_cast<uint16_t>(rec));
    const bool legacy = s.minor < 4 || s.legacyCountIn14;
    putU32(b, 107, legacy ? static_cast<uint32_t>(n) : 0);
    uint64_t byReturn[15] = {};
    for (const auto& p : s.points)
        if (p.returnNumber >= 1 && p.returnNumber <= 15)
            ++byReturn[p.returnNumber - 1];
    for (int r = 0; r < 5; ++r)
        putU32(b, 111 + 4 * r, legacy ? static_cast<uint32_t>(byReturn[r]) : 0);
    double lo[3] = {0, 0, 0}, hi[3] = {0, 0, 0};
    for (std::size_t i = 0; i < n; ++i) {
        const int32_t raw[3] = {s.points[i].x, s.points[i].y, s.points[i].z};
        for (int a = 0; a < 3; ++a) {
            const double v = raw[a] * s.scale[a] + s.offset[a];
            lo[a] = i == 0 ? v : std::min(lo[a], v);
            hi[a] = i == 0 ? v : std::max(hi[a], v);
        }
    }
    for (int a = 0; a < 3; ++a) {
        putF64(b, 131 + 8 * a, s.scale[a]);
        putF64(b, 155 + 8 * a, s.offset[a]);
        putF64(b, 179 + 16 * a, hi[a]);
        putF64(b, 187 + 16 * a, lo[a]);
    }
    if (s.minor >= 3)
        putU64(b, 227, 0);
    if (s.minor >= 4) {
        putU64(b, 235, s.evlrs.empty() ? 0 : evlrStart);
        putU32(b, 243, static_cast<uint32_t>(s.evlrs.size()));
        putU64(b, 247, n);
        for (int r = 0; r < 15; ++r)
            putU64(b, 255 + 8 * r, byReturn[r]);
    }

    std::size_t pos = headerSize;
    for (const auto& v : s.vlrs) {
        putU16(b, pos, v.reserved);
        putText(b, pos + 2, v.userId, 16);
        putU16(b, pos + 18, v.recordId);
        putU16(b, pos + 20, static_cast<uint16_t>(v.payload.size()));
        putText(b, pos + 22, v.description, 32);
        std::copy(v.payload.begin(), v.payload.end(), b.begin() + pos + 54);
        pos += 54 + v.payload.size();
    }
    if (signature) {
        b[pos] = 0xDD;
        b[pos + 1] = 0xCC;
    }

    for (std::size_t i = 0; i < n; ++i) {
        const ImagePoint& p = s.points[i];
        const std::size_t r = offset + i * rec;
        putU32(b, r, static_cast<uint32_t>(p.x));
        putU32(b, r + 4, static_cast<uint32_t>(p.y));
        putU32(b, r + 8, static_cast<uint32_t>(p.z));
        putU16(b, r + 12, p.intensity);
        if (s.format >= 6) {
            b[r + 14] = static_cast<uint8_t>(p.returnNumber | (p.numberOfReturns << 4));
            b[r + 15] = p.flags;
            b[r + 16] = static_cast<uint8_t>(p.classification);
        } else {
            // Scan direction and edge bits keep their filler: decoding must mask them off.
            b[r + 14] = static_cast<uint8_t>(p.returnNumber | (p.numberOfReturns << 3) | (b[r + 14] & 0xC0));
            b[r + 15] = static_cast<uint8_t>(p.classification | (p.flags << 5));
        }
        if (gpsOffset(s.format))
            putF64(b, r + gpsOffset(s.format), p.gpsTime);
    }

    pos = evlrStart;
    for (const auto& v : s.evlrs) {
        putU16(b, pos, 0);
        putText(b, pos + 2, v.userId, 16);
        putU16(b, pos + 18, v.recordId);
        putU64(b, pos + 20, v.payload.size());
        putText(b, pos + 28, v.description, 32);
        std::copy(v.payload.begin(), v.payload.end(), b.begin() + pos + 60);
        pos += 60 + v.payload.size();
    }
    return b;
}

std::string tempPath(const std::string& name)
{
    static std::atomic<int> serial{0};
    return ::testing::TempDir() + "vexaro_las_" + std::to_string(::getpid()) + "_" +
           std::to_string(serial++) + "_" + name;
}

std::vector<uint8_t> fileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

} // namespace lastest
