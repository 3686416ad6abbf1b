// Class slots and step parameters of the engine, with their defaults. Field names are the
// setters' names without "set_".
#pragma once

#include <cstdint>

namespace vx {

struct ClassSlots {
    int32_t TargetClass = 0;
    int32_t TargetClass2 = 0;
    int32_t TargetClass3 = 0;
    int32_t GroundClass = 2;
    int32_t ReferenceClass = 8;
    int32_t BuildingClass = 6;
    int32_t NeighbourPlaneClass = 10;
    int32_t ChaosClass = 11;
    int32_t InitialClass = 0;
    int32_t NeighbourDistanceClass = 0;
};

template <class T> struct Parameters {
    T NNSearchRange_NormalVectors = static_cast<T>(1.5f);
    int32_t Inner_NormalVectors = 1000;
    int32_t MinimalNumberOfNN = 3;
    T ResetOptionalRange = T(0);
    int32_t ResetOptionalClass = 0;
    float SeedSearchMaxHindeks = 0.001f;
    int32_t GroundGrowthIterations = 50;
    T GroundGrowthDistanceFromPlane = T(0.05);
    float GroundGrowthMinCosinus = 0.99f;
    T GroundGrowthRange = T(1.5);
    T GroundGrowthRangeLowest = T(0.5);
    float GroundGrowthMaxCosinusPar2 = 0.11f;
    T GroundGrowthMaxHeightDifference = T(0.3);
    T LowPointFilteringRange = T(1.0);
    T BuildingRange = T(1.5);
    T BuildingGroundRange = T(2.0);
    T BuildingDfPBuilding = T(0.2);
    float BuildingMinCosBuilding = 0.9f;
    int32_t BuildingMinNoN = 5;
    float BuildingProcOfBP = 0.5f;
    float BuildingProcOfGhosts = 0.2f;
    T BuildingMinHeight = T(1.8);
    int32_t Building2Iterations = 10;
    T Building2Range = T(1.5);
    T Building2DistFPlane = T(0.4);
    int32_t Building3Iterations = 3;
    T Building3GroundRange = T(1.0);
    T Building3DetailsHeight = T(0.4);
    int32_t VegetationIterations = 10;
    T VegetationRange = T(2.0);
    T VegetationDfG = T(0.3);
    float VegetationMaxCos = 0.9f;
    float VegetationProcOfChaos = 0.5f;
    float VegetationProcOfGhosts = 0.5f;
    float VegetationProcOfOrder = 0.5f;
    float VegetationProcOfPlant = 0.5f;
    T VegetationLowLimit = T(0.4);
    T VegetationHighLimit = T(2.0);
    float VegetationRatio = 0.5f;
};

} // namespace vx
