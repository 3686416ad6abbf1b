// The point record is an exchange format: callers fill arrays of it by these byte positions.
#include <Vexaro.h>

#include <cstddef>

static_assert(sizeof(VX_Point<float>) == 36, "float record is 36 bytes");
static_assert(offsetof(VX_Point<float>, x) == 0 && offsetof(VX_Point<float>, y) == 4 &&
                  offsetof(VX_Point<float>, z) == 8 && offsetof(VX_Point<float>, nx) == 12 &&
                  offsetof(VX_Point<float>, ny) == 16 && offsetof(VX_Point<float>, nz) == 20 &&
                  offsetof(VX_Point<float>, heightIndex) == 24 &&
                  offsetof(VX_Point<float>, classification) == 28 &&
                  offsetof(VX_Point<float>, lastReturn) == 32,
              "float record field offsets");
static_assert(sizeof(VX_Point<double>) == 64, "double record is 64 bytes, 4 reserved at the end");
static_assert(offsetof(VX_Point<double>, x) == 0 && offsetof(VX_Point<double>, y) == 8 &&
                  offsetof(VX_Point<double>, z) == 16 && offsetof(VX_Point<double>, nx) == 24 &&
                  offsetof(VX_Point<double>, ny) == 32 && offsetof(VX_Point<double>, nz) == 40 &&
                  offsetof(VX_Point<double>, heightIndex) == 48 &&
                  offsetof(VX_Point<double>, classification) == 52 &&
                  offsetof(VX_Point<double>, lastReturn) == 56,
              "double record field offsets");
