#include "dewarping/PageEdges.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/Images.h"

namespace velloran::test {
namespace {

using namespace dewarping;
using QT::QPointF;

constexpr int kWidth = 900, kHeight = 1200;

double TopEdge(double x) {
    const double s = (x - 60) / 780;
    return 140 - 50 * 6.75 * s * (1 - s) * (1 - s);
}
double BottomEdge(double x) {
    const double s = (x - 60) / 780;
    return 1090 - 30 * 6.75 * s * (1 - s) * (1 - s);
}

/// White paper whose edges are drawn, and of which the middle holds text.
CDibImage EdgedPage() {
    CDibImage page = Filled(kWidth, kHeight, 8, 240);
    const PlaneView rows = TopDownViewOf(page);
    for (int x = 60; x < 840; ++x)
        for (int d = 0; d < 5; ++d) {
            rows.Row(static_cast<int>(TopEdge(x)) - d)[static_cast<std::size_t>(x)] = 10;
            rows.Row(static_cast<int>(BottomEdge(x)) + d)[static_cast<std::size_t>(x)] = 10;
        }
    for (int y = 300; y < 900; y += 30)
        for (int x = 150; x < 750; x += 12)
            for (int i = 0; i < 8; ++i)
                std::fill_n(rows.Row(y + i).begin() + x, 8, std::uint8_t{30});
    return page;
}

TEST(PageEdges, TheUpperAndTheLowerOneBecomeCurvesAndBounds) {
    DistortionModelBuilder builder({0, 1});
    const double share = tracePageEdges(EdgedPage(), builder, kWidth);
    EXPECT_NEAR(share, 780.0 / kWidth, 0.05);
    ASSERT_EQ(builder.curves().size(), 2U);
    for (const QPointF& point : builder.curves()[0])
        EXPECT_NEAR(point.y, TopEdge(point.x) - 2, 4);
    for (const QPointF& point : builder.curves()[1])
        EXPECT_NEAR(point.y, BottomEdge(point.x) + 2, 4);
    EXPECT_NEAR(builder.leftBound().p1.x, 62, 6);
    EXPECT_EQ(builder.leftBound().p1.y, builder.rightBound().p1.y);
    EXPECT_NEAR(builder.leftBound().p2.y, kHeight - 1, 2);
    EXPECT_NEAR(builder.rightBound().p2.x, 838, 6);
}

TEST(PageEdges, AreNotFoundWhereThereIsNoPair) {
    for (const int level : {0, 128, 255}) {
        DistortionModelBuilder builder({0, 1});
        EXPECT_EQ(tracePageEdges(Filled(kWidth, kHeight, 8, static_cast<std::uint8_t>(level)),
                                 builder, kWidth),
                  0);
        EXPECT_TRUE(builder.curves().empty());
    }
    CDibImage upper = EdgedPage();
    const PlaneView rows = TopDownViewOf(upper);
    for (int y = 280; y < kHeight; ++y)
        std::fill(rows.Row(y).begin(), rows.Row(y).end(), std::uint8_t{240});
    DistortionModelBuilder builder({0, 1});
    EXPECT_EQ(tracePageEdges(upper, builder, kWidth), 0);
}

}  // namespace
}  // namespace velloran::test
