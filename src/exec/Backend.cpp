#include "exec/Backend.h"

#include "exec/CudaRuntime.h"

#include <fstream>

namespace vx {

bool cudaCompiled()
{
#ifdef VEXARO_HAVE_CUDA
    return true;
#else
    return false;
#endif
}

int cudaDeviceCount()
{
#ifdef VEXARO_HAVE_CUDA
    return cudart::deviceCount();
#else
    return 0;
#endif
}

std::string hostProcessorName()
{
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("model name", 0) == 0) {
            auto colon = line.find(':');
            if (colon != std::string::npos) {
                auto name = line.substr(colon + 1);
                name.erase(0, name.find_first_not_of(' '));
                if (!name.empty())
                    return name;
            }
        }
    }
    return "Host CPU";
}

std::vector<Device> listDevices(Backend backend)
{
    std::vector<Device> devices;
#ifdef VEXARO_HAVE_CUDA
    if (backend == Backend::Cuda) {
        int n = cudart::deviceCount();
        for (int i = 0; i < n; ++i) {
            Device d;
            d.backend = Backend::Cuda;
            d.index = i;
            cudart::properties(i, d.name, d.maxThreadsPerBlock);
            devices.push_back(d);
        }
        return devices;
    }
#endif
    Device host;
    host.backend = Backend::Host;
    host.name = hostProcessorName();
    host.maxThreadsPerBlock = 1024;
    devices.push_back(host);
    return devices;
}

const char* backendName(Backend backend)
{
    return backend == Backend::Cuda ? "cuda" : "cpu";
}

} // namespace vx
