// Choosing and describing the compute device.
#include "core/ClassifierCore.h"
#include "exec/CudaRuntime.h"

template <class T> std::string Vexaro<T>::setCudaDevice(int index)
{
    auto& c = *core;
    const auto devices = vx::listDevices(c.backend());
    const int count = static_cast<int>(devices.size());
    // A negative index names no device either; it is refused like one past the end.
    if (index >= count || index < 0) {
        c.msg(0, "WARNING! Cuda device unchanged! There is no device of index: ", index);
        return c.device().name;
    }
#ifdef VEXARO_HAVE_CUDA
    if (c.backend() == vx::Backend::Cuda)
        vx::cudart::setDevice(index);
#endif
    const std::string name = devices[index].name;
    c.msg(0, "New Cuda device set : ", name);
    c.deviceIndex = index;
    return name;
}

template <class T> std::map<int, std::string> Vexaro<T>::getAvailableDevices()
{
    std::map<int, std::string> result;
    for (const auto& d : vx::listDevices(core->backend()))
        result[d.index] = d.name;
    return result;
}

template <class T> CudaInfo Vexaro<T>::getCudaInfo()
{
    CudaInfo info;
    for (const auto& d : vx::listDevices(core->backend())) {
        if (d.index == core->deviceIndex) {
            info.deviceFound = 1;
            info.deviceName = d.name;
        }
    }
    // There is no registry holding a display-driver watchdog level on this platform.
    info.tdrKeyFound = false;
    info.tdrLevelFound = false;
    return info;
}

template std::string Vexaro<float>::setCudaDevice(int);
template std::string Vexaro<double>::setCudaDevice(int);
template std::map<int, std::string> Vexaro<float>::getAvailableDevices();
template std::map<int, std::string> Vexaro<double>::getAvailableDevices();
template CudaInfo Vexaro<float>::getCudaInfo();
template CudaInfo Vexaro<double>::getCudaInfo();
