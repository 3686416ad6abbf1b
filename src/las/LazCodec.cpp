// LASzip's C API turned into record batches. Without LASzip every entry point refuses.
#include "LazCodec.h"

namespace vx::las::detail {

#ifndef VEXARO_HAVE_LAZ

bool lazBuiltIn()
{
    return false;
}

struct LazDecoder::State {};
struct LazEncoder::State {};

LazDecoder::LazDecoder(const std::string& path, const LasHeader&)
{
    failNoLaz(path);
}
LazDecoder::~LazDecoder() = default;
void LazDecoder::read(uint8_t*, std::size_t) {}

LazEncoder::LazEncoder(const std::string&, const std::string& name, const std::vector<uint8_t>&,
                       const LasHeader&, const std::vector<LasVlr>&)
{
    failNoLaz(name);
}
LazEncoder::~LazEncoder() = default;
void LazEncoder::write(const uint8_t*, std::size_t) {}
void LazEncoder::finish(const RecordTally&) {}

#endif

} // namespace vx::las::detail
