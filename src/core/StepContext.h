// What a processing step may touch: the cloud's store and grid state of the layout in use, the
// parameters and class slots, the message sink, launching and the step's own kept state. Drivers
// take a context, never the engine, so the engine knows no step.
#pragma once

#include "core/ClassifierCore.h"
#include "grid/PointKernel.h"

namespace vx {

template <class T> class StepContext {
public:
    explicit StepContext(ClassifierCore<T>& engine) : msg(engine.msg), e(engine) {}

    /// The engine's message sink, with its threshold.
    const Messenger& msg;

    const Parameters<T>& par() const { return e.par; }
    const ClassSlots& slots() const { return e.slots; }

    /// Points on the backend and cells of the grid.
    int pointCount() const { return e.store.count; }
    int groupCount() const { return e.grid.groupCount; }
    const VX_DecompositionGridParameters<T>& gridParameters() const { return e.grid.parameters; }
    AllowedClasses allowed() const { return e.allowed(); }

    /// Calls f with the layout in use (Records{} or Fields{}).
    template <class F> decltype(auto) visit(F&& f) const { return e.store.visit(std::forward<F>(f)); }
    /// The point views of layout L. A step may write through them, so the backend arrays no
    /// longer count as matching the host copy until the next download.
    template <class L> auto points(L layout) const
    {
        e.store.deviceMatchesHost = false;
        return e.store.points(layout);
    }
    template <class L> auto index(L layout) const { return e.grid.index(layout); }
    template <class L> auto groups(L layout) const { return e.grid.groups(layout); }
    /// The grid's copy of the coordinates in sorted order for layout L (see OrderedXyz); empty
    /// until a step gathers it, emptied by every decomposition.
    template <class L> auto& orderedBuffer(L layout) const { return e.grid.orderedBuffer(layout); }
    /// The views of a per-point neighbourhood kernel in layout L.
    template <class L> NeighbourhoodKernel<T, PointsOf<T, L>, IndexOf<L>, GroupsOf<L>> views(L layout) const
    {
        return {points(layout),
                index(layout),
                groups(layout),
                allowed(),
                gridParameters(),
                pointCount(),
                {orderedBuffer(layout).data()}};
    }

    Backend backend() const { return e.backend(); }
    LaunchConfig launchConfig(int n) const { return e.launchConfig(n); }
    /// A launch shape for n threads without the "Threads:" and "Blocks:" lines, for the
    /// bookkeeping launches that a step's printed record leaves out.
    LaunchConfig quietLaunchConfig(int n) const { return e.fullBlockConfig(n); }
    int checkDeviceError() const { return e.checkDeviceError(); }
    void memoryInfo(std::size_t& freeBytes, std::size_t& totalBytes) const
    {
        e.memoryInfo(freeBytes, totalBytes);
    }
    /// True when the grid of the layout in use is ready; otherwise says so (see the engine).
    bool requireGrid() const { return e.requireGrid(); }

    /// Number of returns of each point's pulse on the host, in file order; empty when unknown.
    const std::vector<uint8_t>& returnCounts() const { return e.store.returnCounts; }
    /// Intensity of each point's return on the host, in file order; empty when unknown.
    const std::vector<uint16_t>& intensities() const { return e.store.intensities; }

    /// Whether iterative steps may judge only the frontier of the last pass's changes.
    bool frontierPasses() const { return !e.fullPasses; }
    /// Whether kernels that read the classes they write run in rounds (see launchInPlace): on
    /// the device always, on the host when a test asks for it.
    bool inPlaceRounds() const { return e.backend() == Backend::Cuda || e.roundsOnHost; }

    /// Which cloud the store holds (see PointStore::generation).
    unsigned long long cloudGeneration() const { return e.store.generation; }

    /// State the step keeps on this engine between its calls.
    template <class S> S& state() const { return e.stepStates.template get<S>(); }

private:
    ClassifierCore<T>& e;
};

} // namespace vx
