#include "TiledClassify.h"

#include "FileChecks.h"
#include "MemoryBudget.h"
#include "ParameterTable.h"
#include "Ranks.h"

#include <algorithm>
#include <exception>
#include <iostream>
#include <map>
#include <optional>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vx::app {

namespace {

/// Classifies tile k with its buffer into `output`; returns the tile's point count.
uint64_t classifyOneTile(const std::vector<TileFile>& files, std::size_t k, const TiledOptions& options,
                         const TileSettings& tiles, const WorkFolder& work, const std::string& output)
{
    const TileFile& tile = files[k];
    const auto headerFile = headerFileOf(tile.path, work);
    const double reach = bufferWidth(headerFile, tiles.run, options.bufferMetres);
    const std::string stem = "tile-" + std::to_string(k);
    const std::string buffered = work.file(stem + ".las"), classified = work.file(stem + "-classified.las");
    std::size_t own = 0, ring = 0;
    {
        vx::las::RecordReader in(tile.path);
        vx::las::RecordWriter out(buffered, in.preamble());
        own = appendRecordsWithin(out, tile, in.header(), PlanRect{-1e300, -1e300, 1e300, 1e300});
        const PlanRect wide = boundsOf(in.header(), reach);
        for (std::size_t j : neighboursOf(files, k, reach)) {
            try {
                ring += appendRecordsWithin(out, files[j], in.header(), wide);
            } catch (const std::runtime_error& e) {
                std::cerr << "vexaro: warning: no buffer from " << files[j].path << " for " << tile.path
                          << ": " << e.what() << std::endl;
            }
        }
        out.finish();
    }
    if (pointsWithin(options.memory) < own + ring)
        std::cerr << "vexaro: warning: " << tile.path << " holds " << own + ring
                  << " points with its buffer, more than the memory budget of " << formatBytes(options.memory)
                  << " is sized for; it is classified whole" << std::endl;
    classifyTileFile(tiles, buffered, classified);
    std::error_code ec;
    fs::remove(buffered, ec);
    copyLeadingRecords(classified, own, output);
    fs::remove(classified, ec);
    return own;
}

/// What every rank reads before the tiles: the input files, their headers and problems, and the
/// output path of each.
struct FolderPlan {
    std::vector<TileFile> files;
    std::vector<std::string> problems, outputs;
};

FolderPlan planFolder(const TiledOptions& options)
{
    FolderPlan plan;
    const auto paths = expandInputs(options.inputs);
    if (isPointFileName(options.output) && !fs::is_directory(options.output))
        throw UsageError("tiles are written to a folder, one file a tile: -o OUT_DIR, not '" +
                         options.output + "'");
    requireFolder(options.output);
    std::map<std::string, std::string> names;
    for (const auto& p : paths) {
        const std::string name = fs::path(p).filename().string();
        const auto [it, added] = names.emplace(name, p);
        if (!added)
            throw std::runtime_error("'" + p + "' and '" + it->second + "' would both be written as '" +
                                     name + "' in " + options.output);
        plan.outputs.push_back((fs::path(options.output) / name).string());
        if (sameFile(p, plan.outputs.back()))
            throw std::runtime_error("the output folder '" + options.output + "' holds the input '" + p +
                                     "'; choose another output folder");
    }
    plan.files = readTileHeaders(paths, plan.problems);
    return plan;
}

} // namespace

int classifyFolder(const TiledOptions& given, TileSettings tiles)
{
    Ranks ranks;
    if (ranks.size() > 1 && !Ranks::available())
        throw std::runtime_error("started as " + std::to_string(ranks.size()) +
                                 " MPI ranks, but this vexaro was built without MPI (install libopenmpi-dev "
                                 "and build again); every rank would classify every tile");
    TiledOptions options = given;
    if (options.memory == 0)
        options.memory = defaultMemoryBudget() / static_cast<uint64_t>(ranks.localSize());
    // Ranks that share a node share its cores.
    if (ranks.localSize() > 1) {
        const bool threadsGiven = std::any_of(tiles.settings.begin(), tiles.settings.end(),
                                              [](const Setting& s) { return s.name == "HostThreads"; });
        const int cores = static_cast<int>(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
        if (!threadsGiven)
            tiles.settings.insert(tiles.settings.begin(),
                                  Setting{"HostThreads", double(std::max(1, cores / ranks.localSize()))});
        tiles.run.cudaDevice = ranks.localRank();
    }
    // A rank that fails here while another goes on would leave that one waiting in the job's first
    // collective for ever; the ranks agree on failure first, and every rank stops together.
    FolderPlan plan;
    std::optional<WorkFolder> work;
    std::exception_ptr early;
    try {
        plan = planFolder(options);
        work.emplace(options.output);
    } catch (...) {
        early = std::current_exception();
    }
    if (ranks.sum(early ? 1 : 0) > 0) {
        if (early)
            std::rethrow_exception(early);
        throw std::runtime_error("another rank could not start the run; its message says why");
    }
    const auto& files = plan.files;
    const auto& problems = plan.problems;
    const auto& outputs = plan.outputs;
    uint64_t mine = 0;
    std::vector<std::size_t> todo;
    for (std::size_t k = static_cast<std::size_t>(ranks.rank()); k < files.size();
         k += static_cast<std::size_t>(ranks.size())) {
        todo.push_back(k);
        mine += files[k].header.pointCount;
    }
    const std::string prefix = ranks.size() > 1 ? "rank " + std::to_string(ranks.rank()) + ": " : "";
    TileProgress progress(todo.size(), mine, tiles.run.quiet, prefix);
    uint64_t failed = 0, skipped = 0;
    for (std::size_t k : todo) {
        std::error_code ec;
        if (options.resume && fs::exists(outputs[k], ec)) {
            ++skipped;
            progress.done(files[k].header.pointCount);
            continue;
        }
        try {
            if (!problems[k].empty())
                throw std::runtime_error(problems[k]);
            progress.done(classifyOneTile(files, k, options, tiles, *work, outputs[k]));
        } catch (const std::exception& e) {
            ++failed;
            const std::string what = e.what();
            std::cerr << "vexaro: error: " << (what.rfind(files[k].path, 0) == 0 ? "" : files[k].path + ": ")
                      << what << std::endl;
            progress.done(0);
        }
    }
    progress.finish();
    failed = ranks.sum(failed);
    skipped = ranks.sum(skipped);
    if (ranks.rank() == 0 && !tiles.run.quiet) {
        std::cout << "Classified " << files.size() - failed - skipped << " of " << files.size()
                  << " tiles into " << options.output;
        if (skipped)
            std::cout << " (" << skipped << " already done)";
        if (ranks.size() > 1)
            std::cout << " on " << ranks.size() << " ranks";
        std::cout << ".\n";
    }
    if (failed && ranks.rank() == 0)
        std::cerr << "vexaro: error: " << failed << " tile" << (failed == 1 ? "" : "s") << " failed"
                  << std::endl;
    return failed ? 1 : 0;
}

} // namespace vx::app
