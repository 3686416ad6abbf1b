// Raw memory of a backend: allocation, transfers and the free-memory query.
#pragma once

#include "exec/Backend.h"

#include <cstddef>

namespace vx::mem {

/// nullptr for 0 bytes; on the host an allocation failure throws std::bad_alloc.
void* allocate(Backend backend, std::size_t bytes);
void release(Backend backend, void* ptr);
void upload(Backend backend, void* dst, const void* hostSrc, std::size_t bytes);
void download(Backend backend, void* hostDst, const void* src, std::size_t bytes);
void copy(Backend backend, void* dst, const void* src, std::size_t bytes);
/// Free memory: the device's, or on the host what the operating system reports as available.
void info(Backend backend, std::size_t& freeBytes, std::size_t& totalBytes);
/// Malloc heap and per-thread stack limits used by kernels.
void limits(Backend backend, std::size_t& heapBytes, std::size_t& stackBytes);
/// Waits for the backend and returns its last error code, 0 when none.
int synchronize(Backend backend);
void profilerStart(Backend backend);
void profilerStop(Backend backend);

} // namespace vx::mem
