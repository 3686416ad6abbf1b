#include "steps/noise/NoiseDriver.h"

VX_INSTANTIATE_STEP(runNoise)
