// The decomposition on one backend: extremes, cell counts, links sorted by cell, runs.
#pragma once

#include "core/ClassifierCore.h"
#include "exec/Algorithms.h"
#include "exec/Launch.h"
#include "core/DecompositionDrivers.h"
#include "grid/kernels.h"

namespace vx::VX_BACKEND_NS {

template <class T> void storeExtremes(ClassifierCore<T>& c)
{
    auto& g = c.gridParameters;
    const int n = c.pointCount;
    c.msg(3, "Calculating limits");
    if (c.soa) {
        const auto s = c.deviceSoA.points();
        float* axes[3] = {s.x, s.y, s.z};
        T* mins[3] = {&g.minX, &g.minY, &g.minZ};
        T* maxs[3] = {&g.maxX, &g.maxY, &g.maxZ};
        for (int a = 0; a < 3; ++a) {
            int lo = 0, hi = 0;
            minMaxPositions(axes[a], n, FloatLess{}, lo, hi);
            float vlo = 0, vhi = 0;
            mem::download(c.backend(), &vlo, axes[a] + lo, sizeof(float));
            mem::download(c.backend(), &vhi, axes[a] + hi, sizeof(float));
            *mins[a] = static_cast<T>(vlo);
            *maxs[a] = static_cast<T>(vhi);
        }
    } else {
        const VX_Point<T>* p = c.devicePoints.data();
        int lo[3], hi[3];
        minMaxPositions(p, n, compare_X_value<T>{}, lo[0], hi[0]);
        minMaxPositions(p, n, compare_Y_value<T>{}, lo[1], hi[1]);
        minMaxPositions(p, n, compare_Z_value<T>{}, lo[2], hi[2]);
        VX_Point<T> e[6];
        for (int a = 0; a < 3; ++a) {
            mem::download(c.backend(), &e[2 * a], p + lo[a], sizeof(VX_Point<T>));
            mem::download(c.backend(), &e[2 * a + 1], p + hi[a], sizeof(VX_Point<T>));
        }
        g.minX = e[0].x, g.maxX = e[1].x;
        g.minY = e[2].y, g.maxY = e[3].y;
        g.minZ = e[4].z, g.maxZ = e[5].z;
    }
    c.msg(4, "Min X: ", g.minX);
    c.msg(4, "Max X: ", g.maxX);
    c.msg(4, "Min Y: ", g.minY);
    c.msg(4, "Max Y: ", g.maxY);
    c.msg(4, "Min Z: ", g.minZ);
    c.msg(4, "Max Z: ", g.maxZ);
}

template <class T, class Points, class Index, class Groups>
void buildRuns(ClassifierCore<T>& c, Points pts, Index itg, Groups groups, bool soaForm)
{
    const int n = c.pointCount;
    const int cells = c.groupCount;
    const LaunchConfig byPoint = c.fullBlockConfig(n);
    const LaunchConfig byCell = c.fullBlockConfig(cells);

    launch(byPoint, n, InitializeIndexToGroup<Index>{itg});
    c.checkDeviceError();

    c.msg(4, "Getting groups index");
    std::size_t freeBytes = 0, totalBytes = 0;
    c.memoryInfo(freeBytes, totalBytes);
    c.msg(4, "Free memory", static_cast<double>(freeBytes) / 1e9);
    launch(byPoint, n, GetGroupIndex<T, Points, Index>{pts, itg, c.gridParameters});
    c.checkDeviceError();

    if (soaForm) {
        const auto s = c.deviceSoA.index();
        sortByKey(s.group, s.pointIndex, n);
    } else {
        c.msg(4, "Sorting");
        stableSort(c.deviceIndexToGroup.data(), n, CompareITG{});
    }
    c.checkDeviceError();

    c.msg(4, "Groups initialization");
    launch(byCell, cells, InitializeDecGroups<Groups>{groups, soaForm ? -1 : 0});
    c.checkDeviceError();

    c.msg(4, "Gathering Group Params");
    launch(byPoint, n, GatherGroupsParameters<Index, Groups>{itg, groups, n});
    c.checkDeviceError();

    c.msg(3, "Finalize decomposition");
    launch(byCell, cells, GetGroupsNumber<Groups>{groups});
    c.checkDeviceError();
}

template <class T> void decomposeCore(ClassifierCore<T>& c, double sx, double sy, double sz)
{
    storeExtremes(c);
    const GridFit fit = fitGrid(c, sx, sy, sz);
    auto& g = c.gridParameters;
    g.cellsX = fit.cellsX, g.cellsY = fit.cellsY, g.cellsZ = fit.cellsZ;
    g.sizeX = static_cast<T>(fit.sx), g.sizeY = static_cast<T>(fit.sy), g.sizeZ = static_cast<T>(fit.sz);
    c.groupCount = fit.groupCount;

    const auto backend = c.backend();
    c.msg(3, "Generating connectors: ", c.pointCount);
    if (c.soa) {
        c.deviceSoA.pointIndex.allocate(backend, c.pointCount);
        c.deviceSoA.group.allocate(backend, c.pointCount);
    } else {
        c.deviceIndexToGroup.allocate(backend, c.pointCount);
    }
    c.checkDeviceError();
    c.msg(2, "Generating groups: ", c.groupCount);
    if (c.soa) {
        c.deviceSoA.start.allocate(backend, c.groupCount);
        c.deviceSoA.end.allocate(backend, c.groupCount);
        c.deviceSoA.count.allocate(backend, c.groupCount);
    } else {
        c.deviceGroups.allocate(backend, c.groupCount);
    }
    c.checkDeviceError();

    if (c.soa)
        buildRuns(c, c.soaPoints(), c.soaIndex(), c.soaGroups(), true);
    else
        buildRuns(c, c.aosPoints(), c.aosIndex(), c.aosGroups(), false);
}

} // namespace vx::VX_BACKEND_NS
