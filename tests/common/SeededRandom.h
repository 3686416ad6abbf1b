// A small seeded random sequence for generated test scenes: SplitMix64, 53 bits a draw, so a
// scene is the same on every machine and every run.
#pragma once

#include <cstdint>

namespace vxtest {

struct SeededRandom {
    uint64_t s;
    /// Uniform in [0, 1).
    double next()
    {
        s += 0x9e3779b97f4a7c15ull;
        uint64_t z = s;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ull;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebull;
        return double((z ^ (z >> 31)) >> 11) * (1.0 / 9007199254740992.0);
    }
    /// Uniform in [a, b).
    double in(double a, double b) { return a + (b - a) * next(); }
};

} // namespace vxtest
