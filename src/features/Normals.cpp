#include "features/NormalsDriver.h"

VX_INSTANTIATE_STEP(runNormals)
