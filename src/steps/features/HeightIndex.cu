#include "steps/features/HeightIndexDriver.h"

VX_INSTANTIATE_STEP(runHeightIndex)
