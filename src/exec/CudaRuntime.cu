#include "exec/CudaRuntime.h"

#include <cuda_profiler_api.h>
#include <cuda_runtime.h>

namespace vx::cudart {

int deviceCount()
{
    int n = 0;
    if (cudaGetDeviceCount(&n) != cudaSuccess) {
        cudaGetLastError(); // a machine without a driver is not an error for the caller
        return 0;
    }
    return n;
}

bool properties(int index, std::string& name, int& maxThreadsPerBlock)
{
    cudaDeviceProp prop{};
    if (cudaGetDeviceProperties(&prop, index) != cudaSuccess)
        return false;
    name = prop.name;
    maxThreadsPerBlock = prop.maxThreadsPerBlock;
    return true;
}

int setDevice(int index)
{
    return static_cast<int>(cudaSetDevice(index));
}

int currentDevice()
{
    int d = 0;
    cudaGetDevice(&d);
    return d;
}

int synchronizeAndLastError()
{
    cudaDeviceSynchronize();
    return static_cast<int>(cudaGetLastError());
}

void* allocate(std::size_t bytes)
{
    void* p = nullptr;
    if (bytes == 0)
        return nullptr;
    if (cudaMalloc(&p, bytes) != cudaSuccess)
        return nullptr; // surfaces at the next error check
    return p;
}

void release(void* ptr)
{
    if (ptr)
        cudaFree(ptr);
}

void copyToDevice(void* dst, const void* src, std::size_t bytes)
{
    if (bytes)
        cudaMemcpy(dst, src, bytes, cudaMemcpyHostToDevice);
}

void copyToHost(void* dst, const void* src, std::size_t bytes)
{
    if (bytes)
        cudaMemcpy(dst, src, bytes, cudaMemcpyDeviceToHost);
}

void copyOnDevice(void* dst, const void* src, std::size_t bytes)
{
    if (bytes)
        cudaMemcpy(dst, src, bytes, cudaMemcpyDeviceToDevice);
}

void memoryInfo(std::size_t& freeBytes, std::size_t& totalBytes)
{
    freeBytes = totalBytes = 0;
    cudaMemGetInfo(&freeBytes, &totalBytes);
}

void limits(std::size_t& heapBytes, std::size_t& stackBytes)
{
    heapBytes = stackBytes = 0;
    cudaDeviceGetLimit(&heapBytes, cudaLimitMallocHeapSize);
    cudaDeviceGetLimit(&stackBytes, cudaLimitStackSize);
}

void profilerStart()
{
    cudaProfilerStart();
}
void profilerStop()
{
    cudaProfilerStop();
}

} // namespace vx::cudart
