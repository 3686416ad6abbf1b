// Construction, copying, settings and parameter setters of the facade.
#include "core/ClassifierCore.h"

#include <algorithm>
#include <stdexcept>

template <class T> Vexaro<T>::Vexaro() : core(std::make_shared<ClassifierCore<T>>())
{
    core->store.fieldsLayout = true;
}

// Member-wise: the engine is shared, so a copy acts on the same data as its source.
template <class T> Vexaro<T>::Vexaro(const Vexaro& o) = default;
template <class T> Vexaro<T>& Vexaro<T>::operator=(const Vexaro& o) = default;
template <class T> Vexaro<T>::~Vexaro() = default;

template <class T> void Vexaro<T>::facadeMessage(int level, const std::string& text, const std::string& value)
{
    if (level <= facadeMessageLevel)
        vx::Messenger::write(text, value);
}

template <class T> void Vexaro<T>::clearAllMemory()
{
    las.reset();
    core->clearAllMemory();
}

template <class T> int Vexaro<T>::pointCount() const
{
    return static_cast<int>(core->store.records.size());
}

template <class T> void Vexaro<T>::copyPoints(VX_Point<T>* out, int count)
{
    int n = 0;
    const VX_Point<T>* p = core->getHostPoints(n);
    if (out)
        std::copy(p, p + std::min(std::max(count, 0), n), out);
}

// --- settings ---
template <class T> void Vexaro<T>::setMessageLevel(int level)
{
    core->msg.threshold = std::clamp(level, 0, 4);
}
template <class T> void Vexaro<T>::setFacadeMessageLevel(int level)
{
    facadeMessageLevel = std::clamp(level, 0, 4);
}
template <class T> void Vexaro<T>::set_Threads(int threads)
{
    core->threads = threads;
}
template <class T> void Vexaro<T>::set_SoA(bool value)
{
    soa = value;
    core->store.fieldsLayout = value;
}
template <class T> void Vexaro<T>::set_NormalVectorDecompositionSize(double size)
{
    normalVectorDecompositionSize = size;
}
template <class T> void Vexaro<T>::set_AllowedInputClasses(int* table, int count)
{
    core->setAllowedClasses(table, count);
}
template <class T> void Vexaro<T>::setHostThreads(int threads)
{
    core->hostThreads = std::max(0, threads);
}
template <class T> void Vexaro<T>::setDeviceErrorHandler(std::function<void(int)> handler)
{
    core->deviceErrorHandler = std::move(handler);
}

template <class T> void Vexaro<T>::setComputeBackend(const std::string& name)
{
    vx::BackendChoice choice;
    if (name == "auto")
        choice = vx::BackendChoice::Auto;
    else if (name == "cpu")
        choice = vx::BackendChoice::Cpu;
    else if (name == "cuda")
        choice = vx::BackendChoice::Cuda;
    else
        throw std::invalid_argument("unknown compute backend '" + name + "' (expected auto, cpu or cuda)");
    core->chooseBackend(choice);
}

template <class T> std::string Vexaro<T>::computeBackend() const
{
    return vx::backendName(core->backend());
}

// --- parameters: stored as given; the steps define what a value means and check it before
// they run ---
#define VX_PARAMETER_ACCESSORS(Name, Field, Kind, ...)                                                       \
    template <class T> void Vexaro<T>::set_##Name(VEXARO_PARAMETER_ARG_##Kind v)                             \
    {                                                                                                        \
        core->par.Field = static_cast<decltype(core->par.Field)>(v);                                         \
    }                                                                                                        \
    template <class T> VEXARO_PARAMETER_TYPE_##Kind Vexaro<T>::get_##Name() const                            \
    {                                                                                                        \
        return core->par.Name;                                                                               \
    }
VEXARO_PARAMETERS(VX_PARAMETER_ACCESSORS)
#undef VX_PARAMETER_ACCESSORS

template class Vexaro<float>;
template class Vexaro<double>;
