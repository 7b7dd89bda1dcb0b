#include "samples/SampleMeasure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <utility>

#include "support/Images.h"

namespace velloran::test {

using samples::Box;
using samples::Point;

samples::SamplePage SmallPage(samples::PageKind kind, std::uint64_t seed, int dpi,
                              std::optional<double> angle) {
    samples::SampleRequest request;
    request.kind = kind;
    request.width = 620;
    request.height = 877;
    if (samples::IsTwoPages(kind))
        std::swap(request.width, request.height);
    request.dpi = dpi;
    request.seed = seed;
    request.angleDegrees = angle;
    request.wantInkMask = true;
    return samples::MakeSamplePage(request);
}

double GrayAt(const CBaseImage& image, double x, double y) {
    const int column = static_cast<int>(std::floor(x)), row = static_cast<int>(std::floor(y));
    if (column < 0 || row < 0 || column >= image.GetWidth() || row >= image.GetHeight())
        return 0;
    const Rgb color = PixelAt(image, column, row);
    return 0.299 * color.red + 0.587 * color.green + 0.114 * color.blue;
}

std::vector<Point> DarkPixels(const CBaseImage& image, double limit) {
    std::vector<Point> middles;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            if (GrayAt(image, x, y) < limit)
                middles.push_back({x + 0.5, y + 0.5});
    return middles;
}

Box BoxAround(const std::vector<Point>& middles) {
    if (middles.empty())
        return {};
    Box box = {1e9, 1e9, -1e9, -1e9};
    for (const Point point : middles)
        box = {std::min(box.left, point.x - 0.5), std::min(box.top, point.y - 0.5),
               std::max(box.right, point.x + 0.5), std::max(box.bottom, point.y + 0.5)};
    return box;
}

Point Turned(Point point, Point center, double degrees) {
    const double angle = degrees * std::numbers::pi / 180;
    const double dx = point.x - center.x, dy = point.y - center.y;
    return {center.x + std::cos(angle) * dx - std::sin(angle) * dy,
            center.y + std::sin(angle) * dx + std::cos(angle) * dy};
}

void ExpectNear(const Box& actual, const Box& expected, double tolerance) {
    EXPECT_NEAR(actual.left, expected.left, tolerance);
    EXPECT_NEAR(actual.top, expected.top, tolerance);
    EXPECT_NEAR(actual.right, expected.right, tolerance);
    EXPECT_NEAR(actual.bottom, expected.bottom, tolerance);
}

}  // namespace velloran::test
