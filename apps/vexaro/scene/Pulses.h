// One laser pulse shot straight down through the demo scene, and the returns it gives.
#pragma once

#include "scene/Layout.h"
#include "scene/Scene.h"

#include <vector>

namespace vx::scene {

class PulseSimulator {
public:
    PulseSimulator(const Layout& layout, Random& rng) : layout_(layout), rng_(rng) {}

    /// Fires one pulse at (x, y); appends its returns to out (when not null) and returns how
    /// many there were (1 to 5).
    int fire(double x, double y, double gpsTime, std::vector<ScenePoint>* out);

    /// Least vertical distance between two returns of one pulse: closer echoes merge.
    static constexpr double kSeparation = 0.8;
    static constexpr int kMaxReturns = 5;
    /// Share of the pulses that still water returns (see Layout::waterLevel).
    static constexpr double kWaterEchoShare = 0.25;

private:
    struct Hit {
        double z;
        double intensity;
        uint8_t truth;
    };
    bool add(double z, double intensity, uint8_t truth);

    const Layout& layout_;
    Random& rng_;
    std::vector<Hit> hits_;
};

/// Truth class of vegetation at a height above the bare earth.
uint8_t vegetationTier(double heightAboveGround);

} // namespace vx::scene
