// Moving the cloud between the host copy and the backend arrays, with the messages of the sync.
#include "core/ClassifierCore.h"
#include "exec/HostThreads.h"

using namespace vx;

template <class T> void ClassifierCore<T>::uploadPoints()
{
    const HostThreadScope team(hostThreads);
    store.upload(backend());
    if (store.fieldsLayout) {
        msg(0, "SoA decomposition");
        grid.resetDevice(Fields{});
    }
}

template <class T> bool ClassifierCore<T>::syncToHost()
{
    msg(2, "Syncing Cuda to Host ", store.count);
    msg(2, "Groups ", grid.groupCount);
    if (!store.anyOnDevice())
        return true; // nothing on the backend yet: the host copy stays as it is
    const HostThreadScope team(hostThreads);
    if (store.fieldsLayout) {
        msg(0, "Soa sync");
        msg(0, "Copy");
    }
    // The host copy catches up when it is read: steps in a row keep the cloud on the backend.
    store.leaveResultsOnBackend();
    checkDeviceError();
    return true;
}

template void ClassifierCore<float>::uploadPoints();
template void ClassifierCore<double>::uploadPoints();
template bool ClassifierCore<float>::syncToHost();
template bool ClassifierCore<double>::syncToHost();
