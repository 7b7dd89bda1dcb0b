#pragma once

// Functions of the mathematics library that give the same bits on every processor and with every
// system library: they add, subtract, multiply, divide and look up, and nothing else. What feeds
// pixels calls these. Results of doubles are within 0.52 units in the last place (sine and cosine
// within 0.8), so that nearly all are the doubles nearest to the true values; results of floats
// are those rounded once more. Infinities, NaN and the ends of the range as in the C library.

#include <bit>
#include <cstdint>

namespace velloran {

double Exp(double x);
double Log(double x);
double Cbrt(double x);

/// NaN for negative x, even where y is whole.
double Pow(double x, double y);

/// |x| below a million (beyond, NaN).
double Sin(double x);
double Cos(double x);

inline float Exp(float x) {
    return static_cast<float>(Exp(static_cast<double>(x)));
}
inline float Log(float x) {
    return static_cast<float>(Log(static_cast<double>(x)));
}

/// Log of a normal, finite x > 0 without a table or a branch, so that loops over it become vectors;
/// within 0.51 units in the last place.
inline float LogOfPositive(float x) {
    constexpr std::int32_t kRootOfHalf = 0x3F3504F3, kMantissa = 0x007FFFFF;
    // x = m * 2^exponent with m from the root of a half to the root of two.
    const auto bits = std::bit_cast<std::int32_t>(x) - kRootOfHalf;
    const std::int32_t exponent = bits >> 23;
    const auto m = static_cast<double>(std::bit_cast<float>((bits & kMantissa) + kRootOfHalf));
    const double s = (m - 1.0) / (m + 1.0), z = s * s;
    // log(m) = 2 * (s + s^3 / 3 + s^5 / 5 + ...), and s is below 0.172.
    const double tail =
        z *
        (1.0 / 3 + z * (1.0 / 5 + z * (1.0 / 7 + z * (1.0 / 9 + z * (1.0 / 11 + z * (1.0 / 13))))));
    return static_cast<float>(static_cast<double>(exponent) * 0x1.62e42fefa39efp-1 +
                              2.0 * (s + s * tail));
}

}  // namespace velloran
