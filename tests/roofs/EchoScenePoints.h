// Built scenes of the echo steps: points, the number of returns of each point's pulse, and the
// part of the scene each point belongs to, which the tests judge by.
#pragma once

#include "common/TestSupport.h"

#include <vector>

namespace echotest {

template <class T, class Part> struct EchoScenePoints {
    std::vector<VX_Point<T>> points;
    std::vector<int> returns;
    std::vector<Part> part;
    void add(double x, double y, double z, int cls, int count, Part p)
    {
        points.push_back(vxtest::point<T>(T(x), T(y), T(z), cls));
        returns.push_back(count);
        part.push_back(p);
    }
};

} // namespace echotest
