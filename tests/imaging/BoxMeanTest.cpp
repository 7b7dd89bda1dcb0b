#include "imaging/BoxMean.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "support/Threads.h"

namespace velloran {
namespace {

FloatPlane Noise(int width, int height, int channels) {
    FloatPlane plane(width, height, channels);
    std::mt19937 random(3);
    for (int y = 0; y < height; ++y)
        for (float& sample : plane.View().Row(y))
            sample = static_cast<float>(random() % 10000) / 39.0F - 20.0F;
    return plane;
}

double PlainMean(ConstFloatView source, int x, int y, int channel, int radius) {
    double sum = 0;
    for (int j = y - radius; j <= y + radius; ++j)
        for (int i = x - radius; i <= x + radius; ++i) {
            const int row = std::clamp(j, 0, source.height - 1);
            const int column = std::clamp(i, 0, source.width - 1);
            sum += static_cast<double>(
                source.Row(row)[static_cast<std::size_t>(column * source.channels + channel)]);
        }
    return sum / ((2.0 * radius + 1) * (2.0 * radius + 1));
}

void ExpectMeans(const FloatPlane& source, ConstFloatView means, int radius) {
    for (int y = 0; y < means.height; ++y)
        for (int x = 0; x < means.width; ++x)
            for (int c = 0; c < means.channels; ++c)
                ASSERT_NEAR(means.Row(y)[static_cast<std::size_t>(x * means.channels + c)],
                            PlainMean(source.View(), x, y, c, radius), 1e-3)
                    << means.width << " x " << means.height << " radius " << radius;
}

TEST(BoxMean, EqualsThePlainMeanWithRepeatedEdges) {
    for (const int channels : {1, 3})
        for (const int width : {1, 2, 5, 17, 40})
            for (const int height : {1, 3, 16, 300})
                for (const int radius : {0, 1, 2, 7, 20}) {
                    if (height == 300 && (radius > 7 || width > 5))
                        continue;
                    const FloatPlane source = Noise(width, height, channels);
                    FloatPlane target(width, height, channels);
                    BoxMean(source.View(), radius, target.View());
                    ExpectMeans(source, target.View(), radius);
                }
}

TEST(BoxMean, WorksInPlace) {
    const FloatPlane source = Noise(30, 20, 3);
    FloatPlane both = Noise(30, 20, 3);
    BoxMean(both.View(), 4, both.View());
    ExpectMeans(source, both.View(), 4);
}

TEST(BoxMean, TheLargestRadiusGivesTheMeanOfTheCorners) {
    const FloatPlane source = Noise(7, 5, 1);
    FloatPlane target(7, 5, 1);
    BoxMean(source.View(), 2000000000, target.View());
    const ConstFloatView view = source.View();
    const double corners =
        (static_cast<double>(view.Row(0)[0]) + view.Row(0)[6] + view.Row(4)[0] + view.Row(4)[6]) /
        4;
    for (int y = 0; y < 5; ++y)
        for (const float mean : target.View().Row(y))
            EXPECT_NEAR(mean, corners, 1e-3);
}

TEST(BoxMean, TheLargestRadiusOverOneSampleGivesTheSample) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 2}, {2, 1}}) {
        FloatPlane source(width, height, 1), target(width, height, 1);
        for (int y = 0; y < height; ++y)
            for (float& sample : source.View().Row(y))
                sample = 200.0F;
        BoxMean(source.View(), std::numeric_limits<int>::max(), target.View());
        for (int y = 0; y < height; ++y)
            for (const float mean : target.View().Row(y))
                EXPECT_NEAR(mean, 200.0F, 1e-3F);
    }
}

TEST(BoxMean, ThreadsDoNotChangeTheBytes) {
    const FloatPlane source = Noise(300, 400, 1);
    FloatPlane one(300, 400, 1);
    {
        const test::Threads guard(1);
        BoxMean(source.View(), 9, one.View());
    }
    for (const int threads : {2, 7}) {
        const test::Threads guard(threads);
        FloatPlane several(300, 400, 1);
        BoxMean(source.View(), 9, several.View());
        for (int y = 0; y < 400; ++y)
            ASSERT_TRUE(std::equal(several.View().Row(y).begin(), several.View().Row(y).end(),
                                   one.View().Row(y).begin()));
    }
}

}  // namespace
}  // namespace velloran
