#include "imaging/Convolve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "imaging/BorderedCopy.h"
#include "imaging/PlainSums.h"
#include "imaging/SamplePlane.h"
#include "imaging/TapGroups.h"
#include "support/EachForm.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using test::Content;
using test::ExpectSameSamples;
using test::ForManyPlanes;
using test::kContents;
using test::MakeSamples;
using test::RoundedQuotient;
using test::SamplePlane;
using test::Weights;
/// Edge samples repeated.
SamplePlane Convolved(const SamplePlane& source, const Weights& weights, int size,
                      std::int32_t divisor) {
    SamplePlane result(source.Width(), source.Height(), source.Channels());
    for (int y = 0; y < source.Height(); ++y)
        for (int x = 0; x < source.Width(); ++x)
            for (int c = 0; c < source.Channels(); ++c) {
                std::int64_t sum = 0;
                for (int j = 0; j < size; ++j)
                    for (int i = 0; i < size; ++i)
                        sum += std::int64_t{weights[static_cast<std::size_t>(j * size + i)]} *
                               source.Nearest(x + i - size / 2, y + j - size / 2, c);
                result.At(x, y, c) = RoundedQuotient(sum, divisor);
            }
    return result;
}

struct IntCase {
    const char* name;
    int size;
    Weights weights;
    std::int32_t divisor;
};

const IntCase kIntCases[] = {
    {"one weight", 1, {3}, 2},
    {"mean", 3, {1, 1, 1, 1, 1, 1, 1, 1, 1}, 9},
    {"sharpening", 3, {-30, -100, -30, -100, 620, -100, -30, -100, -30}, 100},
    {"weights all different", 3, {1, -2, 3, -4, 50, -6, 7, -8, 9}, 50},
    {"zeros only", 3, {0, 0, 0, 0, 0, 0, 0, 0, 0}, 1},
    {"weights of more than 16 bits", 3, {0, 0, 0, 40000, 100000, -40000, 0, 0, 0}, 100000},
    {"the largest weights",
     3,
     {INT32_MAX, INT32_MIN, 0, INT32_MAX, INT32_MAX, 0, 0, INT32_MIN, 1},
     INT32_MAX},
    {"seven a side",
     7,
     {1,  2, 3, 4, 3, 2, 1,  2, 4, 6, 8, 6, 4, 2, 3, 6, 9, 12, 9, 6, 3, 4, 8, 12, 16,
      12, 8, 4, 3, 6, 9, 12, 9, 6, 3, 2, 4, 6, 8, 6, 4, 2, 1,  2, 3, 4, 3, 2, 1},
     256},
};

TEST(ConvolveInt, EqualsThePlainSumOnEveryPlane) {
    for (const IntCase& c : kIntCases) {
        SCOPED_TRACE(c.name);
        ForManyPlanes([&](const SamplePlane& source) {
            SamplePlane target(source.Width(), source.Height(), source.Channels());
            const BorderedCopy bordered(source.View(), c.size / 2);
            ConvolveInt(bordered.View(), c.weights, c.size, c.divisor, target.View());
            ExpectSameSamples(target, Convolved(source, c.weights, c.size, c.divisor));
        });
    }
}

TEST(ConvolveInt, TheKernelIsNotMirrored) {
    SamplePlane source = MakeSamples(5, 5, 1, Content::kNoise);
    SamplePlane target(5, 5);
    const BorderedCopy bordered(source.View(), 1);
    ConvolveInt(bordered.View(), Weights{0, 0, 1, 0, 0, 0, 0, 0, 0}, 3, 1, target.View());
    EXPECT_EQ(target.At(2, 2), source.At(3, 1));
}

