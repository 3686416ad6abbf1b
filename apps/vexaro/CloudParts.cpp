#include "CloudParts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_map>

namespace vx::app {

namespace {

/// Cells along an axis that a packed key can tell apart; a cloud wider than this many gaps shares
/// the last cell, which only joins parts.
constexpr long long kCellsPerAxis = 1LL << 21;

long long cellAlong(double v, double origin, double gap)
{
    const double c = std::floor((v - origin) / gap);
    return static_cast<long long>(std::clamp(c, 0.0, static_cast<double>(kCellsPerAxis - 1)));
}

uint64_t pack(long long i, long long j, long long k)
{
    return (static_cast<uint64_t>(i) << 42) | (static_cast<uint64_t>(j) << 21) | static_cast<uint64_t>(k);
}

struct DisjointSets {
    std::vector<std::size_t> parent;
    explicit DisjointSets(std::size_t n) : parent(n) { std::iota(parent.begin(), parent.end(), 0); }
    std::size_t find(std::size_t a)
    {
        while (parent[a] != a)
            a = parent[a] = parent[parent[a]];
        return a;
    }
    void unite(std::size_t a, std::size_t b)
    {
        a = find(a), b = find(b);
        if (a != b)
            parent[std::max(a, b)] = std::min(a, b);
    }
};

} // namespace

CloudParts splitIntoParts(const vx::las::LasFile& file, double planGap, double heightGap,
                          std::size_t leastPoints)
{
    const std::size_t n = file.size();
    CloudParts out;
    auto whole = [&] {
        out.parts.assign(1, std::vector<std::size_t>(n));
        std::iota(out.parts[0].begin(), out.parts[0].end(), std::size_t{0});
        out.strays.clear();
        return out;
    };
    if (n == 0 || !(planGap > 0) || !(heightGap > 0))
        return whole();

    double lo[3] = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                    std::numeric_limits<double>::max()};
    for (std::size_t i = 0; i < n; ++i) {
        lo[0] = std::min(lo[0], file.x(i));
        lo[1] = std::min(lo[1], file.y(i));
        lo[2] = std::min(lo[2], file.z(i));
    }
    std::unordered_map<uint64_t, std::size_t> cellIndex;
    std::vector<long long> coords; // i, j, k of each cell
    std::vector<std::size_t> cellOf(n);
    for (std::size_t p = 0; p < n; ++p) {
        const long long i = cellAlong(file.x(p), lo[0], planGap), j = cellAlong(file.y(p), lo[1], planGap),
                        k = cellAlong(file.z(p), lo[2], heightGap);
        const auto [it, added] = cellIndex.emplace(pack(i, j, k), cellIndex.size());
        if (added)
            coords.insert(coords.end(), {i, j, k});
        cellOf[p] = it->second;
    }
    if (cellIndex.size() == 1)
        return whole();

    DisjointSets sets(cellIndex.size());
    for (std::size_t c = 0; c < cellIndex.size(); ++c) {
        const long long i = coords[3 * c], j = coords[3 * c + 1], k = coords[3 * c + 2];
        for (long long di = -1; di <= 1; ++di)
            for (long long dj = -1; dj <= 1; ++dj)
                for (long long dk = -1; dk <= 1; ++dk) {
                    const long long a = i + di, b = j + dj, z = k + dk;
                    if (a < 0 || b < 0 || z < 0 || a >= kCellsPerAxis || b >= kCellsPerAxis ||
                        z >= kCellsPerAxis)
                        continue;
                    const auto it = cellIndex.find(pack(a, b, z));
                    if (it != cellIndex.end())
                        sets.unite(c, it->second);
                }
    }

    // Parts numbered in the order of their first points.
    std::unordered_map<std::size_t, std::size_t> partOfRoot;
    std::vector<std::vector<std::size_t>> all;
    for (std::size_t p = 0; p < n; ++p) {
        const std::size_t root = sets.find(cellOf[p]);
        const auto [it, added] = partOfRoot.emplace(root, all.size());
        if (added)
            all.emplace_back();
        all[it->second].push_back(p);
    }
    for (auto& part : all) {
        if (part.size() >= leastPoints)
            out.parts.push_back(std::move(part));
        else
            out.strays.insert(out.strays.end(), part.begin(), part.end());
    }
    if (out.parts.empty())
        return whole(); // nothing large enough to judge apart: the steps see it all
    std::sort(out.strays.begin(), out.strays.end());
    return out;
}

