#include "imaging/PlacedPixels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "core/DibImage.h"
#include "imaging/CubicSample.h"
#include "support/EachForm.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

struct Places {
    std::vector<std::int32_t> x, y;
    explicit Places(int count) : x(static_cast<std::size_t>(count)), y(x.size()) {}
    PixelPlaces View() { return {x.data(), y.data()}; }
};

TEST(PlacedPixels, CubicRowsAreThoseOfSingleSamplesInEachForm) {
    for (const int bpp : {8, 24}) {
        const int channels = bpp / 8;
        for (int width = 1; width <= 17; ++width)
            for (const int height : {1, 3, 4, 9}) {
                const CDibImage source = Noise(width, height, bpp);
                const ConstPlaneView view = ViewOf(source);
                std::mt19937 random(static_cast<unsigned>(width));
                constexpr int kCount = 200;
                Places places(kCount);
                std::vector<std::uint8_t> expected(kCount * 3, 77);
                for (int i = 0; i < kCount; ++i) {
                    const auto at = [&](int side) {
                        return static_cast<std::int32_t>(
                                   random() % static_cast<unsigned>(side * kCubicSteps)) -
                               kCubicSteps / 2;
                    };
                    places.x[static_cast<std::size_t>(i)] = i % 9 == 0 ? kOutsideSource : at(width);
                    places.y[static_cast<std::size_t>(i)] = at(height);
                    if (i % 9 == 0)
                        continue;
                    std::uint8_t* out = expected.data() + i * channels;
                    if (channels == 3)
                        CubicSample<3>(view, places.x[static_cast<std::size_t>(i)],
                                       places.y[static_cast<std::size_t>(i)], out);
                    else
                        CubicSample<1>(view, places.x[static_cast<std::size_t>(i)],
                                       places.y[static_cast<std::size_t>(i)], out);
                }
                InEachForm([&](const std::string&) {
                    std::vector<std::uint8_t> row(kCount * 3, 77);
                    CubicPixels(view, places.View(), kCount, row.data());
                    EXPECT_EQ(row, expected) << width << " x " << height << " at " << bpp;
                });
            }
    }
}

TEST(PlacedPixels, PlacesAreRoundedToStepsAndKnowTheOutside) {
    // x = 10 + 2 v, y = -1 + 4 v, over w = 1 + v.
    const double x0[] = {10}, x1[] = {2}, y0[] = {-1}, y1[] = {4}, w0[] = {1}, w1[] = {1};
    const ColumnTerms columns{x0, x1, y0, y1, w0, w1};
    InEachForm([&](const std::string&) {
        for (double v = -0.4; v < 3; v += 0.01) {
            const double x = (10 + 2 * v) / (1 + v), y = (-1 + 4 * v) / (1 + v);
            Places places(1);
            PlaceRow(columns, 1, v, 9, 2, places.View());
            const bool isInside = x >= -0.5 && x < 8.5 && y >= -0.5 && y < 1.5;
            EXPECT_EQ(places.x[0] != kOutsideSource, isInside) << v;
            if (isInside) {
                EXPECT_NEAR(places.x[0], x * kCubicSteps, 0.5001) << v;
                EXPECT_NEAR(places.y[0], y * kCubicSteps, 0.5001) << v;
            }
        }
    });
}

TEST(PlacedPixels, WhatIsNoNumberIsOutside) {
    const double nan = std::numeric_limits<double>::quiet_NaN(),
                 infinite = std::numeric_limits<double>::infinity();
    const double x0[] = {nan, 1, 1, infinite, 1e300}, zero[] = {0, 0, 0, 0, 0},
                 y0[] = {1, nan, 1, 1, 1}, w0[] = {1, 1, 0, 1, 1};
    InEachForm([&](const std::string&) {
        Places places(5);
        PlaceRow({x0, zero, y0, zero, w0, zero}, 5, 0.5, 100, 100, places.View());
        for (const std::int32_t x : places.x)
            EXPECT_EQ(x, kOutsideSource);
    });
}

}  // namespace
}  // namespace velloran::test
