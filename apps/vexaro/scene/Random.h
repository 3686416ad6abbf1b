// Deterministic random numbers for the generated scenes of the demo, the tests and the benchmarks.
//
// A scene must come out bit-identical for a seed on every machine and compiler, so nothing
// here uses <random> distributions (their algorithms differ between standard libraries) or
// transcendental functions (their last bits differ between maths libraries): only integer
// mixing, IEEE additions, multiplications, divisions and square roots.
#pragma once

#include <cmath>
#include <cstdint>

namespace vx::scene {

/// SplitMix64 step: a good 64-bit mixer, used for seeding and for lattice hashes.
inline uint64_t splitMix(uint64_t& state)
{
    uint64_t z = (state += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
}

/// Hash of a value and a seed, uniform over 64 bits.
inline uint64_t hashMix(uint64_t value, uint64_t seed)
{
    uint64_t state = value ^ (seed * 0xD1B54A32D192ED03ULL);
    return splitMix(state);
}

/// xoshiro256** seeded through SplitMix64: the demo scene's sequence.
class Xoshiro256 {
public:
    explicit Xoshiro256(uint64_t seed)
    {
        uint64_t state = seed;
        for (auto& word : s_)
            word = splitMix(state);
    }

    uint64_t next()
    {
        const uint64_t result = rotl(s_[1] * 5, 7) * 9;
        const uint64_t t = s_[1] << 17;
        s_[2] ^= s_[0];
        s_[3] ^= s_[1];
        s_[1] ^= s_[2];
        s_[0] ^= s_[3];
        s_[2] ^= t;
        s_[3] = rotl(s_[3], 45);
        return result;
    }

private:
    static uint64_t rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    uint64_t s_[4];
};

/// The SplitMix64 sequence itself: the generated test and benchmark scenes, whose accuracy
/// thresholds were set on this sequence.
class SplitMix64 {
public:
    explicit SplitMix64(uint64_t seed) : state_(seed) {}
    uint64_t next() { return splitMix(state_); }

private:
    uint64_t state_;
};

/// The draws every generated scene takes, over an engine whose next() gives 64 random bits.
template <class Engine> class Draws : public Engine {
public:
    using Engine::Engine;
    using Engine::next;

    /// Uniform in [0, 1), 53 random bits.
    double uniform() { return static_cast<double>(next() >> 11) * (1.0 / 9007199254740992.0); }
    /// Uniform in [a, b).
    double uniform(double a, double b) { return a + (b - a) * uniform(); }
    /// Integer in [0, n).
    int below(int n) { return static_cast<int>(uniform() * n); }
    bool chance(double p) { return uniform() < p; }
    /// Zero-mean bell-shaped value with standard deviation sigma (sum of four uniforms: no
    /// logarithms or sines, and bounded at 3.46 sigma, which suits measurement noise).
    double bell(double sigma)
    {
        const double sum = uniform() + uniform() + uniform() + uniform();
        return (sum - 2.0) * 1.7320508075688772 * sigma;
    }
    /// A random unit vector in the plane (rejection sampling, no trigonometry).
    void direction(double& dx, double& dy);
};

/// The demo scene's generator.
using Random = Draws<Xoshiro256>;
/// The generator of the test and benchmark scenes.
using SequenceRandom = Draws<SplitMix64>;

template <class Engine> void Draws<Engine>::direction(double& dx, double& dy)
{
    for (;;) {
        const double a = uniform(-1.0, 1.0);
        const double b = uniform(-1.0, 1.0);
        const double r2 = a * a + b * b;
        if (r2 > 0.01 && r2 <= 1.0) {
            const double r = std::sqrt(r2);
            dx = a / r;
            dy = b / r;
            return;
        }
    }
}

} // namespace vx::scene
