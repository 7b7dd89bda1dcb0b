#include "dewarping/CurvePoints.h"

#include <algorithm>

#include "core/Rounding.h"
#include "spfit/FitPolyline.h"

namespace velloran::dewarping {
namespace {

using QT::QPointF;

bool allAre(const std::int32_t* points, int n, std::int32_t value) {
    return std::all_of(points, points + n, [value](std::int32_t point) { return point == value; });
}

bool keepsOneRow(const std::int32_t* points, int n) {
    return std::all_of(points, points + n, [points](std::int32_t point) {
        return unpackPoint(point).y == unpackPoint(points[0]).y;
    });
}

/// The first and last point are gone through, the inner ones approximated.
double tensionOf(int index, int count) {
    return index == 0 || index == count - 1 ? 0.0 : 1.0;
}

}  // namespace

std::int32_t packPoint(const QPointF& point) {
    const auto half = [](double value) {
        return static_cast<std::uint32_t>(std::clamp(RoundHalf(value), 0, 0xFFFF));
    };
    return static_cast<std::int32_t>(half(point.y) << 16 | half(point.x));
}

CurveState classifyCurves(const std::int32_t* top, const std::int32_t* bottom, int n) {
    if (n < 1 || (allAre(top, n, 0) && allAre(bottom, n, 0)))
        return kNoCurves;
    if (allAre(top, n, -1) && allAre(bottom, n, -1))
        return kUnknownCurves;
    if (keepsOneRow(top, n) && keepsOneRow(bottom, n) &&
        unpackPoint(top[0]).x == unpackPoint(bottom[0]).x &&
        unpackPoint(top[n - 1]).x == unpackPoint(bottom[n - 1]).x)
        return kFlatCurves;
    return kCurved;
}

void resetCurves(int width, int height, std::int32_t* top, std::int32_t* bottom, int n) {
    for (int i = 0; i < n; ++i) {
        const double x = static_cast<double>(i) * width / n;
        top[i] = packPoint({x, 0});
        bottom[i] = packPoint({x, static_cast<double>(height) - 1});
    }
}

XSpline curveOf(const std::int32_t* points, int n) {
    int count = std::min(n, 1);
    while (count < n && points[count] != 0)
        ++count;
    XSpline curve;
    for (int i = 0; i < count; ++i)
        curve.appendControlPoint(unpackPoint(points[i]), tensionOf(i, count));
    return curve;
}

void packCurve(const std::vector<QPointF>& polyline, std::int32_t* points, int n) {
    const QPointF first = polyline.front(), last = polyline.back();
    XSpline curve;
    for (int i = 0; i < n; ++i) {
        const double share = static_cast<double>(i) / (n - 1);
        curve.appendControlPoint(
            {first.x + share * (last.x - first.x), first.y + share * (last.y - first.y)},
            tensionOf(i, n));
    }
    spfit::fitSplineToPolyline(curve, polyline);
    for (int i = 0; i < n; ++i)
        points[i] = packPoint(curve.controlPointPosition(i));
}

}  // namespace velloran::dewarping
