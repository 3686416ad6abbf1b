// The steps' check of their parameters against VEXARO_PARAMETERS, and the grid column size
// that the parameters' search ranges call for.
#include "core/ClassifierCore.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

/// The stored values in declaration order, as double.
template <class T> void parameterValues(const vx::Parameters<T>& p, double (&out)[vexaro::parameterCount])
{
    int i = 0;
#define VX_PARAMETER_VALUE(Name, ...) out[i++] = static_cast<double>(p.Name);
    VEXARO_PARAMETERS(VX_PARAMETER_VALUE)
#undef VX_PARAMETER_VALUE
}

std::string number(double x, int precision)
{
    std::ostringstream s;
    s.precision(precision);
    s << x;
    return s.str();
}

} // namespace

// A value outside its entry's limits, or not finite, would make the step meaningless: the
// step is refused with one line, whatever the message level, and leaves every point as it is.
template <class T> bool Vexaro<T>::parametersValidFor(unsigned steps)
{
    double values[vexaro::parameterCount];
    parameterValues(core->par, values);
    for (int i = 0; i < vexaro::parameterCount; ++i) {
        const vexaro::ParameterInfo& info = vexaro::parameterInfos[i];
        const double x = values[i];
        if ((info.steps & steps) == 0 || (std::isfinite(x) && x >= info.min && x <= info.max))
            continue;
        core->msg(0, "ERROR! Parameter out of range, step not run:",
                  std::string(info.name) + " = " + number(x, 6) + " (valid " + number(info.min, 10) + " to " +
                      number(info.max, 10) + ")");
        return false;
    }
    return true;
}

template <class T> bool Vexaro<T>::addedStepReady(unsigned steps, const char* step)
{
    if (!core->dataLoaded) {
        facadeMessage(0, "ERROR! Data not loaded!");
        return false;
    }
    if (!parametersValidFor(steps))
        return false;
    if (pointCount() == 0) {
        core->msg(0, std::string(step) + " skipped: the cloud holds no points");
        return false;
    }
    return true;
}

template <class T> double Vexaro<T>::rangeGridCellSize() const
{
    double values[vexaro::parameterCount];
    parameterValues(core->par, values);
    double reach = 0;
    for (int i = 0; i < vexaro::parameterCount; ++i)
        reach = std::max(reach, vexaro::parameterInfos[i].reach * values[i]);
    return reach;
}

template <class T> void Vexaro<T>::regularGridDecomposition2DFromRanges()
{
    const double size = rangeGridCellSize();
    regularGridDecomposition2D(size, size);
}

template bool Vexaro<float>::parametersValidFor(unsigned);
template bool Vexaro<double>::parametersValidFor(unsigned);
template bool Vexaro<float>::addedStepReady(unsigned, const char*);
template bool Vexaro<double>::addedStepReady(unsigned, const char*);
template double Vexaro<float>::rangeGridCellSize() const;
template double Vexaro<double>::rangeGridCellSize() const;
template void Vexaro<float>::regularGridDecomposition2DFromRanges();
template void Vexaro<double>::regularGridDecomposition2DFromRanges();
