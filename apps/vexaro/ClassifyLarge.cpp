#include "TiledClassify.h"

#include "Format.h"
#include "MemoryBudget.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <queue>
#include <sys/resource.h>

namespace fs = std::filesystem;

namespace vx::app {

namespace {

/// Records copied at a time.
constexpr std::size_t kBatch = 1 << 14;

/// Most tiles of one file: the merge keeps two files of each open.
constexpr long kMostTiles = 2000;

/// Lifts the soft limit of open files to the hard one, for the merge of many tiles.
void allowOpenFiles()
{
    struct rlimit lim {};
    if (::getrlimit(RLIMIT_NOFILE, &lim) == 0 && lim.rlim_cur < lim.rlim_max) {
        lim.rlim_cur = lim.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &lim);
    }
}

/// A grid of equal tiles over the file's plan bounds.
struct TileGrid {
    double minX = 0, minY = 0, edgeX = 1, edgeY = 1, reach = 0;
    long nx = 1, ny = 1;
    long count() const { return nx * ny; }
    long column(double x) const
    {
        return std::clamp(static_cast<long>(std::floor((x - minX) / edgeX)), 0L, nx - 1);
    }
    long row(double y) const
    {
        return std::clamp(static_cast<long>(std::floor((y - minY) / edgeY)), 0L, ny - 1);
    }
    PlanRect rect(long i, long j) const
    {
        return {minX + i * edgeX - reach, minY + j * edgeY - reach, minX + (i + 1) * edgeX + reach,
                minY + (j + 1) * edgeY + reach};
    }
};

/// Tiles whose load, with the ring of `reach` around them, fits `fit` points at the file's mean
/// density. Throws std::runtime_error when not even a tile as wide as the reach fits.
TileGrid planTiles(const vx::las::LasHeader& h, double reach, std::size_t fit, uint64_t budget)
{
    TileGrid g;
    g.minX = h.minBound[0], g.minY = h.minBound[1], g.reach = reach;
    const double w = std::max(h.maxBound[0] - h.minBound[0], 1e-9),
                 d = std::max(h.maxBound[1] - h.minBound[1], 1e-9);
    const double density = static_cast<double>(h.pointCount) / (w * d);
    const double edge = std::sqrt(static_cast<double>(fit) / density) - 2 * reach;
    if (!(edge >= reach)) {
        const double need = density * 9 * reach * reach * kBytesPerPoint;
        throw std::runtime_error("a memory budget of " + formatBytes(budget) + " holds about " +
                                 std::to_string(fit) + " points, too few for tiles with a buffer of " +
                                 std::to_string(reach) + " units at this density; give --memory " +
                                 formatBytes(static_cast<uint64_t>(need)) +
                                 " or more, or a narrower --buffer");
    }
    g.nx = std::max(1L, static_cast<long>(std::ceil(w / edge)));
    g.ny = std::max(1L, static_cast<long>(std::ceil(d / edge)));
    if (g.count() > kMostTiles)
        throw std::runtime_error("the file's extent (" + std::to_string(w) + " x " + std::to_string(d) +
                                 " units) would need " + std::to_string(g.count()) +
                                 " tiles; give a larger --memory");
    g.edgeX = w / static_cast<double>(g.nx);
    g.edgeY = d / static_cast<double>(g.ny);
    return g;
}

/// Appends bytes to a file of the work folder, a batch at a time, so that many tiles never keep
/// many descriptors open.
class Spill {
public:
    Spill(std::string path, std::size_t hold) : path_(std::move(path)), hold_(hold) {}
    void add(const uint8_t* bytes, std::size_t n)
    {
        pending_.insert(pending_.end(), bytes, bytes + n);
        if (pending_.size() >= hold_)
            flush();
    }
    void flush()
    {
        if (pending_.empty())
            return;
        std::FILE* f = std::fopen(path_.c_str(), "ab");
        const bool ok = f && std::fwrite(pending_.data(), 1, pending_.size(), f) == pending_.size();
        if (f && std::fclose(f) != 0)
            throw std::runtime_error("cannot write the work file '" + path_ + "'");
        if (!ok)
            throw std::runtime_error("cannot write the work file '" + path_ + "'");
        pending_.clear();
        pending_.shrink_to_fit();
    }
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::size_t hold_;
    std::vector<uint8_t> pending_;
};

/// Reads a work file sequentially.
class Drain {
public:
    explicit Drain(const std::string& path) : f_(std::fopen(path.c_str(), "rb"), &std::fclose)
    {
        if (!f_)
            throw std::runtime_error("cannot read the work file '" + path + "'");
    }
    bool read(void* out, std::size_t bytes) { return std::fread(out, 1, bytes, f_.get()) == bytes; }

private:
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> f_;
};

struct TileSpill {
    Spill own, ring, index;
    uint64_t owned = 0, ringed = 0;
};

/// Copies a work file of records into out.
void pour(vx::las::RecordWriter& out, const std::string& path, std::size_t records, std::size_t length)
{
    if (records == 0)
        return;
    Drain in(path);
    std::vector<uint8_t> batch(kBatch * length);
    while (records > 0) {
        const std::size_t n = std::min(records, kBatch);
        if (!in.read(batch.data(), n * length))
            throw std::runtime_error("the work file '" + path + "' ends early");
        out.write(batch.data(), n);
        records -= n;
    }
}

} // namespace

