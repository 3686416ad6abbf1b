// The few CUDA runtime calls the library makes, behind plain C++ declarations so that
// host-only translation units never include CUDA headers. Defined only in CUDA builds.
#pragma once

#include <cstddef>
#include <string>

namespace vx::cudart {

int deviceCount();
/// Fills name and maximum threads per block; false when the properties cannot be read.
bool properties(int index, std::string& name, int& maxThreadsPerBlock);
int setDevice(int index);
int currentDevice();
/// Waits for the device and returns the last error code (0 when none).
int synchronizeAndLastError();
void* allocate(std::size_t bytes);
void release(void* ptr);
void copyToDevice(void* dst, const void* src, std::size_t bytes);
void copyToHost(void* dst, const void* src, std::size_t bytes);
void copyOnDevice(void* dst, const void* src, std::size_t bytes);
void memoryInfo(std::size_t& freeBytes, std::size_t& totalBytes);
void limits(std::size_t& heapBytes, std::size_t& stackBytes);
void profilerStart();
void profilerStop();

} // namespace vx::cudart
