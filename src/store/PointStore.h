// The one owner of a cloud: the host records, the host per-field arrays and the backend arrays of
// the layout in use. Every array of a per-point field comes from the field list (PointFields.h).
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

/// Host per-field arrays.
struct HostFields {
#define VX_FIELD_VECTOR(type, name, use) std::vector<type> name;
    VX_POINT_FIELDS(VX_FIELD_VECTOR)
#undef VX_FIELD_VECTOR
    std::size_t size() const
    {
        return classification.size();
    }
};

/// Backend per-field arrays.
struct DeviceFields {
#define VX_FIELD_BUFFER(type, name, use) Buffer<type> name;
    VX_POINT_FIELDS(VX_FIELD_BUFFER)
#undef VX_FIELD_BUFFER
    void allocate(Backend b, std::size_t n);
    void upload(const HostFields& h, std::size_t n);
    void download(HostFields& h, std::size_t n) const;
    void reset();
    vxPointSoA pointers() const;
    explicit operator bool() const
    {
        return static_cast<bool>(x);
    }
};

template <class T> class PointStore {
public:
    /// The host copy as records: the exchange form and the layout-independent reference.
    std::vector<VX_Point<T>> records;
    /// The host mirror of the per-field layout; empty until the cloud is uploaded in that layout.
    HostFields fields;
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

    /// Calls f with Records{} or Fields{} by the layout in use: the one place the layout is chosen.
    template <class F> decltype(auto) visit(F&& f) const
    {
        if (fieldsLayout)
            return f(Fields{});
        return f(Records{});
    }

    AosPoints<T> points(Records) const { return {deviceRecords.data()}; }
    SoaPoints points(Fields) const { return {deviceFields.pointers()}; }

    /// Replaces the host copy; the per-field mirror is made again on the next upload.
    void assign(std::vector<VX_Point<T>>&& points);
    /// The host records, with the latest per-field results gathered into them first.
    VX_Point<T>* hostRecords(int& n);
    /// Uploads the host copy: the records always, the fields too in that layout.
    void upload(Backend b);
    /// Brings the backend arrays of the layout in use back into the host mirror.
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

private:
    void fillFields();
};

extern template class PointStore<float>;
extern template class PointStore<double>;

} // namespace vx
