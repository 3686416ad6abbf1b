// A LAS 1.0-1.4 file held as its own bytes: the header and directories are decoded once, point
// records are read in place, and only classification bits and the creation year are ever patched,
// so a file writes back byte-identical apart from those.
#pragma once

#include <Vexaro.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vx::las {

/// The public header block, decoded.
struct LasHeader {
    uint8_t versionMajor = 1, versionMinor = 2;
    uint8_t pointFormat = 0; ///< 0..10, compression bits stripped
    uint16_t recordLength = 0;
    uint16_t headerSize = 0;
    uint32_t offsetToPointData = 0;
    uint32_t vlrCount = 0;
    uint64_t pointCount = 0; ///< 1.4: the 64-bit field when non-zero, else the legacy one
    double scale[3] = {1, 1, 1}, offset[3] = {0, 0, 0}; ///< x, y, z
    double minBound[3] = {0, 0, 0}, maxBound[3] = {0, 0, 0};
    uint16_t creationDay = 0, creationYear = 0;
    uint64_t evlrStart = 0; ///< 1.4 only, else 0
    uint32_t evlrCount = 0;
    char systemId[33] = {};
    char software[33] = {};
};

/// One variable length record (or extended one) as found in the file; the payload stays in the bytes.
struct LasVlr {
    std::string userId;
    uint16_t recordId = 0;
    std::string description;
    uint64_t payloadSize = 0;
    uint64_t payloadOffset = 0; ///< where the payload starts in the file's bytes
    bool extended = false;      ///< an EVLR after the points
};

/// A point to append to a file made by LasFile::create().
struct NewPoint {
    double x = 0, y = 0, z = 0;
    uint16_t intensity = 0;
    int returnNumber = 1, numberOfReturns = 1, classification = 0;
    double gpsTime = 0; ///< ignored by formats 0 and 2
};

/// Point record sizes of formats 0..10 (the minimum record length).
uint16_t formatRecordSize(uint8_t pointFormat);

class LasFile {
public:
    /// Reads a whole file; throws vexaro::LasError naming the file and the problem. A LAZ file
    /// (LASzip's compression bits in the point format) is decoded into the equivalent uncompressed
    /// file (RecordReader::preamble() and the records); it must be named .laz, in any case, and
    /// LAZ support must be built in (lazAvailable()). A .laz name holding uncompressed LAS reads
    /// as LAS.
    static LasFile read(const std::string& path);
    /// The same checks on bytes already in memory; `name` stands for the file in messages.
    /// LAZ-compressed bytes are refused: only read() decodes them.
    static LasFile fromMemory(std::vector<uint8_t> bytes, const std::string& name);
    /// An empty file of LAS 1.versionMinor and the given point format, without VLRs.
    static LasFile create(uint8_t versionMinor, uint8_t pointFormat, const double scale[3],
                          const double offset[3]);

    /// Appends a point to a created file: coordinates rounded to the nearest raw value; counts,
    /// bounds and return histograms follow. Throws when a value does not fit its field.
    void addPoint(const NewPoint& p);
    /// Appends a VLR to the VLRs of a created file, before its point records, and updates the
    /// header's VLR count and point offset. The user id holds at most 16 bytes, the description
    /// 32, the payload 65535. Throws vexaro::LasError otherwise, or for a file that was read.
    void addVlr(const std::string& userId, uint16_t recordId, const std::string& description,
                const std::vector<uint8_t>& payload);
    /// Reserves room for this many points in a created file.
    void reserve(std::size_t points);
    /// A copy of this file with a float dimension (extra-bytes data type 9) named `name` added at
    /// the end of every point record, record i holding values[i], and described in the Extra Bytes
    /// VLR (user "LASF_Spec", record 4), which is extended or added; extra bytes the file already
    /// has without a description get "undocumented" (data type 0) descriptors first. When the file
    /// already has a float dimension of that name, the copy keeps its layout and only those values
    /// change. Throws when values does not hold one value a record or the layout cannot grow.
    LasFile withExtraFloat(const std::string& name, const std::string& description,
                           const std::vector<float>& values) const;
    /// Writes the bytes as held, or a LAZ file of the same header, VLRs and records when the path
    /// ends in ".laz" (any case; without EVLRs, and throwing when LAZ support is not built in).
    /// The file is written under a temporary name in the same folder and renamed when complete:
    /// on failure nothing is left under either name. Throws vexaro::LasError naming the path.
    void write(const std::string& path) const;

    const LasHeader& header() const { return header_; }
    /// VLRs, then EVLRs.
    const std::vector<LasVlr>& vlrs() const { return vlrs_; }
    /// The payload of vlrs()[k]; throws std::out_of_range when k is past the last entry.
    std::vector<uint8_t> vlrPayload(std::size_t k) const;
    /// The whole file as it would be written.
    const std::vector<uint8_t>& bytes() const { return bytes_; }
    const std::string& name() const { return name_; }
    /// Number of point records held (the header's count: the reader refuses files holding fewer).
    std::size_t size() const { return count_; }

    // Record accessors; i < size() is the caller's duty.
    int32_t rawX(std::size_t i) const;
    int32_t rawY(std::size_t i) const;
    int32_t rawZ(std::size_t i) const;
    double x(std::size_t i) const; ///< rawX * scale + offset
    double y(std::size_t i) const;
    double z(std::size_t i) const;
    uint16_t intensity(std::size_t i) const;
    int returnNumber(std::size_t i) const;
    int numberOfReturns(std::size_t i) const;
    int classification(std::size_t i) const;
    double gpsTime(std::size_t i) const; ///< 0 in formats 0 and 2

    /// Rewrites only the class bits of record i; throws when the format's field cannot hold cls
    /// or i is past the last record.
    void setClassification(std::size_t i, int cls);
    void setCreationYear(uint16_t year);

private:
    LasFile() = default;
    const uint8_t* record(std::size_t i) const { return bytes_.data() + pointStart_ + i * stride_; }
    uint8_t* record(std::size_t i) { return bytes_.data() + pointStart_ + i * stride_; }
    void checkClassFits(int cls) const;
    void storeCountsAndBounds();

    std::vector<uint8_t> bytes_;
    LasHeader header_;
    std::vector<LasVlr> vlrs_;
    std::string name_;
    std::size_t count_ = 0;
    std::size_t pointStart_ = 0;
    std::size_t stride_ = 0;
    bool wideFormat_ = false; ///< formats 6-10: 4-bit returns, full class byte
    bool created_ = false;
};

} // namespace vx::las
