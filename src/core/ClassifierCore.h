// The engine behind a Vexaro object: run settings, parameters, class slots, the cloud's store,
// the grid state and the backend. Steps see it through a StepContext only.
#pragma once

#include "core/Messenger.h"
#include "core/Parameters.h"
#include "core/StepStates.h"
#include "exec/Backend.h"
#include "exec/Buffer.h"
#include "exec/Launch.h"
#include "grid/GridStore.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "store/PointStore.h"

#include <Vexaro.h>

#include <functional>
#include <vector>

namespace vx {

enum class BackendChoice { Auto, Cpu, Cuda };

} // namespace vx

template <class T> class ClassifierCore {
public:
    ClassifierCore();
    ~ClassifierCore() = default;
    ClassifierCore(const ClassifierCore&) = delete;
    ClassifierCore& operator=(const ClassifierCore&) = delete;

    // --- run settings ---
    int32_t threads = 256;
    bool dataLoaded = false;
    int32_t deviceIndex = 0;
    vx::Messenger msg; ///< threshold = the engine's message level
    vx::BackendChoice backendChoice = vx::BackendChoice::Auto;
    int hostThreads = 0; ///< 0: every core
    std::function<void(int)> deviceErrorHandler;
    /// An error code the next device check reports as if the backend had raised it; lets tests
    /// exercise the error path on a backend that never fails.
    int pendingError = 0;
    /// Upper bound on the free memory the engine believes it has (0: none); bounds the grid's
    /// bookkeeping below what the backend offers.
    std::size_t freeMemoryCap = 0;
    /// Iterative steps judge every point in every pass instead of the frontier of the last
    /// pass's changes; the classes are the same, so tests compare both ways with it.
    bool fullPasses = false;
    /// The host backend runs kernels that read the classes they write in rounds, as the device
    /// does, instead of its own pass; the classes are the same, so tests compare both ways with it.
    bool roundsOnHost = false;
    void memoryInfo(std::size_t& freeBytes, std::size_t& totalBytes);

    // --- class slots and parameters ---
    vx::ClassSlots slots;
    vx::Parameters<T> par;

    // --- the cloud and its grid ---
    vx::PointStore<T> store;
    vx::GridStore<T> grid;

    // --- backend data ---
    vx::Buffer<int32_t> allowedClasses;
    int32_t allowedClassesCount = 0;
    std::vector<int32_t> allowedHostCopy; ///< to rebuild the table when the backend changes
    /// What steps keep between their calls; dropped with the backend data.
    vx::StepStates stepStates;

    // --- backend ---
    /// The backend in use; resolved on first use from the choice and the hardware present.
    vx::Backend backend();
    void chooseBackend(vx::BackendChoice choice);
    vx::Device device();
    int effectiveHostThreads() const;

    /// Threads per block and blocks for n threads, printed as "Threads: " and "Blocks: ".
    vx::LaunchConfig launchConfig(int n);
    /// The decomposition's own shape: the device maximum of threads per block, no message.
    vx::LaunchConfig fullBlockConfig(int n);
    /// Waits for the backend; on an error prints it and hands the code to the error handler.
    int checkDeviceError();

    // --- data ---
    /// Takes a copy of count records; false (and not loaded) for a null pointer.
    bool setData(const VX_Point<T>* points, int count);
    /// The same, taking over records the caller no longer needs instead of copying them.
    bool setData(std::vector<VX_Point<T>>&& records);
    /// The host records, with at least `fields` (bits of PointFieldBit) brought up to date
    /// from the backend first.
    const VX_Point<T>* getHostPoints(int& count, unsigned fields = vx::kEveryField)
    {
        return store.hostRecords(count, fields);
    }
    bool syncToHost();
    void uploadPoints();
    bool decompose(double sx, double sy, double sz);
    /// True when the arrays of the current layout exist for the uploaded points; otherwise says
    /// that a decomposition must run first. Every step driver starts with it.
    bool requireGrid();
    void setAllowedClasses(const int* table, int count);
    void clearAllMemory();

    vx::AllowedClasses allowed() const { return {allowedClasses.data(), allowedClassesCount}; }

    /// Runs hostFn or cudaFn with the engine, by the backend in use (the decomposition's drivers).
    template <class H, class C> void run(H hostFn, C cudaFn)
    {
#ifdef VEXARO_HAVE_CUDA
        if (backend() == vx::Backend::Cuda)
            return cudaFn(*this);
#endif
        hostFn(*this);
    }

private:
    bool backendResolved = false;
    vx::Backend resolvedBackend = vx::Backend::Host;
};

extern template class ClassifierCore<float>;
extern template class ClassifierCore<double>;
