// Accessors of the point-to-cell links and the cell runs in both layouts, and the allowed-classes
// table. Kernels are written once against these members; all are small views, copied by value.
#pragma once

#include "exec/Hd.h"
#include "grid/GridTypes.h"
#include "store/Layout.h"

#include <Vexaro.h>

#include <type_traits>

namespace vx {

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

/// The link and run views of a layout.
template <class L> using IndexOf = std::conditional_t<L::fields, SoaIndex, AosIndex>;
template <class L> using GroupsOf = std::conditional_t<L::fields, SoaGroups, AosGroups>;

/// The allowed-input-classes table. A missing table admits every class; a class outside the
/// table is not admitted (never read past its end).
struct AllowedClasses {
    const int* table = nullptr;
    int size = 0;
    VX_HD int entry(int cls) const
    {
        if (!table)
            return 1;
        if (cls < 0 || cls >= size)
            return 0;
        return table[cls];
    }
    VX_HD bool admits(int cls) const { return entry(cls) >= 1; }
};

static_assert(std::is_trivially_copyable_v<AllowedClasses>);

} // namespace vx
