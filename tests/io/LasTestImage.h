// LAS files assembled byte by byte for the codec tests, independently of the codec's own writer,
// so that reading is checked against a second encoding of the format.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lastest {

struct ImageVlr {
    std::string userId;
    uint16_t recordId = 0;
    std::string description;
    std::vector<uint8_t> payload;
    uint16_t reserved = 0xAABB; ///< what LAStools writes; readers must not care
};

struct ImagePoint {
    int32_t x = 0, y = 0, z = 0;
    uint16_t intensity = 0;
    int returnNumber = 1, numberOfReturns = 1;
    int classification = 0;
    uint8_t flags = 0; ///< formats 0-5: the three bits above the class; 6-10: the whole flags byte
    double gpsTime = 0;
};

struct ImageLayout {
    uint8_t minor = 2;
    uint8_t format = 3;
    uint16_t extraBytes = 0;      ///< per record, after the format's fields
    uint16_t headerPadding = 0;   ///< bytes past the version's header size
    uint32_t gapBeforePoints = 0; ///< unclaimed bytes between the VLRs and the points
    bool startSignature = true;   ///< LAS 1.0 only
    bool legacyCountIn14 = false; ///< 1.4: fill the 32-bit count as well
    double scale[3] = {0.01, 0.01, 0.01};
    double offset[3] = {500000, 5000000, 0};
    std::vector<ImageVlr> vlrs, evlrs;
    std::vector<ImagePoint> points;
};

/// The bytes of a LAS file as described; every byte the description leaves open gets a
/// position-dependent filler so that round trips show whether it was kept.
std::vector<uint8_t> buildImage(const ImageLayout& layout);

/// Standard record size of formats 0..10, and the GPS time offset (0: none), as tabulated.
int recordSize(int format);
int gpsOffset(int format);
/// Offset of the class inside a record and the bits that hold it.
int classOffset(int format);
uint8_t classMask(int format);

/// A small varied set of points for the given format.
std::vector<ImagePoint> samplePoints(int format, int n);

void putU16(std::vector<uint8_t>& b, std::size_t at, uint16_t v);
void putU32(std::vector<uint8_t>& b, std::size_t at, uint32_t v);
void putU64(std::vector<uint8_t>& b, std::size_t at, uint64_t v);
void putF64(std::vector<uint8_t>& b, std::size_t at, double v);

/// A fresh path under the test temporary directory.
std::string tempPath(const std::string& name);
std::vector<uint8_t> fileBytes(const std::string& path);
void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes);

} // namespace lastest
