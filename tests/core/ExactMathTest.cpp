#include "core/ExactMath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace velloran {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// How far a result is from the true value, in units of the last place of the true value.
template <typename Float>
double UnitsApart(Float result, long double truth) {
    const auto nearest = static_cast<Float>(truth);
    const Float next = std::nextafter(std::abs(nearest), std::numeric_limits<Float>::infinity());
    const long double unit = static_cast<long double>(next) - std::abs(nearest);
    return static_cast<double>(std::abs(static_cast<long double>(result) - truth) / unit);
}

struct Function {
    const char* name;
    double (*exact)(double);
    long double (*truth)(long double);
    double from, to;
    double units;  // the most that it may be off
};

const Function kFunctions[] = {
    {"ExpSmall", Exp, std::exp, -1e-3, 1e-3, 0.52},
    {"ExpOfWeights", Exp, std::exp, -40, 2, 0.52},
    {"ExpWhole", Exp, std::exp, -708, 709, 0.52},
    {"LogNearOne", Log, std::log, 0.98, 1.02, 0.52},
    {"LogAroundOne", Log, std::log, 0.3, 3, 0.52},
    {"LogOfLevels", Log, std::log, 1, 70000, 0.52},
    {"LogTiny", Log, std::log, 1e-300, 1e-290, 0.52},
    {"CbrtOfShares", Cbrt, std::cbrt, 0.008, 1.1, 0.52},
    {"CbrtWide", Cbrt, std::cbrt, -3e5, 7e5, 0.52},
    {"SinOfLobes", Sin, std::sin, -10, 10, 0.8},
    {"SinFar", Sin, std::sin, -1e6, 1e6, 0.8},
    {"CosOfLobes", Cos, std::cos, -10, 10, 0.8},
    {"CosFar", Cos, std::cos, -1e6, 1e6, 0.8},
};

TEST(ExactMath, IsWithinItsBoundOfTheTrueValues) {
    std::mt19937_64 random(7);
    for (const Function& f : kFunctions) {
        SCOPED_TRACE(f.name);
        std::uniform_real_distribution<double> between(f.from, f.to);
        double worst = 0, worstAt = 0;
        for (int i = 0; i < 200000; ++i) {
            const double x = i < 1000 ? f.from + (f.to - f.from) * i / 999 : between(random);
            const double apart = UnitsApart(f.exact(x), f.truth(static_cast<long double>(x)));
            if (apart > worst) {
                worst = apart;
                worstAt = x;
            }
        }
        EXPECT_LT(worst, f.units) << "at " << worstAt;
    }
}

TEST(ExactMath, PowersAreWithinTheirBound) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> base(0, 300), small(0, 1.2), exponent(-5, 12);
    double worst = 0;
    for (int i = 0; i < 300000; ++i) {
        const double x = i % 2 == 0 ? base(random) : small(random), y = exponent(random);
        worst = std::max(worst, UnitsApart(Pow(x, y), std::pow(static_cast<long double>(x),
                                                               static_cast<long double>(y))));
    }
    EXPECT_LT(worst, 0.52);
}

TEST(ExactMath, FloatsAreTheNearestNearlyAlways) {
    std::mt19937_64 random(13);
    std::uniform_real_distribution<float> power(-80, 80), level(1, 66000);
    double worstExp = 0, worstLog = 0, worstPositive = 0;
    for (int i = 0; i < 300000; ++i) {
        const float x = power(random), y = level(random);
        worstExp = std::max(worstExp, UnitsApart(Exp(x), std::exp(static_cast<long double>(x))));
        worstLog = std::max(worstLog, UnitsApart(Log(y), std::log(static_cast<long double>(y))));
        for (const float z : {y, Exp(x), 1.0F + 1e-3F * static_cast<float>(i) / 300000})
            worstPositive = std::max(
                worstPositive, UnitsApart(LogOfPositive(z), std::log(static_cast<long double>(z))));
    }
    EXPECT_LT(worstExp, 0.501);
    EXPECT_LT(worstLog, 0.501);
    EXPECT_LT(worstPositive, 0.51);
}

TEST(ExactMath, TheEndsOfTheRangeAreThoseOfTheLibrary) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(Exp(0.0), 1.0);
    EXPECT_EQ(Exp(710.0), kInfinity);
    EXPECT_EQ(Exp(kInfinity), kInfinity);
    EXPECT_EQ(Exp(-kInfinity), 0.0);
    EXPECT_EQ(Exp(-746.0), 0.0);
    EXPECT_NEAR(Exp(-740.0) / std::exp(-740.0), 1.0, 1e-3);
    EXPECT_TRUE(std::isnan(Exp(nan)));
    EXPECT_EQ(Log(1.0), 0.0);
    EXPECT_EQ(Log(0.0), -kInfinity);
    EXPECT_EQ(Log(kInfinity), kInfinity);
    EXPECT_TRUE(std::isnan(Log(-1.0)));
    EXPECT_TRUE(std::isnan(Log(nan)));
    for (const double x : {5e-324, 1e-310, 1.7e308})
        EXPECT_LT(UnitsApart(Log(x), std::log(static_cast<long double>(x))), 0.52);
    EXPECT_EQ(LogOfPositive(1.0F), 0.0F);
    EXPECT_EQ(Sin(0.0), 0.0);
    EXPECT_EQ(Cos(0.0), 1.0);
    EXPECT_TRUE(std::isnan(Sin(2e6)));
    EXPECT_TRUE(std::isnan(Cos(kInfinity)));
    EXPECT_EQ(Cbrt(0.0), 0.0);
    EXPECT_EQ(Cbrt(-27.0), -3.0);
    EXPECT_EQ(Cbrt(kInfinity), kInfinity);
    for (const double x : {5e-324, 1e-310, 1e-280, -1e280, 1.7e308})
        EXPECT_LT(UnitsApart(Cbrt(x), std::cbrt(static_cast<long double>(x))), 0.52);
}

TEST(ExactMath, SpecialPowersAreThoseOfTheLibrary) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double x : {0.0, 0.5, 1.0, 2.0, 255.0, 1e-310, 1e300, kInfinity, nan})
        for (const double y :
             {-kInfinity, -1e20, -3.0, -0.0, 0.0, 1.0, 1e-20, 2.0, 1e20, kInfinity, nan}) {
            const double expected = std::pow(x, y), result = Pow(x, y);
            if (std::isnan(expected))
                EXPECT_TRUE(std::isnan(result)) << x << "^" << y;
            else
                EXPECT_EQ(result, expected) << x << "^" << y;
        }
    EXPECT_TRUE(std::isnan(Pow(-2.0, 2.0)));
}

}  // namespace
}  // namespace velloran
