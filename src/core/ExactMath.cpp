#include "core/ExactMath.h"

#include <array>
#include <cfloat>
#include <cmath>
#include <limits>

// Tables and constants stand as sums of two doubles, worked out by the compiler. Products that must
// be exact are made by Dekker's splitting (A floating-point technique for extending the available
// precision, 1971): a fused multiplication would be quicker where a processor has it, and very slow
// where it has none.

namespace velloran {
namespace {

static_assert(FLT_EVAL_METHOD == 0, "doubles have to be rounded to doubles");

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// high + low, low below half a unit of high.
struct Sum2 {
    double high, low;
};

/// Exact for |a| >= |b|, or a = 0.
constexpr Sum2 SumOfOrdered(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

/// Exact.
constexpr Sum2 SumOf(double a, double b) {
    const double sum = a + b, ofB = sum - a;
    return {sum, (a - (sum - ofB)) + (b - ofB)};
}

/// The upper 26 bits.
constexpr double UpperHalf(double a) {
    const double scaled = 134217729.0 * a;
    return scaled - (scaled - a);
}

/// Exact.
constexpr Sum2 ProductOf(double a, double b) {
    const double product = a * b;
    const double aHigh = UpperHalf(a), aLow = a - aHigh;
    const double bHigh = UpperHalf(b), bLow = b - bHigh;
    return {product, ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow};
}

constexpr Sum2 operator+(Sum2 a, Sum2 b) {
    const Sum2 sum = SumOf(a.high, b.high);
    return SumOfOrdered(sum.high, sum.low + a.low + b.low);
}

constexpr Sum2 operator*(Sum2 a, Sum2 b) {
    const Sum2 product = ProductOf(a.high, b.high);
    return SumOfOrdered(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr Sum2 operator/(Sum2 a, Sum2 b) {
    const double first = a.high / b.high;
    const Sum2 left = a + Sum2{-first, 0.0} * b;
    return SumOfOrdered(first, left.high / b.high);
}

constexpr Sum2 kLn2{0x1.62e42fefa39efp-1, 0x1.abc9e3b39803fp-56};

/// The upper `bits` bits of a double.
constexpr double Leading(double a, int bits) {
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(a) & ~0ULL << (53 - bits));
}

/// 2^exponent, a normal number.
constexpr double PowerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

constexpr int kSteps = 128;  // of the tables

// Powers: x = k * ln2 / 128 + r, |r| below 0.0028.

/// 2^(i / 128).
constexpr std::array<Sum2, kSteps> MakePowers() {
    std::array<Sum2, kSteps> powers{};
    for (int i = 0; i < kSteps; ++i) {
        const Sum2 x = kLn2 * Sum2{i / static_cast<double>(kSteps), 0.0};
        Sum2 sum{1.0, 0.0};
        for (int n = 26; n > 0; --n)
            sum = Sum2{1.0, 0.0} + sum * x / Sum2{static_cast<double>(n), 0.0};
        powers[static_cast<std::size_t>(i)] = sum;
    }
    return powers;
}
constexpr std::array<Sum2, kSteps> kPowers = MakePowers();

constexpr double kStepsPerUnit = kSteps * 1.4426950408889634;
// Few enough bits for an exact product by k.
constexpr double kStepHigh = Leading(kLn2.high / kSteps, 34);
constexpr double kStepLow = (kLn2.high / kSteps - kStepHigh) + kLn2.low / kSteps;
constexpr double kToWhole = 0x1.8p52;  // what is added to it is rounded to a whole number

constexpr double kMostPower = 709.8, kLeastPower = -745.2;  // beyond: infinity, 0

/// e^(x + low), for x between the limits above.
double ExpOfSum(double x, double low) {
    const double shifted = x * kStepsPerUnit + kToWhole, k = shifted - kToWhole;
    const auto steps = static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(shifted));
    const double r = ((x - k * kStepHigh) - k * kStepLow) + low;
    const double tail = r + r * r * (1.0 / 2 + r * (1.0 / 6 + r * (1.0 / 24 + r * (1.0 / 120))));
    const Sum2& power = kPowers[static_cast<std::size_t>(steps & (kSteps - 1))];
    const double y = power.high + (power.low + power.high * tail);
    const int exponent = steps >> 7;
    if (exponent > 1023)
        return y * PowerOfTwo(1023) * 2.0;
    if (exponent < -1022)
        return y * PowerOfTwo(exponent + 100) * PowerOfTwo(-100);
    return y * PowerOfTwo(exponent);
}

// Logarithms: x = 2^exponent * z with z around 1, z = (1 + r) / inverse, |r| up to 1 / 128.

constexpr double kGrid = 0x1p42;  // sums of multiples of 1 / kGrid up to 2^10 are exact

struct LogStep {
    double inverse;    // of the middle of the step, in 128ths: products by it are exact
    double high, low;  // -log(inverse), high a multiple of 1 / kGrid
};

/// 2 * artanh((x - 1) / (x + 1)).
constexpr Sum2 SeriesOfLog(double x) {
    const Sum2 s = Sum2{x - 1.0, 0.0} / Sum2{x + 1.0, 0.0}, square = s * s;
    Sum2 sum{0.0, 0.0};
    for (int n = 51; n > 0; n -= 2)
        sum = sum * square + Sum2{1.0, 0.0} / Sum2{static_cast<double>(n), 0.0};
    return sum * s * Sum2{2.0, 0.0};
}

constexpr std::uint64_t kLeastBits = 0x3FE6000000000000;  // of 0.6875, the least z

constexpr std::array<LogStep, kSteps> MakeLogSteps() {
    std::array<LogStep, kSteps> steps{};
    for (std::size_t i = 0; i < kSteps; ++i) {
        const auto middle = std::bit_cast<double>(kLeastBits + (2 * i + 1) * (1ULL << 44));
        const double inverse = static_cast<int>(kSteps / middle + 0.5) / 128.0;
        const Sum2 log = SeriesOfLog(inverse);
        const double high = (-log.high + 0x1.8p52 / kGrid) - 0x1.8p52 / kGrid;
        steps[i] = {inverse, high, (-log.high - high) - log.low};
    }
    return steps;
}
constexpr std::array<LogStep, kSteps> kLogSteps = MakeLogSteps();

constexpr double kLn2High = Leading(kLn2.high, 42);  // a multiple of 1 / kGrid
constexpr double kLn2Low = (kLn2.high - kLn2High) + kLn2.low;

/// For a finite x > 0. Off by less than 2^-66, and by less than 2^-66 of itself near x = 1.
Sum2 LogOf(double x) {
    int exponent = 0;
    if (x < std::numeric_limits<double>::min()) {
        x *= 0x1p54;
        exponent = -54;
    }
    const auto bits = std::bit_cast<std::uint64_t>(x), above = bits - kLeastBits;
    exponent += static_cast<int>(static_cast<std::int64_t>(above) >> 52);
    const LogStep& step = kLogSteps[above >> 45 & (kSteps - 1)];
    const auto z = std::bit_cast<double>(bits - (above & 0xFFFULL << 52));
    const double upper = Leading(z, 32);
    const Sum2 r = SumOfOrdered(upper * step.inverse - 1.0, (z - upper) * step.inverse);
    const double h = r.high;
    const Sum2 square = ProductOf(h, h);
    const double cubic =
        square.high * h *
        (1.0 / 3 - h * (1.0 / 4 - h * (1.0 / 5 - h * (1.0 / 6 - h * (1.0 / 7 - h / 8)))));
    const Sum2 first = SumOf(exponent * kLn2High + step.high, h);
    const Sum2 second = SumOf(first.high, -0.5 * square.high);
    const double small = (exponent * kLn2Low + step.low) +
                         ((r.low - h * r.low) - 0.5 * square.low) + (first.low + second.low);
    return SumOf(second.high, cubic + small);
}

// Angles: x = k * pi / 2 + r, |r| up to pi / 4.

constexpr double kHalfPi = 0x1.921fb54442d18p+0;
constexpr double kHalfPi1 = Leading(kHalfPi, 33);
constexpr Sum2 kHalfPiRest = SumOfOrdered(kHalfPi - kHalfPi1, 0x1.1a62633145c07p-54);
constexpr double kHalfPi2 = Leading(kHalfPiRest.high, 33);
constexpr double kHalfPi3 = (kHalfPiRest.high - kHalfPi2) + kHalfPiRest.low;
constexpr double kMostAngle = 1e6;

double SinOfRest(Sum2 r) {
    const double z = r.high * r.high;
    const double tail =
        -1.0 / 6 +
        z * (1.0 / 120 + z * (-1.0 / 5040 +
                              z * (1.0 / 362880 + z * (-1.0 / 39916800 +
                                                       z * (1.0 / 6227020800 +
                                                            z * (-1.0 / 1307674368000 +
                                                                 z * (1.0 / 355687428096000)))))));
    return r.high + (r.high * z * tail + r.low * (1.0 - 0.5 * z));
}

double CosOfRest(Sum2 r) {
    const double z = r.high * r.high, half = 0.5 * z, first = 1.0 - half;
    const double tail =
        1.0 / 24 +
        z * (-1.0 / 720 +
             z * (1.0 / 40320 +
                  z * (-1.0 / 3628800 + z * (1.0 / 479001600 + z * (-1.0 / 87178291200 +
                                                                    z * (1.0 / 20922789888000))))));
    return first + (((1.0 - first) - half) + (z * z * tail - r.high * r.low));
}

/// The sine of x + quarters * pi / 2.
double SinFrom(double x, std::int64_t quarters) {
    if (!(std::abs(x) <= kMostAngle))
        return kNaN;
    const double k = (x * (1.0 / kHalfPi) + kToWhole) - kToWhole;
    const Sum2 first = SumOf(x - k * kHalfPi1, -(k * kHalfPi2));
    const Sum2 r = SumOf(first.high, first.low - k * kHalfPi3);
    const std::int64_t quarter = static_cast<std::int64_t>(k) + quarters;
    const double value = (quarter & 1) != 0 ? CosOfRest(r) : SinOfRest(r);
    return (quarter & 2) != 0 ? -value : value;
}

}  // namespace

double Exp(double x) {
    if (x != x)
        return x;
    if (x > kMostPower)
        return kInfinity;
    return x < kLeastPower ? 0.0 : ExpOfSum(x, 0.0);
}

double Log(double x) {
    if (!(x > 0.0))
        return x == 0.0 ? -kInfinity : kNaN;
    if (x == kInfinity)
        return x;
    const Sum2 log = LogOf(x);
    return log.high + log.low;
}

double Pow(double x, double y) {
    if (y == 0.0 || x == 1.0)
        return 1.0;
    if (!(x >= 0.0) || y != y)
        return kNaN;
    if (x == 0.0 || x == kInfinity)
        return (x == 0.0) == (y > 0.0) ? 0.0 : kInfinity;
    if (std::abs(y) == kInfinity)
        return (x > 1.0) == (y > 0.0) ? kInfinity : 0.0;
    const Sum2 log = LogOf(x);
    const double about = y * log.high;
    if (about > kMostPower)
        return kInfinity;
    if (about < kLeastPower)
        return 0.0;
    const Sum2 power = ProductOf(y, log.high);
    return ExpOfSum(power.high, power.low + y * log.low);
}

double Sin(double x) {
    return x == 0.0 ? x : SinFrom(x, 0);
}

double Cos(double x) {
    return SinFrom(x, 1);
}

double Cbrt(double x) {
    const double size = std::abs(x);
    if (!(size > 0.0) || size == kInfinity)
        return x;
    // The cubes below stay inside the range.
    if (size < 0x1p-900)
        return Cbrt(x * 0x1p300) * 0x1p-100;
    if (size > 0x1p900)
        return Cbrt(x * 0x1p-300) * 0x1p100;
    // A third of the bits is a third of the exponent, within 5 %; Halley's step leaves 10^-4.
    const auto about =
        std::bit_cast<double>(std::bit_cast<std::uint64_t>(size) / 3 + 0x2A9F789300000000ULL);
    const double cube = about * about * about;
    // So few bits that its cube is exact, save the last two or three of them.
    const double root = Leading(about * ((cube + 2.0 * size) / (2.0 * cube + size)), 17);
    const double square = root * root;
    const double step = (size - square * root) / (3.0 * square), u = step / root;
    const double result = root + step * (1.0 - u * (1.0 - u * (5.0 / 3 - u * (10.0 / 3))));
    return x < 0.0 ? -result : result;
}

}  // namespace velloran
