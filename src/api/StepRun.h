// How the facade runs a processing step: the driver of the backend in use inside the layout in
// use, the timing lines, then the results brought back to the host copy. Included by the units
// that define processing methods.
#pragma once

#include "core/ClassifierCore.h"
#include "core/StepContext.h"
#include "steps/common/StepDrivers.h"

template <class T> template <class Driver> void Vexaro<T>::runStep(const char* modeKind, Driver&& driver)
{
    const bool aosOnly = std::string(modeKind) == "aos-only";
    if (soa) {
        if (!aosOnly)
            facadeMessage(0, "SOA");
    } else {
        facadeMessage(0, "AOS");
    }
    const long long start = vx::systemTicks();
    driver();
    const long long end = vx::systemTicks();
    const long long ms = (end - start) / 10000;
    vx::printTiming(ms / 1000, ms);
    core->syncToHost();
}

namespace vx {
/// Runs a step's driver on the backend in use, with a context over the engine.
template <class T, class H, class C> void runOnBackend(ClassifierCore<T>& core, H hostFn, C cudaFn)
{
    vx::StepContext<T> context(core);
#ifdef VEXARO_HAVE_CUDA
    if (core.backend() == vx::Backend::Cuda)
        return cudaFn(context);
#endif
    hostFn(context);
}
} // namespace vx

#define VX_STEP(hostFn, cudaFn)                                                                              \
    vx::runOnBackend(                                                                                        \
        *core, [](auto& c) { vx::host::hostFn(c); }, [](auto& c) { vx::cuda::cudaFn(c); })
