#include "steps/features/NormalsDriver.h"

VX_INSTANTIATE_STEP(runNormals)
