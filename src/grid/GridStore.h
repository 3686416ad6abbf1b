// The grid state of a cloud: the grid's extremes and cells, the point-to-cell links sorted by cell
// and the per-cell runs, on the backend, in the form of each layout. The host keeps no mirror of
// them: the steps read the backend arrays, and copies are made on request for inspection.
#pragma once

#include "exec/Buffer.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "grid/OrderedXyz.h"
#include "store/Layout.h"

#include <cstddef>
#include <vector>

namespace vx {

/// A host copy of the links and runs of the per-field layout, one array a field.
struct HostGridFields {
    std::vector<int32_t> pointIndex, group;
    std::vector<int32_t> start, end, count;
};

struct DeviceGridFields {
    Buffer<int32_t> pointIndex, group;
    Buffer<int32_t> start, end, count;
};

template <class T> struct GridStore {
    VX_DecompositionGridParameters<T> parameters;
    /// Cells of the grid on the backend.
    int groupCount = 0;

    Buffer<VX_IndexToGroup> deviceIndex;
    Buffer<VX_DecompositionGroups> deviceGroups;
    DeviceGridFields deviceFields;
    /// Coordinates in sorted order (see OrderedXyz), made on first use after a decomposition:
    /// of the records layout in the cloud's precision, of the per-field one in float.
    Buffer<T> orderedRecords;
    Buffer<float> orderedFields;

    Buffer<T>& orderedBuffer(Records) { return orderedRecords; }
    Buffer<float>& orderedBuffer(Fields) { return orderedFields; }

    AosIndex index(Records) const { return {deviceIndex.data()}; }
    SoaIndex index(Fields) const { return {{deviceFields.pointIndex.data(), deviceFields.group.data()}}; }
    AosGroups groups(Records) const { return {deviceGroups.data()}; }
    SoaGroups groups(Fields) const
    {
        return {{deviceFields.start.data(), deviceFields.end.data(), deviceFields.count.data()}};
    }

    /// Backend links for n points and runs for the grid's cells, in the form of layout L.
    void allocateIndex(Records, Backend b, std::size_t n)
    {
        orderedRecords.reset();
        deviceIndex.allocate(b, n);
    }
    void allocateIndex(Fields, Backend b, std::size_t n)
    {
        orderedFields.reset();
        deviceFields.pointIndex.allocate(b, n);
        deviceFields.group.allocate(b, n);
    }
    void allocateGroups(Records, Backend b)
    {
        deviceGroups.allocate(b, static_cast<std::size_t>(groupCount));
    }
    void allocateGroups(Fields, Backend b)
    {
        const auto g = static_cast<std::size_t>(groupCount);
        deviceFields.start.allocate(b, g), deviceFields.end.allocate(b, g), deviceFields.count.allocate(b, g);
    }

    /// Whether links and runs of layout L exist.
    bool ready(Records) const { return deviceIndex && deviceGroups; }
    bool ready(Fields) const { return deviceFields.pointIndex && deviceFields.start; }

    /// Host copies of the links and runs: of the records layout, and of the per-field one.
    std::vector<VX_IndexToGroup> copyIndex() const;
    std::vector<VX_DecompositionGroups> copyGroups() const;
    HostGridFields copyFields() const;

    void resetDevice(Records) { deviceIndex.reset(), deviceGroups.reset(), orderedRecords.reset(); }
    void resetDevice(Fields)
    {
        orderedFields.reset();
        auto& d = deviceFields;
        d.pointIndex.reset(), d.group.reset(), d.start.reset(), d.end.reset(), d.count.reset();
    }
    void resetDevice() { resetDevice(Records{}), resetDevice(Fields{}); }
    void clear()
    {
        resetDevice();
        groupCount = 0;
    }
};

template <class T> std::vector<VX_IndexToGroup> GridStore<T>::copyIndex() const
{
    std::vector<VX_IndexToGroup> out;
    downloadInto(out, deviceIndex, deviceIndex.size());
    return out;
}

template <class T> std::vector<VX_DecompositionGroups> GridStore<T>::copyGroups() const
{
    std::vector<VX_DecompositionGroups> out;
    downloadInto(out, deviceGroups, deviceGroups.size());
    return out;
}

template <class T> HostGridFields GridStore<T>::copyFields() const
{
    const auto& d = deviceFields;
    HostGridFields h;
    downloadInto(h.pointIndex, d.pointIndex, d.pointIndex.size());
    downloadInto(h.group, d.group, d.group.size());
    downloadInto(h.start, d.start, d.start.size());
    downloadInto(h.end, d.end, d.end.size());
    downloadInto(h.count, d.count, d.count.size());
    return h;
}

} // namespace vx
