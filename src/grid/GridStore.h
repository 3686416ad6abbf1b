// The grid state of a cloud: the grid's extremes and cells, the point-to-cell links sorted by cell
// and the per-cell runs, on the backend and as a host mirror, in the form of each layout.
#pragma once

#include "exec/Buffer.h"
#include "grid/GridTypes.h"
#include "grid/Layouts.h"
#include "store/Layout.h"

#include <cstddef>
#include <vector>

namespace vx {

/// The links and runs of the per-field layout, one array a field.
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

    std::vector<VX_IndexToGroup> hostIndex;
    std::vector<VX_DecompositionGroups> hostGroups;
    HostGridFields hostFields;

    AosIndex index(Records) const { return {deviceIndex.data()}; }
    SoaIndex index(Fields) const { return {{deviceFields.pointIndex.data(), deviceFields.group.data()}}; }
    AosGroups groups(Records) const { return {deviceGroups.data()}; }
    SoaGroups groups(Fields) const
    {
        return {{deviceFields.start.data(), deviceFields.end.data(), deviceFields.count.data()}};
    }

    /// Backend links for n points and runs for the grid's cells, in the form of layout L.
    void allocateIndex(Records, Backend b, std::size_t n) { deviceIndex.allocate(b, n); }
    void allocateIndex(Fields, Backend b, std::size_t n)
    {
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

    /// Brings links and runs of layout L back into the host mirror, n points.
    void download(Records, std::size_t n);
    void download(Fields, std::size_t n);

    void resetDevice(Records) { deviceIndex.reset(), deviceGroups.reset(); }
    void resetDevice(Fields)
    {
        auto& d = deviceFields;
        d.pointIndex.reset(), d.group.reset(), d.start.reset(), d.end.reset(), d.count.reset();
    }
    void resetDevice() { resetDevice(Records{}), resetDevice(Fields{}); }
    void clear()
    {
        resetDevice();
        hostIndex = {}, hostGroups = {}, hostFields = {};
        groupCount = 0;
    }
};

template <class T> void GridStore<T>::download(Records, std::size_t n)
{
    downloadInto(hostIndex, deviceIndex, deviceIndex ? n : 0);
    downloadInto(hostGroups, deviceGroups, deviceGroups ? static_cast<std::size_t>(groupCount) : 0);
}

template <class T> void GridStore<T>::download(Fields, std::size_t n)
{
    const auto& d = deviceFields;
    auto& h = hostFields;
    const auto g = static_cast<std::size_t>(groupCount);
    downloadInto(h.pointIndex, d.pointIndex, d.pointIndex ? n : 0);
    downloadInto(h.group, d.group, d.group ? n : 0);
    downloadInto(h.start, d.start, d.start ? g : 0);
    downloadInto(h.end, d.end, d.end ? g : 0);
    downloadInto(h.count, d.count, d.count ? g : 0);
}

} // namespace vx
