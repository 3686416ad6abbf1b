// Kernels of the vegetation step: the filter and its two spreading passes, then the completion.
#pragma once

#include "steps/vegetation/CompletionKernels.h"
#include "steps/vegetation/FilterKernels.h"
