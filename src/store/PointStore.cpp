#include "store/PointStore.h"

#include "exec/Memory.h"

#include <algorithm>

namespace vx {

void DeviceFields::allocate(Backend b, std::size_t n)
{
#define VX_ALLOCATE(type, name, use) name.allocate(b, n);
    VX_POINT_FIELDS(VX_ALLOCATE)
#undef VX_ALLOCATE
}

void DeviceFields::reset()
{
#define VX_RESET(type, name, use) name.reset();
    VX_POINT_FIELDS(VX_RESET)
#undef VX_RESET
}

vxPointSoA DeviceFields::pointers() const
{
    vxPointSoA s;
#define VX_POINTER(type, name, use) s.name = name.data();
    VX_POINT_FIELDS(VX_POINTER)
#undef VX_POINTER
    return s;
}

namespace {

/// Points a staging block carries between the host records and one backend field array: the
/// records are copied a block at a time, so a transfer costs no whole-cloud host array.
constexpr std::size_t kStagingPoints = std::size_t{1} << 16;
/// A block this full is copied into or out of the records by every host thread: the records'
/// stride makes the copy memory-bound, and one core leaves most of the bandwidth unused.
constexpr std::ptrdiff_t kParallelPoints = std::ptrdiff_t{1} << 14;

/// Copies member `m` of every record into the backend array `out`, converted to its type.
template <class F, class T, class M>
void uploadField(const std::vector<VX_Point<T>>& records, M VX_Point<T>::*m, const Buffer<F>& out)
{
    const std::size_t n = records.size();
    std::vector<F> block(std::min(n, kStagingPoints));
    for (std::size_t first = 0; first < n; first += block.size()) {
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(std::min(block.size(), n - first));
#pragma omp parallel for schedule(static) if (count >= kParallelPoints)
        for (std::ptrdiff_t i = 0; i < count; ++i)
            block[i] = static_cast<F>(records[first + i].*m);
        mem::upload(out.backend(), out.data() + first, block.data(), count * sizeof(F));
    }
}

// Whether a field's value goes back to the records on download: results are copied, inputs stay.
struct Input {
    static constexpr bool back = false;
};
struct Result {
    static constexpr bool back = true;
};

} // namespace

template <class T> void PointStore<T>::assign(std::vector<VX_Point<T>>&& points)
{
    records = std::move(points);
    returnCounts.clear();
    intensities.clear();
    deviceMatchesHost = false;
    hostBehind = 0;
    ++generation;
}

template <class T> const VX_Point<T>* PointStore<T>::hostRecords(int& n, unsigned fields)
{
    if (hostBehind & fields)
        download(fields);
    n = static_cast<int>(records.size());
    return records.data();
}

template <class T> void PointStore<T>::leaveResultsOnBackend()
{
    if (uploaded != generation || !onDevice())
        return;
    hostBehind = kEveryField;
    // The arrays hold the newest values: a decomposition has nothing to upload.
    deviceMatchesHost = true;
}

template <class T> void PointStore<T>::upload(Backend b)
{
    const std::size_t n = records.size();
    if (deviceMatchesHost && uploaded == generation && onDevice() && count == static_cast<int>(n) &&
        (fieldsLayout ? deviceFields.x.backend() : deviceRecords.backend()) == b)
        return;
    count = static_cast<int>(n);
    uploaded = generation;
    resetDevice();
    if (!fieldsLayout) {
        deviceRecords.allocate(b, n);
        deviceRecords.upload(records.data(), n);
        deviceMatchesHost = true;
        return;
    }
    deviceFields.allocate(b, n);
    if (!deviceFields)
        return; // an empty cloud has no arrays to fill
#define VX_UPLOAD_FIELD(type, name, use) uploadField(records, &VX_Point<T>::name, deviceFields.name);
    VX_POINT_FIELDS(VX_UPLOAD_FIELD)
#undef VX_UPLOAD_FIELD
    deviceMatchesHost = true;
}

template <class T> void PointStore<T>::download(unsigned fields)
{
    // Arrays uploaded from an earlier cloud carry nothing for the one held now.
    if (uploaded != generation)
        return;
    const std::size_t n = static_cast<std::size_t>(count);
    if (deviceRecords) {
        downloadInto(records, deviceRecords, n);
        deviceMatchesHost = true;
        hostBehind = 0;
        return;
    }
    if (!deviceFields)
        return;
    const unsigned wanted = fields & hostBehind;
    hostBehind &= ~wanted;
    // The result fields of a block are fetched first and then written into the records in one
    // sweep, so the records' stride is walked once, not once a field.
    const std::size_t block = std::min(n, kStagingPoints);
#define VX_STAGE(type, name, use)                                                                            \
    const bool back_##name = use::back && (wanted & fieldMask(kFieldBit_##name)) != 0;                       \
    std::vector<type> stage_##name(back_##name ? block : 0);
    VX_POINT_FIELDS(VX_STAGE)
#undef VX_STAGE
    for (std::size_t first = 0; first < n; first += block) {
        const std::size_t count = std::min(block, n - first);
#define VX_FETCH(type, name, use)                                                                            \
    if (back_##name)                                                                                         \
        mem::download(deviceFields.name.backend(), stage_##name.data(), deviceFields.name.data() + first,    \
                      count * sizeof(type));
        VX_POINT_FIELDS(VX_FETCH)
#undef VX_FETCH
        VX_Point<T>* out = records.data() + first;
        const auto points = static_cast<std::ptrdiff_t>(count);
#pragma omp parallel for schedule(static) if (points >= kParallelPoints)
        for (std::ptrdiff_t i = 0; i < points; ++i) {
#define VX_STORE(type, name, use)                                                                            \
    if (back_##name)                                                                                         \
        out[i].name = static_cast<decltype(out[i].name)>(stage_##name[i]);
            VX_POINT_FIELDS(VX_STORE)
#undef VX_STORE
        }
    }
    deviceMatchesHost = true;
}

template <class T> void PointStore<T>::resetDevice()
{
    // Results left on the backend come back before their arrays go.
    if (hostBehind)
        download();
    hostBehind = 0;
    deviceRecords.reset();
    deviceFields.reset();
    deviceMatchesHost = false;
}

template <class T> void PointStore<T>::clear()
{
    hostBehind = 0;
    resetDevice();
    records = {};
    returnCounts = {};
    intensities = {};
    count = 0;
    ++generation;
}

template class PointStore<float>;
template class PointStore<double>;

} // namespace vx
