// Class remapping and class counting over raw point order, shared by the growth steps.
#pragma once

#include "exec/Hd.h"
#include "grid/Layouts.h"
#include "store/PointViews.h"

namespace vx {

/// k_remapClass: every point of fromClass gets toClass. The per-field form
/// also drops the +1000 rejection marks: any class of 256 or more loses 1000.
template <class Points, bool DropRejectionMarks> struct RemapClass {
    Points pts;
    int fromClass;
    int toClass;
    VX_HD void operator()(int i) const
    {
        int c = pts.cls(i);
        if (c == fromClass)
            c = toClass;
        if (DropRejectionMarks && c >= 256)
            c -= 1000;
        pts.setCls(i, c);
    }
};
template <class T, class L> using k_remapClass = RemapClass<PointsOf<T, L>, L::fields>;

/// Predicate of the ground count: the record's class equals cls.
template <class T> struct PointClassIs {
    int cls;
    VX_HD bool operator()(const VX_Point<T>& p) const { return p.classification == cls; }
};

struct IntEquals {
    int value;
    VX_HD bool operator()(int v) const { return v == value; }
};

} // namespace vx
