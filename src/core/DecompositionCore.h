// The decomposition on one backend: extremes, cell counts, links sorted by cell, runs.
#pragma once

#include "core/ClassifierCore.h"
#include "core/DecompositionDrivers.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "grid/kernels.h"

namespace vx::VX_BACKEND_NS {

/// Positions of the smallest and largest point along each axis, read back as coordinates.
template <class T> void extremes(ClassifierCore<T>& c, Fields, T* mins[3], T* maxs[3])
{
    const auto s = c.store.deviceFields.pointers();
    float* axes[3] = {s.x, s.y, s.z};
    for (int a = 0; a < 3; ++a) {
        int lo = 0, hi = 0;
        minMaxPositions(axes[a], c.store.count, FloatLess{}, lo, hi);
        float vlo = 0, vhi = 0;
        mem::download(c.backend(), &vlo, axes[a] + lo, sizeof(float));
        mem::download(c.backend(), &vhi, axes[a] + hi, sizeof(float));
        *mins[a] = static_cast<T>(vlo);
        *maxs[a] = static_cast<T>(vhi);
    }
}

template <class T> void extremes(ClassifierCore<T>& c, Records, T* mins[3], T* maxs[3])
{
    const VX_Point<T>* p = c.store.deviceRecords.data();
    const int n = c.store.count;
    int lo[3], hi[3];
    minMaxPositions(p, n, compare_X_value<T>{}, lo[0], hi[0]);
    minMaxPositions(p, n, compare_Y_value<T>{}, lo[1], hi[1]);
    minMaxPositions(p, n, compare_Z_value<T>{}, lo[2], hi[2]);
    VX_Point<T> e[6];
    for (int a = 0; a < 3; ++a) {
        mem::download(c.backend(), &e[2 * a], p + lo[a], sizeof(VX_Point<T>));
        mem::download(c.backend(), &e[2 * a + 1], p + hi[a], sizeof(VX_Point<T>));
    }
    *mins[0] = e[0].x, *maxs[0] = e[1].x;
    *mins[1] = e[2].y, *maxs[1] = e[3].y;
    *mins[2] = e[4].z, *maxs[2] = e[5].z;
}

template <class T, class L> void storeExtremes(ClassifierCore<T>& c, L layout)
{
    auto& g = c.grid.parameters;
    c.msg(3, "Calculating limits");
    T* mins[3] = {&g.minX, &g.minY, &g.minZ};
    T* maxs[3] = {&g.maxX, &g.maxY, &g.maxZ};
    extremes(c, layout, mins, maxs);
    c.msg(4, "Min X: ", g.minX);
    c.msg(4, "Max X: ", g.maxX);
    c.msg(4, "Min Y: ", g.minY);
    c.msg(4, "Max Y: ", g.maxY);
    c.msg(4, "Min Z: ", g.minZ);
    c.msg(4, "Max Z: ", g.maxZ);
}

/// Sorts the links by cell: a stable sort of the records, a key-value sort of the fields.
template <class T> void sortLinks(ClassifierCore<T>& c, Records)
{
    c.msg(4, "Sorting");
    stableSort(c.grid.deviceIndex.data(), c.store.count, CompareITG{});
}
template <class T> void sortLinks(ClassifierCore<T>& c, Fields)
{
    auto& d = c.grid.deviceFields;
    sortByKey(d.group.data(), d.pointIndex.data(), c.store.count);
}

template <class T, class L> void buildRuns(ClassifierCore<T>& c, L layout)
{
    const int n = c.store.count;
    const int cells = c.grid.groupCount;
    const LaunchConfig byPoint = c.fullBlockConfig(n);
    const LaunchConfig byCell = c.fullBlockConfig(cells);
    const auto pts = c.store.points(layout);
    const auto itg = c.grid.index(layout);
    const auto groups = c.grid.groups(layout);

    launch(byPoint, n, InitializeIndexToGroup<decltype(itg)>{itg});
    c.checkDeviceError();

    c.msg(4, "Getting groups index");
    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    c.msg(4, "Free memory", static_cast<double>(freeBytes) / 1e9);
    launch(byPoint, n, GetGroupIndex<T, decltype(pts), decltype(itg)>{pts, itg, c.grid.parameters});
    c.checkDeviceError();

    sortLinks(c, layout);
    c.checkDeviceError();

    c.msg(4, "Groups initialization");
    // Runs of empty cells start at -1 in the per-field form and at 0 in the records.
    launch(byCell, cells, InitializeDecGroups<decltype(groups)>{groups, L::fields ? -1 : 0});
    c.checkDeviceError();

    c.msg(4, "Gathering Group Params");
    launch(byPoint, n, GatherGroupsParameters<decltype(itg), decltype(groups)>{itg, groups, n});
    c.checkDeviceError();

    c.msg(3, "Finalize decomposition");
    launch(byCell, cells, GetGroupsNumber<decltype(groups)>{groups});
    c.checkDeviceError();
}

template <class T> void decomposeCore(ClassifierCore<T>& c, double sx, double sy, double sz)
{
    c.store.visit([&](auto layout) {
        storeExtremes(c, layout);
        const GridFit fit = fitGrid(c, sx, sy, sz);
        auto& g = c.grid.parameters;
        g.cellsX = fit.cellsX, g.cellsY = fit.cellsY, g.cellsZ = fit.cellsZ;
        g.sizeX = static_cast<T>(fit.sx), g.sizeY = static_cast<T>(fit.sy), g.sizeZ = static_cast<T>(fit.sz);
        c.grid.groupCount = fit.groupCount;

        const auto backend = c.backend();
        c.msg(3, "Generating connectors: ", c.store.count);
        c.grid.allocateIndex(layout, backend, static_cast<std::size_t>(c.store.count));
        c.checkDeviceError();
        c.msg(2, "Generating groups: ", c.grid.groupCount);
        c.grid.allocateGroups(layout, backend);
        c.checkDeviceError();
        buildRuns(c, layout);
    });
}

} // namespace vx::VX_BACKEND_NS
