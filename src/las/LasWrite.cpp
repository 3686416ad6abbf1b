// Writing a file back: the held bytes, as they are, in one pass.
#include "LasLayout.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace vx::las {

void LasFile::write(const std::string& path) const
{
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out)
        detail::fail(path, std::string("cannot create the file (") + std::strerror(errno) + ")");
    const std::size_t written = std::fwrite(bytes_.data(), 1, bytes_.size(), out);
    const int writeError = written == bytes_.size() ? 0 : errno;
    const bool closed = std::fclose(out) == 0;
    const int closeError = closed ? 0 : errno;
    if (written != bytes_.size())
        detail::fail(path, std::string("cannot write the file (") +
                               std::strerror(writeError ? writeError : EIO) + ")");
    if (!closed)
        detail::fail(path, std::string("cannot write the file (") + std::strerror(closeError) + ")");
}

} // namespace vx::las
