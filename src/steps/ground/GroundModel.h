// Per-cell ground model of the low-point correction: mean ground position and normal.
#pragma once

template <class T> struct VX_GroundModel {
    T x, y, z;
    T nx, ny, nz;
    bool hasGround;
};

struct vxGroundModelSoA {
    float* x = nullptr;
    float* y = nullptr;
    float* z = nullptr;
    float* nx = nullptr;
    float* ny = nullptr;
    float* nz = nullptr;
    bool* hasGround = nullptr;
};

static_assert(sizeof(VX_GroundModel<float>) == 28, "six floats and a flag");

#include "exec/Buffer.h"

namespace vx {

/// The per-field model on the backend.
struct DeviceGroundModelSoA {
    Buffer<float> x, y, z, nx, ny, nz;
    Buffer<bool> hasGround;
    void reset() { x.reset(), y.reset(), z.reset(), nx.reset(), ny.reset(), nz.reset(), hasGround.reset(); }
    vxGroundModelSoA view() const
    {
        return {x.data(), y.data(), z.data(), nx.data(), ny.data(), nz.data(), hasGround.data()};
    }
};

/// The low-point correction's model, kept on the engine from one call to the next (in the form of
/// the layout it was made in) and replaced by the next call.
template <class T> struct GroundModelState {
    Buffer<VX_GroundModel<T>> groundModel;
    DeviceGroundModelSoA groundModelSoA;
    void reset() { groundModel.reset(), groundModelSoA.reset(); }
};

} // namespace vx
