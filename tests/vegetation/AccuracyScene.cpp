#include "vegetation/AccuracyScene.h"

#include <algorithm>
#include <cmath>

namespace vegtest {

namespace {

/// splitmix64: small, fast and the same on every platform.
class Random {
public:
    explicit Random(uint64_t seed) : state_(seed) {}
    double uniform()
    {
        uint64_t z = (state_ += 0x9e3779b97f4a7c15ull);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        z ^= z >> 31;
        return double(z >> 11) * (1.0 / 9007199254740992.0);
    }
    double between(double a, double b) { return a + (b - a) * uniform(); }

private:
    uint64_t state_;
};

double terrain(double x, double y)
{
    return 0.8 * std::sin(x / 15.0) + 0.6 * std::cos(y / 11.0) + 0.02 * x;
}

struct Box {
    double x0, y0, x1, y1, height; ///< flat roof `height` above the terrain at the box's centre
    bool contains(double x, double y) const { return x >= x0 && x <= x1 && y >= y0 && y <= y1; }
    double roof() const { return terrain((x0 + x1) / 2, (y0 + y1) / 2) + height; }
};

/// An ellipsoidal crown between base and top above the terrain at its stem.
struct Crown {
    double cx, cy, base, top, radius, density;
    /// Heights where a vertical pulse at (x, y) enters and leaves the crown.
    bool span(double x, double y, double& high, double& low) const
    {
        const double q = ((x - cx) * (x - cx) + (y - cy) * (y - cy)) / (radius * radius);
        if (q >= 1.0)
            return false;
        const double ground = terrain(cx, cy), mid = (base + top) / 2, half = (top - base) / 2;
        const double k = std::sqrt(1.0 - q);
        high = ground + mid + half * k;
        low = ground + mid - half * k;
        return true;
    }
};

struct Patch {
    double cx, cy, radius;
    bool contains(double x, double y) const
    {
        return (x - cx) * (x - cx) + (y - cy) * (y - cy) < radius * radius;
    }
};

int tierOf(double heightAboveGround)
{
    if (heightAboveGround < 0.4)
        return kTruthLow;
    if (heightAboveGround <= 2.0)
        return kTruthMedium;
    return kTruthHigh;
}

/// Keeps objects apart: a new one must stay `gap` away from every circle placed so far.
struct Placer {
    std::vector<double> xs, ys, rs;
    bool free(double x, double y, double r, double gap) const
    {
        for (size_t i = 0; i < xs.size(); ++i)
            if (std::hypot(x - xs[i], y - ys[i]) < r + rs[i] + gap)
                return false;
        return true;
    }
    void add(double x, double y, double r) { xs.push_back(x), ys.push_back(y), rs.push_back(r); }
};

} // namespace

AccuracyScene makeAccuracyScene(double side, double pulsesPerSquareMetre, uint64_t seed)
{
    Random rnd(seed);
    AccuracyScene scene;
    scene.side = side;
    Placer placer;

    std::vector<Box> boxes;
    for (int tries = 0; boxes.size() < 2 && tries < 100; ++tries) {
        const double w = rnd.between(8, 12), d = rnd.between(8, 12);
        const double x = rnd.between(2, side - w - 2), y = rnd.between(2, side - d - 2);
        const double r = std::hypot(w, d) / 2;
        if (!placer.free(x + w / 2, y + d / 2, r, 3))
            continue;
        placer.add(x + w / 2, y + d / 2, r);
        boxes.push_back({x, y, x + w, y + d, rnd.between(4, 7)});
    }
    std::vector<Crown> crowns;
    // Trees of several heights (tops 4 to 15 m), then shrubs (tops 0.8 to 1.8 m).
    for (int tries = 0; crowns.size() < 14 && tries < 2000; ++tries) {
        const double r = rnd.between(1.8, 3.5), x = rnd.between(r, side - r), y = rnd.between(r, side - r);
        if (!placer.free(x, y, r, 1))
            continue;
        placer.add(x, y, r);
        const double top = rnd.between(4, 15);
        crowns.push_back({x, y, rnd.between(2.2, std::min(4.0, top - 1.5)), top, r, 0.7});
    }
    const size_t trees = crowns.size();
    for (int tries = 0; crowns.size() < trees + 16 && tries < 2000; ++tries) {
        const double r = rnd.between(0.7, 1.3), x = rnd.between(r, side - r), y = rnd.between(r, side - r);
        if (!placer.free(x, y, r, 0.5))
            continue;
        placer.add(x, y, r);
        crowns.push_back({x, y, 0.45, rnd.between(0.9, 1.8), r, 0.8});
    }
    std::vector<Patch> grass;
    for (int tries = 0; grass.size() < 6 && tries < 2000; ++tries) {
        const double r = rnd.between(2, 4), x = rnd.between(r, side - r), y = rnd.between(r, side - r);
        if (!placer.free(x, y, r, 0.5))
            continue;
        placer.add(x, y, r);
        grass.push_back({x, y, r});
    }

    const double spacing = 1.0 / std::sqrt(pulsesPerSquareMetre);
    const int steps = int(side / spacing);
    for (int i = 0; i < steps; ++i) {
        for (int j = 0; j < steps; ++j) {
            const double x = (i + rnd.uniform()) * spacing, y = (j + rnd.uniform()) * spacing;
            const double ground = terrain(x, y);
            std::vector<ScanReturn> pulse;
            auto hit = [&](double z, int truth) { pulse.push_back({x, y, z, 0, truth}); };

            const Box* roof = nullptr;
            for (const Box& b : boxes)
                if (b.contains(x, y))
                    roof = &b;
            if (roof) {
                hit(roof->roof(), kTruthBuilding);
            } else {
                // Crowns in the pulse's way, highest first; each may give a first return near its
                // surface and a second one deeper inside. Returns closer than 1 m merge.
                std::vector<std::pair<double, double>> spans;
                std::vector<double> densities;
                for (const Crown& c : crowns) {
                    double high = 0, low = 0;
                    if (c.span(x, y, high, low))
                        spans.push_back({high, low}), densities.push_back(c.density);
                }
                bool blocked = false;
                for (size_t k = 0; k < spans.size() && !blocked; ++k) {
                    const double high = spans[k].first, low = spans[k].second;
                    if (rnd.uniform() >= densities[k])
                        continue;
                    const double first = high - rnd.uniform() * 0.3 * (high - low);
                    hit(first, tierOf(first - ground));
                    if (rnd.uniform() < 0.4 && first - low > 1.0) {
                        const double second = rnd.between(low, first - 1.0);
                        hit(second, tierOf(second - ground));
                    }
                    blocked = rnd.uniform() < 0.25;
                }
                if (!blocked) {
                    bool onGrass = false;
                    for (const Patch& g : grass)
                        onGrass = onGrass || g.contains(x, y);
                    if (onGrass && rnd.uniform() < 0.7)
                        hit(ground + rnd.between(0.15, 0.35), kTruthLow);
                    else
                        hit(ground + rnd.between(-0.02, 0.02), kTruthGround);
                }
            }
            // Merge returns closer than one metre into the earlier one, keep at most four.
            std::vector<ScanReturn> kept;
            for (const ScanReturn& r : pulse)
                if (kept.empty() || kept.back().z - r.z >= 1.0)
                    kept.push_back(r);
            if (kept.size() > 4)
                kept.erase(kept.begin() + 3, kept.end() - 1);
            kept.back().lastReturn = 1;
            scene.returns.insert(scene.returns.end(), kept.begin(), kept.end());
        }
    }
    return scene;
}

} // namespace vegtest
