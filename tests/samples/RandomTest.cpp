#include "samples/Random.h"

#include <gtest/gtest.h>

#include "samples/Grain.h"

namespace velloran::samples {
namespace {

TEST(SampleRandom, IsThePublishedSplitmixSequence) {
    // The first three outputs of splitmix64 from state 0.
    constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15U;
    EXPECT_EQ(MixBits(0), 0xE220A8397B1DCDAFU);
    EXPECT_EQ(MixBits(kStep), 0x6E789E6AA1B965F4U);
    EXPECT_EQ(MixBits(2 * kStep), 0x06C45D188009454FU);
}

TEST(SampleRandom, UnitValuesFillTheirRangeEvenly) {
    Random random(5);
    int inBin[10] = {};
    for (int i = 0; i < 10000; ++i) {
        const double value = random.Unit();
        ASSERT_GE(value, 0);
        ASSERT_LT(value, 1);
        ++inBin[static_cast<int>(value * 10)];
    }
    for (const int count : inBin)
        EXPECT_NEAR(count, 1000, 150);  // five standard deviations
}

TEST(SampleRandom, NoiseHasMeanZeroAndDeviationOne) {
    double sum = 0, squares = 0;
    constexpr int kSide = 200;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const double value = NoiseAt(3, x, y);
            sum += value;
            squares += value * value;
        }
    EXPECT_NEAR(sum / (kSide * kSide), 0, 0.025);
    EXPECT_NEAR(squares / (kSide * kSide), 1, 0.03);
}

}  // namespace
}  // namespace velloran::samples
