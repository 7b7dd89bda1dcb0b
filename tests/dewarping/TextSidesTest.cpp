#include "dewarping/TextSides.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velloran::test {
namespace {

using namespace dewarping;

constexpr int kWidth = 1000, kHeight = 1400;

/// Lines between two slanted edges; every third begins further in, every fourth ends early.
std::vector<LineTrack> LinesBetween(double leftSlope, double rightSlope) {
    std::vector<LineTrack> lines;
    for (int i = 0; i < 30; ++i) {
        const double y = 200 + 35 * i;
        const double left = 150 + leftSlope * (y - 700) + (i % 3 == 0 ? 40 : 0);
        const double right = 850 + rightSlope * (y - 700) - (i % 4 == 1 ? 90 : 0);
        lines.push_back({{{left, y}, {(left + right) / 2, y - 9}, {right, y + 4}}});
    }
    return lines;
}

double SlopeOf(const QT::QLineF& line) {
    return (line.p2.x - line.p1.x) / (line.p2.y - line.p1.y);
}

TEST(TextSides, GoOnOutwardAsTheEdgesOfTheTextConverge) {
    const auto sides = sidesOfText(LinesBetween(-0.02, 0.03), 35, kWidth, kHeight);
    ASSERT_TRUE(sides);
    // From -0.02 at 150 to 0.03 at 850 the slope changes by 0.05 in 700 pixels.
    EXPECT_NEAR(SlopeOf(sides->left), -0.02 - 150 * 0.05 / 700, 0.002);
    EXPECT_NEAR(SlopeOf(sides->right), 0.03 + 149 * 0.05 / 700, 0.002);
    for (const QT::QLineF& side : {sides->left, sides->right}) {
        EXPECT_EQ(side.p1.y, 0);
        EXPECT_EQ(side.p2.y, kHeight - 1);
    }
    EXPECT_NEAR(std::min(sides->left.p1.x, sides->left.p2.x), 0, 1e-6);
    EXPECT_NEAR(std::max(sides->right.p1.x, sides->right.p2.x), kWidth - 1, 1e-6);
}

TEST(TextSides, OfUprightTextAreThoseOfThePicture) {
    EXPECT_FALSE(sidesOfText(LinesBetween(0, 0.001), 35, kWidth, kHeight));
}

TEST(TextSides, AreNotToldByRaggedOrFewLines) {
    std::vector<LineTrack> ragged = LinesBetween(-0.02, 0.03);
    for (std::size_t i = 0; i < ragged.size(); ++i)
        ragged[i].points.back().x -= static_cast<double>(i * 37 % 101) * 2;
    EXPECT_FALSE(sidesOfText(ragged, 35, kWidth, kHeight));
    std::vector<LineTrack> few = LinesBetween(-0.02, 0.03);
    few.resize(5);
    EXPECT_FALSE(sidesOfText(few, 35, kWidth, kHeight));
    EXPECT_FALSE(sidesOfText({}, 35, kWidth, kHeight));
    // Steeper than a page that is seen from the side ever is.
    EXPECT_FALSE(sidesOfText(LinesBetween(-0.4, 0.4), 35, kWidth, kHeight));
}

}  // namespace
}  // namespace velloran::test
