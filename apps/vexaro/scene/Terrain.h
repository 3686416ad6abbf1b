// Bare-earth height of the generated scenes: a tilted plane with rolling hills, one ridge and one
// ditch; gentle ground for the hall; a hillside of slopes and terraces.
#pragma once

#include "scene/Random.h"
#include "scene/Scene.h"

#include <cmath>
#include <limits>
#include <vector>

namespace vx::scene {

/// A straight line through the scene; distance() is signed, in metres.
struct SceneLine {
    double px = 0, py = 0; ///< a point on the line
    double dx = 1, dy = 0; ///< unit direction
    double distance(double x, double y) const { return (x - px) * -dy + (y - py) * dx; }
};

/// The bare earth of the small generated test scenes: a slope along x with an egg-box
/// undulation of the given amplitude, sin(x / wx) cos(y / wy). It uses sin and cos, so its last
/// bits may differ between maths libraries; the demo's Terrain does not.
inline double rollingSlope(double x, double y, double slope, double amplitude, double wx, double wy)
{
    return slope * x + amplitude * std::sin(x / wx) * std::cos(y / wy);
}

/// Rise over run of the terraced hillside's slopes: tan 30 degrees.
constexpr double kHillsideGradient = 0.57735026918962576;

/// The generated scenes' bare earth, drawn from their generator.
class Terrain {
public:
    /// Draws the shape for a square scene of the given side (metres) from rng: rolling terrain
    /// for the town and the forest, gentle ground for the hall, a hillside for the terraces, a
    /// mountainside for the mountain forest, the town's terrain cut by a channel for the bridges.
    Terrain(Random& rng, double side, SceneKind kind = SceneKind::Town);

    /// Height of the bare earth at (x, y), metres above the vertical datum.
    double height(double x, double y) const;

    const SceneLine& ridge() const { return ridge_; }
    const SceneLine& ditch() const { return ditch_; }
    double ditchHalfWidth() const { return ditchHalfWidth_; }
    /// The channel of the bridges scene (depth 0 elsewhere): its centre line, and the half width
    /// of its top, where the banks meet the terrain.
    const SceneLine& channel() const { return channel_; }
    double channelDepth() const { return channelDepth_; }
    double channelHalfTop() const
    {
        return std::isnan(channelFloor_) ? channelHalfFloor_ + channelDepth_ : channelHalfTopLevel_;
    }
    /// The height of the river kind's level channel floor (NaN where the floor follows the
    /// terrain, as in the bridges kind).
    double channelFloor() const { return channelFloor_; }
    /// How deep the channel cuts the terrain at (x, y), whose height before the cut is `uncut`:
    /// its depth on the floor, less on the banks (a level floor cuts down to its own height).
    double channelCut(double x, double y, double uncut) const;
    /// Whether (x, y) lies on the channel's flat floor.
    bool onChannelFloor(double x, double y) const
    {
        return channelDepth_ > 0 && std::fabs(channel_.distance(x, y)) <= channelHalfFloor_;
    }

private:
    /// A point of the hillside's profile: height z at distance u along the uphill direction.
    struct ProfileNode {
        double u, z;
    };
    /// Bounds of a drawn value.
    struct Range {
        double low, high;
    };
    /// Draws the tilt (its rise per run within `slope`, its unit direction into gx, gy), the
    /// noise seed and the amplitudes of the hills and of the bumps.
    void drawUndulation(Random& rng, const Range& slope, const Range& hills, const Range& bumps, double& gx,
                        double& gy);
    void drawRolling(Random& rng, double side);
    void drawGentle(Random& rng);
    void drawHillside(Random& rng, double side);
    void drawMountainside(Random& rng, double side);
    void drawChannelled(Random& rng, double side);
    /// Makes the channel's floor level (the river kind): see channelFloor().
    void levelChannelFloor(double side);
    /// The height before the channel cuts it.
    double uncutHeight(double x, double y) const;
    double valueNoise(double x, double y, double cell, uint64_t seed) const;
    double profileHeight(double u) const;

    double base_ = 120.0;
    double tiltX_ = 0, tiltY_ = 0;
    uint64_t noiseSeed_ = 0;
    double hillAmplitude_ = 0, bumpAmplitude_ = 0;
    SceneLine ridge_;
    double ridgeHeight_ = 0, ridgeHalfWidth_ = 1;
    SceneLine ditch_;
    double ditchDepth_ = 0, ditchHalfWidth_ = 1;
    SceneLine channel_;
    double channelDepth_ = 0, channelHalfFloor_ = 1;
    double channelFloor_ = std::numeric_limits<double>::quiet_NaN();
    double channelHalfTopLevel_ = 0; ///< half width of the widest top of a level floor's channel
    /// The hillside: heights along (uphillX_, uphillY_), measured from the scene's lowest corner
    /// in that direction; empty for other kinds.
    std::vector<ProfileNode> profile_;
    double uphillX_ = 1, uphillY_ = 0, uphillStart_ = 0;
};

} // namespace vx::scene
