// The per-point fields of a cloud, listed once. Each entry is the field's type in the per-field
// layout, its name (also its member name in the exchange record VX_Point<T>) and whether steps
// write it (Result) or only read it (Input: the host records keep the reference value, since the
// per-field copy of a coordinate is single precision). The
// per-field pointer set (vxPointSoA), the host and backend arrays and their allocation, upload,
// download and reset all expand this list, so a new per-point field is one new line here.
#pragma once

#include <cstdint>

#define VX_POINT_FIELDS(X)                                                                                   \
    X(float, x, Input)                                                                                       \
    X(float, y, Input)                                                                                       \
    X(float, z, Input)                                                                                       \
    X(float, nx, Result)                                                                                     \
    X(float, ny, Result)                                                                                     \
    X(float, nz, Result)                                                                                     \
    X(float, heightIndex, Result)                                                                            \
    X(int32_t, classification, Result)                                                                       \
    X(int32_t, lastReturn, Result)

/// Per-field point arrays; coordinates are float in both precisions.
struct vxPointSoA {
#define VX_FIELD_POINTER(type, name, use) type* name = nullptr;
    VX_POINT_FIELDS(VX_FIELD_POINTER)
#undef VX_FIELD_POINTER
};
