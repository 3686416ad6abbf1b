// The regular grid laid over a cloud, the point-to-cell links sorted by cell, and the
// per-cell runs, in their array-of-structures and structure-of-arrays forms.
#pragma once

#include "store/PointViews.h"

#include <cstdint>

template <class T> struct VX_DecompositionGridParameters {
    T minX = 0, minY = 0, minZ = 0;
    T maxX = 0, maxY = 0, maxZ = 0;
    int32_t cellsX = 0, cellsY = 0, cellsZ = 0;
    T sizeX = 0, sizeY = 0, sizeZ = 0;
};

struct VX_IndexToGroup {
    int32_t pointIndex;
    int32_t group;
};

struct VX_DecompositionGroups {
    int32_t start;
    int32_t end;
    int32_t count;
};

struct vxIndexToGroupSoA {
    int32_t* pointIndex = nullptr;
    int32_t* group = nullptr;
};

struct vxDecompositionGroupsSoA {
    int32_t* start = nullptr;
    int32_t* end = nullptr;
    int32_t* count = nullptr;
};
