#include "core/ClassifierCore.h"

#include "exec/Memory.h"

#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace vx {

namespace {

void defaultDeviceErrorHandler(int)
{
    // Deliberately drastic: a device error leaves no trustworthy state to recover from.
    int ignored = std::system("pause");
    (void)ignored;
    std::exit(0);
}

} // namespace
} // namespace vx

using namespace vx;

template <class T> ClassifierCore<T>::ClassifierCore() : deviceErrorHandler(defaultDeviceErrorHandler)
{
    msg.threshold = 2;
}

template <class T> Backend ClassifierCore<T>::backend()
{
    if (!backendResolved) {
        resolvedBackend = Backend::Host;
        if (backendChoice != BackendChoice::Cpu && cudaDeviceCount() > 0)
            resolvedBackend = Backend::Cuda;
        backendResolved = true;
    }
    return resolvedBackend;
}

template <class T> void ClassifierCore<T>::chooseBackend(BackendChoice choice)
{
    if (choice == BackendChoice::Cuda && cudaDeviceCount() < 1) {
        throw std::runtime_error(cudaCompiled()
                                     ? "the CUDA backend was asked for but no CUDA device answers"
                                     : "the CUDA backend was asked for but this build has no CUDA support");
    }
    backendChoice = choice;
    if (!backendResolved)
        return;
    const Backend next =
        (choice != BackendChoice::Cpu && cudaDeviceCount() > 0) ? Backend::Cuda : Backend::Host;
    if (next == resolvedBackend)
        return;
    // Arrays of one backend cannot be read by the other: keep the host copy and the table,
    // drop the rest; the next decomposition uploads again.
    if (store.anyOnDevice())
        syncToHost();
    store.resetDevice();
    grid.resetDevice();
    stepStates.clear();
    store.count = grid.groupCount = 0;
    backendResolved = false;
    if (!allowedHostCopy.empty()) {
        allowedClasses.allocate(backend(), allowedHostCopy.size());
        allowedClasses.upload(allowedHostCopy.data(), allowedHostCopy.size());
    } else {
        allowedClasses.reset();
    }
}

template <class T> Device ClassifierCore<T>::device()
{
    auto devices = listDevices(backend());
    for (const auto& d : devices)
        if (d.index == deviceIndex)
            return d;
    return devices.empty() ? Device{} : devices.front();
}

template <class T> int ClassifierCore<T>::effectiveHostThreads() const
{
    return hostThreads > 0 ? hostThreads : std::max(1, omp_get_max_threads());
}

template <class T> LaunchConfig ClassifierCore<T>::launchConfig(int n)
{
    LaunchConfig cfg;
    // A thread count of 0 or less would divide by zero; one thread per block is the nearest
    // meaningful request.
    cfg.threads = std::max(1, std::min(threads, device().maxThreadsPerBlock));
    cfg.blocks = std::max(0, n) / cfg.threads + 1;
    cfg.hostThreads = effectiveHostThreads();
    msg(0, "Threads: ", cfg.threads);
    msg(0, "Blocks: ", cfg.blocks);
    return cfg;
}

template <class T> LaunchConfig ClassifierCore<T>::fullBlockConfig(int n)
{
    LaunchConfig cfg;
    cfg.threads = std::max(1, device().maxThreadsPerBlock);
    cfg.blocks = std::max(0, n) / cfg.threads + 1;
    cfg.hostThreads = effectiveHostThreads();
    return cfg;
}

template <class T> int ClassifierCore<T>::checkDeviceError()
{
    int code = mem::synchronize(backend());
    if (code == 0 && pendingError != 0)
        std::swap(code, pendingError);
    if (code == 0)
        return 0;
    msg(1, "ERROR! CUDA returned code: ", code);
    if (deviceErrorHandler)
        deviceErrorHandler(code);
    return code;
}

namespace {
template <class T> int firstNonFinite(const VX_Point<T>* points, int count)
{
    for (int i = 0; i < count; ++i)
        if (!std::isfinite(points[i].x) || !std::isfinite(points[i].y) || !std::isfinite(points[i].z))
            return i;
    return -1;
}
} // namespace

template <class T> void ClassifierCore<T>::memoryInfo(std::size_t& freeBytes, std::size_t& totalBytes)
{
    mem::info(backend(), freeBytes, totalBytes);
    if (freeMemoryCap > 0 && freeBytes > freeMemoryCap)
        freeBytes = freeMemoryCap;
}

// Loading keeps the host records only; the backend arrays of the layout in use are made by the
// next decomposition.
template <class T> bool ClassifierCore<T>::setData(const VX_Point<T>* points, int count)
{
    if (!points) {
        dataLoaded = false;
        return false;
    }
    if (count < 0)
        count = 0;
    if (int bad = firstNonFinite(points, count); bad >= 0) {
        // Cells cannot be computed for such a point; keep whatever was loaded before.
        msg(0, "ERROR! Non-finite coordinate, cloud not loaded. Point:", bad);
        return false;
    }
    dataLoaded = true;
    store.assign(std::vector<VX_Point<T>>(points, points + count));
    return true;
}

template <class T> bool ClassifierCore<T>::setData(std::vector<VX_Point<T>>&& records)
{
    const int count = static_cast<int>(records.size());
    if (int bad = firstNonFinite(records.data(), count); bad >= 0) {
        msg(0, "ERROR! Non-finite coordinate, cloud not loaded. Point:", bad);
        return false;
    }
    dataLoaded = true;
    store.assign(std::move(records));
    return true;
}

template <class T> void ClassifierCore<T>::setAllowedClasses(const int* table, int count)
{
    allowedClasses.reset();
    allowedClassesCount = 0;
    allowedHostCopy.clear();
    checkDeviceError();
    if (!table || count <= 0)
        return;
    allowedHostCopy.assign(table, table + count);
    allowedClasses.allocate(backend(), static_cast<size_t>(count));
    checkDeviceError();
    allowedClasses.upload(table, static_cast<size_t>(count));
    allowedClassesCount = count;
    checkDeviceError();
}

template <class T> void ClassifierCore<T>::clearAllMemory()
{
    msg(1, "Clearing Memories!");
    store.resetDevice();
    grid.resetDevice();
    allowedClasses.reset();
    allowedClassesCount = 0;
    allowedHostCopy.clear();
    stepStates.clear();
    store.clear();
    grid.clear();
    dataLoaded = false;
    checkDeviceError();
}

template class ClassifierCore<float>;
template class ClassifierCore<double>;
