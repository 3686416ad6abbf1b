#include "FileChecks.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace fs = std::filesystem;

namespace vx::app {

void requireReadableFile(const std::string& path, const std::string& what)
{
    const std::string prefix = "cannot read " + what + " '" + path + "': ";
    std::error_code ec;
    if (fs::is_directory(path, ec))
        throw std::runtime_error(prefix + "it is a folder");
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        throw std::runtime_error(prefix + std::strerror(errno));
    std::fclose(f);
}

void requireWritableFile(const std::string& path, const std::string& what)
{
    const std::string prefix = "cannot write " + what + " '" + path + "': ";
    std::error_code ec;
    if (fs::is_directory(path, ec))
        throw std::runtime_error(prefix + "it is a folder");
    const bool existed = fs::exists(path, ec);
    std::FILE* f = std::fopen(path.c_str(), "ab");
    if (!f)
        throw std::runtime_error(prefix + std::strerror(errno));
    std::fclose(f);
    if (!existed)
        std::remove(path.c_str());
}

void requireFolder(const std::string& path)
{
    std::error_code ec;
    if (fs::is_directory(path, ec))
        return;
    if (fs::exists(path, ec))
        throw std::runtime_error("cannot create folder '" + path + "': a file of that name exists");
    fs::create_directories(path, ec);
    if (ec)
        throw std::runtime_error("cannot create folder '" + path + "': " + ec.message());
}

bool sameFile(const std::string& a, const std::string& b)
{
    std::error_code ec;
    return fs::equivalent(a, b, ec);
}

} // namespace vx::app
