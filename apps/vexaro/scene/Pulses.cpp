#include "scene/Pulses.h"

#include <algorithm>

namespace vx::scene {

uint8_t vegetationTier(double h)
{
    if (h < kLowVegetationLimit)
        return kLowVegetation;
    if (h <= kHighVegetationLimit)
        return kMediumVegetation;
    return kHighVegetation;
}

bool PulseSimulator::add(double z, double intensity, uint8_t truth)
{
    if (static_cast<int>(hits_.size()) >= kMaxReturns)
        return false;
    if (!hits_.empty() && hits_.back().z - z < kSeparation)
        return false;
    hits_.push_back({z, intensity, truth});
    return true;
}

int PulseSimulator::fire(double x, double y, double gpsTime, std::vector<ScenePoint>* out)
{
    const double ground = layout_.terrain.height(x, y);

    // The surface that stops the pulse: a roof, grass or the bare earth.
    const Building* roof = nullptr;
    for (int id : layout_.buildingIndex.at(x, y)) {
        const Building& b = layout_.buildings[static_cast<std::size_t>(id)];
        if (b.contains(x, y) && (!roof || b.roofZ(x, y) > roof->roofZ(x, y)))
            roof = &b;
    }
    // Still water reflects the beam away from the sensor: no echo, or a weak one now and then.
    if (!roof && layout_.waterInChannel && layout_.terrain.onChannelFloor(x, y))
        return 0;
    if (!roof && layout_.underWater(x, y, ground)) {
        if (!rng_.chance(kWaterEchoShare))
            return 0;
        const double z = layout_.waterLevel + rng_.bell(0.05);
        const double intensity =
            std::clamp(rng_.uniform(0.1, 0.3) * 26000 + rng_.bell(500.0), 100.0, 65535.0);
        if (out)
            out->push_back({x, y, z, gpsTime, static_cast<uint16_t>(intensity), 1, 1, kWater});
        return 1;
    }
    double endZ = ground, endIntensity = 0;
    uint8_t endTruth = kGround;
    if (roof) {
        endZ = roof->roofZ(x, y);
        endIntensity = roof->intensity + rng_.bell(1500.0);
        endTruth = roof->bridge ? kBridgeDeck : kBuilding;
    } else {
        const GrassPatch* patch = nullptr;
        for (int id : layout_.grassIndex.at(x, y))
            if (layout_.grass[static_cast<std::size_t>(id)].contains(x, y))
                patch = &layout_.grass[id];
        if (patch) {
            const double blades = patch->height * rng_.uniform();
            endZ = ground + blades;
            endTruth = blades < kGrassGroundLimit ? kGround : kLowVegetation;
            endIntensity = 31000 + rng_.bell(3000.0);
        } else {
            endIntensity = 26000 + rng_.bell(3000.0);
        }
    }
    endZ += rng_.bell(0.02);

    // Crowns above that surface, highest first.
    struct Span {
        double top, bottom, edge;
        const Crown* crown;
    };
    Span spans[16];
    int spanCount = 0;
    for (int id : layout_.crownIndex.at(x, y)) {
        const Crown& c = layout_.crowns[static_cast<std::size_t>(id)];
        double top, bottom, edge;
        if (!c.interval(x, y, top, bottom, edge) || top <= endZ + 0.1 || spanCount == 16)
            continue;
        spans[spanCount++] = {top, std::max(bottom, endZ), edge, &c};
    }
    std::sort(spans, spans + spanCount, [](const Span& a, const Span& b) { return a.top > b.top; });

    hits_.clear();
    bool alive = true;
    for (int k = 0; k < spanCount && alive; ++k) {
        const Span& s = spans[k];
        double chance = s.crown->density * (1.0 - 0.5 * s.edge);
        for (double z = s.top - rng_.uniform(0.0, 0.25); alive && z > s.bottom; z -= rng_.uniform(0.8, 2.5)) {
            if (rng_.chance(chance)) {
                const double zz = z + rng_.bell(0.03);
                if (add(zz, 21000 + rng_.bell(5000.0), vegetationTier(zz - ground)) &&
                    rng_.chance(s.crown->stop))
                    alive = false;
            }
            chance = s.crown->density * 0.55;
        }
    }
    if (alive || hits_.empty()) {
        // Energy left after the canopy makes the last echo weaker.
        const double left = hits_.empty() ? 1.0 : rng_.uniform(0.35, 0.7);
        if (!add(endZ, endIntensity * left, endTruth) && hits_.empty())
            hits_.push_back({endZ, endIntensity, endTruth});
    }

    const int n = static_cast<int>(hits_.size());
    if (out) {
        for (int i = 0; i < n; ++i) {
            const Hit& h = hits_[static_cast<std::size_t>(i)];
            const double fade = 1.0 / (1.0 + 0.6 * i);
            const double intensity = std::clamp(h.intensity * fade, 100.0, 65535.0);
            out->push_back({x, y, h.z, gpsTime, static_cast<uint16_t>(intensity), static_cast<uint8_t>(i + 1),
                            static_cast<uint8_t>(n), h.truth});
        }
    }
    return n;
}

} // namespace vx::scene
