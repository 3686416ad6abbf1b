// Loading a file's bytes and turning them into a checked LasFile; LAZ files are decoded into the
// equivalent uncompressed file.
#include "LasLayout.h"
#include "las/RecordStream.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace vx::las {

namespace {

/// Closes a descriptor on every way out of the reader.
struct Descriptor {
    int fd;
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
};

std::vector<uint8_t> readAll(const std::string& path)
{
    uint64_t size = 0;
    Descriptor in{detail::openForReading(path, size)};

    // One allocation of the size the file system reports; anything that is not a regular file
    // (a pipe, say) grows the buffer as data arrives. A full buffer is usually the end: a one-byte
    // probe confirms it instead of doubling the buffer.
    std::vector<uint8_t> bytes(size > 0 ? static_cast<std::size_t>(size) : std::size_t{1} << 16);
    std::size_t filled = 0;
    for (;;) {
        const std::size_t want = bytes.size() - filled;
        filled += detail::readBytes(in.fd, bytes.data() + filled, want, -1, path);
        if (filled < bytes.size())
            break;
        uint8_t probe;
        if (detail::readBytes(in.fd, &probe, 1, -1, path) == 0)
            break;
        bytes.resize(bytes.size() * 2);
        bytes[filled++] = probe;
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace

int detail::openForReading(const std::string& path, uint64_t& regularSize)
{
    Descriptor in{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    if (in.fd < 0)
        detail::fail(path, std::string("cannot open the file (") + std::strerror(errno) + ")");
    struct stat st {};
    if (::fstat(in.fd, &st) != 0)
        detail::fail(path, std::string("cannot read the file (") + std::strerror(errno) + ")");
    if (S_ISDIR(st.st_mode))
        detail::fail(path, "cannot read the file (it is a directory)");
    regularSize = S_ISREG(st.st_mode) && st.st_size > 0 ? static_cast<uint64_t>(st.st_size) : 0;
    const int fd = in.fd;
    in.fd = -1;
    return fd;
}

std::size_t detail::readBytes(int fd, uint8_t* out, std::size_t n, int64_t offset, const std::string& path)
{
    std::size_t filled = 0;
    while (filled < n) {
        const ssize_t got = offset < 0 ? ::read(fd, out + filled, n - filled)
                                       : ::pread(fd, out + filled, n - filled,
                                                 static_cast<off_t>(offset + static_cast<int64_t>(filled)));
        if (got == 0)
            break;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            detail::fail(path, std::string("cannot read the file (") + std::strerror(errno) + ")");
        }
        filled += static_cast<std::size_t>(got);
    }
    return filled;
}

LasFile LasFile::read(const std::string& path)
{
    std::vector<uint8_t> bytes = readAll(path);
    if (!detail::compressedFormatByte(bytes.data(), bytes.size()))
        return fromMemory(std::move(bytes), path);

    bytes = {};
    RecordReader reader(path);
    std::vector<uint8_t> file = reader.preamble();
    // Grows with the records decoded, never with the count the header claims.
    constexpr std::size_t batch = 1 << 16;
    const std::size_t length = reader.recordLength();
    for (;;) {
        const std::size_t at = file.size();
        file.resize(at + batch * length);
        const std::size_t got = reader.read(file.data() + at, batch);
        file.resize(at + got * length);
        if (got == 0)
            break;
    }
    return fromMemory(std::move(file), path);
}

LasFile LasFile::fromMemory(std::vector<uint8_t> bytes, const std::string& name)
{
    LasFile f;
    f.header_ = detail::parseHeader(bytes, name);
    f.vlrs_ = detail::checkLayout(bytes, f.header_, name);
    f.bytes_ = std::move(bytes);
    f.name_ = name;
    f.count_ = static_cast<std::size_t>(f.header_.pointCount);
    f.pointStart_ = f.header_.offsetToPointData;
    f.stride_ = f.header_.recordLength;
    f.wideFormat_ = f.header_.pointFormat >= 6;
    return f;
}

std::vector<uint8_t> LasFile::vlrPayload(std::size_t k) const
{
    if (k >= vlrs_.size())
        throw std::out_of_range(name_ + ": no VLR " + std::to_string(k + 1) + " (the file has " +
                                std::to_string(vlrs_.size()) + ")");
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(vlrs_[k].payloadOffset);
    return std::vector<uint8_t>(begin, begin + static_cast<std::ptrdiff_t>(vlrs_[k].payloadSize));
}

} // namespace vx::las
