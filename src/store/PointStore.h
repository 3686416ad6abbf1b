// The one owner of a cloud: the host records and the backend arrays of the layout in use, one copy
// each. Every array of a per-point field comes from the field list (PointFields.h).
#pragma once

#include "exec/Buffer.h"
#include "store/Layout.h"
#include "store/PointFields.h"
#include "store/PointViews.h"

#include <Vexaro.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vx {

/// Backend per-field arrays.
struct DeviceFields {
#define VX_FIELD_BUFFER(type, name, use) Buffer<type> name;
    VX_POINT_FIELDS(VX_FIELD_BUFFER)
#undef VX_FIELD_BUFFER
    void allocate(Backend b, std::size_t n);
    void reset();
    vxPointSoA pointers() const;
    explicit operator bool() const
    {
        return static_cast<bool>(x);
    }
};

template <class T> class PointStore {
public:
    /// The host copy as records: the exchange form and the layout-independent reference. Results
    /// of the backend arrays reach it on download().
    std::vector<VX_Point<T>> records;
    /// The backend arrays: records in the records layout, per-field arrays in that layout; never
    /// both, so a cloud on the backend costs one copy beside the host records.
    Buffer<VX_Point<T>> deviceRecords;
    DeviceFields deviceFields;
    /// Number of returns of each point's pulse, in file order; empty when the cloud came without
    /// them. A host-only input: no step writes it.
    std::vector<uint8_t> returnCounts;
    /// Points on the backend.
    int count = 0;
    /// Counts the clouds assigned (and clears), so kept per-point results can tell whether they
    /// belong to the cloud held now.
    unsigned long long generation = 0;
    /// The generation the backend arrays were uploaded from.
    unsigned long long uploaded = 0;
    /// The layout steps run in; set_SoA chooses it.
    bool fieldsLayout = true;
    /// Whether the backend arrays hold exactly what upload() would write into them: set by
    /// upload() and download(), cleared when a step takes views it may write through and when
    /// the arrays or the host copy change. A decomposition then finds the cloud already there.
    bool deviceMatchesHost = false;

    /// Calls f with Records{} or Fields{} by the layout in use: the one place the layout is chosen.
    template <class F> decltype(auto) visit(F&& f) const
    {
        if (fieldsLayout)
            return f(Fields{});
        return f(Records{});
    }

    AosPoints<T> points(Records) const { return {deviceRecords.data()}; }
    SoaPoints points(Fields) const { return {deviceFields.pointers()}; }

    /// Replaces the host copy.
    void assign(std::vector<VX_Point<T>>&& points);
    /// The host records as of the last download().
    const VX_Point<T>* hostRecords(int& n) const;
    /// Uploads the host copy into the arrays of the layout in use and drops those of the other;
    /// nothing to do while those arrays, on backend b, still match the host copy.
    void upload(Backend b);
    /// Brings the results held on the backend back into the host records: the whole records in
    /// that layout, the fields that steps write in the per-field one (coordinates keep the
    /// records' reference values).
    void download();
    /// Drops the backend arrays.
    void resetDevice();
    /// Drops everything, host copy included.
    void clear();
    /// Whether the backend arrays of the layout in use exist.
    bool onDevice() const
    {
        return fieldsLayout ? static_cast<bool>(deviceFields) : static_cast<bool>(deviceRecords);
    }
    /// Whether the backend holds the cloud in either layout.
    bool anyOnDevice() const { return static_cast<bool>(deviceFields) || static_cast<bool>(deviceRecords); }
};

extern template class PointStore<float>;
extern template class PointStore<double>;

} // namespace vx
