#include "store/PointStore.h"

namespace vx {

void DeviceFields::allocate(Backend b, std::size_t n)
{
#define VX_ALLOCATE(type, name, use) name.allocate(b, n);
    VX_POINT_FIELDS(VX_ALLOCATE)
#undef VX_ALLOCATE
}

void DeviceFields::upload(const HostFields& h, std::size_t n)
{
#define VX_UPLOAD(type, name, use) name.upload(h.name.data(), n);
    VX_POINT_FIELDS(VX_UPLOAD)
#undef VX_UPLOAD
}

void DeviceFields::download(HostFields& h, std::size_t n) const
{
#define VX_DOWNLOAD(type, name, use) downloadInto(h.name, name, n);
    VX_POINT_FIELDS(VX_DOWNLOAD)
#undef VX_DOWNLOAD
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
// What a field's value does on its way back to the records: results are copied, inputs stay.
struct Input {
    template <class R, class F> static void back(R&, const F&) {}
};
struct Result {
    template <class R, class F> static void back(R& record, const F& value)
    {
        record = static_cast<R>(value);
    }
};
} // namespace

template <class T> void PointStore<T>::assign(std::vector<VX_Point<T>>&& points)
{
    records = std::move(points);
    fields = {};
    returnCounts.clear();
    ++generation;
}

template <class T> void PointStore<T>::fillFields()
{
    const std::size_t n = records.size();
#define VX_RESIZE(type, name, use) fields.name.resize(n);
    VX_POINT_FIELDS(VX_RESIZE)
#undef VX_RESIZE
    for (std::size_t i = 0; i < n; ++i) {
        const auto& p = records[i];
#define VX_TO_FIELD(type, name, use) fields.name[i] = static_cast<type>(p.name);
        VX_POINT_FIELDS(VX_TO_FIELD)
#undef VX_TO_FIELD
    }
}

template <class T> VX_Point<T>* PointStore<T>::hostRecords(int& n)
{
    n = static_cast<int>(records.size());
    // The per-field mirror carries the latest results in that layout.
    if (!records.empty() && fields.x.size() == records.size() && fields.size() == records.size()) {
        for (int i = 0; i < n; ++i) {
            auto& p = records[i];
#define VX_TO_RECORD(type, name, use) use::back(p.name, fields.name[i]);
            VX_POINT_FIELDS(VX_TO_RECORD)
#undef VX_TO_RECORD
        }
    }
    return records.data();
}

template <class T> void PointStore<T>::upload(Backend b)
{
    int n = 0;
    const VX_Point<T>* p = hostRecords(n);
    count = n;
    uploaded = generation;
    deviceRecords.allocate(b, n);
    deviceRecords.upload(p, n);
    if (!fieldsLayout)
        return;
    deviceFields.reset();
    fillFields();
    deviceFields.allocate(b, n);
    deviceFields.upload(fields, n);
}

template <class T> void PointStore<T>::download()
{
    const std::size_t n = static_cast<std::size_t>(count);
    if (!fieldsLayout) {
        downloadInto(records, deviceRecords, n);
        fields = {}; // the records are now the latest state
        return;
    }
    deviceFields.download(fields, n);
}

template <class T> void PointStore<T>::resetDevice()
{
    deviceRecords.reset();
    deviceFields.reset();
}

template <class T> void PointStore<T>::clear()
{
    resetDevice();
    records = {};
    fields = {};
    returnCounts = {};
    count = 0;
    ++generation;
}

template class PointStore<float>;
template class PointStore<double>;

} // namespace vx
