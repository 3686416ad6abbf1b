// What every processing method of the facade shares: the layout line, the driver run on the
// backend in use, the two timing lines and the results brought back to the host copy.
#pragma once

#include "core/ClassifierCore.h"
#include "core/StepContext.h"
#include "exec/HostThreads.h"
#include "steps/common/StepDrivers.h"

#include <string>

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

namespace vx::api {
/// Runs a step's driver on the backend in use, with a context over the engine.
template <class T, class H, class C> void runOnBackend(ClassifierCore<T>& core, H hostFn, C cudaFn)
{
    vx::StepContext<T> context(core);
    const vx::HostThreadScope team(core.hostThreads);
#ifdef VEXARO_HAVE_CUDA
    if (core.backend() == vx::Backend::Cuda)
        return cudaFn(context);
#endif
    hostFn(context);
}
} // namespace vx::api

/// Runs the driver hostFn / cudaFn of a step (see StepDrivers.h) on the engine `core`.
#define VX_STEP(hostFn, cudaFn)                                                                              \
    vx::api::runOnBackend(                                                                                   \
        *core, [](auto& c) { vx::host::hostFn(c); }, [](auto& c) { vx::cuda::cudaFn(c); })
