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
