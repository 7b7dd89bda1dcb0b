#pragma once

// Random numbers that are the same with every library, run and number of threads: the splitmix64
// sequence (Steele, Lea and Flood, "Fast splittable pseudorandom number generators", 2014), and
// the same mixing as a hash of a pixel's place for noise that hangs on no order.

#include <cstdint>
#include <numbers>

namespace velloran::samples {

/// One splitmix64 output for `state`; neighbouring states give unrelated values.
constexpr std::uint64_t MixBits(std::uint64_t state) {
    std::uint64_t z = state + 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

/// Hash of a lattice place.
constexpr std::uint64_t HashAt(std::uint64_t seed, std::int64_t x, std::int64_t y) {
    return MixBits(seed ^ (static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15U) ^
                   (static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4FU));
}

class Random {
 public:
    explicit Random(std::uint64_t seed) : state_(MixBits(seed)) {}

    std::uint64_t Bits() {
        const std::uint64_t value = MixBits(state_);
        state_ += 0x9E3779B97F4A7C15U;
        return value;
    }
    /// 0 <= value < 1.
    double Unit() { return static_cast<double>(Bits() >> 11) * 0x1p-53; }
    double Between(double low, double high) { return low + (high - low) * Unit(); }
    /// 0 <= value < count.
    int Below(int count) { return static_cast<int>(Bits() % static_cast<std::uint64_t>(count)); }
    bool Chance(double probability) { return Unit() < probability; }
    double Sign() { return Chance(0.5) ? 1.0 : -1.0; }
    double Turn() { return Between(0, 2 * std::numbers::pi); }
    /// A generator of its own, so that one part of a page may draw more without moving the rest.
    Random Branch() { return Random(Bits()); }

 private:
    std::uint64_t state_;
};

}  // namespace velloran::samples
