// LASzip behind the codec's own vocabulary: point records in, point records out. Built without
// LASzip, every entry point refuses with a message saying how to get LAZ support.
#pragma once

#include "LasLayout.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vx::las::detail {

/// Whether the build links LASzip.
bool lazBuiltIn();
/// Throws vexaro::LasError "<name>: LAZ support is not built in ...".
[[noreturn]] void failNoLaz(const std::string& name);
/// Whether a path names a LAZ file: it ends in ".laz", in any case.
bool lazName(const std::string& path);

/// Decodes the point records of a LAZ file in file order.
class LazDecoder {
public:
    /// `h` is the file's header with the compression bits cleared.
    LazDecoder(const std::string& path, const LasHeader& h);
    ~LazDecoder();
    /// Decodes n records into out; throws vexaro::LasError when the data ends early or is corrupt.
    void read(uint8_t* out, std::size_t n);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Encodes point records into a LAZ file at `target` (a temporary the caller renames); `name`
/// stands for the file in messages.
class LazEncoder {
public:
    /// `preamble` is a checked uncompressed preamble: `h` its header, `vlrs` its VLRs.
    LazEncoder(const std::string& target, const std::string& name, const std::vector<uint8_t>& preamble,
               const LasHeader& h, const std::vector<LasVlr>& vlrs);
    ~LazEncoder();
    void write(const uint8_t* records, std::size_t n);
    /// Stores the tally in the header and closes the file.
    void finish(const RecordTally& tally);

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace vx::las::detail
