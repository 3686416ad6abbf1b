// A file written under a temporary name beside its final one and renamed into place only when
// complete, so that a reader never sees a partial file under the final name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace vx::las::detail {

class StagedFile {
public:
    /// Creates the temporary file in the folder of `path`; throws vexaro::LasError naming `path`.
    explicit StagedFile(const std::string& path);
    /// Removes the temporary file unless commit() succeeded.
    ~StagedFile();
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    const std::string& path() const { return path_; }
    const std::string& temporaryPath() const { return temporary_; }
    /// Appends bytes at the end; throws on a short write.
    void append(const uint8_t* data, std::size_t n);
    /// Overwrites bytes already written, at `offset`.
    void overwrite(uint64_t offset, const uint8_t* data, std::size_t n);
    /// Closes the descriptor so that another writer (LASzip) can reopen the temporary by its name.
    void release();
    /// Closes the file, checking for errors, and renames it to its final name.
    void commit();
    /// Removes the temporary file now.
    void discard();

private:
    [[noreturn]] void failWith(const char* action, int error);

    std::string path_;
    std::string temporary_;
    int fd_ = -1;
    bool done_ = false;
};

} // namespace vx::las::detail
