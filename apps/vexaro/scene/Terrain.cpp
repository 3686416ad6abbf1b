#include "scene/Terrain.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vx::scene {

namespace {

/// Smooth step with zero first and second derivatives at 0 and 1.
double smoother(double t)
{
    return t * t * t * (t * (t * 6.0 - 15.0) + 10.0);
}

/// A smooth bump of height 1 at t = 0 that reaches 0, flat, at |t| = 1.
double bump(double t)
{
    if (t <= -1.0 || t >= 1.0)
        return 0.0;
    const double u = 1.0 - t * t;
    return u * u;
}

/// A line through the middle part of the scene with a random direction.
SceneLine randomLine(Random& rng, double side)
{
    SceneLine line;
    line.px = rng.uniform(0.3, 0.7) * side;
    line.py = rng.uniform(0.3, 0.7) * side;
    rng.direction(line.dx, line.dy);
    return line;
}

} // namespace

Terrain::Terrain(Random& rng, double side, SceneKind kind)
{
    if (kind == SceneKind::Hall)
        drawGentle(rng);
    else if (kind == SceneKind::Terraces)
        drawHillside(rng, side);
    else if (kind == SceneKind::MountainForest)
        drawMountainside(rng, side);
    else if (kind == SceneKind::Bridges)
        drawChannelled(rng, side);
    else if (kind == SceneKind::River) {
        drawChannelled(rng, side);
        levelChannelFloor(side);
    } else
        drawRolling(rng, side);
}

void Terrain::drawUndulation(Random& rng, const Range& slope, const Range& hills, const Range& bumps,
                             double& gx, double& gy)
{
    rng.direction(gx, gy);
    const double s = rng.uniform(slope.low, slope.high);
    tiltX_ = gx * s;
    tiltY_ = gy * s;
    noiseSeed_ = rng.next();
    hillAmplitude_ = rng.uniform(hills.low, hills.high);
    bumpAmplitude_ = rng.uniform(bumps.low, bumps.high);
}

void Terrain::drawRolling(Random& rng, double side)
{
    double gx = 0, gy = 0;
    drawUndulation(rng, {0.02, 0.05}, {1.5, 3.5}, {0.3, 0.7}, gx, gy);

    ridge_ = randomLine(rng, side);
    ridgeHeight_ = rng.uniform(4.0, 7.0);
    ridgeHalfWidth_ = rng.uniform(25.0, 35.0);

    ditch_ = randomLine(rng, side);
    ditchDepth_ = rng.uniform(0.9, 1.4);
    ditchHalfWidth_ = rng.uniform(4.0, 5.0);
}

void Terrain::drawGentle(Random& rng)
{
    // At most 1.5 % of tilt and a metre of undulation; neither ridge nor ditch.
    double gx = 0, gy = 0;
    drawUndulation(rng, {0.005, 0.015}, {0.3, 0.8}, {0.05, 0.15}, gx, gy);
}

void Terrain::drawChannelled(Random& rng, double side)
{
    // The town's rolling terrain, cut across by a channel with a flat floor 16-30 m wide and
    // banks of 45 degrees, 5 to 8 m deep: a river or a road in a cutting.
    drawRolling(rng, side);
    channel_ = randomLine(rng, side);
    channelDepth_ = rng.uniform(5.0, 8.0);
    channelHalfFloor_ = rng.uniform(8.0, 15.0);
}

void Terrain::levelChannelFloor(double side)
{
    // The floor lies the channel's depth below the lowest terrain along its centre line within
    // the scene; the banks rise from it at 45 degrees until they meet the terrain.
    double lowest = std::numeric_limits<double>::max(), highest = std::numeric_limits<double>::lowest();
    for (double t = -2.0 * side; t <= 2.0 * side; t += 0.5) {
        const double x = channel_.px + channel_.dx * t, y = channel_.py + channel_.dy * t;
        if (x < 0 || y < 0 || x > side || y > side)
            continue;
        const double z = uncutHeight(x, y);
        lowest = std::min(lowest, z);
        highest = std::max(highest, z);
    }
    channelFloor_ = lowest - channelDepth_;
    channelHalfTopLevel_ = channelHalfFloor_ + (highest - channelFloor_);
}

double Terrain::channelCut(double x, double y, double uncut) const
{
    const double d = std::fabs(channel_.distance(x, y));
    if (!std::isnan(channelFloor_))
        return std::max(0.0, uncut - (channelFloor_ + std::max(0.0, d - channelHalfFloor_)));
    if (d <= channelHalfFloor_)
        return channelDepth_;
    return std::max(0.0, channelDepth_ - (d - channelHalfFloor_));
}

