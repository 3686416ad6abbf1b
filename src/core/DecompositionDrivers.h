// Backend entry points of the grid decomposition.
#pragma once

template <class T> class ClassifierCore;

namespace vx::host {
template <class T> void decomposeCore(ClassifierCore<T>& c, double sx, double sy, double sz);
}
namespace vx::cuda {
template <class T> void decomposeCore(ClassifierCore<T>& c, double sx, double sy, double sz);
}

namespace vx {
/// Cells along one axis for an extent and an edge: whole cells plus one, so that a point on the
/// maximum still has a cell. Returns -1 when the count does not fit an int32.
long long cellsAlong(double extent, double edge);
/// Cell edges that fit the grid's bookkeeping into 80 per cent of the free memory.
struct GridFit {
    double sx, sy, sz;
    int cellsX, cellsY, cellsZ, groupCount;
};
template <class T> GridFit fitGrid(ClassifierCore<T>& c, double sx, double sy, double sz);
} // namespace vx
