// Point accessors: kernels are written once against these members and instantiated for the
// records (array-of-structures) and the fields (structure-of-arrays) forms of the cloud. Both are
// small views, copied by value.
#pragma once

#include "exec/Hd.h"
#include "store/Layout.h"
#include "store/PointFields.h"

#include <Vexaro.h>

#include <cstdint>
#include <type_traits>

namespace vx {

template <class T> struct AosPoints {
    using Real = T;
    VX_Point<T>* p;
    VX_HD T x(int i) const { return p[i].x; }
    VX_HD T y(int i) const { return p[i].y; }
    VX_HD T z(int i) const { return p[i].z; }
    VX_HD T nx(int i) const { return p[i].nx; }
    VX_HD T ny(int i) const { return p[i].ny; }
    VX_HD T nz(int i) const { return p[i].nz; }
    VX_HD float heightIndex(int i) const { return p[i].heightIndex; }
    VX_HD int cls(int i) const { return p[i].classification; }
    VX_HD int lastReturn(int i) const { return p[i].lastReturn; }
    VX_HD void setCls(int i, int c) const { p[i].classification = c; }
    VX_HD void setHeightIndex(int i, float h) const { p[i].heightIndex = h; }
    VX_HD void setNormal(int i, T nx_, T ny_, T nz_) const
    {
        p[i].nx = nx_;
        p[i].ny = ny_;
        p[i].nz = nz_;
    }
};

struct SoaPoints {
    using Real = float;
    vxPointSoA s;
    VX_HD float x(int i) const { return s.x[i]; }
    VX_HD float y(int i) const { return s.y[i]; }
    VX_HD float z(int i) const { return s.z[i]; }
    VX_HD float nx(int i) const { return s.nx[i]; }
    VX_HD float ny(int i) const { return s.ny[i]; }
    VX_HD float nz(int i) const { return s.nz[i]; }
    VX_HD float heightIndex(int i) const { return s.heightIndex[i]; }
    VX_HD int cls(int i) const { return s.classification[i]; }
    VX_HD int lastReturn(int i) const { return s.lastReturn[i]; }
    VX_HD void setCls(int i, int c) const { s.classification[i] = c; }
    VX_HD void setHeightIndex(int i, float h) const { s.heightIndex[i] = h; }
    template <class U> VX_HD void setNormal(int i, U nx_, U ny_, U nz_) const
    {
        s.nx[i] = static_cast<float>(nx_);
        s.ny[i] = static_cast<float>(ny_);
        s.nz[i] = static_cast<float>(nz_);
    }
};

/// The point view of a layout.
template <class T, class L> using PointsOf = std::conditional_t<L::fields, SoaPoints, AosPoints<T>>;

static_assert(std::is_trivially_copyable_v<AosPoints<float>>);
static_assert(std::is_trivially_copyable_v<SoaPoints>);

} // namespace vx
