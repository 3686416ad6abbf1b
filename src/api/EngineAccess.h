// The engine behind a Vexaro object, for the library's own tests and internal benchmarks; not part
// of the public interface (the shared library does not export it).
#pragma once

#include "core/ClassifierCore.h"

namespace vx {

template <class T> struct EngineAccess {
    static ClassifierCore<T>& engine(Vexaro<T>& v) { return *v.core; }
};

} // namespace vx
