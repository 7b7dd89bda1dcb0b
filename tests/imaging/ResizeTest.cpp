#include "imaging/Resize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "imaging/ResampleAxis.h"
#include "imaging/SamplePlane.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using test::Content;
using test::ExpectSameSamples;
using test::kContents;
using test::MakeSamples;
using test::SamplePlane;

/// Weight of source sample k in target sample i, in doubles; not yet normalised.
using WeightOf = double (*)(int i, int k, int sourceSize, int targetSize);

double Center(int i, int sourceSize, int targetSize) {
    return (i + 0.5) * sourceSize / targetSize - 0.5;
}

double Sinc(double x) {
    return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

double LanczosWeight(int i, int k, int sourceSize, int targetSize) {
    const double x = Center(i, sourceSize, targetSize) - k;
    return std::abs(x) < 3 ? Sinc(x) * Sinc(x / 3) : 0;
}

double LinearWeight(int i, int k, int sourceSize, int targetSize) {
    return std::max(0.0, 1 - std::abs(Center(i, sourceSize, targetSize) - k));
}

/// The part of source sample k that lies in the area of target sample i.
double AreaWeight(int i, int k, int sourceSize, int targetSize) {
    const double scale = static_cast<double>(sourceSize) / targetSize;
    return std::max(0.0, std::min((i + 1) * scale, k + 1.0) - std::max(i * scale, k * 1.0));
}

/// Weights of the inside samples, those beyond the ends added to the end samples.
std::vector<double> Weights(WeightOf weightOf, int i, int sourceSize, int targetSize) {
    std::vector<double> weights(static_cast<std::size_t>(sourceSize));
    double sum = 0;
    for (int k = -4; k < sourceSize + 4; ++k) {
        const double weight = weightOf(i, k, sourceSize, targetSize);
        weights[static_cast<std::size_t>(std::clamp(k, 0, sourceSize - 1))] += weight;
        sum += weight;
    }
    for (double& weight : weights)
        weight /= sum;
    return weights;
}

/// Sums in doubles, before rounding.
std::vector<double> Resampled(const SamplePlane& source, int width, int height, WeightOf weightOf) {
    const int channels = source.Channels();
    std::vector<double> across(static_cast<std::size_t>(width) * source.Height() * channels);
    std::vector<double> result(static_cast<std::size_t>(width) * height * channels);
    for (int x = 0; x < width; ++x) {
        const std::vector<double> weights = Weights(weightOf, x, source.Width(), width);
        for (int y = 0; y < source.Height(); ++y)
            for (int c = 0; c < channels; ++c)
                for (int k = 0; k < source.Width(); ++k)
                    across[static_cast<std::size_t>((y * width + x) * channels + c)] +=
                        weights[static_cast<std::size_t>(k)] * source.At(k, y, c);
    }
    for (int y = 0; y < height; ++y) {
        const std::vector<double> weights = Weights(weightOf, y, source.Height(), height);
        for (int i = 0; i < width * channels; ++i)
            for (int k = 0; k < source.Height(); ++k)
                result[static_cast<std::size_t>(y * width * channels + i)] +=
                    weights[static_cast<std::size_t>(k)] *
                    across[static_cast<std::size_t>(k * width * channels + i)];
    }
    return result;
}

/// The rounding of the sum, or of one that floats cannot tell from it.
void ExpectRounded(const SamplePlane& actual, const std::vector<double>& sums) {
    std::size_t at = 0;
    for (int y = 0; y < actual.Height(); ++y)
        for (int x = 0; x < actual.Width(); ++x)
            for (int c = 0; c < actual.Channels(); ++c, ++at) {
                const double limited = std::clamp(sums[at], 0.0, 255.0);
                ASSERT_LE(std::abs(actual.At(x, y, c) - limited), 0.5 + 1e-3)
                    << actual.Width() << " x " << actual.Height() << " at " << x << ", " << y;
            }
    EXPECT_TRUE(actual.PaddingIsUntouched());
}

using Resize = void (*)(ConstPlaneView, PlaneView);

void ExpectResampled(Resize resize, WeightOf weightOf, const SamplePlane& source, int width,
                     int height) {
    SamplePlane target(width, height, source.Channels());
    resize(source.View(), target.View());
    ExpectRounded(target, Resampled(source, width, height, weightOf));
}

void ExpectResampledToManySizes(Resize resize, WeightOf weightOf, bool mayEnlarge) {
    for (const int channels : {1, 3})
        for (const Content content : kContents)
            for (const auto& [width, height] :
                 {std::pair{1, 1}, {1, 7}, {7, 1}, {2, 3}, {5, 5}, {6, 4}, {17, 16}, {60, 41}}) {
                const SamplePlane source = MakeSamples(width, height, channels, content);
                for (const double scale : {0.05, 0.33, 0.5, 0.63, 0.97, 1.0, 1.5, 2.0, 3.7}) {
                    if (scale > 1 && !mayEnlarge)
                        continue;
                    const auto sized = [scale = scale](int size) {
                        return std::max(1, static_cast<int>(size * scale));
                    };
                    ExpectResampled(resize, weightOf, source, sized(width), sized(height));
                    if (mayEnlarge)
                        ExpectResampled(resize, weightOf, source, sized(width),
                                        sized(2 * height / 3));
                }
            }
}

TEST(ResizeLanczos, EqualsThePlainSumOfSixTapsEachWay) {
    ExpectResampledToManySizes(ResizeLanczos, LanczosWeight, /*mayEnlarge=*/true);
}

TEST(ResizeLinear, EqualsThePlainSumOfTwoTapsEachWay) {
    ExpectResampledToManySizes(ResizeLinear, LinearWeight, /*mayEnlarge=*/true);
}

TEST(ResizeArea, EqualsThePlainMeanOfTheCoveredArea) {
    ExpectResampledToManySizes(ResizeArea, AreaWeight, /*mayEnlarge=*/false);
}

TEST(Resizing, EverySizeUpToSeventeenIsThePlainSum) {
    int number = 0;
    for (int height = 1; height <= 17; ++height)
        for (int width = 1; width <= 17; ++width, ++number) {
            const SamplePlane source =
                MakeSamples(width, height, number % 2 == 0 ? 1 : 3, kContents[number % 3]);
            const int wider = width + 1 + number % 9, lower = std::max(1, height * 3 / 4);
            ExpectResampled(ResizeLanczos, LanczosWeight, source, wider, height + 3);
            ExpectResampled(ResizeLanczos, LanczosWeight, source, wider, lower);
            ExpectResampled(ResizeLinear, LinearWeight, source, wider, lower);
            ExpectResampled(ResizeArea, AreaWeight, source, std::max(1, width * 2 / 3), lower);
        }
}

TEST(ResizeArea, HalvingRoundsTheMeanOfFourHalfUp) {
    for (const int channels : {1, 3})
        for (const auto& [width, height] : {std::pair{1, 1}, {2, 3}, {17, 5}, {333, 120}}) {
            const SamplePlane source =
                MakeSamples(2 * width, 2 * height, channels, Content::kNoise);
            SamplePlane target(width, height, channels), expected(width, height, channels);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < channels; ++c)
                        expected.At(x, y, c) = static_cast<std::uint8_t>(
                            (source.At(2 * x, 2 * y, c) + source.At(2 * x + 1, 2 * y, c) +
                             source.At(2 * x, 2 * y + 1, c) + source.At(2 * x + 1, 2 * y + 1, c) +
                             2) /
                            4);
            ResizeArea(source.View(), target.View());
            ExpectSameSamples(target, expected);
        }
}

