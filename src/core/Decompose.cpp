// The decomposition as a step of the engine: upload from the host copy, then the backend core.
#include "core/ClassifierCore.h"
#include "core/DecompositionDrivers.h"
#include "exec/HostThreads.h"

#include <cmath>
#include <string>

using namespace vx;

template <class T> bool ClassifierCore<T>::decompose(double sx, double sy, double sz)
{
    if (!dataLoaded)
        return false;
    if (!(sx > 0.0) || !(sy > 0.0) || !(sz >= 0.0) || !std::isfinite(sx) || !std::isfinite(sy) ||
        !std::isfinite(sz)) {
        msg(0, "ERROR! Cell edges must be positive and finite; decomposition not done. Edges:",
            std::to_string(sx) + " " + std::to_string(sy) + " " + std::to_string(sz));
        return false;
    }
    const HostThreadScope team(hostThreads);
    grid.resetDevice(Records{});
    msg(0, "Standard decomposition");
    uploadPoints();
    msg(0, "Standard");
    if (store.fieldsLayout)
        msg(0, "SoA");

    const long long start = systemTicks();
    run([&](auto& c) { vx::host::decomposeCore(c, sx, sy, sz); },
        [&](auto& c) { vx::cuda::decomposeCore(c, sx, sy, sz); });
    checkDeviceError();
    const float ms = (systemTicks() - start) / 10000.0f;
    printTiming(ms / 1000.0f, ms);
    return true;
}

template <class T> bool ClassifierCore<T>::requireGrid()
{
    const bool ready = store.onDevice() && store.visit([&](auto layout) { return grid.ready(layout); });
    if (ready || store.count == 0)
        return ready;
    msg(0, "ERROR! No grid decomposition for the current layout; run a decomposition first");
    return false;
}

template bool ClassifierCore<float>::requireGrid();
template bool ClassifierCore<double>::requireGrid();
template bool ClassifierCore<float>::decompose(double, double, double);
template bool ClassifierCore<double>::decompose(double, double, double);
