#include "page/SkewScore.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/Images.h"

namespace velloran::test {
namespace {

CDibImage BlackAndWhiteNoise(int width, int height) {
    CDibImage image = Noise(width, height, 8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.GetBits(y)[x] = image.GetBits(y)[x] < 100 ? 0 : 255;
    return image;
}

int Offset(int i, double angle) {
    return static_cast<int>(std::lround(i * std::tan(angle * 0.017453293005625408)));
}

int Black(const CDibImage& image, int x, int y) {
    return x >= 0 && y >= 0 && x < image.GetWidth() && y < image.GetHeight() &&
                   image.GetBits(y)[x] == 0
               ? 1
               : 0;
}

double PlainRows(const CDibImage& image, double angle) {
    const int n = std::abs(Offset(image.GetWidth() - 1, angle)) + image.GetHeight();
    double score = 0, previous = 0;
    for (int r = n - 1; r >= 0; --r) {
        double count = 0;
        for (int x = 0; x < image.GetWidth(); ++x)
            count += Black(image, x, r + Offset(x, angle));
        if (r != 0)
            score += (count - previous) * (count - previous);
        previous = count;
    }
    return score;
}

double PlainColumns(const CDibImage& image, double angle) {
    const int n = std::abs(Offset(image.GetHeight() - 1, angle)) + image.GetWidth();
    double score = 0, previous = 0;
    for (int c = 0; c < n; ++c) {
        double count = 0;
        for (int y = 0; y < image.GetHeight(); ++y)
            count += Black(image, c + Offset(y, angle), y);
        if (c != 0)
            score += (count - previous) * (count - previous);
        previous = count;
    }
    return score;
}

TEST(SkewScore, IsThePlainSumForEveryAngle) {
    for (const auto& [width, height] : {std::pair{53, 37}, {1, 20}, {20, 1}, {200, 9}, {9, 200}}) {
        const CDibImage image = BlackAndWhiteNoise(width, height);
        for (const double angle : {-5.5, -1.0, -0.3, 0.0, 0.05, 2.0, 5.0}) {
            EXPECT_EQ(scoreRows(image, angle), PlainRows(image, angle)) << angle;
            EXPECT_EQ(scoreColumns(image, angle), PlainColumns(image, angle)) << angle;
        }
    }
}

TEST(SkewScore, ABlankPageScoresNothing) {
    const CDibImage image = Filled(40, 30, 8, 255);
    EXPECT_EQ(scoreRows(image, 1), 0);
    EXPECT_EQ(scoreColumns(image, 1), 0);
}

TEST(Halve, OneBlackPixelIsEnoughByRuleOneTwoByRuleTwo) {
    // Blocks with none, one, two and four black pixels; the odd column and row are dropped.
    const CDibImage source = FromRows({{255, 255, 0, 255, 0, 255, 0, 0, 0},
                                       {255, 255, 255, 255, 255, 0, 0, 0, 0},
                                       {0, 0, 0, 0, 0, 0, 0, 0, 0}});
    CDibImage one = source, two = source;
    halve(one, 1);
    halve(two, 2);
    ASSERT_EQ(one.GetWidth(), 4);
    ASSERT_EQ(one.GetHeight(), 1);
    // Rows pair up as they are stored: the two lower ones.
    ExpectSamePixels(one, FromRows({{0, 0, 0, 0}}));
    ExpectSamePixels(two, FromRows({{0, 0, 0, 0}}));
    CDibImage upper =
        FromRows({{255, 255, 0, 255, 0, 255, 0, 0}, {255, 255, 255, 255, 255, 0, 0, 0}});
    CDibImage upperTwo = upper;
    halve(upper, 1);
    halve(upperTwo, 2);
    ExpectSamePixels(upper, FromRows({{255, 0, 0, 0}}));
    ExpectSamePixels(upperTwo, FromRows({{255, 255, 0, 0}}));
}

TEST(Halve, TheResolutionHalvesAndASinglePixelStays) {
    CDibImage image = Filled(10, 10, 8, 255);
    image.SetXDpi(300);
    halve(image, 1);
    EXPECT_EQ(image.GetXDpi(), 150);
    CDibImage line = Filled(1, 10, 8, 0);
    halve(line, 1);
    EXPECT_EQ(line.GetHeight(), 10);
}

}  // namespace
}  // namespace velloran::test
