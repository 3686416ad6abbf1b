// Class slots and step parameters of the engine, with their defaults. The parameters are the
// entries of VEXARO_PARAMETERS (include/VexaroParameters.h), each a field of its own name.
#pragma once

#include <VexaroParameters.h>

#include <cstdint>

namespace vx {

struct ClassSlots {
    int32_t TargetClass = 0;
    int32_t TargetClass2 = 0;
    int32_t TargetClass3 = 0;
    int32_t GroundClass = 2;
    int32_t ReferenceClass = 8;
    int32_t BuildingClass = 6;
    int32_t NeighbourPlaneClass = 10;
    int32_t ChaosClass = 11;
    int32_t InitialClass = 0;
    int32_t NeighbourDistanceClass = 0;
};

template <class T> struct Parameters {
#define VX_PARAMETER_FIELD(Name, Field, Kind, Default, ...)                                                  \
    VEXARO_PARAMETER_TYPE_##Kind Name = static_cast<VEXARO_PARAMETER_TYPE_##Kind>(Default);
    VEXARO_PARAMETERS(VX_PARAMETER_FIELD)
#undef VX_PARAMETER_FIELD
};

} // namespace vx
