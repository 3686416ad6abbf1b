// The per-point verdict bytes of the steps that judge in one pass and mark in the next.
#pragma once

#include "exec/Hd.h"
#include "grid/PointKernel.h"

#include <cstdint>

namespace vx {

/// Verdicts of 1 (a point the step marks, or one that joins a growth), for counting.
struct IsMarked {
    VX_HD bool operator()(uint8_t v) const { return v == 1; }
};

/// Gives newClass to the points whose verdict is 1.
template <class T, class Points, class Index, class Groups>
struct MarkVerdicts : NeighbourhoodKernel<T, Points, Index, Groups> {
    const uint8_t* verdict;
    int newClass;

    VX_HD void operator()(int i) const
    {
        if (i >= this->count)
            return;
        const int p = this->itg.pointIndex(i);
        if (verdict[p] == 1)
            this->pts.setCls(p, newClass);
    }
};
template <class T, class L> using k_markVerdicts = OnLayout<MarkVerdicts, T, L>;

} // namespace vx
