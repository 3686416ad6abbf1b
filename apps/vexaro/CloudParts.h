// Parts of a cloud that lie far apart: groups of points with wide empty gaps between them. Each
// part is classified on its own, so that the grids of the steps span the part rather than the
// box around everything (a stray return 1,000 km off would otherwise stretch every grid over
// 1,000 km), and parts of a handful of points are stray returns.
#pragma once

#include "Pipeline.h"

#include <las/LasFile.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vx::app {

struct CloudParts {
    /// Point indices of each part, ascending; parts ordered by their first point.
    std::vector<std::vector<std::size_t>> parts;
    /// Points of the parts too small to judge: stray returns.
    std::vector<std::size_t> strays;
    /// One part holding every point: the cloud is classified whole.
    bool whole() const { return parts.size() == 1 && strays.empty(); }
};

/// Fewest points of a part that the steps judge; smaller parts are stray returns.
constexpr std::size_t kLeastPartPoints = 10;

/// Splits the points of `file` into parts: two points belong to one part when a chain of points
/// joins them in which consecutive points lie in touching cells of planGap x planGap x heightGap
/// (file units). Parts of fewer than leastPoints points are strays.
CloudParts splitIntoParts(const vx::las::LasFile& file, double planGap, double heightGap,
                          std::size_t leastPoints = kLeastPartPoints);

/// Classifies `input` as runPipeline does; where the cloud falls into several parts (options.
/// partGap), each part on its own and its strays as noise (options.highNoiseClass above the
/// mean height of the parts, class 7 below). Writes options.output and returns the classes in
/// file order; what v holds afterwards is left open (the cloud of a whole file is released
/// before the file is written). `note` receives a line for each part (may be empty).
template <class T>
std::vector<int> classifyFile(Vexaro<T>& v, const std::string& input, const PipelineOptions& options,
                              const ProgressFn& progress,
                              const std::function<void(const std::string&)>& note);

} // namespace vx::app