int classifyLargeFile(const TiledOptions& options, TileSettings tiles, uint64_t points)
{
    const std::string& input = options.inputs.front();
    const uint64_t budget = options.memory ? options.memory : defaultMemoryBudget();
    WorkFolder work(fs::absolute(options.output).parent_path());
    const auto headerFile = headerFileOf(input, work);
    const double reach = bufferWidth(headerFile, tiles.run, options.bufferMetres);
    // The reader's header: a header file of no points has no bounds.
    const TileGrid grid =
        planTiles(vx::las::RecordReader(input).header(), reach, pointsWithin(budget), budget);
    const bool quiet = tiles.run.quiet;
    if (!quiet)
        std::cerr << input << ": " << points << " points, more than a memory budget of "
                  << formatBytes(budget) << " holds at once: " << grid.count() << " tiles of "
                  << fixed(grid.edgeX, 0) << " x " << fixed(grid.edgeY, 0) << " with a buffer of "
                  << fixed(reach, 0) << " (file units)" << std::endl;

    const auto cutStart = std::chrono::steady_clock::now();
    // Pass 1: every record goes to the tile that owns it (with its place in the file) and to the
    // rings of the tiles whose buffer it lies in.
    const long count = grid.count();
    const std::size_t hold =
        std::clamp<std::size_t>(budget / 16 / (3 * static_cast<std::size_t>(count)), 4096, 1 << 20);
    std::vector<TileSpill> spills;
    spills.reserve(static_cast<std::size_t>(count));
    for (long k = 0; k < count; ++k) {
        const std::string stem = work.file("t" + std::to_string(k));
        spills.push_back(
            {Spill(stem + ".own", hold), Spill(stem + ".ring", hold), Spill(stem + ".idx", hold)});
    }
    std::vector<uint8_t> preamble;
    std::size_t length = 0;
    {
        vx::las::RecordReader in(input);
        preamble = in.preamble();
        length = in.recordLength();
        const auto& h = in.header();
        std::vector<uint8_t> batch(kBatch * length);
        uint64_t index = 0;
        for (std::size_t got; (got = in.read(batch.data(), kBatch)) > 0;) {
            for (std::size_t r = 0; r < got; ++r, ++index) {
                const uint8_t* rec = batch.data() + r * length;
                double x, y;
                recordPlan(rec, h, x, y);
                const long i = grid.column(x), j = grid.row(y);
                auto& own = spills[static_cast<std::size_t>(j * grid.nx + i)];
                own.own.add(rec, length);
                own.index.add(reinterpret_cast<const uint8_t*>(&index), sizeof index);
                ++own.owned;
                for (long dj = -1; dj <= 1; ++dj)
                    for (long di = -1; di <= 1; ++di) {
                        const long a = i + di, b = j + dj;
                        if ((di == 0 && dj == 0) || a < 0 || b < 0 || a >= grid.nx || b >= grid.ny ||
                            !grid.rect(a, b).holds(x, y))
                            continue;
                        auto& ring = spills[static_cast<std::size_t>(b * grid.nx + a)];
                        ring.ring.add(rec, length);
                        ++ring.ringed;
                    }
            }
        }
        for (auto& s : spills)
            s.own.flush(), s.ring.flush(), s.index.flush();
    }

    if (!quiet)
        std::cerr << "cut into tiles in "
                  << fixed(std::chrono::duration<double>(std::chrono::steady_clock::now() - cutStart).count(),
                           1)
                  << " s" << std::endl;

    // Pass 2: each tile with its ring, classified; its own records kept in a work file.
    TileProgress progress(static_cast<std::size_t>(count), points, quiet, "");
    std::vector<uint8_t> outPreamble;
    std::size_t outLength = 0;
    for (long k = 0; k < count; ++k) {
        auto& s = spills[static_cast<std::size_t>(k)];
        if (s.owned == 0) {
            progress.done(0);
            continue;
        }
        const std::string stem = work.file("t" + std::to_string(k));
        {
            vx::las::RecordWriter out(stem + ".las", preamble);
            pour(out, s.own.path(), s.owned, length);
            pour(out, s.ring.path(), s.ringed, length);
            out.finish();
        }
        std::error_code ec;
        fs::remove(s.ring.path(), ec);
        fs::remove(s.own.path(), ec);
        classifyTileFile(tiles, stem + ".las", stem + "-classified.las");
        fs::remove(stem + ".las", ec);
        vx::las::RecordReader classified(stem + "-classified.las");
        if (outPreamble.empty())
            outPreamble = classified.preamble(), outLength = classified.recordLength();
        Spill kept(stem + ".out", 1 << 20);
        std::vector<uint8_t> batch(kBatch * outLength);
        for (uint64_t left = s.owned; left > 0;) {
            const std::size_t got = classified.read(batch.data(), std::min<uint64_t>(left, kBatch));
            if (got == 0)
                throw std::runtime_error("the classified tile '" + stem + "-classified.las' ends early");
            kept.add(batch.data(), got * outLength);
            left -= got;
        }
        kept.flush();
        fs::remove(stem + "-classified.las", ec);
        progress.done(s.owned);
    }

    // Pass 3: the tiles' records merged back into the file's order.
    allowOpenFiles();
    struct Head {
        uint64_t index;
        std::size_t tile;
        bool operator>(const Head& o) const { return index > o.index; }
    };
    std::vector<std::unique_ptr<Drain>> records(static_cast<std::size_t>(count)), indices(records.size());
    std::priority_queue<Head, std::vector<Head>, std::greater<Head>> heads;
    for (std::size_t k = 0; k < records.size(); ++k) {
        if (spills[k].owned == 0)
            continue;
        const std::string stem = work.file("t" + std::to_string(k));
        records[k] = std::make_unique<Drain>(stem + ".out");
        indices[k] = std::make_unique<Drain>(stem + ".idx");
        uint64_t first;
        if (!indices[k]->read(&first, sizeof first))
            throw std::runtime_error("the work file '" + stem + ".idx' ends early");
        heads.push({first, k});
    }
    vx::las::RecordWriter out(options.output, outPreamble);
    std::vector<uint8_t> batch(kBatch * outLength);
    std::size_t filled = 0;
    while (!heads.empty()) {
        const Head h = heads.top();
        heads.pop();
        if (!records[h.tile]->read(batch.data() + filled * outLength, outLength))
            throw std::runtime_error("a tile's work file ends early");
        if (++filled == kBatch)
            out.write(batch.data(), filled), filled = 0;
        uint64_t next;
        if (indices[h.tile]->read(&next, sizeof next))
            heads.push({next, h.tile});
    }
    out.write(batch.data(), filled);
    out.finish();
    progress.finish();
    return 0;
}

} // namespace vx::app
