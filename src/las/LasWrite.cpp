// Writing a file back: LAS as the held bytes, LAZ through LASzip; either way under a temporary
// name that becomes the file's name only once it is complete.
#include "LasLayout.h"
#include "LazCodec.h"
#include "StagedFile.h"
#include "las/RecordStream.h"

namespace vx::las {

void LasFile::write(const std::string& path) const
{
    if (detail::lazName(path)) {
        const std::vector<uint8_t> preamble(bytes_.begin(),
                                            bytes_.begin() + static_cast<std::ptrdiff_t>(pointStart_));
        RecordWriter out(path, preamble);
        out.write(bytes_.data() + pointStart_, count_);
        out.finish();
        return;
    }
    detail::StagedFile out(path);
    out.append(bytes_.data(), bytes_.size());
    out.commit();
}

} // namespace vx::las
