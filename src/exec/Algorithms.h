// Sorting, extremes and counting through thrust, with the policy of the backend this
// translation unit is compiled for. Pointers are the backend's own memory.
#pragma once

#include "exec/Hd.h"

#include <thrust/count.h>
#include <thrust/extrema.h>
#include <thrust/fill.h>
#include <thrust/iterator/counting_iterator.h>
#include <thrust/sort.h>
#ifdef __CUDACC__
#include <thrust/system/cuda/execution_policy.h>
#else
#include <thrust/system/omp/execution_policy.h>
#endif

namespace vx::VX_BACKEND_NS {

inline auto policy()
{
#ifdef __CUDACC__
    return thrust::cuda::par;
#else
    return thrust::omp::par;
#endif
}

template <class T, class Less> void stableSort(T* first, int n, Less less)
{
    if (n > 1)
        thrust::stable_sort(policy(), first, first + n, less);
}

/// Ascending, stable: equal keys keep the order of their values' positions.
template <class K, class V> void sortByKey(K* keys, V* values, int n)
{
    if (n > 1)
        thrust::stable_sort_by_key(policy(), keys, keys + n, values);
}

/// Positions of the smallest and the largest element (the first of equals for the minimum,
/// the last for the maximum, as minmax_element gives them).
template <class T, class Less>
void minMaxPositions(const T* first, int n, Less less, int& minPos, int& maxPos)
{
    minPos = maxPos = 0;
    if (n < 1)
        return;
    auto r = thrust::minmax_element(policy(), first, first + n, less);
    minPos = static_cast<int>(r.first - first);
    maxPos = static_cast<int>(r.second - first);
}

/// Sets the n elements from first to value.
template <class T> void fillWith(T* first, int n, T value)
{
    if (n > 0)
        thrust::fill(policy(), first, first + n, value);
}

template <class T, class Pred> long long countIf(const T* first, int n, Pred pred)
{
    if (n < 1)
        return 0;
    return static_cast<long long>(thrust::count_if(policy(), first, first + n, pred));
}

/// How many of the indices 0..n-1 satisfy pred.
template <class Pred> long long countIndices(int n, Pred pred)
{
    if (n < 1)
        return 0;
    return static_cast<long long>(thrust::count_if(policy(), thrust::counting_iterator<int>(0),
                                                   thrust::counting_iterator<int>(n), pred));
}

} // namespace vx::VX_BACKEND_NS
