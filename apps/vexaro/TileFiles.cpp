#include "TileFiles.h"

#include <las/RecordStream.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <glob.h>
#include <set>
#include <stdexcept>

namespace fs = std::filesystem;

namespace vx::app {

bool isPointFileName(const std::string& path)
{
    std::string ext = fs::path(path).extension().string();
    for (auto& c : ext)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".las" || ext == ".laz";
}

namespace {

std::vector<std::string> matches(const std::string& pattern)
{
    glob_t found{};
    std::vector<std::string> out;
    if (::glob(pattern.c_str(), 0, nullptr, &found) == 0)
        for (std::size_t k = 0; k < found.gl_pathc; ++k)
            out.emplace_back(found.gl_pathv[k]);
    ::globfree(&found);
    return out;
}

} // namespace

std::vector<std::string> expandInputs(const std::vector<std::string>& arguments)
{
    std::vector<std::string> out;
    std::set<std::string> seen;
    const auto add = [&](const std::string& path) {
        std::error_code ec;
        const auto key = fs::weakly_canonical(path, ec).string();
        if (seen.insert(ec ? path : key).second)
            out.push_back(path);
    };
    for (const auto& a : arguments) {
        std::error_code ec;
        if (fs::is_directory(a, ec)) {
            std::vector<std::string> inside;
            for (const auto& e : fs::directory_iterator(a, ec))
                if (e.is_regular_file() && isPointFileName(e.path().string()))
                    inside.push_back(e.path().string());
            if (ec)
                throw std::runtime_error("cannot read folder '" + a + "': " + ec.message());
            if (inside.empty())
                throw std::runtime_error("the folder '" + a + "' holds no .las or .laz file");
            std::sort(inside.begin(), inside.end());
            for (const auto& p : inside)
                add(p);
        } else if (a.find_first_of("*?[") != std::string::npos && !fs::exists(a, ec)) {
            auto found = matches(a);
            found.erase(std::remove_if(found.begin(), found.end(),
                                       [](const std::string& p) { return !isPointFileName(p); }),
                        found.end());
            if (found.empty())
                throw std::runtime_error("no .las or .laz file matches '" + a + "'");
            for (const auto& p : found)
                add(p);
        } else {
            add(a);
        }
    }
    if (out.empty())
        throw std::runtime_error("no input file");
    return out;
}

std::vector<TileFile> readTileHeaders(const std::vector<std::string>& paths,
                                      std::vector<std::string>& problems)
{
    std::vector<TileFile> files;
    files.reserve(paths.size());
    problems.assign(paths.size(), std::string());
    for (std::size_t k = 0; k < paths.size(); ++k) {
        files.push_back({paths[k], {}});
        try {
            files.back().header = vx::las::RecordReader(paths[k]).header();
        } catch (const std::exception& e) {
            problems[k] = e.what();
        }
    }
    return files;
}

PlanRect boundsOf(const vx::las::LasHeader& header, double reach)
{
    return {header.minBound[0] - reach, header.minBound[1] - reach, header.maxBound[0] + reach,
            header.maxBound[1] + reach};
}

std::vector<std::size_t> neighboursOf(const std::vector<TileFile>& files, std::size_t k, double reach)
{
    const PlanRect wide = boundsOf(files[k].header, reach);
    std::vector<std::size_t> out;
    for (std::size_t j = 0; j < files.size(); ++j)
        if (j != k && files[j].header.pointCount > 0 && wide.meets(boundsOf(files[j].header)))
            out.push_back(j);
    return out;
}

void recordPlan(const uint8_t* record, const vx::las::LasHeader& header, double& x, double& y)
{
    int32_t raw[2];
    std::memcpy(raw, record, sizeof raw);
    x = raw[0] * header.scale[0] + header.offset[0];
    y = raw[1] * header.scale[1] + header.offset[1];
}

} // namespace vx::app
