// Helpers of the point-feature tests: both precisions, quiet runs of the steps, kernel phases
// called directly on the host.
#pragma once

#include "common/TestSupport.h"
#include "steps/features/Means.h"
#include "steps/features/kernels.h"

#include <cmath>
#include <vector>

namespace vxtest {

/// Calls f with a float and then a double tag.
template <class F> void forBothPrecisions(F&& f)
{
    f(float{});
    f(double{});
}

/// Loads pts and computes normals with cubic cells of edge `cell`, printing nothing; returns the
/// records in input order.
template <class T>
std::vector<VX_Point<T>> normalsOf(Vexaro<T>& v, std::vector<VX_Point<T>> pts, int planar = 5,
                                   int scatter = 6, int linear = 7, double cell = 1.5)
{
    CaptureStdout quiet;
    v.loadDirectData(pts.data(), static_cast<int>(pts.size()));
    v.set_NormalVectorDecompositionSize(cell);
    v.calculateNormalVectors(planar, scatter, linear);
    return points(v);
}

template <class T> double length(const VX_Point<T>& p)
{
    return std::sqrt(double(p.nx) * p.nx + double(p.ny) * p.ny + double(p.nz) * p.nz);
}

/// The phase-1 means of every point (by point index) after a cubic decomposition of edge
/// `cell`, running the kernel in a plain loop on the host backend.
template <class T> std::vector<VX_mean<T>> phaseOneMeans(Vexaro<T>& v, double cell)
{
    {
        CaptureStdout quiet;
        v.regularGridDecomposition3Dcube(cell);
    }
    auto& c = vxtest::engine(v);
    const int n = c.store.count;
    vx::MeanBuffers<T> buffers;
    std::vector<VX_mean<T>> byPoint(n);
    c.store.visit([&](auto layout) {
        using L = decltype(layout);
        buffers.allocate(layout, c.backend(), n);
        const auto itg = c.grid.index(layout);
        const auto pts = c.store.points(layout);
        std::vector<typename vx::PointsOf<T, L>::Real> xyz(3 * static_cast<std::size_t>(n));
        const vx::k_gatherOrderedXyz<vx::PointsOf<T, L>, vx::IndexOf<L>> gather{pts, itg, xyz.data()};
        for (int j = 0; j < n; ++j)
            gather(j);
        vx::k_NVPCASVD_calculateMean<T, L> k{pts,
                                             itg,
                                             c.grid.groups(layout),
                                             {xyz.data()},
                                             c.grid.parameters,
                                             buffers.view(layout),
                                             n,
                                             c.par.Inner_NormalVectors,
                                             c.par.NNSearchRange_NormalVectors,
                                             c.par.MinimalNumberOfNN};
        for (int i = 0; i < n; ++i)
            k(i);
        const auto m = buffers.view(layout);
        for (int i = 0; i < n; ++i)
            byPoint[itg.pointIndex(i)] = {m.x(i), m.y(i), m.z(i)};
    });
    return byPoint;
}

} // namespace vxtest
