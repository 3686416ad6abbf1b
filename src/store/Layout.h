// The two layouts of a cloud as types. Drivers are written once as templates over the layout;
// the store's visit() picks one by the run-time setting, in one place.
#pragma once

namespace vx {

/// Array of structures: one VX_Point<T> record a point.
struct Records {
    static constexpr bool fields = false;
};

/// Structure of arrays: one array a per-point field, single precision coordinates.
struct Fields {
    static constexpr bool fields = true;
};

} // namespace vx
