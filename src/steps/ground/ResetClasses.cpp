#include "steps/ground/ResetClassesDriver.h"

VX_INSTANTIATE_STEP(runResetClasses)
