#include "steps/ground/LowPointCorrectionDriver.h"

VX_INSTANTIATE_STEP(runLowPointCorrection)
