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
    if (level <= facadeMessageLevel) vx::Messenger::write(text, value);
}

template <class T> void Vexaro<T>::clearAllMemory()
{
    las.reset();
    core->clearAllMemory();
}

template <class T> int Vexaro<T>::pointCount() const { return static_cast<int>(core->store.records.size()); }

template <class T> void Vexaro<T>::copyPoints(VX_Point<T>* out, int count)
{
    int n = 0;
    const VX_Point<T>* p = core->getHostPoints(n);
    if (out) std::copy(p, p + std::min(std::max(count, 0), n), out);
}

// --- settings ---
template <class T> void Vexaro<T>::setMessageLevel(int level) { core->msg.threshold = std::clamp(level, 0, 4); }
template <class T> void Vexaro<T>::setFacadeMessageLevel(int level) { facadeMessageLevel = std::clamp(level, 0, 4); }
template <class T> void Vexaro<T>::set_Threads(int threads) { core->threads = threads; }
template <class T> void Vexaro<T>::set_SoA(bool value)
{
    soa = value;
    core->store.fieldsLayout = value;
}
template <class T> void Vexaro<T>::set_NormalVectorDecompositionSize(double size) { normalVectorDecompositionSize = size; }
template <class T> void Vexaro<T>::set_AllowedInputClasses(int* table, int count) { core->setAllowedClasses(table, count); }
template <class T> void Vexaro<T>::setHostThreads(int threads) { core->hostThreads = std::max(0, threads); }
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

template <class T> std::string Vexaro<T>::computeBackend() const { return vx::backendName(core->backend()); }

// --- parameters: stored as given; the steps define what a value means ---
#define VX_SETTER(Name, Type)                                                                                          \
    template <class T> void Vexaro<T>::set_##Name(Type v) { core->par.Name = v; }
VX_SETTER(NNSearchRange_NormalVectors, float)
VX_SETTER(Inner_NormalVectors, int)
VX_SETTER(MinimalNumberOfNN, int)
VX_SETTER(ResetOptionalRange, T)
VX_SETTER(ResetOptionalClass, int)
VX_SETTER(SeedSearchMaxHindeks, float)
VX_SETTER(GroundGrowthIterations, int)
VX_SETTER(GroundGrowthDistanceFromPlane, T)
VX_SETTER(GroundGrowthMinCosinus, float)
VX_SETTER(GroundGrowthRange, T)
VX_SETTER(GroundGrowthRangeLowest, T)
VX_SETTER(GroundGrowthMaxHeightDifference, T)
VX_SETTER(LowPointFilteringRange, T)
VX_SETTER(BuildingRange, T)
VX_SETTER(BuildingGroundRange, T)
VX_SETTER(BuildingDfPBuilding, T)
VX_SETTER(BuildingMinCosBuilding, float)
VX_SETTER(BuildingMinNoN, int)
VX_SETTER(BuildingProcOfBP, float)
VX_SETTER(BuildingProcOfGhosts, float)
VX_SETTER(BuildingMinHeight, T)
VX_SETTER(Building2Iterations, int)
VX_SETTER(Building2Range, T)
VX_SETTER(Building2DistFPlane, T)
VX_SETTER(Building3Iterations, int)
VX_SETTER(Building3GroundRange, T)
VX_SETTER(Building3DetailsHeight, T)
VX_SETTER(VegetationIterations, int)
VX_SETTER(VegetationRange, T)
VX_SETTER(VegetationDfG, T)
VX_SETTER(VegetationMaxCos, float)
VX_SETTER(VegetationProcOfChaos, float)
VX_SETTER(VegetationProcOfGhosts, float)
VX_SETTER(VegetationProcOfOrder, float)
VX_SETTER(VegetationProcOfPlant, float)
VX_SETTER(VegetationLowLimit, T)
VX_SETTER(VegetationHighLimit, T)
VX_SETTER(VegetationRatio, float)
#undef VX_SETTER

// The plane-distance limit of ground growth is what this setter has always changed; the
// cosine limit it is named after keeps its default.
template <class T> void Vexaro<T>::set_GroundGrowthMaxCosinusPar2(float v)
{
    core->par.GroundGrowthDistanceFromPlane = static_cast<T>(v);
}

template class Vexaro<float>;
template class Vexaro<double>;
