// The noise step of the facade: isolated points and small far-off groups get the low or the high
// noise class, so that no later step takes them for ground, roofs or trees.
#include "api/StepRun.h"

// Points whose class the table does not admit are neither judged nor counted as neighbours, like
// in every other step: a caller who admits only unclassified points judges those against each
// other alone.
template <class T> void Vexaro<T>::classifyNoise(int lowNoiseClass, int highNoiseClass)
{
    if (!addedStepReady(vexaro::Noise, "Noise search"))
        return;
    core->slots.TargetClass = lowNoiseClass;
    core->slots.TargetClass2 = highNoiseClass;
    runStep("both", [&] { VX_STEP(runNoise, runNoise); });
}

#undef VX_STEP

template void Vexaro<float>::classifyNoise(int, int);
template void Vexaro<double>::classifyNoise(int, int);
