#include "exec/Memory.h"

#include "exec/CudaRuntime.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <string>

#include <pthread.h>
#include <unistd.h>

namespace vx::mem {

namespace {

std::size_t meminfoValue(const char* key)
{
    std::ifstream in("/proc/meminfo");
    std::string name;
    std::size_t kb = 0;
    std::string unit;
    while (in >> name >> kb) {
        std::getline(in, unit);
        if (name == key)
            return kb * 1024;
    }
    return 0;
}

} // namespace

void* allocate(Backend backend, std::size_t bytes)
{
    if (bytes == 0)
        return nullptr;
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::allocate(bytes);
#endif
    void* p = std::aligned_alloc(64, (bytes + 63) / 64 * 64);
    if (!p)
        throw std::bad_alloc();
    return p;
}

void release(Backend backend, void* ptr)
{
    if (!ptr)
        return;
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::release(ptr);
#endif
    std::free(ptr);
}

void upload(Backend backend, void* dst, const void* hostSrc, std::size_t bytes)
{
    if (bytes == 0 || !dst || !hostSrc)
        return;
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::copyToDevice(dst, hostSrc, bytes);
#endif
    std::memcpy(dst, hostSrc, bytes);
}

void download(Backend backend, void* hostDst, const void* src, std::size_t bytes)
{
    if (bytes == 0 || !hostDst || !src)
        return;
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::copyToHost(hostDst, src, bytes);
#endif
    std::memcpy(hostDst, src, bytes);
}

void copy(Backend backend, void* dst, const void* src, std::size_t bytes)
{
    if (bytes == 0 || !dst || !src)
        return;
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::copyOnDevice(dst, src, bytes);
#endif
    std::memcpy(dst, src, bytes);
}

void info(Backend backend, std::size_t& freeBytes, std::size_t& totalBytes)
{
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::memoryInfo(freeBytes, totalBytes);
#endif
    freeBytes = meminfoValue("MemAvailable:");
    totalBytes = meminfoValue("MemTotal:");
}

void limits(Backend backend, std::size_t& heapBytes, std::size_t& stackBytes)
{
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::limits(heapBytes, stackBytes);
#endif
    // The host has no kernel heap of its own: report the C heap as unlimited (0) and the
    // stack size that a worker thread gets.
    heapBytes = 0;
    pthread_attr_t attr;
    stackBytes = 0;
    if (pthread_attr_init(&attr) == 0) {
        pthread_attr_getstacksize(&attr, &stackBytes);
        pthread_attr_destroy(&attr);
    }
}

int synchronize(Backend backend)
{
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        return cudart::synchronizeAndLastError();
#endif
    return 0;
}

void profilerStart(Backend backend)
{
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        cudart::profilerStart();
#endif
}

void profilerStop(Backend backend)
{
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda)
        cudart::profilerStop();
#endif
}

} // namespace vx::mem