void Terrain::drawMountainside(Random& rng, double side)
{
    // A mountainside of 22-31 degrees with spurs and hollows over a hundred metres, and one gully
    // running straight down it whose banks steepen the slope across it to 35-45 degrees.
    double gx = 0, gy = 0;
    drawUndulation(rng, {0.4, 0.6}, {4.0, 8.0}, {0.3, 0.7}, gx, gy);

    ditch_ = randomLine(rng, side);
    ditch_.dx = gx;
    ditch_.dy = gy;
    ditchDepth_ = rng.uniform(3.0, 5.0);
    ditchHalfWidth_ = rng.uniform(12.0, 20.0);
}

void Terrain::drawHillside(Random& rng, double side)
{
    rng.direction(uphillX_, uphillY_);
    noiseSeed_ = rng.next();
    bumpAmplitude_ = 0.05; // terraces stay flat within a few centimetres
    uphillStart_ = std::min(0.0, side * uphillX_) + std::min(0.0, side * uphillY_);
    const double length = side * (std::fabs(uphillX_) + std::fabs(uphillY_));
    // Slopes of 30 degrees, 8 to 20 m long, alternate with flights of two to four flat
    // terraces, 10 to 30 m wide, each 1 to 2 m above the one below behind a near-vertical step.
    constexpr double kStepRun = 0.2;
    double u = -rng.uniform(0.0, 10.0), z = 0;
    profile_.push_back({u - 1.0, z});
    while (u < length + 1.0) {
        const double run = rng.uniform(8.0, 20.0);
        u += run;
        z += run * kHillsideGradient;
        profile_.push_back({u, z});
        const int terraces = 2 + static_cast<int>(rng.uniform() * 3.0);
        for (int k = 0; k < terraces && u < length + 1.0; ++k) {
            u += rng.uniform(10.0, 30.0);
            profile_.push_back({u, z});
            u += kStepRun;
            z += rng.uniform(1.0, 2.0);
            profile_.push_back({u, z});
        }
    }
}

double Terrain::profileHeight(double u) const
{
    const auto next = std::upper_bound(profile_.begin(), profile_.end(), u,
                                       [](double v, const ProfileNode& n) { return v < n.u; });
    if (next == profile_.begin())
        return profile_.front().z;
    if (next == profile_.end())
        return profile_.back().z;
    const ProfileNode& a = *(next - 1);
    return a.z + (next->z - a.z) * (u - a.u) / (next->u - a.u);
}

double Terrain::valueNoise(double x, double y, double cell, uint64_t seed) const
{
    const double fx = x / cell, fy = y / cell;
    const double ix = std::floor(fx), iy = std::floor(fy);
    const double tx = smoother(fx - ix), ty = smoother(fy - iy);
    auto corner = [&](double cx, double cy) {
        const auto key = (static_cast<uint64_t>(static_cast<int64_t>(cx)) << 32) ^
                         static_cast<uint64_t>(static_cast<int64_t>(cy) & 0xFFFFFFFF);
        return static_cast<double>(hashMix(key, seed) >> 11) * (2.0 / 9007199254740992.0) - 1.0;
    };
    const double a = corner(ix, iy), b = corner(ix + 1, iy);
    const double c = corner(ix, iy + 1), d = corner(ix + 1, iy + 1);
    const double low = a + (b - a) * tx, high = c + (d - c) * tx;
    return low + (high - low) * ty;
}

double Terrain::height(double x, double y) const
{
    double z = uncutHeight(x, y);
    if (channelDepth_ > 0)
        z -= channelCut(x, y, z);
    return z;
}

double Terrain::uncutHeight(double x, double y) const
{
    double z = base_ + tiltX_ * x + tiltY_ * y;
    z += hillAmplitude_ * valueNoise(x, y, 110.0, noiseSeed_);
    z += bumpAmplitude_ * valueNoise(x, y, 35.0, noiseSeed_ + 1);
    z += ridgeHeight_ * bump(ridge_.distance(x, y) / ridgeHalfWidth_);
    z -= ditchDepth_ * bump(ditch_.distance(x, y) / ditchHalfWidth_);
    if (!profile_.empty())
        z += profileHeight(x * uphillX_ + y * uphillY_ - uphillStart_);
    return z;
}

} // namespace vx::scene
