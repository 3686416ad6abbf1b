// Point records streamed in file order, in batches, from and to LAS and LAZ files, without ever
// holding a whole file in memory.
#pragma once

#include "las/LasFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vx::las {

/// Whether LAZ support is built in.
bool lazAvailable();

/// Point records of a LAS or LAZ file read in file order, in batches, without holding the file.
class RecordReader {
public:
    explicit RecordReader(const std::string& path); ///< throws vexaro::LasError naming the file
    ~RecordReader();
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    /// The header as an uncompressed file would have it (point format without compression bits).
    const LasHeader& header() const;
    /// The bytes of an uncompressed LAS file up to its first point record: the header block and
    /// the VLRs, LASzip's VLR removed, compression bits cleared, VLR count and point offset
    /// adjusted, EVLR start/count zeroed. preamble() followed by the records is a valid LAS file
    /// (LasFile::fromMemory accepts it).
    const std::vector<uint8_t>& preamble() const;
    std::size_t recordLength() const;
    bool compressed() const;
    /// Reads up to n records (n * recordLength() bytes) into out; returns how many, 0 after the
    /// last. Throws vexaro::LasError on truncated or corrupt data (naming the file).
    std::size_t read(uint8_t* out, std::size_t n);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Writes a LAS file, or a LAZ file when the path ends in ".laz" (any case). The file appears
/// under its name only when finish() succeeds: it is written to a temporary name in the same
/// folder and renamed; a writer destroyed before finish() removes the temporary.
class RecordWriter {
public:
    /// Checks the preamble as a LAS file's first bytes (through its point offset) and creates the
    /// temporary file; throws vexaro::LasError naming the path.
    RecordWriter(const std::string& path, const std::vector<uint8_t>& preamble);
    ~RecordWriter();
    RecordWriter(const RecordWriter&) = delete;
    RecordWriter& operator=(const RecordWriter&) = delete;

    /// Appends n records of the preamble's record length.
    void write(const uint8_t* records, std::size_t n);
    /// Sets the point counts (legacy and 64-bit where the version has it), counts by return and
    /// bounds from the records written, then closes and renames. Throws vexaro::LasError.
    void finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vx::las
