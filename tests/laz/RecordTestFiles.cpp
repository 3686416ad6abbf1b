#include "RecordTestFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace laztest {

vx::las::LasFile makeFile(uint8_t minor, uint8_t format, std::size_t n, unsigned seed)
{
    const double scale[3] = {0.01, 0.01, 0.001}, offset[3] = {500000, 5000000, 100};
    auto f = vx::las::LasFile::create(minor, format, scale, offset);
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> across(0, 200), up(0, 40), time(1000, 2000);
    const int top = format >= 6 ? 15 : 7;
    const int classes = format >= 6 ? 255 : 31;
    for (std::size_t i = 0; i < n; ++i) {
        vx::las::NewPoint p;
        p.x = offset[0] + across(rng);
        p.y = offset[1] + across(rng);
        p.z = offset[2] + up(rng);
        p.intensity = static_cast<uint16_t>(rng());
        p.numberOfReturns = 1 + static_cast<int>(rng() % top);
        p.returnNumber = 1 + static_cast<int>(rng() % p.numberOfReturns);
        p.classification = static_cast<int>(rng() % (classes + 1));
        p.gpsTime = time(rng);
        f.addPoint(p);
    }
    return f;
}

std::vector<uint8_t> records(const vx::las::LasFile& f)
{
    const std::size_t start = f.header().offsetToPointData;
    const auto begin = f.bytes().begin() + static_cast<std::ptrdiff_t>(start);
    return std::vector<uint8_t>(begin,
                                begin + static_cast<std::ptrdiff_t>(f.size() * f.header().recordLength));
}

namespace {

std::vector<std::string>& createdFolders()
{
    static std::vector<std::string> folders;
    return folders;
}

void removeFolder(const std::string& folder)
{
    const std::string cmd = "rm -rf '" + folder + "'";
    if (std::system(cmd.c_str()) != 0)
        std::fprintf(stderr, "cannot remove %s\n", folder.c_str());
}

} // namespace

std::string scratchFolder(const std::string& name)
{
    const std::string folder = ::testing::TempDir() + "vexaro-laz-" + name + "-" + std::to_string(::getpid());
    removeFolder(folder);
    if (createdFolders().empty())
        std::atexit([] {
            for (const std::string& f : createdFolders())
                removeFolder(f);
        });
    createdFolders().push_back(folder);
    EXPECT_EQ(::mkdir(folder.c_str(), 0755), 0) << folder;
    return folder;
}

std::vector<std::string> folderEntries(const std::string& folder)
{
    std::vector<std::string> names;
    if (DIR* d = ::opendir(folder.c_str())) {
        while (const dirent* e = ::readdir(d)) {
            const std::string n = e->d_name;
            if (n != "." && n != "..")
                names.push_back(n);
        }
        ::closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<uint8_t> fileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void putBytes(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

bool exists(const std::string& path)
{
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

std::string messageOf(const std::function<void()>& f)
{
    try {
        f();
    } catch (const vexaro::LasError& e) {
        return e.what();
    }
    return "(no LasError)";
}

} // namespace laztest
