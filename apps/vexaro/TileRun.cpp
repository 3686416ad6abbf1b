#include "TileRun.h"

#include "CoordinateUnits.h"
#include "Format.h"
#include "Presets.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <iostream>
#include <limits>
#include <unistd.h>

namespace fs = std::filesystem;

namespace vx::app {

namespace {

/// Records a batch holds while they are copied.
constexpr std::size_t kBatch = 1 << 14;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool sameFrame(const vx::las::LasHeader& a, const vx::las::LasHeader& b)
{
    for (int k = 0; k < 3; ++k)
        if (a.scale[k] != b.scale[k] || a.offset[k] != b.offset[k])
            return false;
    return true;
}

/// Re-encodes the raw X, Y, Z of a record from frame `from` into frame `to`; false when a
/// coordinate does not fit the 32-bit field there.
bool reframe(uint8_t* record, const vx::las::LasHeader& from, const vx::las::LasHeader& to)
{
    int32_t raw[3];
    std::memcpy(raw, record, sizeof raw);
    for (int k = 0; k < 3; ++k) {
        const double v = raw[k] * from.scale[k] + from.offset[k];
        const double r = std::nearbyint((v - to.offset[k]) / to.scale[k]);
        if (!(r >= std::numeric_limits<int32_t>::min() && r <= std::numeric_limits<int32_t>::max()))
            return false;
        raw[k] = static_cast<int32_t>(r);
    }
    std::memcpy(record, raw, sizeof raw);
    return true;
}

} // namespace

WorkFolder::WorkFolder(const fs::path& parent)
{
    char host[64] = {};
    ::gethostname(host, sizeof host - 1);
    path_ = parent / (".vexaro-work-" + std::string(host) + "-" + std::to_string(::getpid()));
    std::error_code ec;
    fs::remove_all(path_, ec);
    if (!fs::create_directories(path_, ec) || ec)
        throw std::runtime_error("cannot create the work folder '" + path_.string() + "': " + ec.message());
}

WorkFolder::~WorkFolder()
{
    std::error_code ec;
    fs::remove_all(path_, ec);
}

std::size_t appendRecordsWithin(vx::las::RecordWriter& out, const TileFile& from,
                                const vx::las::LasHeader& frame, const PlanRect& rect)
{
    vx::las::RecordReader in(from.path);
    const auto& h = in.header();
    if (h.pointFormat != frame.pointFormat || h.recordLength != frame.recordLength)
        throw std::runtime_error(from.path + " has point format " + std::to_string(h.pointFormat) + " with " +
                                 std::to_string(h.recordLength) + "-byte records, its neighbour format " +
                                 std::to_string(frame.pointFormat) + " with " +
                                 std::to_string(frame.recordLength) + "-byte records");
    const bool reencode = !sameFrame(h, frame);
    const std::size_t length = in.recordLength();
    std::vector<uint8_t> batch(kBatch * length), kept(kBatch * length);
    std::size_t appended = 0;
    for (std::size_t got; (got = in.read(batch.data(), kBatch)) > 0;) {
        std::size_t k = 0;
        for (std::size_t i = 0; i < got; ++i) {
            uint8_t* r = batch.data() + i * length;
            double x, y;
            recordPlan(r, h, x, y);
            if (!rect.holds(x, y) || (reencode && !reframe(r, h, frame)))
                continue;
            std::memcpy(kept.data() + k * length, r, length);
            ++k;
        }
        out.write(kept.data(), k);
        appended += k;
    }
    return appended;
}

void classifyTileFile(const TileSettings& tiles, const std::string& input, const std::string& output)
{
    PipelineOptions pipeline = tiles.pipeline;
    pipeline.output = output;
    Reporter quiet(true);
    runClassification(tiles.run, tiles.settings, pipeline, input, *tiles.libraryOutput, quiet);
}

void copyLeadingRecords(const std::string& from, std::size_t n, const std::string& to)
{
    vx::las::RecordReader in(from);
    vx::las::RecordWriter out(to, in.preamble());
    std::vector<uint8_t> batch(kBatch * in.recordLength());
    while (n > 0) {
        const std::size_t got = in.read(batch.data(), std::min(n, kBatch));
        if (got == 0)
            throw std::runtime_error(from + " ends before its " + std::to_string(n) + " last tile points");
        out.write(batch.data(), got);
        n -= got;
    }
    out.finish();
}

double bufferWidth(const vx::las::LasFile& headerFile, const RunOptions& run, double metresGiven)
{
    const LengthUnit unit = run.units != LengthUnit::Unknown ? run.units : unitsOfFile(headerFile).horizontal;
    if (metresGiven >= 0)
        return metresGiven / metresPer(unit);
    double window = 0;
    if (run.preset == "auto") {
        window = std::max(presetNamed("general").terrainWindow, presetNamed("mountain").terrainWindow);
    } else if (run.preset != "none") {
        window = presetNamed(run.preset).terrainWindow;
    }
    PipelineOptions defaults;
    return std::max(1.5 * window, defaults.seedCellSize) / metresPer(unit);
}

vx::las::LasFile headerFileOf(const std::string& path, const WorkFolder& work)
{
    const std::string empty = work.file("header-" + fs::path(path).filename().string() + ".las");
    {
        vx::las::RecordReader in(path);
        vx::las::RecordWriter out(empty, in.preamble());
        out.finish();
    }
    auto file = vx::las::LasFile::read(empty);
    std::error_code ec;
    fs::remove(empty, ec);
    return file;
}

TileProgress::TileProgress(std::size_t tiles, uint64_t points, bool quiet, std::string prefix)
    : tiles_(tiles), points_(points), quiet_(quiet), prefix_(std::move(prefix)), start_(now())
{
}

void TileProgress::done(uint64_t points)
{
    ++tilesDone_;
    pointsDone_ += points;
    if (tilesDone_ < tiles_)
        print(false); // the last one is finish()'s
}

void TileProgress::finish()
{
    print(true);
}

void TileProgress::print(bool last)
{
    if (quiet_)
        return;
    const double seconds = now() - start_;
    const double rate = seconds > 0 ? static_cast<double>(pointsDone_) / seconds : 0;
    std::string line = prefix_ + "tiles " + std::to_string(tilesDone_) + "/" + std::to_string(tiles_) + ", " +
                       fixed(static_cast<double>(pointsDone_) / 1e6, 2) + " of " +
                       fixed(static_cast<double>(points_) / 1e6, 2) + " M points, " + fixed(rate / 1e6, 2) +
                       " M points/s";
    if (!last && rate > 0 && pointsDone_ < points_)
        line += ", " + fixed(static_cast<double>(points_ - pointsDone_) / rate, 0) + " s left";
    if (last)
        line += ", " + fixed(seconds, 1) + " s";
    std::cerr << line << std::endl;
}

} // namespace vx::app
