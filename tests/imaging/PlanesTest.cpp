#include "imaging/Planes.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "imaging/CountLevels.h"
#include "imaging/SamplePlane.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using test::Content;
using test::ExpectSameSamples;
using test::MakeSamples;
using test::SamplePlane;

TEST(Planes, AChannelComesOutAndGoesBackAlone) {
    for (const int width : {1, 2, 17, 301})
        for (int channel = 0; channel < 3; ++channel) {
            const SamplePlane source = MakeSamples(width, 5, 3, Content::kNoise);
            SamplePlane plane(width, 5);
            ExtractChannel(source.View(), channel, plane.View());
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(plane.At(x, y), source.At(x, y, channel));
            EXPECT_TRUE(plane.PaddingIsUntouched());

            SamplePlane target = MakeSamples(width, 5, 3, Content::kSmooth);
            SamplePlane expected = target;
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < width; ++x)
                    expected.At(x, y, channel) = plane.At(x, y);
            InsertChannel(plane.View(), channel, target.View());
            ExpectSameSamples(target, expected);
        }
}

TEST(Planes, ThreeChannelsGoBackTogether) {
    for (const int width : {1, 2, 17, 301}) {
        const SamplePlane source = MakeSamples(width, 5, 3, Content::kNoise);
        std::array<SamplePlane, 3> planes{SamplePlane(width, 5), SamplePlane(width, 5),
                                          SamplePlane(width, 5)};
        for (int channel = 0; channel < 3; ++channel)
            ExtractChannel(source.View(), channel,
                           planes[static_cast<std::size_t>(channel)].View());
        SamplePlane target(width, 5, 3);
        MergeChannels({planes[0].View(), planes[1].View(), planes[2].View()}, target.View());
        ExpectSameSamples(target, source);
        EXPECT_TRUE(target.PaddingIsUntouched());
    }
}

TEST(Planes, GrayIsTheWeightedSumRoundedAndLimited) {
    const SamplePlane source = MakeSamples(301, 7, 3, Content::kNoise);
    for (const GrayWeights& weights : {GrayWeights{0.114F, 0.587F, 0.299F},
                                       GrayWeights{-1.0F, 2.0F, 0.0F}, GrayWeights{2, 2, 2}}) {
        SamplePlane gray(301, 7);
        WeightedGray(source.View(), weights, gray.View());
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 301; ++x) {
                const double sum = static_cast<double>(weights.blue) * source.At(x, y, 0) +
                                   static_cast<double>(weights.green) * source.At(x, y, 1) +
                                   static_cast<double>(weights.red) * source.At(x, y, 2);
                ASSERT_LE(std::abs(gray.At(x, y) - std::clamp(sum, 0.0, 255.0)), 0.5 + 1e-4);
            }
        EXPECT_TRUE(gray.PaddingIsUntouched());
    }
}

TEST(Planes, ThreadsDoNotChangeTheBytes) {
    const SamplePlane source = MakeSamples(401, 250, 3, Content::kNoise);
    std::vector<SamplePlane> planes, grays, colors;
    for (const int threads : {1, 2, 7}) {
        const test::Threads guard(threads);
        SamplePlane plane(401, 250), gray(401, 250),
            color = MakeSamples(401, 250, 3, Content::kSmooth);
        ExtractChannel(source.View(), 1, plane.View());
        WeightedGray(source.View(), {0.114F, 0.587F, 0.299F}, gray.View());
        InsertChannel(plane.View(), 2, color.View());
        planes.push_back(plane);
        grays.push_back(gray);
        colors.push_back(color);
    }
    for (const std::size_t i : {1, 2}) {
        ExpectSameSamples(planes[i], planes[0]);
        ExpectSameSamples(grays[i], grays[0]);
        ExpectSameSamples(colors[i], colors[0]);
    }
}

TEST(CountLevels, CountsEverySampleOfAChannel) {
    for (const int channels : {1, 3})
        for (const int width : {1, 2, 17, 501})
            for (const int threads : {1, 2, 7}) {
                const test::Threads guard(threads);
                const SamplePlane source = MakeSamples(width, 200, channels, Content::kNoise);
                for (int channel = 0; channel < channels; ++channel) {
                    LevelCounts expected{};
                    for (int y = 0; y < 200; ++y)
                        for (int x = 0; x < width; ++x)
                            ++expected[static_cast<std::size_t>(source.At(x, y, channel))];
                    EXPECT_EQ(CountLevels(source.View(), channel), expected);
                }
            }
    EXPECT_EQ(CountLevels(ConstPlaneView{}), LevelCounts{});
}

}  // namespace
}  // namespace velloran
