// Marks functions that run on both the host and a CUDA device.
#pragma once

#ifdef __CUDACC__
#define VX_HD __host__ __device__
#else
#define VX_HD
#endif

// Drivers and algorithms are compiled once per backend into a namespace of their own.
#ifdef __CUDACC__
#define VX_BACKEND_NS cuda
#else
#define VX_BACKEND_NS host
#endif