namespace {

template <class T> VX_Point<T> record(const vx::las::LasFile& file, std::size_t i, const double centre[3])
{
    VX_Point<T> p{};
    p.x = static_cast<T>(file.x(i) - centre[0]);
    p.y = static_cast<T>(file.y(i) - centre[1]);
    p.z = static_cast<T>(file.z(i) - centre[2]);
    p.classification = file.classification(i);
    p.lastReturn = file.returnNumber(i) == file.numberOfReturns(i) ? 1 : 0;
    return p;
}

/// Classifies the parts of `file` one by one, the strays as noise, and writes options.output.
template <class T>
std::vector<int> classifyParts(Vexaro<T>& v, vx::las::LasFile& file, const CloudParts& split,
                               const PipelineOptions& options, const ProgressFn& progress,
                               const std::function<void(const std::string&)>& note)
{
    const std::size_t n = file.size();
    std::vector<int> classes(n, cls::kUnclassified);
    std::vector<float> heights(options.writeHeightAboveGround ? n : 0,
                               std::numeric_limits<float>::quiet_NaN());
    double sumZ = 0;
    std::size_t inParts = 0;
    for (const auto& part : split.parts)
        for (std::size_t i : part)
            sumZ += file.z(i), ++inParts;
    const double meanZ = sumZ / static_cast<double>(inParts);
    for (std::size_t i : split.strays)
        classes[i] = file.z(i) > meanZ ? options.highNoiseClass : cls::kLowPoint;
    if (note && split.parts.size() == 1)
        note(std::to_string(split.strays.size()) + " stray returns far from the rest of the cloud are noise");
    else if (note)
        note("the cloud falls into " + std::to_string(split.parts.size()) +
             " parts far apart, classified one by one; " + std::to_string(split.strays.size()) +
             " stray returns far from them are noise");

    PipelineOptions partOptions = options;
    partOptions.output.clear();
    for (std::size_t k = 0; k < split.parts.size(); ++k) {
        const auto& part = split.parts[k];
        if (note && split.parts.size() > 1)
            note("part " + std::to_string(k + 1) + " of " + std::to_string(split.parts.size()) + ": " +
                 std::to_string(part.size()) + " points");
        double lo[3], hi[3];
        for (int a = 0; a < 3; ++a)
            lo[a] = std::numeric_limits<double>::max(), hi[a] = std::numeric_limits<double>::lowest();
        for (std::size_t i : part) {
            const double c[3] = {file.x(i), file.y(i), file.z(i)};
            for (int a = 0; a < 3; ++a)
                lo[a] = std::min(lo[a], c[a]), hi[a] = std::max(hi[a], c[a]);
        }
        const double centre[3] = {0.5 * (lo[0] + hi[0]), 0.5 * (lo[1] + hi[1]), 0.5 * (lo[2] + hi[2])};
        std::vector<VX_Point<T>> points;
        PulseValues pulses;
        points.reserve(part.size());
        pulses.returnCounts.reserve(part.size());
        pulses.intensities.reserve(part.size());
        for (std::size_t i : part) {
            points.push_back(record<T>(file, i, centre));
            pulses.returnCounts.push_back(file.numberOfReturns(i));
            pulses.intensities.push_back(file.intensity(i));
        }
        runPipelineOnPoints(v, points, pulses, partOptions, progress);
        partOptions.recommendedParameters = false; // applied once, to the parameters v keeps
        const std::vector<int> partClasses = currentClasses(v);
        for (std::size_t j = 0; j < part.size(); ++j)
            classes[part[j]] = partClasses[j];
        if (options.writeHeightAboveGround) {
            std::vector<float> h(part.size());
            v.computeHeightAboveGround(cls::kGround);
            v.saveHeightAboveGroundToBuffer(h.data(), static_cast<int>(h.size()));
            for (std::size_t j = 0; j < part.size(); ++j)
                heights[part[j]] = h[j];
        }
    }

    if (!options.output.empty()) {
        for (std::size_t i = 0; i < n; ++i)
            file.setClassification(i, classes[i]);
        if (options.writeHeightAboveGround)
            file.withExtraFloat("HeightAboveGround", "height above the ground surface", heights)
                .write(options.output);
        else
            file.write(options.output);
    }
    return classes;
}

} // namespace

template <class T>
std::vector<int> classifyFile(Vexaro<T>& v, const std::string& input, const PipelineOptions& options,
                              const ProgressFn& progress, const std::function<void(const std::string&)>& note)
{
    {
        // The file is read once more by the library on the whole path; this copy goes first.
        auto file = vx::las::LasFile::read(input);
        const CloudParts split = splitIntoParts(file, options.partPlanGap, options.partHeightGap);
        if (!split.whole())
            return classifyParts(v, file, split, options, progress, note);
    }
    // The classes come back from the run: v's cloud is released before the file is written.
    PipelineOptions whole = options;
    whole.releaseBeforeSave = true;
    return runPipeline(v, input, whole, progress);
}

template std::vector<int> classifyFile<float>(Vexaro<float>&, const std::string&, const PipelineOptions&,
                                              const ProgressFn&,
                                              const std::function<void(const std::string&)>&);
template std::vector<int> classifyFile<double>(Vexaro<double>&, const std::string&, const PipelineOptions&,
                                               const ProgressFn&,
                                               const std::function<void(const std::string&)>&);

} // namespace vx::app