TEST(ConvolveInt, HalvesGoUpAndSumsAreLimited) {
    SamplePlane source(4, 1), target(4, 1);
    const int samples[] = {0, 1, 3, 255};
    for (int x = 0; x < 4; ++x)
        source.At(x, 0) = static_cast<std::uint8_t>(samples[x]);
    const auto run = [&](std::int32_t weight, std::int32_t divisor) {
        ConvolveInt(source.View(), Weights{weight}, 1, divisor, target.View());
        return std::vector<int>{target.At(0, 0), target.At(1, 0), target.At(2, 0), target.At(3, 0)};
    };
    EXPECT_EQ(run(1, 2), (std::vector<int>{0, 1, 2, 128}));
    EXPECT_EQ(run(-1, 2), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(run(2, 1), (std::vector<int>{0, 2, 6, 255}));
    EXPECT_EQ(run(1, 3), (std::vector<int>{0, 0, 1, 85}));
}

TEST(ConvolveInt, QuotientsAreExactAtEveryStepOfEveryDivisor) {
    // Sums just below, at and just above each half, up to the largest that the quick way takes.
    for (const std::int32_t divisor : {1, 2, 3, 7, 34, 100, 997, 1999, 2047, 4111, 8191}) {
        const Weights weights = {1, 0, 0, 0, divisor, 0, 0, 0, 0};
        const int size = 256;
        SamplePlane source(size, size);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
                source.At(x, y) = static_cast<std::uint8_t>((y * 7 + x * (1 + y % 5)) & 255);
        SamplePlane target(size, size);
        const BorderedCopy bordered(source.View(), 1);
        ConvolveInt(bordered.View(), weights, 3, divisor, target.View());
        ExpectSameSamples(target, Convolved(source, weights, 3, divisor));
    }
}

/// Every sum from none to `most`, made of two samples and a weight each.
TEST(TapGroups, EveryFormDividesEverySumExactly) {
    const std::vector<Tap> taps = {{0, 1}, {kSumBlock, 250}};
    for (const std::int32_t divisor : {1, 3, 126, 250, 251, 60000, 1000000})
        test::InEachForm([&](const std::string&) {
            ASSERT_TRUE(TapGroups::CanHold(taps, divisor));
            const TapGroups groups(taps, divisor);
            for (int high = 0; high < 256; ++high)
                for (int low = 0; low < 256; low += kSumBlock) {
                    std::uint16_t samples[2 * kSumBlock];
                    for (int i = 0; i < kSumBlock; ++i) {
                        samples[i] = static_cast<std::uint16_t>(low + i);
                        samples[kSumBlock + i] = static_cast<std::uint16_t>(high);
                    }
                    std::uint8_t out[kSumBlock];
                    SumTaps(groups, samples, kSumBlock, out);
                    for (int i = 0; i < kSumBlock; ++i)
                        ASSERT_EQ(out[i], RoundedQuotient(250 * high + low + i, divisor))
                            << divisor;
                }
        });
}

TEST(TapGroups, EveryFormGivesThePlainSum) {
    std::mt19937 random(7);
    for (int tapCount = 0; tapCount < 40; ++tapCount) {
        std::vector<Tap> taps;
        std::vector<std::uint16_t> samples(300);
        for (std::uint16_t& sample : samples)
            sample = static_cast<std::uint16_t>(random() & 255);
        for (int k = 0; k < tapCount; ++k)
            taps.push_back({static_cast<std::int32_t>(random() % 100),
                            static_cast<std::int32_t>(random() % 9) * 17 - 60});
        const std::int32_t divisor = 1 + static_cast<std::int32_t>(random() % 300);
        ASSERT_TRUE(TapGroups::CanHold(taps, divisor));
        const TapGroups groups(taps, divisor);
        test::InEachForm([&](const std::string&) {
            for (const int count : {1, 31, 63, 64, 65, 128}) {
                std::vector<std::uint8_t> out(static_cast<std::size_t>(count) + 1, 77);
                SumTaps(groups, samples.data(), count, out.data());
                EXPECT_EQ(out.back(), 77);
                for (int i = 0; i < count; ++i) {
                    std::int64_t sum = 0;
                    for (const Tap& tap : taps)
                        sum += tap.weight * samples[static_cast<std::size_t>(i + tap.offset)];
                    ASSERT_EQ(out[static_cast<std::size_t>(i)], RoundedQuotient(sum, divisor));
                }
            }
        });
    }
}

TEST(TapGroups, RefusesWhatItsArithmeticCannotHold) {
    EXPECT_TRUE(TapGroups::CanHold(std::vector<Tap>{{0, 8000}}, 1));
    EXPECT_FALSE(TapGroups::CanHold(std::vector<Tap>{{0, 8225}}, 1));  // 255 times it is 2^21
    EXPECT_FALSE(TapGroups::CanHold(std::vector<Tap>{{0, -40000}}, 1));
    EXPECT_FALSE(TapGroups::CanHold(std::vector<Tap>{{0, 1}}, 1 << 21));
    EXPECT_FALSE(TapGroups::CanHold(std::vector<Tap>{{0, 1}}, 0));
}

TEST(ConvolveFloat, WholeWeightsGiveThePlainSum) {
    const Weights weights = {0,  -1, -2, -1, 0,  -1, -3, -4, -3, -1, -2, -4, 45,
                             -4, -2, -1, -3, -4, -3, -1, 0,  -1, -2, -1, 0};
    const std::vector<float> floats(weights.begin(), weights.end());
    ForManyPlanes([&](const SamplePlane& source) {
        SamplePlane target(source.Width(), source.Height(), source.Channels());
        const BorderedCopy bordered(source.View(), 2);
        ConvolveFloat(bordered.View(), floats, 5, target.View());
        ExpectSameSamples(target, Convolved(source, weights, 5, 1));
    });
}

TEST(ConvolveFloat, FractionsAreSummedInFloatsAndRounded) {
    const std::vector<float> weights = {0.1F, -0.37F, 0.2F, 0.05F, 1.3F, 0.01F, -0.4F, 0.25F, 0.0F};
    ForManyPlanes([&](const SamplePlane& source) {
        SamplePlane expected(source.Width(), source.Height(), source.Channels());
        for (int y = 0; y < source.Height(); ++y)
            for (int x = 0; x < source.Width(); ++x)
                for (int c = 0; c < source.Channels(); ++c) {
                    float sum = 0;
                    for (int k = 0; k < 9; ++k)
                        sum += weights[static_cast<std::size_t>(k)] *
                               static_cast<float>(source.Nearest(x + k % 3 - 1, y + k / 3 - 1, c));
                    expected.At(x, y, c) =
                        static_cast<std::uint8_t>(std::clamp(std::floor(sum + 0.5F), 0.0F, 255.0F));
                }
        SamplePlane target(source.Width(), source.Height(), source.Channels());
        const BorderedCopy bordered(source.View(), 1);
        ConvolveFloat(bordered.View(), weights, 3, target.View());
        ExpectSameSamples(target, expected);
    });
}

TEST(Convolutions, ThreadsDoNotChangeTheBytes) {
    const SamplePlane source = MakeSamples(701, 90, 3, Content::kNoise);
    const BorderedCopy bordered(source.View(), 1);
    const std::vector<float> fractions = {0.1F, 0.2F, 0.1F, -0.2F, 1.0F, 0.1F, 0.1F, 0.3F, 0.1F};
    std::vector<SamplePlane> results;
    for (const int threads : {1, 2, 7}) {
        const test::Threads guard(threads);
        SamplePlane all(701, 90 * 2, 3);
        PlaneView target = all.View();
        target.height = 90;
        ConvolveInt(bordered.View(), Weights{1, 2, 1, 2, 4, 2, 1, 2, 1}, 3, 16, target);
        target.first += 90 * target.stride;
        ConvolveFloat(bordered.View(), fractions, 3, target);
        results.push_back(all);
    }
    ExpectSameSamples(results[1], results[0]);
    ExpectSameSamples(results[2], results[0]);
}

}  // namespace
}  // namespace velloran
