// The OpenMP team of the host backend for the span of one piece of engine work.
#pragma once

#include <omp.h>

namespace vx {

/// Sets the calling thread's default OpenMP team to `threads` (nothing for 0 or less) and puts
/// the former size back when it ends. The host launches name their team; thrust's host
/// algorithms and the store's copies take the default, which is every core otherwise, so the
/// engine's thread setting (HostThreads) holds for all of its work.
class HostThreadScope {
public:
    explicit HostThreadScope(int threads) : saved_(omp_get_max_threads())
    {
        if (threads > 0)
            omp_set_num_threads(threads);
    }
    ~HostThreadScope() { omp_set_num_threads(saved_); }
    HostThreadScope(const HostThreadScope&) = delete;
    HostThreadScope& operator=(const HostThreadScope&) = delete;

private:
    int saved_;
};

} // namespace vx
