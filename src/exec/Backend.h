// Compute backends and the devices they offer.
#pragma once

#include <string>
#include <vector>

namespace vx {

enum class Backend { Host, Cuda };

struct Device {
    Backend backend = Backend::Host;
    int index = 0;
    std::string name;
    int maxThreadsPerBlock = 1024;
};

/// True when the library was built with the CUDA backend.
bool cudaCompiled();
/// Number of CUDA devices that answer; 0 without CUDA support or hardware.
int cudaDeviceCount();
/// The devices of a backend: the CUDA devices, or the host presented as one device.
std::vector<Device> listDevices(Backend backend);
/// Name of the host processor as the operating system reports it.
std::string hostProcessorName();
const char* backendName(Backend backend);

} // namespace vx