TEST(Resizing, TheEqualSizeKeepsEverySample) {
    const SamplePlane source = MakeSamples(37, 23, 3, Content::kNoise);
    for (const Resize resize : {Resize(ResizeLanczos), Resize(ResizeArea), Resize(ResizeLinear)}) {
        SamplePlane target(37, 23, 3);
        resize(source.View(), target.View());
        ExpectSameSamples(target, source);
    }
}

TEST(Resizing, EvenTonesStayAtEverySize) {
    SamplePlane source(13, 11, 3);
    for (const int tone : {0, 1, 127, 255}) {
        for (int y = 0; y < 11; ++y)
            for (int x = 0; x < 13; ++x)
                for (int c = 0; c < 3; ++c)
                    source.At(x, y, c) = static_cast<std::uint8_t>(tone);
        for (int width = 1; width < 30; ++width) {
            SamplePlane target(width, 17, 3);
            ResizeLanczos(source.View(), target.View());
            for (int y = 0; y < 17; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(target.At(x, y, 1), tone);
        }
    }
}

TEST(Resizing, NothingToReadOrWriteIsLeftAlone) {
    SamplePlane some = MakeSamples(5, 5, 1, Content::kNoise);
    const SamplePlane before = some;
    for (const Resize resize : {Resize(ResizeLanczos), Resize(ResizeArea), Resize(ResizeLinear)}) {
        resize(ConstPlaneView{}, some.View());
        resize(before.View(), PlaneView{});
    }
    ExpectSameSamples(some, before);
}

TEST(Resizing, FloatPlanesAreNotRounded) {
    FloatPlane source(6, 4), target(3, 2), larger(12, 8);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 6; ++x)
            source.View().Row(y)[static_cast<std::size_t>(x)] =
                0.25F * static_cast<float>(x) - static_cast<float>(y);
    ResizeArea(ConstFloatView(source.View()), target.View());
    EXPECT_FLOAT_EQ(target.View().Row(0)[0], 0.125F - 0.5F);
    EXPECT_FLOAT_EQ(target.View().Row(1)[2], 1.125F - 2.5F);
    ResizeLinear(ConstFloatView(source.View()), larger.View());
    EXPECT_FLOAT_EQ(larger.View().Row(0)[0], 0.0F);
    EXPECT_FLOAT_EQ(larger.View().Row(1)[1], 0.25F * 0.25F - 0.25F);
    EXPECT_FLOAT_EQ(larger.View().Row(7)[11], 1.25F - 3.0F);
}

