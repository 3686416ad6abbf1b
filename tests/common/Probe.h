// The test-only way into a Vexaro object's engine.
#pragma once

#include "api/EngineAccess.h"

namespace vxtest {

template <class T> ClassifierCore<T>& engine(Vexaro<T>& v)
{
    return vx::EngineAccess<T>::engine(v);
}

} // namespace vxtest
