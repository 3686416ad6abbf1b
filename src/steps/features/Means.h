// The neighbourhood means of the normal step: one record per position of the sorted index, in
// the array-of-structures form (T) or as three float arrays in the structure-of-arrays form.
#pragma once

#include "exec/Buffer.h"
#include "exec/Hd.h"
#include "store/Layout.h"

#include <cstddef>
#include <type_traits>

template <class T> struct VX_mean {
    T x, y, z;
};

namespace vx {

template <class T> struct AosMeans {
    using Real = T;
    VX_mean<T>* m;
    VX_HD T x(int i) const { return m[i].x; }
    VX_HD T y(int i) const { return m[i].y; }
    VX_HD T z(int i) const { return m[i].z; }
    VX_HD void set(int i, T x_, T y_, T z_) const
    {
        m[i].x = x_;
        m[i].y = y_;
        m[i].z = z_;
    }
};

struct SoaMeans {
    using Real = float;
    float* mx;
    float* my;
    float* mz;
    VX_HD float x(int i) const { return mx[i]; }
    VX_HD float y(int i) const { return my[i]; }
    VX_HD float z(int i) const { return mz[i]; }
    VX_HD void set(int i, float x_, float y_, float z_) const
    {
        mx[i] = x_;
        my[i] = y_;
        mz[i] = z_;
    }
};

static_assert(std::is_trivially_copyable_v<AosMeans<float>>);
static_assert(std::is_trivially_copyable_v<SoaMeans>);

/// Owner of the mean arrays of one run of the normal step, in the layout it was made for.
template <class T> struct MeanBuffers {
    Buffer<VX_mean<T>> records;
    Buffer<float> x, y, z;

    void allocate(Fields, Backend backend, std::size_t count)
    {
        x.allocate(backend, count);
        y.allocate(backend, count);
        z.allocate(backend, count);
    }
    void allocate(Records, Backend backend, std::size_t count) { records.allocate(backend, count); }
    void reset()
    {
        records.reset();
        x.reset(), y.reset(), z.reset();
    }
    AosMeans<T> view(Records) const { return {records.data()}; }
    SoaMeans view(Fields) const { return {x.data(), y.data(), z.data()}; }
};

} // namespace vx
