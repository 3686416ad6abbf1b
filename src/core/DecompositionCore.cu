#include "core/DecompositionCore.h"

template void vx::VX_BACKEND_NS::decomposeCore<float>(ClassifierCore<float>&, double, double, double);
template void vx::VX_BACKEND_NS::decomposeCore<double>(ClassifierCore<double>&, double, double, double);
