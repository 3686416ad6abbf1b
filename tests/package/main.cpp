// Uses only the installed public header.
#include <Vexaro.h>

#include <iostream>
#include <vector>

int main()
{
    Vexaro<float> v;
    v.setComputeBackend("cpu");
    v.setMessageLevel(0);
    std::vector<VX_Point<float>> pts(4);
    for (int i = 0; i < 4; ++i)
        pts[i] = {float(i), float(i % 2), 0.f, 0, 0, 0, 0.f, 1, 1};
    v.loadDirectData(pts.data(), 4);
    v.set_ResetOptionalRange(0.f);
    v.regularGridDecomposition3Dcube(10.0);
    v.resetPointCloudClasses(2);
    std::vector<short> classes(4);
    v.saveClassesToBuffer(classes.data(), 4);
    for (short c : classes)
        if (c != 2)
            return 1;
    std::cout << "package ok: " << v.getAvailableDevices().size() << " device(s)\n";
    return 0;
}
