// Exchange with a caller's own arrays: records in, 16-bit classes out.
#include "core/ClassifierCore.h"

#include <cstdint>

template <class T> void Vexaro<T>::loadDirectData(VX_Point<T>* points, int count)
{
    core->setData(points, count);
}

template <class T> void Vexaro<T>::saveClassesToBuffer(short* buffer, int count)
{
    int n = 0;
    const VX_Point<T>* records = core->getHostPoints(n, vx::fieldMask(vx::kFieldBit_classification));
    if (n != count || (count > 0 && !buffer)) {
        facadeMessage(0, "Unexpected loss of data, point classes can't be saved");
        return;
    }
    for (int i = 0; i < count; ++i)
        buffer[i] = static_cast<short>(static_cast<uint16_t>(records[i].classification & 0xffff));
}

template void Vexaro<float>::loadDirectData(VX_Point<float>*, int);
template void Vexaro<double>::loadDirectData(VX_Point<double>*, int);
template void Vexaro<float>::saveClassesToBuffer(short*, int);
template void Vexaro<double>::saveClassesToBuffer(short*, int);
