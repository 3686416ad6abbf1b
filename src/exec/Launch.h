// One way to run a kernel functor over n indices: a CUDA grid under nvcc, an OpenMP loop over
// the same blocks otherwise. Each host block runs its indices in ascending order, so one host
// thread gives exactly ascending index order.
#pragma once

#include "exec/Hd.h"

namespace vx {

struct LaunchConfig {
    int threads = 256; ///< threads per block
    int blocks = 1;
    int hostThreads = 1; ///< OpenMP threads of the host backend
};

} // namespace vx

#ifdef __CUDACC__

namespace vx::cuda {

template <class F> __global__ void launchTrampoline(int n, F f)
{
    int i = blockDim.x * blockIdx.x + threadIdx.x;
    if (i < n)
        f(i);
}

template <class F> void launch(const LaunchConfig& cfg, int n, const F& f)
{
    if (cfg.blocks < 1 || cfg.threads < 1)
        return;
    launchTrampoline<<<cfg.blocks, cfg.threads>>>(n, f);
}

} // namespace vx::cuda

#else

namespace vx::host {

/// Runs f(i) for i in [0, n) in blocks of cfg.threads indices. Threads take blocks as they
/// finish: the work of a block follows the points of its cells (dense roofs, canopy, a frontier
/// of a few active cells), so equal shares of blocks would leave one core idle.
template <class F> void launch(const LaunchConfig& cfg, int n, const F& f)
{
    if (cfg.blocks < 1 || cfg.threads < 1)
        return;
    const long long threads = cfg.threads;
#pragma omp parallel for schedule(dynamic, 16) num_threads(cfg.hostThreads > 0 ? cfg.hostThreads : 1)
    for (int b = 0; b < cfg.blocks; ++b) {
        long long first = threads * b;
        long long last = first + threads;
        if (last > n)
            last = n;
        for (long long i = first; i < last; ++i)
            f(static_cast<int>(i));
    }
}

} // namespace vx::host

#endif
