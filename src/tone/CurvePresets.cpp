#include "tone/CurvePresets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/Rounding.h"

namespace velloran {
namespace {

constexpr std::array<CurvePoints, kCurvePresetCount> kPresets = {{
    {0, 0, 255, 255},
    {150, 0, 110, 255},
    {120, 10, 245, 135},
    {10, 120, 135, 245},
}};

constexpr int kSCurveSlope = 6;

/// The square root is not a number where the product is negative; such a point is told as 0.
int RootOf(double a, double b) {
    return TruncToInt(std::sqrt(a * b));
}

}  // namespace

CurvePoints PointsOfPreset(CurvePreset preset) {
    return kPresets[static_cast<std::size_t>(preset)];
}

CurvePoints NormalizedCurve(CurvePoints points) {
    return points == CurvePoints{0, 0, 0, 0} ? CurvePoints{} : points;
}

CurvePoints SCurvePoints(int value) {
    const int v = std::clamp(value, 0, kLargestSCurve);
    const int y1 = -(v / kSCurveSlope);
    return {v, y1, 255 - v, 255 - y1};
}

int SCurveValue(const CurvePoints& points) {
    if (points.x1 < 0 || points.x1 > kLargestSCurve)
        return 0;
    return points == SCurvePoints(points.x1) ? points.x1 : 0;
}

OverflowPoints FindOverflowPoints(int div, int offset) {
    const double scale = 255.0 - div;
    return {RootOf(255.0 + offset, scale), RootOf(offset, scale)};
}

}  // namespace velloran
