// Moving the cloud between the host copy and the backend arrays.
#include "core/ClassifierCore.h"

using namespace vx;

namespace {

template <class V, class B> void downloadInto(V& host, const B& buffer, std::size_t count)
{
    host.resize(count);
    if (count && buffer) buffer.download(host.data(), count);
}

} // namespace

template <class T> void ClassifierCore<T>::uploadPoints()
{
    int n = 0;
    const VX_Point<T>* points = getHostPoints(n); // brings per-field results into the records
    pointCount = n;
    const Backend b = backend();
    devicePoints.allocate(b, n);
    devicePoints.upload(points, n);
    if (!soa) return;

    msg(0, "SoA decomposition");
    deviceSoA.resetPoints();
    deviceSoA.resetIndex();
    deviceSoA.resetGroups();
    fillStaging();
    auto& h = hostSoA;
    auto& d = deviceSoA;
    d.x.allocate(b, n), d.y.allocate(b, n), d.z.allocate(b, n);
    d.nx.allocate(b, n), d.ny.allocate(b, n), d.nz.allocate(b, n), d.heightIndex.allocate(b, n);
    d.classification.allocate(b, n), d.lastReturn.allocate(b, n);
    d.x.upload(h.x.data(), n), d.y.upload(h.y.data(), n), d.z.upload(h.z.data(), n);
    d.nx.upload(h.nx.data(), n), d.ny.upload(h.ny.data(), n), d.nz.upload(h.nz.data(), n);
    d.heightIndex.upload(h.heightIndex.data(), n);
    d.classification.upload(h.classification.data(), n), d.lastReturn.upload(h.lastReturn.data(), n);
}

template <class T> bool ClassifierCore<T>::syncToHost()
{
    msg(2, "Syncing Cuda to Host ", pointCount);
    msg(2, "Groups ", groupCount);
    hostPointCount = pointCount;
    hostGroupCount = groupCount;
    if (!devicePoints) return true; // nothing on the backend yet: the host copy stays as it is
    const std::size_t n = static_cast<std::size_t>(pointCount), g = static_cast<std::size_t>(groupCount);
    if (!soa) {
        downloadInto(hostPoints, devicePoints, n);
        checkDeviceError();
        downloadInto(hostIndexToGroup, deviceIndexToGroup, deviceIndexToGroup ? n : 0);
        checkDeviceError();
        downloadInto(hostGroups, deviceGroups, deviceGroups ? g : 0);
        checkDeviceError();
        hostSoA = {}; // the records are now the latest state
        return true;
    }
    msg(0, "Soa sync");
    auto& h = hostSoA;
    const auto& d = deviceSoA;
    msg(0, "Copy");
    downloadInto(h.x, d.x, n), downloadInto(h.y, d.y, n), downloadInto(h.z, d.z, n);
    downloadInto(h.nx, d.nx, n), downloadInto(h.ny, d.ny, n), downloadInto(h.nz, d.nz, n);
    downloadInto(h.heightIndex, d.heightIndex, n);
    downloadInto(h.classification, d.classification, n), downloadInto(h.lastReturn, d.lastReturn, n);
    downloadInto(h.pointIndex, d.pointIndex, d.pointIndex ? n : 0), downloadInto(h.group, d.group, d.group ? n : 0);
    downloadInto(h.start, d.start, d.start ? g : 0), downloadInto(h.end, d.end, d.end ? g : 0);
    downloadInto(h.count, d.count, d.count ? g : 0);
    checkDeviceError();
    return true;
}

template void ClassifierCore<float>::uploadPoints();
template void ClassifierCore<double>::uploadPoints();
template bool ClassifierCore<float>::syncToHost();
template bool ClassifierCore<double>::syncToHost();