TEST(Resizing, PlanesOfMoreThan32767PixelsAreWhole) {
    const SamplePlane wide = MakeSamples(40001, 2, 3, Content::kSmooth);
    SamplePlane target(20000, 1, 3), larger(50001, 3, 3);
    ResizeArea(wide.View(), target.View());
    ResizeLanczos(wide.View(), larger.View());
    // The last samples lie over the last of the source.
    for (int c = 0; c < 3; ++c) {
        const int mean = (wide.At(40000, 0, c) + wide.At(40000, 1, c)) / 2;
        EXPECT_NEAR(target.At(19999, 0, c), mean, 20);
        EXPECT_NEAR(larger.At(50000, 1, c), mean, 20);
    }
}

TEST(Resizing, ThreadsDoNotChangeTheBytes) {
    const SamplePlane source = MakeSamples(401, 300, 3, Content::kNoise);
    for (const Resize resize : {Resize(ResizeLanczos), Resize(ResizeArea), Resize(ResizeLinear)}) {
        SamplePlane one(250, 181, 3);
        {
            const test::Threads guard(1);
            resize(source.View(), one.View());
        }
        for (const int threads : {2, 7}) {
            const test::Threads guard(threads);
            SamplePlane several(250, 181, 3);
            resize(source.View(), several.View());
            ExpectSameSamples(several, one);
        }
    }
}

TEST(ResampleAxis, WeightsAddUpToOneAndStayInside) {
    for (const auto axisOf : {LanczosAxis, AreaAxis, LinearAxis})
        for (int sourceSize = 1; sourceSize < 20; ++sourceSize)
            for (int targetSize = 1; targetSize < 40; ++targetSize) {
                const ResampleAxis axis = axisOf(sourceSize, targetSize);
                ASSERT_EQ(axis.first.size(), static_cast<std::size_t>(targetSize));
                for (int i = 0; i < targetSize; ++i) {
                    const int first = axis.first[static_cast<std::size_t>(i)];
                    ASSERT_GE(first, 0);
                    ASSERT_LE(first + axis.taps, sourceSize);
                    double sum = 0;
                    for (int k = 0; k < axis.taps; ++k)
                        sum += static_cast<double>(axis.WeightsOf(i)[k]);
                    ASSERT_NEAR(sum, 1, 1e-6);
                }
            }
}

}  // namespace
}  // namespace velloran
