// Temporary files beside the final name: created exclusively (no other writer's temporary is
// ever reused), renamed atomically within the folder, removed on every way out that fails.
#include "StagedFile.h"

#include "LasLayout.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace vx::las::detail {

namespace {

std::atomic<unsigned> stagedCounter{0};

} // namespace

StagedFile::StagedFile(const std::string& path) : path_(path)
{
    for (int attempt = 0;; ++attempt) {
        temporary_ = path + ".tmp" + std::to_string(::getpid()) + "-" + std::to_string(stagedCounter++);
        fd_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd_ >= 0)
            return;
        if (errno != EEXIST || attempt > 100)
            fail(path, std::string("cannot create the file (") + std::strerror(errno) + ")");
    }
}

StagedFile::~StagedFile()
{
    discard();
}

void StagedFile::failWith(const char* action, int error)
{
    discard();
    fail(path_, std::string("cannot ") + action + " the file (" + std::strerror(error ? error : EIO) + ")");
}

void StagedFile::append(const uint8_t* data, std::size_t n)
{
    while (n > 0) {
        const ssize_t put = ::write(fd_, data, n);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            failWith("write", put < 0 ? errno : ENOSPC);
        data += put;
        n -= static_cast<std::size_t>(put);
    }
}

void StagedFile::overwrite(uint64_t offset, const uint8_t* data, std::size_t n)
{
    while (n > 0) {
        const ssize_t put = ::pwrite(fd_, data, n, static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            failWith("write", put < 0 ? errno : ENOSPC);
        data += put;
        offset += static_cast<uint64_t>(put);
        n -= static_cast<std::size_t>(put);
    }
}

void StagedFile::release()
{
    if (fd_ >= 0 && ::close(fd_) != 0) {
        fd_ = -1;
        failWith("write", errno);
    }
    fd_ = -1;
}

void StagedFile::commit()
{
    release();
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0)
        failWith("create", errno);
    done_ = true;
}

void StagedFile::discard()
{
    if (fd_ >= 0)
        ::close(fd_);
    fd_ = -1;
    if (!done_)
        ::unlink(temporary_.c_str());
    done_ = true;
}

} // namespace vx::las::detail
