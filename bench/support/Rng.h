#pragma once

#include <cstdint>

namespace vrk::bench {

/// splitmix64: the same numbers for a seed on every machine, so that every program makes the same workload.
class Rng {
public:
    explicit Rng(std::uint64_t seed) : state(seed) {}

    std::uint64_t next()
    {
        state += 0x9E3779B97F4A7C15ull;
        std::uint64_t z = state;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ z >> 27) * 0x94D049BB133111EBull;
        return z ^ z >> 31;
    }
    /// From 0 to below 1.
    double u01() { return static_cast<double>(next() >> 11) * 0x1p-53; }
    double uni(double a, double b) { return a + (b - a) * u01(); }
    /// From 0 to n - 1.
    std::uint64_t below(std::uint64_t n) { return ((next() >> 32) * n) >> 32; }

private:
    std::uint64_t state;
};

} // namespace vrk::bench
