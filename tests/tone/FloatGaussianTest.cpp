#include "tone/FloatGaussian.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "support/Threads.h"

namespace velloran {
namespace {

FloatPlane Random(int width, int height, int channels) {
    FloatPlane plane(width, height, channels);
    std::uint32_t state = 12345;
    for (int y = 0; y < height; ++y)
        for (float& sample : plane.View().Row(y)) {
            state = state * 1664525U + 1013904223U;
            sample = 1.0F + static_cast<float>(state >> 24);
        }
    return plane;
}

FloatPlane Blurred(const FloatPlane& source, float sigma) {
    const ConstFloatView view = source.View();
    FloatPlane target(view.width, view.height, view.channels);
    FloatGaussian(view, sigma, target.View());
    return target;
}

/// One line by the exponential itself, edges replicated.
std::vector<double> PlainLine(const std::vector<double>& line, double sigma) {
    const int reach = static_cast<int>(std::ceil(6 * sigma));
    std::vector<double> out;
    for (int i = 0; i < static_cast<int>(line.size()); ++i) {
        double sum = 0, weights = 0;
        for (int k = -reach; k <= reach; ++k) {
            const double weight = std::exp(-0.5 * k * k / (sigma * sigma));
            const int at = std::clamp(i + k, 0, static_cast<int>(line.size()) - 1);
            sum += weight * line[static_cast<std::size_t>(at)];
            weights += weight;
        }
        out.push_back(sum / weights);
    }
    return out;
}

TEST(FloatGaussian, IsTheGaussianToAThousandth) {
    for (const int channels : {1, 3})
        for (const float sigma : {1.0F, 2.0F, 9.5F, 40.0F}) {
            const int width = 60, height = 45;
            const FloatPlane source = Random(width, height, channels);
            const FloatPlane blurred = Blurred(source, sigma);
            std::vector<std::vector<double>> rows;  // by row, then sample
            for (int y = 0; y < height; ++y) {
                rows.emplace_back(static_cast<std::size_t>(width * channels));
                for (int c = 0; c < channels; ++c) {
                    std::vector<double> line;
                    for (int x = 0; x < width; ++x)
                        line.push_back(static_cast<double>(
                            source.View().Row(y)[static_cast<std::size_t>(x * channels + c)]));
                    line = PlainLine(line, static_cast<double>(sigma));
                    for (int x = 0; x < width; ++x)
                        rows.back()[static_cast<std::size_t>(x * channels + c)] =
                            line[static_cast<std::size_t>(x)];
                }
            }
            for (int i = 0; i < width * channels; ++i) {
                std::vector<double> column;
                for (int y = 0; y < height; ++y)
                    column.push_back(
                        rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(i)]);
                column = PlainLine(column, static_cast<double>(sigma));
                for (int y = 0; y < height; ++y)
                    ASSERT_NEAR(
                        static_cast<double>(blurred.View().Row(y)[static_cast<std::size_t>(i)]),
                        column[static_cast<std::size_t>(y)], 0.26)
                        << "sigma " << sigma << " at " << i << ", " << y;
            }
        }
}

TEST(FloatGaussian, KeepsAFlatPlane) {
    for (const float sigma : {0.05F, 0.7F, 2.0F, 72.0F, 142.0F, 5000.0F})
        for (const float level : {1.0F, 100.0F, 256.0F}) {
            FloatPlane source(50, 33, 3);
            for (int y = 0; y < 33; ++y)
                std::ranges::fill(source.View().Row(y), level);
            const FloatPlane blurred = Blurred(source, sigma);
            for (int y = 0; y < 33; ++y)
                for (const float sample : blurred.View().Row(y))
                    ASSERT_NEAR(sample, level, level * 2e-4F) << sigma;
        }
}

TEST(FloatGaussian, SpreadsAPointAlikeInAllDirections) {
    FloatPlane source(201, 201);
    for (int y = 0; y < 201; ++y)
        std::ranges::fill(source.View().Row(y), 0.0F);
    source.View().Row(100)[100] = 1.0F;
    const FloatPlane blurred = Blurred(source, 20.0F);
    const double peak = 1 / (2 * 3.14159265358979 * 400);
    const auto at = [&](int x, int y) {
        return static_cast<double>(blurred.View().Row(y)[static_cast<std::size_t>(x)]);
    };
    EXPECT_NEAR(at(100, 100), peak, peak * 0.002);
    for (const int d : {5, 20, 40}) {
        const double expected = peak * std::exp(-d * d / 800.0);
        for (const double value :
             {at(100 - d, 100), at(100 + d, 100), at(100, 100 - d), at(100, 100 + d)})
            EXPECT_NEAR(value, expected, peak * 0.002) << d;
    }
}

TEST(FloatGaussian, ASigmaOfNothingCopiesAndThePlaneMayBeItsOwnTarget) {
    FloatPlane plane = Random(20, 10, 1);
    const FloatPlane copy = Blurred(plane, 0.0F);
    const FloatPlane blurred = Blurred(plane, 3.0F);
    for (int y = 0; y < 10; ++y)
        EXPECT_TRUE(std::ranges::equal(plane.View().Row(y), copy.View().Row(y)));
    FloatGaussian(plane.View(), 3.0F, plane.View());
    for (int y = 0; y < 10; ++y)
        EXPECT_TRUE(std::ranges::equal(plane.View().Row(y), blurred.View().Row(y)));
}

TEST(FloatGaussian, EverySizeIsTakenAndThreadsChangeNothing) {
    for (const int channels : {1, 3})
        for (int width = 1; width <= 70; width += 3)
            for (const int height : {1, 2, 17, 50}) {
                const FloatPlane source = Random(width, height, channels);
                const FloatPlane two = Blurred(source, 5.0F);
                const test::Threads threads(7);
                const FloatPlane seven = Blurred(source, 5.0F);
                for (int y = 0; y < height; ++y) {
                    ASSERT_TRUE(std::ranges::equal(two.View().Row(y), seven.View().Row(y)));
                    for (const float sample : two.View().Row(y))
                        ASSERT_TRUE(sample > 0.9F && sample < 256.1F);
                }
            }
}

}  // namespace
}  // namespace velloran
