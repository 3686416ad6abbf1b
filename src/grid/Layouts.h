// Layout accessors: kernels are written once against these members and instantiated for the
// array-of-structures and the structure-of-arrays forms. All are small views, copied by value.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"

#include <Vexaro.h>

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

struct AosIndex {
    VX_IndexToGroup* p;
    VX_HD int pointIndex(int i) const { return p[i].pointIndex; }
    VX_HD int group(int i) const { return p[i].group; }
    VX_HD void set(int i, int pointIndex_, int group_) const { p[i] = {pointIndex_, group_}; }
};

struct SoaIndex {
    vxIndexToGroupSoA s;
    VX_HD int pointIndex(int i) const { return s.pointIndex[i]; }
    VX_HD int group(int i) const { return s.group[i]; }
    VX_HD void set(int i, int pointIndex_, int group_) const
    {
        s.pointIndex[i] = pointIndex_;
        s.group[i] = group_;
    }
};

struct AosGroups {
    VX_DecompositionGroups* g;
    VX_HD int start(int c) const { return g[c].start; }
    VX_HD int end(int c) const { return g[c].end; }
    VX_HD int count(int c) const { return g[c].count; }
    VX_HD void setStart(int c, int v) const { g[c].start = v; }
    VX_HD void setEnd(int c, int v) const { g[c].end = v; }
    VX_HD void setCount(int c, int v) const { g[c].count = v; }
};

struct SoaGroups {
    vxDecompositionGroupsSoA s;
    VX_HD int start(int c) const { return s.start[c]; }
    VX_HD int end(int c) const { return s.end[c]; }
    VX_HD int count(int c) const { return s.count[c]; }
    VX_HD void setStart(int c, int v) const { s.start[c] = v; }
    VX_HD void setEnd(int c, int v) const { s.end[c] = v; }
    VX_HD void setCount(int c, int v) const { s.count[c] = v; }
};

/// The allowed-input-classes table. A missing table admits every class; a class outside the
/// table is not admitted (never read past its end).
struct AllowedClasses {
    const int* table = nullptr;
    int size = 0;
    VX_HD int entry(int cls) const
    {
        if (!table) return 1;
        if (cls < 0 || cls >= size) return 0;
        return table[cls];
    }
    VX_HD bool admits(int cls) const { return entry(cls) >= 1; }
};

static_assert(std::is_trivially_copyable_v<AosPoints<float>>);
static_assert(std::is_trivially_copyable_v<SoaPoints>);
static_assert(std::is_trivially_copyable_v<AllowedClasses>);

} // namespace vx
