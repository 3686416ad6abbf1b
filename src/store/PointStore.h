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

/// One bit per field of the field list, in its order, for the fields a host read asks for.
enum PointFieldBit : unsigned {
#define VX_FIELD_BIT(type, name, use) kFieldBit_##name,
    VX_POINT_FIELDS(VX_FIELD_BIT)
#undef VX_FIELD_BIT
};
constexpr unsigned fieldMask(PointFieldBit bit)
{
    return 1u << bit;
}
constexpr unsigned kEveryField = ~0u;

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
    /// Intensity of each point's return, in file order; empty when the cloud came without them.
    /// A host-only input like returnCounts.
    std::vector<uint16_t> intensities;
    /// Points on the backend.
    int count = 0;
    /// Counts the clouds assigned (and clears), so kept per-point results can tell whether they
    /// belong to the cloud held now.
    unsigned long long generation = 0;
    /// The generation the backend arrays were uploaded from.
    unsigned long long uploaded = 0;
    /// The layout steps run in; set_SoA chooses it.
    bool fieldsLayout = true;
    /// Whether the backend arrays need no upload: they hold what upload() would write, or newer
    /// results that the host copy lacks (hostBehind). Set by upload(), download() and a sync,
    /// cleared when a step takes views it may write through and when the arrays or the host
    /// copy change. A decomposition then finds the cloud already there.
    bool deviceMatchesHost = false;
    /// Fields whose newest values the backend arrays hold and the host records do not yet
    /// (bits of PointFieldBit): a sync leaves the results there, and a read of the host copy
    /// brings back what it asks for. The backend arrays are never dropped while any is left.
    unsigned hostBehind = 0;

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
    /// The host records, with at least `fields` brought up to the backend's values first.
    const VX_Point<T>* hostRecords(int& n, unsigned fields = kEveryField);
    /// Uploads the host copy into the arrays of the layout in use and drops those of the other;
    /// nothing to do while those arrays, on backend b, still match the host copy.
    void upload(Backend b);
    /// Brings the results held on the backend back into the host records: the whole records in
    /// that layout, the fields that steps write in the per-field one (coordinates keep the
    /// records' reference values). Per field, only those of `fields` that the host lacks.
    void download(unsigned fields = kEveryField);
    /// Marks every result as held by the backend arrays alone: the end of a step's sync. The
    /// host copy catches up when it is read (hostRecords) or the arrays are dropped.
    void leaveResultsOnBackend();
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
